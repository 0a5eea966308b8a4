// The survey archive: every dated survey of a part, year after year, kept in
// one store with each survey's facts, its points as the grid shows them and
// the file's own bytes, so that any survey can be converted again from the
// archive alone; and per part, the required thickness of each identifier.
//
// One interface, one implementation per kind of store, chosen when the
// archive is opened: a file path opens an SQLite file, a postgresql:// or
// postgres:// URI an archive on a PostgreSQL server. Every implementation
// gives the same results; the orders and texts below are part of that
// contract.
//
// An operation that can fail returns 1, or 0 with `why` saying what went
// wrong in words that the command line prints after "ugf: ". An archive is
// used by one thread at a time; several processes may use one archive at once.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ugf/history.hpp"
#include "ugf/survey.hpp"

namespace ugf::kit {

struct ArchiveOps;    // the implementation's table of operations
struct ArchiveState;  // the implementation's connection

struct Archive {
    const ArchiveOps* ops = nullptr;  // null while closed
    ArchiveState* state = nullptr;
    std::string where;  // as given to archive_open
    std::string name;   // in messages: the file's path, or HOST/DATABASE of a server (no user, no password)

    Archive() = default;
    Archive(const Archive&) = delete;
    Archive& operator=(const Archive&) = delete;
    ~Archive();
};

// Opens the archive at `where`: a file path, or a libpq connection URI
// (postgresql://USER@HOST:PORT/DATABASE?sslmode=...; the password comes from
// libpq's password file, PGPASSWORD or a service file). A missing archive is
// created only when `create` is set; otherwise "no archive at PATH (ugf
// archive add creates one)". A file or database that is not an archive, or
// an archive of a newer schema than this program knows, is refused and left
// as it is; so is a server that can't be reached or refuses the login (one
// line with libpq's reason).
int archive_open(Archive& archive, const std::string& where, bool create, std::string& why);
void archive_close(Archive& archive);

// A survey as stored.
struct StoredSurvey {
    std::int64_t id = 0;  // from 1, in the order of adding
    std::string part;
    std::int32_t date = 0;  // days since 1970-01-01
    std::string file_name;  // the last part of the file's path
    Facts facts;
    std::uint64_t points = 0;    // stored points, in walk order
    std::uint64_t readings = 0;  // of them, the points with a reading (not empty)
    std::string sha256;          // of the file's bytes, 64 lower-case hex digits
};

// A survey to store.
struct NewSurvey {
    std::string part;       // not empty
    std::int32_t date = 0;  // days since 1970-01-01, a date of the years 1 to 9999
    std::string file_name;  // a path is cut to its last part
    Facts facts;
    std::vector<Point> points;  // in walk order
    std::string bytes;          // the file's own bytes
};

// Stores a survey, all of it or nothing, and sets `id`. A file whose bytes
// are already stored is refused: `existing` is set to that survey's id and
// `why` names it ("the same file is already stored as survey 12 (tank4,
// 2026-03-01, tank4_2026.ugf)"); nothing changes. `existing` is 0 otherwise.
int archive_add(Archive& archive, const NewSurvey& survey, std::int64_t& id, std::int64_t& existing,
                std::string& why);

// The names of the parts, in byte order.
int archive_parts(Archive& archive, std::vector<std::string>& parts, std::string& why);

// The surveys of a part ("" for all parts), by part (byte order), then date,
// then id. An unknown part has none.
int archive_surveys(Archive& archive, const std::string& part, std::vector<StoredSurvey>& surveys,
                    std::string& why);

// The points of a survey in walk order, as they were added. An unknown id
// is refused ("no survey 12 in the archive").
int archive_points(Archive& archive, std::int64_t survey_id, std::vector<Point>& points, std::string& why);

// The stored file of a survey: its name and its bytes.
int archive_file(Archive& archive, std::int64_t survey_id, std::string& name, std::string& bytes,
                 std::string& why);

// The name a survey's file is written back under: the stored name's last
// part (an archive written by hand may hold a path), or "survey_ID.ugf"
// where that would name no file of a folder.
std::string archive_file_out_name(std::int64_t survey_id, const std::string& stored_name);

// Replaces the part's table of required thicknesses as a whole (an empty
// table clears it). An identifier given twice, or a value that is not a
// finite number, is refused and nothing changes.
int archive_set_minimums(Archive& archive, const std::string& part, const std::vector<MinimumRow>& rows,
                         std::string& why);

// The part's required thicknesses, by identifier (byte order).
int archive_minimums(Archive& archive, const std::string& part, std::vector<MinimumRow>& rows,
                     std::string& why);

// Checks the store's consistency: its own integrity check, and every survey
// has all of its points and its file. `why` lists what is wrong.
int archive_check(Archive& archive, std::string& why);

struct CopyCounts {
    std::uint64_t copied = 0;          // surveys added to the target
    std::uint64_t skipped = 0;         // surveys whose bytes the target already held
    std::uint64_t minimum_tables = 0;  // parts whose required thicknesses were copied
};

// Copies every survey of `from` (its facts, points and file) into `to` in
// the order they were stored, each one transaction in `to`; a survey whose
// bytes `to` already holds is skipped and counted. Then each part's table of
// required thicknesses replaces that part's table in `to` (a part without
// one leaves the target's as it is). Into an archive that holds no other
// surveys of these parts, the copy's histories are the original's; its ids
// may differ. Stops at the first failure, with what was copied until then
// kept.
int archive_copy(Archive& from, Archive& to, CopyCounts& counts, std::string& why);

// The SHA-256 of bytes, as 64 lower-case hex digits.
std::string sha256_hex(const std::string& bytes);

// What the programs that use an archive share (toolkit/archive/surveys.cpp).

// How a program's user gives a date or a part that a survey lacks, as the
// messages asking for one say it: the command line's options by default.
struct AskFor {
    std::string date = "--date YYYY-MM-DD";
    std::string part = "--part NAME";
};

// Reads the survey file at `path` into a survey to add: its bytes, its facts
// and its points read from those very bytes. Its date is `date` when given,
// else the last date in the file name, else in a folder name above it
// (date_in_path). Its part is `part` when not empty, else the survey's
// description trimmed of blanks, tabs and line ends, else the file name
// without its extension, its last date and the one separator ("_", "-", "."
// or a space) before that date, or else after it. 0 with `why`: "not a .ugf
// file", "no date: name it in the file name (tank4_2026-03-01.ugf) or give "
// and ask.date, "no part: give " and ask.part, "cannot open: ...", or what
// `ugf convert` says of a survey it can't convert.
int read_new_survey(const std::string& path, std::optional<std::int32_t> date, const std::string& part,
                    const AskFor& ask, NewSurvey& survey, std::string& why);

// The part's history from all of its surveys in the archive (`surveys`, with
// their points, for the page) and its table of required thicknesses, which
// replaces `options.minimums`. A part without a survey is refused: "no
// survey of PART in NAME".
int archive_history(Archive& archive, const std::string& part, HistoryOptions options,
                    std::vector<DatedSurvey>& surveys, History& history, std::string& why);

}  // namespace ugf::kit
