// The pieces of CSV rows, gathered into one buffer and handed to csv_write
// at once instead of piece by piece.
//
// csv_write halves every "%%" of the text it is given, pairing the "%" from
// left to right. Joining two pieces changes what that pass sees only where
// a "%" that ends the first would pair with a "%" that begins the second;
// such a piece is written after what was gathered before it, never joined
// to it. Any other pieces are joined, "%" or not.
#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "base/console.h"

namespace ugf {

struct CsvRow {
    // Room for many rows: a walk gathers the rows of its readings here.
    static constexpr std::size_t CAPACITY = 16384;

    CsvSink& sink;
    std::array<char, CAPACITY> text;  // only the first `used` characters are read
    std::size_t used = 0;
    int written = 1;  // 0 once a write gave 0

    explicit CsvRow(CsvSink& s) : sink(s) {}

    // Writes what was gathered.
    void flush() {
        if (used != 0 && csv_write(std::string_view(text.data(), used), sink) == 0) written = 0;
        used = 0;
    }

    void add(std::string_view piece) {
        if (piece.size() > CAPACITY) {
            flush();
            if (csv_write(piece, sink) == 0) written = 0;
            return;
        }
        const bool percents_meet = used != 0 && text[used - 1] == '%' && !piece.empty() && piece[0] == '%';
        if (piece.size() > CAPACITY - used || percents_meet) flush();
        std::memcpy(text.data() + used, piece.data(), piece.size());
        used += piece.size();
    }

    // Room for n characters behind what was gathered (n at most CAPACITY),
    // for a caller that writes a piece in place and then calls taken() with
    // its end. The piece must not begin with a "%" where the text gathered
    // so far ends with one.
    char* room(std::size_t n) {
        if (n > CAPACITY - used) flush();
        return text.data() + used;
    }
    void taken(const char* end) { used = static_cast<std::size_t>(end - text.data()); }

    // Writes the rest; 1, or 0 when any write gave 0.
    int finish() {
        flush();
        return written;
    }
};

}  // namespace ugf
