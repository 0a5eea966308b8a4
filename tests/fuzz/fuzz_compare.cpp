// libFuzzer target: the input cut in two at a point named by its first two
// bytes, each part a datalogger image; the two are compared and their CSV
// and page made.
#include <cstddef>
#include <cstdint>
#include <string>

#include "ugf/compare.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static ugf::kit::Survey baseline, latest;
    if (size < 2) return 0;
    const std::size_t cut = 2 + (static_cast<std::size_t>(data[0]) << 8 | data[1]) * (size - 2) / 65536;
    std::string why, page;
    if (ugf::kit::open_survey_memory(baseline, data + 2, cut - 2, why) == 0) return 0;
    if (ugf::kit::open_survey_memory(latest, data + cut, size - cut, why) == 0) return 0;
    ugf::kit::Comparison comparison;
    ugf::kit::CompareOptions options;
    options.years = 3;
    options.minimum = 0.1;
    if (ugf::kit::compare_surveys(baseline, latest, options, comparison, why) == 0) return 0;
    const std::string csv = ugf::kit::compare_csv(comparison);
    ugf::kit::compare_page(comparison, latest, page, why);
    return 0;
}
