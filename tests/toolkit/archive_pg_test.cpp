// The survey archive on a PostgreSQL server: the same results as the file,
// copies both ways, concurrent and cut-off writers, roles and refusals. The
// tests start a throwaway server of their own on a Unix socket only.
#include <gtest/gtest.h>
#include <libpq-fe.h>
#include <pwd.h>
#include <signal.h>
#include <unistd.h>

#include <cfloat>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>

#include "archive_support.h"
#include "ugf/history.hpp"
#include "ugf/history_page.hpp"

namespace fs = std::filesystem;
using namespace ugf::kit;

namespace {

// The server: Debian's binaries run as an unprivileged user (the tests run
// as root in CI, and the server refuses root), data and socket in a folder
// of their own. It is stopped at the end by TearDown, or, if this process
// dies first, by a watchdog in a session of its own that waits for the end
// of a pipe only this process and its children hold.
struct Server : testing::Environment {
    std::string folder, skip;
    pid_t postmaster = 0, watchdog = 0;

    void SetUp() override {
        std::string bin;
        std::error_code error;
        for (const auto& version : fs::directory_iterator("/usr/lib/postgresql", error))
            if (fs::exists(version.path() / "bin/pg_ctl")) bin = std::max(bin, (version.path() / "bin").string());
        if (bin.empty()) {
            skip = "PostgreSQL's server (Debian's postgresql) is not installed: the server's tests are skipped";
            return;
        }
        std::string name = (fs::temp_directory_path() / "ugf-pg-XXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        folder = name;
        std::string as;
        if (geteuid() == 0) {
            const passwd* nobody = getpwnam("nobody");
            ASSERT_TRUE(nobody && chown(folder.c_str(), nobody->pw_uid, nobody->pw_gid) == 0);
            as = "setpriv --reuid=nobody --regid=nogroup --clear-groups ";
        }
        ASSERT_EQ(std::system((as + bin + "/initdb -D " + folder + "/data -U postgres -A trust -E UTF8 --locale=C -N >" +
                               folder + "/initdb.log 2>&1").c_str()), 0) << "initdb failed: " << folder << "/initdb.log";
        std::ofstream(folder + "/data/pg_hba.conf") << "local all reader scram-sha-256\nlocal all all trust\n";
        ASSERT_EQ(std::system((as + bin + "/pg_ctl -D " + folder + "/data -l " + folder + "/server.log -w -s -o \"" +
                               "-c listen_addresses='' -c unix_socket_directories=" + folder + " -c fsync=off\" start")
                                  .c_str()), 0) << "the server did not start: " << folder << "/server.log";
        std::ifstream(folder + "/data/postmaster.pid") >> postmaster;
        int pipe_ends[2];
        ASSERT_EQ(pipe(pipe_ends), 0);
        watchdog = fork();
        if (watchdog == 0) {
            setsid();
            close(pipe_ends[1]);
            char byte;
            while (read(pipe_ends[0], &byte, 1) != 0) {}
            kill(postmaster, SIGQUIT);  // the server's immediate shutdown
            sleep(2);
            fs::remove_all(folder, error);
            _exit(0);
        }
        close(pipe_ends[0]);
    }
    void TearDown() override {
        if (watchdog > 0) kill(watchdog, SIGKILL);
        if (postmaster > 0) kill(postmaster, SIGQUIT);
        for (int i = 0; i < 100 && postmaster > 0 && kill(postmaster, 0) == 0; ++i) usleep(50000);
        if (!folder.empty()) fs::remove_all(folder);
    }
    std::string uri(const std::string& database, const std::string& user = "postgres") const {
        return "postgresql://" + user + "@/" + database + "?host=" + folder;
    }
};
Server* const server = static_cast<Server*>(testing::AddGlobalTestEnvironment(new Server));

// Runs SQL as the superuser; the first value of the last result.
std::string sql(const std::string& database, const std::string& statements) {
    PGconn* connection = PQconnectdb(server->uri(database).c_str());
    PGresult* result = PQexec(connection, statements.c_str());
    EXPECT_LT(PQresultStatus(result), PGRES_COPY_OUT) << statements << ": " << PQerrorMessage(connection);
    const std::string value = PQntuples(result) > 0 ? PQgetvalue(result, 0, 0) : "";
    PQclear(result);
    PQfinish(connection);
    return value;
}

struct PgArchiveTest : testing::Test {
    std::string db, uri, name, why;  // name: the archive's in messages
    void SetUp() override {
        if (!server->skip.empty()) GTEST_SKIP() << server->skip;
        db = testing::UnitTest::GetInstance()->current_test_info()->name();
        sql("postgres", "CREATE DATABASE \"" + db + "\"");
        uri = server->uri(db);
        name = server->folder + "/" + db;
    }
};

std::string exact(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%a", value);
    return text;
}

// Everything an archive gives, as text (numbers to the bit), and each
// part's history.
std::string dump(Archive& archive) {
    std::string out, why;
    std::vector<std::string> parts;
    EXPECT_TRUE(archive_parts(archive, parts, why)) << why;
    for (const std::string& part : parts) {
        std::vector<StoredSurvey> surveys;
        std::vector<MinimumRow> minimums;
        EXPECT_TRUE(archive_surveys(archive, part, surveys, why) && archive_minimums(archive, part, minimums, why));
        HistoryOptions options{.as_of = 20000};
        for (const MinimumRow& m : minimums) {
            out += part + " minimum " + m.id + " " + exact(m.value) + " " + m.units + "\n";
            options.minimums[m.id] = {m.value, m.units};
        }
        std::vector<DatedSurvey> dated;
        for (const StoredSurvey& s : surveys) {
            const Facts& f = s.facts;
            std::string name, bytes;
            DatedSurvey& d = dated.emplace_back(DatedSurvey{s.id, s.date, s.file_name, {}});
            EXPECT_TRUE(archive_points(archive, s.id, d.points, why) && archive_file(archive, s.id, name, bytes, why));
            for (const std::string& field : {std::to_string(s.id), s.part, std::to_string(s.date), s.file_name,
                                             f.file_type_name, f.instrument, f.model, f.first_id, f.last_id,
                                             f.walk_pattern_name, std::to_string(f.points), f.description,
                                             f.inspector_id, f.location, std::to_string(f.has_grid),
                                             std::to_string(s.points), std::to_string(s.readings), s.sha256, name, bytes})
                out += field + "|";
            for (const std::string& note : f.notes) out += note + "|";
            for (const Point& p : d.points)
                out += "\n" + std::to_string(p.index) + p.id + "|" + p.text + "|" + exact(p.value) + "|" +
                       std::to_string(p.decimals) + p.units + std::to_string(p.empty + 2 * p.lost + 4 * p.velocity) +
                       std::to_string(p.notes) + "|" + std::to_string(p.setup) + p.alarm + exact(p.low_alarm) +
                       std::to_string(p.ascan + 2 * p.bscan);
            out += "\n";
        }
        // The history and its page (with a profile: these surveys' bytes make
        // no grid) from what each store gives back.
        History history;
        std::string page;
        if (!dated.empty() && make_history(part, dated, options, history, why) &&
            history_page(history, dated, {}, page, why))
            out += history_csv(history) + page;
    }
    return out;
}

// Surveys of two parts, not added in the order of their dates; two on one
// date, texts that are no UTF-8, numbers that only the exact bits give back.
std::vector<NewSurvey> surveys() {
    std::vector<NewSurvey> made = {make_survey("vessel-2", 19500, "v", 60), make_survey("tank4", 19800, "2024 a", 400),
                                   make_survey("tank4", 19000, "2022", 400), make_survey("tank4", 19800, "2024 b", 400)};
    made[3].points[0].value = 0.1 + 0.2;
    made[3].points[4].value = 1.0 / 3;
    made[3].points[8].low_alarm = 5e-324;
    made[3].points[12].value = DBL_MAX;
    made[0].facts.description = "\xe9paisseur \xff\x01";
    made[0].points[1].id = "\xc3(";
    made[0].file_name = "/surveys/2023/v\xe4ssel.ugf";
    return made;
}

TEST_F(PgArchiveTest, SameResultsAsTheFileAndCopiesBothWays) {
    Archive file, pg, pg_copy, file_copy;
    sql("postgres", "CREATE DATABASE copy");
    ASSERT_TRUE(archive_open(file, server->folder + "/a.ugfdb", true, why) && archive_open(pg, uri, true, why) &&
                archive_open(pg_copy, server->uri("copy"), true, why) &&
                archive_open(file_copy, server->folder + "/b.ugfdb", true, why)) << why;
    for (Archive* archive : {&file, &pg}) {
        for (const NewSurvey& survey : surveys()) {
            add(*archive, survey);
            if (survey.bytes != "2024 a") continue;
            // Refused before the next add: it takes no id from it.
            std::int64_t id = 0, existing = 0;
            EXPECT_FALSE(archive_add(*archive, make_survey("tank5", 1, "2024 a"), id, existing, why));
            EXPECT_EQ(why, "the same file is already stored as survey 2 (tank4, 2024-03-18, tank4.ugf)");
            EXPECT_EQ(existing, 2);
        }
        ASSERT_TRUE(archive_set_minimums(*archive, "tank4", {{"A4", 0.1 + 0.2, ""}, {"A0", 10.5, "MM"}}, why) &&
                    archive_set_minimums(*archive, "tank9", {{"B1", 1.0 / 3, "IN"}}, why)) << why;
    }
    const std::string original = dump(file);
    EXPECT_EQ(dump(pg), original);
    EXPECT_TRUE(archive_check(pg, why)) << why;
    std::vector<Point> none;
    EXPECT_FALSE(archive_points(pg, 5, none, why));
    EXPECT_EQ(why, "no survey 5 in the archive");

    CopyCounts counts;
    ASSERT_TRUE(archive_copy(file, pg_copy, counts, why)) << why;
    EXPECT_EQ(std::tie(counts.copied, counts.skipped, counts.minimum_tables), std::make_tuple(4u, 0u, 2u));
    ASSERT_TRUE(archive_copy(pg, file_copy, counts, why)) << why;
    EXPECT_EQ(dump(pg_copy), original);
    EXPECT_EQ(dump(file_copy), original);
    ASSERT_TRUE(archive_copy(file, pg_copy, counts, why)) << why;
    EXPECT_EQ(std::tie(counts.copied, counts.skipped, counts.minimum_tables), std::make_tuple(0u, 4u, 2u));
}

TEST_F(PgArchiveTest, ManyWritersStoreEachFileOnceAndTellTheOthers) {
    // 200 adds of 120 files, into a database that has no archive yet: the
    // processes also race to make the schema.
    constexpr int PROCESSES = 8, EACH = 25, FILES = 120;
    const std::vector<int> statuses = statuses_of_processes(PROCESSES, [&](int p) {
        Archive archive;
        std::ofstream out(server->folder + "/adds" + std::to_string(p));
        if (!archive_open(archive, uri, true, why)) return std::fprintf(stderr, "%s\n", why.c_str()), 1;
        for (int i = 0; i < EACH; ++i) {
            const int f = (p * 37 + i * 11) % FILES;
            std::int64_t id = 0, existing = 0;
            const bool added = archive_add(archive, make_survey("tank" + std::to_string(f % 3), f,
                                                                "file " + std::to_string(f), 200), id, existing, why);
            if (!added && existing == 0) return std::fprintf(stderr, "%s\n", why.c_str()), 2;
            out << f << ' ' << id << ' ' << existing << std::endl;
        }
        return 0;
    });
    EXPECT_EQ(statuses, std::vector<int>(PROCESSES, 0));
    std::map<int, std::int64_t> holder;
    std::vector<std::pair<int, std::int64_t>> told;
    for (int p = 0; p < PROCESSES; ++p) {
        std::ifstream in(server->folder + "/adds" + std::to_string(p));
        int f = 0;
        std::int64_t id = 0, existing = 0;
        while (in >> f >> id >> existing) {
            if (id == 0) told.emplace_back(f, existing);
            EXPECT_TRUE(id == 0 || holder.emplace(f, id).second) << "file " << f << " stored twice";
        }
    }
    EXPECT_EQ(holder.size() + told.size(), std::size_t{PROCESSES * EACH});
    for (const auto& [f, existing] : told) EXPECT_EQ(existing, holder[f]) << "file " << f;
    Archive archive;
    std::vector<StoredSurvey> stored;
    ASSERT_TRUE(archive_open(archive, uri, false, why) && archive_surveys(archive, "", stored, why)) << why;
    EXPECT_EQ(stored.size(), holder.size());
    EXPECT_TRUE(archive_check(archive, why)) << why;
}

TEST_F(PgArchiveTest, AnAddCutOffByTheServerLeavesNothing) {
    Archive archive;
    ASSERT_TRUE(archive_open(archive, uri, true, why)) << why;
    // A lock on the table of files holds the add after its survey and points.
    PGconn* lock = PQconnectdb(uri.c_str());
    PQclear(PQexec(lock, "BEGIN; LOCK TABLE survey_file"));
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        Archive adding;
        std::int64_t id = 0, existing = 0;
        if (!archive_open(adding, uri + "&application_name=cut-off", false, why)) _exit(1);
        if (archive_add(adding, make_survey("tank4", 0, "cut off", 20000), id, existing, why)) _exit(2);
        std::fprintf(stderr, "%s\n", why.c_str());
        _exit(why == name + ": terminating connection due to administrator command" ? 0 : 3);
    }
    std::string pid;
    for (int i = 0; i < 600 && pid.empty(); ++i, usleep(50000))
        pid = sql(db, "SELECT pid FROM pg_stat_activity WHERE application_name = 'cut-off' AND wait_event_type = 'Lock'");
    EXPECT_EQ(sql(db, "SELECT pg_terminate_backend(" + (pid.empty() ? "0" : pid) + ")"), "t");
    PQfinish(lock);
    EXPECT_EQ(exit_status(child), 0);
    EXPECT_EQ(sql(db, "SELECT (SELECT count(*) FROM part) + (SELECT count(*) FROM survey) + (SELECT count(*) FROM point)"),
              "0");
    EXPECT_TRUE(archive_check(archive, why)) << why;
}

TEST_F(PgArchiveTest, ReadOnlyRoleReadsAndIsRefusedAdds) {
    // The roles and grants of docs/archive.md.
    sql(db, "CREATE ROLE maker LOGIN; CREATE ROLE writer LOGIN; CREATE ROLE reader LOGIN PASSWORD 'sesame';"
            "GRANT CREATE ON SCHEMA public TO maker");
    Archive maker, writer, reader;
    ASSERT_TRUE(archive_open(maker, server->uri(db, "maker"), true, why)) << why;
    sql(db, "GRANT SELECT ON ALL TABLES IN SCHEMA public TO reader, writer;"
            "GRANT INSERT ON ALL TABLES IN SCHEMA public TO writer; GRANT DELETE ON minimum TO writer;"
            "GRANT USAGE ON ALL SEQUENCES IN SCHEMA public TO writer");
    ASSERT_TRUE(archive_open(writer, server->uri(db, "writer"), true, why)) << why;
    add(writer, make_survey("tank4", 1, "one"));
    EXPECT_TRUE(archive_set_minimums(writer, "tank4", {{"A0", 9, ""}}, why)) << why;
    setenv("PGPASSWORD", "sesame", 1);
    ASSERT_TRUE(archive_open(reader, server->uri(db, "reader"), true, why)) << why;
    std::int64_t id = 0, existing = 0;
    EXPECT_FALSE(archive_add(reader, make_survey("tank4", 2, "two"), id, existing, why));
    EXPECT_EQ(why, name + ": permission denied for table survey");
    std::vector<StoredSurvey> stored;
    std::vector<Point> points;
    EXPECT_TRUE(archive_surveys(reader, "", stored, why) && archive_points(reader, 1, points, why)) << why;
    expect_same_points(points, make_survey("tank4", 1, "one").points);

    const std::string refused = name + ": connection to server on socket \"" + server->folder +
                                "/.s.PGSQL.5432\" failed: FATAL:  password authentication failed for user \"reader\"";
    setenv("PGPASSWORD", "wrong", 1);
    EXPECT_FALSE(archive_open(reader, server->uri(db, "reader"), false, why));
    EXPECT_EQ(why, refused);
    unsetenv("PGPASSWORD");
    EXPECT_FALSE(archive_open(reader, server->uri(db, "reader:open%20sesame"), false, why));
    EXPECT_EQ(why, refused);
}

TEST_F(PgArchiveTest, RefusesWhatIsNoArchiveAndCreatesNothing) {
    sql("postgres", "CREATE DATABASE other");
    sql("postgres", "CREATE DATABASE newer");
    sql("other", "CREATE TABLE survey (a int)");
    {
        Archive archive;
        ASSERT_TRUE(archive_open(archive, server->uri("newer"), true, why)) << why;
    }
    sql("newer", "UPDATE ugf_archive_meta SET value = '2' WHERE key = 'schema_version'");
    const std::string nowhere = server->folder + "/nowhere";
    const struct {
        std::string database, uri;
        bool create;
        std::string why;
    } cases[] = {
        {db, uri, false, "no archive at " + name + " (ugf archive add creates one)"},
        {"other", server->uri("other"), true, server->folder + "/other is not a survey archive (a database of another program)"},
        {"newer", server->uri("newer"), true,
         server->folder + "/newer is an archive of a newer version of ugf (schema 2; this one reads schema 1)"},
        {"", "postgres://u:pw@/x?host=" + nowhere, true,
         nowhere + "/x: connection to server on socket \"" + nowhere + "/.s.PGSQL.5432\" failed: No such file or directory"},
        {"", "postgresql://u:se%zzcret@/x", false, "the archive's URI: invalid percent-encoded token: \"***\""},
    };
    for (const auto& c : cases) {
        const std::string tables = "SELECT count(*) FROM pg_tables WHERE schemaname = 'public'";
        const std::string before = c.database.empty() ? "" : sql(c.database, tables);
        Archive archive;
        EXPECT_FALSE(archive_open(archive, c.uri, c.create, why));
        EXPECT_EQ(why, c.why);
        EXPECT_EQ(c.database.empty() ? "" : sql(c.database, tables), before) << c.database;
    }
}

}  // namespace
