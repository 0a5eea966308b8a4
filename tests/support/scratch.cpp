#include "support/scratch.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace ugf::test {

#ifndef UGF2CSV_BINARY
#define UGF2CSV_BINARY "ugf2csv"
#endif

ScratchDir::ScratchDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "ugf2csv-XXXXXX").string();
    if (mkdtemp(pattern.data()) != nullptr) path = pattern;
}

ScratchDir::~ScratchDir() {
    std::error_code ignored;
    if (!path.empty()) std::filesystem::remove_all(path, ignored);
}

void write_file(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

std::optional<std::string> read_file(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return std::nullopt;
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

std::string from_platform_text(const std::string& text) {
    const char* crlf = std::getenv("UGF2CSV_CRLF");
    if (crlf == nullptr || std::string(crlf) != "1") return text;
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') {
            plain += '\n';
            ++i;
        } else if (text[i] == '\n') {
            plain += "<LF>";
        } else {
            plain += text[i];
        }
    }
    return plain;
}

std::optional<std::string> read_output(const std::string& path) {
    std::optional<std::string> content = read_file(path);
    if (content) content = from_platform_text(*content);
    return content;
}

namespace {

RunResult run_binary(const char* binary, const std::vector<std::string>& args, const std::string& workdir,
                     unsigned timeout_seconds) {
    ScratchDir capture;
    const std::string out_path = capture.file("stdout");
    const std::string err_path = capture.file("stderr");
    const char* wrapper = std::getenv("UGF2CSV_WRAPPER");

    std::vector<std::string> argv_text;
    if (wrapper != nullptr && *wrapper != '\0') argv_text.push_back(wrapper);
    argv_text.push_back(binary);
    argv_text.insert(argv_text.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (std::string& a : argv_text) argv.push_back(a.data());
    argv.push_back(nullptr);

    RunResult result;
    pid_t pid = fork();
    if (pid == 0) {
        if (!workdir.empty() && chdir(workdir.c_str()) != 0) _exit(127);
        int out = open(out_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        int err = open(err_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        int in = open("/dev/null", O_RDONLY);
        if (out < 0 || err < 0 || in < 0) _exit(127);
        dup2(in, 0);
        dup2(out, 1);
        dup2(err, 2);
        alarm(timeout_seconds);  // survives the exec: a run that hangs is killed
        execvp(argv[0], argv.data());
        _exit(127);
    }
    int wait_status = 0;
    if (pid > 0 && waitpid(pid, &wait_status, 0) == pid && WIFEXITED(wait_status)) {
        result.status = WEXITSTATUS(wait_status);
    }
    result.console = from_platform_text(read_file(out_path).value_or(""));
    result.errors = from_platform_text(read_file(err_path).value_or(""));
    return result;
}

}  // namespace

// The binaries can be replaced, for instance by cross-built ones run under
// an emulator: UGF2CSV_BINARY and UGF_TOOLKIT_BINARY name them,
// UGF2CSV_WRAPPER the launcher.
RunResult run_converter_binary(const std::vector<std::string>& args, const std::string& workdir,
                               unsigned timeout_seconds) {
    const char* binary = std::getenv("UGF2CSV_BINARY");
    return run_binary(binary != nullptr ? binary : UGF2CSV_BINARY, args, workdir, timeout_seconds);
}

RunResult run_toolkit_binary(const std::vector<std::string>& args, const std::string& workdir,
                             unsigned timeout_seconds) {
    const char* binary = std::getenv("UGF_TOOLKIT_BINARY");
    return run_binary(binary != nullptr ? binary : UGF_TOOLKIT_BINARY, args, workdir, timeout_seconds);
}

std::string console_of_success(const std::string& echo) {
    return "STATUS: Opening Datalogger Session...\n"
           "STATUS: Exporting Data Logger File...\n" +
           echo + "STATUS: Export done.\n";
}

}  // namespace ugf::test
