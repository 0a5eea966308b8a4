#include "run/export.h"

#include <array>

#include "detailed/detailed_body.h"
#include "detailed/header_values.h"
#include "detailed/preamble.h"
#include "grid/grid.h"

namespace ugf {

namespace {

// NOTES, SETUP and INCREMENTAL files have no export, nor has an unknown type.
bool has_export(std::int32_t file_type) {
    return file_type >= FILE_TYPE_LINEAR && file_type <= FILE_TYPE_4D_MANUAL &&
           file_type != FILE_TYPE_NOTES && file_type != FILE_TYPE_SETUP &&
           file_type != FILE_TYPE_INCREMENTAL;
}

int export_grid(DlSession& session, CsvSink& sink) {
    switch (session.file_type) {
        case FILE_TYPE_LINEAR_CPT: return export_grid_1d(session, sink);
        case FILE_TYPE_2D:
        case FILE_TYPE_2D_MANUAL: return export_grid_2d(session, sink);
        case FILE_TYPE_4D_MANUAL: return export_grid_4d(session, sink);
        default: return export_grid_3d(session, sink);  // 2D+CPT, 3D, BOILER, 3D-MANUAL
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
    if (!has_export(session.file_type)) return 0;
    if (session.file_type == FILE_TYPE_LINEAR || session.file_type == FILE_TYPE_MANUAL) {
        return export_linear_file(session, output_form, sink);
    }
    if (output_form != OUTPUT_DETAILED) return export_grid(session, sink);
    return export_detailed(session, sink);
}

}  // namespace ugf
