#include "detailed/detailed_body.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "base/console.h"
#include "base/text_builder.h"
#include "detailed/header_values.h"
#include "detailed/preamble.h"
#include "detailed/reading_row.h"
#include "detailed/scan_dump.h"
#include "file/field.h"
#include "ident/cursor.h"
#include "ident/id_spec.h"
#include "store/session_id.h"
#include "present/meas_box.h"
#include "present/number_format.h"
#include "present/reading_value.h"
#include "present/scan_head.h"
#include "present/setup_listing.h"

namespace ugf {

namespace {


constexpr std::size_t ID_CELL_SIZE = ID_TEXT_SIZE + 1;  // the identifier and its comma
constexpr std::size_t LIST_ROW_SIZE = 40;               // "19," and a label of 19 characters


// The detailed row of a thickness gauge reading, written in place behind the
// rows gathered before it: the identifier cell, the thickness and the
// columns behind them. A row begins behind the line end of the one before
// it, and its cells behind the comma of the identifier cell, so no "%%" can
// form where they meet.
constexpr std::size_t THICKNESS_ROW_ROOM = ID_CELL_SIZE + QUOTED_EXTRA_MAX + NUMBER_TEXT_SIZE + ROW_COLUMNS_ROOM;
static_assert(THICKNESS_ROW_ROOM >= ID_COMPOSE_ROOM);

void add_thickness_row(CsvRow& rows, DlSession& session, PointWalk& walk, const RowTexts& texts,
                       const ReadingRecord& reading, const ReadingScan& scan, const CsvSink& sink) {
    char* at = rows.room(THICKNESS_ROW_ROOM);
    // The identifier is composed where its cell goes; one that must be
    // quoted is put back quoted.
    std::size_t length = point_walk_id(session, walk, at);
    if (sink.quote != 0) {
        char id_text[ID_TEXT_SIZE];
        std::memcpy(id_text, at, ID_TEXT_SIZE);
        StoredCell id;
        stored_cell(id, id_text, sink);
        if (id.extra != 0) {
            length = std::strlen(id.text);
            copy_bytes(at, id.text, length);
        }
    }
    at += length;
    *at++ = ',';
    // The thickness gauges print their thickness in the layout of their pairs.
    at += thickness_text_form(at, reading, row_length_form(texts, reading),
                              scan.velocity_flag == 1 ? session.velocity_text : nullptr);
    at = put_columns(at, texts, session, reading, session.gage_type == GAGE_CORROSION, scan.has_ascan,
                     scan.velocity_flag);
    rows.taken(at);
}

// The dumps of a reading's scans, with fresh titles behind them when `more`
// readings follow. A walk that has dumped as many as it may fails instead.
int write_dumps(DlSession& session, PointWalk& walk, const ReadingRecord& reading, const ReadingScan& scan,
                int more, CsvSink& sink) {
    if ((scan.has_ascan != 0 || scan.has_bscan != 0) && !point_walk_may_dump(walk)) return 0;
    const std::int32_t gage_type = session.gage_type;
    int written = 1;
    if (scan.has_ascan != 0) {
        if (gage_type == GAGE_FLAW_DETECTOR) {
            // The dump gets its own copy of the setup that the merged reading names.
            const FlawSetup setup = session.setups[flaw_setup_number(reading)].flaw;
            written = write_ascan_dump_flaw(session, *session.scan_store, setup, sink, more);
        } else {
            written = write_ascan_dump_thickness(session, *session.scan_store, sink, more);
        }
        if (written == 0) return 0;
    }
    if (scan.has_bscan != 0) return write_bscan_dump(session, reading, *session.scan_store, sink, more);
    return 1;
}

// One walk over the readings. `output_form` 0 writes the plain grid rows of
// "LINEAR" and "MANUAL" files; 1 the rows of the detailed table with their
// dumps. The detailed rows of thickness readings gather in `rows`, which
// is written out before anything else is written; when the text is echoed
// on standard output, after each row, so that the echo keeps its place
// before any error line of the next read.
int walk_rows(DlSession& session, int output_form, CsvSink& sink, CsvRow& rows) {
    const std::int32_t gage_type = session.gage_type;
    const DigitLayout layout = digit_layout_of(gage_type);
    RowTexts texts;
    row_texts_init(texts, session);
    if (output_form == OUTPUT_DETAILED && (gage_type == GAGE_CORROSION || gage_type == GAGE_PRECISION)) {
        row_texts_slots(texts, session);
    }
    for (PointWalk walk = point_walk_begin(session); point_walk_more(walk);
         point_walk_advance(session, walk)) {
        if (point_walk_runs_off(walk)) return 0;
        ReadingRecord reading{};
        if (read_reading(session, walk.storage_index, reading, *session.scan_store, output_form) == 0) {
            return 0;
        }
        const ReadingScan scan = merge_scan_head(session, reading, *session.scan_store);

        if (output_form == OUTPUT_DETAILED &&
            (gage_type == GAGE_CORROSION || gage_type == GAGE_PRECISION)) {
            add_thickness_row(rows, session, walk, texts, reading, scan, sink);
            if (scan.has_ascan == 0 && scan.has_bscan == 0) {
                if (sink.verbose_output != 0) rows.flush();
                continue;
            }
            rows.flush();
            const int more = walk.visit != walk.total - 1 ? 1 : 0;
            if (write_dumps(session, walk, reading, scan, more, sink) == 0) return 0;
            continue;
        }
        char id_text[ID_COMPOSE_ROOM];
        point_walk_id(session, walk, id_text);
        StoredCell id;
        stored_cell(id, id_text, sink);
        char id_cell[ID_CELL_SIZE + QUOTED_EXTRA_MAX];
        std::size_t length = 0;
        while (length < ID_TEXT_MAX + id.extra && id.text[length] != '\0') {
            id_cell[length] = id.text[length];
            ++length;
        }
        id_cell[length] = ',';
        id_cell[length + 1] = '\0';
        const std::string_view cell(id_cell, length + 1);
        const int more = walk.visit != walk.total - 1 ? 1 : 0;
        rows.flush();
        if (csv_write(cell, sink) == 0) return 0;

        const ScanStore* dac_store = scan.ascan_ref != nullptr ? session.scan_store : nullptr;
        if (print_reading_value(session, reading, sink, 0, layout, output_form, scan.ascan_ref,
                                dac_store, scan.velocity_flag) == 0) {
            return 0;
        }

        if (output_form != OUTPUT_DETAILED) {
            if (csv_write("\n", sink) == 0) return 0;
        } else {
            // The flaw detector's value was the whole row; an unknown
            // instrument has no row of its own.
            if (gage_type != GAGE_FLAW_DETECTOR) return 0;
            if (write_dumps(session, walk, reading, scan, more, sink) == 0) return 0;
        }
    }
    return 1;
}

int walk_readings(DlSession& session, int output_form, CsvSink& sink) {
    CsvRow rows(sink);
    const int walked = walk_rows(session, output_form, sink, rows);
    return rows.finish() == 1 ? walked : 0;
}

// The reading table with everything behind it: titles, walk, setups.
int write_readings_and_setups(DlSession& session, CsvSink& sink) {
    if (write_column_titles(session.gage_type, sink) == 0) return 0;
    if (walk_readings(session, OUTPUT_DETAILED, sink) == 0) return 0;
    return write_setup_listing(session, sink);
}

}  // namespace


int write_custom_point_list(DlSession& session, CsvSink& sink) {
    if (csv_write("\nCUSTOM POINT #,CUSTOM POINT TEXT\n", sink) == 0) return 0;
    for (int i = 0; i < CUSTOM_POINT_LABEL_COUNT; ++i) {
        char label[LABEL_TEXT_SIZE] = {};
        if (read_text(session.dl_stream, custom_point_label_offset(i), label, sizeof label,
                      LABEL_TEXT_SIZE) == 0) {
            return 0;
        }
        StoredCell cell;
        stored_cell(cell, label, sink);
        char row[LIST_ROW_SIZE + QUOTED_EXTRA_MAX] = {};
        format_text_bounded(row, LIST_ROW_SIZE + cell.extra, "%i,%s\n", i, cell.text);
        if (csv_write(row, sink) == 0) return 0;
    }
    return 1;
}

int export_linear_file(DlSession& session, int output_form, CsvSink& sink) {
    if (output_form != OUTPUT_DETAILED) return walk_readings(session, OUTPUT_GRID, sink);

    // One array carries the preamble and then the column names.
    char head[HEADER_BUFFER_MAX] = {};
    const std::size_t head_size = header_buffer_size(session.file_type);
    if (write_file_preamble(head, head_size, session.gage_type, CONVERTER_VERSION, sink) == 0) {
        return 0;
    }
    if (write_column_names(head, head_size, session.file_type, sink) == 0) return 0;
    if (write_header_values(session, sink) == 0) return 0;
    if (write_identity_rows(session, sink) == 0) return 0;
    if (write_note_list(session, sink) == 0) return 0;
    return write_readings_and_setups(session, sink);
}

int export_detailed_body(DlSession& session, CsvSink& sink) {
    const std::int32_t type = session.file_type;
    if (type == FILE_TYPE_LINEAR_CPT || type == FILE_TYPE_2D_CPT || type == FILE_TYPE_BOILER) {
        if (write_custom_point_list(session, sink) == 0) return 0;
    }
    if (write_note_list(session, sink) == 0) return 0;
    return write_readings_and_setups(session, sink);
}

}  // namespace ugf
