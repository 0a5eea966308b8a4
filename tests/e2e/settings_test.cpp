// Settings and reading rows of every instrument, each case a survey of its
// own run through the converter: the setup table rows of both thickness
// gauges, the lines of the flaw detector's setup block, and the reading row
// of a single slot (status columns, measurement pairs, box values).
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "detailed_support.h"

namespace ugf::test {
namespace {

constexpr std::uint32_t CORROSION = 5;
constexpr std::uint32_t PRECISION = 6;

// A "LINEAR" survey of the gage type with one point, "R1", or with none.
ImageBuilder linear(std::uint32_t gage, bool one_point) {
    SurveyHeader h = survey_header(0, gage, "R");
    if (one_point) set_ranges(h, {{"1", "1"}});
    return survey_image(h);
}

// The line of a successful run's output that starts with `start`, without
// its line end.
std::string line_from(const ImageBuilder& image, const std::string& form, const std::string& start) {
    const Conversion c = convert(image, form);
    EXPECT_EQ(c.run.status, 0) << start;
    const std::string text = "\n" + c.output.value_or("");
    const std::size_t at = text.find("\n" + start);
    if (at == std::string::npos) return "<no line " + start + ">";
    return text.substr(at + 1, text.find('\n', at + 1) - at - 1);
}

// `line` ends with `tail`; on a mismatch the line's last characters show.
void expect_tail(const std::string& line, const std::string& tail) {
    EXPECT_EQ(line.substr(line.size() > tail.size() ? line.size() - tail.size() : 0), tail) << line;
}

struct SetupRowCase {
    const char* what;
    GaugeSetupImage setup;
    std::string row;
};

// Each setup is entry 0 of a file without points.
TEST(SetupRows, CorrosionAndPrecisionGauges) {
    const SetupRowCase corrosion[] = {
        {"inch thickness, custom encoder x 100",
         {.alarm_type = 1, .diff_ref_blank = 1, .resolution = 1, .low_alarm = 1000, .high_alarm = 123456,
          .diff_reference = 12345, .bs_range = 20000, .alarm_percent = 10, .velocity = 23300, .gain_mode = 4,
          .gain_db = 40, .mb_blank = 4, .if_blank = -3, .temp_compensation = 1, .bs_res_mode = 2, .bs_encoder = 3,
          .bs_step_code = 9, .coating_velocity = 9000, .temp_coefficient = -1500, .temp_calibration = 68,
          .custom_encoder_res = 50},
         "0,IN,0.23300,0.09000,OFF,,HIGH, 0.100,12.346,10, 2.000,40DB,XDCR-01 1.0 MHZ,4,-3,0.0050000,"
         "ON,-0.01500,  68 F,OFF,THICKNESS\n"},
        {"velocity in millimetres: full resolution, 99 characters fit",
         {.alarm_type = 2, .diff_type = 2, .units = 1, .measurement_type = 1, .low_alarm = 123450,
          .diff_reference = 5000, .bs_range = 1000000, .alarm_percent = 5, .transducer = 25, .velocity = 5920,
          .gain_mode = 1, .auto_mb = 1, .coating_thickness = 1, .bs_res_mode = 1, .coating_velocity = 2300,
          .temp_coefficient = 1500, .temp_calibration = 68},
         "0,M/S, 5920, 2300,PERCENT,  0.50,LOW, 12.35,  0.00,5,100.00,STD ,XDCR-26 2.25 MHZ,AUTO MB,0,  0.00,"
         "OFF,+0.01500, 20.4 C,ON,VELOCITY\n"},
        {"velocity in microseconds, codes without a text, transducer past the table",
         {.alarm_type = 6, .diff_type = 3, .units = 2, .measurement_type = 1, .transducer = 194},
         "0,-----,    0,    0,,  0.00,,  0.00,  0.00,0,  0.00,LOW ,,0,0,  0.00,OFF,+0.00000,   0 F,OFF,VELOCITY\n"},
        {"measurement type 3 repeats the transducer; units 3",
         {.alarm_type = 7, .units = 3, .resolution = 1, .measurement_type = 3, .transducer = 8},
         "0,ALARM,    0,    0,OFF,  0.00,,  0.00,  0.00,0,  0.00,LOW ,XDCR-09 1.0 MHZ,0,0,  0.00,"
         "OFF,+0.00000,   0 F,OFF,XDCR-09 1.0 MHZ\n"},
        {"a long first piece is cut at 99 characters",
         {.alarm_type = 5, .diff_type = 1, .resolution = 1, .low_alarm = 1000, .high_alarm = 123456,
          .diff_reference = 12345, .bs_range = 20000, .alarm_percent = 255, .transducer = 25, .velocity = 4294967295u,
          .gain_mode = 4, .gain_db = 94, .mb_blank = -32768, .if_blank = -32768, .coating_velocity = 65535},
         "0,IN,0.4294967295,0.65535,ABSOLUTE, 1.235,PHASE REVERSAL, 0.100,12.346,255, 2.000,94DB MAX,XDCR-26 "
         "OFF,+0.00000,   0 F,OFF,THICKNESS\n"},
    };
    const SetupRowCase precision[] = {
        {"inch setup, times of 0.0125 us (one cut to 9), custom encoder x 1000",
         {.alarm_type = 3, .diff_type = 1, .resolution = 1, .echo1_negative = 1, .pulser_power = 2,
          .low_alarm = 12345, .high_alarm = 123456, .diff_reference = 5000, .alarm_percent = 50, .zero = -1234,
          .velocity = 23300, .gain_mode = 123, .gain_db = 5, .slope = 40, .transducer_frequency = 50, .mb_blank = 4,
          .if_blank = -4, .c3_blank = -32768, .echo_window = 65535, .setup_name = "PIPE A", .auto_phase_detect = 1,
          .temp_compensation = 1, .bs_res_mode = 2, .bs_encoder = 3, .bs_step_code = 9, .temp_coefficient = 1500,
          .temp_calibration = 68, .custom_encoder_res = 50},
         "0,PIPE A,C1,IN,0.23300,-1234,ABSOLUTE,0.5000,HIGH-LOW,1.2345,12.346,50,0.0000,12.3,00.5,04.0,,5.0 MHZ,"
         "0.05 US,-0.05 US,-409.60 U,819.18 US,-,+,90 V,0.0500000,ON,+0.01500,  68 F,ON\n"},
        {"mode 5 in microns; the scan resolution stays in millimetres",
         {.diff_type = 2, .diff_ref_blank = 1, .units = 1, .resolution = 1, .echo2_negative = 1, .pulser_power = 3,
          .low_alarm = 1234, .transducer = 58, .velocity = 5920, .transducer_frequency = 5,
          .setup_name = "ABCDEFGHIJKLMNOPQRSTUVWXYZ012345", .temp_calibration = 68, .meas_mode = 5},
         "0,ABCDEFGHIJKLMNOPQRSTUVWXYZ012345,CP,MICR, 5920,0,PERCENT,,OFF,  12.3,   0.0,0,   0.0,"
         "00.0,00.0,00.0,XDCR-58 2.25 MHZ,.5 MHZ,0.00 US,0.00 US,0.00 US,0.00 US,+,-,120 V, 0.000,"
         "OFF,+0.00000, 20.4 C,OFF\n"},
        {"velocity label wins over mode 5; the setup's resolution stays",
         {.measurement_type = 1, .low_alarm = 1234, .meas_mode = 5},
         "0,,CP,IN/US,0.00000,0,OFF,   0.0,OFF,  12.3,   0.0,0,   0.0,00.0,00.0,00.0,,.0 MHZ,"
         "0.00 US,0.00 US,0.00 US,0.00 US,+,+,30 V, 0.000,OFF,+0.00000,   0 F,OFF\n"},
        {"a mode without a name",
         {.units = 2, .meas_mode = 9},
         "0,," + std::string(31, ' ') + ",US,    0,0,OFF,  0.00,OFF,  0.00,  0.00,0,  0.00,00.0,00.0,00.0,,.0 MHZ,"
         "0.00 US,0.00 US,0.00 US,0.00 US,+,+,30 V,  0.00,OFF,+0.00000,   0 F,OFF\n"},
    };
    for (std::uint32_t gage : {CORROSION, PRECISION}) {
        for (const SetupRowCase& c : gage == CORROSION ? std::vector(std::begin(corrosion), std::end(corrosion))
                                                       : std::vector(std::begin(precision), std::end(precision))) {
            ImageBuilder image = linear(gage, false);
            write_gauge_setup(image, 0, 0, c.setup);
            EXPECT_EQ(line_from(image, "d", "0,") + "\n", c.row) << c.what;
        }
    }
}

// Files before version 20 have one more title, and no setup to list here.
TEST(SetupRows, TitlesOfOlderFiles) {
    for (std::uint32_t gage : {CORROSION, PRECISION}) {
        SurveyHeader h = survey_header(0, gage);
        h.file_version = 19;
        expect_tail(line_from(survey_image(h), "d", "SETUP #,"),
                    gage == CORROSION ? ",COATING THICKNESS,MEASUREMENT TYPE,BSCAN DIRECTION"
                                      : ",TEMPERATURE CALIBRATION,AUTO PHASE DETECT,BSCAN DIRECTION");
    }
}

TEST(FlawSetupBlock, EveryLineInOrder) {
    FlawSetupImage s{.velocity = 23300, .zero = -500, .reference_gain = -5, .ref_gain_step = 60, .gain = 123,
                     .delay = 12345, .range = 20000, .frequency = 500, .reject_value = 100,
                     .gate1_start = 1000, .gate1_width = 5000, .gate1_min_depth = 0, .gate1_level = 800,
                     .gate2_start = 30000, .gate2_width = 2500, .gate2_min_depth = 100, .gate2_level = 505,
                     .gate1_alarm = 1, .gate2_alarm = 12, .angle = 45, .angle_beam_thickness = 5000,
                     .x_value = 7500, .bscan_max_thickness = 1000000, .bscan_mode = 2, .bscan_direction = 1,
                     .bscan_step_code = 63, .bscan_encoder = 0, .bscan_rewrite = 1, .bscan_save_ascan = 2,
                     .dac_mode = 1, .dac_curve_selected = 2, .dac_gain = 123, .dac_gain_step = 10,
                     .rl_gain = 0, .sl_gain = -60, .el_gain = -140, .rectification = 1, .resolution = 1,
                     .gate2_enabled = 1, .zoom = 1, .peak_mode = 2, .gate1_peak = 1, .curve_correction = 1,
                     .floating_gate_level = 6, .energy = 3, .dac_on = 1, .floating_gate1 = 1,
                     .gate_tracking = 1, .x_axis_legs = 1, .api_5ue = 1, .dac_rectification = 2,
                     .pipe_diameter = 60000, .api_k_factor = 12345};
    ImageBuilder image = linear(7, false);
    write_flaw_setup(image, 0, 5, s);
    const Conversion c = convert(image, "d");
    expect_tail(c.output.value_or(""),
              "\nSETUP,5\nUNITS,IN\nRESOLUTION,0.001 IN\nVELOCITY,0.23300 IN/US\nDELAY, 1.235 IN\n"
              "RANGE, 2.000 IN\nZERO,-0.050 IN\nZOOM,ON\nFREQUENCY,5.00 MHZ\nENERGY,120V\nANGLE,45\n"
              "GATE 1 START, 0.100 IN\nGATE 1 WIDTH, 0.500 IN\nGATE 1 LEVEL, 80%\n"
              "GATE 1 ALARM MIN DEPTH, 0.000 IN\nGATE 1 DETECTION,PEAK\nGATE 1 ALARM,POS \n"
              "GATE 2 START, 3.000 IN\nGATE 2 WIDTH, 0.250 IN\nGATE 2 LEVEL, 50%\n"
              "GATE 2 ALARM MIN DEPTH, 0.010 IN\nGATE 2 DETECTION,EDGE\nGATE 2 ALARM, RL \nGAIN,12.3 DB\n"
              "X VALUE, 0.750 IN\nRECTIFICATION,FULL\nMEAS MODE,P/E \nREJECT, 10%\nENABLE GATE 2,ON\n"
              "PEAK,HOLD\nBSCAN MAX THICK,100.00 IN\nB-SCAN MODE,ENCODED\nBSCAN DIRECTION,RIGHT TO LEFT\n"
              "BSCAN ENC. RES,0.8898 IN\nBSCAN ENC. MODEL,ROLLEN-4\nBSCAN REWRITE ON,FIRST VALID THK.\n"
              "BSCAN SAVE ASCAN,ALARM\nBSCAN LOS,PAUSE\nCURVE CORRECTION,ON\nREF. GAIN ENABLED,OFF\n"
              "REFERENCE GAIN,-00.5 DB\nREF GAIN STEP,06.0 DB\nANGLE BEAM THK., 0.500 IN\nPEAK PITCH,OFF\n"
              "DAC,ON\nDAC MODE,ASME 3\nDAC CURVE SELECTED,-14DB\nDAC GAIN,+12.3 DB\n"
              "DAC GAIN STEP,01.0 DB\nRL GAIN,+00.0 DB\nSL GAIN,-06.0 DB\nEL GAIN,-14.0 DB\nDAC RECT,HW+ \n"
              "FLOATING GATE 1,ON\nFLOATING GATE 2,OFF\nFLOATING GATE LEVEL,-6DB\nGATE TRACKING,ON\n"
              "WAVEFORM,FILLED\nX-AXIS GRID MODE,LEGS\nCSC,OFF\nPIPE DIAMETER, 6.000 IN\nAPI 5UE,ON\n"
              "API K FACTOR,1.2345\n");
}

TEST(FlawSetupBlock, LinesByRule) {
    struct Case {
        const char* what;
        FlawSetupImage setup;
        std::vector<std::string> lines;
    } cases[] = {
        {"through transmission doubles inch lengths", {.delay = 6000, .resolution = 1, .meas_mode = 2},
         {"DELAY, 1.200 IN", "MEAS MODE,THRU"}},
        {"but not microseconds", {.delay = 6000, .units = 2, .resolution = 1, .meas_mode = 2},
         {"DELAY,  0.60 US", "RESOLUTION,0.01 US", "VELOCITY,0.00000 IN/US"}},
        {"millimetres: velocity x 0.254, ten metres without a point",
         {.velocity = 23300, .units = 1, .pipe_diameter = 12345678},
         {"UNITS,MM", "RESOLUTION,0.1 MM", "VELOCITY, 5918 M/S", "PIPE DIAMETER,1235 MM"}},
        {"units 3: the row after US, and no step", {.units = 3}, {"UNITS,ALARM", "RESOLUTION,ALARM"}},
        {"RF levels are centred", {.gate1_level = 800, .gate2_level = 400},
         {"GATE 1 LEVEL, 60%", "GATE 2 LEVEL,-20%", "RECTIFICATION, RF "}},
        {"centring wraps in 16 bits", {.gate1_level = 20000, .gate2_level = 0},
         {"GATE 1 LEVEL,-2653%", "GATE 2 LEVEL,-100%"}},
        {"a signed level truncates toward zero",
         {.gate1_level = 0xFFF7, .gate2_level = 0x8000, .rectification = 2},
         {"GATE 1 LEVEL, 00%", "GATE 2 LEVEL,-3276%", "RECTIFICATION,HW+ "}},
        {"dB texts keep seven characters, the sign adds one",
         {.reference_gain = -32768, .gain = 65535, .dac_gain = 32767},
         {"REFERENCE GAIN,-3276.8 ", "GAIN,6553.5 ", "DAC GAIN,+3276.7 "}},
        {"frequency below 10, alarm settings above 15", {.frequency = 5, .gate1_alarm = 16, .gate2_alarm = 255},
         {"FREQUENCY,.05 MHZ", "GATE 1 ALARM,    ", "GATE 2 ALARM,    "}},
        {"frequency beyond four digits", {.frequency = 12345}, {"FREQUENCY,12.34 MHZ"}},
        {"codes without a text",
         {.bscan_mode = 3, .bscan_encoder = 5, .bscan_save_ascan = 3, .peak_mode = 3, .dac_rectification = 4},
         {"B-SCAN MODE,", "BSCAN ENC. RES,", "BSCAN ENC. MODEL,INVALID MODEL", "BSCAN SAVE ASCAN,", "PEAK,",
          "DAC RECT,"}},
        {"ASME names one curve", {.dac_mode = 0, .dac_curve_selected = 9},
         {"DAC MODE,ASME", "DAC CURVE SELECTED,0DB"}},
        {"custom has no fourth curve", {.dac_mode = 3, .dac_curve_selected = 3}, {"DAC CURVE SELECTED,"}},
        {"no family", {.dac_mode = 7, .dac_curve_selected = 1}, {"DAC MODE,", "DAC CURVE SELECTED,NONE"}},
    };
    for (const Case& c : cases) {
        ImageBuilder image = linear(7, false);
        write_flaw_setup(image, 0, 0, c.setup);
        for (const std::string& expected : c.lines) {
            EXPECT_EQ(line_from(image, "d", expected.substr(0, expected.find(',') + 1)), expected) << c.what;
        }
    }
}

// A velocity reading with a first pair of the given kind and value.
GaugeReading velocity_with(std::uint32_t units, std::uint32_t first_kind, std::uint32_t first_value) {
    GaugeReading r = velocity_reading(23300, units);
    r.second_kind = 1;
    r.first_kind = first_kind;
    r.first_value = first_value;
    return r;
}

struct GaugeRowCase {
    std::uint32_t gage;
    GaugeSetupImage setup;  // the entry of the reading's setup number
    GaugeReading r;
    const char* tail;       // the end of the reading's row
};

void expect_gauge_rows(const std::vector<GaugeRowCase>& cases) {
    for (const GaugeRowCase& c : cases) {
        ImageBuilder image = linear(c.gage, true);
        write_gauge_setup(image, 0, static_cast<int>(c.r.setup_number), c.setup);
        write_slot(image, 0, 0, gauge_record(c.r));
        expect_tail(line_from(image, "d", "R1,"), c.tail);
    }
}

TEST(GaugeRows, StatusColumnsOfBothGauges) {
    expect_gauge_rows({
        // An empty slot ignores the bits of its first word.
        {CORROSION, {}, {.record_type = 0, .alarm_state = 1}, ",,,,,,,,,,,,,,,,"},
        {PRECISION, {}, {.record_type = 0, .alarm_state = 1}, ",,,,,,,,,,,,,"},
        // Measurement mode 5 doesn't change the corrosion gauge's unit.
        {CORROSION, {.diff_type = 2, .gain_mode = 4, .gain_db = 40, .meas_mode = 5},
         {.alarm_state = 1, .fast_mode = 2, .bscan_mode = 2, .setup_number = 3, .echo_to_echo = 1, .note_mask = 5},
         ",IN,HIGH,PERCENT,40DB,MIN/MAX,AC,3,E TO E,ON,OFF,,,,,,"},
        // Codes without a text keep their cells; units 3 reaches "ALARM".
        {CORROSION, {.diff_type = 3, .gain_mode = 1}, {.units = 3, .alarm_state = 6, .fast_mode = 3, .note_mask = 0x8000},
         ",ALARM,,,STD ,MAX-MIN,P,0,STD,OFF,OFF,,,,,,"},
        // A velocity reading keeps its first pair and has no second.
        {CORROSION, {}, velocity_with(1, 3, 68), ",M/S,OFF,OFF,LOW ,OFF,,0,STD,OFF,OFF, 20.4 C,TEMP,,,,"},
        // Record types 6 and 7 are readings of their first word alone.
        {CORROSION, {}, {.record_type = 6, .alarm_state = 5}, ",IN,ON,OFF,LOW ,OFF,,0,STD,OFF,OFF,,,,,,"},
        {PRECISION, {}, {.alarm_state = 4, .fast_mode = 1, .bscan_mode = 1, .setup_number = 31, .note_mask = 3},
         ",IN,WARNING LOW,ON,AB,31,ON,OFF,,,,,,"},
        {PRECISION, {.meas_mode = 5}, {.units = 0}, ",MIL ,OFF,OFF,,0,OFF,OFF,,,,,,"},
        {PRECISION, {.meas_mode = 5}, {.units = 1}, ",MICR,OFF,OFF,,0,OFF,OFF,,,,,,"},
        {PRECISION, {.meas_mode = 5}, velocity_with(0, 0, 0), ",IN/US,OFF,OFF,,0,OFF,OFF,,,,,,"},
        // Units 3 lands past the velocity and mode-5 unit rows: nothing.
        {CORROSION, {}, velocity_with(3, 0, 0), ",,OFF,OFF,LOW ,OFF,,0,STD,OFF,OFF,,,,,,"},
        {PRECISION, {.meas_mode = 5}, {.units = 3}, ",,OFF,OFF,,0,OFF,OFF,,,,,,"},
    });
}

TEST(GaugeRows, MeasurementPairsKindsLostSignalAndNoValueTexts) {
    expect_gauge_rows({
        {CORROSION, {.diff_type = 1, .diff_reference = 1000},
         {.los = 1, .resolution = 1, .thickness = 5000, .first_kind = 1, .second_kind = 2, .first_value = 12345},
         ",--.---,COATING,--.---,DIFF,,"},
        // A coating of 2 or less is a marker; a value loses its sign position.
        {CORROSION, {}, {.resolution = 1, .first_kind = 1, .first_value = 2}, ",--.---,COATING,,,,"},
        {CORROSION, {}, {.resolution = 1, .first_kind = 1, .first_value = 3}, ",0.000,COATING,,,,"},
        // The oxide marker doesn't follow the gauge; a lost signal still shows the span.
        {CORROSION, {}, {.los = 1, .resolution = 1, .first_kind = 2, .second_kind = 3, .first_value = 100, .min_value = 1234},
         ",-.----,OXIDE, 0.123,MAX-MIN,,"},
        {CORROSION, {}, {.resolution = 1, .first_kind = 2, .first_value = 12345}, ",1.2345,OXIDE,,,,"},
        {CORROSION, {}, {.los = 1, .units = 1, .first_kind = 3, .first_value = 212}, ", 100.4 C,TEMP,,,,"},
        {CORROSION, {}, {.units = 0, .first_kind = 3, .first_value = 212}, ", 212 F,TEMP,,,,"},
        // Only the maximum decides whether the pair holds values.
        {CORROSION, {}, {.second_kind = 1, .min_value = 500}, ",,,--.---,MIN,--.---,MAX"},
        {PRECISION, {}, {.second_kind = 1, .min_value = 500}, ",,,-.----,MIN,-.----,MAX"},
        {CORROSION, {}, {.resolution = 1, .second_kind = 1, .max_value = 5000}, ",,, 0.000,MIN, 0.500,MAX"},
        {PRECISION, {}, {.resolution = 1, .second_kind = 1, .min_value = 12345, .max_value = 23456},
         ",,,1.2345,MIN,2.3456,MAX"},
        {PRECISION, {}, {.second_kind = 3}, ",,,-.----,MAX-MIN,,"},
        // The absolute difference takes the setup's units and resolution.
        {CORROSION, {.diff_type = 1, .units = 1, .resolution = 1, .diff_reference = 10000},
         {.thickness = 12345, .second_kind = 2}, ",,,  0.23,DIFF,,"},
        {CORROSION, {.diff_type = 1, .resolution = 1, .diff_reference = 10000}, {.thickness = 9000, .second_kind = 2},
         ",,,-0.100,DIFF,,"},
        // Every other differential type is a percentage, truncated.
        {CORROSION, {.diff_type = 2, .diff_reference = 10000}, {.thickness = 11299, .second_kind = 2}, ",,, 12%,DIFF,,"},
        {CORROSION, {.diff_type = 0, .diff_reference = 10000}, {.thickness = 9500, .second_kind = 2}, ",,, -5%,DIFF,,"},
        {CORROSION, {.diff_type = 2, .diff_reference = 12000}, {.units = 1, .thickness = 1234, .second_kind = 2},
         ",,,  2%,DIFF,,"},
        {CORROSION, {.diff_type = 2}, {.thickness = 1234, .second_kind = 2}, ",,,,DIFF,,"},
        // A velocity reading has no second piece.
        {CORROSION, {}, velocity_with(0, 0, 0), ",,,,,,"},
    });
}

// A reading of setup 7 in the detailed row and in the list form.
TEST(FlawRows, BoxValuesNotesAndAlarms) {
    struct RowCase {
        FlawSetupImage setup;
        FlawReading reading;
        const char* cell;
        const char* row;
    } cases[] = {
        {{.box1_kind = 1}, {.record_type = 0, .box_value = {12345}}, ",", ",,,,,,,,,,,"},
        {{}, {.box_value = {12345, 12345, 12345}}, ",", "IN,OFF,,,,,,7,,OFF,OFF,OFF,OFF"},
        {{.box1_kind = 2, .box2_kind = 10, .box3_kind = 38, .gate2_alarm = 1, .resolution = 1},
         {.gate1_alarm = 3, .bscan_mark = 1, .flaw_note_mask = 0x8005, .box_value = {12345, 80, 123u << 16}},
         " 1.235,",
         "IN,GATE 1 SOUNDPATH, 1.235,GATE 1 MAX AMPLITUDE,80,AWS A VALUE, 12.3 ,7,ACP,OFF,ON,WARNING HIGH,ON"},
        // Amplitude bits in word0 15-13 (5) and word1 3-0 (9); bit 12 isn't a note either.
        {{.box1_kind = 35, .box2_kind = 40, .box3_kind = 41, .gate2_alarm = 15, .resolution = 1},
         {.gate1_alarm = 6, .flaw_note_mask = 0xB001, .box_value = {12345, 20000, 7}}, " 1.235,",
         "IN,GATE 1 SOUNDPATH AMPLITUDE, 1.235 89%,GATE 1 COATING THICKNESS, 2.000, , 2.000,7,A,OFF,OFF,,OFF"},
        {{.box1_kind = 40, .box2_kind = 37, .box3_kind = 39, .units = 1, .resolution = 0},
         {.box_value = {123450, 1, 0}}, " 12.3,",
         "MM,GATE 1 COATING, 12.3,, 12.3,AWS C VALUE,   . ,7,,OFF,OFF,OFF,OFF"},
        // Through-transmission doubles lengths.
        {{.box1_kind = 1, .box3_kind = 31, .resolution = 1, .meas_mode = 2}, {.box_value = {6000}}, " 1.200,",
         "IN,GATE 1 THICKNESS, 1.200,,,,,7,,OFF,OFF,OFF,OFF"},
        {{.box1_kind = 31}, {.box_value = {5}}, "      ,", "IN,OFF,,,,,,7,,OFF,OFF,OFF,OFF"},
    };
    for (const RowCase& c : cases) {
        ImageBuilder image = linear(7, true);
        write_flaw_setup(image, 0, 7, c.setup);
        FlawReading r = c.reading;
        r.flaw_setup_number = 7;
        write_slot(image, 0, 0, flaw_record(r));
        expect_tail(line_from(image, "d", "R1,"), c.row);
        EXPECT_EQ(line_from(image, "g", "R1,"), std::string("R1,") + c.cell) << c.row;
    }
}

// Kind 37 keeps the text before it: in box 1 the empty text of a new reading
// (never the last reading's), behind a box of kind 0 its blanks.
TEST(FlawRows, BoxTextStartsEmptyAndCarriesToTheNextBox) {
    SurveyHeader h = survey_header(0, 7, "R");
    set_ranges(h, {{"1", "3"}});
    ImageBuilder image = survey_image(h);
    const FlawSetupImage setups[] = {{.box1_kind = 1, .resolution = 1}, {.box1_kind = 37}, {.box2_kind = 37}};
    for (std::uint32_t i = 0; i < 3; ++i) {
        write_flaw_setup(image, 0, static_cast<int>(i + 1), setups[i]);
        write_slot(image, 0, i, flaw_record({.flaw_setup_number = i + 1, .box_value = {12345, 12345, 12345}}));
    }
    const Conversion c = convert(image, "d");
    EXPECT_NE(c.output.value_or("").find("\nR1,IN,GATE 1 THICKNESS, 1.235,,,,,1,,OFF,OFF,OFF,OFF\n"
                                         "R2,IN,,,,,,,2,,OFF,OFF,OFF,OFF\nR3,IN,OFF,,,      ,,,3,,OFF,OFF,OFF,OFF\n"),
              std::string::npos)
        << c.output.value_or("");
}

}  // namespace
}  // namespace ugf::test
