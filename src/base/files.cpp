#include "base/files.h"

#include "base/utf8.h"

namespace ugf {

#if defined(_WIN32)

std::wstring utf8_to_wide(const char* text) {
    const std::string_view bytes(text);
    std::wstring out;
    for (std::size_t i = 0, n = 0; i < bytes.size(); i += n) {
        char32_t c = next_char(bytes, i, n);
        if (c >= 0x10000) {
            c -= 0x10000;
            out.push_back(static_cast<wchar_t>(0xD800 + (c >> 10)));
            out.push_back(static_cast<wchar_t>(0xDC00 + (c & 0x3FF)));
        } else {
            out.push_back(static_cast<wchar_t>(c));
        }
    }
    return out;
}

std::string wide_to_utf8(const wchar_t* text) {
    std::string out;
    for (std::size_t i = 0; text[i] != 0; ++i) {
        char32_t c = static_cast<char16_t>(text[i]);
        if (c >= 0xD800 && c < 0xDC00 && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000) {
            c = 0x10000 + ((c - 0xD800) << 10) + (static_cast<char16_t>(text[i + 1]) - 0xDC00);
            ++i;
        }
        append_utf8(out, c);
    }
    return out;
}

Utf8Arguments utf8_arguments(int argc, wchar_t** argv) {
    Utf8Arguments a;
    for (int i = 0; i < argc; ++i) a.texts.push_back(wide_to_utf8(argv[i]));
    for (const std::string& text : a.texts) a.argv.push_back(text.c_str());
    a.argv.push_back(nullptr);
    return a;
}

std::FILE* open_file(const char* path, const char* mode) {
    return _wfopen(utf8_to_wide(path).c_str(), utf8_to_wide(mode).c_str());
}

#else

std::FILE* open_file(const char* path, const char* mode) { return std::fopen(path, mode); }

#endif

}  // namespace ugf
