// The survey archive in an SQLite file: what goes in comes out, nothing that
// is not an archive is touched, and concurrent or killed writers leave whole
// surveys only.
#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <thread>
#include <tuple>

#include "archive_support.h"

namespace fs = std::filesystem;
using namespace ugf::kit;

namespace {

struct ArchiveTest : testing::Test {
    fs::path folder;
    std::string path;
    void SetUp() override {
        std::string name = (fs::temp_directory_path() / "ugf-archive-XXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        folder = name;
        path = (folder / "plant7.ugfdb").string();
    }
    void TearDown() override { fs::remove_all(folder); }
};

std::string read_file(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

void raw_sql(const std::string& path, const char* sql) {
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(db, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(db);
    sqlite3_close(db);
}

// 2026-03-01: 56 years after 1970 with 14 leap days, then 31 + 28 days.
constexpr std::int32_t MARCH_2026 = 56 * 365 + 14 + 59;

TEST_F(ArchiveTest, KeepsEverythingOfASurveyAcrossOpenings) {
    NewSurvey survey = make_survey("tank4", MARCH_2026, std::string("UGF\0\x01\xff end", 10), 40);
    survey.file_name = "/data/2026/tank4_2026.ugf";
    survey.facts.notes[3] = "pitting, \"see photo\"\n2nd line";
    std::string why;
    {
        Archive archive;
        ASSERT_TRUE(archive_open(archive, path, true, why)) << why;
        EXPECT_EQ(add(archive, survey), 1);
    }
    Archive archive;
    ASSERT_TRUE(archive_open(archive, path, false, why)) << why;
    std::vector<StoredSurvey> stored;
    ASSERT_TRUE(archive_surveys(archive, "tank4", stored, why)) << why;
    ASSERT_EQ(stored.size(), 1u);
    const StoredSurvey& s = stored[0];
    const Facts &f = s.facts, &w = survey.facts;
    EXPECT_EQ(std::tie(s.id, s.part, s.date, s.file_name, s.points, s.readings),
              std::make_tuple(std::int64_t{1}, "tank4", MARCH_2026, "tank4_2026.ugf", 40ull, 30ull));
    EXPECT_EQ(std::tie(f.file_type_name, f.instrument, f.model, f.first_id, f.last_id, f.walk_pattern_name, f.points, f.description,
                       f.inspector_id, f.location, f.notes, f.has_grid),
              std::tie(w.file_type_name, w.instrument, w.model, w.first_id, w.last_id, w.walk_pattern_name, w.points, w.description,
                       w.inspector_id, w.location, w.notes, w.has_grid));
    EXPECT_EQ(s.sha256, sha256_hex(survey.bytes));
    EXPECT_EQ(sha256_hex("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");

    std::vector<Point> points;
    ASSERT_TRUE(archive_points(archive, 1, points, why)) << why;
    expect_same_points(points, survey.points);
    std::string name, bytes;
    ASSERT_TRUE(archive_file(archive, 1, name, bytes, why)) << why;
    EXPECT_EQ(name, "tank4_2026.ugf");
    EXPECT_EQ(bytes, survey.bytes);
    EXPECT_FALSE(archive_points(archive, 2, points, why));
    EXPECT_EQ(why, "no survey 2 in the archive");
    EXPECT_FALSE(archive_file(archive, 0, name, bytes, why));
    EXPECT_EQ(why, "no survey 0 in the archive");
    EXPECT_TRUE(archive_check(archive, why)) << why;
}

TEST(ArchiveFileOutName, NeverAFolderAboveTheOneWrittenTo) {
    const std::pair<const char*, const char*> cases[] = {
        {"tank4.ugf", "tank4.ugf"},       {"plant/2026/tank4.ugf", "tank4.ugf"},
        {"C:\\2026\\tank4.ugf", "tank4.ugf"}, {"", "survey_7.ugf"},
        {".", "survey_7.ugf"},            {"plant/..", "survey_7.ugf"},
        {"plant/", "survey_7.ugf"},       {"..tank", "..tank"},
    };
    for (const auto& [stored, written] : cases) EXPECT_EQ(archive_file_out_name(7, stored), written) << stored;
}

TEST_F(ArchiveTest, ListsPartsThenDatesThenOrderOfAdding) {
    Archive archive;
    std::string why;
    ASSERT_TRUE(archive_open(archive, path, true, why)) << why;
    const struct {
        const char* part;
        std::int32_t date;
    } added[] = {{"vessel-2", 300}, {"tank4", 200}, {"tank4", 100}, {"Tank4", 500}, {"tank4", 100}};
    for (std::size_t i = 0; i < std::size(added); ++i)
        add(archive, make_survey(added[i].part, added[i].date, "file " + std::to_string(i)));
    std::vector<std::string> parts;
    ASSERT_TRUE(archive_parts(archive, parts, why)) << why;
    EXPECT_EQ(parts, (std::vector<std::string>{"Tank4", "tank4", "vessel-2"}));
    const struct {
        const char* part;
        std::vector<std::int64_t> ids;
    } cases[] = {{"", {4, 3, 5, 2, 1}}, {"tank4", {3, 5, 2}}, {"vessel-2", {1}}, {"tank", {}}};
    for (const auto& c : cases) {
        std::vector<StoredSurvey> surveys;
        ASSERT_TRUE(archive_surveys(archive, c.part, surveys, why)) << why;
        std::vector<std::int64_t> ids;
        for (const StoredSurvey& s : surveys) ids.push_back(s.id);
        EXPECT_EQ(ids, c.ids) << "part \"" << c.part << "\"";
    }
}

TEST_F(ArchiveTest, RefusesTheSameBytesTwiceAndNamesTheSurvey) {
    Archive archive;
    std::string why;
    ASSERT_TRUE(archive_open(archive, path, true, why)) << why;
    NewSurvey first = make_survey("tank4", MARCH_2026, "the bytes");
    first.file_name = "tank4_2026.ugf";
    add(archive, make_survey("tank5", 0, "other bytes"));
    add(archive, first);
    // Another part, date and name: only the bytes count.
    NewSurvey again = make_survey("tank9", 0, "the bytes", 3);
    std::int64_t id = -1, existing = -1;
    EXPECT_FALSE(archive_add(archive, again, id, existing, why));
    EXPECT_EQ(why, "the same file is already stored as survey 2 (tank4, 2026-03-01, tank4_2026.ugf)");
    EXPECT_EQ(std::tie(id, existing), std::make_tuple(0, 2));
    std::vector<std::string> parts;
    ASSERT_TRUE(archive_parts(archive, parts, why));
    EXPECT_EQ(parts, (std::vector<std::string>{"tank4", "tank5"}));
    std::vector<StoredSurvey> surveys;
    ASSERT_TRUE(archive_surveys(archive, "", surveys, why));
    EXPECT_EQ(surveys.size(), 2u);
    EXPECT_TRUE(archive_check(archive, why)) << why;
}

TEST_F(ArchiveTest, RefusesSurveysWithoutPartOrDate) {
    Archive archive;
    std::string why;
    ASSERT_TRUE(archive_open(archive, path, true, why)) << why;
    const struct {
        NewSurvey survey;
        const char* why;
    } cases[] = {{make_survey("", 0, "a"), "a survey needs the name of its part"},
                 {make_survey("tank4", 2932897, "b"), "the survey's date is out of range (years 1 to 9999)"},
                 {make_survey("tank4", -719163, "c"), "the survey's date is out of range (years 1 to 9999)"}};
    for (const auto& c : cases) {
        std::int64_t id = 0, existing = 0;
        EXPECT_FALSE(archive_add(archive, c.survey, id, existing, why));
        EXPECT_EQ(why, c.why);
    }
    std::vector<StoredSurvey> surveys;
    ASSERT_TRUE(archive_surveys(archive, "", surveys, why));
    EXPECT_TRUE(surveys.empty());
}

// What the file was made of, so that the refusal can be checked to leave it so.
enum Made { NOTHING, TEXT, EMPTY, FOREIGN, FOREIGN_WAL, FOREIGN_WITH_OUR_NAMES, NEWER, FOLDER };

TEST_F(ArchiveTest, LeavesWhatIsNotAnArchiveUntouched) {
    const std::string P = (folder / "x.ugfdb").string();
    const struct {
        Made made;
        bool create;
        std::string why;
    } cases[] = {
        {NOTHING, false, "no archive at " + P + " (ugf archive add creates one)"},
        {EMPTY, false, P + " is not a survey archive (an empty file)"},
        {FOLDER, true, P + " is a folder, not a survey archive"},
        {TEXT, false, P + " is not a survey archive (not an SQLite database)"},
        {TEXT, true, P + " is not a survey archive (not an SQLite database)"},
        {FOREIGN, false, P + " is not a survey archive (an SQLite database of another program)"},
        {FOREIGN, true, P + " is not a survey archive (an SQLite database of another program)"},
        {FOREIGN_WAL, true, P + " is not a survey archive (an SQLite database of another program)"},
        {FOREIGN_WITH_OUR_NAMES, true, P + " is not a survey archive (an SQLite database of another program)"},
        {NEWER, true, P + " is an archive of a newer version of ugf (schema 2; this one reads schema 1)"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        fs::remove_all(P);
        if (c.made == TEXT) std::ofstream(P) << "ID,MINIMUM\nA01,5.0\n" << std::string(200, 'x');
        if (c.made == EMPTY) std::ofstream{P};
        if (c.made == FOLDER) fs::create_directory(P);
        if (c.made == FOREIGN) raw_sql(P, "CREATE TABLE t (a); INSERT INTO t VALUES (1)");
        if (c.made == FOREIGN_WAL) raw_sql(P, "PRAGMA journal_mode = WAL; CREATE TABLE t (a)");
        if (c.made == FOREIGN_WITH_OUR_NAMES) raw_sql(P, "CREATE TABLE survey (a); CREATE TABLE point (a)");
        if (c.made == NEWER) {
            Archive archive;
            std::string why;
            ASSERT_TRUE(archive_open(archive, P, true, why)) << why;
            archive_close(archive);
            raw_sql(P, "PRAGMA user_version = 2");
        }
        const std::string before = fs::is_regular_file(P) ? read_file(P) : "";
        const bool existed = fs::exists(P);
        Archive archive;
        std::string why;
        EXPECT_FALSE(archive_open(archive, P, c.create, why));
        EXPECT_EQ(why, c.why);
        EXPECT_EQ(fs::exists(P), existed);
        if (fs::is_regular_file(P)) {
            EXPECT_EQ(read_file(P), before);
        }
        for (const char* side : {"-journal", "-wal"}) EXPECT_FALSE(fs::exists(P + side)) << side;
    }
}

TEST_F(ArchiveTest, CheckFindsSurveysThatLackPoints) {
    {
        Archive archive;
        std::string why;
        ASSERT_TRUE(archive_open(archive, path, true, why)) << why;
        add(archive, make_survey("tank4", 0, "a", 3));
        add(archive, make_survey("tank4", 1, "b", 3));
    }
    raw_sql(path,
            "DELETE FROM point WHERE key > 2 << 32; DELETE FROM survey_file WHERE survey_id = 1;"
            "INSERT INTO point (key, storage_index, ident, text, decimals, units, flags, notes, setup, alarm)"
            " VALUES (7 << 32, 0, 'A1', '', 0, '', 1, 0, 0, '')");
    Archive archive;
    std::string why;
    ASSERT_TRUE(archive_open(archive, path, false, why)) << why;
    EXPECT_FALSE(archive_check(archive, why));
    EXPECT_EQ(why, path + " is damaged:\n  survey 2 has 1 of its 3 points\n"
                          "  points of survey 7, which is not stored\n  survey 1 has no file");
}

TEST_F(ArchiveTest, MinimumsAreReplacedAsAWhole) {
    Archive archive;
    std::string why;
    ASSERT_TRUE(archive_open(archive, path, true, why)) << why;
    const std::vector<MinimumRow> tank4 = {{"A02", 4.5, ""}, {"A01", 5.25, "MM"}};
    ASSERT_TRUE(archive_set_minimums(archive, "tank4", tank4, why)) << why;
    ASSERT_TRUE(archive_set_minimums(archive, "tank5", {{"B01", 0.2, "IN"}, {"B02", 0.25, "IN"}}, why)) << why;
    ASSERT_TRUE(archive_set_minimums(archive, "tank5", {{"B03", 0.125, "IN"}}, why)) << why;
    const struct {
        std::vector<MinimumRow> rows;
        const char* why;
    } refused[] = {{{{"B04", 1, ""}, {"B04", 2, ""}}, "the required thickness of B04 is given twice"},
                   {{{"B05", NONE, ""}}, "the required thickness of B05 is not a number"}};
    for (const auto& r : refused) {
        EXPECT_FALSE(archive_set_minimums(archive, "tank5", r.rows, why));
        EXPECT_EQ(why, r.why);
    }
    const struct {
        const char* part;
        std::vector<std::tuple<std::string, double, std::string>> rows;
    } cases[] = {{"tank4", {{"A01", 5.25, "MM"}, {"A02", 4.5, ""}}}, {"tank5", {{"B03", 0.125, "IN"}}}, {"tank6", {}}};
    for (const auto& c : cases) {
        std::vector<MinimumRow> rows;
        ASSERT_TRUE(archive_minimums(archive, c.part, rows, why)) << why;
        std::vector<std::tuple<std::string, double, std::string>> got;
        for (const MinimumRow& row : rows) got.emplace_back(row.id, row.value, row.units);
        EXPECT_EQ(got, c.rows) << c.part;
    }
    ASSERT_TRUE(archive_set_minimums(archive, "tank4", {}, why)) << why;
    std::vector<MinimumRow> rows;
    ASSERT_TRUE(archive_minimums(archive, "tank4", rows, why));
    EXPECT_TRUE(rows.empty());
}

TEST_F(ArchiveTest, ProcessesAddingAtOnceAllSucceed) {
    // The archive does not exist yet: the processes also race to create it.
    constexpr int PROCESSES = 4, EACH = 5, POINTS = 3000;
    std::vector<int> codes = statuses_of_processes(PROCESSES, [&](int p) {
        Archive archive;
        std::string why;
        int code = archive_open(archive, path, true, why) ? 0 : 1;
        for (int i = 0; i < EACH && code == 0; ++i) {
            std::int64_t id = 0, existing = 0;
            const std::string bytes = "process " + std::to_string(p) + " survey " + std::to_string(i);
            if (!archive_add(archive, make_survey("tank" + std::to_string(p), i, bytes, POINTS), id, existing, why))
                code = 2;
        }
        // The same bytes from every process: one adds them, the others are told.
        std::int64_t id = 0, existing = 0;
        if (code == 0) {
            code = archive_add(archive, make_survey("shared", 9, "shared bytes", POINTS), id, existing, why) ? 10
                   : existing > 0 && why.rfind("the same file is already stored as survey", 0) == 0 ? 11
                                                                                                      : 3;
        }
        if (code < 10) std::fprintf(stderr, "process %d: %s\n", p, why.c_str());
        archive_close(archive);
        return code;
    });
    std::sort(codes.begin(), codes.end());
    EXPECT_EQ(codes, (std::vector<int>{10, 11, 11, 11}));

    Archive archive;
    std::string why;
    ASSERT_TRUE(archive_open(archive, path, false, why)) << why;
    EXPECT_TRUE(archive_check(archive, why)) << why;
    std::vector<StoredSurvey> surveys;
    ASSERT_TRUE(archive_surveys(archive, "", surveys, why));
    ASSERT_EQ(surveys.size(), std::size_t{PROCESSES * EACH + 1});
    for (const StoredSurvey& s : surveys) {
        std::vector<Point> points;
        ASSERT_TRUE(archive_points(archive, s.id, points, why)) << why;
        expect_same_points(points, make_points(POINTS, s.date));
    }
}

TEST_F(ArchiveTest, AKilledWriterLeavesWholeSurveysOnly) {
    constexpr int POINTS = 20000, ROUNDS = 8;
    std::mt19937 random(20260301);
    std::string why;
    {
        Archive archive;
        ASSERT_TRUE(archive_open(archive, path, true, why)) << why;
    }
    for (int round = 0; round < ROUNDS; ++round) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            Archive archive;
            if (!archive_open(archive, path, false, why)) _exit(1);
            for (int i = 0;; ++i) {
                std::int64_t id = 0, existing = 0;
                const std::string bytes = "round " + std::to_string(round) + " survey " + std::to_string(i);
                if (!archive_add(archive, make_survey("tank4", round, bytes, POINTS), id, existing, why)) _exit(2);
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(std::uniform_int_distribution(20, 400)(random)));
        kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the writer stopped by itself with " << WEXITSTATUS(status);

        Archive archive;
        ASSERT_TRUE(archive_open(archive, path, false, why)) << why;
        EXPECT_TRUE(archive_check(archive, why)) << why;
        std::vector<StoredSurvey> surveys;
        ASSERT_TRUE(archive_surveys(archive, "", surveys, why));
        for (const StoredSurvey& s : surveys) EXPECT_EQ(std::tie(s.points, s.facts.points), std::make_tuple(std::uint64_t{POINTS}, std::uint32_t{POINTS}));
        if (surveys.empty()) continue;
        std::vector<Point> points;
        ASSERT_TRUE(archive_points(archive, surveys.back().id, points, why));
        expect_same_points(points, make_points(POINTS, surveys.back().date));
    }
}

}  // namespace
