// Streaming writer of one-sheet workbooks (.xlsx): a zip of a few XML parts
// whose sheet is deflated as it is written, so memory stays bounded whatever
// the number of rows.
#pragma once

#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct z_stream_s;

namespace ugf {

// One finished member of the zip, for the central directory.
struct ZipEntry {
    std::string name;
    std::uint32_t crc = 0;
    std::uint64_t packed = 0;
    std::uint64_t size = 0;
    std::uint64_t offset = 0;
};

struct ZipDeflateEnd {
    void operator()(z_stream_s* stream) const;
};

struct XlsxWriter {
    std::FILE* file = nullptr;
    int ok = 0;                  // 0 once anything failed: every later call fails
    std::uint64_t written = 0;   // bytes written to the file so far
    std::vector<ZipEntry> entries;
    std::unique_ptr<z_stream_s, ZipDeflateEnd> deflate;  // reset for each member
    std::string pending;         // sheet text not yet handed to deflate
    std::vector<unsigned char> packed;  // deflate's output buffer
    std::uint32_t row_count = 0;
    // Cell styles by "right alignment flag + number format"; the index of a
    // style is its place in styles.xml. Styles 0 and 1 are the text styles.
    std::map<std::string, int> styles;
};

// Starts a workbook on `file`, opened for writing in binary mode; the writer
// never seeks. `sheet_name` is cut to what spreadsheets accept (31
// characters, no : \ / ? * [ ], no apostrophe at either end). Returns 1, or
// 0 when a write failed.
int xlsx_begin(XlsxWriter& writer, std::FILE* file, std::string_view sheet_name);

// Adds the next row. In a title row every cell is a text cell; otherwise a
// cell whose text, after its leading blanks, is a plain decimal number
// (optional "-", digits, optional "." and digits; at most 15 significant
// digits) is a number shown with exactly that text, unless its column (from
// 0) is listed in `text_columns`. Leading blanks become right alignment;
// empty cells are left out. Returns 1, or 0 when a write failed or the sheet
// would pass the spreadsheet limits of 1048576 rows and 16384 columns.
int xlsx_add_row(XlsxWriter& writer, const std::vector<std::string>& cells, int title_row,
                 const std::vector<int>& text_columns = {});

// Ends the sheet and writes the styles and the zip directory. Returns 1, or 0
// when this or any earlier call failed. The file is left open; the writer
// takes no more rows.
int xlsx_finish(XlsxWriter& writer);

}  // namespace ugf
