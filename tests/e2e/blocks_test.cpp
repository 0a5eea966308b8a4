// Scan blocks behind the links of a "LINEAR" survey: the limits and flags
// that decide whether a block reads, and a flaw reading whose amplitude
// percent comes from its A-scan.
#include <gtest/gtest.h>

#include <string>

#include "detailed_support.h"

namespace ugf::test {
namespace {

constexpr std::size_t BLOCK = 6000;

// One point, "B1", whose slot links to a block at BLOCK.
ImageBuilder linked(std::uint32_t gage, std::uint32_t link_type, std::uint32_t file_version = 24,
                    std::uint32_t block = BLOCK, const char* last = "1") {
    SurveyHeader h = survey_header(0, gage, "B");
    h.file_version = file_version;
    set_ranges(h, {{"1", last}});
    ImageBuilder image = survey_image(h);
    write_slot(image, 0, 0, link_record(link_type, block));
    return image;
}

TEST(ScanBlocks, LimitsAndFlagsDecideWhetherABlockReads) {
    const FlawAscanImage flaw{.max_samples = {9, 8}, .min_samples = {1, 2}};
    const ThicknessAscanImage thickness{.min_samples = {1, 2}, .max_samples = {9, 8}};
    struct Case {
        const char* what;
        ImageBuilder image;
        const char* form;
        int outcome;  // 0 converts, 1 fails silently, 2 reads past the end
    } cases[] = {
        {"thickness A-scan of 318 samples", linked(5, 2), "g", 0},
        {"thickness A-scan of 319 samples", linked(5, 2), "g", 1},
        {"thickness A-scan of 319 samples cut in its fixed fields, which are read first", linked(5, 2), "g", 2},
        {"flaw A-scan of 318 samples", linked(7, 2), "g", 0},
        {"flaw A-scan of 319 samples", linked(7, 2), "g", 1},
        {"flaw A-scan with peak data alone", linked(7, 2), "g", 0},
        {"flaw A-scan with DAC points and peak data cut by the end", linked(7, 2), "g", 2},
        {"flaw A-scan before version 9 has no gate fields", linked(7, 2, 8), "g", 0},
        {"B-scan of 10000 points", linked(5, 4), "d", 0},
        {"B-scan of 10001 points", linked(5, 4), "d", 1},
        {"B-scan with a whole store", linked(5, 4), "d", 0},
        {"B-scan with an embedded A-scan", linked(7, 4), "d", 0},
        {"B-scan whose embedded A-scan has 319 samples", linked(7, 4), "d", 1},
        {"a block head in a slot", linked(5, 2), "d", 1},
        {"a link near 2^32: its fields lie past the end, never wrapped", linked(5, 4), "g", 2},
    };
    // The blocks, case by case.
    ThicknessAscanImage t = thickness;
    t.sample_count = 318;
    write_ascan_thickness(cases[0].image, BLOCK, t);
    t.sample_count = 319;
    write_ascan_thickness(cases[1].image, BLOCK, t);
    write_ascan_thickness(cases[2].image, BLOCK, t);
    cases[2].image.resize(BLOCK + 1301);
    FlawAscanImage f = flaw;
    f.sample_count = 318;
    write_ascan_flaw(cases[3].image, BLOCK, f);
    f.sample_count = 319;
    write_ascan_flaw(cases[4].image, BLOCK, f);
    f = flaw;
    f.peak_stored = 1;
    f.peak_bytes = {1, 2, 3, 4};
    write_ascan_flaw(cases[5].image, BLOCK, f);
    f.dac_stored = 1;
    f.sample_count = 318;
    f.with_gates = false;
    write_ascan_flaw(cases[6].image, BLOCK, f);
    cases[6].image.resize(BLOCK + 900);  // the peak data at 720 needs 318 bytes
    f = flaw;
    f.with_gates = false;
    write_ascan_flaw(cases[7].image, BLOCK, f);
    cases[7].image.resize(BLOCK + 1000);
    BscanImage b{.head = gauge_record({.record_type = 5}), .point_count = 10000};
    write_bscan(cases[8].image, BLOCK, b);
    cases[8].image.resize(BLOCK + BSCAN_POINTS_AT + 40000);
    b.point_count = 10001;
    write_bscan(cases[9].image, BLOCK, b);
    cases[9].image.resize(BLOCK + BSCAN_POINTS_AT + 40004);
    write_bscan(cases[10].image, BLOCK, {.head = gauge_record({.record_type = 5}), .store_full = 1});
    b = {.head = flaw_record({.record_type = 5}), .ascan_follows = 1, .points = {{.magnitude = 5}}};
    write_bscan(cases[11].image, BLOCK, b);
    write_ascan_flaw(cases[11].image, BLOCK + BSCAN_ASCAN_AT, flaw);
    write_bscan(cases[12].image, BLOCK, b);
    f = flaw;
    f.sample_count = 319;
    write_ascan_flaw(cases[12].image, BLOCK + BSCAN_ASCAN_AT, f);
    write_slot(cases[13].image, 0, 0, gauge_record({.record_type = 3}));
    write_slot(cases[14].image, 0, 0, link_record(4, 0xFFFFFFF0u));

    const std::string consoles[] = {console_of_success(), FAILED_CONSOLE,
                                    console_of_success("ERROR: FS_READ_ERROR.\nERROR: Operation failed!\n")};
    for (const Case& c : cases) {
        const Conversion run = convert(c.image, c.form);
        std::string console = consoles[c.outcome];
        if (c.outcome == 2) console.erase(console.find("STATUS: Export done.\n"));
        EXPECT_EQ(run.run.console, console) << c.what;
        EXPECT_EQ(run.run.status, c.outcome == 0 ? 0 : 1) << c.what;
    }
}

// An A-scan reading of the flaw detector takes its setup, notes and gate 1
// alarm from the block. The amplitude percent of box kinds 35 and 36 is the
// gate 1 or gate 2 amplitude of the scan, of 512; under RF rectification
// (0) centred on 256: 384 and 128 are 50%, 256 is 0%, 100 is 61%.
TEST(ScanBlocks, AmplitudePercentOfAnAscanReading) {
    const struct {
        std::uint32_t rectification, kind, gate1, gate2;
        const char* cells;
    } cases[] = {
        {0, 35, 384, 512, "\nB1,IN,GATE 1 SOUNDPATH AMPLITUDE, 1.235 50%,,,,,7,B,ON,OFF,LOW,LOW\n"},
        {0, 35, 128, 512, ",GATE 1 SOUNDPATH AMPLITUDE, 1.235 50%,"},
        {0, 35, 256, 512, ",GATE 1 SOUNDPATH AMPLITUDE, 1.235 0%,"},
        {0, 36, 384, 100, ",GATE 2 SOUNDPATH AMPLITUDE, 1.235 61%,"},
        {1, 36, 384, 300, ",GATE 2 SOUNDPATH AMPLITUDE, 1.235 58%,"},
        // 2 x 65000 - 512 = 129488 keeps its low 16 bits, 63952: 12515%.
        {0, 35, 65000, 512, ",GATE 1 SOUNDPATH AMPLITUDE, 1.235 12515%,"},
    };
    for (const auto& c : cases) {
        ImageBuilder image = linked(7, 2);
        write_flaw_setup(image, 0, 7,
                         {.box1_kind = c.kind, .gate2_alarm = 2, .rectification = c.rectification, .resolution = 1});
        write_ascan_flaw(image, BLOCK,
                         {.gate_alarm = 2, .block_setup_number = 7, .flaw_note_mask = 2, .box_value = {12345, 0, 0},
                          .max_samples = {1}, .min_samples = {1}, .gate1_amplitude = c.gate1, .gate2_amplitude = c.gate2});
        const Conversion run = convert(image, "d");
        EXPECT_EQ(run.run.status, 0);
        EXPECT_NE(run.output.value_or("").find(c.cells), std::string::npos) << c.cells << run.output.value_or("");
    }
}

// The depth of a DAC point is its count as a sound path through the setup's
// velocity: 100 counts at 0.2330 in/us is 0.1456 inch (doubled through
// transmission), or 3.6988 mm (the velocity x 25.4). B-scan points take the
// units, layout and doubling of the setup: 1234 is 1.234 mm in the precision
// layout (mm points count in 0.01), -6000 doubled is -1.200 inch; 0xFFFFF
// marks a point without a value; alarm code 7 has no text.
TEST(ScanBlocks, DacDepthsAndPointUnits) {
    const struct {
        std::uint32_t gage, units, meas_mode, link_type;
        const char* line;
    } cases[] = {
        {7, 0, 0, 2, "\n, 0.146 IN,200,100\n, 0.000 IN,150,0\n"},
        {7, 0, 2, 2, "\n, 0.291 IN,200,100\n"},
        {7, 1, 0, 2, "\n,  3.70 MM,200,100\n"},
        {6, 1, 0, 4, "\n,1, 1.234,MM,OFF, \n,2,,MM,OFF, \n,3, 1.000,MM,, \n\nID,THICKNESS,UNITS,"},
        {7, 0, 2, 4, "\n,1,-1.200,IN,OFF, \n"},
    };
    for (const auto& c : cases) {
        // The B-scan of the precision gauge is followed by a reading: fresh titles.
        ImageBuilder image = linked(c.gage, c.link_type, 24, BLOCK, c.gage == 6 ? "2" : "1");
        write_slot(image, 0, 1, gauge_record({.resolution = 1, .thickness = 1000}));
        if (c.gage == 7) {
            write_flaw_setup(image, 0, 0, {.velocity = 23300, .units = c.units, .resolution = 1, .meas_mode = c.meas_mode});
        } else {
            write_gauge_setup(image, 0, 0, {.units = c.units, .resolution = 1});
        }
        const std::uint32_t magnitude = c.gage == 7 ? 6000 : 1234;
        if (c.link_type == 2) {
            write_ascan_flaw(image, BLOCK, {.dac_shown = 1, .dac_stored = 1, .max_samples = {1}, .min_samples = {1},
                                            .dac_points = {{100, 200}, {0, 150}}});
        } else {
            const RecordImage head = c.gage == 7 ? flaw_record({.record_type = 5}) : gauge_record({.record_type = 5});
            write_bscan(image, BLOCK, {.head = head, .points = {{.negative = c.gage == 7 ? 1u : 0u, .magnitude = magnitude},
                                                                {.magnitude = 0xFFFFF}, {.alarm = 7, .magnitude = 1000}}});
        }
        const Conversion run = convert(image, "d");
        EXPECT_EQ(run.run.status, 0) << c.line;
        EXPECT_NE(run.output.value_or("").find(c.line), std::string::npos) << c.line << run.output.value_or("");
    }
}

// B-scan points are numbered from 1 in the first cell of their rows; the
// count carries through 9, 99 and 999.
TEST(ScanBlocks, BscanIndexCountsThroughEveryCarry) {
    ImageBuilder image = linked(5, 4);
    write_gauge_setup(image, 0, 0, {.resolution = 1});
    BscanImage b{.head = gauge_record({.record_type = 5, .resolution = 1})};
    b.points.resize(1001, {.magnitude = 10000});
    write_bscan(image, BLOCK, b);
    const std::string out = convert(image, "d").output.value_or("");
    std::size_t at = out.find(BSCAN_TITLE);
    ASSERT_NE(at, std::string::npos) << out;
    at += BSCAN_TITLE.size();
    for (int i = 1; i <= 1001; ++i) {
        const std::string row = "," + std::to_string(i) + ", 1.000,IN,OFF, \n";
        ASSERT_EQ(out.compare(at, row.size(), row), 0) << i << ": " << out.substr(at, 40);
        at += row.size();
    }
}

// Peak data is stored as byte pairs, the second byte first: 1, 2, 3, 4 are
// the samples 2, 1, 4, 3.
TEST(ScanBlocks, PeakDataSwapsItsBytePairs) {
    ImageBuilder image = linked(7, 2);
    write_ascan_flaw(image, BLOCK, {.peak_shown = 1, .peak_stored = 1, .max_samples = {9, 9, 9, 9},
                                    .min_samples = {1, 1, 1, 1}, .peak_bytes = {1, 2, 3, 4}});
    const Conversion c = convert(image, "d");
    EXPECT_NE(c.output.value_or("").find("\n,PEAK MAX DATA [4][0][0][0]\n,2,1,4,3,\n,"), std::string::npos)
        << c.output.value_or("");
}

// The file is read in pages of 64 KiB. A block whose samples run from one
// page into the next is written as the same block inside a page: each case
// puts its samples' start 101 bytes before a page's end, so that a byte pair
// is cut too.
TEST(ScanBlocks, SamplesReadTheSameAcrossAPageBoundary) {
    constexpr std::size_t PAGE_END = 65536, BEFORE = 101;
    std::vector<std::uint8_t> bytes(300);
    for (std::size_t k = 0; k < bytes.size(); ++k) bytes[k] = static_cast<std::uint8_t>(k * 7 + 1);
    const std::vector<std::uint16_t> words(bytes.begin(), bytes.end());
    const FlawAscanImage flaw{.peak_shown = 1, .peak_stored = 1, .max_samples = bytes, .min_samples = bytes,
                              .peak_bytes = bytes};
    const ThicknessAscanImage thickness{.min_samples = words, .max_samples = words};
    const struct {
        const char* what;
        std::uint32_t gage;
        std::size_t samples_at;  // in the block
        const char* lines;       // of the samples, as the form writes them
    } cases[] = {
        {"flaw waveform", 7, 34, "\n,MAX DATA [300][0][0][0]\n,1,8,15,"},
        {"flaw peak data", 7, 670, "\n,PEAK MAX DATA [300][0][0][0]\n,8,1,22,15,"},
        {"thickness waveform", 5, 16, "1,8,15,22,"},
        {"thickness maxima", 5, 652, "1,8,15,22,"},
    };
    for (const auto& c : cases) {
        Conversion runs[2];
        for (const std::size_t block : {BLOCK, PAGE_END - BEFORE - c.samples_at}) {
            ImageBuilder image = linked(c.gage, 2, 24, static_cast<std::uint32_t>(block));
            if (c.gage == 7) write_ascan_flaw(image, block, flaw);
            else write_ascan_thickness(image, block, thickness);
            runs[block == BLOCK ? 0 : 1] = convert(image, "d");
        }
        EXPECT_EQ(runs[1].run.status, 0) << c.what;
        EXPECT_NE(runs[0].output.value_or("").find(c.lines), std::string::npos) << c.what;
        EXPECT_EQ(runs[1].output, runs[0].output) << c.what;
    }
}

}  // namespace
}  // namespace ugf::test
