// libFuzzer target: any bytes as a datalogger image, opened by the toolkit
// and walked for its statistics, its grids and the reading of each cell.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "ugf/stats.hpp"
#include "ugf/survey.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static ugf::kit::Survey survey;
    std::string why;
    if (ugf::kit::open_survey_memory(survey, data, size, why) == 0) return 0;
    ugf::kit::Stats stats;
    ugf::kit::survey_stats(survey, std::nullopt, stats, why);
    std::vector<ugf::kit::Grid> grids;
    if (ugf::kit::survey_grids(survey, grids, why) != 0) {
        for (const ugf::kit::Grid& grid : grids) {
            for (std::int64_t index : grid.cells) {
                ugf::kit::Point point;
                if (ugf::kit::read_point(survey, index, point, why) == 0) break;
            }
        }
    }
    return 0;
}
