#include "file/session.h"

#include <cstring>
#include <new>
#include <utility>

namespace ugf {

namespace {

// The identifier texts of the header: the prefix (field of 20 bytes) and the
// start and end identifiers (fields of 21 bytes) of the ranged file types.
struct HeaderIds {
    char prefix[ID_TEXT_SIZE] = {};
    char start[ID_TEXT_SIZE] = {};
    char end[ID_TEXT_SIZE] = {};
    std::uint8_t c0 = 0;  // characters of dimension 0, the last part
    std::uint8_t c1 = 0;
    std::uint8_t c2 = 0;  // characters of dimension 2, the first part
    std::uint64_t step[DIM_COUNT] = {};
};

int fail(DlSession& session) {
    dl_close(session.dl_stream);
    return 0;
}

// The dimension that a manual file type uses last: 1, 2 or 3.
int top_manual_dimension(std::int32_t file_type) { return file_type - FILE_TYPE_2D_MANUAL + 1; }

// Cuts `count` characters from position `from` of `text` into `part`; a part
// that runs past the end of the text takes what is there.
void cut_part(const char* text, std::size_t from, std::size_t count, char (&part)[ID_TEXT_SIZE]) {
    std::memset(part, 0, sizeof part);
    const std::size_t length = std::strlen(text);
    if (from >= length) return;
    std::size_t n = length - from < count ? length - from : count;
    if (n > ID_TEXT_MAX) n = ID_TEXT_MAX;
    std::memcpy(part, text + from, n);
}

std::int32_t low_32(std::uint64_t value) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}

// Step 11 and 12 for the ranged types: cut the identifiers into their three
// dimensions and set up the ranges. 0 when a count breaks the limits.
int set_up_ranges(DlSession& session, const HeaderIds& ids) {
    if (ids.c2 > SPLIT_C2_MAX || ids.c1 > SPLIT_C1_MAX || ids.c0 > SPLIT_C0_MAX) return 0;
    char start_part[3][ID_TEXT_SIZE];
    char end_part[3][ID_TEXT_SIZE];
    const std::size_t count[3] = {ids.c0, ids.c1, ids.c2};
    const std::size_t from[3] = {std::size_t{ids.c2} + ids.c1, ids.c2, 0};
    for (int d = 0; d < 3; ++d) {
        cut_part(ids.start, from[d], count[d], start_part[d]);
        cut_part(ids.end, from[d], count[d], end_part[d]);
    }
    const char* const start[3] = {start_part[0], start_part[1], start_part[2]};
    const char* const end[3] = {end_part[0], end_part[1], end_part[2]};
    const std::int32_t step[3] = {low_32(ids.step[0]), low_32(ids.step[1]), low_32(ids.step[2])};
    id_spec_init_ranges(session.id_spec, ids.prefix, start, end, step);
    return 1;
}

void set_up_manual(DlSession& session, const HeaderIds& ids) {
    std::int64_t size[DIM_COUNT];
    std::int32_t step[DIM_COUNT];
    for (int d = 0; d < DIM_COUNT; ++d) {
        size[d] = session.dim_label_count[static_cast<std::size_t>(d)];
        step[d] = low_32(ids.step[d]);
    }
    id_spec_init_manual(session.id_spec, size, step, session.file_type);
}

// A survey whose unused dimension (size 0) lies below a used one has no
// position at all: the storage index divides by the sizes below.
int dimensions_are_stacked(const IdCursor& cursor) {
    bool unused_below = false;
    for (std::size_t d = 0; d < cursor.dim_size.size(); ++d) {
        if (cursor.dim_size[d] == 0) {
            unused_below = true;
        } else if (unused_below) {
            return 0;
        }
    }
    return 1;
}

int load_manual_labels(DlSession& session) {
    const int top = top_manual_dimension(session.file_type);
    for (int d = 0; d <= top; ++d) {
        if (session.dim_label_count[static_cast<std::size_t>(d)] > DIM_LABEL_MAX) return 0;
    }
    for (int d = top; d >= 0; --d) {
        const int count = session.dim_label_count[static_cast<std::size_t>(d)];
        for (int j = 0; j < count; ++j) {
            char* entry = session.dim_label_table[d][j];
            std::memset(entry, 0, DIM_LABEL_SIZE);
            if (read_text(session.dl_stream, manual_label_offset(d, j), entry, DIM_LABEL_SIZE,
                          DIM_LABEL_SIZE) == 0) {
                return 0;
            }
        }
    }
    return 1;
}

int read_notes(DlSession& session) {
    std::memset(session.note_table, 0, sizeof session.note_table);
    for (int i = 0; i < NOTE_COUNT; ++i) {
        // A row of 32 characters runs on into the next row's first byte; the
        // table keeps 30 of them.
        if (read_text(session.dl_stream, note_offset(session.map, i), session.note_table[i],
                      NOTE_TEXT_SIZE, NOTE_READ_MAX) == 0) {
            return 0;
        }
    }
    return 1;
}

}  // namespace

int load_setup_table(DlSession& session) {
    session.setups.fill(SetupRecord{});
    for (int i = 0; i < SETUP_COUNT; ++i) {
        SetupRecord& setup = session.setups[static_cast<std::size_t>(i)];
        const int ok = session.gage_type == GAGE_FLAW_DETECTOR
                           ? read_flaw_setup(session.dl_stream, setup_offset(session.map, i), setup.flaw)
                           : read_gauge_setup(session.dl_stream, setup_offset(session.map, i), setup.gauge);
        if (ok == 0) return 0;
    }
    return 1;
}

namespace {

// Readies the session for a new input: what it decoded before is forgotten,
// and its scan store and memos start empty, so that nothing of an earlier
// survey shows in this one. The stream's page cache and console stay.
int reset_session(DlSession& session) {
    DlStream stream = std::move(session.dl_stream);
    dl_close(stream);
    session = DlSession{};
    session.dl_stream = std::move(stream);
    session.memos = make_zeroed<SessionMemos>();
    if (session.memos == nullptr) return 0;
    session.scan_store = &session.memos->scans;
    session.id_spec.recent_texts = &session.memos->id_texts;
    return 1;
}

// Decodes the header, notes, labels and setups of the input just opened.
int decode_session(DlSession& session) {
    FieldRun f{session.dl_stream, 0};
    session.file_version = f.u16(HDR_FILE_VERSION);
    session.file_type = f.u16(HDR_FILE_TYPE);
    if (f.ok == 0) return fail(session);
    session.map = file_map(session.file_type);
    // Later versions of the non-ranged types are refused.
    if (session.file_type > FILE_TYPE_BOILER && session.file_version >= 21 &&
        session.file_version <= 23) {
        return fail(session);
    }

    HeaderIds ids;
    session.reserved_006 = f.u8(HDR_RESERVED_006);
    ids.c0 = f.u8(HDR_DIM_LENGTH[0]);
    ids.c1 = f.u8(HDR_DIM_LENGTH[1]);
    ids.c2 = f.u8(HDR_DIM_LENGTH[2]);
    f.text(HDR_PREFIX, ids.prefix, sizeof ids.prefix, 20);
    f.text(HDR_START_ID, ids.start, sizeof ids.start, 21);
    f.text(HDR_END_ID, ids.end, sizeof ids.end, 21);
    session.id_count = f.u32(HDR_ID_COUNT);
    session.reserved_058 = f.u40(HDR_RESERVED_058);
    session.current_index = f.u40(HDR_CURRENT_INDEX);
    session.reserved_27e = f.u40(HDR_RESERVED_27E);
    for (int d = 0; d < DIM_COUNT; ++d) ids.step[d] = f.u40(HDR_STEP[d]);
    session.setup_count = f.u8(HDR_SETUP_COUNT);
    f.text(HDR_DESCRIPTION, session.description, sizeof session.description, HEADER_TEXT_SIZE);
    f.text(HDR_INSPECTOR_ID, session.inspector_id, sizeof session.inspector_id, HEADER_TEXT_SIZE);
    f.text(HDR_LOCATION, session.location, sizeof session.location, HEADER_TEXT_SIZE);
    session.gage_type = f.u8(HDR_GAGE_TYPE);
    session.reserved_284 = f.u32(HDR_RESERVED_284);
    session.reserved_0e0 = f.u8(HDR_RESERVED_0E0);
    if (f.ok == 0) return fail(session);

    if (read_notes(session) == 0) return fail(session);

    session.walk_pattern = f.u8(HDR_WALK_PATTERN);
    session.first_inc = f.u8(HDR_FIRST_INC);
    session.second_inc = f.u8(HDR_SECOND_INC);
    session.third_inc = f.u8(HDR_THIRD_INC);
    session.fourth_inc = f.u8(HDR_FOURTH_INC);
    for (std::size_t d = 0; d < session.dim_label_count.size(); ++d) {
        session.dim_label_count[d] = f.u16(HDR_DIM_LABEL_COUNT + 2 * d);
    }
    if (f.ok == 0) return fail(session);

    const bool manual = is_manual_layout(session.file_type);
    if (manual && load_manual_labels(session) == 0) return fail(session);

    session.elevation_unit = f.u8(HDR_ELEVATION_UNIT);
    session.reserved_288 = f.u8(HDR_RESERVED_288);
    if (f.ok == 0) return fail(session);

    if (load_setup_table(session) == 0) return fail(session);

    if (manual) {
        set_up_manual(session, ids);
    } else if (set_up_ranges(session, ids) == 0) {
        return fail(session);
    }
    if (dimensions_are_stacked(session.id_spec.cursor) == 0) return fail(session);

    const std::uint32_t index = static_cast<std::uint32_t>(session.current_index);
    cursor_seek(session.id_spec.cursor, static_cast<std::int64_t>(index));
    id_spec_refresh(session.id_spec, session.file_type);
    session.opened_cursor = session.id_spec.cursor;

    session.is_open = 1;
    return 1;
}

}  // namespace

int open_datalogger_session(DlSession& session, const char* path) {
    if (reset_session(session) == 0 || dl_open(session.dl_stream, path) == 0) return 0;
    return decode_session(session);
}

int open_datalogger_read_only(DlSession& session, const char* path) {
    if (reset_session(session) == 0 || dl_open_read_only(session.dl_stream, path) == 0) return 0;
    return decode_session(session);
}

int open_datalogger_memory(DlSession& session, const std::uint8_t* bytes, std::uint64_t size) {
    if (reset_session(session) == 0 || dl_open_memory(session.dl_stream, bytes, size) == 0) return 0;
    return decode_session(session);
}

void close_datalogger_session(DlSession& session) {
    dl_close(session.dl_stream);
    session.is_open = 0;
}

const char* custom_point_label(void* context, std::uint16_t position, int dimension) {
    (void)dimension;
    DlSession& session = *static_cast<DlSession*>(context);
    std::memset(session.label_buffer, 0, sizeof session.label_buffer);
    if (position >= CUSTOM_POINT_LABEL_COUNT) return session.label_buffer;
    if (read_text(session.dl_stream, custom_point_label_offset(position), session.label_buffer,
                  sizeof session.label_buffer, LABEL_TEXT_SIZE) == 0) {
        session.label_buffer[0] = '\0';
    }
    return session.label_buffer;
}

const char* manual_label(void* context, std::uint16_t position, int dimension) {
    DlSession& session = *static_cast<DlSession*>(context);
    std::memset(session.label_buffer, 0, sizeof session.label_buffer);
    if (position >= DIM_LABEL_MAX || dimension < 0 || dimension >= DIM_COUNT) {
        return session.label_buffer;
    }
    const char* entry = session.dim_label_table[dimension][position];
    for (std::size_t i = 0; i + 1 < sizeof session.label_buffer && i + 1 < DIM_LABEL_SIZE; ++i) {
        if (entry[i] == '\0') break;
        session.label_buffer[i] = entry[i];
    }
    return session.label_buffer;
}

}  // namespace ugf
