// Scratch folders, file contents, and runs of the real converter binary.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ugf::test {

// A fresh folder under the system's temporary folder, removed at the end.
struct ScratchDir {
    std::string path;
    ScratchDir();
    ~ScratchDir();
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;
    std::string file(const std::string& name) const { return path + "/" + name; }
};

// Writes `text` as the whole content of a file.
void write_file(const std::string& path, const std::string& text);

// The whole content of a file, or nothing when it doesn't exist.
std::optional<std::string> read_file(const std::string& path);

// The content of a converter output file with the platform's line ends
// turned back into "\n". On a build whose text streams end lines with
// carriage return and line feed (UGF2CSV_CRLF=1 in the environment), every
// line end must be "\r\n"; a bare "\n" shows as "<LF>" so that it fails the
// comparison.
std::optional<std::string> read_output(const std::string& path);
std::string from_platform_text(const std::string& text);

struct RunResult {
    int status = -1;
    std::string console;  // standard output, line ends as from_platform_text
    std::string errors;   // standard error (the converter never writes there)
};

// Runs the converter with these arguments (the program name is added) in the
// folder `workdir`, or in the test's own folder when it is empty. A run that
// takes longer than `timeout_seconds` is killed and has the status -1.
RunResult run_converter_binary(const std::vector<std::string>& args,
                               const std::string& workdir = "", unsigned timeout_seconds = 120);

// The same for the toolkit `ugf` (UGF_TOOLKIT_BINARY replaces it).
RunResult run_toolkit_binary(const std::vector<std::string>& args, const std::string& workdir = "",
                             unsigned timeout_seconds = 120);

// The console text of a run that opened the file and exported it: the three
// status lines around `echo`.
std::string console_of_success(const std::string& echo = "");

}  // namespace ugf::test
