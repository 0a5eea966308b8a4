// libFuzzer target: a part's required thicknesses as CSV text and a survey
// image, cut apart where the first two bytes say; the survey's points are
// taken as two dated surveys of the part, and the history, its CSV, JSON and
// page are made from them with that table.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "ugf/history.hpp"
#include "ugf/history_page.hpp"
#include "ugf/survey.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    const std::size_t cut = (std::size_t{data[0]} << 8 | data[1]) * (size - 2) / 65536;
    const std::string table(reinterpret_cast<const char*>(data + 2), cut);
    static ugf::kit::Survey survey;
    std::string why;
    ugf::kit::HistoryOptions options;
    options.as_of = 20000;
    std::vector<ugf::kit::MinimumRow> rows;
    if (ugf::kit::parse_minimums(table, rows, why) != 0) {
        for (const auto& row : rows) options.minimums[row.id] = {row.value, row.units};
    }
    if (ugf::kit::open_survey_memory(survey, data + 2 + cut, size - 2 - cut, why) == 0) return 0;
    std::vector<ugf::kit::DatedSurvey> surveys(2);
    for (std::size_t k = 0; k < surveys.size(); ++k) {
        surveys[k].id = static_cast<std::int64_t>(k + 1);
        surveys[k].date = 18000 + 1000 * static_cast<std::int32_t>(k);
        surveys[k].name = "survey.ugf";
    }
    // The second survey keeps every other point, so that rates, lost
    // readings and points of one survey only all occur.
    std::size_t n = 0;
    ugf::kit::for_each_point(survey, [&](const ugf::kit::Point& p) {
        surveys[0].points.push_back(p);
        if (n++ % 2 == 0) surveys[1].points.push_back(p);
        return n < 100000 ? 1 : 0;
    }, why);
    ugf::kit::History history;
    if (ugf::kit::make_history("part", surveys, options, history, why) == 0) return 0;
    ugf::kit::history_csv(history);
    ugf::kit::history_json(history).dump();
    std::vector<ugf::kit::Grid> grids;
    ugf::kit::survey_grids(survey, grids, why);
    std::string page;
    ugf::kit::history_page(history, surveys, grids, page, why);
    return 0;
}
