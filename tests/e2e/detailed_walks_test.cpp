// The reading table follows the instrument's walk: the rows of one survey in
// each walk pattern, with the column dimension moving first, and a three
// dimension zigzag whose point dimension moves second.
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "detailed_support.h"

namespace ugf::test {
namespace {

// A "2D" box of columns A, B and rows 1 to 3 of the corrosion gauge, slot i
// holding a thickness of 0.1 (i + 1) inch; the column moves first.
TEST(DetailedWalks, EveryPatternWithTheColumnFirst) {
    const std::array<std::string, 6> rows = {
        "A1, 0.100,IN,OFF,OFF,LOW ,OFF,,0,STD,OFF,OFF,,,,,,\n",
        "A2, 0.200,IN,OFF,OFF,LOW ,OFF,,0,STD,OFF,OFF,,,,,,\n",
        "A3, 0.300,IN,OFF,OFF,LOW ,OFF,,0,STD,OFF,OFF,,,,,,\n",
        "B1, 0.400,IN,OFF,OFF,LOW ,OFF,,0,STD,OFF,OFF,,,,,,\n",
        "B2, 0.500,IN,OFF,OFF,LOW ,OFF,,0,STD,OFF,OFF,,,,,,\n",
        "B3, 0.600,IN,OFF,OFF,LOW ,OFF,,0,STD,OFF,OFF,,,,,,\n"};
    const struct {
        std::uint32_t pattern;
        std::string name;
        std::array<int, 6> slots;
    } walks[] = {{0, "STANDARD", {0, 3, 1, 4, 2, 5}},
                 {1, "REVERSE", {0, 5, 2, 4, 1, 3}}, {2, "ZIGZAG", {0, 3, 4, 1, 2, 5}},
                 {3, "REVERSE ZIGZAG", {0, 5, 2, 1, 4, 3}}};
    for (const auto& walk : walks) {
        SurveyHeader h = survey_header(2, 5);
        h.id_count = 6;
        set_ranges(h, {{"1", "3"}, {"A", "B"}});
        h.first_inc = 2;
        h.second_inc = 1;
        h.third_inc = 0;
        h.walk_pattern = walk.pattern;
        ImageBuilder image = survey_image(h);
        for (std::uint32_t i = 0; i < 6; ++i) {
            write_slot(image, 2, i, gauge_record({.resolution = 1, .thickness = 1000 * (i + 1)}));
        }
        std::string table;
        for (int slot : walk.slots) table += rows[static_cast<std::size_t>(slot)];
        SCOPED_TRACE(walk.name);
        expect_converts(
            image, "d",
            PREAMBLE_CORROSION +
                "PREFIX,START COL,START ROW,END COL,END ROW,1ST INC,COL STEP,ROW STEP,PATTERN,"
                "# ID,# SETUP,# NOTES,CREATED,LAST SAVED\n"
                "FILE-NAME.CSV,2D,29,,A,1,B,3,COL,1,1," + walk.name + ",6,0," + STAMPS +
                IDENTITY_EMPTY + NOTES_EMPTY + TITLES_CORROSION + table + SETUP_TITLES_CORROSION);
    }
}

}  // namespace
}  // namespace ugf::test
