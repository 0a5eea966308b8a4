// The value cell of the thickness gauges: thickness, lost-signal marker,
// velocity, and the notes that stand for a lost thickness in a grid.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "present/reading_value.h"
#include "support/scratch.h"
#include "support/survey_image.h"

namespace ugf {
namespace {

using test::GaugeReading;

struct ValueCase {
    std::int32_t gage_type;
    GaugeReading reading;
    int comma, full, velocity_cell;
    const char* expected;
};

std::string written(const DlSession& session, const ValueCase& c) {
    const test::RecordImage image = test::gauge_record(c.reading);
    // The file stores thick_lo before note_mask; the record holds them the other way round.
    const ReadingRecord record{image.word0, (image.at4 << 16) | (image.at4 >> 16), image.at8, image.at12};
    const int layout = c.gage_type == GAGE_PRECISION ? LAYOUT_PRECISION : LAYOUT_STANDARD;
    test::ScratchDir dir;
    std::FILE* file = std::fopen(dir.file("o.csv").c_str(), "w");
    CsvSink sink{file, 0};
    EXPECT_EQ(print_reading_value(session, record, sink, c.comma, layout, c.full, nullptr, nullptr, c.velocity_cell),
              1);
    std::fclose(file);
    return test::read_file(dir.file("o.csv")).value_or("<missing>");
}

TEST(PrintReadingValue, ThicknessGaugeCells) {
    static DlSession session;
    std::strcpy(session.note_table[2], "CORRODED 50%% AREA");
    session.setups[3].gauge.meas_word = 5u << 12;  // mode 5: mils and microns
    make_velocity_text(23300, 0);
    const ValueCase cases[] = {
        {5, {.record_type = 0}, 1, 0, 0, ","},
        {5, {.record_type = 0}, 0, 1, 0, ""},
        {5, {.los = 1}, 1, 0, 0, "--.---,"},
        {6, {.los = 1}, 1, 0, 0, "-.---,"},
        {0, {.los = 1}, 0, 1, 0, "--.---"},  // an unknown gauge reads like gage type 5
        {5, {.los = 1, .note_mask = 4}, 1, 0, 0, "CORRODED 50% AREA,"},
        {5, {.los = 1, .note_mask = 0x8001}, 1, 0, 0, "A:P,"},
        {5, {.los = 1, .note_mask = 0x25}, 0, 0, 0, "A:C:F"},
        {5, {.los = 1, .note_mask = 4}, 0, 1, 0, "--.---"},  // the detailed row has a notes column
        {5, {.resolution = 1, .thickness = 100000, .note_mask = 4}, 1, 0, 0, "10.000,"},
        {5, {.units = 1, .resolution = 1, .thickness = 100000}, 0, 1, 0, "100.00"},
        {6, {.resolution = 1, .thickness = 12345}, 1, 0, 0, "1.2345,"},
        {6, {.setup_number = 3, .resolution = 1, .thickness = 1234}, 1, 0, 0, " 12.34,"},
        {5, test::velocity_reading(23300, 0), 1, 0, 1, "0.2330,"},
        {5, {.los = 1}, 1, 0, 1, "--.---,"},  // the marker wins over the velocity
    };
    for (const ValueCase& c : cases) {
        session.gage_type = c.gage_type;
        EXPECT_EQ(written(session, c), c.expected) << c.expected;
    }
}

}  // namespace
}  // namespace ugf
