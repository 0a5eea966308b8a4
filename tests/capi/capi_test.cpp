// The C interface as a C program calls it, through the shared library: the
// points, grid and figures of the small tank (small_tank) worked out by hand, and each
// failure with its code and the text that `ugf` prints after "ugf: PATH: ".
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <tuple>
#include <vector>

#include "support/image_builder.h"
#include "support/scratch.h"
#include "support/survey_image.h"
#include "ugf/ugf.h"

namespace ugf {
namespace {

using namespace test;

// The survey, closed at the end of the test whatever happened.
struct Survey {
    ugf_survey* s = nullptr;
    explicit Survey(const ImageBuilder& image) { ugf_open_memory(image.bytes.data(), image.bytes.size(), &s); }
    explicit Survey(const std::string& path) { ugf_open(path.c_str(), &s); }
    ~Survey() { ugf_close(s); }
};

int keep(void* text, const char* data, size_t size) {
    static_cast<std::string*>(text)->append(data, size);
    return 1;
}
int refuse(void*, const char*, size_t) { return 0; }

TEST(CApi, PointsGridAndFiguresOfASmallSurvey) {
    Survey t(small_tank("T-"));
    ASSERT_EQ(ugf_errcode(t.s), UGF_ERROR_NONE);
    EXPECT_STREQ(ugf_fact(t.s, "file_type_name"), "2D");
    EXPECT_STREQ(ugf_fact(t.s, "description"), "TANK \"B\", EAST");
    EXPECT_STREQ(ugf_fact(t.s, "last_id"), "T-B3");
    EXPECT_EQ(ugf_fact(t.s, "points"), nullptr);
    EXPECT_EQ(ugf_point_count(t.s), 6u);

    std::string walk;
    ASSERT_EQ(ugf_points(t.s, [](void* text, const ugf_point* p) {
        *static_cast<std::string*>(text) += std::string(p->id) + "=" + p->text + (p->lost ? " lost" : "") +
                                            (p->empty ? " empty" : "") + (std::isnan(p->value) ? " NaN" : "") + ";";
        return 1;
    }, &walk), 1);
    EXPECT_EQ(walk, "T-A1= 0.250;T-A2= 0.190;T-A3=PIT, DEEP lost NaN;T-B1= 0.210;T-B2= empty NaN;T-B3= 0.240;");

    ugf_point p;
    ASSERT_EQ(ugf_read_point(t.s, 1, &p), 1);
    EXPECT_EQ(p.value, 0.19);
    EXPECT_EQ(p.decimals, 3);
    EXPECT_STREQ(p.units, "IN");
    EXPECT_EQ(p.low_alarm, 0.2);

    size_t count = 0, rows = 0, columns = 0;
    const char* title = nullptr;
    ASSERT_EQ(ugf_grid_count(t.s, &count), 1);
    ASSERT_EQ(count, 1u);
    ASSERT_EQ(ugf_grid_shape(t.s, 0, &rows, &columns, &title), 1);
    EXPECT_EQ(std::to_string(rows) + "x" + std::to_string(columns) + title, "3x2");
    EXPECT_STREQ(ugf_grid_row_title(t.s, 0, 2), "3");
    EXPECT_STREQ(ugf_grid_column_title(t.s, 0, 1), "B");
    EXPECT_EQ(ugf_grid_column_title(t.s, 0, 2), nullptr);
    std::vector<std::int64_t> cells(6);
    ASSERT_EQ(ugf_grid_cells(t.s, 0, cells.data(), cells.size()), 1);
    EXPECT_EQ(cells, (std::vector<std::int64_t>{0, 3, 1, 4, 2, 5}));

    // Mean 0.89 / 4; 0.190 is below the low alarm.
    ugf_statistics stats;
    ASSERT_EQ(ugf_stats(t.s, NAN, &stats), 1);
    EXPECT_EQ(stats.readings, 4u);
    EXPECT_EQ(stats.empty + stats.lost, 2u);
    EXPECT_EQ(std::string(stats.min_text) + " at " + stats.min_id, "0.190 at T-A2");
    EXPECT_DOUBLE_EQ(stats.mean, 0.2225);
    EXPECT_EQ(stats.below, 1u);
    ASSERT_EQ(ugf_stats(t.s, 0.245, &stats), 1);
    EXPECT_EQ(stats.below, 3u);

    std::string grid, quoted;
    ASSERT_EQ(ugf_convert(t.s, UGF_GRID, 0, keep, &grid), 1);
    EXPECT_EQ(grid, ",A,B,\n1, 0.250, 0.210,\n2, 0.190,,\n3,PIT, DEEP, 0.240,\n");
    ASSERT_EQ(ugf_convert(t.s, UGF_GRID, UGF_QUOTE, keep, &quoted), 1);
    EXPECT_EQ(quoted, ",A,B,\n1, 0.250, 0.210,\n2, 0.190,,\n3,\"PIT, DEEP\", 0.240,\n");
}

// Each failure: what is done, and the code and text it leaves.
TEST(CApi, FailuresGiveTheCodeAndTheCommandsText) {
    ScratchDir dir;
    ImageBuilder cut = small_tank("T-");
    cut.resize(slot_at(2, 3));
    SurveyHeader huge{.file_type = 2, .gage_type = 5};
    set_ranges(huge, {{"1", "999"}, {"A", "Z"}});
    const ImageBuilder refused = survey_image(SurveyHeader{.file_version = 22, .file_type = 8});
    const std::string output_in_file = dir.file("cut.ugf/out.csv");
    cut.save(dir.file("cut.ugf"));

    struct Case {
        const char* what;
        std::function<int()> call;
        int code;
        std::string text;
    };
    ugf_survey* s = nullptr;
    std::string text;
    auto opened = [&](const ImageBuilder& image) {
        ugf_close(s);
        ugf_open_memory(image.bytes.data(), image.bytes.size(), &s);
        return s;
    };
    const std::vector<Case> cases = {
        {"missing file", [&] { ugf_close(s); return ugf_open(dir.file("none.ugf").c_str(), &s); }, UGF_ERROR_OPEN,
         "no such file or folder"},
        {"folder", [&] { ugf_close(s); return ugf_open(dir.path.c_str(), &s); }, UGF_ERROR_OPEN,
         "cannot open: Is a directory"},
        {"type 8 of version 22", [&] { ugf_close(s); return ugf_open_memory(refused.bytes.data(), refused.bytes.size(), &s); },
         UGF_ERROR_NOT_SURVEY, "not a datalogger file (its header names no survey this program reads)"},
        {"call after a failed open", [&] { return ugf_convert(s, UGF_GRID, 0, refuse, nullptr); }, UGF_ERROR_ARGUMENT,
         "the survey is not open"},
        {"cut file", [&] { return ugf_convert(opened(cut), UGF_DETAILED, 0, refuse, nullptr); }, UGF_ERROR_READ,
         "read error at offset 0x1530: the file ends before it (FS_READ_ERROR)"},
        {"cut file, its points", [&] { return ugf_points(opened(cut), [](void*, const ugf_point*) { return 1; }, nullptr); },
         UGF_ERROR_READ, "read error at offset 0x1530: the file ends before it (FS_READ_ERROR)"},
        {"notes", [&] { return ugf_convert(opened(survey_image(SurveyHeader{.file_type = 6})), UGF_GRID, 0, refuse, nullptr); }, UGF_ERROR_NO_OUTPUT,
         "a survey of type 6 (NOTES) has no output"},
        {"grid beyond the file", [&] { size_t n; return ugf_grid_count(opened(survey_image(huge)), &n); },
         UGF_ERROR_DAMAGED, "damaged survey: it has more points than its file has slots"},
        {"full sink", [&] { return ugf_convert(opened(small_tank("T-")), UGF_DETAILED, 0, refuse, nullptr); }, UGF_ERROR_OUTPUT,
         "the output was refused"},
        {"full sink, workbook", [&] { return ugf_convert(s, UGF_GRID, UGF_XLSX, refuse, nullptr); }, UGF_ERROR_OUTPUT,
         "the output was refused"},
        {"full sink, JSON", [&] { return ugf_convert(s, UGF_GRID, UGF_JSON, refuse, nullptr); }, UGF_ERROR_OUTPUT,
         "the output was refused"},
        {"full sink, page", [&] { return ugf_report(s, NAN, NAN, refuse, nullptr); }, UGF_ERROR_OUTPUT,
         "the output was refused"},
        {"full sink, comparison", [&] { return ugf_compare(s, s, 3, NAN, keep, &text, refuse, nullptr); },
         UGF_ERROR_OUTPUT, "the output was refused"},
        {"output under a file", [&] { return ugf_convert_to_file(s, UGF_GRID, 0, output_in_file.c_str()); },
         UGF_ERROR_OUTPUT, "cannot create the output " + output_in_file + ": Not a directory"},
        {"quoted workbook", [&] { return ugf_convert(s, UGF_GRID, UGF_QUOTE | UGF_XLSX, refuse, nullptr); },
         UGF_ERROR_ARGUMENT, "no such form or flags"},
        {"form 2", [&] { return ugf_convert_to_file(s, 2, 0, "x.csv"); }, UGF_ERROR_ARGUMENT, "no such form or flags"},
        {"grid 1 of 1", [&] { return ugf_grid_shape(s, 1, nullptr, nullptr, nullptr); }, UGF_ERROR_ARGUMENT,
         "no such grid"},
        {"years 0", [&] { return ugf_compare(s, s, 0, NAN, refuse, nullptr, nullptr, nullptr); }, UGF_ERROR_ARGUMENT,
         "years must be above 0"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.call(), 0) << c.what;
        EXPECT_EQ(ugf_errcode(s), c.code) << c.what;
        EXPECT_EQ(ugf_errmsg(s), c.text) << c.what;
    }
    // A call that succeeds clears the failure.
    std::string csv;
    EXPECT_EQ(ugf_compare(s, s, 3, NAN, keep, &csv, nullptr, nullptr), 1);
    EXPECT_EQ(ugf_errcode(s), UGF_ERROR_NONE);
    EXPECT_STREQ(ugf_errmsg(s), "");
    ugf_close(s);
    EXPECT_EQ(ugf_errcode(nullptr), UGF_ERROR_MEMORY);
    EXPECT_STREQ(ugf_errmsg(nullptr), "no memory");
    EXPECT_STREQ(ugf_errstr(UGF_ERROR_READ), "the file ends before a field it names");
    EXPECT_STREQ(ugf_errstr(9), "unknown error");
}

TEST(CApi, OutputNamesAndVersion) {
    char name[8];
    EXPECT_EQ(ugf_output_name("d/plant7.UGF", UGF_DETAILED, 0, name, sizeof name), 28u);  // d/plant7_detailed_output.csv
    EXPECT_STREQ(name, "d/plant");
    std::string full(40, '\0');
    for (const auto& [form, flags, expected] : std::vector<std::tuple<int, int, std::string>>{
             {UGF_GRID, UGF_XLSX, "t_grid_output.xlsx"}, {UGF_GRID, UGF_QUOTE, "t_grid_output.csv"},
             {UGF_DETAILED, UGF_JSON, "t_survey.json"}, {UGF_GRID, UGF_JSON | UGF_XLSX, ""}, {3, 0, ""}}) {
        EXPECT_EQ(ugf_output_name("t.ugf", form, flags, full.data(), full.size()), expected.size()) << expected;
        EXPECT_STREQ(full.c_str(), expected.c_str());
    }
    EXPECT_EQ(ugf_output_name("t.ugf", UGF_GRID, 0, nullptr, 0), 17u);
    EXPECT_STREQ(ugf_version(), UGF_VERSION_STRING);
    EXPECT_EQ(ugf_version_number(), UGF_VERSION_MAJOR * 1000000 + UGF_VERSION_MINOR * 1000 + UGF_VERSION_PATCH);
}

}  // namespace
}  // namespace ugf
