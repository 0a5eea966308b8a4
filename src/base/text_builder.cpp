#include "base/text_builder.h"

#include <algorithm>

namespace ugf {

void copy_long(char* dst, const char* src, std::size_t n) { std::memcpy(dst, src, n); }

void TextBuilder::put_int_any(std::int64_t value, int width, int precision, bool left) {
    if (len + 1 >= size) return;
    // A negative width is the width of a left-justified text; no precision
    // means at least one digit.
    std::int64_t w = width;
    if (w < 0) {
        left = true;
        w = -w;
    }
    const std::int64_t least = precision < 0 ? 1 : precision;
    // The magnitude (the unsigned negation gives it for the most negative
    // value too) and its digits.
    const std::uint64_t magnitude =
        value < 0 ? 0u - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
    const int n = magnitude == 0 ? 0 : decimal_digit_count(magnitude);
    const std::int64_t zeros = least > n ? least - n : 0;
    const std::int64_t body = (value < 0 ? 1 : 0) + zeros + n;
    const std::int64_t blanks = w > body ? w - body : 0;
    std::size_t room = size - 1 - len;
    if (static_cast<std::uint64_t>(blanks + body) <= room) {
        // The usual case: the whole text fits, written in place.
        char* at = out + len;
        if (!left) at = repeat(at, ' ', blanks);
        if (value < 0) *at++ = '-';
        at = repeat(at, '0', zeros) + n;
        write_decimal_digits(at, magnitude, n);
        if (left) at = repeat(at, ' ', blanks);
        len = static_cast<std::size_t>(at - out);
        out[len] = '\0';
        return;
    }
    // Cut at the end of the buffer: the parts in order, as far as they fit.
    char digits[20];
    write_decimal_digits(digits + n, magnitude, n);
    const auto fill = [&](char c, std::int64_t count) {
        const std::size_t k = std::min(static_cast<std::size_t>(count), room);
        std::memset(out + len, c, k);
        len += k;
        room -= k;
    };
    if (!left) fill(' ', blanks);
    if (value < 0) fill('-', 1);
    fill('0', zeros);
    const std::size_t k = std::min(static_cast<std::size_t>(n), room);
    std::memcpy(out + len, digits, k);
    len += k;
    room -= k;
    if (left) fill(' ', blanks);
    out[len] = '\0';
}

}  // namespace ugf
