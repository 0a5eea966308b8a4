#include "detailed/reading_row.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "present/flaw_row.h"
#include "present/number_format.h"
#include "present/setup_listing.h"
#include "base/csv_row.h"
#include "base/labels.h"
#include "base/text_table.h"
#include "base/text_builder.h"

namespace ugf {

namespace {

constexpr std::size_t ROW_BUFFER_SIZE = 100;   // the status columns
constexpr std::size_t PIECE_BUFFER_SIZE = 64;  // a piece of the pairs

// The reading's coating value is a marker, not a coating, up to this value.
constexpr std::uint32_t COATING_MARKER_MAX = 2;

constexpr const char* LOST_VALUE = "--.---";   // coating and difference of a lost signal
constexpr const char* LOST_OXIDE = "-.----";

using std::string_view_literals::operator""sv;

// A text of a table kept as characters (no relocation) with its length.
template <std::size_t N, std::size_t W>
constexpr bool lengths_match(const char (&texts)[N][W], const std::uint8_t (&lengths)[N]) {
    for (std::size_t i = 0; i < N; ++i) {
        if (std::char_traits<char>::length(texts[i]) != lengths[i]) return false;
    }
    return true;
}

template <std::size_t N, std::size_t W>
std::string_view table_text(const char (&texts)[N][W], const std::uint8_t (&lengths)[N], std::uint32_t code) {
    return code < N ? std::string_view(texts[code], lengths[code]) : ""sv;
}

std::string_view fast_mode_text(std::uint32_t code) {
    static constexpr char TEXTS[][8] = {"OFF", "ON", "MIN/MAX", "MAX-MIN"};
    static constexpr std::uint8_t LENGTHS[] = {3, 2, 7, 7};
    static_assert(lengths_match(TEXTS, LENGTHS));
    return table_text(TEXTS, LENGTHS, code);
}

std::string_view on_off(bool on) { return on ? "ON"sv : "OFF"sv; }

const GaugeSetup& reading_setup(const DlSession& session, const ReadingRecord& reading) {
    return session.setups[setup_number(reading)].gauge;
}

bool is_empty_slot(const ReadingRecord& reading) { return record_type(reading) == RECORD_EMPTY; }

// The digit layout and the "no value" text of a length in the pairs.
DigitLayout pair_layout(const DlSession& session) {
    return session.gage_type == GAGE_PRECISION ? LAYOUT_PRECISION : LAYOUT_STANDARD;
}
std::string_view no_value_text(const DlSession& session) {
    return session.gage_type == GAGE_PRECISION ? "-.----"sv : "--.---"sv;
}

// The value of the first pair, which may be empty, into out (NUMBER_TEXT_SIZE
// bytes); returns its length.
std::size_t first_value_text(char* out, const DlSession& session, const ReadingRecord& reading) {
    const std::uint32_t f = first_value(reading);
    const std::uint32_t mode = meas_mode(reading_setup(session, reading));
    TextBuilder text(out, NUMBER_TEXT_SIZE);
    switch (first_kind(reading)) {
        case 1:  // coating: the standard digits less their sign position
            if (los(reading) != 0 || f <= COATING_MARKER_MAX) {
                text.put(std::string_view(LOST_VALUE));
            } else {
                char digits[NUMBER_TEXT_SIZE];
                const std::size_t n = format_length(digits, static_cast<std::int32_t>(f),
                                                    length_form(units(reading), resolution(reading), LAYOUT_STANDARD, 0, mode));
                text.put(n != 0 ? std::string_view(digits + 1, n - 1) : std::string_view());
            }
            return text.len;
        case 2:  // oxide
            if (los(reading) != 0) {
                text.put(std::string_view(LOST_OXIDE));
                return text.len;
            }
            return format_length(out, static_cast<std::int32_t>(f),
                                 length_form(units(reading), resolution(reading), LAYOUT_PRECISION, 0, mode));
        default:  // temperature, whatever the signal
            return temperature_text(out, static_cast<std::int32_t>(f), units(reading) == 1 ? 1u : 0u);
    }
}

// The DIFF value: the thickness less the setup's reference, as a length in
// the setup's units or as a percentage of the reference, into out
// (NUMBER_TEXT_SIZE bytes); returns its length.
std::size_t difference_text(char* out, const DlSession& session, const ReadingRecord& reading) {
    TextBuilder text(out, NUMBER_TEXT_SIZE);
    if (los(reading) != 0) {
        text.put(std::string_view(LOST_VALUE));
        return text.len;
    }
    const GaugeSetup& setup = reading_setup(session, reading);
    const std::int32_t d = static_cast<std::int32_t>(
        static_cast<std::uint32_t>(thickness_length(reading)) - setup.diff_reference);
    if (diff_type(setup) == 1) {
        return format_length(out, d, length_form(units(setup), resolution(setup), pair_layout(session), 0, meas_mode(setup)));
    }
    if (setup.diff_reference == 0) return 0;  // no percentage of nothing
    const std::int32_t percent =
        truncate_to_i32(static_cast<double>(d) * 100.0 / static_cast<double>(setup.diff_reference));
    // "%3d%%%%", whose "%%" the CSV write halves; the one "%" it leaves is
    // written at once, and passes that write as it stands (a digit before
    // it, a comma behind).
    return percent_text(out, percent);
}

// A piece of the pairs, written whole and then cut where the piece buffer of
// PIECE_BUFFER_SIZE bytes that it was once made in would cut it (no piece
// comes near it).
char* cut_piece(char* start, char* end) {
    return start + std::min<std::size_t>(static_cast<std::size_t>(end - start), PIECE_BUFFER_SIZE - 1);
}

char* put_text(char* at, std::string_view text) {
    copy_bytes(at, text.data(), text.size());
    return at + text.size();
}

char* put_cell(char* at, std::string_view text) {
    *at = ',';
    return put_text(at + 1, text);
}

// A length of the pairs as a cell: ",", then the value in the reading's units
// and resolution.
char* put_length_cell(char* at, const LengthForm& form, std::uint32_t value) {
    *at++ = ',';
    return at + format_length(at, static_cast<std::int32_t>(value), form);
}

// The kind of the reading's lengths in the pairs.
LengthForm pair_length_form(const DlSession& session, const ReadingRecord& reading) {
    return length_form(units(reading), resolution(reading), pair_layout(session), 0,
                       meas_mode(reading_setup(session, reading)));
}

// The first pair: the extra value and its type, or two empty cells.
char* put_first_pair(char* at, const DlSession& session, const ReadingRecord& reading) {
    static constexpr char FIRST_TYPES[][8] = {"", "COATING", "OXIDE", "TEMP"};
    static constexpr std::uint8_t FIRST_TYPE_LENGTHS[] = {0, 7, 5, 4};
    static_assert(lengths_match(FIRST_TYPES, FIRST_TYPE_LENGTHS));
    const std::uint32_t first = first_kind(reading);
    if (first == 0) return put_text(at, ",,"sv);
    char* const start = at;
    *at++ = ',';
    at += first_value_text(at, session, reading);
    return cut_piece(start, put_cell(at, table_text(FIRST_TYPES, FIRST_TYPE_LENGTHS, first)));  // ",%s,%s"
}

// The second and third pairs: minimum and maximum, difference or span.
char* put_second_pairs(char* at, const DlSession& session, const ReadingRecord& reading, int velocity_flag,
                       const LengthForm& form) {
    const std::uint32_t second = second_kind(reading);
    if (second == 0 || velocity_flag == 1) return put_text(at, ",,,,"sv);
    char* const start = at;
    const std::string_view none = no_value_text(session);
    const std::uint32_t mn = min_value(reading);
    const std::uint32_t mx = max_value(reading);
    if (second == 1) {
        // Only the maximum says whether the pair holds values.  ",%s,%s,%s,%s"
        at = mx == 0 ? put_cell(at, none) : put_length_cell(at, form, mn);
        at = put_text(at, ",MIN"sv);
        at = mx == 0 ? put_cell(at, none) : put_length_cell(at, form, mx);
        return cut_piece(start, put_text(at, ",MAX"sv));
    }
    if (second == 2) {
        *at++ = ',';
        at += difference_text(at, session, reading);
        return cut_piece(start, put_text(at, ",DIFF,,"sv));  // ",%s,%s,,"
    }
    // The minimum's fields hold the span; a lost signal doesn't hide it.
    if (mn == 0) {
        at = put_cell(at, none);
    } else {
        at = put_length_cell(at, form, mn);
    }
    return cut_piece(start, put_text(at, ",MAX-MIN,,"sv));
}

// Adds the three pairs of a reading to its row, in two pieces.
void add_measurement_pairs(CsvRow& row, const DlSession& session, const ReadingRecord& reading,
                           int velocity_flag) {
    char text[2 * PIECE_BUFFER_SIZE];
    row.add(std::string_view(text, static_cast<std::size_t>(put_first_pair(text, session, reading) - text)));
    row.add(std::string_view(text, static_cast<std::size_t>(put_second_pairs(text, session, reading, velocity_flag, pair_length_form(session, reading)) - text)));
}

}  // namespace

const char* length_unit_text(std::uint32_t units, bool cp_mode) {
    return ui_text((cp_mode ? UI_CP_UNITS : UI_UNITS) + units);
}

int write_column_titles(std::int32_t gage_type, CsvSink& sink) {
    switch (gage_type) {
        case GAGE_CORROSION:
            return csv_write(
                "\nID,THICKNESS,UNITS,ALARM,DIFF,GAIN,FAST,NOTE #,SETUP #,MEAS MODE,B SCAN,A SCAN,"
                "MEASUREMENT,TYPE,MEASUREMENT,TYPE,MEASUREMENT,TYPE\n",
                sink);
        case GAGE_PRECISION:
            return csv_write(
                "\nID,THICKNESS,UNITS,ALARM,FAST,NOTE #,SETUP #,B SCAN,A SCAN,"
                "MEASUREMENT,TYPE,MEASUREMENT,TYPE,MEASUREMENT,TYPE\n",
                sink);
        case GAGE_FLAW_DETECTOR:
            return csv_write(
                "\nID,UNITS,MEAS BOX 1,VALUE,MEAS BOX 2,VALUE,MEAS BOX 3,VALUE,SETUP,NOTES,"
                "A SCAN,B SCAN,GATE1 ALARM,GATE2 ALARM\n",
                sink);
        default:
            return 0;
    }
}

int write_columns_corrosion(const DlSession& session, const ReadingRecord& reading,
                            int has_ascan, CsvSink& sink, int velocity_flag) {
    CsvRow row(sink);
    add_columns_corrosion(row, session, reading, has_ascan, velocity_flag);
    return row.finish();
}

int write_columns_precision(const DlSession& session, const ReadingRecord& reading,
                            int has_ascan, CsvSink& sink, int velocity_flag) {
    CsvRow row(sink);
    add_columns_precision(row, session, reading, has_ascan, velocity_flag);
    return row.finish();
}

void row_texts_init(RowTexts& texts, const DlSession& session) {
    for (std::uint32_t u = 0; u < 4; ++u) {
        texts.length_units[u] = length_unit_text(u, false);
        texts.velocity_units[u] = ui_text(UI_VELOCITY_UNITS + u);
        texts.cp_units[u] = length_unit_text(u, true);
    }
    for (std::uint32_t a = 0; a < 8; ++a) texts.alarms[a] = alarm_state_text(a);
    for (int s = 0; s < SETUP_COUNT; ++s) {
        const GaugeSetup& setup = session.setups[static_cast<std::size_t>(s)].gauge;
        texts.cp[s] = session.gage_type == GAGE_PRECISION && meas_mode(setup) == MEAS_MODE_CP;
        char gain[NUMBER_TEXT_SIZE];
        format_gain_setting(gain, sizeof gain, setup.gain_mode, setup.gain_db);
        TextBuilder cells(texts.setup_cells[s], sizeof texts.setup_cells[s]);
        cells.put_cells({diff_type_text(diff_type(setup)), gain});
        texts.setup_cells_length[s] = static_cast<std::uint8_t>(cells.len);
        for (std::uint32_t u = 0; u < 4; ++u) {
            for (std::uint32_t r = 0; r < 4; ++r) {
                texts.lengths[u][s * 4 + static_cast<int>(r)] = length_form(u, r, pair_layout(session), 0, meas_mode(setup));
            }
        }
    }
}

// Writes a piece into its slot; false when it doesn't fit.
bool fill_slot(char* slot, std::uint8_t& length, const char* start, const char* end) {
    const auto n = static_cast<std::size_t>(end - start);
    if (n >= RowTexts::SLOT) return false;
    std::memcpy(slot, start, n);
    length = static_cast<std::uint8_t>(n);
    return true;
}

void row_texts_slots(RowTexts& texts, const DlSession& session) {
    const bool corrosion = session.gage_type == GAGE_CORROSION;
    bool fit = true;
    char text[256];
    for (int kind = 0; kind < 3; ++kind) {
        for (std::uint32_t u = 0; u < 4; ++u) {
            const std::string_view unit = kind == 1 ? texts.velocity_units[u] : kind == 2 ? texts.cp_units[u] : texts.length_units[u];
            for (std::uint32_t a = 0; a < 8; ++a) {
                char* at = put_cell(put_cell(text, unit.substr(0, 100)), texts.alarms[a].substr(0, 100));
                fit = fill_slot(texts.head[kind][u][a], texts.head_length[kind][u][a], text, at) && fit;
            }
        }
    }
    for (std::uint32_t f = 0; f < 4; ++f) {
        char* at = put_cell(text, fast_mode_text(f));
        *at++ = ',';
        fit = fill_slot(texts.fast[f], texts.fast_length[f], text, at) && fit;
    }
    // The precision gauge's first two pieces as one, by the bits 21 to 27
    // of the reading's first word: fast mode, alarm state and units.
    for (int kind = 0; kind < 3; ++kind) {
        for (std::uint32_t code = 0; code < 128; ++code) {
            const std::uint32_t u = code >> 5, a = (code >> 2) & 7u, f = code & 3u;
            char* at = put_text(text, {texts.head[kind][u][a], texts.head_length[kind][u][a]});
            at = put_text(at, {texts.fast[f], texts.fast_length[f]});
            fit = fill_slot(texts.head_fast[kind][code], texts.head_fast_length[kind][code], text, at) && fit;
        }
    }
    for (std::uint32_t s = 0; s < SETUP_COUNT; ++s) {
        for (std::uint32_t e = 0; e < 2; ++e) {
            for (std::uint32_t b = 0; b < 2; ++b) {
                for (std::uint32_t h = 0; h < 2; ++h) {
                    char* at = text;
                    *at++ = ',';
                    if (s >= 10) *at++ = static_cast<char>('0' + s / 10);
                    *at++ = static_cast<char>('0' + s % 10);
                    if (corrosion) at = put_cell(at, e != 0 ? "E TO E"sv : "STD"sv);
                    at = put_cell(at, on_off(b != 0));
                    at = put_cell(at, on_off(h != 0));
                    fit = fill_slot(texts.tail[s][e][b][h], texts.tail_length[s][e][b][h], text, at) && fit;
                }
            }
        }
    }
    texts.slots_corrosion = corrosion;
    texts.slots_ready = fit;
}

namespace {

// A piece of a slot: its whole slot copied, the end where its text ends.
char* put_slot(char* at, const char* slot, std::size_t length) {
    std::memcpy(at, slot, 16);
    std::memcpy(at + 16, slot + 16, 16);
    return at + length;
}

// put_status from the slots, which hold the same pieces, and the same cut.
char* put_status_slots(char* at, const RowTexts& texts, const ReadingRecord& reading, int has_ascan,
                       int velocity_flag) {
    char* const start = at;
    const std::uint32_t u = units(reading);
    const std::uint32_t s = setup_number(reading);
    const std::uint32_t a = alarm_state(reading);
    const std::uint32_t f = fast_mode(reading);
    const int kind = velocity_flag == 1 ? 1 : texts.cp[s] ? 2 : 0;
    if (texts.slots_corrosion) {
        at = put_slot(at, texts.head[kind][u][a], texts.head_length[kind][u][a]);
        at = put_slot(at, texts.setup_cells[s], texts.setup_cells_length[s]);
        at = put_slot(at, texts.fast[f], texts.fast_length[f]);
    } else {
        const std::uint32_t code = word_bits(reading.word0, 21, 7);
        at = put_slot(at, texts.head_fast[kind][code], texts.head_fast_length[kind][code]);
    }
    for (std::uint32_t mask = note_mask(reading) & 0xFFFFu; mask != 0; mask &= mask - 1) {
        *at++ = static_cast<char>('A' + __builtin_ctz(mask));
    }
    const std::uint32_t e = echo_to_echo(reading), b = bscan_mode(reading) != 0 ? 1u : 0u;
    const std::uint32_t h = has_ascan == 1 ? 1u : 0u;
    at = put_slot(at, texts.tail[s][e][b][h], texts.tail_length[s][e][b][h]);
    return start + std::min<std::size_t>(static_cast<std::size_t>(at - start), ROW_BUFFER_SIZE - 1);
}

// The status columns, written whole and then cut where the row buffer of
// ROW_BUFFER_SIZE bytes that they were once made in would cut them (no
// text of the tables comes near it).
char* put_status(char* at, const RowTexts& texts, const ReadingRecord& reading, bool corrosion,
                 int has_ascan, int velocity_flag) {
    if (texts.slots_ready && texts.slots_corrosion == corrosion) {
        return put_status_slots(at, texts, reading, has_ascan, velocity_flag);
    }
    char* const start = at;
    const std::uint32_t u = units(reading);
    const std::uint32_t s = setup_number(reading);
    at = put_cell(at, velocity_flag == 1 ? texts.velocity_units[u] : texts.cp[s] ? texts.cp_units[u] : texts.length_units[u]);
    at = put_cell(at, texts.alarms[alarm_state(reading)]);
    if (corrosion) at = put_text(at, {texts.setup_cells[s], texts.setup_cells_length[s]});
    at = put_cell(at, fast_mode_text(fast_mode(reading)));
    *at++ = ',';
    // The note letters, bit 0 ("A") first.
    for (std::uint32_t mask = note_mask(reading) & 0xFFFFu; mask != 0; mask &= mask - 1) {
        *at++ = static_cast<char>('A' + __builtin_ctz(mask));
    }
    *at++ = ',';
    if (s >= 10) *at++ = static_cast<char>('0' + s / 10);
    *at++ = static_cast<char>('0' + s % 10);
    if (corrosion) at = put_cell(at, echo_to_echo(reading) != 0 ? "E TO E"sv : "STD"sv);
    at = put_cell(at, on_off(bscan_mode(reading) != 0));
    at = put_cell(at, on_off(has_ascan == 1));
    return start + std::min<std::size_t>(static_cast<std::size_t>(at - start), ROW_BUFFER_SIZE - 1);
}

}  // namespace

char* put_columns(char* at, const RowTexts& texts, const DlSession& session,
                  const ReadingRecord& reading, bool corrosion, int has_ascan, int velocity_flag) {
    if (is_empty_slot(reading)) return put_text(at, corrosion ? ",,,,,,,,,,,,,,,,\n"sv : ",,,,,,,,,,,,,\n"sv);
    at = put_status(at, texts, reading, corrosion, has_ascan, velocity_flag);
    at = put_first_pair(at, session, reading);
    at = put_second_pairs(at, session, reading, velocity_flag, row_length_form(texts, reading));
    *at++ = '\n';
    return at;
}

namespace {

void add_columns(CsvRow& row, const DlSession& session, const ReadingRecord& reading, bool corrosion,
                 int has_ascan, int velocity_flag) {
    RowTexts texts;
    row_texts_init(texts, session);
    char text[ROW_COLUMNS_ROOM];
    char* const end = put_columns(text, texts, session, reading, corrosion, has_ascan, velocity_flag);
    row.add(std::string_view(text, static_cast<std::size_t>(end - text)));
}

}  // namespace

void add_columns_corrosion(CsvRow& row, const DlSession& session, const ReadingRecord& reading,
                           int has_ascan, int velocity_flag) {
    add_columns(row, session, reading, true, has_ascan, velocity_flag);
}

void add_columns_precision(CsvRow& row, const DlSession& session, const ReadingRecord& reading,
                           int has_ascan, int velocity_flag) {
    add_columns(row, session, reading, false, has_ascan, velocity_flag);
}

int write_measurement_pairs(const DlSession& session, const ReadingRecord& reading,
                            CsvSink& sink, int velocity_flag) {
    CsvRow row(sink);
    add_measurement_pairs(row, session, reading, velocity_flag);
    return row.finish();
}

}  // namespace ugf
