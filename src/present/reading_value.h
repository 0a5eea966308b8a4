// The value of one reading as CSV text, for the detailed rows and the grid
// cells alike. A thickness gauge reading is one cell: its thickness, the
// marker of a lost signal, or (in a grid) the notes that the inspector
// attached in place of the lost thickness. A flaw detector reading is handed
// to its own row writer (present/flaw_row.h).
#pragma once

#include <array>
#include <cstdint>

#include "file/session.h"
#include "present/number_format.h"
#include "base/console.h"
#include "store/record.h"
#include "store/scan.h"

namespace ugf {

// Writes the value of `reading` through csv_write.
//   comma          1: the cell ends with "," (grid); 0: the text stands alone.
//   layout         the DigitLayout of the instrument (LAYOUT_STANDARD for gage
//                  type 5 and unknown types, LAYOUT_PRECISION for 6,
//                  LAYOUT_FLAW for 7).
//   full           1: the whole detailed row (flaw detector) and the lost
//                  signal marker whatever the notes; 0: a grid cell.
//   scan           the A-scan of a flaw detector reading that has one, else
//                  nullptr.
//   store          the scan store that holds the DAC points of `scan`, or
//                  nullptr (then no curve exists).
//   velocity_cell  1: a velocity reading whose text stands in the session's
//                  velocity_text.
// Gage type 7 ignores comma, layout and velocity_cell. 1, or 0 when a write
// fails.
int print_reading_value(const DlSession& session, const ReadingRecord& reading, CsvSink& sink,
                        int comma, int layout, int full, const AscanRecord* scan,
                        const ScanStore* store, int velocity_cell);

// One thickness gauge cell: nothing or "," for an empty slot, the lost signal
// marker ("--.---", "-.---" under LAYOUT_PRECISION), the velocity text
// `velocity_cell` of a velocity reading (else nullptr), or the thickness; with
// comma 1 a "," follows. Always 1.
int print_thickness_cell(const ReadingRecord& reading, CsvSink& sink, int comma, int layout,
                         std::uint32_t meas_mode, const char* velocity_cell);

// The text of a thickness cell without its comma, into out (NUMBER_TEXT_SIZE
// bytes); returns its length.
std::size_t thickness_text(char* out, const ReadingRecord& reading, int layout, std::uint32_t meas_mode,
                           const char* velocity_cell);
// The same with the reading's kind of length chosen: `form` of its units,
// resolution and setup's measurement mode in the layout, doubling 0.
// A reading's own length is made inline; an empty slot, a lost signal and a
// velocity out of line (thickness_text_other).
std::size_t thickness_text_other(char* out, const ReadingRecord& reading, const LengthForm& form,
                                 const char* velocity_cell);
inline std::size_t thickness_text_form(char* out, const ReadingRecord& reading, const LengthForm& form,
                                       const char* velocity_cell) {
    static_assert(NUMBER_TEXT_SIZE >= 16);  // format_length's one-word way
    if (record_type(reading) != RECORD_EMPTY && los(reading) == 0 && velocity_cell == nullptr) {
        return format_length(out, thickness_length(reading), form);
    }
    return thickness_text_other(out, reading, form, velocity_cell);
}

// The text that print_thickness_cell writes, into `cell`.
using ThicknessCell = std::array<char, NUMBER_TEXT_SIZE + 1>;
void thickness_cell_text(ThicknessCell& cell, const ReadingRecord& reading, int comma, int layout,
                         std::uint32_t meas_mode, const char* velocity_cell);

}  // namespace ugf
