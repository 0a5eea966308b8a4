// One stored point of a distance-amplitude curve of the flaw detector.
#pragma once

#include <cstdint>

namespace ugf {

inline constexpr int DAC_POINT_COUNT = 25;

struct DacPoint {
    std::uint16_t dac_count = 0;      // clock counts (80 to the microsecond)
    std::uint16_t dac_amplitude = 0;  // 0 to 511; 0 ends the list
};

}  // namespace ugf
