// "MANUAL" files in both output forms (the whole detailed file, and the list
// of one identifier and value a reading), and a "LINEAR" walk that can't end.
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
