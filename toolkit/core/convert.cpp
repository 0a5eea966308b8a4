#include "core/convert.h"

#include "core/output.h"
#include "run/export.h"

namespace ugf::kit {

const char* output_ending(int form) {
    return form == OUTPUT_DETAILED ? "_detailed_output.csv" : "_grid_output.csv";
}

int convert_to_file(Survey& survey, const ConvertOptions& options, const std::string& target, std::string& why) {
    AtomicFile out;
    if (atomic_open(out, target, true, why) == 0) return 0;
    static thread_local char buffer[1 << 16];
    std::setvbuf(out.file, buffer, _IOFBF, sizeof buffer);
    CsvSink sink;
    sink.stream = out.file;
    sink.quote = options.quote ? 1 : 0;
    if (export_datalogger_file(*survey.session, options.form, sink) == 0) {
        why = conversion_failure(survey);
        atomic_abandon(out);
        return 0;
    }
    return atomic_commit(out, why);
}

int convert_to_text(Survey& survey, const ConvertOptions& options, std::string& text, std::string& why) {
    text.clear();
    CsvSink sink;
    sink.write = [](void* context, const char* data, std::size_t n) { static_cast<std::string*>(context)->append(data, n); };
    sink.context = &text;
    sink.quote = options.quote ? 1 : 0;
    if (export_datalogger_file(*survey.session, options.form, sink) == 0) {
        why = conversion_failure(survey);
        return 0;
    }
    return 1;
}

}  // namespace ugf::kit
