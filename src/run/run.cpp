#include "run/run.h"

#include <cstdlib>
#include <cstring>

#include "run/export.h"
#include "run/output_name.h"

namespace ugf {

namespace {

void print_usage(const Console& console) {
    console_print(console, "INFO: Enter two arguments\n");
    console_print(console, "INFO: 1. \"Drive:\\file_path\\file_name.ugf\"\n");
    console_print(console, "INFO: 2. d (or D) for detailed output; g (or G) for grid output\n");
    console_print(console,
                  "INFO: 3. v (or V) for verbose output whole file on console; a (or A) for abbreviated\n");
}

}  // namespace

int run_converter(int argc, const char* const* argv, DlSession& session, const RunIo& io) {
    const Console& console = io.console;
    auto print_usage = [&console] { ugf::print_usage(console); };
    auto print_console = [&console](const char* text) { console_print(console, text); };
    if (argc != 4) {
        print_usage();
        return 1;
    }

    int output_form = 0;
    switch (argv[2][0]) {
        case 'd': case 'D': output_form = OUTPUT_DETAILED; break;
        case 'g': case 'G': output_form = OUTPUT_GRID; break;
        default: print_usage(); return 1;
    }

    CsvSink sink;
    switch (argv[3][0]) {
        case 'v': case 'V': sink.verbose_output = 1; break;
        case 'a': case 'A': sink.verbose_output = 0; break;
        default: print_usage(); return 1;
    }

    const std::size_t length = std::strlen(argv[1]);
    if (length > INPUT_PATH_SIZE - 1) {
        print_console("ERROR: File name too long!\n");
        return 1;
    }
    char input_path[INPUT_PATH_SIZE] = {};
    std::memcpy(input_path, argv[1], length);

    // Room for the name less its extension and the longer of the two endings.
    char* output_path = static_cast<char*>(std::calloc(length + 26, 1));
    if (output_path == nullptr) {
        print_console("ERROR: memory error!\n");
        return 1;
    }
    std::memcpy(output_path, input_path, length);

    const char* extension = length >= 4 ? output_path + length - 4 : "";
    if (std::strcmp(extension, ".UGF") != 0 && std::strcmp(extension, ".ugf") != 0) {
        std::free(output_path);
        print_console("ERROR: input file name error <not .ugf>!\n");
        return 1;
    }

    print_console("STATUS: Opening Datalogger Session...\n");
    // Read errors are printed on the run's console with the status lines.
    session.dl_stream.console = console;
    if (io.open_input(io.context, session, input_path) == 0) {
        print_console("ERROR: Operation failed!\n");
        std::free(output_path);
        return 1;
    }

    const char* suffix = output_form_suffix(output_form);
    char* end = output_path + output_stem_length(length);
    std::memcpy(end, suffix, std::strlen(suffix));
    std::memcpy(end + std::strlen(suffix), CSV_EXTENSION, std::strlen(CSV_EXTENSION) + 1);

    if (io.create_output(io.context, output_path, sink) == 0) {
        std::free(output_path);
        print_console("ERROR: fopen failed.\n");
        return 1;
    }

    print_console("STATUS: Exporting Data Logger File...\n");
    if (export_datalogger_file(session, output_form, sink) == 0) {
        // The output stays as written so far; it is flushed when the process ends.
        std::free(output_path);
        print_console("ERROR: Operation failed!\n");
        return 1;
    }

    if (io.finish_output(io.context, sink) != 0) {
        print_console("STATUS: Export done.\n");
    } else {
        print_console("ERROR: Output file close failed!\n");
    }
    std::free(output_path);
    return 0;
}

}  // namespace ugf
