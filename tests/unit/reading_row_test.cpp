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

// The setup fields that a row reads.
struct RowSetup {
    std::uint32_t diff_type = 0, units = 0, resolution = 0, diff_reference = 0;
    std::uint32_t gain_mode = 0, gain_db = 0, meas_mode = 0;
};

ScanStore store;

// The CSV text that `write` puts into a fresh file, and its result.
template <typename Write>
std::string csv_of(const test::ScratchDir& dir, Write write, int expected_result = 1) {
    const std::string path = dir.file("out.csv");
    std::FILE* out = std::fopen(path.c_str(), "w");
    CsvSink sink{out, 0};
    EXPECT_EQ(write(sink), expected_result);
    std::fclose(out);
    return test::read_file(path).value_or("<no file>");
}

// A survey of `gage` whose slot 0 holds `r`, with `setup` as the reading's
// setup; `write` gets the session and the reading as read.
template <typename Write>
std::string row_of(std::uint32_t gage, const RowSetup& fields, const GaugeReading& r,
                   Write write) {
    test::ScratchDir dir;
    test::SurveyHeader h;
    h.gage_type = gage;
    test::set_ranges(h, {{"1", "9"}});
    test::ImageBuilder image = test::survey_image(h);
    test::GaugeSetupImage setup;
    setup.diff_type = fields.diff_type;
    setup.units = fields.units;
    setup.resolution = fields.resolution;
    setup.diff_reference = fields.diff_reference;
    setup.gain_mode = fields.gain_mode;
    setup.gain_db = fields.gain_db;
    setup.meas_mode = fields.meas_mode;
    test::write_gauge_setup(image, 0, static_cast<int>(r.setup_number), setup);
    test::write_slot(image, 0, 0, test::gauge_record(r));
    image.save(dir.file("s.ugf"));
    DlSession session;
    EXPECT_EQ(open_datalogger_session(session, dir.file("s.ugf").c_str()), 1);
    ReadingRecord reading;
    EXPECT_EQ(read_reading(session, 0, reading, store, 1), 1);
    std::string text = csv_of(dir, [&](CsvSink& sink) { return write(session, reading, sink); });
    dl_close(session.stream);
    return text;
}

TEST(ColumnTitles, OneRowForEachInstrument) {
    test::ScratchDir dir;
    const auto titles = [&](std::int32_t gage, int result) {
        return csv_of(dir, [&](CsvSink& sink) { return write_column_titles(gage, sink); }, result);
    };
    EXPECT_EQ(titles(5, 1),
              "\nID,THICKNESS,UNITS,ALARM,DIFF,GAIN,FAST,NOTE #,SETUP #,MEAS MODE,B SCAN,A SCAN,"
              "MEASUREMENT,TYPE,MEASUREMENT,TYPE,MEASUREMENT,TYPE\n");
    EXPECT_EQ(titles(6, 1),
              "\nID,THICKNESS,UNITS,ALARM,FAST,NOTE #,SETUP #,B SCAN,A SCAN,"
              "MEASUREMENT,TYPE,MEASUREMENT,TYPE,MEASUREMENT,TYPE\n");
    EXPECT_EQ(titles(7, 1),
              "\nID,UNITS,MEAS BOX 1,VALUE,MEAS BOX 2,VALUE,MEAS BOX 3,VALUE,SETUP,NOTES,"
              "A SCAN,B SCAN,GATE1 ALARM,GATE2 ALARM\n");
    EXPECT_EQ(titles(9, 0), "");
}

GaugeReading velocity_with(std::uint32_t units, std::uint32_t first_kind, std::uint32_t first_value) {
    GaugeReading r = test::velocity_reading(23300, units);
    r.second_kind = 1;
    r.first_kind = first_kind;
    r.first_value = first_value;
    return r;
}

TEST(StatusColumns, TextsOfBothGauges) {
    struct Case {
        std::uint32_t gage;
        RowSetup setup;
        GaugeReading r;
        int has_ascan, velocity;
        const char* expected;
    } cases[] = {
        // An empty slot ignores the bits of its first word.
        {5, {}, {.record_type = 0, .alarm_state = 1}, 1, 0, ",,,,,,,,,,,,,,,,\n"},
        {6, {}, {.record_type = 0, .alarm_state = 1}, 1, 0, ",,,,,,,,,,,,,\n"},
        // Measurement mode 5 doesn't change the corrosion gauge's unit.
        {5, {.diff_type = 2, .gain_mode = 4, .gain_db = 40, .meas_mode = 5},
         {.units = 0, .alarm_state = 1, .fast_mode = 2, .bscan_mode = 2, .setup_number = 3,
          .echo_to_echo = 1, .note_mask = 0b101},
         1, 0, ",IN,HIGH,PERCENT,40DB,MIN/MAX,AC,3,E TO E,ON,ON,,,,,,\n"},
        // Codes without a text keep their cells; units 3 reaches "ALARM".
        {5, {.diff_type = 3, .gain_mode = 1},
         {.units = 3, .alarm_state = 6, .fast_mode = 3, .note_mask = 0x8000}, 0, 0,
         ",ALARM,,,STD ,MAX-MIN,P,0,STD,OFF,OFF,,,,,,\n"},
        // A velocity reading keeps its first pair and has no second.
        {5, {}, velocity_with(1, 3, 68), 0, 1, ",M/S,OFF,OFF,LOW ,OFF,,0,STD,OFF,OFF, 20.4 C,TEMP,,,,\n"},
        // Record types 6 and 7 are readings of their first word alone.
        {5, {}, {.record_type = 6, .alarm_state = 5}, 0, 0, ",IN,ON,OFF,LOW ,OFF,,0,STD,OFF,OFF,,,,,,\n"},
        {6, {}, {.alarm_state = 4, .fast_mode = 1, .bscan_mode = 1, .setup_number = 31, .note_mask = 3},
         1, 0, ",IN,WARNING LOW,ON,AB,31,ON,ON,,,,,,\n"},
        {6, {.meas_mode = 5}, {.units = 0}, 0, 0, ",MIL ,OFF,OFF,,0,OFF,OFF,,,,,,\n"},
        {6, {.meas_mode = 5}, {.units = 1}, 0, 0, ",MICR,OFF,OFF,,0,OFF,OFF,,,,,,\n"},
        {6, {.meas_mode = 5}, velocity_with(0, 0, 0), 0, 1, ",IN/US,OFF,OFF,,0,OFF,OFF,,,,,,\n"},
    };
    for (const Case& c : cases) {
        const std::string text = row_of(c.gage, c.setup, c.r, [&](const DlSession& s, const ReadingRecord& r, CsvSink& sink) {
            return c.gage == 5 ? write_columns_corrosion(s, r, c.has_ascan, sink, c.velocity)
                               : write_columns_precision(s, r, c.has_ascan, sink, c.velocity);
        });
        EXPECT_EQ(text, c.expected);
    }
}

TEST(MeasurementPairs, KindsLostSignalAndNoValueTexts) {
    struct Case {
        std::uint32_t gage;
        RowSetup setup;
        GaugeReading r;
        const char* expected;
    } cases[] = {
        {5, {.diff_type = 1, .diff_reference = 1000},
         {.los = 1, .resolution = 1, .thickness = 5000, .first_kind = 1, .second_kind = 2, .first_value = 12345},
         ",--.---,COATING,--.---,DIFF,,"},
        // A coating of 2 or less is a marker; a value loses its sign position.
        {5, {}, {.resolution = 1, .first_kind = 1, .first_value = 2}, ",--.---,COATING,,,,"},
        {5, {}, {.resolution = 1, .first_kind = 1, .first_value = 3}, ",0.000,COATING,,,,"},
        // The oxide marker doesn't follow the gauge; a lost signal still shows the span.
        {5, {}, {.los = 1, .resolution = 1, .first_kind = 2, .second_kind = 3, .first_value = 100, .min_value = 1234},
         ",-.----,OXIDE, 0.123,MAX-MIN,,"},
        {5, {}, {.resolution = 1, .first_kind = 2, .first_value = 12345}, ",1.2345,OXIDE,,,,"},
        {5, {}, {.los = 1, .units = 1, .first_kind = 3, .first_value = 212}, ", 100.4 C,TEMP,,,,"},
        {5, {}, {.units = 0, .first_kind = 3, .first_value = 212}, ", 212 F,TEMP,,,,"},
        // Only the maximum decides whether the pair holds values.
        {5, {}, {.second_kind = 1, .min_value = 500}, ",,,--.---,MIN,--.---,MAX"},
        {6, {}, {.second_kind = 1, .min_value = 500}, ",,,-.----,MIN,-.----,MAX"},
        {5, {}, {.resolution = 1, .second_kind = 1, .max_value = 5000}, ",,, 0.000,MIN, 0.500,MAX"},
        {6, {}, {.resolution = 1, .second_kind = 1, .min_value = 12345, .max_value = 23456},
         ",,,1.2345,MIN,2.3456,MAX"},
        {6, {}, {.second_kind = 3}, ",,,-.----,MAX-MIN,,"},
        // The absolute difference takes the setup's units and resolution.
        {5, {.diff_type = 1, .units = 1, .resolution = 1, .diff_reference = 10000},
         {.thickness = 12345, .second_kind = 2}, ",,,  0.23,DIFF,,"},
        {5, {.diff_type = 1, .resolution = 1, .diff_reference = 10000},
         {.thickness = 9000, .second_kind = 2}, ",,,-0.100,DIFF,,"},
        // Every other differential type is a percentage, truncated.
        {5, {.diff_type = 2, .diff_reference = 10000}, {.thickness = 11299, .second_kind = 2}, ",,, 12%,DIFF,,"},
        {5, {.diff_type = 0, .diff_reference = 10000}, {.thickness = 9500, .second_kind = 2}, ",,, -5%,DIFF,,"},
        {5, {.diff_type = 2, .diff_reference = 12000}, {.units = 1, .thickness = 1234, .second_kind = 2},
         ",,,  2%,DIFF,,"},
        {5, {.diff_type = 2, .diff_reference = 0}, {.thickness = 1234, .second_kind = 2}, ",,,,DIFF,,"},
    };
    for (const Case& c : cases) {
        const std::string text = row_of(c.gage, c.setup, c.r, [](const DlSession& s, const ReadingRecord& r, CsvSink& sink) {
            return write_measurement_pairs(s, r, sink, 0);
        });
        EXPECT_EQ(text, c.expected);
    }
}

}  // namespace
}  // namespace ugf
