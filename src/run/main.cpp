#include "run/run.h"

#if defined(_WIN32)
#include <string>
#include <vector>

#include "base/files.h"

// Windows hands a program its arguments in the system's code page, where a
// name in another script can't be written; the wide-character entry gets
// them whole, and the converter takes them as UTF-8.
int wmain(int argc, wchar_t** argv) {
    std::vector<std::string> args;
    for (int i = 0; i < argc; ++i) args.push_back(ugf::wide_to_utf8(argv[i]));
    std::vector<const char*> pointers;
    for (const std::string& a : args) pointers.push_back(a.c_str());
    pointers.push_back(nullptr);
    return ugf::run_converter(argc, pointers.data());
}
#else
int main(int argc, char** argv) { return ugf::run_converter(argc, argv); }
#endif
