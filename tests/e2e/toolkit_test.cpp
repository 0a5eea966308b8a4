// The toolkit `ugf` as a user runs it: conversions that are the converter's
// bytes (the damaged images are compared in damaged_test), quoted stored
// texts, read-only inputs, outputs that are never left half written,
// failures on standard error with the statuses 0, 1 and 2, statistics
// worked out by hand, and names in any script.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/image_builder.h"
#include "support/scratch.h"
#include "support/survey_image.h"

namespace ugf {
namespace {

using namespace test;
namespace fs = std::filesystem;

TEST(Toolkit, ConvertsEverySampleAsTheConverterDoes) {
    ScratchDir dir;
    for (const char* jobs : {"1", "2"}) {
        for (const char* form : {"d", "g"}) {
            const std::string out = dir.file(std::string("out") + jobs + form);
            std::vector<std::string> args = {"convert", "--jobs", jobs, "--out-dir", out, UGF_EXAMPLES};
            if (form[0] == 'g') args.insert(args.begin() + 1, "--grid");
            RunResult run = run_toolkit_binary(args);
            EXPECT_EQ(run.status, 0);
            EXPECT_EQ(run.errors, "converted 12 of 12 surveys\n");
            for (const auto& sample : fs::directory_iterator(UGF_EXAMPLES)) {
                if (sample.path().extension() != ".ugf") continue;
                const std::string name = sample.path().stem().string();
                fs::copy_file(sample.path(), dir.file(name + ".ugf"), fs::copy_options::overwrite_existing);
                EXPECT_EQ(run_converter_binary({dir.file(name + ".ugf"), form, "a"}).status, 0);
                const std::string ending = form[0] == 'd' ? "_detailed_output.csv" : "_grid_output.csv";
                EXPECT_EQ(read_file(out + "/" + name + ending), read_file(dir.file(name + ending))) << name << form;
            }
        }
    }
}

TEST(Toolkit, QuoteTurnsStoredTextsIntoSingleCells) {
    ScratchDir dir;
    small_tank().save(dir.file("tank.ugf"));
    ASSERT_EQ(run_toolkit_binary({"convert", "--quote", "--out-dir", dir.file("q"), dir.file("tank.ugf")}).status, 0);
    ASSERT_EQ(run_toolkit_binary({"convert", "--out-dir", dir.file("p"), dir.file("tank.ugf")}).status, 0);
    std::string plain = read_output(dir.file("p/tank_detailed_output.csv")).value_or("");
    // The same text, but every stored text with a comma, a quote or a line
    // end in quotes of its own, its quotes doubled.
    for (const auto& [raw, quoted] : std::vector<std::pair<std::string, std::string>>{
             {"TANK \"B\", EAST", "\"TANK \"\"B\"\", EAST\""}, {"ROW 1\nROW 2", "\"ROW 1\nROW 2\""},
             {"A,PIT, DEEP", "A,\"PIT, DEEP\""}, {"\nT,1-", "\n\"T,1-"}, {",T,1-,", ",\"T,1-\","}}) {
        for (std::size_t at = plain.find(raw); at != std::string::npos; at = plain.find(raw, at + quoted.size())) {
            plain.replace(at, raw.size(), quoted);
        }
    }
    // An identifier cell closes its quote before its comma.
    for (const char* id : {"A1", "A2", "A3", "B1", "B2", "B3"}) {
        const std::string open = std::string("\"T,1-") + id + ",";
        for (std::size_t at = plain.find(open); at != std::string::npos; at = plain.find(open, at)) {
            plain.replace(at, open.size(), std::string("\"T,1-") + id + "\",");
        }
    }
    EXPECT_EQ(read_output(dir.file("q/tank_detailed_output.csv")), plain);
    ASSERT_EQ(run_toolkit_binary({"convert", "--quote", "--grid", dir.file("tank.ugf")}).status, 0);
    EXPECT_EQ(read_output(dir.file("tank_grid_output.csv")),
              ",A,B,\n1, 0.250, 0.210,\n2, 0.190,,\n3,\"PIT, DEEP\", 0.240,\n");
}

TEST(Toolkit, ReadOnlyInputsConvertAndOutputsAreNeverHalfWritten) {
    ScratchDir dir;
    small_tank().save(dir.file("tank.ugf"));
    chmod(dir.file("tank.ugf").c_str(), 0444);
    EXPECT_EQ(run_toolkit_binary({"convert", dir.file("tank.ugf")}).status, 0);
    // A survey that can't be converted keeps the older output as it was and
    // leaves no file of its own beside it.
    ImageBuilder cut = small_tank();
    cut.resize(slot_at(2, 3));
    cut.save(dir.file("cut.ugf"));
    write_file(dir.file("cut_detailed_output.csv"), "older\n");
    RunResult run = run_toolkit_binary({"convert", dir.file("cut.ugf"), dir.file("tank.ugf"), dir.file("none.ugf")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.errors, "ugf: " + dir.file("none.ugf") + ": no such file or folder\n" + "ugf: " + dir.file("cut.ugf") +
                              ": read error at offset 0x1530: the file ends before it (FS_READ_ERROR)\n"
                              "converted 1 of 3 surveys\n");
    EXPECT_EQ(read_file(dir.file("cut_detailed_output.csv")), "older\n");
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.path), fs::directory_iterator()), 4);
}

TEST(Toolkit, UsageErrorsEndWithStatusTwo) {
    for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
             {}, {"convert"}, {"convert", "--jobs", "0", "x.ugf"}, {"stats", "--bogus", "x.ugf"}, {"report2"}}) {
        EXPECT_EQ(run_toolkit_binary(args).status, 2) << (args.empty() ? "" : args[0]);
    }
    RunResult help = run_toolkit_binary({"convert", "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.console.find("--quote"), std::string::npos);
}

TEST(Toolkit, StatisticsByHand) {
    ScratchDir dir;
    small_tank().save(dir.file("tank.ugf"));
    // Slot i is row i % 3 of column i / 3: readings 0.250 (A1), 0.190 (A2),
    // 0.210 (B1), 0.240 (B3). Mean 0.89 / 4 = 0.2225; squared deviations
    // 0.00075625, 0.00105625, 0.00015625, 0.00030625, sum 0.002275, population standard deviation
    // sqrt(0.002275 / 4) = 0.02385, 10.7 % of the mean; 0.190 is below the
    // low alarm 0.2000.
    RunResult run = run_toolkit_binary({"stats", dir.file("tank.ugf")});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.console, dir.file("tank.ugf") +
                               "\n  instrument         corrosion gauge (40-116)\n  file type          2D\n"
                               "  units              IN\n  points             6\n  readings           4\n"
                               "  empty points       1\n  lost signals       1\n  minimum            0.190 at T,1-A2\n"
                               "  maximum            0.250 at T,1-A1\n  mean               0.2225\n"
                               "  std deviation      0.0238\n  coeff. of var.     10.7%\n"
                               "  below minimum      1 (25.0%) below low alarm of each setup\n");
    run = run_toolkit_binary({"stats", "--json", "--minimum", "0.245", dir.file("tank.ugf")});
    EXPECT_NE(run.console.find("\"below_minimum\":{\"limit\":0.245,\"count\":3,\"percent\":75.0}"), std::string::npos)
        << run.console;
}

TEST(Toolkit, NamesInAnyScript) {
    ScratchDir dir;
    const std::string name = dir.file("\xe6\xb5\x8b\xe8\xaf\x95 \xd0\xb1\xd0\xb0\xd0\xba.ugf");  // 测试 бак
    small_tank("T-").save(name);
    EXPECT_EQ(run_toolkit_binary({"convert", "--grid", name}).status, 0);
    EXPECT_EQ(run_converter_binary({name, "d", "a"}).status, 0);
    const std::string stem = name.substr(0, name.size() - 4);
    EXPECT_EQ(read_output(stem + "_grid_output.csv"), ",A,B,\n1, 0.250, 0.210,\n2, 0.190,,\n3,PIT, DEEP, 0.240,\n");
    EXPECT_TRUE(read_file(stem + "_detailed_output.csv").has_value());
}

}  // namespace
}  // namespace ugf
