// Scan dumps: sample lists, the A-scan dumps of both families with their
// settings lines, gate lines and the DAC table, and the B-scan point table,
// each from a scan read out of a built survey.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "detailed/scan_dump.h"
#include "support/scratch.h"
#include "support/survey_image.h"

namespace ugf {
namespace {

using test::BscanPointImage;
using test::ImageBuilder;

constexpr std::uint32_t BLOCK = 0x4000;
const std::string TITLES_5 =
    "\nID,THICKNESS,UNITS,ALARM,DIFF,GAIN,FAST,NOTE #,SETUP #,MEAS MODE,B SCAN,A SCAN,"
    "MEASUREMENT,TYPE,MEASUREMENT,TYPE,MEASUREMENT,TYPE\n";
const std::string TITLES_7 =
    "\nID,UNITS,MEAS BOX 1,VALUE,MEAS BOX 2,VALUE,MEAS BOX 3,VALUE,SETUP,NOTES,"
    "A SCAN,B SCAN,GATE1 ALARM,GATE2 ALARM\n";

ScanStore store;

ImageBuilder survey(std::uint32_t gage) {
    test::SurveyHeader h;
    h.gage_type = gage;
    test::set_ranges(h, {{"1", "9"}});
    ImageBuilder image = test::survey_image(h);
    test::write_slot(image, 0, 0, {});  // empty unless a test links a scan
    return image;
}

// An image opened as a session with slot 0 read into the store, and an
// output file that text() closes and returns.
struct Dump {
    test::ScratchDir dir;
    DlSession session;
    std::FILE* out = nullptr;
    CsvSink sink;
    explicit Dump(const ImageBuilder& image) {
        store = ScanStore{};
        image.save(dir.file("s.ugf"));
        EXPECT_EQ(open_datalogger_session(session, dir.file("s.ugf").c_str()), 1);
        ReadingRecord slot;
        EXPECT_EQ(read_reading(session, 0, slot, store, 1), 1);
        out = std::fopen(dir.file("out.csv").c_str(), "w");
        sink = CsvSink{out, 0};
    }
    std::string text() {
        std::fclose(out);
        out = nullptr;
        return test::read_file(dir.file("out.csv")).value_or("<no file>");
    }
    ~Dump() {
        if (out != nullptr) std::fclose(out);
        dl_close(session.stream);
    }
};

TEST(SampleValues, TenToALineAndAClosingLineEnd) {
    const auto values_of = [](std::uint16_t count) {
        Dump d(survey(5));
        for (std::size_t i = 0; i < store.max_samples.size(); ++i) {
            store.max_samples[i] = static_cast<std::uint16_t>(i + 1);
        }
        store.max_samples[10] = 65535;
        store.ascan.sample_count = count;
        EXPECT_EQ(write_sample_values(store.ascan, store.max_samples, d.sink), 1);
        return d.text();
    };
    const auto lines = [](const std::string& text) { return std::count(text.begin(), text.end(), '\n'); };
    EXPECT_EQ(values_of(0), "\n,");
    EXPECT_EQ(values_of(10), "1,2,3,4,5,6,7,8,9,10,\n,\n,");
    EXPECT_EQ(values_of(12), "1,2,3,4,5,6,7,8,9,10,\n,65535,12,\n,");
    // 318 values: 31 full lines and one of 8; a count past the store stops at its 320.
    const std::string all = values_of(318);
    EXPECT_TRUE(all.ends_with(",310,\n,311,312,313,314,315,316,317,318,\n,")) << all;
    EXPECT_EQ(lines(all), 32);
    const std::string beyond = values_of(321);
    EXPECT_TRUE(beyond.ends_with(",310,\n,311,312,313,314,315,316,317,318,319,320,\n,\n,")) << beyond;
    EXPECT_EQ(lines(beyond), 33);
}

TEST(FlawScanBlock, DacDepthTexts) {
    const std::string head =
        "\n,GATE 1 MTI,0\n,GATE 1 DETECTION AMPLITUDE,0\n,GATE 2 MTI,0\n,GATE 2 DETECTION AMPLITUDE,0\n"
        "\n,DAC,ASME\n,THICKNESS,AMPLITUDE,DETECTION COUNT\n";
    struct Case {
        std::uint32_t units, resolution, meas_mode, velocity;
        std::int32_t zero;
        std::uint16_t count;
        const char* row;
    } cases[] = {
        {0, 1, 0, 23300, 0, 800, ", 1.165 IN,1,800\n"},  // 10 us at 0.2330 in/us
        {0, 1, 2, 23300, 0, 800, ", 2.330 IN,1,800\n"},  // through transmission doubles
        {0, 1, 0, 23300, 1000, 800, ", 1.065 IN,1,800\n"},
        {0, 1, 0, 23300, 1000, 0, ", 0.000 IN,1,0\n"},  // no count: no zero either
        {0, 0, 0, 23300, 0, 800, ", 1.17 IN,1,800\n"},
        {1, 1, 0, 1000, 0, 8000, ", 12.70 MM,1,8000\n"},
        {2, 1, 0, 0, 0, 800, ", 10.00 US,1,800\n"},
    };
    test::FlawAscanImage shown;
    shown.dac_shown = 1;
    for (const Case& c : cases) {
        Dump d(survey(7));
        store.ascan.head.word0 = test::flaw_ascan_word0(shown);
        store.dac_points[0] = {c.count, 1};
        FlawSetup setup;
        setup.velocity = c.velocity;
        setup.zero = c.zero;
        setup.mode_word = test::mode_word_of({.units = c.units, .resolution = c.resolution, .meas_mode = c.meas_mode});
        EXPECT_EQ(write_flaw_scan_block(store, setup, d.sink), 1);
        EXPECT_EQ(d.text(), head + c.row);
    }
    // A table of 25 points with amplitudes writes all 25.
    Dump d(survey(7));
    store.ascan.head.word0 = test::flaw_ascan_word0(shown);
    store.dac_points.fill({800, 1});
    EXPECT_EQ(write_flaw_scan_block(store, FlawSetup{}, d.sink), 1);
    const std::string text = d.text();
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 8 + 25);
}

TEST(BscanDump, PointsWithSignMarkersAndUnits) {
    const std::string title = ",BSCAN INDEX,THICKNESS,UNITS,ALARM,MIN/MAX\n";
    struct Case {
        std::uint32_t gage, units, resolution, meas_mode;
        std::vector<BscanPointImage> points;
        int more;
        std::string rows;
    } cases[] = {
        {5, 0, 1, 0,
         {{.alarm = 1, .is_min = 1, .magnitude = 12345}, {.is_max = 1, .negative = 1, .magnitude = 100},
          {.lost = 1, .magnitude = 12345}, {.magnitude = 0xFFFFF}, {.alarm = 6, .negative = 1, .magnitude = 0xFFFFF},
          {.alarm = 3, .magnitude = 0x41234}},
         1,
         ",1, 1.235,IN,HIGH,MIN\n,2,-0.010,IN,OFF,MAX\n,3,--.---,IN,OFF, \n,4,,IN,OFF, \n"
         ",5,-104.85,IN,, \n,6,26.680,IN,WARNING HIGH, \n" + TITLES_5},
        {6, 1, 1, 5, {{.magnitude = 1234}, {.lost = 1}, {.magnitude = 0xFFFFF}}, 0,
         ",1, 123.4,MICR,OFF, \n,2,--.---,MICR,OFF, \n,3,,MICR,OFF, \n"},
        {7, 0, 1, 2, {{.alarm = 2, .magnitude = 6000}}, 1, ",1, 1.200,IN,LOW, \n" + TITLES_7},
        {5, 2, 1, 0, {{.magnitude = 100}}, 0, ",1,,US,OFF, \n"},
        {5, 0, 1, 0, {}, 0, ""},
        {9, 0, 1, 0, {{.magnitude = 12345}}, 0, ",1, 1.235,IN,OFF, \n"},  // unknown: corrosion digits
    };
    for (const Case& c : cases) {
        ImageBuilder image = survey(c.gage);
        test::BscanImage b;
        b.points = c.points;
        if (c.gage == 7) {
            test::write_flaw_setup(image, 0, 2, {.units = c.units, .resolution = c.resolution, .meas_mode = c.meas_mode});
            b.head = test::flaw_record({.record_type = 5, .flaw_setup_number = 2});
        } else {
            test::GaugeSetupImage setup;
            setup.units = c.units;
            setup.resolution = c.resolution;
            setup.meas_mode = c.meas_mode;
            test::write_gauge_setup(image, 0, 2, setup);
            b.head = test::gauge_record({.record_type = 5, .setup_number = 2});
        }
        test::write_slot(image, 0, 0, test::link_record(4, BLOCK));
        test::write_bscan(image, BLOCK, b);
        Dump d(image);
        EXPECT_EQ(write_bscan_dump(d.session, store.bscan.head, store, d.sink, c.more), 1);
        EXPECT_EQ(d.text(), title + c.rows) << c.gage;
    }
}

}  // namespace
}  // namespace ugf
