#include "ugf/converter.hpp"

#include <memory>

#include "file/session.h"
#include "run/run.h"

namespace ugf::kit {

namespace {

struct MemoryRun {
    const std::uint8_t* bytes = nullptr;
    std::size_t size = 0;
    const Sink* output = nullptr;
    ConverterRun* run = nullptr;
};

void print(void* context, const char* text) { static_cast<MemoryRun*>(context)->run->console += text; }

int open_input(void* context, DlSession& session, const char*) {
    const auto& m = *static_cast<MemoryRun*>(context);
    return open_datalogger_memory(session, m.bytes, m.size);
}

void write_output(void* context, const char* text, std::size_t n) { (*static_cast<MemoryRun*>(context)->output)(text, n); }

int create_output(void* context, const char* path, CsvSink& sink) {
    auto& m = *static_cast<MemoryRun*>(context);
    m.run->wrote_output = true;
    m.run->output_name = path;
    sink.write = write_output;
    sink.context = context;
    return 1;
}

int finish_output(void*, CsvSink&) { return 1; }

}  // namespace

int run_converter_on_bytes(const std::string& name, const std::uint8_t* bytes, std::size_t size, const std::string& form,
                           const Sink& output, ConverterRun& run) {
    run = ConverterRun{};
    MemoryRun m{bytes, size, &output, &run};
    RunIo io;
    io.console = {print, &m};
    io.open_input = open_input;
    io.create_output = create_output;
    io.finish_output = finish_output;
    io.context = &m;
    const char* argv[] = {"ugf2csv", name.c_str(), form.c_str(), "a", nullptr};
    auto session = std::make_unique<DlSession>();
    run.status = run_converter(4, argv, *session, io);
    close_datalogger_session(*session);
    return run.status;
}

}  // namespace ugf::kit
