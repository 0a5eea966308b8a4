// Whole files of the flaw detector: rows whose gate 2 alarm is tested against
// the distance-amplitude curve, with the A-scan dumps, and the merge of the
// scan heads into the list form (setup and box values of the block).
#include <gtest/gtest.h>

#include <string>

#include "detailed_support.h"

namespace ugf::test {
namespace {

// Setup 0 (not listed) times in microseconds, alarms gate 2 on the "ASME"
// curve and draws it from two DAC points of amplitude 200 at 100 and 900
// counts: a flat curve over the 10 columns of a range of 10 us, 88 counts a
// column. A gate 2 peak at 442 counts (column 5) of 300 lies above it (HIGH),
// of 150 below it (armed, ON); without a scan nothing is known (ON).
TEST(DetailedFlaw, GateTwoAlarmAgainstTheCurve) {
    SurveyHeader h = survey_header(0, 7, "F");
    h.id_count = 3;
    set_ranges(h, {{"1", "3"}});
    ImageBuilder image = survey_image(h);
    write_flaw_setup(image, 0, 0,
                     {.velocity = 23300, .range = 100000, .box1_kind = 16, .gate2_alarm = 4,
                      .units = 2, .resolution = 1, .setup_present = 0});
    FlawAscanImage ascan{.dac_shown = 1,
                         .dac_stored = 1,
                         .box_value = {35000, 0, 0},
                         .max_samples = {10, 20, 30, 40, 50, 60, 70, 80, 90, 100},
                         .min_samples = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10},
                         .dac_points = {{100, 200}, {900, 200}},
                         .gate2_amplitude = 300,
                         .gate2_mti = 442};
    write_ascan_flaw(image, 6000, ascan);
    ascan.dac_shown = 0;
    ascan.gate2_amplitude = 150;
    write_ascan_flaw(image, 8000, ascan);
    write_slot(image, 0, 0, link_record(2, 6000));
    write_slot(image, 0, 1, link_record(2, 8000));
    write_slot(image, 0, 2,
               flaw_record({.gate1_alarm = 2, .flaw_note_mask = 3, .box_value = {20000, 0, 0}}));

    const std::string lists =
        ",MAX DATA [10][0][0][0]\n" ",10,20,30,40,50,60,70,80,90,100,\n" ",\n" ",\n" ",MIN DATA [10][0][0][0]\n"
        ",1,2,3,4,5,6,7,8,9,10,\n" ",\n" ",\n" ",GATE 1 MTI,0\n" ",GATE 1 DETECTION AMPLITUDE,0\n"
        ",GATE 2 MTI,442\n";
    expect_converts(
        image, "d",
        PREAMBLE_FLAW + COLUMNS_LINEAR + "FILE-NAME.CSV,LINEAR,29,F,1,3,1,STANDARD,3,0," + STAMPS +
            IDENTITY_EMPTY + NOTES_EMPTY + TITLES_FLAW +
            "F1,US,GATE 2 SOUNDPATH,  3.50,,,,,0,,ON,OFF,OFF,HIGH\n" + lists +
            ",GATE 2 DETECTION AMPLITUDE,300\n" "\n" ",DAC,ASME\n" ",THICKNESS,AMPLITUDE,DETECTION COUNT\n"
            ",  1.25 US,200,100\n" ", 11.25 US,200,900\n"
            "\n" +
            TITLES_FLAW + "F2,US,GATE 2 SOUNDPATH,  3.50,,,,,0,,ON,OFF,OFF,ON\n" + lists +
            ",GATE 2 DETECTION AMPLITUDE,150\n"
            "\n" +
            TITLES_FLAW + "F3,US,GATE 2 SOUNDPATH,  2.00,,,,,0,AB,OFF,OFF,LOW,ON\n");
}

// The value cells of a list-form "LINEAR" file show how a scan head becomes
// the reading: the setup comes from the block, not from the link (whose
// setup 0 has no box), and a B-scan's stored box 1 is read through the marks
// of a box without a reading. Setup 1 shows box 1 as "ECHO TO ECHO", setup 2
// as "GATE 1 CURRENT AMPLITUDE"; a plain reading is shown as stored.
TEST(DetailedFlaw, ScanHeadsMergeIntoTheListForm) {
    SurveyHeader h = survey_header(0, 7, "G");
    set_ranges(h, {{"01", "10"}});
    ImageBuilder image = survey_image(h);
    write_flaw_setup(image, 0, 1, {.box1_kind = 28, .resolution = 1});
    write_flaw_setup(image, 0, 2, {.box1_kind = 12, .resolution = 1});
    const struct {
        std::uint32_t setup;
        std::uint32_t box1;
    } bscans[] = {{1, 0x7FFFFFFE}, {1, 0x000FFFFF}, {1, 0xFFFFFFFF}, {1, 12345},
                  {2, 0x7FFFFFFE}, {2, 0x000FFFFF}, {2, 0x7FFFFFFD}, {2, 0x00640000}};
    std::uint32_t index = 0;
    for (const auto& b : bscans) {
        const std::uint32_t block = 8000 + 16 * index;
        write_record(image, block,
                     flaw_record({.record_type = 5, .flaw_setup_number = b.setup,
                                  .box_value = {b.box1, 0, 0}}));
        write_slot(image, 0, index++, link_record(4, block));
    }
    write_slot(image, 0, index++, link_record(2, 12000));
    write_ascan_flaw(image, 12000, {.block_setup_number = 2, .box_value = {0x00050000, 0, 0}});
    write_slot(image, 0, index,
               flaw_record({.flaw_setup_number = 1, .box_value = {0x000FFFFF, 0, 0}}));

    expect_converts(image, "g",
                    "G01,  .   ,\n" "G02,  .   ,\n" "G03,  .   ,\n" "G04, 1.235,\n" "G05,0,\n" "G06,0,\n"
                    "G07,8191,\n" "G08,100,\n" "G09,5,\n"
                    "G10,104.85,\n");
}

}  // namespace
}  // namespace ugf::test
