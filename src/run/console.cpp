#include "run/console.h"

#include <cstdarg>
#include <climits>
#include <cstring>

namespace ugf {

void print_console(const char* format, ...) {
    va_list args;
    va_start(args, format);
    std::vprintf(format, args);
    va_end(args);
}

namespace {

// A direct reading of the formats that rows are made of. Formats of plain
// characters, "%%", and the conversions s, d, i and u (with the flags "-" and
// "0", a width and a precision, digits or "*", and the lengths l and ll) are
// expanded here exactly as vsnprintf expands them; the library's general
// machinery costs more than a whole row's other work. Any other format (a
// float, another flag or conversion, a null text) is left to vsnprintf
// itself, from the start, so every format is still read as the C library
// reads it. The unit tests hold this path against vsnprintf.
struct FormatOut {
    char* buf;
    std::size_t size;
    std::size_t length = 0;  // the whole text, written or not
    void put(char c) {
        if (length + 1 < size) buf[length] = c;
        ++length;
    }
    void put(const char* s, std::size_t n) {
        if (length + 1 < size) {
            const std::size_t room = size - 1 - length;
            std::memcpy(buf + length, s, n < room ? n : room);
        }
        length += n;
    }
    void pad(char c, std::size_t n) {
        for (std::size_t i = 0; i < n; ++i) put(c);
    }
};

// Reads a decimal count of the format; false when it doesn't fit in an int.
bool read_count(const char*& f, int& value) {
    long long v = 0;
    while (*f >= '0' && *f <= '9') {
        v = v * 10 + (*f - '0');
        if (v > INT_MAX) return false;
        ++f;
    }
    value = static_cast<int>(v);
    return true;
}

// Expands the format into out. False when the format holds something this
// reading leaves to vsnprintf; out is then to be thrown away.
bool expand_plain_format(FormatOut& out, const char* f, va_list args) {
    while (*f != '\0') {
        if (*f != '%') {
            const char* next = std::strchr(f, '%');
            const std::size_t n = next != nullptr ? static_cast<std::size_t>(next - f) : std::strlen(f);
            out.put(f, n);
            f += n;
            continue;
        }
        ++f;
        if (*f == '%') {
            out.put('%');
            ++f;
            continue;
        }
        bool left = false;
        bool zero = false;
        for (;; ++f) {
            if (*f == '-') left = true;
            else if (*f == '0') zero = true;
            else break;
        }
        int width = 0;
        if (*f == '*') {
            width = va_arg(args, int);
            if (width < 0) {
                if (width == INT_MIN) return false;
                left = true;
                width = -width;
            }
            ++f;
        } else if (!read_count(f, width)) {
            return false;
        }
        int precision = -1;
        if (*f == '.') {
            ++f;
            if (*f == '*') {
                precision = va_arg(args, int);
                if (precision < 0) precision = -1;
                ++f;
            } else if (*f == '-') {
                return false;
            } else if (!read_count(f, precision)) {
                return false;
            }
        }
        int longs = 0;
        while (*f == 'l' && longs < 2) {
            ++longs;
            ++f;
        }
        const char conversion = *f++;
        if (conversion == 's') {
            if (longs != 0 || zero) return false;
            const char* text = va_arg(args, const char*);
            if (text == nullptr) return false;
            const std::size_t n = precision < 0 ? std::strlen(text)
                                                : strnlen(text, static_cast<std::size_t>(precision));
            const std::size_t w = static_cast<std::size_t>(width);
            if (!left && n < w) out.pad(' ', w - n);
            out.put(text, n);
            if (left && n < w) out.pad(' ', w - n);
            continue;
        }
        bool negative = false;
        unsigned long long magnitude = 0;
        if (conversion == 'd' || conversion == 'i') {
            long long v = longs == 0 ? va_arg(args, int) : longs == 1 ? va_arg(args, long) : va_arg(args, long long);
            negative = v < 0;
            magnitude = negative ? 0ull - static_cast<unsigned long long>(v) : static_cast<unsigned long long>(v);
        } else if (conversion == 'u') {
            magnitude = longs == 0   ? va_arg(args, unsigned int)
                        : longs == 1 ? va_arg(args, unsigned long)
                                     : va_arg(args, unsigned long long);
        } else {
            return false;
        }
        char digits[24];
        std::size_t n = 0;
        if (!(magnitude == 0 && precision == 0)) {
            do {
                digits[sizeof digits - 1 - n++] = static_cast<char>('0' + magnitude % 10);
                magnitude /= 10;
            } while (magnitude != 0);
        }
        const std::size_t least = precision < 0 ? 0 : static_cast<std::size_t>(precision);
        const std::size_t zeros = least > n ? least - n : 0;
        const std::size_t body = (negative ? 1 : 0) + zeros + n;
        const std::size_t w = static_cast<std::size_t>(width);
        const std::size_t fill = body < w ? w - body : 0;
        // "0" pads with zeros behind the sign, unless "-" or a precision is given.
        const bool zero_fill = zero && !left && precision < 0;
        if (!left && !zero_fill) out.pad(' ', fill);
        if (negative) out.put('-');
        if (zero_fill) out.pad('0', fill);
        out.pad('0', zeros);
        out.put(digits + sizeof digits - n, n);
        if (left) out.pad(' ', fill);
    }
    return true;
}

// vsnprintf of the format, through the plain reading when it applies.
int format_into(char* buf, std::size_t size, const char* format, va_list args) {
    va_list plain;
    va_copy(plain, args);
    FormatOut out{buf, size};
    const bool done = expand_plain_format(out, format, plain);
    va_end(plain);
    if (done && out.length <= static_cast<std::size_t>(INT_MAX)) {
        if (size > 0) buf[out.length < size ? out.length : size - 1] = '\0';
        return static_cast<int>(out.length);
    }
    return std::vsnprintf(buf, size, format, args);
}

}  // namespace

int format_text(char* buf, std::size_t size, const char* format, ...) {
    va_list args;
    va_start(args, format);
    int n = format_into(buf, size, format, args);
    va_end(args);
    if (n < 0) return -1;
    if (size == 0) return 0;
    return static_cast<std::size_t>(n) < size ? n : static_cast<int>(size - 1);
}

int format_text_bounded(char* buf, std::size_t size, const char* format, ...) {
    va_list args;
    va_start(args, format);
    int n = format_into(buf, size, format, args);
    va_end(args);
    return n < 0 ? -1 : n;
}

int format_text_plain(char* buf, std::size_t size, const char* format, ...) {
    va_list args;
    va_start(args, format);
    FormatOut out{buf, size};
    const bool done = expand_plain_format(out, format, args);
    va_end(args);
    if (!done || out.length > static_cast<std::size_t>(INT_MAX)) return -2;
    if (size > 0) buf[out.length < size ? out.length : size - 1] = '\0';
    return static_cast<int>(out.length);
}

std::size_t collapse_percent_pairs(std::string_view text, char* out) {
    std::size_t n = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        out[n++] = text[i];
        if (text[i] == '%' && i + 1 < text.size() && text[i + 1] == '%') ++i;
    }
    return n;
}

namespace {

// Writes text to one stream with the percent pass, without copying the text
// when it holds no percent sign (the usual case).
void write_collapsed(std::string_view text, std::FILE* stream) {
    std::size_t start = 0;
    while (start < text.size()) {
        const void* hit = std::memchr(text.data() + start, '%', text.size() - start);
        if (hit == nullptr) {
            std::fwrite(text.data() + start, 1, text.size() - start, stream);
            return;
        }
        std::size_t at = static_cast<std::size_t>(static_cast<const char*>(hit) - text.data());
        // Write up to and including this "%"; skip its partner if it has one.
        std::fwrite(text.data() + start, 1, at + 1 - start, stream);
        start = at + 1;
        if (start < text.size() && text[start] == '%') ++start;
    }
}

}  // namespace

int csv_write(std::string_view text, CsvSink& sink) {
    if (sink.verbose_output != 0) write_collapsed(text, stdout);
    if (sink.stream != nullptr) write_collapsed(text, sink.stream);
    return 1;
}

}  // namespace ugf
