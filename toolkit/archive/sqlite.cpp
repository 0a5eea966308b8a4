// The archive in an SQLite file. docs/archive.md describes the schema.
//
// Safety: a file is taken for an archive only when its first 100 bytes are an
// SQLite header with this archive's application id, read before SQLite opens
// it, so that nothing (not a journal, nor a switch to the write-ahead log) is
// ever written to another program's file. A new archive's schema is committed
// through a rollback journal, straight into the file, and only then does the
// archive switch to the write-ahead log: the application id in the file's own
// header is therefore right for every later reader, even while changes wait
// in the log. Each change is one transaction begun IMMEDIATE (the write lock
// taken first), so that concurrent writers queue behind the busy timeout
// instead of failing half way, and a killed writer leaves only uncommitted
// frames in the log, which the next reader ignores.
#include <sqlite3.h>

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <map>
#include <memory>
#include <thread>

#include "archive/backend.h"

namespace ugf::kit {

namespace {

constexpr int APPLICATION_ID = 0x55474641;  // "UGFA"
constexpr int SCHEMA_VERSION = 1;
constexpr int BUSY_TIMEOUT_MS = 30000;

// Version 1. Kept in step with docs/archive.md. A point's key is its
// survey's id times 2^32 plus its position in the walk: the points of a survey
// lie together in walk order, are appended at the end of the table as they
// are added (no search of the tree for each one), and are read as one range.
constexpr const char* SCHEMA = R"(
PRAGMA application_id = 1430734401;
PRAGMA user_version = 1;
CREATE TABLE part (
    id   INTEGER PRIMARY KEY,
    name TEXT NOT NULL UNIQUE
);
CREATE TABLE survey (
    id          INTEGER PRIMARY KEY,
    part_id     INTEGER NOT NULL REFERENCES part (id),
    date        INTEGER NOT NULL,
    file_name   TEXT NOT NULL,
    sha256      TEXT NOT NULL UNIQUE,
    file_type_name TEXT NOT NULL,
    instrument  TEXT NOT NULL,
    model       TEXT NOT NULL,
    first_id    TEXT NOT NULL,
    last_id     TEXT NOT NULL,
    walk_pattern_name TEXT NOT NULL,
    point_count INTEGER NOT NULL,
    description TEXT NOT NULL,
    inspector_id TEXT NOT NULL,
    location    TEXT NOT NULL,
    has_grid    INTEGER NOT NULL,
    points      INTEGER NOT NULL,
    readings    INTEGER NOT NULL
);
CREATE INDEX survey_of_part ON survey (part_id, date);
CREATE TABLE note (
    survey_id INTEGER NOT NULL REFERENCES survey (id),
    position  INTEGER NOT NULL,
    text      TEXT NOT NULL,
    PRIMARY KEY (survey_id, position)
) WITHOUT ROWID;
CREATE TABLE point (
    key           INTEGER PRIMARY KEY,
    storage_index INTEGER NOT NULL,
    ident         TEXT NOT NULL,
    text          TEXT NOT NULL,
    value         REAL,
    decimals      INTEGER NOT NULL,
    units         TEXT NOT NULL,
    flags         INTEGER NOT NULL,
    notes         INTEGER NOT NULL,
    setup         INTEGER NOT NULL,
    alarm         TEXT NOT NULL,
    low_alarm     REAL
);
CREATE TABLE survey_file (
    survey_id INTEGER PRIMARY KEY REFERENCES survey (id),
    bytes     BLOB NOT NULL
);
CREATE TABLE minimum (
    part_id INTEGER NOT NULL REFERENCES part (id),
    ident   TEXT NOT NULL,
    value   REAL NOT NULL,
    units   TEXT NOT NULL,
    PRIMARY KEY (part_id, ident)
) WITHOUT ROWID;
)";
// The bits of a point's flags.
constexpr std::int64_t EMPTY = 1, LOST = 2, VELOCITY = 4, ASCAN = 8, BSCAN = 16;

constexpr const char* TABLES[] = {"part", "survey", "note", "point", "survey_file", "minimum"};

// The statements, prepared once for the connection and bound per use.
enum Statement {
    FIND_SHA,
    ADD_PART,
    PART_ID,
    ADD_SURVEY,
    ADD_NOTE,
    ADD_POINT,
    ADD_FILE,
    PARTS,
    SURVEYS,
    NOTES,
    SURVEY_POINTS,
    POINTS,
    FILE,
    CLEAR_MINIMUMS,
    ADD_MINIMUM,
    MINIMUMS,
    STATEMENT_COUNT
};
constexpr const char* SQL[STATEMENT_COUNT] = {
    "SELECT s.id, p.name, s.date, s.file_name FROM survey s JOIN part p ON p.id = s.part_id WHERE s.sha256 = ?1",
    "INSERT OR IGNORE INTO part (name) VALUES (?1)",
    "SELECT id FROM part WHERE name = ?1",
    "INSERT INTO survey (part_id, date, file_name, sha256, file_type_name, instrument, model, first_id, last_id,"
    " walk_pattern_name, point_count, description, inspector_id, location, has_grid, points, readings)"
    " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15, ?16, ?17)",
    "INSERT INTO note (survey_id, position, text) VALUES (?1, ?2, ?3)",
    "INSERT INTO point (key, storage_index, ident, text, value, decimals, units, flags, notes,"
    " setup, alarm, low_alarm) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12)",
    "INSERT INTO survey_file (survey_id, bytes) VALUES (?1, ?2)",
    "SELECT name FROM part",
    "SELECT s.id, p.name, s.date, s.file_name, s.sha256, s.file_type_name, s.instrument, s.model, s.first_id,"
    " s.last_id, s.walk_pattern_name, s.point_count, s.description, s.inspector_id, s.location, s.has_grid, s.points,"
    " s.readings FROM survey s JOIN part p ON p.id = s.part_id WHERE ?1 = '' OR p.name = ?1",
    "SELECT n.survey_id, n.text FROM note n JOIN survey s ON s.id = n.survey_id JOIN part p ON p.id = s.part_id"
    " WHERE ?1 = '' OR p.name = ?1 ORDER BY n.survey_id, n.position",
    "SELECT points FROM survey WHERE id = ?1",
    "SELECT storage_index, ident, text, value, decimals, units, flags, notes, setup, alarm, low_alarm"
    " FROM point WHERE key BETWEEN ?1 << 32 AND (?1 << 32) + 4294967295 ORDER BY key",
    "SELECT s.file_name, f.bytes FROM survey s LEFT JOIN survey_file f ON f.survey_id = s.id WHERE s.id = ?1",
    "DELETE FROM minimum WHERE part_id = ?1",
    "INSERT INTO minimum (part_id, ident, value, units) VALUES (?1, ?2, ?3, ?4)",
    "SELECT m.ident, m.value, m.units FROM minimum m JOIN part p ON p.id = m.part_id WHERE p.name = ?1",
};

}  // namespace

struct ArchiveState {
    std::string path;
    sqlite3* db = nullptr;
    std::array<sqlite3_stmt*, STATEMENT_COUNT> statements{};
    int last_error = SQLITE_OK;  // the primary code of the last failure

    ~ArchiveState() {
        for (sqlite3_stmt* statement : statements) sqlite3_finalize(statement);
        sqlite3_close_v2(db);
    }
};

namespace {

int failed(ArchiveState& state, std::string& why) {
    why = state.path + ": " + sqlite3_errmsg(state.db);
    state.last_error = sqlite3_extended_errcode(state.db) & 0xFF;
    return 0;
}

// Ends an open transaction without its changes.
void roll_back(ArchiveState& state) {
    if (!sqlite3_get_autocommit(state.db)) sqlite3_exec(state.db, "ROLLBACK", nullptr, nullptr, nullptr);
}

// The same, after a failure that `why` tells of.
int rolled_back(ArchiveState& state, std::string& why) {
    if (why.empty()) failed(state, why);
    roll_back(state);
    return 0;
}

int exec(ArchiveState& state, const char* sql, std::string& why) {
    return sqlite3_exec(state.db, sql, nullptr, nullptr, nullptr) == SQLITE_OK ? 1 : failed(state, why);
}

// A prepared statement in use: reset when the use ends, so that no read
// stays open after it.
struct Use {
    sqlite3_stmt* statement = nullptr;
    Use(sqlite3_stmt* statement) : statement(statement) {}
    Use(const Use&) = delete;
    ~Use() {
        if (statement) sqlite3_reset(statement);
    }
    operator sqlite3_stmt*() const { return statement; }
};

// The statement with no values bound; null (with `why`) when it can't be
// prepared.
Use statement(ArchiveState& state, Statement which, std::string& why) {
    sqlite3_stmt*& statement = state.statements[which];
    if (statement) {
        sqlite3_clear_bindings(statement);
    } else if (sqlite3_prepare_v3(state.db, SQL[which], -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) !=
               SQLITE_OK) {
        failed(state, why);
    }
    return statement;
}

// The texts stay alive until the statement has stepped: no copy is made.
void put(sqlite3_stmt* statement, int column, const std::string& text) {
    sqlite3_bind_text64(statement, column, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8);
}
void put(sqlite3_stmt* statement, int column, std::int64_t value) { sqlite3_bind_int64(statement, column, value); }
// NaN, "none", is NULL.
void put_real(sqlite3_stmt* statement, int column, double value) {
    if (std::isnan(value)) {
        sqlite3_bind_null(statement, column);
    } else {
        sqlite3_bind_double(statement, column, value);
    }
}

std::string text(sqlite3_stmt* statement, int column) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    return text ? std::string(text, static_cast<std::size_t>(sqlite3_column_bytes(statement, column))) : std::string();
}
double real(sqlite3_stmt* statement, int column) {
    return sqlite3_column_type(statement, column) == SQLITE_NULL ? std::numeric_limits<double>::quiet_NaN()
                                                                 : sqlite3_column_double(statement, column);
}
std::int64_t integer(sqlite3_stmt* statement, int column) { return sqlite3_column_int64(statement, column); }

// Runs a statement that returns no rows.
int done(ArchiveState& state, sqlite3_stmt* statement, std::string& why) {
    return sqlite3_step(statement) == SQLITE_DONE ? 1 : failed(state, why);
}

int pragma_integer(ArchiveState& state, const char* sql, std::int64_t& value, std::string& why) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(state.db, sql, -1, &statement, nullptr) != SQLITE_OK) return failed(state, why);
    const int step = sqlite3_step(statement);
    value = step == SQLITE_ROW ? sqlite3_column_int64(statement, 0) : 0;
    const int ok = step == SQLITE_ROW || step == SQLITE_DONE ? 1 : failed(state, why);
    sqlite3_finalize(statement);
    return ok;
}

struct SchemaFacts {
    std::int64_t application_id = 0, version = 0, objects = 0, tables = 0;
};

int read_schema(ArchiveState& state, SchemaFacts& facts, std::string& why) {
    std::string names;
    for (const char* table : TABLES) names += std::string(names.empty() ? "'" : ", '") + table + "'";
    const std::string tables =
        "SELECT count(*) FROM sqlite_schema WHERE type = 'table' AND name IN (" + names + ")";
    // One read transaction, so that the four are of one moment (another
    // process may be writing the schema between them), unless the caller
    // already holds one.
    const bool own = sqlite3_get_autocommit(state.db) != 0;
    if (own && !exec(state, "BEGIN", why)) return 0;
    const int ok = pragma_integer(state, "PRAGMA application_id", facts.application_id, why) &&
                   pragma_integer(state, "PRAGMA user_version", facts.version, why) &&
                   pragma_integer(state, "SELECT count(*) FROM sqlite_schema", facts.objects, why) &&
                   pragma_integer(state, tables.c_str(), facts.tables, why);
    if (!ok && state.last_error == SQLITE_NOTADB) {
        why = state.path + " is not a survey archive (not an SQLite database)";
    }
    if (own) {
        if (!ok) return rolled_back(state, why);
        return exec(state, "COMMIT", why);
    }
    return ok;
}

// Writes the schema into a database that has none yet. Another process may
// be creating the same archive: the write lock comes first, then the look.
int create_schema(ArchiveState& state, std::string& why) {
    SchemaFacts facts;
    if (!exec(state, "BEGIN IMMEDIATE", why) || !read_schema(state, facts, why)) return rolled_back(state, why);
    if (facts.application_id == 0 && facts.objects == 0 && !exec(state, SCHEMA, why))
        return rolled_back(state, why);
    return exec(state, "COMMIT", why) ? 1 : rolled_back(state, why);
}

int use_write_ahead_log(ArchiveState& state, std::string& why) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(state.db, "PRAGMA journal_mode = WAL", -1, &statement, nullptr) != SQLITE_OK)
        return failed(state, why);
    const int step = sqlite3_step(statement);
    const std::string mode = step == SQLITE_ROW ? text(statement, 0) : std::string();
    if (step != SQLITE_ROW) failed(state, why);
    sqlite3_finalize(statement);
    if (step != SQLITE_ROW) return 0;
    if (mode == "wal") return 1;
    why = state.path + ": cannot use a write-ahead log (journal mode " + mode + ")";
    return 0;
}

void read_survey(sqlite3_stmt* row, StoredSurvey& survey) {
    survey.id = integer(row, 0);
    survey.part = text(row, 1);
    survey.date = static_cast<std::int32_t>(integer(row, 2));
    survey.file_name = text(row, 3);
    survey.sha256 = text(row, 4);
    Facts& facts = survey.facts;
    facts.file_type_name = text(row, 5);
    facts.instrument = text(row, 6);
    facts.model = text(row, 7);
    facts.first_id = text(row, 8);
    facts.last_id = text(row, 9);
    facts.walk_pattern_name = text(row, 10);
    facts.points = static_cast<std::uint32_t>(integer(row, 11));
    facts.description = text(row, 12);
    facts.inspector_id = text(row, 13);
    facts.location = text(row, 14);
    facts.has_grid = integer(row, 15) != 0;
    survey.points = static_cast<std::uint64_t>(integer(row, 16));
    survey.readings = static_cast<std::uint64_t>(integer(row, 17));
}

int add_points(ArchiveState& state, std::int64_t id, const std::vector<Point>& points, std::string& why) {
    if (id > std::numeric_limits<std::int32_t>::max() || points.size() > std::numeric_limits<std::uint32_t>::max()) {
        why = state.path + ": no room for the points of survey " + std::to_string(id);
        return 0;
    }
    Use insert = statement(state, ADD_POINT, why);
    if (!insert) return 0;
    std::int64_t key = id << 32;
    for (const Point& point : points) {
        put(insert, 1, key++);
        put(insert, 2, point.index);
        put(insert, 3, point.id);
        put(insert, 4, point.text);
        put_real(insert, 5, point.value);
        put(insert, 6, std::int64_t{point.decimals});
        put(insert, 7, point.units);
        put(insert, 8, std::int64_t{(point.empty ? EMPTY : 0) | (point.lost ? LOST : 0) |
                                    (point.velocity ? VELOCITY : 0) | (point.ascan ? ASCAN : 0) |
                                    (point.bscan ? BSCAN : 0)});
        put(insert, 9, std::int64_t{point.notes});
        put(insert, 10, std::int64_t{point.setup});
        put(insert, 11, point.alarm);
        put_real(insert, 12, point.low_alarm);
        if (!done(state, insert, why)) return 0;
        sqlite3_reset(insert);
    }
    return 1;
}

// The part's id, made when it is new; inside the caller's transaction.
int part_id(ArchiveState& state, const std::string& part, std::int64_t& id, std::string& why) {
    Use add = statement(state, ADD_PART, why);
    if (!add) return 0;
    put(add, 1, part);
    if (!done(state, add, why)) return 0;
    Use find = statement(state, PART_ID, why);
    if (!find) return 0;
    put(find, 1, part);
    if (sqlite3_step(find) != SQLITE_ROW) return failed(state, why);
    id = integer(find, 0);
    return 1;
}

// The survey stored with these bytes: 1 with `existing.id` 0 when none.
int find_same(ArchiveState& state, const std::string& sha256, StoredSurvey& existing, std::string& why) {
    Use find = statement(state, FIND_SHA, why);
    if (!find) return 0;
    put(find, 1, sha256);
    const int step = sqlite3_step(find);
    if (step == SQLITE_ROW) {
        existing.id = integer(find, 0);
        existing.part = text(find, 1);
        existing.date = static_cast<std::int32_t>(integer(find, 2));
        existing.file_name = text(find, 3);
    }
    return step == SQLITE_ROW || step == SQLITE_DONE ? 1 : failed(state, why);
}

int add_survey(ArchiveState& state, const AddRequest& request, std::int64_t& id, std::string& why) {
    const NewSurvey& survey = request.survey;
    const Facts& facts = survey.facts;
    std::int64_t part = 0;
    if (!part_id(state, survey.part, part, why)) return 0;
    Use insert = statement(state, ADD_SURVEY, why);
    if (!insert) return 0;
    put(insert, 1, part);
    put(insert, 2, std::int64_t{survey.date});
    put(insert, 3, request.file_name);
    put(insert, 4, request.sha256);
    put(insert, 5, facts.file_type_name);
    put(insert, 6, facts.instrument);
    put(insert, 7, facts.model);
    put(insert, 8, facts.first_id);
    put(insert, 9, facts.last_id);
    put(insert, 10, facts.walk_pattern_name);
    put(insert, 11, std::int64_t{facts.points});
    put(insert, 12, facts.description);
    put(insert, 13, facts.inspector_id);
    put(insert, 14, facts.location);
    put(insert, 15, std::int64_t{facts.has_grid});
    put(insert, 16, static_cast<std::int64_t>(survey.points.size()));
    put(insert, 17, static_cast<std::int64_t>(request.readings));
    if (!done(state, insert, why)) return 0;
    id = sqlite3_last_insert_rowid(state.db);

    Use note = statement(state, ADD_NOTE, why);
    if (!note) return 0;
    put(note, 1, id);
    for (std::size_t i = 0; i < facts.notes.size(); ++i) {
        put(note, 2, static_cast<std::int64_t>(i));
        put(note, 3, facts.notes[i]);
        if (!done(state, note, why)) return 0;
        sqlite3_reset(note);
    }
    if (!add_points(state, id, survey.points, why)) return 0;
    Use file = statement(state, ADD_FILE, why);
    if (!file) return 0;
    put(file, 1, id);
    if (sqlite3_bind_blob64(file, 2, survey.bytes.data(), survey.bytes.size(), SQLITE_STATIC) != SQLITE_OK)
        return failed(state, why);
    return done(state, file, why);
}

void sqlite_close(ArchiveState* state) { delete state; }

int sqlite_add(ArchiveState* state, const AddRequest& request, std::int64_t& id, StoredSurvey& existing,
               std::string& why) {
    if (!exec(*state, "BEGIN IMMEDIATE", why)) return 0;
    if (!find_same(*state, request.sha256, existing, why)) return rolled_back(*state, why);
    if (existing.id > 0) {
        roll_back(*state);
        return 0;
    }
    if (add_survey(*state, request, id, why) && exec(*state, "COMMIT", why)) return 1;
    const bool duplicate = sqlite3_extended_errcode(state->db) == SQLITE_CONSTRAINT_UNIQUE;
    rolled_back(*state, why);
    id = 0;
    // The write lock is taken before the look for the same bytes, so this is
    // only a safeguard: the unique column speaks for the other writer.
    std::string ignored;
    if (duplicate) find_same(*state, request.sha256, existing, ignored);
    return 0;
}

int sqlite_parts(ArchiveState* state, std::vector<std::string>& parts, std::string& why) {
    Use select = statement(*state, PARTS, why);
    if (!select) return 0;
    int step;
    while ((step = sqlite3_step(select)) == SQLITE_ROW) parts.push_back(text(select, 0));
    return step == SQLITE_DONE ? 1 : failed(*state, why);
}

int load_surveys(ArchiveState& state, const std::string& part, std::vector<StoredSurvey>& surveys,
                 std::string& why) {
    Use select = statement(state, SURVEYS, why);
    if (!select) return 0;
    put(select, 1, part);
    int step;
    while ((step = sqlite3_step(select)) == SQLITE_ROW) read_survey(select, surveys.emplace_back());
    if (step != SQLITE_DONE) return failed(state, why);
    std::map<std::int64_t, StoredSurvey*> by_id;
    for (StoredSurvey& survey : surveys) by_id[survey.id] = &survey;
    Use notes = statement(state, NOTES, why);
    if (!notes) return 0;
    put(notes, 1, part);
    while ((step = sqlite3_step(notes)) == SQLITE_ROW) {
        auto found = by_id.find(integer(notes, 0));
        if (found != by_id.end()) found->second->facts.notes.push_back(text(notes, 1));
    }
    return step == SQLITE_DONE ? 1 : failed(state, why);
}

// A read transaction: the surveys and their notes as of one moment.
int sqlite_surveys(ArchiveState* state, const std::string& part, std::vector<StoredSurvey>& surveys,
                   std::string& why) {
    if (!exec(*state, "BEGIN", why)) return 0;
    if (!load_surveys(*state, part, surveys, why)) return rolled_back(*state, why);
    return exec(*state, "COMMIT", why) ? 1 : rolled_back(*state, why);
}

int load_points(ArchiveState& state, std::int64_t id, std::vector<Point>& points, bool& found, std::string& why) {
    Use count = statement(state, SURVEY_POINTS, why);
    if (!count) return 0;
    put(count, 1, id);
    int step = sqlite3_step(count);
    if (step != SQLITE_ROW) return step == SQLITE_DONE ? 1 : failed(state, why);
    found = true;
    points.reserve(static_cast<std::size_t>(integer(count, 0)));
    Use select = statement(state, POINTS, why);
    if (!select) return 0;
    put(select, 1, id);
    while ((step = sqlite3_step(select)) == SQLITE_ROW) {
        Point& point = points.emplace_back();
        point.index = integer(select, 0);
        point.id = text(select, 1);
        point.text = text(select, 2);
        point.value = real(select, 3);
        point.decimals = static_cast<int>(integer(select, 4));
        point.units = text(select, 5);
        const std::int64_t flags = integer(select, 6);
        point.empty = (flags & EMPTY) != 0;
        point.lost = (flags & LOST) != 0;
        point.velocity = (flags & VELOCITY) != 0;
        point.ascan = (flags & ASCAN) != 0;
        point.bscan = (flags & BSCAN) != 0;
        point.notes = static_cast<std::uint32_t>(integer(select, 7));
        point.setup = static_cast<int>(integer(select, 8));
        point.alarm = text(select, 9);
        point.low_alarm = real(select, 10);
    }
    return step == SQLITE_DONE ? 1 : failed(state, why);
}

int sqlite_points(ArchiveState* state, std::int64_t id, std::vector<Point>& points, bool& found,
                  std::string& why) {
    if (!exec(*state, "BEGIN", why)) return 0;
    if (!load_points(*state, id, points, found, why)) return rolled_back(*state, why);
    return exec(*state, "COMMIT", why) ? 1 : rolled_back(*state, why);
}

int sqlite_file(ArchiveState* state, std::int64_t id, std::string& name, std::string& bytes, bool& found,
                std::string& why) {
    Use select = statement(*state, FILE, why);
    if (!select) return 0;
    put(select, 1, id);
    const int step = sqlite3_step(select);
    if (step != SQLITE_ROW) return step == SQLITE_DONE ? 1 : failed(*state, why);
    found = true;
    if (sqlite3_column_type(select, 1) == SQLITE_NULL) {
        why = state->path + ": the file of survey " + std::to_string(id) + " is missing";
        return 0;
    }
    name = text(select, 0);
    const void* blob = sqlite3_column_blob(select, 1);
    bytes.assign(static_cast<const char*>(blob), static_cast<std::size_t>(sqlite3_column_bytes(select, 1)));
    return 1;
}

int replace_minimums(ArchiveState& state, const std::string& part, const std::vector<MinimumRow>& rows,
                     std::string& why) {
    std::int64_t id = 0;
    if (!part_id(state, part, id, why)) return 0;
    Use clear = statement(state, CLEAR_MINIMUMS, why);
    if (!clear) return 0;
    put(clear, 1, id);
    if (!done(state, clear, why)) return 0;
    Use insert = statement(state, ADD_MINIMUM, why);
    if (!insert) return 0;
    put(insert, 1, id);
    for (const MinimumRow& row : rows) {
        put(insert, 2, row.id);
        sqlite3_bind_double(insert, 3, row.value);
        put(insert, 4, row.units);
        if (!done(state, insert, why)) return 0;
        sqlite3_reset(insert);
    }
    return 1;
}

int sqlite_set_minimums(ArchiveState* state, const std::string& part, const std::vector<MinimumRow>& rows,
                        std::string& why) {
    if (!exec(*state, "BEGIN IMMEDIATE", why)) return 0;
    if (!replace_minimums(*state, part, rows, why)) return rolled_back(*state, why);
    return exec(*state, "COMMIT", why) ? 1 : rolled_back(*state, why);
}

int sqlite_minimums(ArchiveState* state, const std::string& part, std::vector<MinimumRow>& rows,
                    std::string& why) {
    Use select = statement(*state, MINIMUMS, why);
    if (!select) return 0;
    put(select, 1, part);
    int step;
    while ((step = sqlite3_step(select)) == SQLITE_ROW)
        rows.push_back({text(select, 0), sqlite3_column_double(select, 1), text(select, 2)});
    return step == SQLITE_DONE ? 1 : failed(*state, why);
}

// Each row that a query returns is a problem, made into words by `say`.
int problems_of(ArchiveState& state, const char* sql, std::vector<std::string>& problems,
                std::string (*say)(sqlite3_stmt*), std::string& why) {
    sqlite3_stmt* select = nullptr;
    if (sqlite3_prepare_v2(state.db, sql, -1, &select, nullptr) != SQLITE_OK) return failed(state, why);
    int step;
    while ((step = sqlite3_step(select)) == SQLITE_ROW) problems.push_back(say(select));
    const int ok = step == SQLITE_DONE ? 1 : failed(state, why);
    sqlite3_finalize(select);
    return ok;
}

int sqlite_check(ArchiveState* state, std::vector<std::string>& problems, std::string& why) {
    // The integrity check gives the single row "ok" when it finds nothing.
    return problems_of(*state, "SELECT * FROM pragma_integrity_check WHERE integrity_check != 'ok'", problems,
                       [](sqlite3_stmt* row) { return "integrity check: " + text(row, 0); }, why) &&
           problems_of(*state, "SELECT DISTINCT \"table\", parent FROM pragma_foreign_key_check", problems,
                       [](sqlite3_stmt* row) {
                           return "rows of " + text(row, 0) + " refer to missing rows of " + text(row, 1);
                       },
                       why) &&
           problems_of(*state,
                       "SELECT id, points, (SELECT count(*) FROM point WHERE key BETWEEN s.id << 32 AND (s.id << 32) + 4294967295)"
                       " AS stored"
                       " FROM survey s WHERE points != stored ORDER BY id",
                       problems,
                       [](sqlite3_stmt* row) {
                           return "survey " + text(row, 0) + " has " + text(row, 2) + " of its " + text(row, 1) +
                                  " points";
                       },
                       why) &&
           problems_of(*state,
                       "SELECT DISTINCT key >> 32 AS id FROM point WHERE id NOT IN (SELECT id FROM survey)"
                       " ORDER BY id",
                       problems,
                       [](sqlite3_stmt* row) { return "points of survey " + text(row, 0) + ", which is not stored"; },
                       why) &&
           problems_of(*state,
                       "SELECT id FROM survey s WHERE NOT EXISTS"
                       " (SELECT 1 FROM survey_file f WHERE f.survey_id = s.id) ORDER BY id",
                       problems, [](sqlite3_stmt* row) { return "survey " + text(row, 0) + " has no file"; }, why);
}

// Makes sure the open file is an archive of a version this program reads
// (creating its schema where asked and the file holds nothing), in the
// write-ahead log mode. 1, or 0 with `why`.
int prepare_archive(ArchiveState& state, const std::string& path, bool create, std::string& why) {
    // Only reads until the file has proved to be an archive of this version.
    // They go through SQLite's locks, so a file that another process is
    // writing is seen before or after that write, never half way; a file
    // that is no database is never written to.
    SchemaFacts facts;
    if (!read_schema(state, facts, why)) return 0;
    if (create && facts.application_id == 0 && facts.objects == 0) {
        if (!create_schema(state, why) || !read_schema(state, facts, why)) return 0;
    }
    if (facts.application_id != APPLICATION_ID) {
        why = path + " is not a survey archive (an SQLite database of another program)";
        return 0;
    }
    if (facts.version > SCHEMA_VERSION) {
        why = path + " is an archive of a newer version of ugf (schema " + std::to_string(facts.version) +
              "; this one reads schema " + std::to_string(SCHEMA_VERSION) + ")";
        return 0;
    }
    if (facts.version < 1 || facts.tables != static_cast<std::int64_t>(std::size(TABLES))) {
        why = path + " is not a survey archive (its tables are missing)";
        return 0;
    }
    // Full synchronisation: a survey whose add has returned survives a power
    // cut too, at the cost of one flush of the log per add.
    if (!use_write_ahead_log(state, why) ||
        !exec(state, "PRAGMA synchronous = FULL; PRAGMA foreign_keys = ON; PRAGMA cache_size = -65536", why))
        return 0;
    return 1;
}

}  // namespace

const ArchiveOps sqlite_archive_ops = {sqlite_close,   sqlite_add,          sqlite_parts,
                                       sqlite_surveys, sqlite_points,       sqlite_file,
                                       sqlite_set_minimums, sqlite_minimums, sqlite_check};

int sqlite_archive_open(const std::string& path, bool create, ArchiveState*& opened, std::string& why) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (std::filesystem::is_directory(status)) {
        why = path + " is a folder, not a survey archive";
        return 0;
    }
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        why = path + " is not a survey archive (not a file)";
        return 0;
    }
    // An empty file is refused, but where an archive may be created it may be
    // one that another process is creating right now: that process holds the
    // write lock until its schema is in, and the look below waits for it.
    if (std::filesystem::exists(status)) {
        if (!create && std::filesystem::file_size(path, error) == 0 && !error) {
            why = path + " is not a survey archive (an empty file)";
            return 0;
        }
    } else if (!create) {
        why = "no archive at " + path + " (ugf archive add creates one)";
        return 0;
    }

    auto state = std::make_unique<ArchiveState>();
    state->path = path;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | (create ? SQLITE_OPEN_CREATE : 0);
    // SQLite may read a name that starts with "file:" as a URI with options;
    // the same file by a name that doesn't is taken as it is.
    const std::string name = path.rfind("file:", 0) == 0 ? "./" + path : path;
    if (sqlite3_open_v2(name.c_str(), &state->db, flags, nullptr) != SQLITE_OK) {
        why = "cannot open " + path + ": " + (state->db ? sqlite3_errmsg(state->db) : "out of memory");
        return 0;
    }
    sqlite3_extended_result_codes(state->db, 1);
    sqlite3_busy_timeout(state->db, BUSY_TIMEOUT_MS);

    // Several processes may open (and create) one archive at once. SQLite
    // waits for the others' locks (the busy timeout) but gives up at once
    // where waiting could deadlock, as when the log mode changes under a
    // reader; such a step is taken again until the timeout has passed.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(BUSY_TIMEOUT_MS);
    for (;;) {
        why.clear();
        state->last_error = SQLITE_OK;
        if (prepare_archive(*state, path, create, why) != 0) break;
        const int code = state->last_error;
        if ((code != SQLITE_BUSY && code != SQLITE_LOCKED) || std::chrono::steady_clock::now() >= deadline) return 0;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    opened = state.release();
    return 1;
}

}  // namespace ugf::kit
