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
#include <string_view>

namespace ugf {

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
            out[len++] = c;
            out[len] = '\0';
        }
    }
    void put(std::string_view s) {
        if (len + 1 >= size) return;
        const std::size_t room = size - 1 - len;
        const std::size_t n = s.size() < room ? s.size() : room;
        std::memcpy(out + len, s.data(), n);
        len += n;
        out[len] = '\0';
    }
    // A terminated text; the texts of cells are short, and a loop copies
    // them for less than measuring and a call to memcpy.
    void put(const char* s) {
        while (*s != '\0' && len + 1 < size) out[len++] = *s++;
        if (size > 0) out[len] = '\0';
    }
    // Up to n characters of s, stopping at its terminator.
    void put_prefix(const char* s, std::size_t n) { put(std::string_view(s, strnlen(s, n))); }

    // printf's "%*.*lld" of `value`: at least `precision` digits (a negative
    // precision: none given, one digit; 0 and the value 0: no digit), then
    // blanks up to `width` characters in front, or behind when `left` or
    // when the width is negative.
    void put_int(std::int64_t value, int width = 0, int precision = -1, bool left = false);
};

}  // namespace ugf
