// libFuzzer target: any bytes as a datalogger image, through the C
// interface: opened from memory, walked point by point and scan by scan,
// every grid cell read, its figures taken and converted in both forms and
// as JSON, into a sink that refuses after a point the input's size picks.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "ugf/ugf.h"

namespace {

struct Budget {
    std::size_t left;
};

int take(void* context, const char*, std::size_t size) {
    auto& budget = *static_cast<Budget*>(context);
    if (size > budget.left) return 0;
    budget.left -= size;
    return 1;
}

int point(void*, const ugf_point*) { return 1; }
int ascan(void*, const ugf_ascan*) { return 1; }
int bscan(void*, const ugf_bscan*) { return 1; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ugf_survey* survey = nullptr;
    if (ugf_open_memory(data, size, &survey) == 0) {
        if (ugf_errcode(survey) == UGF_ERROR_NONE) std::abort();  // a failure always has its code
        ugf_close(survey);
        return 0;
    }
    ugf_points(survey, point, nullptr);
    ugf_scans(survey, ascan, bscan, nullptr);
    std::size_t grids = 0;
    if (ugf_grid_count(survey, &grids) != 0) {
        for (std::size_t k = 0; k < grids; ++k) {
            std::size_t rows = 0, columns = 0;
            if (ugf_grid_shape(survey, k, &rows, &columns, nullptr) == 0) break;
            std::vector<std::int64_t> cells(rows * columns);
            if (ugf_grid_cells(survey, k, cells.data(), cells.size()) == 0) break;
            ugf_point p;
            for (std::int64_t index : cells) {
                if (ugf_read_point(survey, index, &p) == 0) break;
            }
        }
    }
    ugf_statistics stats;
    ugf_stats(survey, NAN, &stats);
    const int flag_sets[] = {0, UGF_QUOTE, UGF_JSON};
    for (int flags : flag_sets) {
        for (int form : {UGF_GRID, UGF_DETAILED}) {
            Budget budget{size % 2 == 0 ? SIZE_MAX : size * 4};
            if (ugf_convert(survey, form, flags, take, &budget) == 0 && ugf_errmsg(survey)[0] == '\0') std::abort();
        }
    }
    ugf_close(survey);
    return 0;
}
