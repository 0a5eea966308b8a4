#include "run/export.h"

#include <array>

#include "detailed/detailed_body.h"
#include "detailed/header_values.h"
#include "detailed/preamble.h"
#include "grid/grid.h"

namespace ugf {

namespace {

int export_grid(DlSession& session, CsvSink& sink) {
    switch (grid_shape(session.file_type).kind) {
        case GRID_1D: return export_grid_1d(session, sink);
        case GRID_2D: return export_grid_2d(session, sink);
        case GRID_4D: return export_grid_4d(session, sink);
        default: return export_grid_3d(session, sink);
    }
}

int export_detailed(DlSession& session, CsvSink& sink) {
    std::array<char, HEADER_BUFFER_MAX> row{};
    const std::size_t size = header_buffer_size(session.file_type);
    if (write_file_preamble(row.data(), size, session.gage_type, CONVERTER_VERSION, sink) == 0) return 0;
    if (write_column_names(row.data(), size, session.file_type, sink) == 0) return 0;
    if (write_header_values(session, sink) == 0) return 0;
    if (is_manual_layout(session.file_type) &&
        write_dimension_labels(session, sink, session.file_type) == 0) {
        return 0;
    }
    if (write_identity_rows(session, sink) == 0) return 0;
    return export_detailed_body(session, sink);
}

}  // namespace

int export_datalogger_file(DlSession& session, int output_form, CsvSink& sink) {
    if (!file_type_has_output(session.file_type)) return 0;
    // "LINEAR" and "MANUAL" surveys are lists in both forms.
    if (grid_shape(session.file_type).kind == GRID_LINES) return export_linear_file(session, output_form, sink);
    if (output_form != OUTPUT_DETAILED) return export_grid(session, sink);
    return export_detailed(session, sink);
}

}  // namespace ugf
