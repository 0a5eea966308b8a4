#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "base/console.h"
#include "base/labels.h"
#include "support/scratch.h"

namespace ugf {
namespace {

std::string written_by(const std::string& text, int verbose, std::string* echo) {
    test::ScratchDir dir;
    const std::string path = dir.file("out.csv");
    std::FILE* file = std::fopen(path.c_str(), "w");
    CsvSink sink{file, verbose};
    testing::internal::CaptureStdout();
    EXPECT_EQ(csv_write(text, sink), 1);
    std::fflush(stdout);
    *echo = testing::internal::GetCapturedStdout();
    std::fclose(file);
    return test::read_file(path).value_or("<missing>");
}

TEST(CsvWrite, PercentPairsCollapseOnceAndLonePercentStays) {
    struct Case {
        const char* text;
        const char* expected;
    } cases[] = {
        {"ALARM %%,", "ALARM %,"},
        {"%%%%", "%%"},
        {"%%%", "%%"},
        {"50%d %s %n", "50%d %s %n"},  // never read as a conversion
        {"a%", "a%"},
        {"", ""},
        {"plain,row\n", "plain,row\n"},
    };
    for (const Case& c : cases) {
        std::string echo;
        EXPECT_EQ(written_by(c.text, 0, &echo), c.expected) << c.text;
        EXPECT_EQ(echo, "") << "abbreviated runs echo nothing";
        EXPECT_EQ(written_by(c.text, 1, &echo), c.expected) << c.text;
        EXPECT_EQ(echo, c.expected) << "verbose echo equals the file";
    }
}

TEST(FormatText, BoundedKeepsSizeLessOneAndReportsTheFullLength) {
    char buf[6];
    EXPECT_EQ(format_text_bounded(buf, sizeof buf, "%s", "1234567890"), 10);
    EXPECT_STREQ(buf, "12345");
    EXPECT_EQ(format_text_bounded(buf, sizeof buf, "%d", 42), 2);
    EXPECT_STREQ(buf, "42");
    char row[32];
    EXPECT_EQ(format_text(row, sizeof row, "%s,%s\n", "DESCRIPTION:", ""), 14);
    EXPECT_STREQ(row, "DESCRIPTION:,\n");
}

TEST(Labels, RowsThatOtherRulesDependOn) {
    EXPECT_STREQ(label_text(0), "");
    EXPECT_STREQ(label_text(1), "XDCR-01 1.0 MHZ");
    EXPECT_STREQ(label_text(2), "XDCR-02 2.25 MHZ");
    EXPECT_STREQ(label_text(9), "XDCR-09 1.0 MHZ");
    EXPECT_STREQ(label_text(26), "XDCR-26 2.25 MHZ");
    EXPECT_STREQ(label_text(58), "XDCR-58 2.25 MHZ");
    EXPECT_STREQ(label_text(59), "");
    EXPECT_STREQ(label_text(142), "ALARM %%");
    EXPECT_STREQ(label_text(194), "DIM4 LABELS");
    EXPECT_STREQ(label_text(195), "");
    EXPECT_STREQ(label_text(-1), "");
    EXPECT_STREQ(ui_text(2), std::string(31, ' ').c_str());
    EXPECT_STREQ(ui_text(13 + 3), "ALARM");  // units code 3 reaches a listed row
    EXPECT_STREQ(ui_text(211 + 3), "");
    EXPECT_STREQ(ui_text(1406 + 3), "");
    EXPECT_STREQ(ui_text(48 + 10), "MANUAL");
    EXPECT_STREQ(ui_text(137), "HW+ ");
    EXPECT_STREQ(ui_text(1587), "");
    EXPECT_STREQ(ui_text(1588), "");
    EXPECT_STREQ(walk_pattern_name(3), "REVERSE ZIGZAG");
    EXPECT_STREQ(walk_pattern_name(4), "");
    EXPECT_STREQ(file_type_name(12), "4D-MANUAL");
    EXPECT_STREQ(file_type_name(13), "");
}

}  // namespace
}  // namespace ugf
