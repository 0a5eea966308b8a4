// Damaged files: truncations through every region, flipped header and record
// bytes, links past the end and wrong block types. Whatever the damage, a run
// ends in time with status 0 or 1, prints only lines the converter can print,
// leaves no output file when the open fails, and never changes its input.
// `ugf convert` writes exactly the converter's bytes where the converter
// succeeds, and fails with no file where it fails. With
// UGF_WRITE_DAMAGED_IMAGES naming a folder, the images are saved there for
// the page's tests.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "support/image_builder.h"
#include "support/scratch.h"
#include "support/survey_image.h"

namespace ugf {
namespace {

using namespace test;

const std::set<std::string> CONSOLE_LINES = {
    "STATUS: Opening Datalogger Session...", "STATUS: Exporting Data Logger File...",
    "STATUS: Export done.",                  "ERROR: Operation failed!",
    "ERROR: FS_READ_ERROR.",                 "ERROR: FS_SEEK_ERROR.",
    "ERROR: fopen failed.",                  "ERROR: Output file close failed!",
};

struct Sample {
    const char* name;
    ImageBuilder image;
    std::vector<std::size_t> links;  // offsets of link words in the record table
    std::vector<std::size_t> blocks;  // offsets of scan block heads
};

// A corrosion gauge 2D survey with readings, an A-scan and a B-scan.
Sample corrosion_2d() {
    SurveyHeader h{.file_type = 2, .gage_type = 5};
    h.prefix = "P7-";
    h.id_count = 12;
    h.setup_count = 1;
    set_ranges(h, {{"01", "04"}, {"A", "C"}});
    ImageBuilder image = survey_image(h);
    write_gauge_setup(image, 2, 0, {.units = 0, .resolution = 1, .velocity = 23300});
    write_note(image, 2, 0, "CORRODED");
    for (std::uint32_t i = 0; i < 12; ++i) {
        write_slot(image, 2, i, gauge_record({.thickness = 1000 * i + 250, .note_mask = i & 1}));
    }
    const std::size_t ascan = 6000;
    const std::size_t bscan = 8000;
    write_slot(image, 2, 5, link_record(2, ascan));
    write_slot(image, 2, 7, link_record(4, bscan));
    ThicknessAscanImage a;
    a.head.thickness = 4321;
    a.min_samples = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    a.max_samples = {9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9};
    write_ascan_thickness(image, ascan, a);
    BscanImage b;
    b.head = gauge_record({.record_type = 5, .thickness = 777});
    b.points = {{.magnitude = 100}, {.negative = 1, .magnitude = 0x41234}, {.lost = 1}};
    write_bscan(image, bscan, b);
    return {"corrosion 2D", image, {slot_at(2, 5) + 4, slot_at(2, 7) + 4}, {ascan, bscan}};
}

// A flaw detector 3D survey with an A-scan carrying DAC points and peaks.
Sample flaw_3d() {
    SurveyHeader h{.file_type = 4, .gage_type = 7};
    h.file_version = 9;
    h.id_count = 8;
    h.setup_count = 1;
    set_ranges(h, {{"1", "2"}, {"1", "2"}, {"A", "B"}});
    ImageBuilder image = survey_image(h);
    write_flaw_setup(image, 4, 0,
                     {.velocity = 23300, .range = 20000, .box1_kind = 1, .box2_kind = 14,
                      .box3_kind = 12, .gate2_alarm = 5, .dac_on = 1});
    for (std::uint32_t i = 0; i < 8; ++i) {
        write_slot(image, 4, i, flaw_record({.box_value = {1000 * i, 2u << 16, 300u << 16}}));
    }
    const std::size_t ascan = 6000;
    write_slot(image, 4, 3, link_record(2, ascan));
    FlawAscanImage a;
    a.dac_shown = 1;
    a.peak_shown = 1;
    a.dac_stored = 1;
    a.peak_stored = 1;
    a.max_samples = {200, 180, 160, 140};
    a.min_samples = {10, 20, 30, 40};
    a.dac_points = {{100, 400}, {300, 200}, {600, 100}};
    a.peak_bytes = {1, 2, 3, 4};
    a.gate2_amplitude = 450;
    a.gate2_mti = 350;
    write_ascan_flaw(image, ascan, a);
    return {"flaw 3D", image, {slot_at(4, 3) + 4}, {ascan}};
}

// A precision gauge 4D-MANUAL survey with labels.
Sample precision_4d_manual() {
    SurveyHeader h{.file_type = 12, .gage_type = 6};
    h.id_count = 16;
    h.fourth_inc = 4;
    set_manual_labels(h, {{"1", "2"}, {"E", "W"}, {"U", "L"}, {"T1", "T2"}});
    ImageBuilder image = survey_image(h);
    write_gauge_setup(image, 12, 0, {.units = 1, .resolution = 1, .setup_name = "PRECISE"});
    for (std::uint32_t i = 0; i < 16; ++i) {
        write_slot(image, 12, i, gauge_record({.units = 1, .thickness = 5000 + i}));
    }
    return {"precision 4D-MANUAL", image, {}, {}};
}

struct Outcome {
    bool ok = true;
    std::string why;
};

// Runs both forms on one damaged image and checks what a run may do.
Outcome run_damaged(const ImageBuilder& damaged) {
    static int saved = 0;
    if (const char* keep = std::getenv("UGF_WRITE_DAMAGED_IMAGES")) {
        std::filesystem::create_directories(keep);
        damaged.save(std::string(keep) + "/damaged_" + std::to_string(++saved) + ".ugf");
    }
    ScratchDir dir;
    const std::string input = dir.file("damaged.ugf");
    damaged.save(input);
    const std::string before = read_file(input).value_or("");
    for (const char* form : {"d", "g"}) {
        RunResult run = run_converter_binary({input, form, "a"}, "", 20);
        std::ostringstream why;
        if (run.status != 0 && run.status != 1) why << "status " << run.status << "; ";
        std::istringstream lines(run.console);
        for (std::string line; std::getline(lines, line);) {
            if (CONSOLE_LINES.count(line) == 0) why << "unexpected line '" << line << "'; ";
        }
        const bool opened = run.console.find("STATUS: Exporting") != std::string::npos;
        const std::string output =
            dir.file(std::string("damaged_") + (form[0] == 'd' ? "detailed" : "grid") + "_output.csv");
        if (!opened && std::filesystem::exists(output)) why << "output after a failed open; ";
        if (read_file(input).value_or("") != before) why << "input changed; ";
        const std::string kit = dir.file(form);
        std::vector<std::string> args = {"convert", "--out-dir", kit, input};
        if (form[0] == 'g') args.insert(args.begin() + 1, "--grid");
        RunResult toolkit = run_toolkit_binary(args, "", 20);
        const auto kit_output = read_file(kit + "/" + std::filesystem::path(output).filename().string());
        if (run.status == 0 && run.console.find("STATUS: Export done.") != std::string::npos) {
            if (toolkit.status != 0 || kit_output != read_file(output)) why << "ugf convert differs; ";
        } else if (toolkit.status != 1 || kit_output) {
            why << "ugf convert gave status " << toolkit.status << (kit_output ? " and an output" : "") << "; ";
        }
        if (!why.str().empty()) return {false, std::string("form ") + form + ": " + why.str()};
        std::filesystem::remove(output);
    }
    return {};
}

std::vector<std::size_t> spread(std::size_t size, std::size_t count) {
    std::vector<std::size_t> cuts;
    for (std::size_t k = 0; k < count; ++k) cuts.push_back(size * k / count);
    return cuts;
}

TEST(DamagedFiles, EveryRunEndsCleanly) {
    for (Sample sample : {corrosion_2d(), flaw_3d(), precision_4d_manual()}) {
        const std::size_t size = sample.image.bytes.size();
        {
            ScratchDir dir;
            sample.image.save(dir.file("whole.ugf"));
            RunResult whole = run_converter_binary({dir.file("whole.ugf"), "g", "a"});
            ASSERT_NE(whole.console.find("STATUS: Exporting"), std::string::npos)
                << sample.name << " must open undamaged";
        }
        std::vector<std::pair<std::string, ImageBuilder>> damaged;

        // Truncations at a spread of offsets, and at the edges of each region.
        std::vector<std::size_t> cuts = spread(size, 24);
        for (std::size_t edge : {0x300u, 0x1300u, 0x1500u, 0x2240u, 0x3240u, 0x3440u}) {
            if (edge < size) cuts.insert(cuts.end(), {edge - 1, edge, edge + 7});
        }
        for (std::size_t block : sample.blocks) cuts.insert(cuts.end(), {block + 8, block + 40, block + 700});
        for (std::size_t cut : cuts) {
            ImageBuilder d = sample.image;
            d.resize(std::min(cut, size));
            damaged.push_back({"cut at " + std::to_string(cut), d});
        }
        // Flipped bytes in the header and in the record table.
        const std::size_t table = record_table_at(sample.image.bytes[5]);
        std::vector<std::size_t> flips = spread(0x300, 20);
        for (std::size_t at = table; at < table + 64 && at < size; at += 5) flips.push_back(at);
        for (std::size_t at : flips) {
            ImageBuilder d = sample.image;
            d.bytes[at] ^= 0xFF;
            damaged.push_back({"flip at " + std::to_string(at), d});
        }
        // Links past the end, and blocks of the wrong type.
        for (std::size_t link : sample.links) {
            for (std::uint32_t target : {std::uint32_t(size), std::uint32_t(size + 100), 0xFFFFFFF0u}) {
                ImageBuilder d = sample.image;
                d.u32(link, target);
                damaged.push_back({"link to " + std::to_string(target), d});
            }
        }
        for (std::size_t block : sample.blocks) {
            for (std::uint32_t type : {0u, 1u, 7u}) {
                ImageBuilder d = sample.image;
                d.u8(block, (type << 5) | (d.bytes[block] & 0x1F));
                damaged.push_back({"block type " + std::to_string(type), d});
            }
        }

        for (const auto& [what, image] : damaged) {
            Outcome outcome = run_damaged(image);
            EXPECT_TRUE(outcome.ok) << sample.name << ", " << what << ": " << outcome.why;
        }
    }
}

}  // namespace
}  // namespace ugf

namespace ugf {
namespace {

// A grid with more titles in a row or column than the file has slots (and
// more than 65536) fails before its titles, on the first missing slot.
TEST(DamagedFiles, TitlesBeyondTheFileFailAtOnce) {
    struct Case {
        const char* name;
        std::uint32_t file_type;
        std::vector<DimRange> dims;
    } cases[] = {
        {"2D, a column range that can't be measured", 2, {{"01", "03"}, {"A", "1"}}},
        {"2D, ten million columns", 2, {{"01", "03"}, {"0000000", "9999999"}}},
        {"3D, ten million points in every group", 4, {{"0000000", "9999999"}, {"1", "2"}, {"A", "B"}}},
        {"2D, rows without cells that can't be counted", 2, {{"A", "1"}}},
    };
    for (const Case& c : cases) {
        SurveyHeader h{.file_type = c.file_type};
        set_ranges(h, c.dims);
        ImageBuilder image = survey_image(h);
        write_slot(image, c.file_type, 20, gauge_record({.thickness = 1}));
        ScratchDir dir;
        image.save(dir.file("wide.ugf"));
        RunResult run = run_converter_binary({dir.file("wide.ugf"), "g", "a"}, "", 20);
        EXPECT_EQ(run.console,
                  "STATUS: Opening Datalogger Session...\n" "STATUS: Exporting Data Logger File...\n"
                  "ERROR: FS_READ_ERROR.\n"
                  "ERROR: Operation failed!\n")
            << c.name;
        EXPECT_EQ(run.status, 1) << c.name;
        EXPECT_EQ(read_output(dir.file("wide_grid_output.csv")), "") << c.name;
    }
}

}  // namespace
}  // namespace ugf

namespace ugf {
namespace {

// Every input the fuzzer found troublesome stays here as a regression.
TEST(DamagedFiles, FuzzFindingsEndCleanly) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(UGF_FUZZ_REGRESSIONS)) {
        const std::string bytes = read_file(entry.path().string()).value_or("");
        ImageBuilder image;
        image.bytes.assign(bytes.begin(), bytes.end());
        Outcome outcome = run_damaged(image);
        EXPECT_TRUE(outcome.ok) << entry.path().filename() << ": " << outcome.why;
        ++count;
    }
    EXPECT_GT(count, 0);
}

}  // namespace
}  // namespace ugf

namespace ugf {
namespace {

// Storage indexes of 2^28 and beyond alias the first slots (offsets wrap at
// 2^32); a grid reads at most one cell more than the file has slots.
TEST(DamagedFiles, AliasedSlotsEndWithTheFile) {
    SurveyHeader h{.file_type = 2};
    set_ranges(h, {{"000000000", "268435455"}, {"A", "C"}});
    ImageBuilder image = survey_image(h);
    for (std::uint32_t i = 0; i < 3; ++i) {
        write_slot(image, 2, i, gauge_record({.resolution = 1, .thickness = 12345}));
    }
    image.resize(slot_at(2, 3));
    ScratchDir dir;
    image.save(dir.file("alias.ugf"));
    RunResult run = run_converter_binary({dir.file("alias.ugf"), "g", "a"}, "", 20);
    EXPECT_EQ(run.console,
              "STATUS: Opening Datalogger Session...\n" "STATUS: Exporting Data Logger File...\n"
              "ERROR: Operation failed!\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(read_output(dir.file("alias_grid_output.csv")),
              ",A,B,C,\n000000000, 1.235, 1.235, 1.235,\n000000001, 1.235,");
}

}  // namespace
}  // namespace ugf
