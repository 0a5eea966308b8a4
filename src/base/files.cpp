#include "base/files.h"

namespace ugf {

#if defined(_WIN32)

std::wstring utf8_to_wide(const char* text) {
    std::wstring out;
    const auto* s = reinterpret_cast<const unsigned char*>(text);
    for (std::size_t i = 0; s[i] != 0;) {
        const unsigned char c = s[i];
        int extra = c >= 0xF0 && c <= 0xF4 ? 3 : c >= 0xE0 ? 2 : c >= 0xC2 && c < 0xE0 ? 1 : 0;
        if (c < 0x80) extra = 0;
        char32_t cp = extra == 3 ? c & 0x07u : extra == 2 ? c & 0x0Fu : extra == 1 ? c & 0x1Fu : c;
        bool valid = c < 0x80 || extra != 0;
        for (int k = 1; valid && k <= extra; ++k) {
            if ((s[i + k] & 0xC0u) != 0x80u) valid = false;
            else cp = (cp << 6) | (s[i + k] & 0x3Fu);
        }
        if (valid && extra != 0 && ((extra == 2 && cp < 0x800) || (extra == 3 && (cp < 0x10000 || cp > 0x10FFFF)) ||
                                    (cp >= 0xD800 && cp <= 0xDFFF))) {
            valid = false;
        }
        if (!valid) {
            out.push_back(static_cast<wchar_t>(c));  // Latin-1
            ++i;
            continue;
        }
        if (cp >= 0x10000) {
            cp -= 0x10000;
            out.push_back(static_cast<wchar_t>(0xD800 + (cp >> 10)));
            out.push_back(static_cast<wchar_t>(0xDC00 + (cp & 0x3FF)));
        } else {
            out.push_back(static_cast<wchar_t>(cp));
        }
        i += static_cast<std::size_t>(extra) + 1;
    }
    return out;
}

std::string wide_to_utf8(const wchar_t* text) {
    std::string out;
    for (std::size_t i = 0; text[i] != 0; ++i) {
        char32_t cp = static_cast<char16_t>(text[i]);
        if (cp >= 0xD800 && cp < 0xDC00 && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000) {
            cp = 0x10000 + ((cp - 0xD800) << 10) + (static_cast<char16_t>(text[i + 1]) - 0xDC00);
            ++i;
        }
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
    return out;
}

std::FILE* open_file(const char* path, const char* mode) {
    return _wfopen(utf8_to_wide(path).c_str(), utf8_to_wide(mode).c_str());
}

#else

std::FILE* open_file(const char* path, const char* mode) { return std::fopen(path, mode); }

#endif

}  // namespace ugf
