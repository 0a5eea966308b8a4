// The toolkit's file layer: finding the surveys of a folder, naming the
// outputs as the converter does, and writing an output so that a failed run
// never leaves a partial file: the text goes to a temporary file beside the
// target, which replaces the target only once it is complete.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace ugf::kit {

// A survey to work on, and the folder (relative to a folder given on the
// command line, "" for a file given itself) whose structure its output keeps
// under an output folder.
struct Input {
    std::string path;
    std::string subfolder;
};

// Adds `path` if it is a file, or every file below it whose name ends in
// ".ugf" (any case) if it is a folder, sorted by name. 0 with `why` when the
// path is neither.
int find_surveys(const std::string& path, std::vector<Input>& inputs, std::string& why);

// Whether a name ends in ".ugf" in any case.
bool has_survey_extension(const std::string& name);

// The endings of the toolkit's other outputs.
inline constexpr const char* REPORT_ENDING = "_report.html";
inline constexpr const char* COMPARE_CSV_ENDING = "_compare.csv";
inline constexpr const char* COMPARE_PAGE_ENDING = "_compare.html";
inline constexpr const char* JSON_ENDING = "_survey.json";

// The name the converter gives an output of the survey file `name`: the name
// without its extension ".ugf" (in any case) and with `ending`
// ("_detailed_output.csv"). A name without that extension keeps all of it.
std::string output_name(const std::string& name, const std::string& ending);

// The same beside the input, or in `out_dir` (and the input's subfolder)
// when that isn't empty.
std::string output_path(const Input& input, const std::string& ending, const std::string& out_dir);

// An output being written: `file` writes to a temporary file beside the
// target. `text` opens it in text mode (on Windows, line ends become CR LF,
// as the converter's output does).
struct AtomicFile {
    std::string target;
    std::string temporary;
    std::FILE* file = nullptr;
};

// Creates the temporary file (and the target's folder). 0 with `why`.
int atomic_open(AtomicFile& out, const std::string& target, bool text, std::string& why);
// Completes the file and puts it in the target's place. 0 with `why` (the
// temporary is removed and any older target stays).
int atomic_commit(AtomicFile& out, std::string& why);
// Removes the temporary file; the target stays as it was.
void atomic_abandon(AtomicFile& out);

// Writes `bytes` to `target` through an AtomicFile.
int write_file_atomically(const std::string& target, const std::string& bytes, bool text, std::string& why);

// Reads the whole file into `bytes`. 0 with `why` ("cannot open: REASON",
// "cannot read: REASON").
int read_file(const std::string& path, std::string& bytes, std::string& why);

// The last part of a path (after its last "/" or "\\").
std::string last_part(const std::string& path);

#if defined(_WIN32)
// The wide-character command line of a Windows program as UTF-8 texts, and
// an argv over them.
struct Arguments {
    std::vector<std::string> texts;
    std::vector<const char*> argv;
};
Arguments utf8_arguments(int argc, wchar_t** argv);
#endif

}  // namespace ugf::kit
