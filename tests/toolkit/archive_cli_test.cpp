// `ugf archive` as a user runs it: surveys built with the image builder,
// stored through the real binary, the history of a part against figures
// worked by hand, dates and parts taken from names, duplicates, damaged
// surveys, foreign files, the original bytes back, and writers at once.
#include <algorithm>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sqlite3.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "support/image_builder.h"
#include "support/scratch.h"
#include "support/survey_image.h"

namespace ugf {
namespace {

using namespace test;
namespace fs = std::filesystem;

constexpr int LOST = -1;

// A corrosion gauge survey of one column of points F-A1, F-A2, ...: each
// reading in ten-thousandths of an inch (shown with 3 decimals), or in
// thousandths of a millimetre (shown with 2); 0 leaves the point empty.
// Its setup's low alarm is 0.2000 inch.
ImageBuilder column(const std::vector<int>& readings, bool mm = false, const std::string& description = "") {
    SurveyHeader h{.file_type = 2, .gage_type = 5};
    h.prefix = "F-";
    h.id_count = static_cast<std::uint32_t>(readings.size());
    h.setup_count = 1;
    h.description = description;
    set_ranges(h, {{"1", std::to_string(readings.size())}, {"A", "A"}});
    ImageBuilder image = survey_image(h);
    write_gauge_setup(image, 2, 0, {.alarm_type = 2, .low_alarm = 2000});
    for (std::uint32_t i = 0; i < readings.size(); ++i) {
        if (readings[i] == 0) {
            write_slot(image, 2, i, RecordImage{});  // all zeros: nothing measured
            continue;
        }
        write_slot(image, 2, i,
                   gauge_record({.los = readings[i] == LOST ? 1u : 0u, .units = mm ? 1u : 0u, .resolution = 1,
                                 .thickness = readings[i] == LOST ? 0u : static_cast<std::uint32_t>(readings[i])}));
    }
    return image;
}

struct ArchiveRun : ::testing::Test {
    ScratchDir dir;
    std::string db = dir.file("plant.ugfdb");

    // `ugf archive SUB --db DB ARGS...`
    RunResult ugf(const std::string& sub, std::vector<std::string> args) {
        args.insert(args.begin(), {"archive", sub, "--db", db});
        return run_toolkit_binary(args, dir.path);
    }
    std::string save(const std::string& name, const ImageBuilder& image) {
        fs::create_directories(fs::path(dir.file(name)).parent_path());
        image.save(dir.file(name));
        return dir.file(name);
    }
};

// Runs the statements; the first column of the last row is kept as text.
std::string sql(const std::string& path, const char* statements) {
    sqlite3* db = nullptr;
    std::string last;
    EXPECT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
    const auto keep = [](void* to, int, char** values, char**) {
        *static_cast<std::string*>(to) = values[0] != nullptr ? values[0] : "";
        return 0;
    };
    EXPECT_EQ(sqlite3_exec(db, statements, keep, &last, nullptr), SQLITE_OK) << sqlite3_errmsg(db);
    sqlite3_close(db);
    return last;
}

// Three surveys 4.0 years apart (1461 days of 365.25), the first in
// millimetres (6.35 mm is 0.250 inch, 5.08 mm 0.200). Each point is a case:
//   A1 three readings: long-term (0.250 - 0.218) / 8 = 0.004, short-term
//      (0.230 - 0.218) / 4 = 0.003, least squares over x = 0, 4, 8: 0.004;
//      life (0.218 - 0.200) / 0.004 = 4.5 years, 1643 days on: 2032-07-01;
//      next inspection 2.25 years, 821 days on: 2030-04-01.
//   A2 empty in the first survey: two readings, 0.008 / 4 = 0.002 a year,
//      life 16 years (5844 days: 2044-01-01), next in 8 (2922 days: 2036-01-01).
//   A3 grows 0.002 a year: no remaining life, next inspection 10 years on
//      (3652 days: 2037-12-31).
//   A4 lost in the latest survey: the 2024 reading is its latest, 0.010 / 4
//      = 0.0025 a year, life 16 years from 2024-01-01.
//   A5 below the low alarm: life 0, inspection due at once.
//   A6 required 5.588 mm = 0.220 inch from the part's minimums: life
//      0.020 / 0.0025 = 8 years, next in 4 (1461 days).
TEST_F(ArchiveRun, HistoryOfThreeDatedSurveysWorkedByHand) {
    const std::string first = save("floor_2020-01-01.ugf", column({6350, 0, 5080, 6350, 0, 0}, true));
    const std::string second = save("floor_20240101.ugf", column({2300, 2400, 2080, 2400, 2100, 2500}));
    const std::string third = save("2028-01-01/floor.ugf", column({2180, 2320, 2160, LOST, 1960, 2400}));
    RunResult run = ugf("add", {first, second, third});
    ASSERT_EQ(run.status, 0) << run.errors;
    write_file(dir.file("minimums.csv"), "ID,MINIMUM,UNITS\r\n\"F-A6\",5.588,mm\r\n");
    run = ugf("minimums", {"--part", "floor", "minimums.csv"});
    EXPECT_EQ(run.errors, "kept 1 required thicknesses for floor\n");

    run = ugf("history", {"--part", "floor", "--as-of", "2029-01-01"});
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_EQ(run.console,
              "ID,STATUS,READINGS,FIRST DATE,FIRST,PREVIOUS DATE,PREVIOUS,LATEST DATE,LATEST,UNITS,"
              "LONG-TERM RATE PER YEAR,SHORT-TERM RATE PER YEAR,LEAST-SQUARES RATE PER YEAR,GOVERNING RATE PER YEAR,"
              "REQUIRED,REQUIRED FROM,REMAINING LIFE (YEARS),RETIREMENT DATE,NEXT INSPECTION,NOTE\n"
              "F-A1,ok,3,2020-01-01,0.250,2024-01-01,0.230,2028-01-01,0.218,IN,0.0040,0.0030,0.0040,0.0040,0.200,low alarm,4.5,2032-07-01,2030-04-01,\n"
              "F-A2,ok,2,2024-01-01,0.240,2024-01-01,0.240,2028-01-01,0.232,IN,0.0020,0.0020,,0.0020,0.200,low alarm,16.0,2044-01-01,2036-01-01,\n"
              "F-A3,ok,3,2020-01-01,0.200,2024-01-01,0.208,2028-01-01,0.216,IN,-0.0020,-0.0020,-0.0020,-0.0020,0.200,low alarm,,,2037-12-31,\n"
              "F-A4,ok,2,2020-01-01,0.250,2020-01-01,0.250,2024-01-01,0.240,IN,0.0025,0.0025,,0.0025,0.200,low alarm,16.0,2040-01-01,2032-01-01,"
              "no thickness in the latest survey (2028-01-01): the reading of 2024-01-01 is used\n"
              "F-A5,below minimum,2,2024-01-01,0.210,2024-01-01,0.210,2028-01-01,0.196,IN,0.0035,0.0035,,0.0035,0.200,low alarm,0.0,2028-01-01,2028-01-01,\n"
              "F-A6,ok,2,2024-01-01,0.250,2024-01-01,0.250,2028-01-01,0.240,IN,0.0025,0.0025,,0.0025,0.220,minimums,8.0,2036-01-01,2032-01-01,\n");

    // --minimum 0.210 for every point: A1 has (0.218 - 0.210) / 0.004 = 2
    // years left (730 days: 2029-12-31), so its next inspection, one year
    // (365 days) on, is due by 2029-01-01; A3 is seen again in at most 5
    // years (1826 days).
    run = ugf("history", {"--part", "floor", "--minimum", "0.210", "--max-interval", "5", "--as-of", "2029-01-01",
                          "--out", "floor.csv"});
    EXPECT_EQ(run.errors, "wrote the history of floor (6 points, 3 surveys) to floor.csv\n");
    const std::string csv = read_file(dir.file("floor.csv")).value_or("");
    EXPECT_NE(csv.find("\nF-A1,due,3,2020-01-01,0.250,2024-01-01,0.230,2028-01-01,0.218,IN,0.0040,0.0030,0.0040,0.0040,"
                       "0.210,--minimum,2.0,2029-12-31,2028-12-31,\n"), std::string::npos) << csv;
    EXPECT_NE(csv.find("\nF-A3,ok,3,2020-01-01,0.200,2024-01-01,0.208,2028-01-01,0.216,IN,-0.0020,-0.0020,-0.0020,-0.0020,"
                       "0.210,--minimum,,,2032-12-31,\n"), std::string::npos) << csv;
}

TEST_F(ArchiveRun, DatesAndPartsFromNamesDescriptionsAndOptions) {
    const struct {
        std::vector<std::string> args;
        std::string file, description, errors;
        int status;
    } cases[] = {
        {{}, "tank4_2026-03-01.ugf", "", "stored @ as survey 1 (tank4, 2026-03-01, 1 points)\n", 0},
        {{}, "2027-05-06/east.ugf", "", "stored @ as survey 2 (east, 2027-05-06, 1 points)\n", 0},
        {{}, "20280102-west.ugf", "  WEST SHELL  ", "stored @ as survey 3 (WEST SHELL, 2028-01-02, 1 points)\n", 0},
        {{}, "20290304_south.ugf", "", "stored @ as survey 4 (south, 2029-03-04, 1 points)\n", 0},
        {{"--part", "P7", "--date", "2029-02-03"}, "north_2020-01-01.ugf", "N", "stored @ as survey 5 (P7, 2029-02-03, 1 points)\n", 0},
        {{}, "south.ugf", "", "ugf: @: no date: name it in the file name (tank4_2026-03-01.ugf) or give --date YYYY-MM-DD\n", 1},
    };
    int reading = 2000;
    for (const auto& c : cases) {
        const std::string path = save(c.file, column({++reading}, false, c.description));
        std::vector<std::string> args = c.args;
        args.push_back(path);
        const RunResult run = ugf("add", args);
        std::string errors = c.errors;
        errors.replace(errors.find('@'), 1, path);
        EXPECT_EQ(run.errors, errors + "stored " + std::to_string(1 - c.status) + " of 1 surveys\n");
        EXPECT_EQ(run.status, c.status);
    }
    EXPECT_EQ(ugf("list", {}).console,
              "P7: 1 survey, 0 required thicknesses\n"
              "  SURVEY  DATE        POINTS  READINGS  FILE\n"
              "       5  2029-02-03       1         1  north_2020-01-01.ugf\n"
              "WEST SHELL: 1 survey, 0 required thicknesses\n"
              "  SURVEY  DATE        POINTS  READINGS  FILE\n"
              "       3  2028-01-02       1         1  20280102-west.ugf\n"
              "east: 1 survey, 0 required thicknesses\n"
              "  SURVEY  DATE        POINTS  READINGS  FILE\n"
              "       2  2027-05-06       1         1  east.ugf\n"
              "south: 1 survey, 0 required thicknesses\n"
              "  SURVEY  DATE        POINTS  READINGS  FILE\n"
              "       4  2029-03-04       1         1  20290304_south.ugf\n"
              "tank4: 1 survey, 0 required thicknesses\n"
              "  SURVEY  DATE        POINTS  READINGS  FILE\n"
              "       1  2026-03-01       1         1  tank4_2026-03-01.ugf\n");
}

TEST_F(ArchiveRun, DuplicatesAndDamagedSurveysStoreNothingAndTheOthersAreStored) {
    const std::string a = save("a_2026-01-01.ugf", column({2500, 2400}));
    ASSERT_EQ(ugf("add", {a}).status, 0);
    const std::string before = ugf("list", {"--json"}).console;
    // The same bytes under another name, a survey cut short, a good one.
    save("more/b_2026-02-01.ugf", column({2500, 2400}));
    const std::string c = save("more/c_2026-03-01.ugf", column({2300, 2200}));
    ImageBuilder cut = column({2500, 2400, 2300, 2200});
    cut.resize(slot_at(2, 3));
    save("more/d_2026-04-01.ugf", cut);
    RunResult run = ugf("add", {dir.file("more/b_2026-02-01.ugf")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.errors, "ugf: " + dir.file("more/b_2026-02-01.ugf") +
                              ": the same file is already stored as survey 1 (a, 2026-01-01, a_2026-01-01.ugf)\n"
                              "stored 0 of 1 surveys\n");
    EXPECT_EQ(ugf("list", {"--json"}).console, before);

    run = ugf("add", {dir.file("more"), dir.file("none.ugf")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.errors, "ugf: " + dir.file("none.ugf") + ": no such file or folder\n" +
                              "ugf: " + dir.file("more/b_2026-02-01.ugf") +
                              ": the same file is already stored as survey 1 (a, 2026-01-01, a_2026-01-01.ugf)\n"
                              "stored " + c + " as survey 2 (c, 2026-03-01, 2 points)\n" +
                              "ugf: " + dir.file("more/d_2026-04-01.ugf") +
                              ": read error at offset 0x1530: the file ends before it (FS_READ_ERROR)\n"
                              "stored 1 of 4 surveys\n");
}

TEST_F(ArchiveRun, WhatIsNotAnArchiveIsRefusedAndLeftAsItIs) {
    const std::string survey = save("a_2026-01-01.ugf", column({2500}));
    const std::string foreign = dir.file("foreign.db"), newer = dir.file("newer.ugfdb");
    sql(foreign, "CREATE TABLE t (a); INSERT INTO t VALUES (1)");
    ASSERT_EQ(run_toolkit_binary({"archive", "add", "--db", newer, survey}).status, 0);
    sql(newer, "PRAGMA user_version = 2");
    const std::pair<std::string, std::string> cases[] = {
        {foreign, foreign + " is not a survey archive (an SQLite database of another program)"},
        {newer, newer + " is an archive of a newer version of ugf (schema 2; this one reads schema 1)"},
    };
    for (const auto& [path, why] : cases) {
        const std::optional<std::string> bytes = read_file(path);
        for (const char* sub : {"add", "list", "get"}) {
            db = path;
            const std::string which = sub;
            const RunResult run = ugf(sub, which == "add" ? std::vector<std::string>{survey}
                                           : which == "get" ? std::vector<std::string>{"1"}
                                                            : std::vector<std::string>{});
            EXPECT_EQ(run.status, 1) << sub;
            EXPECT_EQ(run.errors, "ugf: " + why + "\n") << sub;
        }
        EXPECT_EQ(read_file(path), bytes);
        EXPECT_FALSE(fs::exists(path + "-wal") || fs::exists(path + "-journal"));
    }
    db = dir.file("missing.ugfdb");
    EXPECT_EQ(ugf("list", {}).errors, "ugf: no archive at " + db + " (ugf archive add creates one)\n");
    EXPECT_FALSE(fs::exists(db));
}

TEST_F(ArchiveRun, UsageErrorsAndTheArchiveFromTheEnvironment) {
    for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
             {"archive"}, {"archive", "list", "--db"}, {"archive", "history", "--db", db},
             {"archive", "add", "--db", db, "--date", "2026-02-30", "x.ugf"}, {"archive", "get", "--db", db, "0"}}) {
        EXPECT_EQ(run_toolkit_binary(args).status, 2) << args.back();
    }
    RunResult run = run_toolkit_binary({"archive", "list"});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.errors, "ugf: no archive: give --db FILE or set UGF_ARCHIVE\n");
    ASSERT_EQ(ugf("add", {"--part", "T", save("t_2026-01-01.ugf", column({2500}))}).status, 0);
    setenv("UGF_ARCHIVE", db.c_str(), 1);
    run = run_toolkit_binary({"archive", "list"});
    unsetenv("UGF_ARCHIVE");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.console.substr(0, 3), "T: ");
}

// Texts of the file and names are bytes; JSON takes any byte that is not
// UTF-8 as Latin-1 ("\xC9" is "É").
TEST_F(ArchiveRun, JsonOfTextsThatAreNotUtf8) {
    const std::string path = save("cuve_\xC9_2026-01-01.ugf", column({2500, 2400}, false, "CUVE \xC9"));
    ASSERT_EQ(ugf("add", {path}).status, 0);
    const RunResult history = ugf("history", {"--part", "CUVE \xC9", "--json"});
    EXPECT_EQ(history.status, 0);
    EXPECT_NE(history.console.find("\"part\": \"CUVE \u00C9\""), std::string::npos) << history.console.substr(0, 300);
    const RunResult list = ugf("list", {"--json"});
    EXPECT_NE(list.console.find("\"file_name\": \"cuve_\u00C9_2026-01-01.ugf\""), std::string::npos) << list.console;
    const RunResult stats = run_toolkit_binary({"stats", "--json", path}, dir.path);
    EXPECT_EQ(stats.status, 0);
    EXPECT_NE(stats.console.find("cuve_\u00C9_2026-01-01.ugf\""), std::string::npos) << stats.console;
}

TEST_F(ArchiveRun, GetWritesTheOriginalBytes) {
    const std::string path = save("in/tank_2026-01-01.ugf", column({2500, LOST, 0, 2100}));
    ASSERT_EQ(ugf("add", {path}).status, 0);
    RunResult run = ugf("get", {"1", "--out-dir", "out"});
    EXPECT_EQ(run.errors, "wrote survey 1 to out/tank_2026-01-01.ugf\n");
    EXPECT_EQ(read_file(dir.file("out/tank_2026-01-01.ugf")), read_file(path));
    run = ugf("get", {"2"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.errors, "ugf: no survey 2 in the archive\n");
}

TEST_F(ArchiveRun, ACopyHasTheOriginalsHistoryAndCopiesOnlyWhatIsNew) {
    ASSERT_EQ(ugf("add", {save("c_2020-01-01.ugf", column({2500, 2400})), save("c_2024-01-01.ugf", column({2300, 2350}))}).status, 0);
    const std::string copy = dir.file("copy.ugfdb");
    const std::vector<std::string> args = {"archive", "copy", "--from", db, "--to", copy};
    RunResult run = run_toolkit_binary(args, dir.path);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.errors, "copied 2 surveys from " + db + " to " + copy + " (0 already there), and 0 tables of required thicknesses\n");
    const std::vector<std::string> history = {"--part", "c", "--minimum", "0.2", "--as-of", "2025-01-01"};
    RunResult copied = run_toolkit_binary({"archive", "history", "--db", copy, "--part", "c", "--minimum", "0.2",
                                           "--as-of", "2025-01-01"}, dir.path);
    EXPECT_EQ(copied.console, ugf("history", history).console);
    EXPECT_EQ(std::count(copied.console.begin(), copied.console.end(), '\n'), 3);  // the header and two points
    run = run_toolkit_binary(args, dir.path);
    EXPECT_EQ(run.errors, "copied 0 surveys from " + db + " to " + copy + " (2 already there), and 0 tables of required thicknesses\n");
}

TEST_F(ArchiveRun, MinimumsRefuseAMalformedLineByItsNumber) {
    const std::pair<std::string, std::string> cases[] = {
        {"ID,MINIMUM\nA1,0.2\nA2\n", "line 3: ID,MINIMUM or ID,MINIMUM,UNITS expected, found 1 field"},
        {"A1,0.2\nA2,0.2,IN,x\n", "line 2: ID,MINIMUM or ID,MINIMUM,UNITS expected, found 4 fields"},
        {"A1,0.2\n\nA2,thin\n", "line 3: the minimum is not a number: thin"},
        {"A1,0.2,FT\n", "line 1: the units must be IN or MM: FT"},
        {"A1,0\n", "line 1: the minimum must be above 0: 0"},
        {",0.2\n", "line 1: no identifier"},
        {"\"A\n1\",0.2\nA1,0.2\n\"A1\",0.3\n", "line 4: A1 is given twice (first on line 3)"},
        {"A1,0.2\nA2,\"0.2\n", "line 2: a quoted field is not closed"},
        {"A1,0.2\"\n", "line 1: a quote inside a field that is not quoted"},
        {"A1,\"0.2\"x\n", "line 1: text after a closing quote"},
    };
    ASSERT_EQ(ugf("add", {save("t_2026-01-01.ugf", column({2500}))}).status, 0);
    for (const auto& [text, why] : cases) {
        write_file(dir.file("m.csv"), text);
        const RunResult run = ugf("minimums", {"--part", "t", "m.csv"});
        EXPECT_EQ(run.status, 1) << why;
        EXPECT_EQ(run.errors, "ugf: m.csv: " + why + "\n");
    }
}

TEST_F(ArchiveRun, WritersAtOnceAllStoreTheirSurveys) {
    constexpr int WRITERS = 6;
    std::vector<RunResult> runs(WRITERS);
    std::vector<std::string> paths;
    for (int i = 0; i < WRITERS; ++i) {
        paths.push_back(save("w" + std::to_string(i) + "_2026-01-0" + std::to_string(i + 1) + ".ugf",
                             column(std::vector<int>(9, 2000 + i))));
    }
    // The archive exists: its creation's race is the storage's own test.
    ASSERT_EQ(ugf("add", {"--part", "w", "--date", "2025-01-01", save("first.ugf", column({1999}))}).status, 0);
    std::vector<std::thread> threads;
    for (int i = 0; i < WRITERS; ++i) threads.emplace_back([&, i] { runs[i] = ugf("add", {"--part", "w", paths[i]}); });
    for (std::thread& t : threads) t.join();
    for (const RunResult& run : runs) EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_EQ(ugf("list", {}).console.substr(0, 36), "w: 7 surveys, 0 required thicknesses");
}

// `ugf archive add` of a survey of 25,974 points killed at random moments:
// after each kill the file passes SQLite's integrity check, and every survey
// in it has all of its points.
TEST_F(ArchiveRun, AKilledAddLeavesWholeSurveysOnly) {
    SurveyHeader h{.file_type = 2, .gage_type = 5};
    h.prefix = "K-";
    h.id_count = 999 * 26;
    set_ranges(h, {{"001", "999"}, {"A", "Z"}});
    ImageBuilder image = survey_image(h);
    for (std::uint32_t i = 0; i < h.id_count; ++i) write_slot(image, 2, i, gauge_record({.thickness = 2000 + i % 500}));
    ASSERT_EQ(ugf("add", {save("k_2026-01-01.ugf", image)}).status, 0);
    std::mt19937 random(20260301);
    for (std::uint32_t round = 1; round <= 6; ++round) {
        write_slot(image, 2, 0, gauge_record({.thickness = 1000 + round}));  // new bytes
        const std::string path = save("k_2026-01-0" + std::to_string(round + 1) + ".ugf", image);
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            const int quiet = open("/dev/null", O_WRONLY);
            dup2(quiet, 1);
            dup2(quiet, 2);
            execl(UGF_TOOLKIT_BINARY, "ugf", "archive", "add", "--db", db.c_str(), path.c_str(), nullptr);
            _exit(127);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(std::uniform_int_distribution(5, 150)(random)));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        EXPECT_EQ(sql(db, "PRAGMA integrity_check"), "ok");
        EXPECT_EQ(sql(db, "SELECT count(*) FROM survey s WHERE points != 25974 OR points != (SELECT count(*) FROM point"
                          " WHERE key BETWEEN s.id << 32 AND (s.id << 32) + 4294967295)"), "0");
    }
}

}  // namespace
}  // namespace ugf
