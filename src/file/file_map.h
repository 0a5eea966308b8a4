// The map of a datalogger image: where each region, each header field and
// each part of a scan block lies. Every reader and writer of the file takes
// its offsets from here.
//
// A datalogger file is a fixed-layout big-endian image. Two layouts exist:
// the standard one (file types 0 to 9) and the manual one (types 10 to 12),
// which has a table of dimension labels between the header and the setups.
//
//   region                  standard   manual     size
//   header                  0x0000     0x0000     768 bytes
//   custom point labels     0x00E2     0x00E2     20 x 20 bytes, in the header
//   manual dimension labels -          0x0300     4 x 100 x 20 bytes
//   setup table             0x0300     0x2240     32 x 128 bytes
//   note table              0x1300     0x3240     16 x 32 bytes
//   slot table              0x1500     0x3440     one slot a test point
//
// A slot is a 16-byte record; types 8 and 9 keep the reading's own
// identifier (21 bytes) behind it, 37 bytes in all. Scan blocks lie wherever
// a link record of a slot points.
#pragma once

#include <cstdint>

#include "base/file_types.h"

namespace ugf {

// Header fields (big-endian; texts are terminated within their width).
inline constexpr std::uint64_t HEADER_SIZE = 0x300;
inline constexpr std::uint64_t HDR_FILE_VERSION = 0x002;    // u16
inline constexpr std::uint64_t HDR_FILE_TYPE = 0x004;       // u16
inline constexpr std::uint64_t HDR_RESERVED_006 = 0x006;    // u8
// The character counts of dimensions 0, 1, 2 (and 3 in "4D-MANUAL") that cut
// the start and end identifiers; in manual files only display lengths.
inline constexpr std::uint64_t HDR_DIM_LENGTH[4] = {0x008, 0x00A, 0x00C, 0x0FA};  // u8 each
inline constexpr std::uint64_t HDR_PREFIX = 0x00E;          // text of 20
inline constexpr std::uint64_t HDR_START_ID = 0x022;        // text of 21
inline constexpr std::uint64_t HDR_END_ID = 0x038;          // text of 21
inline constexpr std::uint64_t HDR_ID_COUNT = 0x04E;        // u32
inline constexpr std::uint64_t HDR_RESERVED_058 = 0x058;    // u40
inline constexpr std::uint64_t HDR_CURRENT_INDEX = 0x05E;   // u40
inline constexpr std::uint64_t HDR_STEP[4] = {0x064, 0x06A, 0x070, 0x0FC};  // u40 each
inline constexpr std::uint64_t HDR_SETUP_COUNT = 0x076;     // u8
inline constexpr std::uint64_t HDR_DESCRIPTION = 0x078;     // text of 33
inline constexpr std::uint64_t HDR_INSPECTOR_ID = 0x09A;    // text of 33
inline constexpr std::uint64_t HDR_LOCATION = 0x0BC;        // text of 33
inline constexpr std::uint64_t HDR_GAGE_TYPE = 0x0DE;       // u8
inline constexpr std::uint64_t HDR_RESERVED_0E0 = 0x0E0;    // u8
inline constexpr std::uint64_t HDR_CUSTOM_POINT_LABELS = 0x0E2;
inline constexpr std::uint64_t HDR_FOURTH_INC = 0x102;      // u8
inline constexpr std::uint64_t HDR_DIM_LABEL_COUNT = 0x104; // u16 x 4
inline constexpr std::uint64_t HDR_WALK_PATTERN = 0x272;    // u8
inline constexpr std::uint64_t HDR_FIRST_INC = 0x274;       // u8
inline constexpr std::uint64_t HDR_SECOND_INC = 0x276;      // u8
inline constexpr std::uint64_t HDR_THIRD_INC = 0x278;       // u8
inline constexpr std::uint64_t HDR_ELEVATION_UNIT = 0x27A;  // u8
inline constexpr std::uint64_t HDR_RESERVED_27E = 0x27E;    // u40
inline constexpr std::uint64_t HDR_RESERVED_284 = 0x284;    // u32
inline constexpr std::uint64_t HDR_RESERVED_288 = 0x288;    // u8

// Tables.
inline constexpr int CUSTOM_POINT_LABEL_COUNT = 20;
inline constexpr int LABEL_TEXT_SIZE = 20;  // a custom point label: 19 characters and the terminator
inline constexpr int DIM_COUNT = 4;
inline constexpr int DIM_LABEL_MAX = 100;   // labels of one manual dimension
inline constexpr int DIM_LABEL_SIZE = 20;   // 19 characters and the terminator
inline constexpr std::uint64_t MANUAL_LABELS_OFFSET = 0x0300;
inline constexpr int SETUP_COUNT = 32;
inline constexpr std::uint32_t SETUP_STRIDE = 128;
inline constexpr int NOTE_COUNT = 16;
inline constexpr std::uint32_t NOTE_STRIDE = 32;
inline constexpr std::uint16_t NOTE_READ_MAX = 33;  // a 32-byte row may run into the next

// Slots.
inline constexpr std::uint32_t RECORD_SIZE = 16;
inline constexpr std::uint32_t STORED_ID_SLOT_SIZE = 37;  // record and a 21-byte identifier
inline constexpr std::uint16_t STORED_ID_READ_MAX = 21;

// Parts of a scan block, from the block's start (its 16-byte head).
inline constexpr std::uint64_t BSCAN_ASCAN_OFFSET = 76;     // an embedded A-scan block
inline constexpr std::uint64_t BSCAN_POINTS_OFFSET = 3164;  // the B-scan points
inline constexpr std::uint64_t FLAW_DAC_POINTS_OFFSET = 670;
// The peak data of a flaw detector A-scan: behind the DAC points when the
// block stores them, else in their place.
inline constexpr std::uint64_t FLAW_PEAK_OFFSET = 670;
inline constexpr std::uint64_t FLAW_PEAK_AFTER_DAC_OFFSET = 720;

// Where the tables of a file of one type begin.
struct FileMap {
    std::uint32_t setup_table = 0;
    std::uint32_t note_table = 0;
    std::uint32_t slot_table = 0;
    std::uint32_t slot_size = 0;
};

inline FileMap file_map(std::int32_t file_type) {
    const bool manual = is_manual_layout(file_type);
    const bool stored_ids = file_type == FILE_TYPE_MANUAL || file_type == FILE_TYPE_INCREMENTAL;
    return {manual ? 0x2240u : 0x0300u, manual ? 0x3240u : 0x1300u, manual ? 0x3440u : 0x1500u,
            stored_ids ? STORED_ID_SLOT_SIZE : RECORD_SIZE};
}

inline std::uint64_t setup_offset(const FileMap& map, int entry) {
    return map.setup_table + static_cast<std::uint64_t>(entry) * SETUP_STRIDE;
}

inline std::uint64_t note_offset(const FileMap& map, int note) {
    return map.note_table + static_cast<std::uint64_t>(note) * NOTE_STRIDE;
}

inline std::uint64_t custom_point_label_offset(int position) {
    return HDR_CUSTOM_POINT_LABELS + static_cast<std::uint64_t>(LABEL_TEXT_SIZE) * static_cast<std::uint64_t>(position);
}

// Label j of manual dimension d.
inline std::uint64_t manual_label_offset(int dimension, int j) {
    return MANUAL_LABELS_OFFSET + static_cast<std::uint64_t>(DIM_LABEL_SIZE) *
                                      static_cast<std::uint64_t>(DIM_LABEL_MAX * dimension + j);
}

// The slot of a storage index: its low 32 bits count, and the offset wraps
// at 2^32 as the instrument computes it.
inline std::uint64_t slot_offset(const FileMap& map, std::int64_t storage_index) {
    const std::uint32_t index = static_cast<std::uint32_t>(storage_index);
    return static_cast<std::uint32_t>(map.slot_table + index * map.slot_size);
}

// The identifier that types 8 and 9 keep behind the record of a slot.
inline std::uint64_t stored_id_offset(std::uint64_t slot) { return slot + RECORD_SIZE; }

// Number of slots that begin before the end of a file of `file_size` bytes.
inline std::uint64_t slot_count(const FileMap& map, std::uint64_t file_size) {
    const std::uint64_t first = map.slot_table;
    const std::uint64_t slot = map.slot_size;
    return file_size > first ? (file_size - first + slot - 1) / slot : 0;
}

}  // namespace ugf
