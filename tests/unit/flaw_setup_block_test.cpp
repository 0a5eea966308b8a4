// The flaw detector's setup block, from setups read out of built files: one
// whole block line by line, then the rules of single lines.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "present/flaw_setup_block.h"
#include "support/session_csv.h"
#include "support/survey_image.h"

namespace ugf {
namespace {

using test::FlawSetupImage;

// The block that setup entry `entry` of a flaw detector file gets.
std::string block_of(const FlawSetupImage& setup, int entry = 0) {
    test::SurveyHeader header;
    header.gage_type = 7;
    test::ImageBuilder image = test::survey_image(header);
    test::write_flaw_setup(image, 0, entry, setup);
    test::OpenedSurvey opened(image);
    EXPECT_EQ(opened.result, 1);
    const test::CsvText csv = test::csv_written_by([&](CsvSink& sink) {
        return write_setup_block(opened.session.setups[static_cast<std::size_t>(entry)].flaw, entry, sink);
    });
    EXPECT_EQ(csv.result, 1);
    return csv.text;
}

// The line of `label` in a block, without its line end.
std::string line_of(const std::string& block, const std::string& label) {
    const std::size_t at = block.find("\n" + label + ",");
    if (at == std::string::npos) return "<no line " + label + ">";
    return block.substr(at + 1, block.find('\n', at + 1) - at - 1);
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
    EXPECT_EQ(block_of(s, 5),
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
        const std::string block = block_of(c.setup);
        for (const std::string& expected : c.lines) {
            EXPECT_EQ(line_of(block, expected.substr(0, expected.find(','))), expected) << c.what;
        }
    }
}

}  // namespace
}  // namespace ugf
