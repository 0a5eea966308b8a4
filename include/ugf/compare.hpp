// Two surveys of one part, matched point by point by identifier: the loss
// of thickness from the baseline to the latest, its share of the baseline,
// with the years between them the corrosion rate, and with a minimum the
// years left until it. The rows make a CSV and a page with a loss map laid
// out as the latest survey's grids. Nothing here reads or writes a file.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "ugf/survey.hpp"

namespace ugf::kit {

struct CompareOptions {
    std::optional<double> years;    // between the surveys, above 0
    std::optional<double> minimum;  // in the latest's units; else each latest reading's low alarm
};

struct CompareRow {
    enum Status { BOTH, BASELINE_ONLY, LATEST_ONLY };
    std::string id;
    Status status = BOTH;
    // The cells' texts, trimmed, and their numbers in the latest's units
    // (NaN where the cell shows no thickness).
    std::string baseline_text, latest_text;
    static constexpr double NONE = std::numeric_limits<double>::quiet_NaN();
    double baseline = NONE, latest = NONE;
    double loss = NONE;   // baseline - latest
    double share = NONE;  // loss / baseline, in percent
    double rate = NONE;   // loss per year
    double limit = NONE;  // the minimum that applies
    double life = NONE;   // years until the minimum, where the rate is above 0
    std::int64_t latest_index = -1;  // storage index in the latest survey
    bool latest_empty = false, latest_lost = false;
};

struct Comparison {
    std::string baseline_path, latest_path;
    Facts baseline_facts, latest_facts;
    std::string baseline_units, units;  // units: the latest's, which all numbers are in
    int decimals = 3;
    CompareOptions options;
    // In the latest's walk order, then the points of the baseline only.
    std::vector<CompareRow> rows;
    std::size_t both = 0, baseline_only = 0, latest_only = 0, compared = 0;
    std::vector<Grid> grids;  // the latest's
};

// 0 (with `why`) when a survey has no output or a read fails.
int compare_surveys(Survey& baseline, Survey& latest, const CompareOptions& options, Comparison& comparison,
                    std::string& why);

// One header row and a row per identifier; cells quoted where they hold a
// comma, a quote or a line end.
std::string compare_csv(const Comparison& comparison);

// The page: the two surveys, a summary, the loss map (or profile) and the
// points by largest loss. `latest` draws the map's cells.
int compare_page(const Comparison& comparison, Survey& latest, std::string& page, std::string& why);

}  // namespace ugf::kit
