// The statistics of a survey's readings: how many points hold what, the
// extremes with the identifiers of their points, mean, spread, and the
// readings below a minimum. A reading's value is the number its grid cell
// shows, in the survey's units; sound velocity checks are counted apart.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "ugf/survey.hpp"

namespace ugf::kit {

struct Stats {
    std::string path;
    std::string instrument;
    std::string model;
    std::string file_type_name;
    std::string units;  // of the most readings; others are converted to these
    std::uint64_t points = 0;
    std::uint64_t readings = 0;  // thickness readings with a number
    std::uint64_t empty = 0;
    std::uint64_t lost = 0;
    std::uint64_t velocity = 0;
    // Extremes as their cells print them, with their points.
    std::string min_text, min_id, max_text, max_id;
    double min = std::numeric_limits<double>::quiet_NaN();
    double max = std::numeric_limits<double>::quiet_NaN();
    double mean = std::numeric_limits<double>::quiet_NaN();
    double stddev = std::numeric_limits<double>::quiet_NaN();  // population
    double cv = std::numeric_limits<double>::quiet_NaN();      // stddev / mean, in percent
    int decimals = 0;                                          // the most a reading shows
    // The minimum: "--minimum", "low alarm" (of each reading's setup) or "".
    std::string minimum_source;
    double minimum = std::numeric_limits<double>::quiet_NaN();  // with --minimum
    std::uint64_t below = 0;
    double below_share = std::numeric_limits<double>::quiet_NaN();  // percent of readings
};

// Reads every point of the open survey. `minimum` replaces the setups' low
// alarms. 0 (with `why`) when a read fails.
int survey_stats(Survey& survey, std::optional<double> minimum, Stats& stats, std::string& why);

// A value in units `from` ("IN", "MM", ...) in units `to`: lengths convert
// into each other, any other pair gives NaN.
double convert_length(double value, const std::string& from, const std::string& to);

// A number with `decimals` digits behind the point; "" for not a number.
std::string fixed(double value, int decimals);

// A CSV cell: the text, quoted (RFC 4180) where it holds a comma, a quote or
// a line end.
std::string csv_cell(const std::string& text);

// The table rows of `ugf stats`, label and value, for one survey.
std::string stats_text(const Stats& stats);
nlohmann::ordered_json stats_json(const Stats& stats);

}  // namespace ugf::kit
