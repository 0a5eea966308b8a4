#include "detailed/header_values.h"

#include <cctype>

#include "store/session_id.h"
#include "base/labels.h"

namespace ugf {

namespace {

// The FILE VERSION column shows this constant, not the file's version.
constexpr int SHOWN_FILE_VERSION = 29;
constexpr int SHOWN_NOTE_COUNT = 16;
// The stamp of CREATED and LAST SAVED: day, month, year, hour, minute.
constexpr int STAMP_YEAR = 65516;

constexpr std::size_t PIECE_SIZE = 64;

// A value row while it is written, one column at a time: every column
// brings its comma, and the first failure stops the rest.
struct ValueRow {
    DlSession& session;
    CsvSink& sink;
    std::uint32_t point_total = 0;
    int ok = 1;

    void text(const char* value) {
        if (ok == 0) return;
        StoredCell cell;
        stored_cell(cell, value, sink);
        char piece[PIECE_SIZE + QUOTED_EXTRA_MAX];
        format_text_bounded(piece, PIECE_SIZE + cell.extra, "%s,", cell.text);
        ok = csv_write(piece, sink);
    }
    void number(int value) {
        if (ok == 0) return;
        char piece[PIECE_SIZE];
        format_text_bounded(piece, sizeof piece, "%d,", value);
        ok = csv_write(piece, sink);
    }

    // A survey without points has no last point: its columns stay empty.
    bool has_point(bool last) const { return !last || point_total != 0; }
    std::int64_t index_of(bool last) const { return last ? std::int64_t{point_total} - 1 : 0; }

    void prefix() { text(session.id_spec.prefix); }
    void id(bool last) {
        char out[ID_TEXT_SIZE] = {};
        if (has_point(last)) session_point_id(session, index_of(last), out, 0);
        text(out);
    }
    void dim(int dimension, bool last, int with_unit = 1) {
        char out[ID_TEXT_SIZE] = {};
        if (has_point(last)) session_dimension_text(session, index_of(last), out, dimension, with_unit);
        text(out);
    }
    void bare(int dimension, bool last) { dim(dimension, last, 0); }
    void step(int dimension) {
        const auto low = static_cast<std::uint16_t>(session.id_spec.dims[static_cast<std::size_t>(dimension)].step);
        if (ok == 0) return;
        char piece[PIECE_SIZE];
        format_text_bounded(piece, sizeof piece, "%i,", static_cast<int>(low));
        ok = csv_write(piece, sink);
    }
    void pattern() { text(walk_pattern_name(session.walk_pattern)); }
    // The display length of a manual dimension, as the header stores it.
    void length_byte(int dimension) {
        if (ok == 0) return;
        const std::uint64_t offset = HDR_DIM_LENGTH[dimension];
        const std::uint8_t value = read_u8(session.dl_stream, offset, &ok);
        if (ok != 0) number(value);
    }
    void labels(int dimension) { number(session.dim_label_count[static_cast<std::size_t>(dimension)]); }
    // The increment field's dimension by name; a value without a name writes
    // nothing at all.
    void inc(std::uint8_t field) {
        const char* name = increment_name(session.file_type, field);
        if (name != nullptr) text(name);
    }
    void unit() {
        text(session.elevation_unit == 0 ? ui_text(UI_NONE) : elevation_unit_text(session.elevation_unit));
    }

    static const char* increment_name(std::int32_t file_type, std::uint8_t field) {
        auto names = [field](std::initializer_list<int> rows) -> const char* {
            if (field == 0 || field > rows.size()) return nullptr;
            return label_text(*(rows.begin() + (field - 1)));
        };
        switch (file_type) {
            case FILE_TYPE_LINEAR_CPT: return label_text(field == 1 ? LABEL_CUSTOM_POINT : LABEL_COL);
            case FILE_TYPE_2D: return label_text(field == 1 ? LABEL_ROW : LABEL_COL);
            case FILE_TYPE_2D_CPT: return names({LABEL_CUSTOM_POINT, LABEL_ROW, LABEL_COL});
            case FILE_TYPE_3D: return names({LABEL_POINT, LABEL_ROW, LABEL_COL});
            case FILE_TYPE_BOILER: return names({LABEL_CUSTOM_POINT, LABEL_ELEV, LABEL_TUBE});
            case FILE_TYPE_2D_MANUAL: return names({LABEL_DIM1 + 1, LABEL_DIM1});
            case FILE_TYPE_3D_MANUAL: return names({LABEL_DIM1 + 2, LABEL_DIM1 + 1, LABEL_DIM1});
            case FILE_TYPE_4D_MANUAL:
                return names({LABEL_DIM1 + 3, LABEL_DIM1 + 2, LABEL_DIM1 + 1, LABEL_DIM1});
            default: return nullptr;
        }
    }
};

// The columns of each file type, between the row head and the row tail.
// Returns 0 for a type without a value row.
int write_type_columns(ValueRow& row) {
    const DlSession& s = row.session;
    constexpr bool first = false;
    constexpr bool last = true;
    switch (s.file_type) {
        case FILE_TYPE_LINEAR:
            row.prefix(); row.id(first); row.id(last); row.step(0); row.pattern();
            break;
        case FILE_TYPE_MANUAL:
            row.prefix(); row.pattern();
            break;
        case FILE_TYPE_LINEAR_CPT:
            row.prefix(); row.dim(1, first); row.dim(0, first); row.dim(1, last); row.dim(0, last);
            row.inc(s.first_inc); row.step(1); row.pattern();
            break;
        case FILE_TYPE_2D:
            row.prefix(); row.dim(1, first); row.dim(0, first); row.dim(1, last); row.dim(0, last);
            row.inc(s.first_inc); row.step(1); row.step(0); row.pattern();
            break;
        case FILE_TYPE_2D_CPT:
        case FILE_TYPE_3D:
            row.prefix(); row.dim(2, first); row.dim(1, first); row.dim(0, first);
            row.dim(2, last); row.dim(1, last); row.dim(0, last);
            row.inc(s.first_inc); row.inc(s.second_inc); row.step(2); row.step(1);
            if (s.file_type == FILE_TYPE_3D) row.step(0);
            row.pattern();
            break;
        case FILE_TYPE_BOILER:
            row.prefix(); row.dim(2, first); row.bare(1, first); row.dim(0, first);
            row.dim(2, last); row.bare(1, last); row.dim(0, last); row.unit();
            row.inc(s.first_inc); row.inc(s.second_inc); row.step(2); row.step(1); row.pattern();
            break;
        case FILE_TYPE_2D_MANUAL:
            row.length_byte(1); row.labels(1); row.length_byte(0); row.labels(0);
            row.inc(s.first_inc); row.pattern();
            break;
        case FILE_TYPE_3D_MANUAL:
            row.length_byte(2); row.labels(2); row.length_byte(1); row.labels(1);
            row.length_byte(0); row.labels(0);
            row.inc(s.first_inc); row.inc(s.second_inc); row.pattern();
            break;
        case FILE_TYPE_4D_MANUAL:
            row.length_byte(3); row.labels(3); row.length_byte(2); row.labels(2);
            row.length_byte(1); row.labels(1); row.length_byte(0); row.labels(0);
            row.inc(s.first_inc); row.inc(s.second_inc); row.inc(s.third_inc); row.pattern();
            break;
        default:
            return 0;
    }
    return row.ok;
}

}  // namespace

int write_row_head(char* buffer, std::size_t size, char* name, std::int32_t file_type, CsvSink& sink) {
    for (char* c = name; *c != '\0'; ++c) {
        *c = static_cast<char>(std::toupper(static_cast<unsigned char>(*c)));
    }
    format_text_bounded(buffer, size, "%s,%s,%i,", name, file_type_name(file_type), SHOWN_FILE_VERSION);
    return csv_write(buffer, sink);
}

int write_header_values(DlSession& session, CsvSink& sink) {
    char buffer[PIECE_SIZE];
    char name[PIECE_SIZE];
    format_text_bounded(name, sizeof name, "%s%s", "FILE-NAME", ".CSV");
    if (write_row_head(buffer, sizeof buffer, name, session.file_type, sink) == 0) return 0;

    ValueRow row{session, sink, point_total_of(session.id_spec.cursor)};
    if (write_type_columns(row) == 0) return 0;

    const std::uint32_t id_column = session.id_count == 0 ? 0 : row.point_total;
    format_text_bounded(buffer, sizeof buffer, "%u", id_column);
    if (csv_write(buffer, sink) == 0) return 0;
    format_text_bounded(buffer, sizeof buffer, ",%d,%d,%d/%d/%d %d:%d,%d/%d/%d %d:%d\n\n",
                        static_cast<int>(session.setup_count), SHOWN_NOTE_COUNT, 0, 0, STAMP_YEAR, 0, 0, 0, 0,
                        STAMP_YEAR, 0, 0);
    return csv_write(buffer, sink);
}

}  // namespace ugf
