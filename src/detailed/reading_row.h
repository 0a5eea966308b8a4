// The reading table of the detailed output of the thickness gauges: its title
// row (for every instrument), and behind the identifier and the thickness of
// each row the status columns and the three measurement pairs.
//
// Everything works from the merged reading: for a reading that carries a scan,
// the head of the scan block, with the setup that the block names.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "file/session.h"
#include "base/console.h"
#include "base/csv_row.h"
#include "present/number_format.h"
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

// The texts of the status cells that small codes of a reading or its setup
// choose, with their lengths: made once for a walk instead of looked up and
// measured in every row.
struct RowTexts {
    std::string_view length_units[4];    // by units code
    std::string_view velocity_units[4];  // of a velocity reading
    std::string_view cp_units[4];        // in measurement mode 5 of the precision gauge
    std::string_view alarms[8];          // by alarm state
    bool cp[SETUP_COUNT] = {};           // a precision gauge setup in measurement mode 5
    // ",%s,%s" of the DIFF and GAIN cells of each corrosion gauge setup.
    char setup_cells[SETUP_COUNT][2 * NUMBER_TEXT_SIZE] = {};
    std::uint8_t setup_cells_length[SETUP_COUNT] = {};
    // The status columns as four pieces in slots of fixed size, each copied
    // whole by two fixed moves and cut to its length (row_texts_slots):
    // ",UNITS,ALARM" by units kind (0 a length, 1 a velocity, 2 mode 5),
    // units code and alarm state; ",FAST," by fast mode; and
    // ",SETUP #[,E TO E|STD],B SCAN,A SCAN" by setup, echo-to-echo,
    // B-scan mode and A-scan, for the gauge of `slots_corrosion`. Branches
    // on the codes, which vary from reading to reading, mispredict; these
    // copies don't.
    static constexpr std::size_t SLOT = 32;
    bool slots_ready = false;  // made, and every piece fits its slot
    bool slots_corrosion = false;
    char head[3][4][8][SLOT] = {};
    std::uint8_t head_length[3][4][8] = {};
    char fast[4][SLOT] = {};
    std::uint8_t fast_length[4] = {};
    // The precision gauge's ",UNITS,ALARM,FAST," as one piece, by units
    // kind and the bits of fast mode (2), alarm state (3) and units (2).
    char head_fast[3][128][SLOT] = {};
    std::uint8_t head_fast_length[3][128] = {};
    char tail[SETUP_COUNT][2][2][2][SLOT] = {};
    std::uint8_t tail_length[SETUP_COUNT][2][2][2] = {};
    // The kinds of length of the thickness and the pairs (the layout of the
    // pairs, which the thickness of both gauges shares), by units code and
    // by setup and resolution: row_length_form.
    LengthForm lengths[4][SETUP_COUNT * 4] = {};
};
inline const LengthForm& row_length_form(const RowTexts& texts, const ReadingRecord& reading) {
    return texts.lengths[units(reading)][setup_number(reading) * 4 + resolution(reading)];
}
void row_texts_init(RowTexts& texts, const DlSession& session);
// Makes the slots of the status pieces, for a walk's rows.
void row_texts_slots(RowTexts& texts, const DlSession& session);

// The status columns, the measurement pairs and the line end of a reading
// (the text that add_columns_corrosion and add_columns_precision add),
// written at `at`, which has room for ROW_COLUMNS_ROOM characters; returns
// the end of the text.
inline constexpr std::size_t ROW_COLUMNS_ROOM = 512;
// `corrosion` chooses the corrosion gauge's columns, else the precision gauge's.
char* put_columns(char* at, const RowTexts& texts, const DlSession& session,
                  const ReadingRecord& reading, bool corrosion, int has_ascan, int velocity_flag);

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
