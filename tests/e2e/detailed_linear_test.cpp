// "MANUAL" files in both output forms (the whole detailed file, and the list
// of one identifier and value a reading), instruments of an unknown gage
// type, whose detailed output ends behind its head, and a "LINEAR" walk that
// can't end.
#include <gtest/gtest.h>

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

// A walk with no increment field doesn't move: it reads slot 0 at every
// visit. It ends, failing, once it has made as many visits as the file has
// slots, however many points the survey counts.
TEST(DetailedLinear, StuckWalkEndsWithTheFile) {
    SurveyHeader h = survey_header(0, 5, "S");
    set_ranges(h, {{"1", "9"}});
    h.first_inc = 0;
    h.second_inc = 0;
    h.third_inc = 0;
    ImageBuilder image = survey_image(h);
    write_slot(image, 0, 0, gauge_record({.resolution = 1, .thickness = 12345}));
    image.resize(slot_at(0, 3));
    const std::string row = "S1, 1.235,IN,OFF,OFF,LOW ,OFF,,0,STD,OFF,OFF,,,,,,\n";
    expect_fails_after(image, "d",
                       PREAMBLE_CORROSION + COLUMNS_LINEAR +
                           "FILE-NAME.CSV,LINEAR,29,S,1,9,1,STANDARD,0,0," + STAMPS + IDENTITY_EMPTY +
                           NOTES_EMPTY + TITLES_CORROSION + row + row + row + row);
    expect_fails_after(image, "g", "S1, 1.235\nS1, 1.235\nS1, 1.235\nS1, 1.235\n");
}

}  // namespace
}  // namespace ugf::test
