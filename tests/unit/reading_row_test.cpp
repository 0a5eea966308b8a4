// The library's row writers on their own: the columns behind a thickness
// and the measurement pairs of a reading, as the detailed rows hold them.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "detailed/reading_row.h"
#include "support/survey_image.h"

namespace ugf {
namespace {

std::string written(int (*write)(const DlSession&, const ReadingRecord&, CsvSink&), std::int32_t gage,
                    const test::GaugeReading& r) {
    static DlSession session;
    session.gage_type = gage;
    const test::RecordImage im = test::gauge_record(r);
    std::FILE* file = std::tmpfile();
    CsvSink sink{file, 0};
    EXPECT_EQ(write(session, {im.word0, im.at4, im.at8, im.at12}, sink), 1);
    char text[256] = {};
    std::rewind(file);
    text[std::fread(text, 1, sizeof text - 1, file)] = '\0';
    std::fclose(file);
    return text;
}

TEST(RowWriters, ColumnsAndPairsOfBothGauges) {
    using Writer = int (*)(const DlSession&, const ReadingRecord&, CsvSink&);
    const Writer corrosion = [](auto& s, auto& r, auto& sink) { return write_columns_corrosion(s, r, 1, sink, 0); };
    const Writer precision = [](auto& s, auto& r, auto& sink) { return write_columns_precision(s, r, 1, sink, 0); };
    const Writer pairs = [](auto& s, auto& r, auto& sink) { return write_measurement_pairs(s, r, sink, 0); };
    const Writer velocity_pairs = [](auto& s, auto& r, auto& sink) { return write_measurement_pairs(s, r, sink, 1); };
    EXPECT_EQ(written(corrosion, 5, {.record_type = 0}), ",,,,,,,,,,,,,,,,\n");
    EXPECT_EQ(written(precision, 6, {.record_type = 0}), ",,,,,,,,,,,,,\n");
    EXPECT_EQ(written(corrosion, 5, {.resolution = 1}), ",IN,OFF,OFF,LOW ,OFF,,0,STD,OFF,ON,,,,,,\n");
    EXPECT_EQ(written(precision, 6, {.resolution = 1}), ",IN,OFF,OFF,,0,OFF,ON,,,,,,\n");
    EXPECT_EQ(written(pairs, 5, {.second_kind = 1, .min_value = 500}), ",,,--.---,MIN,--.---,MAX");
    EXPECT_EQ(written(velocity_pairs, 5, {.second_kind = 1, .max_value = 5000}), ",,,,,,");
}

}  // namespace
}  // namespace ugf
