// Test driver of the workbook writer: converts a CSV file into a one-sheet
// workbook, reading the file in pieces of 1, 2, ..., PIECE bytes in turn so
// that rows and quoted cells are cut at every place.
// Usage: csv_to_xlsx [-t TITLE_ROWS] [-c TEXT_COLUMNS] [-p PIECE] IN.csv OUT.xlsx SHEET
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "csv_cells.h"
#include "xlsx.h"

namespace {

struct Conversion {
    ugf::XlsxWriter writer;
    int title_rows = 0;            // still to come
    std::vector<int> text_columns;  // the first TEXT_COLUMNS columns
};

int add_row(void* context, const std::vector<std::string>& cells) {
    Conversion& conversion = *static_cast<Conversion*>(context);
    int title = conversion.title_rows > 0;
    conversion.title_rows -= title;
    return ugf::xlsx_add_row(conversion.writer, cells, title, conversion.text_columns);
}

}  // namespace

int main(int argc, char** argv) {
    Conversion conversion;
    std::size_t piece = 4096;
    int a = 1;
    for (; a + 4 < argc && argv[a][0] == '-'; a += 2) {
        int n = std::atoi(argv[a + 1]);
        if (std::strcmp(argv[a], "-t") == 0) conversion.title_rows = n;
        if (std::strcmp(argv[a], "-p") == 0 && n > 0) piece = static_cast<std::size_t>(n);
        for (int c = 0; std::strcmp(argv[a], "-c") == 0 && c < n; ++c) conversion.text_columns.push_back(c);
    }
    if (argc - a != 3) {
        std::fprintf(stderr, "usage: csv_to_xlsx [-t TITLE_ROWS] [-c TEXT_COLUMNS] [-p PIECE] IN OUT SHEET\n");
        return 2;
    }
    std::FILE* in = std::fopen(argv[a], "rb");
    std::FILE* out = in ? std::fopen(argv[a + 1], "wb") : nullptr;
    int ok = out && ugf::xlsx_begin(conversion.writer, out, argv[a + 2]);
    ugf::CsvCells reader;
    std::vector<char> buffer(piece);
    for (std::size_t k = 0, n = 1; ok && n > 0; ++k) {
        n = std::fread(buffer.data(), 1, 1 + k % piece, in);
        ok = ugf::csv_feed(reader, buffer.data(), n, add_row, &conversion);
    }
    ok = ok && !std::ferror(in) && ugf::csv_finish(reader, add_row, &conversion) &&
         ugf::xlsx_finish(conversion.writer);
    if (out && std::fclose(out) != 0) ok = 0;
    if (in) std::fclose(in);
    if (!ok) std::fprintf(stderr, "csv_to_xlsx: cannot convert %s into %s\n", argv[a], argv[a + 1]);
    return ok ? 0 : 1;
}
