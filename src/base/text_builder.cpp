#include "base/text_builder.h"

#include <algorithm>

namespace ugf {

namespace {

// The pairs of digits "00" to "99".
constexpr char DIGIT_PAIRS[] =
    "0001020304050607080910111213141516171819202122232425262728293031323334353637383940414243444546474849"
    "5051525354555657585960616263646566676869707172737475767778798081828384858687888990919293949596979899";

// The number of decimal digits of m, at least 1.
int digit_count(std::uint64_t m) {
    if (m < 100000) return m < 100 ? (m < 10 ? 1 : 2) : (m < 1000 ? 3 : (m < 10000 ? 4 : 5));
    int n = 6;
    for (std::uint64_t bound = 1000000; n < 20 && m >= bound; bound *= 10) ++n;
    return n;
}

// Writes the n decimal digits of m ending before `end`, two at a time, in
// 32-bit arithmetic once the rest fits.
void write_digits(char* end, std::uint64_t m, int n) {
    for (; m > 0xFFFFFFFFu; n -= 2) {
        const std::size_t pair = static_cast<std::size_t>(m % 100) * 2;
        m /= 100;
        *--end = DIGIT_PAIRS[pair + 1];
        *--end = DIGIT_PAIRS[pair];
    }
    auto rest = static_cast<std::uint32_t>(m);
    for (; n >= 2; n -= 2) {
        const std::uint32_t pair = rest % 100 * 2;
        rest /= 100;
        *--end = DIGIT_PAIRS[pair + 1];
        *--end = DIGIT_PAIRS[pair];
    }
    if (n == 1) *--end = static_cast<char>('0' + rest);
}

char* repeat(char* at, char c, std::int64_t count) {
    for (; count > 0; --count) *at++ = c;
    return at;
}

}  // namespace

void TextBuilder::put_int(std::int64_t value, int width, int precision, bool left) {
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
    const int n = magnitude == 0 ? 0 : digit_count(magnitude);
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
        write_digits(at, magnitude, n);
        if (left) at = repeat(at, ' ', blanks);
        len = static_cast<std::size_t>(at - out);
        out[len] = '\0';
        return;
    }
    // Cut at the end of the buffer: the parts in order, as far as they fit.
    char digits[20];
    write_digits(digits + n, magnitude, n);
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
