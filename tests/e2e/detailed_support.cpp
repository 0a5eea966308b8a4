// The runs of the converter shared by the tests of whole detailed files. Kept
// out of line: inlined into every test body the string building of these
// helpers sets off a false overlap warning of the compiler.
#include "detailed_support.h"

#include <gtest/gtest.h>

namespace ugf::test {

SurveyHeader survey_header(std::uint32_t file_type, std::uint32_t gage_type,
                           const std::string& prefix) {
    SurveyHeader h{.file_type = file_type, .gage_type = gage_type};
    h.prefix = prefix;
    return h;
}

Conversion convert(const ImageBuilder& image, const std::string& form, const std::string& echo) {
    ScratchDir dir;
    const std::string input = dir.file("survey.ugf");
    image.save(input);
    Conversion result;
    result.run = run_converter_binary({input, form, echo});
    result.output = read_output(
        dir.file(form == "d" ? "survey_detailed_output.csv" : "survey_grid_output.csv"));
    return result;
}

void expect_converts(const ImageBuilder& image, const std::string& form, const std::string& expected) {
    const Conversion c = convert(image, form);
    EXPECT_EQ(c.run.console, console_of_success());
    EXPECT_EQ(c.run.status, 0);
    EXPECT_EQ(c.run.errors, "");
    ASSERT_TRUE(c.output.has_value());
    EXPECT_EQ(*c.output, expected);
}

void expect_fails_after(const ImageBuilder& image, const std::string& form, const std::string& written) {
    const Conversion c = convert(image, form);
    EXPECT_EQ(c.run.console, FAILED_CONSOLE);
    EXPECT_EQ(c.run.status, 1);
    ASSERT_TRUE(c.output.has_value());
    EXPECT_EQ(*c.output, written);
}

ThicknessAscanImage small_ascan() {
    return {.head = {.record_type = 3, .units = 1, .alarm_state = 1, .fast_mode = 2, .resolution = 1,
                     .echo_to_echo = 1, .thickness = 4567},
            .min_samples = {1, 2, 3},
            .max_samples = {10, 20, 30},
            .delay = 1234,
            .range = 5000,
            .rect_index = 1,
            .bracket_3 = 2,
            .marker1 = 5,
            .marker2 = 20,
            .mb_blank = 10,
            .if_blank_raw = 25,
            .bracket_2 = 7};
}

}  // namespace ugf::test
