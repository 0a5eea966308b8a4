// Headers that open a session and headers that can't, run on the real
// binary: a refused file prints the failure line alone, leaves status 1, no
// output file, an older output file untouched and the input unchanged.
// (Files cut inside any region are the damaged-file runs' subject.)
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <string>
#include <vector>

#include "support/scratch.h"
#include "support/survey_image.h"

namespace ugf {
namespace {

using test::ImageBuilder;
using test::SurveyHeader;

const std::string OPENING = "STATUS: Opening Datalogger Session...\n";
const std::string FAILED = "ERROR: Operation failed!\n";
const std::string OLDER_DETAILED = "older detailed output\n";
const std::string OLDER_GRID = "older grid output\n";

// Runs the converter on `image` in both forms and checks everything a failed
// open leaves behind.
void expect_open_fails(const ImageBuilder& image, const std::string& console, const std::string& name) {
    for (const char* form : {"d", "g"}) {
        test::ScratchDir dir;
        const std::string input = dir.file("plant7.ugf");
        image.save(input);
        {
            std::FILE* old = std::fopen(dir.file("plant7_detailed_output.csv").c_str(), "wb");
            std::fputs(OLDER_DETAILED.c_str(), old);
            std::fclose(old);
        }
        test::RunResult run = test::run_converter_binary({input, form, "a"});
        EXPECT_EQ(run.console, console) << name << " " << form;
        EXPECT_EQ(run.errors, "") << name;
        EXPECT_EQ(run.status, 1) << name;
        EXPECT_EQ(test::read_file(input).value_or(""), std::string(image.bytes.begin(), image.bytes.end()))
            << name << ": the input is never written";
        EXPECT_EQ(test::read_file(dir.file("plant7_detailed_output.csv")).value_or(""), OLDER_DETAILED) << name;
        EXPECT_FALSE(std::filesystem::exists(dir.file("plant7_grid_output.csv"))) << name;
    }
}

// A file that opens: header texts, labels in the manual layout, a setup in
// the first and last entry, and notes up to the last row.
ImageBuilder full_image(std::uint32_t file_type, std::uint32_t gage_type) {
    SurveyHeader h{.file_type = file_type, .gage_type = gage_type};
    h.prefix = "PLANT7-";
    h.description = "FEED WATER LINE";
    h.inspector_id = "INSPECTOR 12";
    h.location = "UNIT 3 BASEMENT";
    if (file_type >= 10) {
        test::set_manual_labels(h, {{"1", "2", "3"}, {"NORTH", "SOUTH"}, {"TOP"}});
    } else {
        test::set_ranges(h, {{"01", "12"}, {"A", "F"}});
    }
    ImageBuilder image = test::survey_image(h);
    for (int entry : {0, 31}) {
        if (gage_type == 7) {
            test::write_flaw_setup(image, file_type, entry, {.velocity = 232000, .range = 50000});
        } else {
            test::write_gauge_setup(image, file_type, entry, {.velocity = 23300, .setup_name = "DEFAULT"});
        }
    }
    test::write_note(image, file_type, 0, "CORROSION UNDER INSULATION");
    test::write_note(image, file_type, 15, "LAST NOTE");
    return image;
}

TEST(SessionOpenRun, RefusedAndUndecodableHeadersPrintNoLineOfTheirOwn) {
    struct Case {
        const char* name;
        void (*change)(SurveyHeader&);
    } cases[] = {
        {"type 8, version 22", [](SurveyHeader& h) { h.file_type = 8; h.file_version = 22; }},
        {"type 6, version 21", [](SurveyHeader& h) { h.file_type = 6; h.file_version = 21; }},
        {"type 12, version 23", [](SurveyHeader& h) { h.file_type = 12; h.file_version = 23; }},
        {"c2 of 19", [](SurveyHeader& h) { h.c2 = 19; }}, {"c1 of 20", [](SurveyHeader& h) { h.c1 = 20; }},
        {"c0 of 21", [](SurveyHeader& h) { h.c0 = 21; }},
        {"101 labels", [](SurveyHeader& h) {
             h.file_type = 10;
             h.dim_label_count = {101, 1, 0, 0};
         }},
        {"no labels below labels", [](SurveyHeader& h) {
             h.file_type = 10;
             test::set_manual_labels(h, {{}, {"A", "B"}});
         }},
        {"no rows below columns", [](SurveyHeader& h) {
             h.file_type = 2;
             test::set_ranges(h, {{"", ""}, {"A", "C"}});
         }},
        {"description without terminator", [](SurveyHeader& h) { h.description = std::string(33, 'D'); }},
        {"start identifier without terminator", [](SurveyHeader& h) { h.start_id = std::string(21, '1'); }},
        {"label without terminator", [](SurveyHeader& h) {
             h.file_type = 10;
             test::set_manual_labels(h, {{"1"}, {"A", std::string(20, 'B')}});
         }},
    };
    for (const Case& c : cases) {
        SurveyHeader h;
        c.change(h);
        expect_open_fails(test::survey_image(h), OPENING + FAILED, c.name);
    }

    // A note of 32 characters whose terminator would be the next note's first character.
    ImageBuilder image = full_image(3, 6);
    test::write_note(image, 3, 7, std::string(32, 'N'));
    test::write_note(image, 3, 8, "NEXT");
    expect_open_fails(image, OPENING + FAILED, "note of 32 characters");
}

// Identifier counts at their limits: a dimension whose range can't be
// measured counts as used, so with no unused dimension below it the file
// opens. Versions 21 to 23 are refused only above type 5.
TEST(SessionOpenRun, HeadersThatOpen) {
    const auto counts = [](std::uint32_t type, std::uint32_t version, std::uint32_t c2, std::uint32_t c1,
                           std::uint32_t c0) {
        SurveyHeader h{.file_version = version, .file_type = type, .c0 = c0, .c1 = c1, .c2 = c2};
        h.start_id = std::string(20, '1');
        h.end_id = std::string(20, '2');
        return h;
    };
    // Outside the manual layout the label count bytes are custom point label
    // 1: letters there (the count of dimension 0 "zz") are text, not a count.
    SurveyHeader labels{.file_type = 3};
    test::set_ranges(labels, {{"1", "2"}, {"1", "2"}, {"1", "2"}});
    labels.custom_point_labels[1] = "ABCDEFGHIJKLMNzzzzz";
    // A manual file tests the label counts of its own dimensions only.
    SurveyHeader two_d{.file_type = 10};
    test::set_manual_labels(two_d, {{"A"}, {"B"}});
    two_d.dim_label_count[3] = 101;
    for (const SurveyHeader& h : {counts(4, 24, 18, 1, 1), counts(2, 24, 0, 19, 1), counts(0, 24, 0, 0, 20),
                                  counts(5, 22, 0, 0, 1), counts(8, 20, 0, 0, 1), labels, two_d}) {
        test::ScratchDir dir;
        test::survey_image(h).save(dir.file("limits.ugf"));
        const test::RunResult run = test::run_converter_binary({dir.file("limits.ugf"), "g", "a"});
        EXPECT_NE(run.console.find("STATUS: Exporting"), std::string::npos) << h.file_type << " " << h.c2;
    }
}

// The identifier counts are tested once the setups are read: a cut setup
// table shows its read error first.
TEST(SessionOpenRun, LimitsAreTestedOnceTheSetupsAreRead) {
    SurveyHeader split{.file_type = 4, .c2 = 19, .start_id = std::string(19, '1'), .end_id = std::string(19, '1')};
    ImageBuilder late = test::survey_image(split);
    late.resize(0x400);
    expect_open_fails(late, OPENING + "ERROR: FS_READ_ERROR.\n" + FAILED, "c2 of 19, cut setup table");
}

TEST(SessionOpenRun, ASetupNameWithoutTerminatorFailsTheOpen) {
    ImageBuilder image = full_image(0, 6);
    test::write_gauge_setup(image, 0, 12, {.setup_name = std::string(33, 'S')});
    expect_open_fails(image, OPENING + FAILED, "setup name of 33 characters");
}

}  // namespace
}  // namespace ugf
