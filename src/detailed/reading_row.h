// The reading table of the detailed output of the thickness gauges: its title
// row (for every instrument), and behind the identifier and the thickness of
// each row the status columns and the three measurement pairs.
//
// Everything works from the merged reading: for a reading that carries a scan,
// the head of the scan block, with the setup that the block names.
#pragma once

#include <cstdint>

#include "file/session.h"
#include "base/console.h"
#include "base/csv_row.h"
#include "store/record.h"

namespace ugf {

// The title row of the reading table, which starts with its own line end:
// 18 columns for gage type 5, 15 for 6, 14 for 7. 1, or 0 (with nothing
// written) for any other gage type.
int write_column_titles(std::int32_t gage_type, CsvSink& sink);

// The columns of a corrosion gauge reading that follow its thickness, the
// measurement pairs and the line end: UNITS, ALARM, DIFF, GAIN, FAST, NOTE #,
// SETUP #, MEAS MODE, B SCAN, A SCAN. An empty slot gives 16 commas.
// `has_ascan` 1 shows "ON" under A SCAN; `velocity_flag` 1 marks a velocity
// reading. 1, or 0 when a write gave 0.
int write_columns_corrosion(const DlSession& session, const ReadingRecord& reading,
                            int has_ascan, CsvSink& sink, int velocity_flag);

// The same for the precision gauge: UNITS, ALARM, FAST, NOTE #, SETUP #,
// B SCAN, A SCAN; an empty slot gives 13 commas.
int write_columns_precision(const DlSession& session, const ReadingRecord& reading,
                            int has_ascan, CsvSink& sink, int velocity_flag);

// The same columns added to a row that was begun with the identifier and
// the thickness, so that the whole row reaches csv_write at once.
void add_columns_corrosion(CsvRow& row, const DlSession& session, const ReadingRecord& reading,
                           int has_ascan, int velocity_flag);
void add_columns_precision(CsvRow& row, const DlSession& session, const ReadingRecord& reading,
                           int has_ascan, int velocity_flag);

// The three MEASUREMENT,TYPE pairs of a reading, six cells in two pieces: the
// first extra value (coating, oxide or temperature), then the minimum and
// maximum, the difference or the max-min span. A velocity reading leaves the
// second piece empty. 1, or 0 when a write gave 0.
int write_measurement_pairs(const DlSession& session, const ReadingRecord& reading,
                            CsvSink& sink, int velocity_flag);

// The unit label of a length or time: "IN", "MM", "US" by the units code, or
// "MIL ", "MICR" in measurement mode 5 of the precision gauge (`cp_mode`).
const char* length_unit_text(std::uint32_t units, bool cp_mode);

}  // namespace ugf
