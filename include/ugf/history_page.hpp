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

}  // namespace ugf::kit
