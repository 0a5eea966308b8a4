#include "core/convert.h"

#include <cstdio>
#include <filesystem>

#include "core/output.h"
#include "csv_cells.h"
#include "run/export.h"
#include "xlsx.h"

namespace ugf::kit {

std::string output_ending(const ConvertOptions& options) {
    return std::string(options.form == OUTPUT_DETAILED ? "_detailed_output" : "_grid_output") +
           (options.xlsx ? ".xlsx" : ".csv");
}

namespace {

// The rows of a grid that hold titles: one with columns, and one more for
// each dimension whose groups stand side by side. "LINEAR" and "MANUAL"
// grids are lines of identifier and value.
int grid_title_rows(std::int32_t file_type) {
    switch (file_type) {
        case FILE_TYPE_LINEAR:
        case FILE_TYPE_MANUAL: return 0;
        case FILE_TYPE_LINEAR_CPT:
        case FILE_TYPE_2D:
        case FILE_TYPE_2D_MANUAL: return 1;
        case FILE_TYPE_4D_MANUAL: return 3;
        default: return 2;
    }
}

// The export's text, read back into rows and handed to the workbook. The
// export quotes stored texts, so that a comma in a note stays in its cell.
struct WorkbookFeed {
    XlsxWriter writer;
    CsvCells reader;
    int title_rows = 0;
    std::vector<int> text_columns;
    std::uint32_t rows = 0;

    static int row(void* context, const std::vector<std::string>& cells) {
        auto& feed = *static_cast<WorkbookFeed*>(context);
        const int title = feed.rows++ < static_cast<std::uint32_t>(feed.title_rows) ? 1 : 0;
        return xlsx_add_row(feed.writer, cells, title, feed.text_columns);
    }
    static void write(void* context, const char* text, std::size_t n) {
        auto& feed = *static_cast<WorkbookFeed*>(context);
        csv_feed(feed.reader, text, n, row, context);
    }
};

}  // namespace

int write_workbook(Survey& survey, int form, std::FILE* file, const std::string& sheet, std::string& why) {
    auto feed = std::make_unique<WorkbookFeed>();
    const std::int32_t type = survey.session->file_type;
    // Identifiers are texts, whatever their characters: the first column of
    // the detailed form and of the lines of "LINEAR" and "MANUAL" grids.
    if (form == OUTPUT_DETAILED || grid_title_rows(type) == 0) feed->text_columns = {0};
    if (form == OUTPUT_GRID) feed->title_rows = grid_title_rows(type);
    if (xlsx_begin(feed->writer, file, sheet) == 0) {
        why = "cannot write the workbook";
        return 0;
    }
    CsvSink sink;
    sink.write = WorkbookFeed::write;
    sink.context = feed.get();
    sink.quote = 1;
    if (export_datalogger_file(*survey.session, form, sink) == 0) {
        why = conversion_failure(survey);
        return 0;
    }
    csv_finish(feed->reader, WorkbookFeed::row, feed.get());
    if (xlsx_finish(feed->writer) == 0) {
        why = "cannot write the workbook";
        return 0;
    }
    return 1;
}

namespace {

std::string sheet_name(const std::string& path) {
    const std::filesystem::path p(std::u8string(reinterpret_cast<const char8_t*>(path.data()), path.size()));
    const std::u8string stem = p.stem().u8string();
    return std::string(reinterpret_cast<const char*>(stem.data()), stem.size());
}

}  // namespace

int convert_to_file(Survey& survey, const ConvertOptions& options, const std::string& target, std::string& why) {
    AtomicFile out;
    if (atomic_open(out, target, !options.xlsx, why) == 0) return 0;
    if (options.xlsx) {
        if (write_workbook(survey, options.form, out.file, sheet_name(survey.path), why) == 0) {
            atomic_abandon(out);
            return 0;
        }
        return atomic_commit(out, why);
    }
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
    if (options.xlsx) {
        // The workbook goes through a temporary stream: the writer writes to a file.
        std::FILE* file = std::tmpfile();
        if (file == nullptr) {
            why = "no temporary file for the workbook";
            return 0;
        }
        const int ok = write_workbook(survey, options.form, file, sheet_name(survey.path.empty() ? "survey" : survey.path), why);
        if (ok != 0) {
            std::fflush(file);
            std::rewind(file);
            char chunk[1 << 14];
            for (std::size_t n; (n = std::fread(chunk, 1, sizeof chunk, file)) != 0;) text.append(chunk, n);
        }
        std::fclose(file);
        return ok;
    }
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
