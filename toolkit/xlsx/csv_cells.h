// Incremental reader of comma-separated text (RFC 4180): fed the text in
// pieces of any size, as an exporter writes it, it hands out whole rows.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace ugf {

// Receives one complete row; returns 1 to go on, 0 to stop the reading.
using CsvRowFn = int (*)(void* context, const std::vector<std::string>& cells);

// The reader's state between two pieces: the cells of the row that is not
// complete yet (the last one still being filled) and where in a cell the
// reader stands. Memory is bounded by the longest row.
struct CsvCells {
    std::vector<std::string> row;
    int state = 0;  // see csv_cells.cpp
};

// Reads `size` bytes of `data`. Every row that ends in them (at a "\n" outside
// quotes) goes to `emit`, with quoted cells unquoted ("" read as ") and line
// ends inside quotes kept. A row that ends with a comma has an empty last cell.
// Returns 1, or 0 as soon as `emit` returns 0.
int csv_feed(CsvCells& reader, const char* data, std::size_t size, CsvRowFn emit, void* context);

// Ends the input: a last row that has no "\n" goes to `emit`. The reader is
// then ready for a new text. Returns 1, or what `emit` returned.
int csv_finish(CsvCells& reader, CsvRowFn emit, void* context);

}  // namespace ugf
