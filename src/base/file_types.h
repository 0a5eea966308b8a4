// The kinds of survey (DlFileType) and of instrument (GageType) that a
// datalogger file declares in its header. The file type decides the file's
// map, the identifier rules and the export; the gage type the record
// layouts and the texts.
#pragma once

#include <cstdint>

namespace ugf {

inline constexpr std::int32_t FILE_TYPE_LINEAR = 0;
inline constexpr std::int32_t FILE_TYPE_LINEAR_CPT = 1;
inline constexpr std::int32_t FILE_TYPE_2D = 2;
inline constexpr std::int32_t FILE_TYPE_2D_CPT = 3;
inline constexpr std::int32_t FILE_TYPE_3D = 4;
inline constexpr std::int32_t FILE_TYPE_BOILER = 5;
inline constexpr std::int32_t FILE_TYPE_NOTES = 6;
inline constexpr std::int32_t FILE_TYPE_SETUP = 7;
inline constexpr std::int32_t FILE_TYPE_MANUAL = 8;
inline constexpr std::int32_t FILE_TYPE_INCREMENTAL = 9;
inline constexpr std::int32_t FILE_TYPE_2D_MANUAL = 10;
inline constexpr std::int32_t FILE_TYPE_3D_MANUAL = 11;
inline constexpr std::int32_t FILE_TYPE_4D_MANUAL = 12;

// Any other gage type reads like the two thickness gauges.
inline constexpr std::int32_t GAGE_CORROSION = 5;
inline constexpr std::int32_t GAGE_PRECISION = 6;
inline constexpr std::int32_t GAGE_FLAW_DETECTOR = 7;

// Types 10, 11 and 12: the dimensions are counted by labels, not texts, and
// the file keeps the labels in front of its setups.
inline bool is_manual_layout(std::int32_t file_type) {
    return file_type >= FILE_TYPE_2D_MANUAL && file_type <= FILE_TYPE_4D_MANUAL;
}

}  // namespace ugf
