// Incremental reader of comma-separated text.
#include "csv_cells.h"

namespace ugf {
namespace {

// Where the reader stands; the state survives the end of a piece.
enum : int {
    kRowStart = 0,  // nothing of the current row read yet
    kCellStart,     // just after a comma: the new cell may open with a quote
    kUnquoted,      // inside a cell that did not open with a quote
    kQuoted,        // inside quotes
    kQuoteInQuoted  // a quote inside quotes: closes them unless another follows
};

int end_row(CsvCells& reader, CsvRowFn emit, void* context) {
    int go_on = emit(context, reader.row);
    reader.row.clear();
    reader.state = kRowStart;
    return go_on;
}

}  // namespace

int csv_feed(CsvCells& reader, const char* data, std::size_t size, CsvRowFn emit, void* context) {
    for (std::size_t i = 0; i < size; ++i) {
        char c = data[i];
        if (reader.state == kRowStart) {
            reader.row.emplace_back();
            reader.state = kCellStart;
        }
        if (reader.state == kQuoted) {
            if (c == '"')
                reader.state = kQuoteInQuoted;
            else
                reader.row.back().push_back(c);
            continue;
        }
        if (reader.state == kQuoteInQuoted && c == '"') {
            reader.row.back().push_back('"');
            reader.state = kQuoted;
            continue;
        }
        // Outside quotes. A text after a closing quote, or a quote within an
        // unquoted cell, is not RFC 4180; it is kept as it stands, as
        // spreadsheets do, rather than refused.
        if (c == ',') {
            reader.row.emplace_back();
            reader.state = kCellStart;
        } else if (c == '\n') {
            if (!end_row(reader, emit, context)) return 0;
        } else if (c == '"' && reader.state == kCellStart) {
            reader.state = kQuoted;
        } else {
            reader.row.back().push_back(c);
            reader.state = kUnquoted;
        }
    }
    return 1;
}

int csv_finish(CsvCells& reader, CsvRowFn emit, void* context) {
    if (reader.state == kRowStart) return 1;
    return end_row(reader, emit, context);
}

}  // namespace ugf
