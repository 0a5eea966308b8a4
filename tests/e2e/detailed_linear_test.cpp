// "MANUAL" files in both output forms (the whole detailed file, and the list
// of one identifier and value a reading), instruments of an unknown gage
// type, whose detailed output ends behind its head, and walks that stand or
// cycle: written to their point count, or ended where they would write for
// ever.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "detailed_support.h"

namespace ugf::test {
namespace {


// "MANUAL" takes its slots in storage order whatever the pattern says, each
// with the identifier stored beside it; one that has no terminator within its
// 21 bytes leaves the identifier cell empty.
TEST(DetailedLinear, ManualFileInBothForms) {
    SurveyHeader h = survey_header(8, 6, "M-");
    h.id_count = 4;
    h.walk_pattern = 1;
    set_ranges(h, {{"1", "4"}});
    ImageBuilder image = survey_image(h);
    write_slot(image, 8, 0, gauge_record({.resolution = 1, .thickness = 12345}), "PIPE-A7");
    write_slot(image, 8, 1, {}, "VALVE 3");
    write_slot(image, 8, 2,
               gauge_record({.los = 1, .note_mask = 5, .first_kind = 1, .second_kind = 1,
                             .first_value = 300}),
               "ABCDEFGHIJKLMNOPQRSTU");
    write_slot(image, 8, 3, gauge_record({.resolution = 1, .thickness = 500}), "");

    expect_converts(image, "d",
                    PREAMBLE_PRECISION +
                        "PREFIX,PATTERN,# ID,# SETUP,# NOTES,CREATED,LAST SAVED\n"
                        "FILE-NAME.CSV,MANUAL,29,M-,REVERSE,4,0," + STAMPS + IDENTITY_EMPTY +
                        NOTES_EMPTY + TITLES_PRECISION +
                        "PIPE-A7,1.2345,IN,OFF,OFF,,0,OFF,OFF,,,,,,\n" "VALVE 3,,,,,,,,,,,,,,\n"
                        ",-.---,IN,OFF,OFF,AC,0,OFF,OFF,--.---,COATING,-.----,MIN,-.----,MAX\n"
                        ",0.0500,IN,OFF,OFF,,0,OFF,OFF,,,,,,\n" +
                        SETUP_TITLES_PRECISION);
    expect_converts(image, "g", "PIPE-A7,1.2345\nVALVE 3,\n,A:C\n,0.0500\n");
}

// An unknown instrument has a list form in the corrosion gauge's digits, and
// a detailed form that stops where the reading table would begin.
TEST(DetailedLinear, UnknownGageTypeInBothForms) {
    const std::string unknown_preamble =
        "UFH: 1,PRODUCT: " + std::string(31, ' ') + ",VERSION: V3.03.03\nFILENAME,TYPE,FILE VERSION,";

    SurveyHeader h = survey_header(0, 9, "U");
    set_ranges(h, {{"1", "2"}});
    ImageBuilder image = survey_image(h);
    write_slot(image, 0, 0, gauge_record({.resolution = 1, .thickness = 12345}));
    write_slot(image, 0, 1, gauge_record(velocity_reading(23300, 1)));
    expect_converts(image, "g", "U1, 1.235\nU2, 5918\n");
    expect_fails_after(image, "d",
                       unknown_preamble + COLUMNS_LINEAR +
                           "FILE-NAME.CSV,LINEAR,29,U,1,2,1,STANDARD,0,0," + STAMPS +
                           IDENTITY_EMPTY + NOTES_EMPTY);

    h.file_type = 2;
    set_ranges(h, {{"1", "1"}, {"A", "A"}});
    image = survey_image(h);
    write_slot(image, 2, 0, {});
    expect_fails_after(image, "d",
                       unknown_preamble +
                           "PREFIX,START COL,START ROW,END COL,END ROW,1ST INC,COL STEP,ROW STEP,"
                           "PATTERN,# ID,# SETUP,# NOTES,CREATED,LAST SAVED\n"
                           "FILE-NAME.CSV,2D,29,U,A,1,A,1,ROW,1,1,STANDARD,0,0," + STAMPS +
                           IDENTITY_EMPTY + NOTES_EMPTY);
}

// Walks that stand or cycle. A walk moved by the rows alone (first
// increment ROW, no other) cycles through the first column of a 2D survey,
// reading its three slots again and again; the file ends behind them. The
// instrument writes such a walk to its point count. Only a count above both
// the slots and 2^21 would write for ever: that walk ends, failing, at its
// visit slots + 1, where a walk that visits each point once would have read
// past the end of the file.
TEST(DetailedLinear, CyclingWalkIsWrittenToItsPointCount) {
    SurveyHeader h = survey_header(2, 5, "W-");
    h.id_count = 1;
    h.second_inc = 0;
    h.third_inc = 0;
    const auto image_of = [&](const char* last_column) {
        set_ranges(h, {{"1", "3"}, {std::string(std::strlen(last_column), 'A'), last_column}});
        ImageBuilder image = survey_image(h);
        write_slot(image, 2, 0, gauge_record({.resolution = 1, .thickness = 12345}));
        write_slot(image, 2, 1, gauge_record({.alarm_state = 1, .resolution = 1, .thickness = 5000, .note_mask = 1}));
        write_slot(image, 2, 2, {});
        return image;
    };
    const std::string head = PREAMBLE_CORROSION +
                             "PREFIX,START COL,START ROW,END COL,END ROW,1ST INC,COL STEP,ROW STEP,"
                             "PATTERN,# ID,# SETUP,# NOTES,CREATED,LAST SAVED\nFILE-NAME.CSV,2D,29,W-,";
    const auto cycle = [](const std::string& column) {
        return "W-" + column + "1, 1.235,IN,OFF,OFF,LOW ,OFF,,0,STD,OFF,OFF,,,,,,\n" + "W-" + column +
               "2, 0.500,IN,HIGH,OFF,LOW ,OFF,A,0,STD,OFF,OFF,,,,,,\n" + "W-" + column + "3,,,,,,,,,,,,,,,,,\n";
    };

    // 5 columns of 3 rows: the first column five times over.
    const ImageBuilder bounded = image_of("E");
    std::string file = head + "A,1,E,3,ROW,1,1,STANDARD,15,0," + STAMPS + IDENTITY_EMPTY + NOTES_EMPTY +
                       TITLES_CORROSION;
    for (int k = 0; k < 5; ++k) file += cycle("A");
    file += SETUP_TITLES_CORROSION;
    expect_converts(bounded, "d", file);
    const Conversion verbose = convert(bounded, "d", "v");
    EXPECT_EQ(verbose.run.console, console_of_success(file));
    EXPECT_EQ(verbose.output, file);

    // 26^5 columns of 3 rows, 35,644,128 points: the first three slots and
    // slot 0 once more.
    expect_fails_after(image_of("ZZZZZ"), "d",
                       head + "AAAAA,1,ZZZZZ,3,ROW,1,1,STANDARD,35644128,0," + STAMPS + IDENTITY_EMPTY +
                           NOTES_EMPTY + TITLES_CORROSION + cycle("AAAAA") +
                           "W-AAAAA1, 1.235,IN,OFF,OFF,LOW ,OFF,,0,STD,OFF,OFF,,,,,,\n");
}

// A walk with no increment field doesn't move: it reads slot 0 at every
// visit, up to 2^21 points in a file of three slots.
TEST(DetailedLinear, StandingWalkIsWrittenUpTo2To21Points) {
    SurveyHeader h = survey_header(0, 5, "S");
    h.first_inc = 0;
    h.second_inc = 0;
    h.third_inc = 0;
    const auto image_of = [&](const DimRange& range) {
        set_ranges(h, {range});
        ImageBuilder image = survey_image(h);
        write_slot(image, 0, 0, gauge_record({.resolution = 1, .thickness = 12345}));
        image.resize(slot_at(0, 3));
        return image;
    };
    const auto rows = [](const std::string& id, std::size_t n) {
        const std::string row = id + ", 1.235\n";
        std::string text;
        text.reserve(row.size() * n);
        for (std::size_t i = 0; i < n; ++i) text += row;
        return text;
    };
    const std::string row = "S1, 1.235,IN,OFF,OFF,LOW ,OFF,,0,STD,OFF,OFF,,,,,,\n";
    expect_converts(image_of({"1", "9"}), "d",
                    PREAMBLE_CORROSION + COLUMNS_LINEAR + "FILE-NAME.CSV,LINEAR,29,S,1,9,1,STANDARD,0,0," + STAMPS +
                        IDENTITY_EMPTY + NOTES_EMPTY + TITLES_CORROSION + row + row + row + row + row + row + row +
                        row + row + SETUP_TITLES_CORROSION);
    expect_converts(image_of({"1", "9"}), "g", rows("S1", 9));

    const Conversion largest = convert(image_of({"0000000", "2097151"}), "g");
    EXPECT_EQ(largest.run.console, console_of_success());
    EXPECT_TRUE(largest.output == rows("S0000000", 2097152)) << largest.output.value_or("").size() << " bytes";
    expect_fails_after(image_of({"0000000", "2097152"}), "g", rows("S0000000", 4));
}

// A walk that stands on a reading with an A-scan dumps it at every visit,
// up to 1024 times in a file of fewer slots; the next dump fails the export.
TEST(DetailedLinear, StandingWalkDumpsAScan1024Times) {
    SurveyHeader h = survey_header(0, 5, "S");
    h.first_inc = 0;
    h.second_inc = 0;
    h.third_inc = 0;
    set_ranges(h, {{"0000", "1999"}});
    ImageBuilder image = survey_image(h);
    write_slot(image, 0, 0, link_record(2, 6000));
    write_ascan_thickness(image, 6000, small_ascan());
    const std::string row = "S0000,  4.57,MM,HIGH,OFF,LOW ,MIN/MAX,,0,E TO E,OFF,ON,,,,,,\n";
    const std::string& dump = SMALL_ASCAN_DUMP;
    std::string file = PREAMBLE_CORROSION + COLUMNS_LINEAR + "FILE-NAME.CSV,LINEAR,29,S,0000,1999,1,STANDARD,0,0," +
                       STAMPS + IDENTITY_EMPTY + NOTES_EMPTY + TITLES_CORROSION;
    for (int k = 0; k < 1024; ++k) file += row + dump + TITLES_CORROSION;
    const Conversion c = convert(image, "d");
    EXPECT_EQ(c.run.console, FAILED_CONSOLE);
    EXPECT_TRUE(c.output == file + row) << c.output.value_or("").size() << " bytes";
}

}  // namespace
}  // namespace ugf::test
