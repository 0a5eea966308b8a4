// Whole files of the flaw detector: a detailed "2D-MANUAL" file from its first
// line to its last, rows whose gate 2 alarm is tested against the
// distance-amplitude curve, and the merge of the scan heads into the row
// (setup number, notes, marks and box values of the block).
#include <gtest/gtest.h>

#include <string>

#include "detailed_support.h"

namespace ugf::test {
namespace {

// Two labelled dimensions: a plain reading, an empty slot, an A-scan in the
// middle and a B-scan at the end; one setup, listed as a block at the end.
TEST(DetailedFlaw, FlawDetectorFileFromFirstLineToLast) {
    SurveyHeader h = survey_header(10, 7);
    h.id_count = 4;
    h.setup_count = 1;
    h.description = "WELD 12";
    set_manual_labels(h, {{"1", "2"}, {"TOP", "BOT"}});
    h.c0 = 1;
    h.c1 = 3;
    h.third_inc = 0;
    ImageBuilder image = survey_image(h);
    write_flaw_setup(image, 10, 0,
                     {.velocity = 23300, .gain = 123, .range = 10000, .frequency = 500,
                      .box1_kind = 1, .box2_kind = 10, .gate1_level = 800, .gate2_level = 500,
                      .rectification = 1, .resolution = 1});
    write_note(image, 10, 1, "CRACK");
    write_slot(image, 10, 0,
               flaw_record({.gate1_alarm = 1, .flaw_note_mask = 1, .box_value = {12345, 80, 0}}));
    // The link's own notes (B) and gate 1 alarm (LOW) give way to the block's.
    write_slot(image, 10, 2, link_record(2, 15000, 2u << 21 | 2u));
    write_slot(image, 10, 3, link_record(4, 17000, 1u));
    write_ascan_flaw(image, 15000,
                     {.gate_alarm = 5, .flaw_note_mask = 4, .bracket_3 = 1, .bracket_4 = 2,
                      .box_value = {0x1FFFFFFF, 512, 0}, .bracket_2 = 4,
                      .max_samples = {200, 150}, .min_samples = {10, 20},
                      .gate1_amplitude = 512, .gate1_mti = 1000, .gate2_amplitude = 300,
                      .gate2_mti = 16351});
    write_bscan(image, 17000,
                {.head = flaw_record({.record_type = 5, .box_value = {0x7FFFFFFD, 0, 0}}),
                 .points = {{.magnitude = 2500}, {.alarm = 3, .is_max = 1, .magnitude = 0xFFFFF}}});

    expect_converts(
        image, "d",
        PREAMBLE_FLAW +
            "DIM1 LEN,DIM1 # LABELS,DIM2 LEN,DIM2 # LABELS,1ST INC,PATTERN,# ID,# SETUP,# NOTES,"
            "CREATED,LAST SAVED\n"
            "FILE-NAME.CSV,2D-MANUAL,29,3,2,1,2,DIM2,STANDARD,4,1," + STAMPS +
            "DIM1 LABELS:\nTOP,\nBOT,\n\n" "DIM2 LABELS:\n1,\n2,\n\n"
            "DESCRIPTION:,WELD 12\nLOCATION:,\nINSPECTOR ID:,\n" "\nNOTES DESIGNATOR,NOTE TEXT\n"
            "A,\nB,CRACK\nC,\nD,\nE,\nF,\nG,\nH,\nI,\nJ,\nK,\nL,\nM,\nN,\nO,\nP,\n" +
            TITLES_FLAW +
            "TOP1,IN,GATE 1 THICKNESS, 1.235,GATE 1 MAX AMPLITUDE,80,,,0,A,OFF,OFF,HIGH,OFF\n" "TOP2,,,,,,,,,,,,\n"
            "BOT1,IN,GATE 1 THICKNESS,  .   ,GATE 1 MAX AMPLITUDE,      ,,,0,C,ON,OFF,ON,OFF\n"
            ",MAX DATA [2][4][1][2]\n" ",200,150,\n" ",\n" ",MIN DATA [2][4][1][2]\n" ",10,20,\n" ",\n"
            ",GATE 1 MTI,1000\n" ",GATE 1 DETECTION AMPLITUDE,LOS\n" ",GATE 2 MTI,LOS\n"
            ",GATE 2 DETECTION AMPLITUDE,300\n"
            "\n" +
            TITLES_FLAW +
            "BOT2,IN,GATE 1 THICKNESS,  .   ,GATE 1 MAX AMPLITUDE,      ,,,0,,OFF,ON,OFF,OFF\n" +
            BSCAN_TITLE +
            ",1, 0.250,IN,OFF, \n" ",2,,IN,WARNING HIGH,MAX\n" "\nSETUP,0\n" "UNITS,IN\n" "RESOLUTION,0.001 IN\n"
            "VELOCITY,0.23300 IN/US\n" "DELAY, 0.000 IN\n" "RANGE, 1.000 IN\n" "ZERO, 0.000 IN\n" "ZOOM,OFF\n"
            "FREQUENCY,5.00 MHZ\n" "ENERGY,30 V\n" "ANGLE,0\n" "GATE 1 START, 0.000 IN\n" "GATE 1 WIDTH, 0.000 IN\n"
            "GATE 1 LEVEL, 80%\n" "GATE 1 ALARM MIN DEPTH, 0.000 IN\n" "GATE 1 DETECTION,EDGE\n" "GATE 1 ALARM,OFF \n"
            "GATE 2 START, 0.000 IN\n" "GATE 2 WIDTH, 0.000 IN\n" "GATE 2 LEVEL, 50%\n"
            "GATE 2 ALARM MIN DEPTH, 0.000 IN\n" "GATE 2 DETECTION,EDGE\n" "GATE 2 ALARM,OFF \n" "GAIN,12.3 DB\n"
            "X VALUE, 0.000 IN\n" "RECTIFICATION,FULL\n" "MEAS MODE,P/E \n" "REJECT, 00%\n" "ENABLE GATE 2,OFF\n"
            "PEAK,OFF\n" "BSCAN MAX THICK, 0.000 IN\n" "B-SCAN MODE,OFF\n" "BSCAN DIRECTION,LEFT TO RIGHT\n"
            "BSCAN ENC. RES,0.0000 IN\n" "BSCAN ENC. MODEL,ROLLEN-4\n" "BSCAN REWRITE ON,LOWER VALUE\n"
            "BSCAN SAVE ASCAN,NEVER\n" "BSCAN LOS,PAUSE\n" "CURVE CORRECTION,OFF\n" "REF. GAIN ENABLED,OFF\n"
            "REFERENCE GAIN,+00.0 DB\n" "REF GAIN STEP,00.0 DB\n" "ANGLE BEAM THK., 0.000 IN\n" "PEAK PITCH,OFF\n"
            "DAC,OFF\n" "DAC MODE,ASME\n" "DAC CURVE SELECTED,0DB\n" "DAC GAIN,+00.0 DB\n" "DAC GAIN STEP,00.0 DB\n"
            "RL GAIN,+00.0 DB\n" "SL GAIN,+00.0 DB\n" "EL GAIN,+00.0 DB\n" "DAC RECT,RF\n" "FLOATING GATE 1,OFF\n"
            "FLOATING GATE 2,OFF\n" "FLOATING GATE LEVEL,-0DB\n" "GATE TRACKING,OFF\n" "WAVEFORM,FILLED\n"
            "X-AXIS GRID MODE,STANDARD\n" "CSC,OFF\n" "PIPE DIAMETER, 0.000 IN\n" "API 5UE,OFF\n"
            "API K FACTOR,0.0000\n");
}

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
