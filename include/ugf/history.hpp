// The inspection history of one part: the dated thickness readings of each
// of its points across every survey, the corrosion rates they make, the
// thickness the part may not go below, the remaining life and the dates of
// retirement and of the next inspection. Pure arithmetic on readings the
// caller already holds: nothing here reads a survey file or an archive, so
// the command line, the page and the Python module share it. docs/archive.md
// ("History arithmetic") gives every formula and text.
#pragma once

#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "ugf/survey.hpp"

namespace ugf::kit {

// Dates are days since 1970-01-01 in the proleptic Gregorian calendar; their
// texts are YYYY-MM-DD. Years 0001 to 9999.
constexpr std::int32_t NO_DATE = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t FIRST_DATE = -719162;  // 0001-01-01
constexpr std::int32_t LAST_DATE = 2932896;   // 9999-12-31

// "YYYY-MM-DD" or "YYYYMMDD", a real day of the calendar; 0 for anything else.
int parse_date(const std::string& text, std::int32_t& days);
// YYYY-MM-DD; "" for NO_DATE.
std::string date_text(std::int32_t days);
// The local date today.
std::int32_t today_days();
// The date a survey's path tells: the last date (YYYY-MM-DD or YYYYMMDD,
// standing apart from other digits) in the file name, else in the folder
// names from the nearest up. 0 when there is none.
int date_in_path(const std::string& path, std::int32_t& days);

// One survey of the part, dated. Of two surveys on one date the later stored
// (larger id; with equal ids the later in the list) counts for a point.
struct DatedSurvey {
    std::int64_t id = 0;  // the archive's key
    std::int32_t date = 0;
    std::string name;
    std::vector<Point> points;  // in walk order
};

struct Minimum {
    double value = 0;
    std::string units;  // "" means the history's units
};

// A required thickness of one identifier, as a part's table keeps it. Units
// "" means the units of the part's latest survey.
struct MinimumRow {
    std::string id;
    double value = 0;  // finite
    std::string units;
};

// The rows of a CSV table ID,MINIMUM[,UNITS] (RFC 4180 quoting; a first row
// whose minimum is no number is a header; units IN or MM in any case, or
// none). 0 with `why` naming the line ("line 3: the minimum is not a
// number: x") for a malformed line, a minimum not above 0 or an identifier
// given twice.
int parse_minimums(const std::string& text, std::vector<MinimumRow>& rows, std::string& why);

struct HistoryOptions {
    std::optional<double> minimum;            // for every point, in the history's units
    std::map<std::string, Minimum> minimums;  // per identifier
    double max_interval = 10;                 // years between inspections, above 0, at most 1000
    std::optional<std::int32_t> as_of;        // the day "due" is judged on; today when unset
};

enum class HistoryStatus { OK, DUE, BELOW_MINIMUM, ONE_READING, NO_THICKNESS };
enum class HistoryNote { NONE, NO_THICKNESS_IN_LATEST, NOT_IN_LATEST };

// A thickness reading, in the history's units.
struct Reading {
    std::int32_t date = 0;
    double value = 0;
    std::int64_t survey = 0;  // the id of its survey
};

struct HistoryRow {
    static constexpr double NONE = std::numeric_limits<double>::quiet_NaN();
    std::string id;
    HistoryStatus status = HistoryStatus::NO_THICKNESS;
    HistoryNote note = HistoryNote::NONE;
    std::vector<Reading> readings;  // one a date, oldest first
    // Thicknesses and their dates; NONE and NO_DATE where there is none.
    double first = NONE, previous = NONE, latest = NONE;
    std::int32_t first_date = NO_DATE, previous_date = NO_DATE, latest_date = NO_DATE;
    // Loss per year; the least-squares rate needs three readings.
    double long_term_rate = NONE, short_term_rate = NONE, least_squares_rate = NONE, governing_rate = NONE;
    double required = NONE;
    std::string required_from;   // "--minimum", "minimums", "low alarm" or ""
    double remaining_life = NONE;  // years
    std::int32_t retirement_date = NO_DATE, next_inspection = NO_DATE;
};

struct HistorySurvey {
    std::int64_t id = 0;
    std::int32_t date = 0;
    std::string name;
};

struct History {
    std::string part;
    std::string units;  // of the latest survey's readings, which all numbers are in
    int decimals = 0;   // the most a reading of that survey shows
    std::int32_t latest_date = NO_DATE;  // of the latest survey
    std::int32_t as_of = NO_DATE;
    HistoryOptions options;
    std::vector<HistorySurvey> surveys;  // oldest first
    // The latest survey's identifiers in its walk order, then those of older
    // surveys only, by the survey they were last in.
    std::vector<HistoryRow> rows;
};

// 0 (with `why`) for no survey, a survey date outside the years 0001 to
// 9999, options out of range, or a minimum whose units don't convert.
int make_history(const std::string& part, const std::vector<DatedSurvey>& surveys, const HistoryOptions& options,
                 History& history, std::string& why);

std::string history_status_text(HistoryStatus status);
// The row's note in words; "" when it has none.
std::string history_note_text(const History& history, const HistoryRow& row);

// A header row and a row per identifier; cells quoted where they hold a
// comma, a quote or a line end.
std::string history_csv(const History& history);
// The same fields, numbers unrounded, dates as texts, null where none.
nlohmann::ordered_json history_json(const History& history);

}  // namespace ugf::kit
