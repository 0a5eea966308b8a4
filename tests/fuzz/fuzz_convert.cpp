// libFuzzer target: any bytes as a datalogger file, opened as a session and
// exported in both forms to a scratch output, as a run of the converter would.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "detailed/export.h"
#include "file/session.h"
#include "run/console.h"

namespace {

std::string input_path;
std::string output_path;

void set_up() {
    const std::string dir = "/tmp/ugf2csv-fuzz-" + std::to_string(getpid());
    std::string command = "mkdir -p " + dir;
    if (std::system(command.c_str()) != 0) std::abort();
    input_path = dir + "/input.ugf";
    output_path = dir + "/output.csv";
    // The console lines of failed reads are expected; keep them out of the log.
    if (std::freopen("/dev/null", "w", stdout) == nullptr) std::abort();
}

ugf::DlSession session;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (input_path.empty()) set_up();
    std::FILE* in = std::fopen(input_path.c_str(), "wb");
    if (in == nullptr) return 0;
    std::fwrite(data, 1, size, in);
    std::fclose(in);

    for (int form : {ugf::OUTPUT_GRID, ugf::OUTPUT_DETAILED}) {
        if (ugf::open_datalogger_session(session, input_path.c_str()) == 0) return 0;
        std::FILE* out = std::fopen(output_path.c_str(), "w");
        if (out != nullptr) {
            ugf::CsvSink sink{out, 0};
            ugf::export_datalogger_file(session, form, sink);
            std::fclose(out);
        }
        ugf::dl_close(session.stream);
    }
    return 0;
}
