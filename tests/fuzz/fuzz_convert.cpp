// libFuzzer target: any bytes as a datalogger image, opened as a session from
// memory and exported in both forms, as a run of the converter would.
#include <cstddef>
#include <cstdint>

#include "base/console.h"
#include "file/session.h"
#include "run/export.h"

namespace {

// The output is counted, not kept: what matters is that every byte of it
// could be written.
void discard(void* context, const char*, std::size_t n) { *static_cast<std::size_t*>(context) += n; }

ugf::DlSession session;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    for (int form : {ugf::OUTPUT_GRID, ugf::OUTPUT_DETAILED}) {
        if (ugf::open_datalogger_memory(session, data, size) == 0) return 0;
        std::size_t written = 0;
        ugf::CsvSink sink;
        sink.write = discard;
        sink.context = &written;
        ugf::export_datalogger_file(session, form, sink);
        ugf::close_datalogger_session(session);
    }
    return 0;
}
