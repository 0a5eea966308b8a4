#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "base/csv_row.h"
#include "support/scratch.h"

namespace ugf {
namespace {

// The file that one row of the given pieces makes.
std::string row_of(const std::vector<std::string>& pieces) {
    test::ScratchDir dir;
    const std::string path = dir.file("out.csv");
    std::FILE* file = std::fopen(path.c_str(), "w");
    CsvSink sink{file, 0};
    CsvRow row(sink);
    for (const std::string& piece : pieces) row.add(piece);
    EXPECT_EQ(row.finish(), 1);
    std::fclose(file);
    return test::read_file(path).value_or("<missing>");
}

TEST(CsvRow, EachPieceKeepsItsOwnPercentPass) {
    struct Case {
        std::vector<std::string> pieces;
        const char* expected;
    } cases[] = {
        {{",A", ",B", "\n"}, ",A,B\n"},
        // Two lone "%" side by side stay two: joined, they would halve.
        {{"5%", "%", "\n"}, "5%%\n"},
        {{",12%%", ",DIFF", "\n"}, ",12%,DIFF\n"},
        {{"%%", "%%"}, "%%"},
        {{}, ""},
    };
    for (const Case& c : cases) EXPECT_EQ(row_of(c.pieces), c.expected);
}

TEST(CsvRow, PiecesBeyondTheBufferComeOutWhole) {
    const std::string long_piece(CsvRow::CAPACITY + 10, 'x');
    const std::string half(CsvRow::CAPACITY / 2 + 1, 'y');
    EXPECT_EQ(row_of({"a", long_piece, "b"}), "a" + long_piece + "b");
    EXPECT_EQ(row_of({half, half, half}), half + half + half);
}

}  // namespace
}  // namespace ugf
