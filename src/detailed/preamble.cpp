#include "detailed/preamble.h"

#include <array>

#include "base/labels.h"

namespace ugf {

namespace {

constexpr std::size_t ROW_SIZE = 80;

// The columns in front of the common tail, by file type; the tail is
// PATTERN,# ID,# SETUP,# NOTES,CREATED,LAST SAVED.
struct ColumnNames {
    char head[128];  // empty: the type has no detailed output
    char end[3];     // what follows LAST SAVED
};

constexpr std::array<ColumnNames, 13> COLUMN_NAMES = {{
    {"PREFIX,START COL,END COL,COL STEP,", "\n"},
    {"PREFIX,START COL,START CUSTOM POINT,END COL,END CUSTOM POINT,1ST INC,COL STEP,", "\n"},
    {"PREFIX,START COL,START ROW,END COL,END ROW,1ST INC,COL STEP,ROW STEP,", "\n"},
    {"PREFIX,START COL,START ROW,START CUSTOM POINT,END COL,END ROW,END CUSTOM POINT,1ST INC,"
     "2ND INC,COL STEP,ROW STEP,",
     ",\n"},
    {"PREFIX,START COL,START ROW,START POINT,END COL,END ROW,END POINT,1ST INC,2ND INC,COL STEP,"
     "ROW STEP,POINT STEP,",
     "\n"},
    {"PREFIX,START TUBE,START ELEV,START TEST PT,END TUBE,END ELEV,END TEST PT,ELEV UNITS,1ST INC,"
     "2ND INC,TUBE STEP,ELEV STEP,",
     "\n"},
    {"", ""},
    {"", ""},
    {"PREFIX,", "\n"},
    {"", ""},
    {"DIM1 LEN,DIM1 # LABELS,DIM2 LEN,DIM2 # LABELS,1ST INC,", "\n"},
    {"DIM1 LEN,DIM1 # LABELS,DIM2 LEN,DIM2 # LABELS,DIM3 LEN,DIM3 # LABELS,1ST INC,2ND INC,", "\n"},
    {"DIM1 LEN,DIM1 # LABELS,DIM2 LEN,DIM2 # LABELS,DIM3 LEN,DIM3 # LABELS,DIM4 LEN,"
     "DIM4 # LABELS,1ST INC,2ND INC,3RD INC,",
     "\n"},
}};

// Reads a text of at most `max` bytes at the offset and writes it as one row
// between row_head and row_end. 1, or 0 when the read fails.
int write_read_text(DlSession& session, std::uint64_t at, std::uint16_t max, const char* row_head,
                    const char* row_end, CsvSink& sink) {
    char text[NOTE_READ_MAX + 1] = {};
    if (read_text(session.dl_stream, at, text, sizeof text, max) == 0) return 0;
    StoredCell cell;
    stored_cell(cell, text, sink);
    char row[ROW_SIZE + QUOTED_EXTRA_MAX];
    format_text_bounded(row, ROW_SIZE + cell.extra, "%s%s%s", row_head, cell.text, row_end);
    return csv_write(row, sink);
}

}  // namespace

const char* product_text(std::int32_t gage_type) {
    if (gage_type >= GAGE_CORROSION && gage_type <= GAGE_FLAW_DETECTOR) {
        return label_text(LABEL_PRODUCT_CORROSION + (gage_type - GAGE_CORROSION));
    }
    return ui_text(UI_BLANKS);
}

std::size_t header_buffer_size(std::int32_t file_type) {
    switch (file_type) {
        case FILE_TYPE_2D:
        case FILE_TYPE_2D_CPT:
        case FILE_TYPE_BOILER:
        case FILE_TYPE_2D_MANUAL:
        case FILE_TYPE_3D_MANUAL:
        case FILE_TYPE_4D_MANUAL: return 220;
        case FILE_TYPE_3D: return 230;
        default: return 200;
    }
}

int write_file_preamble(char* buffer, std::size_t size, std::int32_t gage_type, const char* version,
                        CsvSink& sink) {
    format_text_bounded(buffer, size, "UFH: %i,%s: %s,%s: %s\n", 1, label_text(LABEL_PRODUCT),
                        product_text(gage_type), label_text(LABEL_VERSION), version);
    if (csv_write(buffer, sink) == 0) return 0;
    format_text_bounded(buffer, size, "%s,%s,%s,", label_text(LABEL_FILENAME), label_text(LABEL_TYPE),
                        label_text(LABEL_FILE_VERSION));
    return csv_write(buffer, sink);
}

int write_column_names(char* buffer, std::size_t size, std::int32_t file_type, CsvSink& sink) {
    if (file_type < 0 || static_cast<std::size_t>(file_type) >= COLUMN_NAMES.size()) return 0;
    const ColumnNames& names = COLUMN_NAMES[static_cast<std::size_t>(file_type)];
    if (names.head[0] == '\0') return 0;
    format_text_bounded(buffer, size, "%s%s,%s,%s,%s,%s,%s%s", names.head, label_text(LABEL_PATTERN),
                        label_text(LABEL_ID_COUNT), label_text(LABEL_SETUP_COUNT),
                        label_text(LABEL_NOTE_COUNT), label_text(LABEL_CREATED),
                        label_text(LABEL_LAST_SAVED), names.end);
    return csv_write(buffer, sink);
}

int write_identity_rows(DlSession& session, CsvSink& sink) {
    const struct {
        std::int64_t row;
        const char* text;
    } rows[] = {
        {UI_DESCRIPTION, session.description},
        {UI_LOCATION, session.location},
        {UI_INSPECTOR_ID, session.inspector_id},
    };
    for (const auto& r : rows) {
        StoredCell cell;
        stored_cell(cell, r.text, sink);
        char row[ROW_SIZE + QUOTED_EXTRA_MAX];
        format_text_bounded(row, ROW_SIZE + cell.extra, "%s,%s\n", ui_text(r.row), cell.text);
        if (csv_write(row, sink) == 0) return 0;
    }
    return 1;
}

int write_note_list(DlSession& session, CsvSink& sink) {
    char row[ROW_SIZE];
    format_text_bounded(row, sizeof row, "\n%s,%s\n", label_text(LABEL_NOTES_DESIGNATOR),
                        label_text(LABEL_NOTE_TEXT));
    if (csv_write(row, sink) == 0) return 0;
    for (int i = 0; i < NOTE_COUNT; ++i) {
        const char designator[3] = {static_cast<char>('A' + i), ',', '\0'};
        if (write_read_text(session, note_offset(session.map, i), NOTE_READ_MAX, designator, "\n",
                            sink) == 0) {
            return 0;
        }
    }
    return 1;
}

int write_dimension_labels(DlSession& session, CsvSink& sink, std::int32_t file_type) {
    if (!is_manual_layout(file_type)) return 1;
    const int n = file_type - FILE_TYPE_2D_MANUAL + 2;
    for (int i = 0; i < n; ++i) {
        const int d = n - 1 - i;
        const int count = session.dim_label_count[static_cast<std::size_t>(d)];
        if (count == 0) continue;
        char heading[ROW_SIZE];
        format_text_bounded(heading, sizeof heading, "%s:\n", label_text(LABEL_DIM1_LABELS + i));
        if (csv_write(heading, sink) == 0) return 0;
        for (int j = 0; j < count; ++j) {
            // The last label's row carries the blank line that closes the block.
            const char* end = j + 1 == count ? ",\n\n" : ",\n";
            if (write_read_text(session, manual_label_offset(d, j), DIM_LABEL_SIZE, "", end, sink) == 0) {
                return 0;
            }
        }
    }
    return 1;
}

}  // namespace ugf
