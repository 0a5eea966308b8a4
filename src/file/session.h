// The open datalogger file: its decoded header, the setup table, the notes
// and the manual dimension labels, with everything a conversion of it needs:
// the input stream and its page cache, the store of the current reading's
// scan and the remembered texts. A session belongs to its caller; sessions
// share nothing, so any number may be open at once, each on one thread at a
// time. The file's layout is in file/file_map.h.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "file/field.h"
#include "file/file_map.h"
#include "file/records.h"
#include "file/setup.h"
#include "ident/cursor.h"
#include "ident/id_spec.h"

namespace ugf {

inline constexpr int NOTE_TEXT_SIZE = 31;           // 30 characters and the terminator
inline constexpr int HEADER_TEXT_SIZE = 33;         // description, inspector, location
inline constexpr int VELOCITY_TEXT_SIZE = 7;        // 6 characters and the terminator

// The identifier split of the ranged file types: start and end identifiers
// are c2 characters of dimension 2, c1 of dimension 1, c0 of dimension 0.
inline constexpr int SPLIT_C2_MAX = 18;
inline constexpr int SPLIT_C1_MAX = 19;
inline constexpr int SPLIT_C0_MAX = 20;

// The large parts of a session: the texts a conversion remembers (see
// ident/id_spec.h) and the store of the scan just read. They are one block
// from calloc (make_zeroed), which the system hands out as fresh pages that
// cost a fault only where a conversion uses them; a smaller block would come
// from the heap, where calloc writes every zero of it (ten pages for the
// scan store of a survey that has no scans).
struct SessionMemos {
    RecentTexts id_texts{};
    WalkTexts walk_texts{};
    ScanStore scans{};
};

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
    // Where the tables of the file lie.
    FileMap map{};
    // The cursor as the open placed it. A walk's last step carries into the
    // positions of unused dimensions, which seeks keep; each walk starts
    // again from here.
    IdCursor opened_cursor{};

    // The input stream; it stays open after a successful open. Its console
    // receives the read error lines.
    DlStream dl_stream{};
    // The scan of the reading just read (in `memos`); each reading
    // overwrites it, and its row and dump are written before the next slot
    // is read.
    ScanStore* scan_store = nullptr;
    // The text of the last velocity reading (make_velocity_text).
    char velocity_text[VELOCITY_TEXT_SIZE] = {};
    ZeroedPtr<SessionMemos> memos;
};

// Opens and decodes the datalogger file, as the converter does: the file is
// opened for reading and writing (a read-only file is refused) but never
// written. 1 on success, 0 on failure (read errors have printed their own
// line on the stream's console, nothing else prints a message); on failure
// the input is closed again. The session's console stays as it was set.
int open_datalogger_session(DlSession& session, const char* path);
// The same for a file opened for reading only.
int open_datalogger_read_only(DlSession& session, const char* path);
// The same for an image of `size` bytes that the caller holds (and keeps
// until the session is closed or opened again).
int open_datalogger_memory(DlSession& session, const std::uint8_t* bytes, std::uint64_t size);
// Closes the input; the session keeps what it decoded.
void close_datalogger_session(DlSession& session);

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
