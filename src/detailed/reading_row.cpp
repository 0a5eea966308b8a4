#include "detailed/reading_row.h"

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
#include "base/text_memo.h"

namespace ugf {

namespace {

constexpr std::size_t ROW_BUFFER_SIZE = ROW_TEXT_SIZE;
constexpr std::size_t PIECE_BUFFER_SIZE = PIECE_TEXT_SIZE;

// The reading's coating value is a marker, not a coating, up to this value.
constexpr std::uint32_t COATING_MARKER_MAX = 2;

constexpr const char* LOST_VALUE = "--.---";   // coating and difference of a lost signal
constexpr const char* LOST_OXIDE = "-.----";

const char* fast_mode_text(std::uint32_t code) {
    static constexpr char TEXTS[][8] = {"OFF", "ON", "MIN/MAX", "MAX-MIN"};
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
    if (velocity_flag == 1) return ui_text(UI_VELOCITY_UNITS + u);
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

// The session's remembered texts of the rows: the status texts and the two
// pieces of the pairs, each keyed on every input of its format.
RowMemos& row_memos(const DlSession& session) { return session.memos->rows; }

// Places a code of `bits` bits at bit `at` of a key word.
std::uint64_t key_bits(std::uint32_t code, int at) { return static_cast<std::uint64_t>(code) << at; }
std::uint32_t flag(bool on) { return on ? 1u : 0u; }

// What the status texts of a reading depend on, the gain and the setup's
// own texts aside: the inputs of the UNITS text (velocity reading, units,
// precision gauge in mode 5), the alarm, fast mode, echo-to-echo, B-scan and
// A-scan codes, the setup number and the note mask.
std::uint64_t status_key(const DlSession& session, const ReadingRecord& reading, int has_ascan,
                         int velocity_flag) {
    const bool cp = session.gage_type == GAGE_PRECISION &&
                    meas_mode(reading_setup(session, reading)) == MEAS_MODE_CP;
    return key_bits(flag(velocity_flag == 1), 0) | key_bits(units(reading), 1) |
           key_bits(flag(cp), 3) | key_bits(alarm_state(reading), 4) |
           key_bits(fast_mode(reading), 7) | key_bits(flag(echo_to_echo(reading) != 0), 9) |
           key_bits(flag(bscan_mode(reading) != 0), 10) | key_bits(flag(has_ascan == 1), 11) |
           key_bits(setup_number(reading), 12) | key_bits(note_mask(reading), 17);
}

// The first pair: the extra value and its type, or two empty cells.
void format_first_pair(char* piece, std::size_t size, const DlSession& session,
                       const ReadingRecord& reading) {
    static constexpr char FIRST_TYPES[][8] = {"", "COATING", "OXIDE", "TEMP"};
    const std::uint32_t first = first_kind(reading);
    if (first == 0) {
        format_text(piece, size, ",,");
        return;
    }
    char value[NUMBER_TEXT_SIZE];
    first_value_text(value, sizeof value, session, reading);
    format_text(piece, size, ",%s,%s", value, FIRST_TYPES[first]);
}

// The second and third pairs: minimum and maximum, difference or span.
void format_second_pairs(char* piece, std::size_t size, const DlSession& session,
                         const ReadingRecord& reading, int velocity_flag) {
    char value[NUMBER_TEXT_SIZE];
    const std::uint32_t second = second_kind(reading);
    const char* none = no_value_text(session);
    const std::uint32_t mn = min_value(reading);
    const std::uint32_t mx = max_value(reading);
    if (second == 0 || velocity_flag == 1) {
        format_text(piece, size, ",,,,");
    } else if (second == 1) {
        // Only the maximum says whether the pair holds values.
        if (mx == 0) {
            format_text(piece, size, ",%s,%s,%s,%s", none, "MIN", none, "MAX");
        } else {
            char max_text[NUMBER_TEXT_SIZE];
            format_pair_length(value, sizeof value, session, reading, mn);
            format_pair_length(max_text, sizeof max_text, session, reading, mx);
            format_text(piece, size, ",%s,%s,%s,%s", value, "MIN", max_text, "MAX");
        }
    } else if (second == 2) {
        difference_text(value, sizeof value, session, reading);
        format_text(piece, size, ",%s,%s,,", value, "DIFF");
    } else {
        // The minimum's fields hold the span; a lost signal doesn't hide it.
        if (mn == 0) {
            format_text(piece, size, ",%s,%s,,", none, "MAX-MIN");
        } else {
            format_pair_length(value, sizeof value, session, reading, mn);
            format_text(piece, size, ",%s,%s,,", value, "MAX-MIN");
        }
    }
}

// The keys of the two pieces of the pairs: every input of their formats.
struct PairKeys {
    decltype(RowMemos::first_pair)::Key first;
    decltype(RowMemos::second_pairs)::Key second;
};

PairKeys pair_keys(const DlSession& session, const ReadingRecord& reading, int velocity_flag) {
    const GaugeSetup& setup = reading_setup(session, reading);
    // The difference alone looks at the thickness.
    const std::uint32_t second = second_kind(reading);
    const std::uint32_t thickness =
        second == 2 ? static_cast<std::uint32_t>(thickness_length(reading)) : 0;
    return {{key_bits(first_kind(reading), 0) | key_bits(los(reading), 2) |
             key_bits(units(reading), 3) | key_bits(resolution(reading), 5) |
             key_bits(meas_mode(setup), 8) | key_bits(first_value(reading), 12)},
            {key_bits(second, 0) | key_bits(flag(velocity_flag == 1), 2) |
                 key_bits(los(reading), 3) | key_bits(units(reading), 4) |
                 key_bits(resolution(reading), 6) |
                 key_bits(flag(session.gage_type == GAGE_PRECISION), 8) |
                 key_bits(setup.meas_word, 16) | key_bits(setup.diff_flags, 32),
             key_bits(min_value(reading), 0) | key_bits(max_value(reading), 20),
             key_bits(thickness, 0) | key_bits(setup.diff_reference, 32)}};
}

std::string_view first_pair_text(const DlSession& session, const ReadingRecord& reading,
                                 const PairKeys& keys) {
    auto& entry = row_memos(session).first_pair.slot(keys.first);
    if (!memo_holds(entry, keys.first)) {
        char piece[PIECE_BUFFER_SIZE];
        format_first_pair(piece, sizeof piece, session, reading);
        memo_store(entry, keys.first, piece);
    }
    return entry.view();
}

std::string_view second_pairs_text(const DlSession& session, const ReadingRecord& reading,
                                   const PairKeys& keys, int velocity_flag) {
    auto& entry = row_memos(session).second_pairs.slot(keys.second);
    if (!memo_holds(entry, keys.second)) {
        char piece[PIECE_BUFFER_SIZE];
        format_second_pairs(piece, sizeof piece, session, reading, velocity_flag);
        memo_store(entry, keys.second, piece);
    }
    return entry.view();
}

// Adds the three pairs of a reading to its row, in two pieces.
void add_measurement_pairs(CsvRow& row, const DlSession& session, const ReadingRecord& reading,
                           int velocity_flag) {
    const PairKeys keys = pair_keys(session, reading, velocity_flag);
    row.add(first_pair_text(session, reading, keys));
    row.add(second_pairs_text(session, reading, keys, velocity_flag));
}

// Whole rests of rows (status columns, pairs and line end) are kept only
// without a "%": a text with one reaches csv_write on its own.

bool has_percent(std::string_view text) { return text.find('%') != std::string_view::npos; }

// Adds the status columns, the measurement pairs and the line end. The
// status text is keyed on `status_key` and made by `status_text` when the
// whole rest isn't remembered.
template <typename StatusText>
void add_row_rest(CsvRow& row, const std::array<std::uint64_t, 2>& status_key,
                  StatusText status_text, const DlSession& session, const ReadingRecord& reading,
                  int velocity_flag) {
    const PairKeys pairs = pair_keys(session, reading, velocity_flag);
    const decltype(RowMemos::row_rest)::Key key = {status_key[0],     status_key[1],
                                             pairs.first[0],    pairs.second[0],
                                             pairs.second[1],   pairs.second[2]};
    auto& whole = row_memos(session).row_rest.slot(key);
    if (memo_holds(whole, key)) {
        row.add(whole.view());
        return;
    }
    const std::string_view status = status_text();
    const std::string_view first = first_pair_text(session, reading, pairs);
    const std::string_view second = second_pairs_text(session, reading, pairs, velocity_flag);
    row.add(status);
    row.add(first);
    row.add(second);
    row.add("\n");
    if (has_percent(status) || has_percent(first) || has_percent(second)) return;
    // Each text is shorter than its buffer, so the three and "\n" fit.
    std::array<char, REST_TEXT_SIZE> joined{};
    std::size_t n = 0;
    for (std::string_view piece : {status, first, second, std::string_view("\n")}) {
        std::memcpy(joined.data() + n, piece.data(), piece.size());
        n += piece.size();
    }
    joined[n] = '\0';
    memo_store(whole, key, joined.data());
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

void add_columns_corrosion(CsvRow& row, const DlSession& session, const ReadingRecord& reading,
                           int has_ascan, int velocity_flag) {
    if (is_empty_slot(reading)) {
        row.add(",,,,,,,,,,,,,,,,\n");
        return;
    }
    const GaugeSetup& setup = reading_setup(session, reading);
    // The texts of the columns follow from the codes in the key: the gain
    // text from the gain mode and level, the note letters from the mask.
    const decltype(RowMemos::corrosion_status)::Key key = {
        status_key(session, reading, has_ascan, velocity_flag) |
            key_bits(diff_type(setup), 33),
        key_bits(setup.gain_mode, 0) | key_bits(setup.gain_db, 16)};
    const auto status_text = [&]() {
        auto& entry = row_memos(session).corrosion_status.slot(key);
        if (!memo_holds(entry, key)) {
            const char* unit = units_text(session, reading, velocity_flag);
            const char* alarm = alarm_state_text(alarm_state(reading));
            const char* diff = diff_type_text(diff_type(setup));
            const char* fast = fast_mode_text(fast_mode(reading));
            const char* meas = echo_to_echo(reading) != 0 ? "E TO E" : "STD";
            const char* bscan = on_off(bscan_mode(reading) != 0);
            const char* ascan = on_off(has_ascan == 1);
            char gain[NUMBER_TEXT_SIZE];
            format_gain_setting(gain, sizeof gain, setup.gain_mode, setup.gain_db);
            const NoteLetters notes(note_mask(reading));
            char text[ROW_BUFFER_SIZE];
            format_text(text, sizeof text, ",%s,%s,%s,%s,%s,%s,%d,%s,%s,%s", unit, alarm, diff,
                        gain, fast, notes.text.data(), static_cast<int>(setup_number(reading)),
                        meas, bscan, ascan);
            memo_store(entry, key, text);
        }
        return entry.view();
    };
    add_row_rest(row, key, status_text, session, reading, velocity_flag);
}

void add_columns_precision(CsvRow& row, const DlSession& session, const ReadingRecord& reading,
                           int has_ascan, int velocity_flag) {
    if (is_empty_slot(reading)) {
        row.add(",,,,,,,,,,,,,\n");
        return;
    }
    const decltype(RowMemos::precision_status)::Key key = {
        status_key(session, reading, has_ascan, velocity_flag)};
    const auto status_text = [&]() {
        auto& entry = row_memos(session).precision_status.slot(key);
        if (!memo_holds(entry, key)) {
            const char* unit = units_text(session, reading, velocity_flag);
            const char* alarm = alarm_state_text(alarm_state(reading));
            const char* fast = fast_mode_text(fast_mode(reading));
            const char* bscan = on_off(bscan_mode(reading) != 0);
            const char* ascan = on_off(has_ascan == 1);
            const NoteLetters notes(note_mask(reading));
            char text[ROW_BUFFER_SIZE];
            format_text(text, sizeof text, ",%s,%s,%s,%s,%d,%s,%s", unit, alarm, fast,
                        notes.text.data(), static_cast<int>(setup_number(reading)), bscan, ascan);
            memo_store(entry, key, text);
        }
        return entry.view();
    };
    // A second status word that no corrosion gauge key has marks the
    // precision gauge's rests.
    add_row_rest(row, {key[0], ~std::uint64_t{0}}, status_text, session, reading, velocity_flag);
}

int write_measurement_pairs(const DlSession& session, const ReadingRecord& reading,
                            CsvSink& sink, int velocity_flag) {
    CsvRow row(sink);
    add_measurement_pairs(row, session, reading, velocity_flag);
    return row.finish();
}

}  // namespace ugf
