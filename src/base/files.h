// Opening files by name. Names are UTF-8 on every platform: on Windows the
// name is turned into UTF-16 and opened with the wide-character open, so
// that any Unicode name opens, whatever the system's code page.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace ugf {

std::FILE* open_file(const char* path, const char* mode);

#if defined(_WIN32)
// UTF-8 to UTF-16 and back; a byte that isn't part of valid UTF-8 is read as
// Latin-1, so that every name converts.
std::wstring utf8_to_wide(const char* text);
std::string wide_to_utf8(const wchar_t* text);
// The program's arguments, from the wide-character entry point, as UTF-8:
// `argv` points into `texts` and ends with a null pointer.
struct Utf8Arguments {
    std::vector<std::string> texts;
    std::vector<const char*> argv;
};
Utf8Arguments utf8_arguments(int argc, wchar_t** argv);
#endif

}  // namespace ugf
