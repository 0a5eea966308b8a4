#include "ugf/convert.hpp"

#include <cstdio>
#include <filesystem>

#include "core/survey_state.h"
#include "csv_cells.h"
#include "run/export.h"
#include "run/output_name.h"
#include "ugf/files.hpp"
#include "xlsx.h"

namespace ugf::kit {

static_assert(FORM_GRID == OUTPUT_GRID && FORM_DETAILED == OUTPUT_DETAILED);

std::string output_ending(const ConvertOptions& options) {
    return std::string(output_form_suffix(options.form)) + (options.xlsx ? ".xlsx" : CSV_EXTENSION);
}

std::string output_name(const std::string& name, const ConvertOptions& options) {
    return output_name(name, output_ending(options));
}

namespace {

int grid_title_rows(std::int32_t file_type) { return grid_shape(file_type).title_rows; }

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
    const std::int32_t type = session_of(survey).file_type;
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
    if (export_datalogger_file(session_of(survey), form, sink) == 0) {
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
    std::vector<char> buffer(1 << 16);
    std::setvbuf(out.file, buffer.data(), _IOFBF, buffer.size());
    CsvSink sink;
    sink.stream = out.file;
    sink.quote = options.quote ? 1 : 0;
    if (export_datalogger_file(session_of(survey), options.form, sink) == 0) {
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
    if (export_datalogger_file(session_of(survey), options.form, sink) == 0) {
        why = conversion_failure(survey);
        return 0;
    }
    return 1;
}

namespace {

// A sink behind the library's write function; once the caller's sink refuses,
// the rest of the text is dropped and the conversion fails.
struct SinkFeed {
    const Sink* sink = nullptr;
    bool refused = false;
    static void write(void* context, const char* data, std::size_t n) {
        auto& feed = *static_cast<SinkFeed*>(context);
        if (!feed.refused && n != 0 && (*feed.sink)(data, n) == 0) feed.refused = true;
    }
};

}  // namespace

int convert_to_sink(Survey& survey, const ConvertOptions& options, const Sink& sink, std::string& why) {
    if (options.form != FORM_DETAILED && options.form != FORM_GRID) {
        why = "no such output form";
        return 0;
    }
    SinkFeed feed{&sink};
    if (options.xlsx) {
        std::string bytes;
        if (convert_to_text(survey, options, bytes, why) == 0) return 0;
        SinkFeed::write(&feed, bytes.data(), bytes.size());
    } else {
        CsvSink csv;
        csv.write = SinkFeed::write;
        csv.context = &feed;
        csv.quote = options.quote ? 1 : 0;
        if (export_datalogger_file(session_of(survey), options.form, csv) == 0) {
            why = conversion_failure(survey);
            return 0;
        }
    }
    if (feed.refused) {
        why = "the output was refused";
        return 0;
    }
    return 1;
}

}  // namespace ugf::kit
