// Entry points of the library that no run of the converter reaches as they
// are: the row writers on their own (the columns behind a thickness and the
// measurement pairs, as the detailed rows hold them), the session open's
// result, the setup listing of an unknown gage type and cut texts.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "detailed/reading_row.h"
#include "present/setup_listing.h"
#include "support/scratch.h"
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

TEST(EntryPoints, RowWritersOfBothGauges) {
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

// csv_write halves every "%%", pairing from the left, in the file and in
// the echo alike; a "%" without a partner stays.
TEST(EntryPoints, CsvWriteHalvesPercentPairsFromTheLeft) {
    const struct {
        const char* text;
        const char* out;
    } cases[] = {
        {"", ""},           {"%", "%"},           {"%%", "%"},           {"%%%", "%%"},
        {"%%%%", "%%"},     {"%%%%%", "%%%"},     {"a%b", "a%b"},        {"a%%b", "a%b"},
        {"%a%%", "%a%"},    {"12%,DIFF", "12%,DIFF"}, {"5%%%,x%%", "5%%,x%"}, {"%%a%", "%a%"},
    };
    for (const auto& c : cases) {
        std::string file;
        CsvSink sink;
        sink.context = &file;
        sink.write = [](void* context, const char* text, std::size_t n) {
            static_cast<std::string*>(context)->append(text, n);
        };
        EXPECT_EQ(csv_write(c.text, sink), 1);
        EXPECT_EQ(file, c.out) << c.text;
    }
}

TEST(EntryPoints, OpenListingAndBoundedTexts) {
    test::ScratchDir dir;
    test::SurveyHeader manual{.file_type = 10};
    test::set_manual_labels(manual, {{"A"}, {"B"}});
    test::survey_image(manual).save(dir.file("m.ugf"));
    static DlSession session;
    EXPECT_EQ(open_datalogger_session(session, dir.file("m.ugf").c_str()), 1);
    close_datalogger_session(session);

    // An unknown gage type lists the corrosion gauge's titles, then fails at
    // its first present setup.
    session.gage_type = 9;
    session.setups[3].gauge.setup_present = 1;
    std::FILE* file = std::tmpfile();
    CsvSink sink{file, 0};
    EXPECT_EQ(write_setup_listing(session, sink), 0);
    std::fclose(file);

    // format_text tells what it kept, format_text_bounded the whole length.
    char text[8];
    EXPECT_EQ(format_text(text, 0, "%d", 123), 0);
    EXPECT_EQ(format_text(text, sizeof text, "%d", 123456789), 7);
    EXPECT_EQ(format_text_bounded(text, sizeof text, "%d", 123456789), 9);
    EXPECT_STREQ(text, "1234567");
}

}  // namespace
}  // namespace ugf
