// The report page of one survey: its facts and statistics, the thickness
// map of each grid (or the profile of a survey without a grid), the readings
// below the minimum, the gate alarms of a flaw detector, and every stored
// A-scan and B-scan. One self-contained HTML text that a browser shows and
// prints; no file is read or written here.
#pragma once

#include <optional>
#include <string>

#include "ugf/survey.hpp"

namespace ugf::kit {

struct ReportOptions {
    // In the survey's units. Without a minimum, each reading's setup's low
    // alarm (where one is set) is its minimum.
    std::optional<double> minimum;
    // Centres the colour scale; marked on the legend.
    std::optional<double> nominal;
};

// 0 (with `why`) when the survey has no output or a read fails.
int survey_report(Survey& survey, const ReportOptions& options, std::string& page, std::string& why);

}  // namespace ugf::kit
