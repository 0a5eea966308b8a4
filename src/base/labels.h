// Fixed words of the CSV: the file output words (LabelText), the instrument's
// own screen words (UiText), and the names of walk patterns and file types.
#pragma once

#include <cstdint>

namespace ugf {

inline constexpr int LABEL_TEXT_ROWS = 195;
inline constexpr int UI_TEXT_ROWS = 1588;

// The rows that the writers name. A row that a code selects from is the
// first of its run: its text is that of code 0.

// UiText.
inline constexpr std::int64_t UI_BLANKS = 2;            // 31 blanks
inline constexpr std::int64_t UI_UNITS = 13;            // "IN", "MM", "US"
inline constexpr std::int64_t UI_NONE = 29;             // "NONE"
inline constexpr std::int64_t UI_GAIN_MODE = 48;        // the gain modes
inline constexpr std::int64_t UI_OFF_ON = 128;          // "OFF", "ON"
inline constexpr std::int64_t UI_RECTIFICATION = 135;   // " RF ", "FULL", "HW+ ", "HW- "
inline constexpr std::int64_t UI_OUTLINE = 165;         // "OUTLINE"
inline constexpr std::int64_t UI_FILLED = 166;          // "FILLED"
inline constexpr std::int64_t UI_VELOCITY_UNITS = 211;  // "IN/US", "M/S", "-----"
inline constexpr std::int64_t UI_DESCRIPTION = 422;
inline constexpr std::int64_t UI_LOCATION = 423;
inline constexpr std::int64_t UI_INSPECTOR_ID = 424;
inline constexpr std::int64_t UI_DAC_MODE = 1037;       // "ASME", "ASME 3", "JIS", "CUSTOM"
inline constexpr std::int64_t UI_FLAW_MEAS_MODE = 1046; // "P/E ", "DUAL", "THRU", "GATE 2"
inline constexpr std::int64_t UI_CP_UNITS = 1406;       // "MIL ", "MICR"
inline constexpr std::int64_t UI_COATING_LONG = 1444;   // box kind 40 in boxes 2 and 3

// LabelText.
inline constexpr std::int64_t LABEL_PRODUCT_CORROSION = 85;  // "40-116"; 86 and 87 follow
inline constexpr std::int64_t LABEL_FILENAME = 88;
inline constexpr std::int64_t LABEL_VERSION = 89;
inline constexpr std::int64_t LABEL_ROW = 92;
inline constexpr std::int64_t LABEL_ID_COUNT = 93;
inline constexpr std::int64_t LABEL_SETUP_COUNT = 94;
inline constexpr std::int64_t LABEL_NOTE_COUNT = 95;
inline constexpr std::int64_t LABEL_COL = 96;
inline constexpr std::int64_t LABEL_ELEV = 97;
inline constexpr std::int64_t LABEL_TUBE = 98;
inline constexpr std::int64_t LABEL_NOTE_TEXT = 120;
inline constexpr std::int64_t LABEL_TYPE = 130;
inline constexpr std::int64_t LABEL_LAST_SAVED = 131;
inline constexpr std::int64_t LABEL_CREATED = 132;
inline constexpr std::int64_t LABEL_POINT = 149;
inline constexpr std::int64_t LABEL_CUSTOM_POINT = 150;
inline constexpr std::int64_t LABEL_NOTES_DESIGNATOR = 151;
inline constexpr std::int64_t LABEL_PRODUCT = 158;
inline constexpr std::int64_t LABEL_FILE_VERSION = 159;
inline constexpr std::int64_t LABEL_PATTERN = 161;
inline constexpr std::int64_t LABEL_DIM1 = 187;         // to "DIM4" at 190
inline constexpr std::int64_t LABEL_DIM1_LABELS = 191;  // to "DIM4 LABELS" at 194

// Row of LabelText; rows the table doesn't list, and rows past its end, are
// the empty text.
const char* label_text(std::int64_t row);

// Row of UiText; only the rows the converter uses hold text, every other row
// (and every row past the end) is the empty text.
const char* ui_text(std::int64_t row);

// "STANDARD", "REVERSE", "ZIGZAG", "REVERSE ZIGZAG"; empty for 4 and above.
const char* walk_pattern_name(std::int64_t pattern);

// "LINEAR" to "4D-MANUAL" for 0 to 12; empty for any other value.
const char* file_type_name(std::int64_t file_type);

}  // namespace ugf
