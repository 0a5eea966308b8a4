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

// NOTES, SETUP and INCREMENTAL files have no output in either form, nor has
// an unknown type.
inline bool file_type_has_output(std::int32_t file_type) {
    return file_type >= FILE_TYPE_LINEAR && file_type <= FILE_TYPE_4D_MANUAL && file_type != FILE_TYPE_NOTES &&
           file_type != FILE_TYPE_SETUP && file_type != FILE_TYPE_INCREMENTAL;
}

// How the grid form lays a survey out. "LINEAR" and "MANUAL" surveys have no
// table: their grid form is a line of identifier and value for each point in
// the walk's order. Every other type is one or more tables of one dimension
// across and one down; dimension 2 (and 3) make groups of columns that stand
// side by side, one title row for each.
enum GridKind : std::int32_t {
    GRID_LINES = 0,
    GRID_1D = 1,  // LINEAR+CPT: custom points (dimension 0) across, dimension 1 down
    GRID_2D = 2,  // 2D, 2D-MANUAL: dimension 1 across, dimension 0 down
    GRID_3D = 3,  // 2D+CPT, 3D, BOILER, 3D-MANUAL: dimension 2 in groups of dimension 0 across, dimension 1 down
    GRID_4D = 4,  // 4D-MANUAL: dimensions 3, 2 and 0 across, dimension 1 down
};

struct GridShape {
    GridKind kind = GRID_LINES;
    int across = 0;      // the dimension of the columns
    int down = 0;        // the dimension of the rows
    int groups = 0;      // dimensions above those two that group the columns (0, 1 or 2)
    int title_rows = 0;  // rows of titles above the cells
};

inline GridShape grid_shape(std::int32_t file_type) {
    switch (file_type) {
        case FILE_TYPE_LINEAR:
        case FILE_TYPE_MANUAL: return {GRID_LINES, 0, 0, 0, 0};
        case FILE_TYPE_LINEAR_CPT: return {GRID_1D, 0, 1, 0, 1};
        case FILE_TYPE_2D:
        case FILE_TYPE_2D_MANUAL: return {GRID_2D, 1, 0, 0, 1};
        case FILE_TYPE_4D_MANUAL: return {GRID_4D, 0, 1, 2, 3};
        default: return {GRID_3D, 0, 1, 1, 2};
    }
}

// The storage index of the point at positions x, y, k and m of dimensions 0
// to 3 of a box of sizes s0, s1 and s2 (dimension 0 runs fastest). It is
// computed in 32 bits, as the slot offsets are: the huge sizes of a damaged
// file wrap here exactly as they do in the slot table.
inline std::uint32_t grid_storage_index(std::uint32_t s0, std::uint32_t s1, std::uint32_t s2, std::uint32_t x,
                                        std::uint32_t y, std::uint32_t k, std::uint32_t m) {
    return ((m * s2 + k) * s1 + y) * s0 + x;
}

}  // namespace ugf
