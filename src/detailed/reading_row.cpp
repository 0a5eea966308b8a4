#include "detailed/reading_row.h"

#include <array>
#include <cstddef>

#include "present/flaw_row.h"
#include "present/number_format.h"
#include "run/labels.h"

namespace ugf {

namespace {

constexpr std::size_t ROW_BUFFER_SIZE = 100;
constexpr std::size_t PIECE_BUFFER_SIZE = 64;

// UiText rows of the unit labels: lengths, velocities, and lengths in
// measurement mode 5 of the precision gauge (mils and microns).
constexpr std::int64_t UNIT_ROW = 13;
constexpr std::int64_t VELOCITY_UNIT_ROW = 211;
constexpr std::int64_t CP_UNIT_ROW = 1406;

// The reading's coating value is a marker, not a coating, up to this value.
constexpr std::uint32_t COATING_MARKER_MAX = 2;

constexpr const char* LOST_VALUE = "--.---";   // coating and difference of a lost signal
constexpr const char* LOST_OXIDE = "-.----";

// Picks the text of a small code; codes past the table have no text.
template <std::size_t N>
const char* code_text(const std::array<const char*, N>& texts, std::uint32_t code) {
    return code < N ? texts[code] : "";
}

const char* diff_type_text(std::uint32_t code) {
    static constexpr std::array<const char*, 3> TEXTS = {"OFF", "ABSOLUTE", "PERCENT"};
    return code_text(TEXTS, code);
}

const char* fast_mode_text(std::uint32_t code) {
    static constexpr std::array<const char*, 4> TEXTS = {"OFF", "ON", "MIN/MAX", "MAX-MIN"};
    return code_text(TEXTS, code);
}

const char* on_off(bool on) { return on ? "ON" : "OFF"; }

// One capital letter for each set bit of the note mask, bit 0 ("A") first.
struct NoteLetters {
    std::array<char, 17> text{};
    explicit NoteLetters(std::uint32_t mask) {
        std::size_t n = 0;
        for (std::uint32_t bit = 0; bit < 16; ++bit) {
            if (((mask >> bit) & 1u) != 0) text[n++] = static_cast<char>('A' + bit);
        }
        text[n] = '\0';
    }
};

const GaugeSetup& reading_setup(const DlSession& session, const ReadingRecord& reading) {
    return session.setups[setup_number(reading)].gauge;
}

// The UNITS cell; only the precision gauge looks at measurement mode 5.
const char* units_text(const DlSession& session, const ReadingRecord& reading, int velocity_flag) {
    const std::uint32_t u = units(reading);
    if (velocity_flag == 1) return ui_text(VELOCITY_UNIT_ROW + u);
    return length_unit_text(u, session.gage_type == GAGE_PRECISION &&
                                   meas_mode(reading_setup(session, reading)) == MEAS_MODE_CP);
}

bool is_empty_slot(const ReadingRecord& reading) { return record_type(reading) == RECORD_EMPTY; }

// The digit layout and the "no value" text of a length in the pairs.
DigitLayout pair_layout(const DlSession& session) {
    return session.gage_type == GAGE_PRECISION ? LAYOUT_PRECISION : LAYOUT_STANDARD;
}
const char* no_value_text(const DlSession& session) {
    return session.gage_type == GAGE_PRECISION ? "-.----" : "--.---";
}

// A stored 20-bit value as a length, in the reading's units and resolution.
void format_pair_length(char* out, std::size_t size, const DlSession& session,
                        const ReadingRecord& reading, std::uint32_t value) {
    format_thickness(out, size, static_cast<std::int32_t>(value), units(reading), resolution(reading),
                     pair_layout(session), 0, meas_mode(reading_setup(session, reading)));
}

// The value of the first pair. The text may be empty.
void first_value_text(char* out, std::size_t size, const DlSession& session,
                      const ReadingRecord& reading) {
    const std::uint32_t f = first_value(reading);
    const std::uint32_t mode = meas_mode(reading_setup(session, reading));
    switch (first_kind(reading)) {
        case 1:  // coating: the standard digits less their sign position
            if (los(reading) != 0 || f <= COATING_MARKER_MAX) {
                format_text(out, size, "%s", LOST_VALUE);
            } else {
                char text[NUMBER_TEXT_SIZE];
                format_thickness(text, sizeof text, static_cast<std::int32_t>(f), units(reading),
                                 resolution(reading), LAYOUT_STANDARD, 0, mode);
                format_text(out, size, "%s", text[0] != '\0' ? text + 1 : text);
            }
            break;
        case 2:  // oxide
            if (los(reading) != 0) {
                format_text(out, size, "%s", LOST_OXIDE);
            } else {
                format_thickness(out, size, static_cast<std::int32_t>(f), units(reading),
                                 resolution(reading), LAYOUT_PRECISION, 0, mode);
            }
            break;
        default:  // temperature, whatever the signal
            format_temperature(out, size, static_cast<std::int32_t>(f), units(reading) == 1 ? 1u : 0u);
            break;
    }
}

// The DIFF value: the thickness less the setup's reference, as a length in
// the setup's units or as a percentage of the reference. The percent text
// keeps "%%", which the CSV write halves.
void difference_text(char* out, std::size_t size, const DlSession& session,
                     const ReadingRecord& reading) {
    if (los(reading) != 0) {
        format_text(out, size, "%s", LOST_VALUE);
        return;
    }
    const GaugeSetup& setup = reading_setup(session, reading);
    const std::int32_t d = static_cast<std::int32_t>(
        static_cast<std::uint32_t>(thickness_length(reading)) - setup.diff_reference);
    if (diff_type(setup) == 1) {
        format_thickness(out, size, d, units(setup), resolution(setup), pair_layout(session), 0,
                         meas_mode(setup));
        return;
    }
    if (setup.diff_reference == 0) {  // no percentage of nothing
        out[0] = '\0';
        return;
    }
    const std::int32_t percent =
        truncate_to_i32(static_cast<double>(d) * 100.0 / static_cast<double>(setup.diff_reference));
    format_text(out, size, "%3d%%%%", static_cast<int>(percent));
}

// Writes the status columns, the measurement pairs and the line end.
int finish_row(const char* row, const DlSession& session, const ReadingRecord& reading,
               CsvSink& sink, int velocity_flag) {
    if (csv_write(row, sink) == 0) return 0;
    if (write_measurement_pairs(session, reading, sink, velocity_flag) == 0) return 0;
    return csv_write("\n", sink);
}

}  // namespace

const char* length_unit_text(std::uint32_t units, bool cp_mode) {
    return ui_text((cp_mode ? CP_UNIT_ROW : UNIT_ROW) + units);
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
    if (is_empty_slot(reading)) return csv_write(",,,,,,,,,,,,,,,,\n", sink);
    const GaugeSetup& setup = reading_setup(session, reading);
    char gain[NUMBER_TEXT_SIZE];
    format_gain_setting(gain, sizeof gain, setup.gain_mode, setup.gain_db);
    const NoteLetters notes(note_mask(reading));
    char row[ROW_BUFFER_SIZE];
    format_text(row, sizeof row, ",%s,%s,%s,%s,%s,%s,%d,%s,%s,%s",
                units_text(session, reading, velocity_flag), alarm_state_text(alarm_state(reading)),
                diff_type_text(diff_type(setup)), gain, fast_mode_text(fast_mode(reading)),
                notes.text.data(), static_cast<int>(setup_number(reading)),
                echo_to_echo(reading) != 0 ? "E TO E" : "STD", on_off(bscan_mode(reading) != 0),
                on_off(has_ascan == 1));
    return finish_row(row, session, reading, sink, velocity_flag);
}

int write_columns_precision(const DlSession& session, const ReadingRecord& reading,
                            int has_ascan, CsvSink& sink, int velocity_flag) {
    if (is_empty_slot(reading)) return csv_write(",,,,,,,,,,,,,\n", sink);
    const NoteLetters notes(note_mask(reading));
    char row[ROW_BUFFER_SIZE];
    format_text(row, sizeof row, ",%s,%s,%s,%s,%d,%s,%s",
                units_text(session, reading, velocity_flag), alarm_state_text(alarm_state(reading)),
                fast_mode_text(fast_mode(reading)), notes.text.data(),
                static_cast<int>(setup_number(reading)), on_off(bscan_mode(reading) != 0),
                on_off(has_ascan == 1));
    return finish_row(row, session, reading, sink, velocity_flag);
}

int write_measurement_pairs(const DlSession& session, const ReadingRecord& reading,
                            CsvSink& sink, int velocity_flag) {
    static constexpr std::array<const char*, 4> FIRST_TYPES = {"", "COATING", "OXIDE", "TEMP"};
    char piece[PIECE_BUFFER_SIZE];
    char value[NUMBER_TEXT_SIZE];

    const std::uint32_t first = first_kind(reading);
    if (first == 0) {
        format_text(piece, sizeof piece, ",,");
    } else {
        first_value_text(value, sizeof value, session, reading);
        format_text(piece, sizeof piece, ",%s,%s", value, FIRST_TYPES[first]);
    }
    if (csv_write(piece, sink) == 0) return 0;

    const std::uint32_t second = second_kind(reading);
    const char* none = no_value_text(session);
    const std::uint32_t mn = min_value(reading);
    const std::uint32_t mx = max_value(reading);
    if (second == 0 || velocity_flag == 1) {
        format_text(piece, sizeof piece, ",,,,");
    } else if (second == 1) {
        // Only the maximum says whether the pair holds values.
        if (mx == 0) {
            format_text(piece, sizeof piece, ",%s,%s,%s,%s", none, "MIN", none, "MAX");
        } else {
            char max_text[NUMBER_TEXT_SIZE];
            format_pair_length(value, sizeof value, session, reading, mn);
            format_pair_length(max_text, sizeof max_text, session, reading, mx);
            format_text(piece, sizeof piece, ",%s,%s,%s,%s", value, "MIN", max_text, "MAX");
        }
    } else if (second == 2) {
        difference_text(value, sizeof value, session, reading);
        format_text(piece, sizeof piece, ",%s,%s,,", value, "DIFF");
    } else {
        // The minimum's fields hold the span; a lost signal doesn't hide it.
        if (mn == 0) {
            format_text(piece, sizeof piece, ",%s,%s,,", none, "MAX-MIN");
        } else {
            format_pair_length(value, sizeof value, session, reading, mn);
            format_text(piece, sizeof piece, ",%s,%s,,", value, "MAX-MIN");
        }
    }
    return csv_write(piece, sink);
}

}  // namespace ugf
