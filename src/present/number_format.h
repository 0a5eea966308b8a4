// The instrument's number texts: lengths and times from fixed-point integers,
// encoder steps, scan scales, gains, frequencies, velocities, temperatures.
//
// Every text is built in the caller's buffer of `size` bytes, always
// terminated and never longer than size - 1 characters. NUMBER_TEXT_SIZE holds
// any text of this file whole. Lengths are never printed as floating-point
// numbers: digits are cut out of a zero-filled decimal text and a point is put
// between them, so the only rounding is one integer addition before printing.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "base/file_types.h"
#include "base/text_builder.h"

namespace ugf {

// A buffer of this size holds any text made here.
inline constexpr std::size_t NUMBER_TEXT_SIZE = 16;

// The digit table of an instrument: the corrosion gauge, the precision gauge
// and the flaw detector print lengths with different widths and decimals.
enum DigitLayout : std::int32_t {
    LAYOUT_STANDARD = 0,
    LAYOUT_PRECISION = 1,
    LAYOUT_FLAW = 2,
};

// The digit table of a gage type: any instrument but the precision gauge and
// the flaw detector prints the corrosion gauge's digits.
inline DigitLayout digit_layout_of(std::int32_t gage_type) {
    return gage_type == GAGE_PRECISION       ? LAYOUT_PRECISION
           : gage_type == GAGE_FLAW_DETECTOR ? LAYOUT_FLAW
                                             : LAYOUT_STANDARD;
}

// Measurement mode whose lengths count 0.01 mil or 0.01 micron ("CP").
inline constexpr std::uint32_t MEAS_MODE_CP = 5;

// Distance of one encoder count in 0.0000001 inch, by encoder number. Entry 3
// (the custom encoder) is never used: its users take the setup's own
// resolution instead.
inline constexpr std::array<std::uint32_t, 4> ENCODER_STEP = {141243, 30680, 28000, 5000};

// Truncates toward zero to a signed 32-bit integer. NaN and values outside
// the 32-bit range give -2147483648, as the instrument's processor does.
std::int32_t truncate_to_i32(double x);

// Low 32 bits of x truncated toward zero to a 64-bit integer (0 for NaN or
// a value beyond 64 bits). For unsigned 32-bit factors computed in double.
std::uint32_t truncate_to_u32_low(double x);

// The same text made the general way, field first and then cut: what
// format_thickness gives for the rows it can't make in one word, and its
// measure in the tests.
std::size_t format_thickness_general(char* out, std::size_t size, std::int32_t value, std::uint32_t units,
                                     std::uint32_t resolution, DigitLayout layout, std::uint32_t doubled,
                                     std::uint32_t meas_mode);

// The digit field of a length: `a` as printf's "%*.*lu" (after one blank
// when `blank`) prints it into DIGIT_FIELD_SIZE bytes, from which the
// digits of the text are cut. Widths and precisions from 0 to 12. Returns
// the length.
inline constexpr std::size_t DIGIT_FIELD_SIZE = 7;
std::size_t digit_field(char* out, std::uint32_t a, int width, int precision, bool blank);

// The one-word way of format_thickness, here so that it inlines where
// lengths are made by the thousand (B-scan points, rows): the choice of
// the digit row is then made once where the setup stays, and no call is paid.
namespace length_word {

// The words below hold a text's first character in their lowest byte.
static_assert(std::endian::native == std::endian::little);

// The four digits of each number below 10^4, the first in the lowest byte
// (40 KB). Two look-ups make the eight digits of a length for fewer
// instructions than splitting them in the lanes of a word (both halves,
// then the pairs of each half, then the digits of each pair: about 25
// instructions); a survey's lengths take a small part of the table again
// and again, which the processor's second-level cache keeps.
inline constexpr std::array<std::uint32_t, 10000> make_four_digits() {
    std::array<std::uint32_t, 10000> table{};
    for (std::uint32_t n = 0; n < 10000; ++n) {
        table[n] = (0x30u + n / 1000) | (0x30u + n / 100 % 10) << 8 | (0x30u + n / 10 % 10) << 16 | (0x30u + n % 10) << 24;
    }
    return table;
}
inline constexpr std::array<std::uint32_t, 10000> FOUR_DIGITS = make_four_digits();
// The eight decimal digits of a (below 10^8) with leading zeros, the first
// in the lowest byte.
inline std::uint64_t eight_digits(std::uint32_t a) {
    return FOUR_DIGITS[a / 10000] | (static_cast<std::uint64_t>(FOUR_DIGITS[a % 10000]) << 32);
}

// The low n bytes of a word (n at most 7) as a mask.
inline constexpr std::uint64_t LOW_BYTES[8] = {0, 0xFF, 0xFFFF, 0xFFFFFF, 0xFFFFFFFF, 0xFFFFFFFFFF, 0xFFFFFFFFFFFF, 0xFFFFFFFFFFFFFF};


// The digit rows of the one-word way, as the rows of precision_row and
// standard_row: for each combination of layout, mode 5, units and
// resolution (row_key) the bound below which `a` takes the first row and
// from which the second. Combinations with one row give it twice. Chosen by
// arithmetic, not branches: the rows of a survey's readings vary from
// reading to reading, and a choice by branches mispredicts.
struct WordRow {
    std::uint8_t width;
    std::uint8_t digits;  // at least this many digits: 5, or 2 or 3 in mode 5
    std::uint8_t keep;
    std::uint8_t decimals;
    std::uint8_t cp_format;
    std::uint32_t round;
    std::uint32_t threshold;
};

inline constexpr std::uint32_t NO_BOUND = 0xFFFFFFFFu;  // both rows alike: the bound doesn't matter
inline constexpr std::uint32_t WORD_ROW_BOUND[14] = {
    1000000, 1000000, NO_BOUND, NO_BOUND, 10000000, 10000000,   // standard and flaw
    NO_BOUND, 100000, NO_BOUND, 1000000,                        // precision
    NO_BOUND, 100000, NO_BOUND, 1000000};                       // precision, mode 5
inline constexpr WordRow WORD_ROWS[14][2] = {
    // standard, inch: coarse, fine
    {{6, 5, 2, 2, 0, 50, 100000}, {6, 5, 3, 1, 0, 50, 1000000}},
    {{6, 5, 2, 3, 0, 5, 100000}, {6, 5, 3, 2, 0, 5, 1000000}},
    // standard, other units (and millimetres below ten metres on the flaw detector)
    {{7, 5, 3, 1, 0, 500, 1000000}, {7, 5, 3, 1, 0, 500, 1000000}},
    {{7, 5, 3, 2, 0, 50, 1000000}, {7, 5, 3, 2, 0, 50, 1000000}},
    // flaw detector, millimetres: ten metres and more
    {{7, 5, 3, 1, 0, 500, 1000000}, {7, 5, 4, 0, 0, 5000, 1000000}},
    {{7, 5, 3, 2, 0, 50, 1000000}, {7, 5, 4, 1, 0, 500, 1000000}},
    // precision, inch
    {{6, 5, 2, 3, 0, 5, 100000}, {6, 5, 2, 3, 0, 5, 100000}},
    {{5, 5, 1, 4, 0, 0, 0}, {6, 5, 2, 3, 0, 5, 100000}},
    // precision, other units
    {{7, 5, 3, 2, 0, 50, 1000000}, {7, 5, 3, 2, 0, 50, 1000000}},
    {{6, 5, 2, 3, 0, 5, 100000}, {7, 5, 3, 2, 0, 50, 1000000}},
    // precision, mode 5, mils
    {{5, 3, 4, 1, 1, 0, 0}, {5, 3, 4, 1, 1, 0, 0}},
    {{4, 3, 3, 2, 1, 0, 0}, {5, 3, 4, 1, 1, 0, 0}},
    // precision, mode 5, microns
    {{6, 2, 5, 0, 1, 50, 100000}, {6, 2, 5, 0, 1, 50, 100000}},
    {{5, 3, 4, 1, 1, 5, 100000}, {6, 2, 5, 0, 1, 50, 100000}},
};

inline std::uint32_t row_key(std::uint32_t units, std::uint32_t resolution, DigitLayout layout,
                      std::uint32_t meas_mode) {
    const std::uint32_t precision_key = 6u + (static_cast<std::uint32_t>(meas_mode == MEAS_MODE_CP) << 2) +
                                        (static_cast<std::uint32_t>(units != 0) << 1) +
                                        static_cast<std::uint32_t>(resolution != 0);
    const std::uint32_t standard_key = (static_cast<std::uint32_t>(units != 0) << 1) +
                                       (static_cast<std::uint32_t>(units == 1 && layout == LAYOUT_FLAW) << 1) +
                                       static_cast<std::uint32_t>(resolution == 1);
    return layout == LAYOUT_PRECISION ? precision_key : standard_key;
}

// Decimal digits of a, 1 for 0: the bit length times log10(2) (1233 / 4096),
// corrected by one comparison.
inline constexpr std::uint32_t POWERS[10] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000, 1000000000};
inline int digit_count(std::uint32_t a) {
    const auto t = static_cast<std::uint32_t>(((32 - __builtin_clz(a | 1u)) * 1233) >> 12);
    return static_cast<int>(t + ((a | 1u) >= POWERS[t] ? 1u : 0u));
}

// Where the characters of a length go, for one digit row, sign and count of
// digits (1 to 8): everything but the digits themselves. The field is the
// eight digits shifted right by `right` bits (leaving the body) and left by
// `left` (behind the pad), with `blanks` in the pad; the text takes the
// field's first `keep` characters (head_mask, behind the sign) and the next
// `decimals` (tail_mask, behind the point), and `constant` holds the sign
// and the point. A negative value drops its keep by one below the row's
// threshold, which for a value of `count` digits is a matter of the count.
struct WordLayout {
    std::uint64_t blanks = 0;
    std::uint64_t head_mask = 0;
    std::uint64_t tail_mask = 0;
    std::uint64_t constant = 0;
    std::uint8_t right = 0;
    std::uint8_t left = 0;
    std::uint8_t total = 0;
};

inline constexpr std::size_t layout_index(std::uint32_t key, std::uint32_t side, std::uint32_t negative, int count) {
    return ((key * 2 + side) * 2 + negative) * 9 + static_cast<std::size_t>(count);
}

inline constexpr std::array<WordLayout, 14 * 2 * 2 * 9> make_word_layouts() {
    std::array<WordLayout, 14 * 2 * 2 * 9> table{};
    for (std::uint32_t key = 0; key < 14; ++key) {
        for (std::uint32_t side = 0; side < 2; ++side) {
            const WordRow& row = WORD_ROWS[key][side];
            for (std::uint32_t negative = 0; negative < 2; ++negative) {
                for (int count = 1; count <= 8; ++count) {
                    // a < threshold, for the thresholds of the rows (0, 10^5, 10^6).
                    const bool below = row.threshold == 100000 ? count <= 5 : row.threshold == 1000000 ? count <= 6 : false;
                    const int width = row.width - static_cast<int>(negative);
                    const int keep = row.keep - (negative != 0 && below ? 1 : 0);
                    const int body = std::max<int>(row.digits, count);
                    const int pad = std::max(width - body, 0) + row.cp_format;
                    const int length = std::min<int>(pad + body, static_cast<int>(DIGIT_FIELD_SIZE) - 1);
                    const int head = std::min(keep, length);
                    const int tail = std::min<int>(row.decimals, length - head);
                    const int sign = static_cast<int>(negative);
                    WordLayout& w = table[layout_index(key, side, negative, count)];
                    w.right = static_cast<std::uint8_t>(8 * (8 - body));
                    w.left = static_cast<std::uint8_t>(8 * pad);
                    w.blanks = LOW_BYTES[pad] & 0x2020202020202020ull;
                    w.head_mask = LOW_BYTES[head] << (8 * sign);
                    w.constant = negative != 0 ? static_cast<std::uint64_t>('-') : 0;
                    w.total = static_cast<std::uint8_t>(sign + head);
                    if (row.decimals != 0) {
                        w.tail_mask = LOW_BYTES[tail] << (8 * (sign + head + 1));
                        w.constant |= static_cast<std::uint64_t>('.') << (8 * (sign + head));
                        w.total = static_cast<std::uint8_t>(sign + head + 1 + tail);
                    }
                }
            }
        }
    }
    return table;
}

inline constexpr std::array<WordLayout, 14 * 2 * 2 * 9> WORD_LAYOUTS = make_word_layouts();

}  // namespace length_word

// The digit rows of a kind of length (units, resolution, layout, doubling
// and measurement mode, as format_thickness takes them), chosen once for
// the many lengths of one kind: the points of a B-scan, say.
struct LengthForm {
    std::uint32_t key = 0;    // of WORD_ROWS
    std::uint32_t shift = 0;  // 1: the magnitude doubles
    std::uint32_t units = 0;
    std::uint32_t resolution = 0;
    DigitLayout layout = LAYOUT_STANDARD;
    std::uint32_t doubled = 0;
    std::uint32_t meas_mode = 0;
};

inline LengthForm length_form(std::uint32_t units, std::uint32_t resolution, DigitLayout layout,
                              std::uint32_t doubled, std::uint32_t meas_mode) {
    return {length_word::row_key(units, resolution, layout, meas_mode),
            static_cast<std::uint32_t>(doubled == 1 && units != 2), units, resolution, layout, doubled, meas_mode};
}

// format_thickness of `value` in the form, into `out` of at least 16 bytes.
[[gnu::always_inline]] inline std::size_t format_length(char* out, std::int32_t value, const LengthForm& f) {
    const bool negative = value < 0;
    std::uint32_t a = negative ? 0u - static_cast<std::uint32_t>(value) : static_cast<std::uint32_t>(value);
    a <<= f.shift;
    const std::uint32_t side = a >= length_word::WORD_ROW_BOUND[f.key] ? 1 : 0;
    a += length_word::WORD_ROWS[f.key][side].round;
    if (__builtin_expect(a >= 100000000, 0)) {
        return format_thickness_general(out, 16, value, f.units, f.resolution, f.layout, f.doubled, f.meas_mode);
    }
    // The usual text, made in one word: the field of `a` (a blank in mode 5,
    // then blanks up to the width, then at least `digits` digits) cut to
    // six characters, of which the first `keep` go out behind the sign, then
    // the point and the next `decimals`. Digits that would stand past the
    // eighth character leave the word, past the cut anyway.
    const length_word::WordLayout& w =
        length_word::WORD_LAYOUTS[length_word::layout_index(f.key, side, negative ? 1 : 0, length_word::digit_count(a))];
    const std::uint64_t field = (length_word::eight_digits(a) >> w.right << w.left) | w.blanks;
    const unsigned shift = negative ? 8 : 0;
    const std::uint64_t text = ((field << shift) & w.head_mask) | ((field << (shift + 8)) & w.tail_mask) | w.constant;
    std::memcpy(out, &text, 8);
    out[w.total] = '\0';
    return w.total;
}

// Length or time text of a signed count of 0.0001 inch, millimetre or
// microsecond (0.01 mil or micron in measurement mode 5 of the precision
// gauge). `units` 0 inch, 1 millimetre, 2 microsecond (3 takes the rows of 1
// and 2); `doubled` 1 doubles the magnitude except for microseconds. The
// positive text keeps one leading position for the sign: " 1.235", "-1.235".
// Returns the length of the text.
inline std::size_t format_thickness(char* out, std::size_t size, std::int32_t value, std::uint32_t units,
                                    std::uint32_t resolution, DigitLayout layout, std::uint32_t doubled,
                                    std::uint32_t meas_mode) {
    if (__builtin_expect(size < 16, 0)) {
        return format_thickness_general(out, size, value, units, resolution, layout, doubled, meas_mode);
    }
    return format_length(out, value, length_form(units, resolution, layout, doubled, meas_mode));
}

// Distance of `step_code` encoder counts with its unit: "0.8898 IN",
// "22.602 MM". Index 3 uses custom_res x 100 as its step. An index above 3
// gives the empty text.
void format_encoder_step(char* out, std::size_t size, std::uint32_t encoder_index,
                         std::uint32_t step_code, std::uint32_t units, std::uint32_t custom_res);

// Distance of `step_code` + 1 encoder counts in inch or millimetre with seven
// decimals ("%.7f", at most 13 characters). Index 3 uses custom_res x
// custom_multiplier (100 for the corrosion gauge, 1000 for the precision
// gauge). An index above 3 gives the empty text.
void format_encoder_distance(char* out, std::size_t size, std::uint32_t encoder_index,
                             std::uint32_t step_code, std::uint32_t units,
                             std::uint32_t custom_res, std::uint32_t custom_multiplier);

// Delay or range text of a stored scan, with its leading blanks: " 1.000".
// In measurement mode 5 the callers pass the stored value x 1000.
void format_scan_scale(char* out, std::size_t size, std::int32_t value, std::uint32_t units,
                       std::uint32_t meas_mode);

// Time text of a count of 0.0001 microsecond, digits cut, not rounded:
// 12345 gives "1.23 US", -500 gives "-0.05 US".
void format_time_us(char* out, std::size_t size, std::int32_t value);

// Frequency of a count of 0.1 MHz: 50 gives "5.0 MHZ", 5 gives ".5 MHZ".
// Only the first three digits are used.
void format_frequency_mhz(char* out, std::size_t size, std::uint16_t tenths_mhz);

// Pulser voltage of its 2-bit code: "30 V", "60 V", "90 V", "120 V".
const char* format_pulser_voltage(std::uint32_t code);

// Tenths with one decimal from the first three digits: 5 gives "00.5", 123
// gives "12.3". Needs 5 bytes.
void format_tenths(char* out, std::size_t size, std::uint16_t value);

// Gain of the corrosion gauge. Mode 4 (manual) prints the dB value: "40DB",
// "0 DB MIN", "94DB MAX"; any other mode its name in four characters:
// "LOW ", "STD ", "HIGH", "AGC ".
void format_gain_setting(char* out, std::size_t size, std::uint16_t mode, std::uint16_t db);

// Velocity digits: inch units as "0.%05lu" (0.00001 in/us), other units as
// "%5lu" (m/s). A 16-bit velocity prints the same through this function.
void format_velocity(char* out, std::size_t size, std::uint32_t value, std::uint32_t units);

// Temperature of whole degrees Fahrenheit: "  68 F", or with `metric` not 0
// the Celsius value computed in single precision: " 20.4 C". At most 9
// characters.
void format_temperature(char* out, std::size_t size, std::int32_t fahrenheit, std::uint32_t metric);

// printf's "% 4.1f" of a single-precision value, at the end of `o`.
void put_one_decimal(TextBuilder& o, float value);

// format_temperature's text into `out` of at least NUMBER_TEXT_SIZE bytes;
// returns its length. The rows' temperatures (whole degrees below 10,000)
// are put together from the four-digit texts, the rest as
// format_temperature makes them.
std::size_t temperature_text(char* out, std::int32_t fahrenheit, std::uint32_t metric);

// A percentage as the CSV shows it, printf's "%3d%%" (the "%%%%" of the
// format once the CSV write has halved it), into `out` of at least
// NUMBER_TEXT_SIZE bytes; returns its length.
std::size_t percent_text(char* out, std::int32_t percent);

// Temperature coefficient of a count of 0.00001, computed in single
// precision: -1500 gives "-0.01500". At most 9 characters.
void format_temp_coefficient(char* out, std::size_t size, std::int32_t value);

// Replaces every "0" of the text by a blank, in place; blanks and the point
// stay, so an empty value shows as "  .   ".
void blank_zeros(char* text);

}  // namespace ugf
