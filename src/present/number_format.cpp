#include "present/number_format.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "base/bits.h"
#include "base/console.h"
#include "base/text_builder.h"
#include "base/labels.h"

namespace ugf {

namespace {

// Appends to a caller's buffer without ever passing its end; the text stays
// terminated after every step.
using TextOut = TextBuilder;

// The instrument's digit cut: the first `keep` characters of the scratch
// text, then "." and the next `decimals` characters when `decimals` is not 0.
// A scratch text shorter than that gives what it has.
void cut_digits(TextOut& o, const char* scratch, std::size_t length, int keep, int decimals) {
    const std::size_t head = std::min<std::size_t>(static_cast<std::size_t>(std::max(keep, 0)), length);
    o.put(std::string_view(scratch, head));
    if (decimals != 0) {
        o.put('.');
        o.put(std::string_view(scratch + head, std::min<std::size_t>(static_cast<std::size_t>(std::max(decimals, 0)), length - head)));
    }
}

// One row of the digit tables: field width W, least digits P, characters
// kept I, decimals kept D, rounding addend R, carry threshold T, and whether
// the mode-5 format (a literal blank, then W and P) applies.
struct DigitRow {
    int width;
    int digits;
    int keep;
    int decimals;
    std::uint32_t round;
    std::uint32_t threshold;
    bool cp_format;
};

[[gnu::always_inline]] inline DigitRow precision_row(std::uint32_t a, std::uint32_t units, std::uint32_t resolution,
                       std::uint32_t meas_mode) {
    const bool cp = meas_mode == MEAS_MODE_CP;
    const bool fine = resolution != 0;
    if (units == 0) {
        if (cp) {
            if (a < 100000 && fine) return {4, 3, 3, 2, 0, 0, true};
            return {5, 3, 4, 1, 0, 0, true};
        }
        if (a < 100000 && fine) return {5, 5, 1, 4, 0, 0, false};
        return {6, 5, 2, 3, 5, 100000, false};
    }
    if (cp) {
        if (a < 1000000 && fine) return {5, 3, 4, 1, 5, 100000, true};
        return {6, 2, 5, 0, 50, 100000, true};
    }
    if (a < 1000000 && fine) return {6, 5, 2, 3, 5, 100000, false};
    return {7, 5, 3, 2, 50, 1000000, false};
}

[[gnu::always_inline]] inline DigitRow standard_row(std::uint32_t a, std::uint32_t units, std::uint32_t resolution,
                      DigitLayout layout) {
    const bool fine = resolution == 1;
    if (units == 0) {
        if (a < 1000000) return fine ? DigitRow{6, 5, 2, 3, 5, 100000, false}
                                     : DigitRow{6, 5, 2, 2, 50, 100000, false};
        return fine ? DigitRow{6, 5, 3, 2, 5, 1000000, false}
                    : DigitRow{6, 5, 3, 1, 50, 1000000, false};
    }
    // Only the flaw detector has rows for ten metres and more.
    if (units == 1 && layout == LAYOUT_FLAW && a >= 10000000) {
        return fine ? DigitRow{7, 5, 4, 1, 500, 1000000, false}
                    : DigitRow{7, 5, 4, 0, 5000, 1000000, false};
    }
    return fine ? DigitRow{7, 5, 3, 2, 50, 1000000, false}
                : DigitRow{7, 5, 3, 1, 500, 1000000, false};
}

// The step factor of an encoder in 0.0000001 inch (or millimetre when
// `units` is 1); 0 in *ok for an index outside the table.
std::uint32_t encoder_factor(std::uint32_t encoder_index, std::uint32_t units,
                             std::uint32_t custom_res, std::uint32_t custom_multiplier, int* ok) {
    *ok = encoder_index < ENCODER_STEP.size() ? 1 : 0;
    if (*ok == 0) return 0;
    std::uint32_t factor = encoder_index == 3 ? custom_res * custom_multiplier
                                              : ENCODER_STEP[encoder_index];
    if (units == 1) factor = truncate_to_u32_low(static_cast<double>(factor) * 25.4);
    return factor;
}

}  // namespace

std::int32_t truncate_to_i32(double x) {
    // The open interval keeps every value whose truncation fits; the negated
    // test also catches NaN.
    if (!(x > -2147483649.0 && x < 2147483648.0)) return INT32_MIN;
    return static_cast<std::int32_t>(x);
}

std::uint32_t truncate_to_u32_low(double x) {
    if (!(x > -9223372036854775808.0 && x < 9223372036854775808.0)) return 0;
    return static_cast<std::uint32_t>(static_cast<std::uint64_t>(static_cast<std::int64_t>(x)));
}

// digit_field's work, inlined into the length texts that use it.
[[gnu::always_inline]] inline std::size_t make_digit_field(char* out, std::uint32_t a, int width,
                                                           int precision, bool blank) {
    if (a < 100000000 && width >= 0 && width <= 8 && precision >= 0 && precision <= 8) {
        // The usual field: the eight digits of `a` with leading zeros, two
        // at a time, of which the last max(precision, digits) are kept,
        // behind the blanks; made of copies of fixed length.
        char digits[16] = {};
        const std::uint32_t high = a / 10000;
        const std::uint32_t low = a % 10000;
        std::memcpy(digits, DIGIT_PAIRS + 2 * (high / 100), 2);
        std::memcpy(digits + 2, DIGIT_PAIRS + 2 * (high % 100), 2);
        std::memcpy(digits + 4, DIGIT_PAIRS + 2 * (low / 100), 2);
        std::memcpy(digits + 6, DIGIT_PAIRS + 2 * (low % 100), 2);
        const int n = a == 0 ? 0 : decimal_digit_count(a);
        const int body = std::max(precision, n);
        char text[32];
        char* at = text;
        if (blank) *at++ = ' ';
        std::memset(at, ' ', 8);
        at += std::max(width - body, 0);
        std::memcpy(at, digits + 8 - body, 8);
        at += body;
        const std::size_t length = std::min<std::size_t>(static_cast<std::size_t>(at - text), DIGIT_FIELD_SIZE - 1);
        std::memcpy(out, text, DIGIT_FIELD_SIZE - 1);
        out[length] = '\0';
        return length;
    }
    // The whole text first: the blank, blanks up to the width, zeros up to
    // the precision, the digits; then its first DIGIT_FIELD_SIZE - 1 characters.
    char text[16] = {};
    char* at = text;
    if (blank) *at++ = ' ';
    const int n = a == 0 ? 0 : decimal_digit_count(a);
    const int body = std::max(std::clamp(precision, 0, 12), n);
    at = repeat(at, ' ', std::clamp(width, 0, 12) - body);
    at = repeat(at, '0', body - n) + n;
    write_decimal_digits(at, a, n);
    const std::size_t length = std::min<std::size_t>(static_cast<std::size_t>(at - text), DIGIT_FIELD_SIZE - 1);
    std::memcpy(out, text, DIGIT_FIELD_SIZE - 1);  // a fixed copy is cheaper than a measured one
    out[length] = '\0';
    return length;
}

std::size_t digit_field(char* out, std::uint32_t a, int width, int precision, bool blank) {
    return make_digit_field(out, a, width, precision, blank);
}

[[gnu::noinline]] std::size_t format_thickness_general(char* out, std::size_t size, std::int32_t value, std::uint32_t units,
                             std::uint32_t resolution, DigitLayout layout, std::uint32_t doubled,
                             std::uint32_t meas_mode) {
    const bool negative = value < 0;
    // The magnitude is unsigned 32-bit: doubling and the addend wrap at 2^32.
    std::uint32_t a = negative ? 0u - static_cast<std::uint32_t>(value) : static_cast<std::uint32_t>(value);
    if (doubled == 1 && units != 2) a *= 2u;

    const DigitRow row = layout == LAYOUT_PRECISION ? precision_row(a, units, resolution, meas_mode)
                                                    : standard_row(a, units, resolution, layout);
    a += row.round;
    int width = row.width;
    int keep = row.keep;
    if (negative) {
        // The sign takes the free leading position; once rounding has carried
        // into a new digit the text is one character longer instead.
        width -= 1;
        if (a < row.threshold) keep -= 1;
    }
    char scratch[16] = {};  // the field, and room for the fixed copies below
    const std::size_t length =
        make_digit_field(scratch, a, width, row.cp_format ? row.digits : 5, row.cp_format);
    // The sign, the first `keep` characters of the field, then "." and the
    // next `decimals` characters when there are decimals.
    const std::size_t head = std::min<std::size_t>(static_cast<std::size_t>(std::max(keep, 0)), length);
    const std::size_t tail = row.decimals == 0 ? 0 : std::min<std::size_t>(static_cast<std::size_t>(row.decimals), length - head);
    if (size >= 16) {
        // Room for the longest text (sign, field and point) and for copies
        // of fixed length, which cost less than measured ones: written in
        // place, each copy's surplus overwritten or left past the end.
        char* at = out;
        if (negative) *at++ = '-';
        std::memcpy(at, scratch, DIGIT_FIELD_SIZE - 1);
        at += head;
        if (row.decimals != 0) {
            *at++ = '.';
            std::memcpy(at, scratch + head, DIGIT_FIELD_SIZE - 1);
            at += tail;
        }
        *at = '\0';
        return static_cast<std::size_t>(at - out);
    }
    TextOut o(out, size);
    if (negative) o.put('-');
    cut_digits(o, scratch, length, keep, row.decimals);
    return o.len;
}


namespace {

// The words below hold a text's first character in their lowest byte.
static_assert(std::endian::native == std::endian::little);

// The eight decimal digits of a (below 10^8) with leading zeros, the first
// in the lowest byte: both halves of four digits, then both pairs of each
// half, then both digits of each pair, split at once in the lanes of one
// word (x / 100 as x * 5243 >> 19 and x / 10 as x * 103 >> 10, exact in
// those ranges).
std::uint64_t eight_digits(std::uint32_t a) {
    std::uint64_t x = (a / 10000) | (static_cast<std::uint64_t>(a % 10000) << 32);
    const std::uint64_t hundreds = ((x * 5243) >> 19) & 0x0000007F0000007Full;
    x = hundreds | ((x - hundreds * 100) << 16);
    const std::uint64_t tens = ((x * 103) >> 10) & 0x000F000F000F000Full;
    x = tens | ((x - tens * 10) << 8);
    return x | 0x3030303030303030ull;
}

// The low n bytes of a word (n at most 7) as a mask.
constexpr std::uint64_t LOW_BYTES[8] = {0, 0xFF, 0xFFFF, 0xFFFFFF, 0xFFFFFFFF, 0xFFFFFFFFFF, 0xFFFFFFFFFFFF, 0xFFFFFFFFFFFFFF};


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

constexpr std::uint32_t NO_BOUND = 0xFFFFFFFFu;  // both rows alike: the bound doesn't matter
constexpr std::uint32_t WORD_ROW_BOUND[14] = {
    1000000, 1000000, NO_BOUND, NO_BOUND, 10000000, 10000000,   // standard and flaw
    NO_BOUND, 100000, NO_BOUND, 1000000,                        // precision
    NO_BOUND, 100000, NO_BOUND, 1000000};                       // precision, mode 5
constexpr WordRow WORD_ROWS[14][2] = {
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

std::uint32_t row_key(std::uint32_t units, std::uint32_t resolution, DigitLayout layout,
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
int digit_count(std::uint32_t a) {
    static constexpr std::uint32_t POWERS[10] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000, 1000000000};
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

constexpr std::size_t layout_index(std::uint32_t key, std::uint32_t side, std::uint32_t negative, int count) {
    return ((key * 2 + side) * 2 + negative) * 9 + static_cast<std::size_t>(count);
}

constexpr std::array<WordLayout, 14 * 2 * 2 * 9> make_word_layouts() {
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

constexpr std::array<WordLayout, 14 * 2 * 2 * 9> WORD_LAYOUTS = make_word_layouts();

}  // namespace

std::size_t format_thickness(char* out, std::size_t size, std::int32_t value, std::uint32_t units,
                             std::uint32_t resolution, DigitLayout layout, std::uint32_t doubled,
                             std::uint32_t meas_mode) {
    const bool negative = value < 0;
    std::uint32_t a = negative ? 0u - static_cast<std::uint32_t>(value) : static_cast<std::uint32_t>(value);
    a <<= static_cast<std::uint32_t>(doubled == 1 && units != 2);
    const std::uint32_t key = row_key(units, resolution, layout, meas_mode);
    const std::uint32_t side = a >= WORD_ROW_BOUND[key] ? 1 : 0;
    a += WORD_ROWS[key][side].round;
    if (__builtin_expect(size < 16 || a >= 100000000, 0)) {
        return format_thickness_general(out, size, value, units, resolution, layout, doubled, meas_mode);
    }
    // The usual text, made in one word: the field of `a` (a blank in mode 5,
    // then blanks up to the width, then at least `digits` digits) cut to
    // six characters, of which the first `keep` go out behind the sign, then
    // the point and the next `decimals`. Digits that would stand past the
    // eighth character leave the word, past the cut anyway.
    const WordLayout& w = WORD_LAYOUTS[layout_index(key, side, negative ? 1 : 0, digit_count(a))];
    const std::uint64_t field = (eight_digits(a) >> w.right << w.left) | w.blanks;
    const unsigned shift = negative ? 8 : 0;
    const std::uint64_t text = ((field << shift) & w.head_mask) | ((field << (shift + 8)) & w.tail_mask) | w.constant;
    std::memcpy(out, &text, 8);
    out[w.total] = '\0';
    return w.total;
}

void format_encoder_step(char* out, std::size_t size, std::uint32_t encoder_index,
                         std::uint32_t step_code, std::uint32_t units, std::uint32_t custom_res) {
    TextOut o(out, size);
    int ok = 0;
    const std::uint32_t factor = encoder_factor(encoder_index, units, custom_res, 100, &ok);
    if (ok == 0) return;
    std::uint32_t s = (step_code * factor) / 1000u;

    int width, keep, decimals;
    std::uint32_t round;
    if (units == 1) {
        if (s < 1000000) width = 6, keep = 2, decimals = 3, round = 5;
        else width = 7, keep = 3, decimals = 2, round = 50;
    } else {
        if (s < 100000) width = 5, keep = 1, decimals = 4, round = 0;
        else width = 6, keep = 2, decimals = 3, round = 5;
    }
    s += round;

    char scratch[7];
    format_text_bounded(scratch, sizeof scratch, "%*.5lu", width, static_cast<unsigned long>(s));
    char digits[NUMBER_TEXT_SIZE];
    TextOut d(digits, sizeof digits);
    cut_digits(d, scratch, std::strlen(scratch), keep, decimals);
    format_text_bounded(out, size, "%s %s", digits, units == 1 ? "MM" : "IN");
}

void format_encoder_distance(char* out, std::size_t size, std::uint32_t encoder_index,
                             std::uint32_t step_code, std::uint32_t units,
                             std::uint32_t custom_res, std::uint32_t custom_multiplier) {
    TextOut o(out, size);
    int ok = 0;
    const std::uint32_t factor = encoder_factor(encoder_index, units, custom_res, custom_multiplier, &ok);
    if (ok == 0) return;
    const std::uint32_t n = (step_code + 1u) * factor;
    // The instrument holds the distance in single precision.
    const float narrowed = static_cast<float>(static_cast<double>(n));
    const double distance = static_cast<double>(narrowed) / 10000000.0;
    format_text_bounded(out, std::min<std::size_t>(size, 14), "%.7f", distance);
}

void format_scan_scale(char* out, std::size_t size, std::int32_t value, std::uint32_t units,
                       std::uint32_t meas_mode) {
    TextOut o(out, size);
    char scratch[6];
    int keep, decimals;
    if (meas_mode == MEAS_MODE_CP) {
        if (value == 0) {
            o.put(units == 0 ? "  0.00" : "   0.0");
            return;
        }
        const int precision = units == 0 ? 2 : 1;
        format_text_bounded(scratch, sizeof scratch, "%*.*ld", 6, precision, static_cast<long>(value));
        keep = units == 0 ? 3 : 4;
        decimals = units == 0 ? 2 : 1;
    } else {
        const int precision = units == 0 ? 4 : 3;
        format_text_bounded(scratch, sizeof scratch, "%5.*lu", precision,
                            static_cast<unsigned long>(static_cast<std::uint32_t>(value)));
        keep = units == 0 ? 2 : 3;
        decimals = units == 0 ? 3 : 2;
    }
    cut_digits(o, scratch, std::strlen(scratch), keep, decimals);
}

void format_time_us(char* out, std::size_t size, std::int32_t value) {
    TextOut o(out, size);
    char scratch[NUMBER_TEXT_SIZE];
    format_text_bounded(scratch, sizeof scratch, "%-5.5ld", static_cast<long>(value));
    // At least five digits: the last two are dropped, two decimals remain.
    const std::size_t length = std::strlen(scratch);
    if (length < 5) return;
    o.put_prefix(scratch, length - 4);
    o.put('.');
    o.put_prefix(scratch + (length - 4), 2);
    o.put(" US");
}

void format_frequency_mhz(char* out, std::size_t size, std::uint16_t tenths_mhz) {
    TextOut o(out, size);
    char scratch[4];
    format_text_bounded(scratch, sizeof scratch, "%d", static_cast<int>(tenths_mhz));
    const std::size_t length = std::strlen(scratch);
    if (length == 0) return;
    o.put_prefix(scratch, length - 1);
    o.put('.');
    o.put(scratch[length - 1]);
    o.put(" MHZ");
}

const char* format_pulser_voltage(std::uint32_t code) {
    switch (code) {
        case 1: return "60 V";
        case 2: return "90 V";
        case 3: return "120 V";
        default: return "30 V";
    }
}

void format_tenths(char* out, std::size_t size, std::uint16_t value) {
    TextOut o(out, size);
    char scratch[4];
    // The instrument's format has a "0" flag that the precision overrides;
    // it stays as the instrument wrote it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat"
    format_text_bounded(scratch, sizeof scratch, "%03.3d", static_cast<int>(value));
#pragma GCC diagnostic pop
    o.put_prefix(scratch, 2);
    o.put('.');
    o.put_prefix(scratch + std::min<std::size_t>(2, std::strlen(scratch)), 1);
}

void format_gain_setting(char* out, std::size_t size, std::uint16_t mode, std::uint16_t db) {
    TextOut o(out, size);
    if (mode == 4) {
        // "%-2dDB" in a buffer of NUMBER_TEXT_SIZE, then the marks.
        char scratch[NUMBER_TEXT_SIZE];
        TextBuilder s(scratch, sizeof scratch);
        s.put_int(db, 2, -1, true);
        s.put("DB");
        o.put(s.view());
        if (db == 0) o.put(" MIN");
        if (db == 94) o.put(" MAX");
        return;
    }
    // "%-4.4s": the first four characters of the name, blanks up to four.
    const char* name = ui_text(UI_GAIN_MODE + static_cast<std::int64_t>(mode));
    const std::size_t n = strnlen(name, 4);
    o.put(std::string_view(name, n));
    for (std::size_t k = n; k < 4; ++k) o.put(' ');
}

void format_velocity(char* out, std::size_t size, std::uint32_t value, std::uint32_t units) {
    if (units == 0) {
        format_text_bounded(out, size, "0.%05lu", static_cast<unsigned long>(value));
    } else {
        format_text_bounded(out, size, "%5lu", static_cast<unsigned long>(value));
    }
}

void format_temperature(char* out, std::size_t size, std::int32_t fahrenheit, std::uint32_t metric) {
    const std::size_t bound = std::min<std::size_t>(size, 10);
    if (metric != 0) {
        const float f = static_cast<float>(fahrenheit);
        const float celsius = ((f - 32.0f) * 5.0f + 4.0f) / 9.0f;
        TextBuilder o(out, bound);  // "% 4.1f C"
        put_one_decimal(o, celsius);
        o.put(" C");
    } else {
        TextBuilder o(out, bound);  // "%4i F"
        o.put_int(fahrenheit, 4);
        o.put(" F");
    }
}

void put_one_decimal(TextBuilder& o, float value) {
    // Rounded to tenths as printf rounds: from the exact binary value, a tie
    // to the even tenth. A float's 24 bits times ten are exact in a double,
    // and so is the fraction that floor leaves.
    const double magnitude = std::fabs(static_cast<double>(value));
    if (!(magnitude < 1e8)) {  // large or not a number: printf itself
        char text[64];
        format_text_bounded(text, sizeof text, "% 4.1f", static_cast<double>(value));
        o.put(text);
        return;
    }
    const double tenths = magnitude * 10.0;
    const double whole = std::floor(tenths);
    const double fraction = tenths - whole;
    auto q = static_cast<std::uint64_t>(whole);
    if (fraction > 0.5 || (fraction == 0.5 && (q & 1u) != 0)) ++q;
    // A sign or the blank of the " " flag, the digits, the point and the
    // tenth: never shorter than the width of 4.
    o.put(std::signbit(value) ? '-' : ' ');
    o.put_int(static_cast<std::int64_t>(q / 10));
    o.put('.');
    o.put(static_cast<char>('0' + q % 10));
}

void format_temp_coefficient(char* out, std::size_t size, std::int32_t value) {
    const float STEP = float_from_bits(0x3727C5ACu);  // 0.00001f
    const float coefficient = static_cast<float>(value) * STEP;
    // The " " flag of the instrument's format gives way to "+".
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat"
    format_text_bounded(out, std::min<std::size_t>(size, 10), "% +1.5f", static_cast<double>(coefficient));
#pragma GCC diagnostic pop
}

void blank_zeros(char* text) {
    for (; *text != '\0'; ++text) {
        if (*text == '0') *text = ' ';
    }
}

}  // namespace ugf
