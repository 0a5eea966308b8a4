// Whole detailed files of the two thickness gauges, first line to last: the
// head, the reading table in walk order with the dumps of stored scans, and
// the setup table; lost-signal rows with every kind of value pair, velocity
// readings, and scans at the start, in the middle and at the end of a survey.
#include <gtest/gtest.h>

#include <string>

#include "detailed_support.h"

namespace ugf::test {
namespace {

// "LINEAR+CPT" of the corrosion gauge: two columns of two custom points; a
// plain reading, an empty slot, an A-scan in the middle, a B-scan at the end.
ImageBuilder corrosion_survey() {
    SurveyHeader h = survey_header(1, 5, "TK-");
    h.id_count = 4;
    h.setup_count = 1;
    h.description = "BOILER FEED LINE";
    h.location = "UNIT 2";
    h.inspector_id = "JD-7";
    set_ranges(h, {{"1", "2"}, {"01", "02"}});
    h.custom_point_labels[0] = "NORTH";
    h.custom_point_labels[1] = "SOUTH";
    h.third_inc = 0;
    ImageBuilder image = survey_image(h);
    write_gauge_setup(image, 1, 0,
                      {.diff_type = 1, .resolution = 1, .low_alarm = 1000, .high_alarm = 20000,
                       .diff_reference = 2000, .alarm_percent = 10, .velocity = 23300,
                       .gain_mode = 4, .gain_db = 40, .mb_blank = 12, .if_blank = 8,
                       .coating_velocity = 23000, .temp_coefficient = -1500,
                       .temp_calibration = 68});
    write_note(image, 1, 0, "PITTING");
    write_note(image, 1, 2, "WELD SEAM");
    write_slot(image, 1, 0,
               gauge_record({.resolution = 1, .thickness = 12345, .note_mask = 5, .first_kind = 1,
                             .second_kind = 1, .first_value = 300, .min_value = 12000,
                             .max_value = 12500}));
    write_slot(image, 1, 2, link_record(2, 6000));
    write_slot(image, 1, 3, link_record(4, 8000));
    write_ascan_thickness(image, 6000, small_ascan());
    write_bscan(image, 8000,
                {.head = gauge_record({.record_type = 5, .bscan_mode = 1, .resolution = 1,
                                       .thickness = 5000, .note_mask = 0x8000}),
                 .points = {{.magnitude = 12345},
                            {.lost = 1, .alarm = 2, .is_min = 1},
                            {.alarm = 1, .is_max = 1, .negative = 1, .magnitude = 100}}});
    return image;
}

const std::string CORROSION_FILE =
    PREAMBLE_CORROSION +
    "PREFIX,START COL,START CUSTOM POINT,END COL,END CUSTOM POINT,1ST INC,COL STEP,PATTERN,"
    "# ID,# SETUP,# NOTES,CREATED,LAST SAVED\n"
    "FILE-NAME.CSV,LINEAR+CPT,29,TK-,01,NORTH,02,SOUTH,CUSTOM POINT,1,STANDARD,4,1," + STAMPS +
    "DESCRIPTION:,BOILER FEED LINE\n" "LOCATION:,UNIT 2\n"
    "INSPECTOR ID:,JD-7\n" +
    CUSTOM_POINTS_TITLE + "0,NORTH\n1,SOUTH\n" + CUSTOM_POINTS_2_TO_19 +
    "\nNOTES DESIGNATOR,NOTE TEXT\n"
    "A,PITTING\nB,\nC,WELD SEAM\nD,\nE,\nF,\nG,\nH,\nI,\nJ,\nK,\nL,\nM,\nN,\nO,\nP,\n" +
    TITLES_CORROSION +
    "TK-01NORTH, 1.235,IN,OFF,ABSOLUTE,40DB,OFF,AC,0,STD,OFF,OFF,0.030,COATING, 1.200,MIN, 1.250,MAX\n"
    "TK-01SOUTH,,,,,,,,,,,,,,,,,\n" "TK-02NORTH,  4.57,MM,HIGH,ABSOLUTE,40DB,MIN/MAX,,0,E TO E,OFF,ON,,,,,,\n" +
    SMALL_ASCAN_DUMP +
    TITLES_CORROSION +
    "TK-02SOUTH, 0.500,IN,OFF,ABSOLUTE,40DB,OFF,P,0,STD,ON,OFF,,,,,,\n" + BSCAN_TITLE +
    ",1, 1.235,IN,OFF, \n" ",2,--.---,IN,LOW,MIN\n"
    ",3,-0.010,IN,HIGH,MAX\n" +
    SETUP_TITLES_CORROSION +
    "0,IN,0.23300,0.23000,ABSOLUTE, 0.200,OFF, 0.100, 2.000,10, 0.000,40DB,XDCR-01 1.0 MHZ,12,8,"
    " 0.000,OFF,-0.01500,  68 F,OFF,THICKNESS\n";

TEST(DetailedGauges, CorrosionGaugeFileFromFirstLineToLast) {
    const ImageBuilder image = corrosion_survey();
    expect_converts(image, "d", CORROSION_FILE);

    // The verbose echo is the same text, between the second and third status line.
    const Conversion verbose = convert(image, "d", "v");
    EXPECT_EQ(verbose.run.console, console_of_success(CORROSION_FILE));
    EXPECT_EQ(verbose.output, CORROSION_FILE);
}

// "2D" of the precision gauge, two setups (one in the mils mode): readings in
// millimetres and mils, a velocity reading, an A-scan as the last reading.
TEST(DetailedGauges, PrecisionGaugeFileFromFirstLineToLast) {
    SurveyHeader h = survey_header(2, 6, "P");
    h.setup_count = 2;
    set_ranges(h, {{"1", "2"}, {"A", "B"}});
    h.third_inc = 0;
    ImageBuilder image = survey_image(h);
    write_gauge_setup(image, 2, 0,
                      {.units = 1, .resolution = 1, .transducer = 2, .zero = -12, .velocity = 5920,
                       .gain_mode = 5, .gain_db = 123, .transducer_frequency = 50, .mb_blank = 4,
                       .setup_name = "STEEL"});
    write_gauge_setup(image, 2, 3,
                      {.resolution = 1, .velocity = 23300, .setup_name = "FOIL", .meas_mode = 5});
    write_slot(image, 2, 0,
               gauge_record({.units = 1, .fast_mode = 1, .resolution = 1, .thickness = 12345,
                             .note_mask = 2, .first_kind = 2, .second_kind = 3,
                             .first_value = 500}));
    write_slot(image, 2, 1,
               gauge_record({.alarm_state = 5, .fast_mode = 3, .setup_number = 3, .resolution = 1,
                             .thickness = 1234, .first_kind = 3, .second_kind = 1,
                             .first_value = 212, .min_value = 1000, .max_value = 1500}));
    write_slot(image, 2, 2, gauge_record(velocity_reading(23300, 1)));
    write_slot(image, 2, 3, link_record(2, 6000));
    write_ascan_thickness(image, 6000,
                          {.head = {.record_type = 3, .setup_number = 3, .resolution = 1,
                                    .thickness = 2000},
                           .min_samples = {100, 200},
                           .max_samples = {300, 400},
                           .delay = 1,
                           .range = 50,
                           .zoom_bits = 1,
                           .freeze = 1,
                           .outline = 1,
                           .echo_window = -5,
                           .marker1 = 3,
                           .marker2 = 9,
                           .marker3 = 11,
                           .mb_blank = 4,
                           .if_blank_raw = 10,
                           .c3_blank = 2});

    expect_converts(
        image, "d",
        PREAMBLE_PRECISION +
            "PREFIX,START COL,START ROW,END COL,END ROW,1ST INC,COL STEP,ROW STEP,PATTERN,# ID,"
            "# SETUP,# NOTES,CREATED,LAST SAVED\n"
            "FILE-NAME.CSV,2D,29,P,A,1,B,2,ROW,1,1,STANDARD,0,2," + STAMPS + IDENTITY_EMPTY +
            NOTES_EMPTY + TITLES_PRECISION +
            "PA1,12.345,MM,OFF,ON,B,0,OFF,OFF, 0.050,OXIDE,-.----,MAX-MIN,,\n"
            "PA2, 12.34,MIL ,ON,MAX-MIN,,3,OFF,OFF, 212 F,TEMP, 10.00,MIN, 15.00,MAX\n"
            "PB1, 5918,M/S,OFF,OFF,,0,OFF,OFF,,,,,,\n" "PB2, 20.00,MIL ,OFF,OFF,,3,OFF,ON,,,,,,\n"
            ",MAX DATA [2][0][0]\n" ",300,400,\n" ",\n" ",MIN DATA [2][0][0]\n" ",100,200,\n"
            ",DELAY=1.00MIL ,RANGE=50.00MIL ,RECT= RF ,ZOOM=OFF,FREEZE=ON,WAVEFORM=OUTLINE,"
            "MARKER1=3,MB BLANK=4,MARKER2=9,IF BLANK=7,MARKER3=11,C3 BLANK=2,ECHO WIND=-5,\n" +
            SETUP_TITLES_PRECISION +
            "0,STEEL,C1,MM, 5920,-12,OFF, 0.000,OFF, 0.000, 0.000,0, 0.000,00.5,12.3,00.0,"
            "XDCR-02 2.25 MHZ,5.0 MHZ,0.05 US,0.00 US,0.00 US,0.00 US,+,+,30 V, 0.000," "OFF,+0.00000,-17.3 C,OFF\n"
            "3,FOIL,CP,MIL ,0.23300,0,OFF,  0.00,OFF,  0.00,  0.00,0,  0.00,00.0,00.0,00.0,,"
            ".0 MHZ,0.00 US,0.00 US,0.00 US,0.00 US,+,+,30 V,0.0000,OFF,+0.00000,   0 F,OFF\n");
}

}  // namespace
}  // namespace ugf::test
