// The report page of a part's inspection history: the part and its surveys,
// a summary, a map laid out as the latest survey's grids and coloured by
// remaining life (a profile in walk order for a survey without a grid), the
// points by next inspection, and for the points with the shortest remaining
// lives a chart of thickness over the years with the projection to the
// required thickness. One self-contained HTML text; nothing here reads a
// file or an archive, so the command line and the page make the same report
// from surveys they hold.
#pragma once

#include <string>
#include <vector>

#include "ugf/history.hpp"
#include "ugf/survey.hpp"

namespace ugf::kit {

// How many points get a chart of their readings over the years.
inline constexpr std::size_t HISTORY_CHARTS = 6;

// `history` as make_history made it from `surveys` (the same list: the
// page counts their points and lays the map out from the latest one's
// points). `latest_grids` are the latest survey's grids (survey_grids), empty
// for a survey without a grid. 0 (with `why`) when the history has no survey.
int history_page(const History& history, const std::vector<DatedSurvey>& surveys,
                 const std::vector<Grid>& latest_grids, std::string& page, std::string& why);

// The same with the map laid out as the grids of `latest`, the latest
// survey open (as a profile where it has no grid); 0 (with `why`) also
// where its grids can't be read.
int history_page(const History& history, const std::vector<DatedSurvey>& surveys, Survey& latest,
                 std::string& page, std::string& why);

// The endings of a part's history outputs.
inline constexpr const char* HISTORY_CSV_ENDING = "_history.csv";
inline constexpr const char* HISTORY_PAGE_ENDING = "_history.html";

// The name of a part's history output: the part's name, made fit for a file
// name on any system (control characters and / \ : * ? " < > | become "_",
// and a name that is empty or begins with "." gets a "_" in front), and the
// ending.
std::string history_output_name(const std::string& part, const std::string& ending);

}  // namespace ugf::kit
