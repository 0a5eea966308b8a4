// Fixed words of the CSV: the file output words (LabelText), the instrument's
// own screen words (UiText), and the names of walk patterns and file types.
#pragma once

#include <cstdint>

namespace ugf {

inline constexpr int LABEL_TEXT_ROWS = 195;
inline constexpr int UI_TEXT_ROWS = 1588;

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
