#include "base/utf8.h"

namespace ugf {

char32_t next_char(std::string_view text, std::size_t i, std::size_t& length) {
    auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
    unsigned char b = byte(i);
    length = 1;
    if (b < 0x80) return b;
    std::size_t n = b >= 0xF0 ? 4 : b >= 0xE0 ? 3 : b >= 0xC0 ? 2 : 0;
    if (n == 0 || b > 0xF4 || i + n > text.size()) return b;
    char32_t cp = b & (0x7F >> n);
    for (std::size_t k = 1; k < n; ++k) {
        if ((byte(i + k) & 0xC0) != 0x80) return b;
        cp = (cp << 6) | (byte(i + k) & 0x3F);
    }
    // The shortest form only, no surrogate halves, nothing past U+10FFFF.
    static constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    if (cp < kLeast[n] || (cp >= 0xD800 && cp <= 0xDFFF) || cp > 0x10FFFF) return b;
    length = n;
    return cp;
}

void append_utf8(std::string& out, char32_t cp) {
    if (cp < 0x80) {
        out.push_back(static_cast<char>(cp));
    } else if (cp < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else if (cp < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    }
}

std::string utf8_text(std::string_view bytes) {
    std::string out;
    out.reserve(bytes.size());
    for (std::size_t i = 0, n = 0; i < bytes.size(); i += n) append_utf8(out, next_char(bytes, i, n));
    return out;
}

}  // namespace ugf
