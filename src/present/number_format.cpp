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

std::size_t temperature_text(char* out, std::int32_t fahrenheit, std::uint32_t metric) {
    static_assert(NUMBER_TEXT_SIZE >= 16);
    if (fahrenheit < 0 || fahrenheit >= 10000) {
        format_temperature(out, NUMBER_TEXT_SIZE, fahrenheit, metric);
        return std::strlen(out);
    }
    if (metric == 0) {
        // "%4i F": the four digits with blanks for the leading zeros but
        // the last, then " F" and the terminator.
        const std::uint32_t digits = length_word::FOUR_DIGITS[static_cast<std::size_t>(fahrenheit)];
        const int zeros = __builtin_ctz((digits ^ 0x30303030u) | 0x01000000u) >> 3;
        const auto blanks = static_cast<std::uint32_t>(length_word::LOW_BYTES[zeros]);
        const std::uint64_t text = ((digits & ~blanks) | (0x20202020u & blanks)) | (std::uint64_t{' '} << 32) |
                                   (std::uint64_t{'F'} << 40);
        std::memcpy(out, &text, 8);
        return 6;
    }
    // "% 4.1f C" of the same single-precision Celsius value as
    // format_temperature, rounded to tenths as put_one_decimal rounds;
    // below 5,557 degrees the text never reaches the bound.
    const float f = static_cast<float>(fahrenheit);
    const float celsius = ((f - 32.0f) * 5.0f + 4.0f) / 9.0f;
    const double tenths = std::fabs(static_cast<double>(celsius)) * 10.0;
    const double whole = std::floor(tenths);
    const double fraction = tenths - whole;
    auto q = static_cast<std::uint32_t>(whole);
    if (fraction > 0.5 || (fraction == 0.5 && (q & 1u) != 0)) ++q;
    const std::uint32_t units = q / 10;
    const int n = 1 + (units >= 10 ? 1 : 0) + (units >= 100 ? 1 : 0) + (units >= 1000 ? 1 : 0);
    const std::uint32_t digits = length_word::FOUR_DIGITS[units] >> (8 * (4 - n));
    out[0] = std::signbit(celsius) ? '-' : ' ';
    std::memcpy(out + 1, &digits, 4);
    const std::uint64_t tail = std::uint64_t{'.'} | (std::uint64_t{'0' + q % 10} << 8) | (std::uint64_t{' '} << 16) |
                               (std::uint64_t{'C'} << 24);
    std::memcpy(out + 1 + n, &tail, 8);
    return static_cast<std::size_t>(n) + 5;
}

std::size_t percent_text(char* out, std::int32_t percent) {
    if (percent <= -1000 || percent >= 10000) {
        TextBuilder text(out, NUMBER_TEXT_SIZE);
        text.put_int(percent, 3);
        text.put('%');
        return text.len;
    }
    // Blanks up to the width of 3, the sign and the digits (from the
    // four-digit texts), the "%" and the terminator, in eight bytes.
    const bool negative = percent < 0;
    const auto m = static_cast<std::uint32_t>(negative ? -percent : percent);
    const int n = 1 + (m >= 10 ? 1 : 0) + (m >= 100 ? 1 : 0) + (m >= 1000 ? 1 : 0);
    const int body = n + (negative ? 1 : 0);
    const int pad = body < 3 ? 3 - body : 0;
    char text[16];
    std::memcpy(text, "        ", 8);
    text[pad] = '-';
    const std::uint32_t digits = length_word::FOUR_DIGITS[m] >> (8 * (4 - n));
    std::memcpy(text + pad + (negative ? 1 : 0), &digits, 4);
    text[pad + body] = '%';
    text[pad + body + 1] = '\0';
    std::memcpy(out, text, 8);
    return static_cast<std::size_t>(pad + body + 1);
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
