// Texts put together piece by piece in a caller's buffer, for the cells that
// are written for every reading: copies of texts, single characters and
// integers in the conversions of printf.
//
// A text made here is the text that snprintf would make of the same format
// and values into a buffer of the same size: the characters that fit before
// the last byte, and a terminator. put_int is printf's "%-*.*lld"
// conversion without snprintf's parsing and stream set-up, which cost more
// than the digits of a short cell; tests/unit/text_builder_test.cpp compares
// it with snprintf over the values, widths, precisions and buffer sizes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string_view>

namespace ugf {

// The pairs of digits "00" to "99".
inline constexpr char DIGIT_PAIRS[] =
    "0001020304050607080910111213141516171819202122232425262728293031323334353637383940414243444546474849"
    "5051525354555657585960616263646566676869707172737475767778798081828384858687888990919293949596979899";

// The number of decimal digits of m, at least 1.
inline int decimal_digit_count(std::uint64_t m) {
    if (m < 100000) return m < 100 ? (m < 10 ? 1 : 2) : (m < 1000 ? 3 : (m < 10000 ? 4 : 5));
    int n = 6;
    for (std::uint64_t bound = 1000000; n < 20 && m >= bound; bound *= 10) ++n;
    return n;
}

// Writes the n decimal digits of m (n = decimal_digit_count(m), or 0 for no
// digit) into the n bytes before `end`, two at a time, in 32-bit arithmetic
// once the rest fits.
inline void write_decimal_digits(char* end, std::uint64_t m, int n) {
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

// Writes `count` copies of c from `at` on (none for a count below 1);
// returns the end.
inline char* repeat(char* at, char c, std::int64_t count) {
    for (; count > 0; --count) *at++ = c;
    return at;
}

// Copies n bytes. The short copies of cells are made of two fixed-size
// moves that overlap, cheaper than a call to memcpy.
[[gnu::noinline]] void copy_long(char* dst, const char* src, std::size_t n);
inline void copy_bytes(char* dst, const char* src, std::size_t n) {
    if (n > 16) {
        copy_long(dst, src, n);
    } else if (n >= 8) {
        std::uint64_t head, tail;
        std::memcpy(&head, src, 8);
        std::memcpy(&tail, src + n - 8, 8);
        std::memcpy(dst, &head, 8);
        std::memcpy(dst + n - 8, &tail, 8);
    } else if (n >= 4) {
        std::uint32_t head, tail;
        std::memcpy(&head, src, 4);
        std::memcpy(&tail, src + n - 4, 4);
        std::memcpy(dst, &head, 4);
        std::memcpy(dst + n - 4, &tail, 4);
    } else if (n > 0) {
        dst[0] = src[0];
        dst[n / 2] = src[n / 2];
        dst[n - 1] = src[n - 1];
    }
}

struct TextBuilder {
    char* out;
    std::size_t size;  // bytes at out; at most size - 1 characters are kept
    std::size_t len = 0;

    TextBuilder(char* buffer, std::size_t buffer_size) : out(buffer), size(buffer_size) {
        if (size > 0) out[0] = '\0';
    }

    std::string_view view() const { return {out, len}; }

    void put(char c) {
        if (len + 1 < size) {
            char* at = out + len;
            at[0] = c;
            at[1] = '\0';
            ++len;
        }
    }
    void put(std::string_view s) {
        if (len + 1 >= size) return;
        const std::size_t room = size - 1 - len;
        const std::size_t n = s.size() < room ? s.size() : room;
        copy_bytes(out + len, s.data(), n);
        len += n;
        out[len] = '\0';
    }
    // A terminated text; the texts of cells are short, and a loop copies
    // them for less than measuring and a call to memcpy. (Local pointers:
    // the stores through `out` may alias the members.)
    void put(const char* s) {
        if (size == 0) return;
        char* at = out + len;
        char* const last = out + size - 1;
        while (*s != '\0' && at < last) *at++ = *s++;
        *at = '\0';
        len = static_cast<std::size_t>(at - out);
    }
    // Up to n characters of s, stopping at its terminator.
    void put_prefix(const char* s, std::size_t n) {
        for (std::size_t k = 0; k < n && s[k] != '\0'; ++k) put(s[k]);
    }

    // ",%s" of each text: the cells of a row. Written in place, without a
    // test for each piece, when the whole fits.
    void put_cells(std::initializer_list<std::string_view> cells) {
        std::size_t total = cells.size();
        for (std::string_view cell : cells) total += cell.size();
        if (len + total >= size) {
            for (std::string_view cell : cells) {
                put(',');
                put(cell);
            }
            return;
        }
        char* at = out + len;
        for (std::string_view cell : cells) {
            *at++ = ',';
            copy_bytes(at, cell.data(), cell.size());
            at += cell.size();
        }
        *at = '\0';
        len = static_cast<std::size_t>(at - out);
    }

    // printf's "%*.*lld" of `value`: at least `precision` digits (a negative
    // precision: none given, one digit; 0 and the value 0: no digit), then
    // blanks up to `width` characters in front, or behind when `left` or
    // when the width is negative.
    void put_int(std::int64_t value, int width = 0, int precision = -1, bool left = false) {
        if (width == 0 && precision < 0 && value >= 0 && size - len > 20) {
            // Plain "%d" of a value that fits: its digits, nothing else.
            const auto m = static_cast<std::uint64_t>(value);
            const int n = decimal_digit_count(m);
            write_decimal_digits(out + len + n, m, n);
            len += static_cast<std::size_t>(n);
            out[len] = '\0';
            return;
        }
        if (precision < 0 && !left && width >= 0 && width <= 16) {
            // "%*d", the cells' usual padded number: made behind blanks
            // (the sign and the digits over the last of them that the
            // width leaves), and copied when the whole fits.
            const bool negative = value < 0;
            const std::uint64_t m = negative ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
            const int n = decimal_digit_count(m);
            const int body = n + (negative ? 1 : 0);
            const int pad = width > body ? width - body : 0;
            const auto total = static_cast<std::size_t>(pad + body);
            if (total < size - len) {
                char text[40];
                std::memcpy(text, "                ", 16);
                text[pad] = '-';
                write_decimal_digits(text + pad + body, m, n);
                copy_bytes(out + len, text, total);
                len += total;
                out[len] = '\0';
                return;
            }
        }
        put_int_any(value, width, precision, left);
    }
    void put_int_any(std::int64_t value, int width, int precision, bool left);
};

}  // namespace ugf
