// Damaged and out-of-range input that no other test reaches: label count
// bytes of files without manual labels, walks over unused dimensions, cut
// titles, unsigned counts of the header row, the processor's value of an
// out-of-range truncation, 16-bit curve heights and amplitude percents, box
// texts that carry from one box to the next, and a curve search that never
// finds a visible sample.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "detailed/header_values.h"
#include "ident/cursor.h"
#include "ident/id_text.h"
#include "store/session_id.h"
#include "present/dac_curve.h"
#include "present/flaw_row.h"
#include "store/scan.h"
#include "support/session_csv.h"
#include "support/survey_image.h"

namespace ugf {
namespace {

using test::SurveyHeader;

// ------------------------------------------------------------ file and session

// In files without manual labels the bytes of the label counts belong to
// custom point label 1; letters above 100 there are text, not a count.
TEST(OpenCasesSession, LabelCountBytesOfOtherFileTypesAreLabelText) {
    const std::string label = "ABCDEFGHIJKLMNzzzzz";  // "zz" lies on the count of dimension 0
    for (std::uint32_t file_type : {1u, 3u, 5u}) {
        SurveyHeader h;
        h.file_type = file_type;
        test::set_ranges(h, {{"1", "2"}, {"1", "2"}, {"1", "2"}});
        h.custom_point_labels[1] = label;
        test::OpenedSurvey o(test::survey_image(h));
        ASSERT_EQ(o.result, 1) << file_type;
        EXPECT_STREQ(custom_point_label(&o.session, 1, 0), label.c_str()) << file_type;
    }
}

// The limits of the identifier counts are tested once the setups are read,
// the label counts of a manual file before any label is.
TEST(OpenCasesSession, LimitsAreCheckedInTheirPlaceOfTheOpen) {
    SurveyHeader split;
    split.file_type = 4;
    split.c2 = 19;
    split.start_id = split.end_id = std::string(19, '1');
    test::ImageBuilder image = test::survey_image(split);
    test::write_gauge_setup(image, 0, 3, {});
    test::OpenedSurvey late(image);
    EXPECT_EQ(late.result, 0);
    EXPECT_EQ(late.session.setups[3].gauge.setup_present, 1u);

    SurveyHeader manual;
    manual.file_type = 12;
    test::set_manual_labels(manual, {{"A"}, {"B"}, {"C"}, {"D"}});
    manual.dim_label_count[3] = 101;
    test::OpenedSurvey early(test::survey_image(manual));
    EXPECT_EQ(early.result, 0);
    EXPECT_STREQ(early.session.dim_label_table[0][0], "");
}

// A thickness gauge A-scan with too many samples, its fixed fields (1288 to
// 1315) cut by the end of the file: the fields are read before the count is
// refused, so the read error shows.
TEST(OpenCasesSession, SampleCountIsRefusedAfterTheFixedFields) {
    const std::uint32_t block = 0x4000;
    const struct {
        std::size_t end;
        const char* console;
    } cases[] = {{1301, "ERROR: FS_READ_ERROR.\n"}, {1316, ""}};
    for (const auto& c : cases) {
        test::ImageBuilder image;
        test::write_slot(image, 0, 0, test::link_record(2, block));
        test::ThicknessAscanImage scan;
        scan.sample_count = 319;
        scan.min_samples.assign(318, 1);
        scan.max_samples.assign(318, 2);
        test::write_ascan_thickness(image, block, scan);
        image.resize(block + c.end);
        test::ScratchDir dir;
        image.save(dir.file("s.ugf"));
        static DlSession session;
        static ScanStore store;
        ASSERT_EQ(dl_open(session.stream, dir.file("s.ugf").c_str()), 1);
        session.gage_type = 5;
        session.file_version = 24;
        session.file_type = 0;
        ReadingRecord reading;
        testing::internal::CaptureStdout();
        EXPECT_EQ(read_reading(session, 0, reading, store, 1), 0) << c.end;
        std::fflush(stdout);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), c.console) << c.end;
        dl_close(session.stream);
    }
}

// ------------------------------------------------------ identifiers and walks

TEST(OpenCasesIdentifiers, LowerCaseTextsNeverSubtract) {
    const struct {
        const char* minuend;
        const char* subtrahend;
    } cases[] = {{"b1", "a1"}, {"B1", "a1"}, {"1b", "1A"}};
    for (const auto& c : cases) {
        std::int64_t value = 77;
        EXPECT_EQ(id_text_subtract(c.minuend, c.subtrahend, &value), 0) << c.minuend << " - " << c.subtrahend;
    }
}

// Dimension 1 has no positions: stepping it forward never reaches its size,
// backward it wraps to size - 1 (-1) and carries at every step.
TEST(OpenCasesIdentifiers, AFieldNamingAnUnusedDimensionIsWalked) {
    const struct {
        std::int32_t pattern;
        std::array<std::int64_t, 3> p0, p1;  // positions of dimensions 0 and 1 after each step
    } cases[] = {
        {WALK_STANDARD, {0, 0, 0}, {1, 2, 3}},
        {WALK_REVERSE, {2, 1, 0}, {-1, -1, -1}},
    };
    for (const auto& c : cases) {
        IdCursor cursor;
        cursor.dim_size = {3, 0, 0, 0};
        for (std::size_t i = 0; i < 3; ++i) {
            cursor_walk(cursor, 2, 1, 0, c.pattern, 4, 0);
            EXPECT_EQ(cursor.dim_position[0], c.p0[i]) << c.pattern << " step " << i;
            EXPECT_EQ(cursor.dim_position[1], c.p1[i]) << c.pattern << " step " << i;
        }
    }
}

// A boiler elevation of 19 characters and its unit make 21: the title and
// the identifier keep 20.
TEST(OpenCasesIdentifiers, TitleWithItsUnitIsCutTo20) {
    SurveyHeader h;
    h.file_type = 5;
    h.elevation_unit = 2;
    test::set_ranges(h, {{"1", "2"}, {"0000000000000000010", "0000000000000000030", 10}});
    h.custom_point_labels[0] = "NORTH";
    test::OpenedSurvey o(test::survey_image(h));
    ASSERT_EQ(o.result, 1);
    char out[ID_TEXT_SIZE] = {};
    session_dimension_text(o.session, 0, out, 1, 1);
    EXPECT_STREQ(out, "0000000000000000010F");
    session_point_id(o.session, 0, out, 1);
    EXPECT_STREQ(out, "0000000000000000010F");
}

// Custom points 1 to 25: the label table holds 20, so positions 20 to 24
// name nothing, in titles and identifiers alike.
TEST(OpenCasesIdentifiers, CustomPointsPastTheTableHaveNoText) {
    SurveyHeader h;
    h.file_type = 1;
    test::set_ranges(h, {{"01", "25"}, {"7", "7"}});
    h.custom_point_labels[19] = "LAST";
    test::OpenedSurvey o(test::survey_image(h));
    ASSERT_EQ(o.result, 1);
    const struct {
        std::int64_t index;
        const char* title;
        const char* id;
    } cases[] = {{19, "LAST", "7LAST"}, {20, "", "7"}, {24, "", "7"}};
    for (const auto& c : cases) {
        char out[ID_TEXT_SIZE] = {};
        session_dimension_text(o.session, c.index, out, 0, 1);
        EXPECT_STREQ(out, c.title) << c.index;
        session_point_id(o.session, c.index, out, 1);
        EXPECT_STREQ(out, c.id) << c.index;
    }
}

// 65536 x 65535 points: the count passes 2^31 and prints unsigned; the
// setup count is the byte as stored.
TEST(OpenCasesIdentifiers, HeaderRowCountsAreUnsigned) {
    SurveyHeader h;
    h.file_type = 2;
    h.gage_type = 5;
    h.id_count = 1;
    h.setup_count = 255;
    test::set_ranges(h, {{"00001", "65536"}, {"00001", "65535"}});
    test::OpenedSurvey o(test::survey_image(h));
    ASSERT_EQ(o.result, 1);
    const test::CsvText csv = test::csv_written_by([&](CsvSink& sink) { return write_header_values(o.session, sink); });
    EXPECT_EQ(csv.result, 1);
    EXPECT_EQ(csv.text, "FILE-NAME.CSV,2D,29,,00001,00001,65535,65536,ROW,1,1,STANDARD,4294901760,255"
                        ",16,0/0/65516 0:0,0/0/65516 0:0\n\n");
}

// ----------------------------------------------------------------- arithmetic

// A range of 2^32 - 1 shown 10% longer passes 2^31: Rt is -2^31, and S of a
// microsecond setup on 100 columns is -2^31 x 80 / 100 / 100 in single
// precision, -17179870, whose low 16 bits are 56098.
TEST(OpenCasesArithmetic, RangePastTwoToThe31GivesTheProcessorValue) {
    CurveSetup setup;
    setup.range = 0xFFFFFFFFu;
    setup.units = 2;
    const std::array<DacPoint, DAC_POINT_COUNT> none{};
    DacCurve curve;
    CurveFrame frame;
    prepare_dac_curve(setup, 100, none, curve, frame);
    EXPECT_EQ(frame.counts_per_100_columns, 56098u);
}

// A height of 257 x 256 = 65792 keeps its low 16 bits, 256; a height beyond
// 32 bits truncates to -2^31, whose low 16 bits are 0.
TEST(OpenCasesArithmetic, CurveHeightKeepsItsLowSixteenBitsCappedAt511) {
    CurveFrame frame;
    frame.column_count = 100;
    frame.counts_per_100_columns = 100;
    frame.range_counts = 100;
    DacCurve curve;
    curve.first_column = 0;
    curve.step = 1.0;
    curve.scale = {256.0, 1e10, 1.0, 1.0};
    for (std::size_t i = 0; i < 10; ++i) curve.table[i] = 257;
    const struct {
        std::uint32_t kind;  // 4: the first curve, 6: the second
        std::uint16_t amplitude;
        int expected;
    } cases[] = {{4, 257, ALARM_HIGH}, {4, 256, ALARM_ARMED}, {6, 1, ALARM_HIGH}, {6, 0, ALARM_ARMED}};
    for (const auto& c : cases) {
        AlarmInput input;
        input.alarm_kind = c.kind;
        input.peak_position = 3;  // column 1
        input.peak_amplitude = c.amplitude;
        EXPECT_EQ(gate_alarm_state(input, curve, frame, 1), c.expected) << c.kind << " " << c.amplitude;
    }
}

// Under RF a gate amplitude of 65000 centres to 2 x 65000 - 512 = 129488,
// in 16 bits 63952: 63952 / 511 x 100 = 12515.07.
TEST(OpenCasesArithmetic, AmplitudePercentIsUnsignedSixteenBits) {
    AscanRecord scan;
    scan.gate1_amplitude = 65000;
    const ReadingRecord reading{2u << 29, 0, 0, 0};
    EXPECT_EQ(amplitude_percent(reading, 35, 0, &scan), 12515);
}

// ------------------------------------------------------------ number formatting

// The flaw detector's setup fields packed as the file packs them.
FlawSetup flaw_setup(const test::FlawSetupImage& s) {
    FlawSetup f{.velocity = s.velocity, .zero = s.zero, .delay = s.delay, .range = s.range};
    f.reject_word = test::reject_word_of(s);
    f.box_word = test::box_word_of(s);
    f.gate_alarms = test::gate_alarms_of(s);
    f.mode_word = test::mode_word_of(s);
    f.display_word = test::display_word_of(s);
    f.dac_word = test::dac_word_of(s);
    return f;
}

// Kind 37 keeps the text before it: in box 1 that is the empty text of a
// new reading (never the last reading's), behind a box of kind 0 its blanks.
TEST(OpenCasesNumbers, BoxTextStartsEmptyAndCarriesToTheNextBox) {
    static DlSession session;
    session.gage_type = GAGE_FLAW_DETECTOR;
    const struct {
        test::FlawSetupImage setup;
        const char* row;
    } readings[] = {
        {{.box1_kind = 1, .resolution = 1}, "IN,GATE 1 THICKNESS, 1.235,,,,,7,,OFF,OFF,OFF,OFF\n"},
        {{.box1_kind = 37}, "IN,,,,,,,7,,OFF,OFF,OFF,OFF\n"},
        {{.box1_kind = 0, .box2_kind = 37}, "IN,OFF,,,      ,,,7,,OFF,OFF,OFF,OFF\n"},
    };
    std::string expected;
    const test::CsvText csv = test::csv_written_by([&](CsvSink& sink) {
        for (const auto& r : readings) {
            session.setups[7].flaw = flaw_setup(r.setup);
            const test::RecordImage im =
                test::flaw_record({.flaw_setup_number = 7, .box_value = {12345, 12345, 12345}});
            const ReadingRecord rec{im.word0, im.at4, im.at8, im.at12};
            if (print_flaw_reading(session, rec, sink, 1, nullptr, nullptr) == 0) return 0;
            expected += r.row;
        }
        return 1;
    });
    EXPECT_EQ(csv.result, 1);
    EXPECT_EQ(csv.text, expected);
}

// Curve samples 65534 counts apart from time 10 have even low 16 bits
// (10, 8, ..., 0, 65534, ...): they never reach the odd count of the delay
// (32767) nor the last point's time (65535). The search stops once the
// time reaches 2^31, and there is no curve.
TEST(OpenCasesNumbers, CurveSearchGivesUpAtTwoToThe31) {
    DacCurve curve;
    curve.points[0] = {10, 400};
    curve.points[1] = {65535, 100};
    curve.point_count = 2;
    CurveFrame frame;
    frame.column_count = 1;
    frame.counts_per_100_columns = 100;
    frame.range_counts = 65534;
    frame.delay_counts = 32767;
    EXPECT_EQ(build_dac_curve(curve, frame), 0);
    EXPECT_EQ(curve.first_column, NO_COLUMN);
}

}  // namespace
}  // namespace ugf
