// Reading rows of the thickness gauges: the title rows, the status columns of
// both gauges and the measurement pairs, read from slot 0 of a built survey.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "detailed/reading_row.h"
#include "store/scan.h"
#include "support/scratch.h"
#include "support/survey_image.h"

namespace ugf {
namespace {

using test::GaugeReading;

ScanStore store;

// The CSV text that `write` puts into a fresh file; its result must be `result`.
template <typename Write>
std::string csv_of(const test::ScratchDir& dir, Write write, int result = 1) {
    std::FILE* out = std::fopen(dir.file("out.csv").c_str(), "w");
    CsvSink sink{out, 0};
    EXPECT_EQ(write(sink), result);
    std::fclose(out);
    return test::read_file(dir.file("out.csv")).value_or("<no file>");
}

// The setup fields that a row reads.
struct RowSetup {
    std::uint32_t diff_type = 0, units = 0, resolution = 0, diff_reference = 0;
    std::uint32_t gain_mode = 0, gain_db = 0, meas_mode = 0;
};

enum Writer { CORROSION, PRECISION, PAIRS_5, PAIRS_6 };

struct RowCase {
    Writer writer;
    RowSetup setup;
    GaugeReading r;
    const char* expected;
    int has_ascan = 0;
    int velocity = 0;
};

// The text of one writer on slot 0 of a survey that holds `c.r`, with
// `c.setup` as the reading's setup.
std::string row_of(const RowCase& c) {
    test::SurveyHeader h;
    h.gage_type = c.writer == PRECISION || c.writer == PAIRS_6 ? 6 : 5;
    test::set_ranges(h, {{"1", "9"}});
    test::ImageBuilder image = test::survey_image(h);
    test::GaugeSetupImage setup;
    setup.diff_type = c.setup.diff_type;
    setup.units = c.setup.units;
    setup.resolution = c.setup.resolution;
    setup.diff_reference = c.setup.diff_reference;
    setup.gain_mode = c.setup.gain_mode;
    setup.gain_db = c.setup.gain_db;
    setup.meas_mode = c.setup.meas_mode;
    test::write_gauge_setup(image, 0, static_cast<int>(c.r.setup_number), setup);
    test::write_slot(image, 0, 0, test::gauge_record(c.r));
    test::ScratchDir dir;
    image.save(dir.file("s.ugf"));
    DlSession s;
    EXPECT_EQ(open_datalogger_session(s, dir.file("s.ugf").c_str()), 1);
    ReadingRecord r;
    EXPECT_EQ(read_reading(s, 0, r, store, 1), 1);
    std::string text = csv_of(dir, [&](CsvSink& sink) {
        if (c.writer == CORROSION) return write_columns_corrosion(s, r, c.has_ascan, sink, c.velocity);
        if (c.writer == PRECISION) return write_columns_precision(s, r, c.has_ascan, sink, c.velocity);
        return write_measurement_pairs(s, r, sink, c.velocity);
    });
    dl_close(s.stream);
    return text;
}

GaugeReading velocity_with(std::uint32_t units, std::uint32_t first_kind, std::uint32_t first_value) {
    GaugeReading r = test::velocity_reading(23300, units);
    r.second_kind = 1;
    r.first_kind = first_kind;
    r.first_value = first_value;
    return r;
}

TEST(StatusColumns, TextsOfBothGauges) {
    const RowCase cases[] = {
        // An empty slot ignores the bits of its first word.
        {CORROSION, {}, {.record_type = 0, .alarm_state = 1}, ",,,,,,,,,,,,,,,,\n", 1},
        {PRECISION, {}, {.record_type = 0, .alarm_state = 1}, ",,,,,,,,,,,,,\n", 1},
        // Measurement mode 5 doesn't change the corrosion gauge's unit.
        {CORROSION, {.diff_type = 2, .gain_mode = 4, .gain_db = 40, .meas_mode = 5},
         {.alarm_state = 1, .fast_mode = 2, .bscan_mode = 2, .setup_number = 3, .echo_to_echo = 1, .note_mask = 5},
         ",IN,HIGH,PERCENT,40DB,MIN/MAX,AC,3,E TO E,ON,ON,,,,,,\n", 1},
        // Codes without a text keep their cells; units 3 reaches "ALARM".
        {CORROSION, {.diff_type = 3, .gain_mode = 1}, {.units = 3, .alarm_state = 6, .fast_mode = 3, .note_mask = 0x8000},
         ",ALARM,,,STD ,MAX-MIN,P,0,STD,OFF,OFF,,,,,,\n"},
        // A velocity reading keeps its first pair and has no second.
        {CORROSION, {}, velocity_with(1, 3, 68), ",M/S,OFF,OFF,LOW ,OFF,,0,STD,OFF,OFF, 20.4 C,TEMP,,,,\n", 0, 1},
        // Record types 6 and 7 are readings of their first word alone.
        {CORROSION, {}, {.record_type = 6, .alarm_state = 5}, ",IN,ON,OFF,LOW ,OFF,,0,STD,OFF,OFF,,,,,,\n"},
        {PRECISION, {}, {.alarm_state = 4, .fast_mode = 1, .bscan_mode = 1, .setup_number = 31, .note_mask = 3},
         ",IN,WARNING LOW,ON,AB,31,ON,ON,,,,,,\n", 1},
        {PRECISION, {.meas_mode = 5}, {.units = 0}, ",MIL ,OFF,OFF,,0,OFF,OFF,,,,,,\n"},
        {PRECISION, {.meas_mode = 5}, {.units = 1}, ",MICR,OFF,OFF,,0,OFF,OFF,,,,,,\n"},
        {PRECISION, {.meas_mode = 5}, velocity_with(0, 0, 0), ",IN/US,OFF,OFF,,0,OFF,OFF,,,,,,\n", 0, 1},
    };
    for (const RowCase& c : cases) EXPECT_EQ(row_of(c), c.expected);
}

TEST(MeasurementPairs, KindsLostSignalAndNoValueTexts) {
    const RowCase cases[] = {
        {PAIRS_5, {.diff_type = 1, .diff_reference = 1000},
         {.los = 1, .resolution = 1, .thickness = 5000, .first_kind = 1, .second_kind = 2, .first_value = 12345},
         ",--.---,COATING,--.---,DIFF,,"},
        // A coating of 2 or less is a marker; a value loses its sign position.
        {PAIRS_5, {}, {.resolution = 1, .first_kind = 1, .first_value = 2}, ",--.---,COATING,,,,"},
        {PAIRS_5, {}, {.resolution = 1, .first_kind = 1, .first_value = 3}, ",0.000,COATING,,,,"},
        // The oxide marker doesn't follow the gauge; a lost signal still shows the span.
        {PAIRS_5, {}, {.los = 1, .resolution = 1, .first_kind = 2, .second_kind = 3, .first_value = 100, .min_value = 1234},
         ",-.----,OXIDE, 0.123,MAX-MIN,,"},
        {PAIRS_5, {}, {.resolution = 1, .first_kind = 2, .first_value = 12345}, ",1.2345,OXIDE,,,,"},
        {PAIRS_5, {}, {.los = 1, .units = 1, .first_kind = 3, .first_value = 212}, ", 100.4 C,TEMP,,,,"},
        {PAIRS_5, {}, {.units = 0, .first_kind = 3, .first_value = 212}, ", 212 F,TEMP,,,,"},
        // Only the maximum decides whether the pair holds values.
        {PAIRS_5, {}, {.second_kind = 1, .min_value = 500}, ",,,--.---,MIN,--.---,MAX"},
        {PAIRS_6, {}, {.second_kind = 1, .min_value = 500}, ",,,-.----,MIN,-.----,MAX"},
        {PAIRS_5, {}, {.resolution = 1, .second_kind = 1, .max_value = 5000}, ",,, 0.000,MIN, 0.500,MAX"},
        {PAIRS_6, {}, {.resolution = 1, .second_kind = 1, .min_value = 12345, .max_value = 23456},
         ",,,1.2345,MIN,2.3456,MAX"},
        {PAIRS_6, {}, {.second_kind = 3}, ",,,-.----,MAX-MIN,,"},
        // The absolute difference takes the setup's units and resolution.
        {PAIRS_5, {.diff_type = 1, .units = 1, .resolution = 1, .diff_reference = 10000},
         {.thickness = 12345, .second_kind = 2}, ",,,  0.23,DIFF,,"},
        {PAIRS_5, {.diff_type = 1, .resolution = 1, .diff_reference = 10000}, {.thickness = 9000, .second_kind = 2},
         ",,,-0.100,DIFF,,"},
        // Every other differential type is a percentage, truncated.
        {PAIRS_5, {.diff_type = 2, .diff_reference = 10000}, {.thickness = 11299, .second_kind = 2}, ",,, 12%,DIFF,,"},
        {PAIRS_5, {.diff_type = 0, .diff_reference = 10000}, {.thickness = 9500, .second_kind = 2}, ",,, -5%,DIFF,,"},
        {PAIRS_5, {.diff_type = 2, .diff_reference = 12000}, {.units = 1, .thickness = 1234, .second_kind = 2},
         ",,,  2%,DIFF,,"},
        {PAIRS_5, {.diff_type = 2}, {.thickness = 1234, .second_kind = 2}, ",,,,DIFF,,"},
        // A velocity reading has no second piece.
        {PAIRS_5, {}, {.second_kind = 1, .max_value = 5000}, ",,,,,,", 0, 1},
    };
    for (const RowCase& c : cases) EXPECT_EQ(row_of(c), c.expected);
}

}  // namespace
}  // namespace ugf
