#include "detailed/scan_dump.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <cstddef>
#include <tuple>

#include "detailed/reading_row.h"
#include "present/dac_curve.h"
#include "present/flaw_row.h"
#include "present/number_format.h"
#include "base/labels.h"
#include "base/text_builder.h"

namespace ugf {

namespace {

constexpr std::size_t LINE_BUFFER_SIZE = 96;
constexpr std::size_t POINT_ROWS_SIZE = 16384;  // B-scan rows gathered for one write

// A sample list: up to six characters a value ("65535,"), a line end and
// comma after every tenth and after the last.
constexpr std::size_t SAMPLE_LIST_SIZE =
    std::tuple_size_v<SampleStore> * 6 + (std::tuple_size_v<SampleStore> / 10 + 1) * 2 + 1;

constexpr std::uint32_t DAC_MODE_NAMES = 4;  // the rows from UI_DAC_MODE on

// The value a B-scan point stores for a position without a reading, in
// inches and (times ten) in millimetres.
constexpr std::int32_t POINT_EMPTY_IN = 0xFFFFF;
constexpr std::int32_t POINT_EMPTY_MM = 0x9FFFF6;

const char* skip_blanks(const char* text) {
    while (*text == ' ') ++text;
    return text;
}

int write_scale_item(CsvSink& sink, const char* name, const char* value, const char* unit) {
    char item[LINE_BUFFER_SIZE];
    TextBuilder text(item, sizeof item);  // "%s=%s%s,"
    text.put(name);
    text.put('=');
    text.put(value);
    text.put(unit);
    text.put(',');
    return csv_write(text.view(), sink);
}

int write_text_item(CsvSink& sink, const char* name, const char* text) {
    char item[LINE_BUFFER_SIZE];
    TextBuilder line(item, sizeof item);  // "%s=%s,"
    line.put(name);
    line.put('=');
    line.put(text);
    line.put(',');
    return csv_write(line.view(), sink);
}

int write_number_item(CsvSink& sink, const char* name, int value) {
    char item[LINE_BUFFER_SIZE];
    TextBuilder text(item, sizeof item);  // "%s=%d,"
    text.put(name);
    text.put('=');
    text.put_int(value);
    text.put(',');
    return csv_write(text.view(), sink);
}

const char* rect_text(const AscanRecord& a) { return ui_text(UI_RECTIFICATION + rect_index(a)); }
const char* zoom_text(const AscanRecord& a) { return ui_text(UI_OFF_ON + (zoom_bits(a) == 0 ? 1 : 0)); }
const char* freeze_text(const AscanRecord& a) { return ui_text(UI_OFF_ON + (freeze(a) == 1 ? 1 : 0)); }
const char* waveform_text(const AscanRecord& a) {
    return ui_text(outline(a) == 1 ? UI_OUTLINE : UI_FILLED);
}

// A gate line: "\n,NAME,%i" and `end` of the value, or "LOS" in its place
// when it lies at or above the limit of a gate without a signal.
int write_gate_line(CsvSink& sink, std::uint16_t value, std::uint16_t limit, const char* name,
                    const char* end) {
    char line[LINE_BUFFER_SIZE];
    TextBuilder text(line, sizeof line);
    text.put("\n,");
    text.put(name);
    text.put(',');
    if (value >= limit) {
        text.put("LOS");
    } else {
        text.put_int(value);
    }
    text.put(end);
    return csv_write(text.view(), sink);
}

// A waveform title: `lead`, the name, " [%d]" then "[%d]" of each number,
// and "\n,".
std::string_view scan_title(TextBuilder& text, const char* lead, const char* name,
                            std::initializer_list<int> numbers) {
    text.put(lead);
    text.put(name);
    text.put(' ');
    for (int number : numbers) {
        text.put('[');
        text.put_int(number);
        text.put(']');
    }
    text.put("\n,");
    return text.view();
}

// The depth of a DAC point: its detection count as a sound path through the
// setup's velocity, less the zero, as a length with the unit label.
void dac_depth_text(char* out, std::size_t size, const FlawSetup& setup, std::uint16_t count) {
    const std::uint32_t u = units(setup);
    std::int32_t depth = 0;
    if (count != 0) {
        const float velocity = static_cast<float>(setup.velocity);
        float factor = 2.0f;
        if (u == 0) {
            factor = static_cast<float>(static_cast<double>(velocity) / 100000.0);
        } else if (u == 1) {
            const float scaled = static_cast<float>(static_cast<double>(velocity) * 25.4);
            factor = static_cast<float>(static_cast<double>(scaled) / 100000.0);
        }
        float path = static_cast<float>(count) * 10000.0f;
        path = path * factor;
        path = path / -160.0f;
        const std::int32_t x = truncate_to_i32(static_cast<double>(path));
        depth = static_cast<std::int32_t>(0u - static_cast<std::uint32_t>(setup.zero) -
                                          static_cast<std::uint32_t>(x));
    }
    char number[NUMBER_TEXT_SIZE];
    format_thickness(number, sizeof number, depth, u, resolution(setup), LAYOUT_FLAW,
                     meas_mode(setup) == FLAW_MEAS_MODE_THRU ? 1u : 0u, 0);
    TextBuilder text(out, size);  // "%s %s"
    text.put(number);
    text.put(' ');
    text.put(length_unit_text(u, false));
}

// The mark cell of a B-scan point: none, its minimum or its maximum.
constexpr char MARKS[3][4] = {" ", "MIN", "MAX"};
constexpr std::uint32_t ALARM_CODES = 8;  // a point's 3-bit alarm state

// The cells behind the value of a B-scan row, by alarm code and mark.
struct PointTails {
    char text[ALARM_CODES][3][LINE_BUFFER_SIZE];
    std::size_t length[ALARM_CODES][3];
};

// The one-based index of a B-scan point as decimal text, counted up in
// place (a point count has at most five digits).
struct PointIndex {
    char text[8] = {};
    std::size_t length = 0;

    void advance() {
        std::size_t k = length;
        while (k > 0 && text[k - 1] == '9') text[--k] = '0';
        if (k > 0) {
            ++text[k - 1];
        } else if (length + 1 < sizeof text) {  // a new leading digit
            std::memmove(text + 1, text, length);
            text[0] = '1';
            ++length;
        }
    }
};

// Tails up to this length are copied as a whole block.
constexpr std::size_t SHORT_TAIL = 32;

}  // namespace

PointFormat point_format(const DlSession& session, const ReadingRecord& reading) {
    PointFormat f;
    if (session.gage_type == GAGE_FLAW_DETECTOR) {
        const FlawSetup& setup = session.setups[flaw_setup_number(reading)].flaw;
        f.units = units(setup);
        f.resolution = resolution(setup);
        f.layout = LAYOUT_FLAW;
        f.doubled = meas_mode(setup) == FLAW_MEAS_MODE_THRU ? 1u : 0u;
        f.unit = length_unit_text(f.units, false);
        f.length = length_form(f.units, f.resolution, f.layout, f.doubled, f.meas_mode);
        return f;
    }
    const GaugeSetup& setup = session.setups[setup_number(reading)].gauge;
    f.units = units(setup);
    f.resolution = resolution(setup);
    f.meas_mode = meas_mode(setup);
    const bool precision = session.gage_type == GAGE_PRECISION;
    f.layout = precision ? LAYOUT_PRECISION : LAYOUT_STANDARD;
    f.unit = length_unit_text(f.units, precision && f.meas_mode == MEAS_MODE_CP);
    f.length = length_form(f.units, f.resolution, f.layout, f.doubled, f.meas_mode);
    return f;
}

void point_value_text(char* out, std::size_t size, const BscanPoint& p, const PointFormat& f) {
    point_value_length(out, size, p, f);
}

namespace {

// point_value_length into out of at least 16 bytes, inlined in the B-scan
// loop.
inline std::size_t point_value_16(char* out, const BscanPoint& p, const PointFormat& f) {
    out[0] = '\0';
    if (point_lost(p) != 0) {
        std::memcpy(out, "--.---", 7);
        return 6;
    }
    std::uint32_t magnitude = point_magnitude(p);
    if (f.units != 0) magnitude *= 10u;
    const std::int32_t m = static_cast<std::int32_t>(magnitude);
    const std::int32_t v = point_negative(p) != 0 ? -m : m;
    if ((f.units == 0 && v != POINT_EMPTY_IN) || (f.units == 1 && v != POINT_EMPTY_MM)) {
        return format_length(out, v, f.length);
    }
    return 0;
}

}  // namespace

std::size_t point_value_length(char* out, std::size_t size, const BscanPoint& p, const PointFormat& f) {
    if (size >= NUMBER_TEXT_SIZE) return point_value_16(out, p, f);
    out[0] = '\0';
    if (point_lost(p) != 0) {
        TextBuilder text(out, size);
        text.put("--.---");
        return text.len;
    }
    std::uint32_t magnitude = point_magnitude(p);
    if (f.units != 0) magnitude *= 10u;
    const std::int32_t m = static_cast<std::int32_t>(magnitude);
    const std::int32_t v = point_negative(p) != 0 ? -m : m;
    if ((f.units == 0 && v != POINT_EMPTY_IN) || (f.units == 1 && v != POINT_EMPTY_MM)) {
        return format_thickness(out, size, v, f.units, f.resolution, f.layout, f.doubled, f.meas_mode);
    }
    return 0;
}

int write_sample_values(const AscanRecord& ascan, const SampleStore& values, CsvSink& sink) {
    const std::size_t count = std::min<std::size_t>(ascan.sample_count, values.size());
    // "%d," for each value, "\n," behind every tenth and at the end: no "%"
    // in any of them, so the whole list is one piece of CSV text.
    char text[SAMPLE_LIST_SIZE];
    TextBuilder list(text, sizeof text);
    for (std::size_t i = 0; i < count; ++i) {
        list.put_int(values[i]);
        list.put(',');
        if ((i + 1) % 10 == 0) list.put("\n,");
    }
    list.put("\n,");
    return csv_write(list.view(), sink);
}

int write_ascan_settings_corrosion(const AscanRecord& ascan, CsvSink& sink) {
    const std::uint32_t u = units(ascan.head);
    const char* unit = length_unit_text(u, false);
    char delay[NUMBER_TEXT_SIZE];
    char range[NUMBER_TEXT_SIZE];
    format_scan_scale(delay, sizeof delay, ascan.delay, u, 0);
    format_scan_scale(range, sizeof range, static_cast<std::int32_t>(ascan.range), u, 0);
    char waveform[LINE_BUFFER_SIZE];
    format_text(waveform, sizeof waveform, "%s=%s", "WAVEFORM", waveform_text(ascan));
    const bool ok =
        write_scale_item(sink, "DELAY", skip_blanks(delay), unit) != 0 &&
        write_scale_item(sink, "RANGE", skip_blanks(range), unit) != 0 &&
        write_text_item(sink, "RECT", rect_text(ascan)) != 0 &&
        write_text_item(sink, "ZOOM", zoom_text(ascan)) != 0 &&
        write_text_item(sink, "FREEZE", freeze_text(ascan)) != 0 &&
        write_number_item(sink, "MB BLANK", ascan.mb_blank) != 0 &&
        write_number_item(sink, "IF BLANK", ascan.if_blank_raw - ascan.marker1) != 0 &&
        write_number_item(sink, "MARKER1", ascan.marker1) != 0 &&
        write_number_item(sink, "MARKER2", ascan.marker2) != 0 && csv_write(waveform, sink) != 0;
    return ok ? 1 : 0;
}

int write_ascan_settings_precision(const DlSession& session, const AscanRecord& ascan,
                                   CsvSink& sink) {
    const std::uint32_t u = units(ascan.head);
    const std::uint32_t mode = meas_mode(session.setups[setup_number(ascan.head)].gauge);
    const bool cp = mode == MEAS_MODE_CP;
    const char* unit = length_unit_text(u, cp);
    // In mode 5 the scale text is made of the stored value times 1000.
    const std::uint32_t scale = cp ? 1000u : 1u;
    char delay[NUMBER_TEXT_SIZE];
    char range[NUMBER_TEXT_SIZE];
    format_scan_scale(delay, sizeof delay, static_cast<std::int32_t>(ascan.delay * scale), u, mode);
    format_scan_scale(range, sizeof range, static_cast<std::int32_t>(ascan.range * scale), u, mode);
    if (cp && delay_negative(ascan) != 0 && delay[0] != '\0') delay[0] = '-';
    const auto if_blank = static_cast<std::int16_t>(static_cast<std::uint16_t>(ascan.if_blank_raw) -
                                                    static_cast<std::uint16_t>(ascan.marker1));
    const bool ok =
        write_scale_item(sink, "DELAY", skip_blanks(delay), unit) != 0 &&
        write_scale_item(sink, "RANGE", skip_blanks(range), unit) != 0 &&
        write_text_item(sink, "RECT", rect_text(ascan)) != 0 &&
        write_text_item(sink, "ZOOM", zoom_text(ascan)) != 0 &&
        write_text_item(sink, "FREEZE", freeze_text(ascan)) != 0 &&
        write_text_item(sink, "WAVEFORM", waveform_text(ascan)) != 0 &&
        write_number_item(sink, "MARKER1", ascan.marker1) != 0 &&
        write_number_item(sink, "MB BLANK", ascan.mb_blank) != 0 &&
        write_number_item(sink, "MARKER2", ascan.marker2) != 0 &&
        write_number_item(sink, "IF BLANK", if_blank) != 0 &&
        write_number_item(sink, "MARKER3", ascan.marker3) != 0 &&
        write_number_item(sink, "C3 BLANK", ascan.c3_blank) != 0 &&
        write_number_item(sink, "ECHO WIND", ascan.echo_window) != 0;
    return ok ? 1 : 0;
}

int write_ascan_dump_thickness(const DlSession& session, const ScanStore& store, CsvSink& sink,
                               int more) {
    const AscanRecord& a = store.ascan;
    const int count = a.sample_count;
    const int bracket_2 = a.bracket_2;
    const int third = static_cast<int>(display_bracket_3(a));
    char title[LINE_BUFFER_SIZE];
    TextBuilder max_title(title, sizeof title);
    if (csv_write(scan_title(max_title, ",", "MAX DATA", {count, bracket_2, third}), sink) == 0 || write_sample_values(a, store.max_samples, sink) == 0) return 0;
    TextBuilder min_title(title, sizeof title);
    if (csv_write(scan_title(min_title, "\n,", "MIN DATA", {count, bracket_2, third}), sink) == 0 || write_sample_values(a, store.min_samples, sink) == 0) return 0;
    const int settings = session.gage_type == GAGE_PRECISION
                             ? write_ascan_settings_precision(session, a, sink)
                             : write_ascan_settings_corrosion(a, sink);
    if (settings == 0 || csv_write("\n", sink) == 0) return 0;
    return more == 1 ? write_column_titles(session.gage_type, sink) : 1;
}

int write_ascan_dump_flaw(const DlSession& session, const ScanStore& store,
                          const FlawSetup& setup, CsvSink& sink, int more) {
    const AscanRecord& a = store.ascan;
    const int count = a.sample_count;
    const int bracket_2 = a.bracket_2;
    const int third = static_cast<int>(scan_bracket_3(a));
    const int fourth = static_cast<int>(bracket_4(a));
    char title[LINE_BUFFER_SIZE];
    TextBuilder max_title(title, sizeof title);
    if (csv_write(scan_title(max_title, ",", "MAX DATA", {count, bracket_2, third, fourth}), sink) == 0 ||
        write_sample_values(a, store.max_samples, sink) == 0) {
        return 0;
    }
    TextBuilder min_title(title, sizeof title);
    if (csv_write(scan_title(min_title, "\n,", "MIN DATA", {count, bracket_2, third, fourth}), sink) == 0 ||
        write_sample_values(a, store.min_samples, sink) == 0) {
        return 0;
    }
    if (write_flaw_scan_block(store, setup, sink) == 0 || csv_write("\n", sink) == 0) return 0;
    return more == 1 ? write_column_titles(session.gage_type, sink) : 1;
}

int write_flaw_scan_block(const ScanStore& store, const FlawSetup& setup, CsvSink& sink) {
    const AscanRecord& a = store.ascan;
    char line[LINE_BUFFER_SIZE];
    if (peak_shown(a) != 0) {
        TextBuilder title(line, sizeof line);
        const std::string_view text =
            scan_title(title, "\n,PEAK ", "MAX DATA",
                       {static_cast<int>(a.sample_count), static_cast<int>(a.bracket_2),
                        static_cast<int>(scan_bracket_3(a)), static_cast<int>(bracket_4(a))});
        if (csv_write(text, sink) == 0 || write_sample_values(a, store.peak_samples, sink) == 0) {
            return 0;
        }
    }
    if (write_gate_line(sink, a.gate1_mti, PEAK_LOST, "GATE 1 MTI", "") == 0 ||
        write_gate_line(sink, a.gate1_amplitude, AMPLITUDE_LOST, "GATE 1 DETECTION AMPLITUDE", "") == 0 ||
        write_gate_line(sink, a.gate2_mti, PEAK_LOST, "GATE 2 MTI", "") == 0 ||
        write_gate_line(sink, a.gate2_amplitude, AMPLITUDE_LOST, "GATE 2 DETECTION AMPLITUDE", "\n") == 0) {
        return 0;
    }
    if (dac_shown(a) == 0) return 1;

    const std::uint32_t mode = dac_mode(setup);
    format_text(line, sizeof line, "\n,DAC,%s\n", mode < DAC_MODE_NAMES ? ui_text(UI_DAC_MODE + mode) : "");
    if (csv_write(line, sink) == 0) return 0;
    if (csv_write(",THICKNESS,AMPLITUDE,DETECTION COUNT\n", sink) == 0) return 0;
    // The list ends at the first point without an amplitude.
    for (const DacPoint& point : store.dac_points) {
        if (point.dac_amplitude == 0) break;
        char depth[LINE_BUFFER_SIZE];
        dac_depth_text(depth, sizeof depth, setup, point.dac_count);
        TextBuilder row(line, sizeof line);  // ",%s,%i,%i\n"
        row.put(',');
        row.put(depth);
        row.put(',');
        row.put_int(point.dac_amplitude);
        row.put(',');
        row.put_int(point.dac_count);
        row.put('\n');
        if (csv_write(row.view(), sink) == 0) return 0;
    }
    return 1;
}

int write_bscan_dump(const DlSession& session, const ReadingRecord& reading,
                     const ScanStore& store, CsvSink& sink, int more) {
    char line[LINE_BUFFER_SIZE];
    format_text(line, sizeof line, ",%s,%s,%s,%s,%s\n", "BSCAN INDEX", "THICKNESS", "UNITS", "ALARM",
                "MIN/MAX");
    if (csv_write(line, sink) == 0) return 0;
    const PointFormat f = point_format(session, reading);
    // A row is ",%i,%s,%s,%s,%s\n" of the index, the value, the unit, the
    // alarm and the mark, in a line of LINE_BUFFER_SIZE bytes. The cells
    // behind the value take a few texts only: made once for each alarm
    // code and mark.
    PointTails tails{};
    for (std::uint32_t alarm = 0; alarm < ALARM_CODES; ++alarm) {
        for (std::uint32_t mark = 0; mark < 3; ++mark) {
            TextBuilder tail(tails.text[alarm][mark], LINE_BUFFER_SIZE);
            for (const char* cell : {f.unit, alarm_state_text(alarm), MARKS[mark]}) {
                tail.put(',');
                tail.put(cell);
            }
            tail.put('\n');
            tails.length[alarm][mark] = tail.len;
        }
    }
    // Each row begins with a comma, so no "%%" can form where two rows meet
    // and many rows go to csv_write as one piece.
    char rows[POINT_ROWS_SIZE];
    std::size_t used = 0;
    PointIndex index;
    const std::size_t count = std::min<std::size_t>(store.bscan.point_count, BSCAN_POINTS_MAX);
    std::size_t longest_tail = 0;
    for (const auto& by_mark : tails.length) longest_tail = std::max({longest_tail, by_mark[0], by_mark[1], by_mark[2]});
    const bool whole_rows = longest_tail <= SHORT_TAIL &&
                            sizeof index.text + (NUMBER_TEXT_SIZE - 1) + SHORT_TAIL + 2 < LINE_BUFFER_SIZE;
    if (whole_rows) {
        // Every row fits its line whatever its index and value: each is
        // written in place, with whole-buffer copies, from the point's two
        // words. The alarm, minimum and maximum bits (10 to 14 of the
        // first word) choose the tail at once; the form and the rest stay
        // in registers, which the row's stores would not let the loop
        // assume of fields in memory.
        char tail_text[32][SHORT_TAIL];
        std::uint8_t tail_length[32];
        for (std::uint32_t bits = 0; bits < 32; ++bits) {
            const std::uint32_t alarm = bits >> 2;
            const std::uint32_t mark = (bits & 2) != 0 ? 1 : (bits & 1) != 0 ? 2 : 0;
            std::memcpy(tail_text[bits], tails.text[alarm][mark], SHORT_TAIL);
            tail_length[bits] = static_cast<std::uint8_t>(tails.length[alarm][mark]);
        }
        const LengthForm form = f.length;
        const bool shown = f.units <= 1;  // other units show no value
        const std::uint32_t scale = f.units != 0 ? 10u : 1u;
        const std::int32_t empty = f.units == 0 ? POINT_EMPTY_IN : POINT_EMPTY_MM;
        const std::uint8_t* points = store.bscan_points.data();
        for (std::size_t i = 0; i < count; ++i) {
            const BscanPoint p = {static_cast<std::uint16_t>(points[0] | (points[1] << 8)),
                                  static_cast<std::uint16_t>(points[2] | (points[3] << 8))};
            points += BSCAN_POINT_SIZE;
            index.advance();
            char* row = rows + used;
            *row++ = ',';
            std::memcpy(row, index.text, sizeof index.text);
            row += index.length;
            *row++ = ',';
            if (point_lost(p) != 0) {
                std::memcpy(row, "--.---", 6);
                row += 6;
            } else {
                const std::int32_t m = static_cast<std::int32_t>(point_magnitude(p) * scale);
                const std::int32_t v = point_negative(p) != 0 ? -m : m;
                if (shown && v != empty) row += format_length(row, v, form);
            }
            const std::uint32_t bits = word_bits(p.first, 10, 5);
            std::memcpy(row, tail_text[bits], SHORT_TAIL);
            used = static_cast<std::size_t>(row + tail_length[bits] - rows);
            if (sizeof rows - used < LINE_BUFFER_SIZE) {
                if (csv_write(std::string_view(rows, used), sink) == 0) return 0;
                used = 0;
            }
        }
    }
    // Any other row, and points past the store (none, once read), one by one.
    for (std::size_t i = whole_rows ? count : 0; i < store.bscan.point_count; ++i) {
        const BscanPoint p = bscan_point(store, i);
        index.advance();
        const std::uint32_t alarm = point_alarm(p);
        const std::uint32_t mark = point_min(p) != 0 ? 1 : point_max(p) != 0 ? 2 : 0;
        const std::size_t tail_length = tails.length[alarm][mark];
        char* row = rows + used;
        if (index.length + (NUMBER_TEXT_SIZE - 1) + tail_length + 2 < LINE_BUFFER_SIZE) {
            // The row fits its line whatever the value's length: the value
            // is written in place, and whole buffers are copied where that
            // is cheaper than measured copies; the line's room behind the
            // row takes what is past it.
            *row++ = ',';
            std::memcpy(row, index.text, sizeof index.text);
            row += index.length;
            *row++ = ',';
            row += point_value_16(row, p, f);
            if (tail_length <= SHORT_TAIL) {
                std::memcpy(row, tails.text[alarm][mark], SHORT_TAIL);
            } else {
                std::memcpy(row, tails.text[alarm][mark], tail_length);
            }
            used = static_cast<std::size_t>(row + tail_length - rows);
        } else {  // a row that may be cut at the end of its line
            char value[NUMBER_TEXT_SIZE] = {};
            point_value_16(value, p, f);
            TextBuilder line(row, LINE_BUFFER_SIZE);
            line.put(',');
            line.put_int(static_cast<int>(i + 1));
            line.put(',');
            line.put(value);
            line.put(std::string_view(tails.text[alarm][mark], tail_length));
            used += line.len;
        }
        if (sizeof rows - used < LINE_BUFFER_SIZE) {
            if (csv_write(std::string_view(rows, used), sink) == 0) return 0;
            used = 0;
        }
    }
    if (used != 0 && csv_write(std::string_view(rows, used), sink) == 0) return 0;
    return more == 1 ? write_column_titles(session.gage_type, sink) : 1;
}

}  // namespace ugf
