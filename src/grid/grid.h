// The grid form of a survey: one table laid out as the survey is, with one
// cell for each test point. A cell finds its reading by the storage index of
// its position, so the walk pattern and the increment order change nothing.
// The bodies stream: each cell is read and written at once, and the titles
// are derived again for each column and row.
#pragma once

#include <cstdint>

#include "file/records.h"
#include "file/session.h"
#include "present/number_format.h"
#include "base/console.h"

namespace ugf {

// LINEAR+CPT: custom points across, dimension 1 down.
int export_grid_1d(DlSession& session, CsvSink& sink);
// 2D and 2D-MANUAL: dimension 1 across, dimension 0 down.
int export_grid_2d(DlSession& session, CsvSink& sink);
// 2D+CPT, 3D, BOILER and 3D-MANUAL: dimension 2 in groups of dimension 0
// across, dimension 1 down.
int export_grid_3d(DlSession& session, CsvSink& sink);
// 4D-MANUAL: dimensions 3, 2 and 0 across, dimension 1 down.
int export_grid_4d(DlSession& session, CsvSink& sink);

// The reading of a grid cell: the slot at a storage index with the head of
// the block behind a link merged in, its A-scan (or nullptr), and whether it
// is a velocity reading (whose text is then the session's velocity_text).
struct GridReading {
    ReadingRecord reading{};
    const AscanRecord* scan = nullptr;
    int velocity_cell = 0;
};

// Reads the reading of the cell at the storage index. 1, or 0 when a read
// fails.
int read_grid_reading(DlSession& session, std::int64_t storage_index, GridReading& cell);

// The value of the reading at the storage index and its comma, with the
// block head merged in. 1, or 0 when the read or the write fails.
int write_grid_cell(DlSession& session, std::int64_t storage_index, CsvSink& sink, DigitLayout layout);

}  // namespace ugf
