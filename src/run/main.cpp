// The converter's entry point: one run on the process's one session, with
// standard output as its console and files as its input and output.
#include <cstdio>

#include "base/files.h"
#include "run/run.h"


namespace {

ugf::DlSession session;
// Every write of the output file has a cost of its own in the system (the
// file's times, its journal) besides its bytes: 128 KiB a write halves the
// writes of 64 KiB for 16 more pages of memory.
char output_buffer[1 << 17];
std::FILE* output = nullptr;

int open_input(void*, ugf::DlSession& s, const char* path) { return ugf::open_datalogger_session(s, path); }

int create_output(void*, const char* path, ugf::CsvSink& sink) {
    output = ugf::open_file(path, "w");
    if (output == nullptr) return 0;
    std::setvbuf(output, output_buffer, _IOFBF, sizeof output_buffer);
    sink.stream = output;
    return 1;
}

// A failed export leaves the output open: what was written is flushed when
// the process ends.
int finish_output(void*, ugf::CsvSink&) { return std::fclose(output) == 0 ? 1 : 0; }

int run(int argc, const char* const* argv) {
    ugf::RunIo io;
    io.console = ugf::standard_output_console();
    io.open_input = open_input;
    io.create_output = create_output;
    io.finish_output = finish_output;
    return ugf::run_converter(argc, argv, session, io);
}

}  // namespace

#if defined(_WIN32)
// Windows hands a program its arguments in the system's code page, where a
// name in another script can't be written; the wide-character entry gets
// them whole, and the converter takes them as UTF-8.
int wmain(int argc, wchar_t** argv) {
    const ugf::Utf8Arguments args = ugf::utf8_arguments(argc, argv);
    return run(argc, args.argv.data());
}
#else
int main(int argc, char** argv) { return run(argc, argv); }
#endif
