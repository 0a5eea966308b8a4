// The open datalogger file: the file's map, its decoded header, the setup
// table, the notes and the manual dimension labels, and the input stream.
//
// A datalogger file is a fixed-layout big-endian image. Two layouts exist:
// the standard one (file types 0 to 9) and the manual one (types 10 to 12),
// which has a table of dimension labels between the header and the setups.
//
//   region                  standard   manual     size
//   header                  0x0000     0x0000     768 bytes
//   manual dimension labels -          0x0300     4 x 100 x 20 bytes
//   setup table             0x0300     0x2240     32 x 128 bytes
//   note table              0x1300     0x3240     16 x 32 bytes
//   record table            0x1500     0x3440     16 or 37 bytes a slot
#pragma once

#include <array>
#include <cstdint>

#include "file/field.h"
#include "file/setup.h"
#include "ident/cursor.h"
#include "ident/id_spec.h"

namespace ugf {

// DlFileType: the kind of survey (FILE_TYPE_4D_MANUAL comes with the cursor).
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

// GageType: the instrument that wrote the file. Any other value reads like
// the two thickness gauges.
inline constexpr std::int32_t GAGE_CORROSION = 5;
inline constexpr std::int32_t GAGE_PRECISION = 6;
inline constexpr std::int32_t GAGE_FLAW_DETECTOR = 7;

inline constexpr std::uint32_t HEADER_SIZE = 0x300;
inline constexpr std::uint32_t MANUAL_LABELS_OFFSET = 0x0300;
inline constexpr std::uint32_t CUSTOM_POINT_LABELS_OFFSET = 0x0E2;

inline constexpr int NOTE_COUNT = 16;
inline constexpr std::uint32_t NOTE_STRIDE = 32;
inline constexpr std::uint16_t NOTE_READ_MAX = 33;  // a 32-byte row may run into the next
inline constexpr int NOTE_TEXT_SIZE = 31;           // 30 characters and the terminator

inline constexpr int CUSTOM_POINT_LABEL_COUNT = 20;
inline constexpr int DIM_COUNT = 4;
inline constexpr int DIM_LABEL_MAX = 100;    // labels of one manual dimension
inline constexpr int DIM_LABEL_SIZE = 20;    // 19 characters and the terminator
inline constexpr int LABEL_TEXT_SIZE = 20;   // the shared buffer of the label operations
inline constexpr int HEADER_TEXT_SIZE = 33;  // description, inspector, location

// The identifier split of the ranged file types: start and end identifiers
// are c2 characters of dimension 2, c1 of dimension 1, c0 of dimension 0.
inline constexpr int SPLIT_C2_MAX = 18;
inline constexpr int SPLIT_C1_MAX = 19;
inline constexpr int SPLIT_C0_MAX = 20;

// Types 10, 11 and 12 keep their dimension labels in front of the setups.
inline bool is_manual_layout(std::int32_t file_type) {
    return file_type >= FILE_TYPE_2D_MANUAL && file_type <= FILE_TYPE_4D_MANUAL;
}
inline std::uint32_t setup_table_offset(std::int32_t file_type) {
    return is_manual_layout(file_type) ? 0x2240u : 0x0300u;
}
inline std::uint32_t note_table_offset(std::int32_t file_type) {
    return is_manual_layout(file_type) ? 0x3240u : 0x1300u;
}
inline std::uint32_t record_table_offset(std::int32_t file_type) {
    return is_manual_layout(file_type) ? 0x3440u : 0x1500u;
}

struct DlSession {
    std::int32_t is_open = 0;
    char description[HEADER_TEXT_SIZE] = {};
    char inspector_id[HEADER_TEXT_SIZE] = {};
    char location[HEADER_TEXT_SIZE] = {};
    // Note i of the note table, cut to 30 characters.
    char note_table[NOTE_COUNT][NOTE_TEXT_SIZE] = {};
    std::int32_t reserved_006 = 0;
    std::int32_t reserved_0e0 = 0;
    IdSpec id_spec{};
    std::uint8_t first_inc = 0;
    std::uint8_t second_inc = 0;
    std::uint8_t third_inc = 0;
    std::int32_t walk_pattern = 0;
    std::int32_t elevation_unit = 0;
    std::int32_t gage_type = 0;
    std::uint16_t file_version = 0;
    std::int32_t file_type = 0;
    std::uint32_t id_count = 0;
    std::uint64_t reserved_058 = 0;
    std::uint64_t current_index = 0;  // the upper half is always 0
    std::uint8_t setup_count = 0;
    std::uint64_t reserved_27e = 0;
    std::uint32_t reserved_284 = 0;
    std::array<SetupRecord, SETUP_COUNT> setups{};
    std::uint16_t reserved_288 = 0;
    std::uint8_t fourth_inc = 0;
    std::array<std::uint16_t, DIM_COUNT> dim_label_count{};

    // Labels of the manual dimensions: the first dim_label_count[d] entries
    // of dimension d, in manual files only.
    char dim_label_table[DIM_COUNT][DIM_LABEL_MAX][DIM_LABEL_SIZE] = {};
    // The text that the last label operation gave.
    char label_buffer[LABEL_TEXT_SIZE] = {};
    // The input stream; it stays open after a successful open.
    DlStream stream{};
};

// Opens and decodes the datalogger file. 1 on success, 0 on failure (read
// errors have printed their own line, nothing else prints a message); on
// failure the input is closed again.
int open_datalogger_session(DlSession& session, const char* path);

// Zeroes the setup table and reads its 32 entries in the layout of the
// session's gage type. 1, or 0 at the first entry that can't be read (the
// entries behind it stay zero).
int load_setup_table(DlSession& session);

// The two label operations (context: the DlSession). Both return the
// session's label buffer, which the next call overwrites.
//
// Entry `position` of the custom point labels of the header; a position above
// 19, or a label that can't be read, gives the empty text.
const char* custom_point_label(void* context, std::uint16_t position, int dimension);
// Label `position` of manual dimension `dimension`; a position of 100 or more
// gives the empty text. Never reads the file.
const char* manual_label(void* context, std::uint16_t position, int dimension);

inline LabelOp custom_point_label_op(DlSession& session) { return {custom_point_label, &session}; }
inline LabelOp manual_label_op(DlSession& session) { return {manual_label, &session}; }

}  // namespace ugf
