// The flaw detector's reading: grid cells, detailed rows, the amplitude
// percent of the soundpath amplitude kinds, and the gate 2 alarm.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "present/flaw_row.h"
#include "present/reading_value.h"
#include "support/scratch.h"
#include "support/survey_image.h"

namespace ugf {
namespace {

using test::FlawReading;
using test::FlawSetupImage;

template <typename Write>
std::string written(Write write) {
    test::ScratchDir dir;
    std::FILE* file = std::fopen(dir.file("o.csv").c_str(), "w");
    CsvSink sink{file, 0};
    EXPECT_EQ(write(sink), 1);
    std::fclose(file);
    return test::read_file(dir.file("o.csv")).value_or("<missing>");
}

// The setup fields packed as the file packs them.
FlawSetup flaw_setup(const FlawSetupImage& s) {
    FlawSetup f{.velocity = s.velocity, .zero = s.zero, .delay = s.delay, .range = s.range};
    f.reject_word = test::reject_word_of(s);
    f.box_word = test::box_word_of(s);
    f.gate_alarms = test::gate_alarms_of(s);
    f.mode_word = test::mode_word_of(s);
    f.display_word = test::display_word_of(s);
    f.dac_word = test::dac_word_of(s);
    f.gate2_level = static_cast<std::uint16_t>(s.gate2_level);
    f.gate2_min_depth = s.gate2_min_depth;
    f.dac_gain = static_cast<std::int16_t>(s.dac_gain);
    f.rl_gain = static_cast<std::int16_t>(s.rl_gain);
    return f;
}

std::uint32_t upper(std::int16_t s) { return static_cast<std::uint32_t>(static_cast<std::uint16_t>(s)) << 16; }

// A reading of setup 7; `scan` is the A-scan of a merged A-scan reading.
struct RowCase {
    FlawSetupImage setup;
    FlawReading reading;
    const AscanRecord* scan;
    const char* cell;
    const char* row;
};

TEST(PrintFlawReading, GridCellsAndDetailedRows) {
    static AscanRecord scan;  // gate alarm "LOW" (the slot says "HIGH"), gate 1 amplitude 384
    test::FlawAscanImage head;
    head.gate_alarm = 2;
    scan.head.word0 = test::flaw_ascan_word0(head);
    scan.gate1_amplitude = 384;
    scan.gate2_amplitude = 512;
    scan.sample_count = 100;
    const RowCase cases[] = {
        {{.box1_kind = 1}, {.record_type = 0, .box_value = {12345}}, nullptr, ",", ",,,,,,,,,,,\n"},
        {{}, {.box_value = {12345, 12345, 12345}}, nullptr, ",", "IN,OFF,,,,,,7,,OFF,OFF,OFF,OFF\n"},
        {{.box1_kind = 2, .box2_kind = 10, .box3_kind = 38, .gate2_alarm = 1, .resolution = 1},
         {.gate1_alarm = 3, .bscan_mark = 1, .flaw_note_mask = 0x8005, .box_value = {12345, 80, upper(123)}},
         nullptr, " 1.235,",
         "IN,GATE 1 SOUNDPATH, 1.235,GATE 1 MAX AMPLITUDE,80,AWS A VALUE, 12.3 ,7,ACP,OFF,ON,WARNING HIGH,ON\n"},
        // Amplitude bits in word0 15-13 (5) and word1 3-0 (9); bit 12 isn't a note either.
        {{.box1_kind = 35, .box2_kind = 40, .box3_kind = 41, .gate2_alarm = 15, .resolution = 1},
         {.gate1_alarm = 6, .flaw_note_mask = 0xB001, .box_value = {12345, 20000, 7}}, nullptr, " 1.235,",
         "IN,GATE 1 SOUNDPATH AMPLITUDE, 1.235 89%,GATE 1 COATING THICKNESS, 2.000, , 2.000,7,A,OFF,OFF,,OFF\n"},
        {{.box1_kind = 40, .box2_kind = 37, .box3_kind = 39, .units = 1, .resolution = 0},
         {.box_value = {123450, 1, 0}}, nullptr, " 12.3,",
         "MM,GATE 1 COATING, 12.3,, 12.3,AWS C VALUE,   . ,7,,OFF,OFF,OFF,OFF\n"},
        // Through-transmission doubles lengths.
        {{.box1_kind = 1, .box3_kind = 31, .resolution = 1, .meas_mode = 2}, {.box_value = {6000}}, nullptr, " 1.200,",
         "IN,GATE 1 THICKNESS, 1.200,,,,,7,,OFF,OFF,OFF,OFF\n"},
        {{.box1_kind = 31}, {.box_value = {5}}, nullptr, "      ,", "IN,OFF,,,,,,7,,OFF,OFF,OFF,OFF\n"},
        // An A-scan reading: gate 1 alarm of the scan, gate 2 tested on its peak.
        {{.box1_kind = 35, .gate2_alarm = 2, .resolution = 1},
         {.record_type = 2, .gate1_alarm = 1, .ascan_mark = 1, .flaw_note_mask = 2, .box_value = {12345}}, &scan,
         " 1.235,", "IN,GATE 1 SOUNDPATH AMPLITUDE, 1.235 50%,,,,,7,B,ON,OFF,LOW,LOW\n"},
    };
    for (const RowCase& c : cases) {
        static DlSession session;
        session.gage_type = GAGE_FLAW_DETECTOR;
        session.setups[7].flaw = flaw_setup(c.setup);
        FlawReading r = c.reading;
        r.flaw_setup_number = 7;
        const test::RecordImage im = test::flaw_record(r);
        const ReadingRecord rec{im.word0, im.at4, im.at8, im.at12};
        EXPECT_EQ(written([&](CsvSink& s) { return print_flaw_reading(session, rec, s, 0, c.scan, nullptr); }), c.cell)
            << c.row;
        EXPECT_EQ(written([&](CsvSink& s) { return print_flaw_reading(session, rec, s, 1, c.scan, nullptr); }), c.row);
        // The value operation hands a flaw detector reading over whatever its comma and layout.
        EXPECT_EQ(written([&](CsvSink& s) {
                      return print_reading_value(session, rec, s, 0, LAYOUT_STANDARD, 0, c.scan, nullptr, 1);
                  }),
                  c.cell);
    }
}

TEST(AmplitudePercent, GateAmplitudeOfAScanOrStoredBits) {
    AscanRecord scan;
    struct Case {
        std::uint32_t type, kind, rectification;
        std::uint16_t gate1, gate2;
        bool with_scan;
        std::int32_t expected;
    } cases[] = {
        {2, 35, 0, 128, 0, true, 50},  {2, 35, 0, 256, 0, true, 0},   // centred on 256
        {2, 35, 0, 512, 0, true, 0},   {2, 35, 3, 512, 0, true, 0},   // 512: no signal
        {2, 35, 0, 1000, 0, true, 291}, {2, 36, 0, 384, 100, true, 61}, {2, 36, 1, 384, 300, true, 58},
        {2, 35, 0, 384, 0, false, 0},  {4, 35, 0, 384, 0, true, 0},   {3, 36, 1, 384, 0, false, 89},
    };
    for (const Case& c : cases) {
        scan.gate1_amplitude = c.gate1;
        scan.gate2_amplitude = c.gate2;
        const ReadingRecord r{(c.type << 29) | (5u << 13), 0xFFF9u, 0, 0};
        EXPECT_EQ(amplitude_percent(r, c.kind, c.rectification, c.with_scan ? &scan : nullptr), c.expected)
            << c.type << " " << c.kind << " " << c.gate1 << " " << c.gate2;
    }
}

// A microsecond setup whose display puts one curve sample on each column
// (range 11364 shown as 12500, 100 columns), with DAC points of 400 at time
// 10 and 100 at time 50: at the peak position 20 the exponential curve is
// 282.84, the JIS line 325. A length of 10000 is 80 counts.
TEST(EvaluateGate2Alarm, EveryTestAndCurveFamily) {
    static ScanStore store;
    store.dac_points = {{{10, 400}, {50, 100}}};
    store.ascan.sample_count = 100;
    store.ascan.gate2_mti = 20;
    static const DacPointStore none{};
    struct Case {
        FlawSetupImage setup;
        std::uint16_t amplitude;
        bool with_scan, with_points;
        int expected;
    } cases[] = {
        // Without a scan only whether the kind (5 bits of the field) has a test.
        {{.gate2_alarm = 0}, 511, false, true, 0}, {{.gate2_alarm = 14}, 0, false, true, 5},
        {{.gate2_alarm = 15}, 511, false, true, 0}, {{.gate2_alarm = 33}, 0, false, true, 5},
        {{.gate2_level = 100, .gate2_alarm = 1}, 101, true, true, 1},
        {{.gate2_min_depth = 3750, .gate2_alarm = 3}, 0, true, true, 2},  // 20 below 30 counts
        {{.gate2_min_depth = 2500, .gate2_alarm = 3}, 0, true, true, 5},  // 20 is not below 20
        {{.zero = 10000, .gate2_alarm = 3}, 0, true, true, 2},            // below the zero's 80
        {{.gate2_alarm = 36, .dac_mode = 0}, 283, true, true, 1},  {{.gate2_alarm = 4}, 282, true, true, 5},  // 36 is 4
        {{.gate2_alarm = 4, .dac_mode = 0}, 511, true, false, 5},  // no points: no curve
        {{.gate2_alarm = 6, .dac_mode = 1}, 142, true, true, 1},   {{.gate2_alarm = 6, .dac_mode = 1}, 141, true, true, 5},
        {{.gate2_alarm = 9, .dac_mode = 2}, 326, true, true, 1},   {{.gate2_alarm = 9, .dac_mode = 2}, 325, true, true, 5},
        {{.gate2_alarm = 12, .dac_mode = 3, .dac_gain = 20, .rl_gain = -80, .dac_on = 1}, 142, true, true, 1},
        {{.gate2_alarm = 12, .dac_mode = 3, .dac_gain = 20, .rl_gain = -80, .dac_on = 1}, 141, true, true, 5},
    };
    for (Case c : cases) {
        c.setup.range = 11364;
        c.setup.units = 2;
        store.ascan.gate2_amplitude = c.amplitude;
        EXPECT_EQ(evaluate_gate2_alarm(flaw_setup(c.setup), c.with_scan ? &store.ascan : nullptr,
                                       c.with_points ? store.dac_points : none),
                  c.expected)
            << "alarm " << c.setup.gate2_alarm << " mode " << c.setup.dac_mode << " amplitude " << c.amplitude;
    }
}

}  // namespace
}  // namespace ugf
