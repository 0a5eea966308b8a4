#include "core/survey.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "base/console.h"
#include "base/files.h"
#include "base/labels.h"
#include "detailed/detailed_body.h"
#include "detailed/preamble.h"
#include "detailed/reading_row.h"
#include "detailed/scan_dump.h"
#include "present/dac_curve.h"
#include "present/number_format.h"
#include "grid/grid.h"
#include "present/flaw_row.h"
#include "present/reading_value.h"
#include "store/record.h"
#include "store/scan.h"
#include "store/session_id.h"

namespace ugf::kit {

namespace {

std::string hex_offset(std::uint64_t offset) {
    char text[32];
    std::snprintf(text, sizeof text, "0x%llX", static_cast<unsigned long long>(offset));
    return text;
}

// What the stream's last failed read says, or "" when no read failed.
std::string read_failure(const DlSession& session) {
    const DlStream& stream = session.dl_stream;
    if (stream.error == nullptr) return "";
    const bool seek = std::strstr(stream.error, "SEEK") != nullptr;
    return std::string(seek ? "cannot seek to offset " : "read error at offset ") + hex_offset(stream.error_offset) +
           (seek ? " (FS_SEEK_ERROR)" : ": the file ends before it (FS_READ_ERROR)");
}

int opened(Survey& survey, int result, std::string& why) {
    if (result != 0) return 1;
    why = read_failure(*survey.session);
    if (why.empty()) why = "not a datalogger file (its header names no survey this program reads)";
    return 0;
}

// Text appended by a sink into a std::string.
void append_text(void* context, const char* text, std::size_t n) {
    static_cast<std::string*>(context)->append(text, n);
}

DigitLayout layout_of(std::int32_t gage_type) {
    return gage_type == GAGE_PRECISION       ? LAYOUT_PRECISION
           : gage_type == GAGE_FLAW_DETECTOR ? LAYOUT_FLAW
                                             : LAYOUT_STANDARD;
}

bool walks_without_grid(std::int32_t file_type) {
    return file_type == FILE_TYPE_LINEAR || file_type == FILE_TYPE_MANUAL;
}

// The number a cell's text shows: blanks, then an optional sign, digits and
// at most one point. Anything else (a marker, notes) shows no number.
bool cell_number(const std::string& text, double& value, int& decimals) {
    std::size_t i = text.find_first_not_of(' ');
    if (i == std::string::npos) return false;
    const std::size_t start = i;
    if (text[i] == '-') ++i;
    std::size_t digits = 0;
    int after = -1;
    for (; i < text.size(); ++i) {
        const char c = text[i];
        if (c >= '0' && c <= '9') {
            ++digits;
            if (after >= 0) ++after;
        } else if (c == '.' && after < 0) {
            after = 0;
        } else {
            break;
        }
    }
    if (digits == 0 || text.find_first_not_of(' ', i) != std::string::npos) return false;
    value = std::strtod(text.c_str() + start, nullptr);
    decimals = after < 0 ? 0 : after;
    return true;
}

void fill_facts_of_reading(DlSession& session, const ReadingRecord& reading, int velocity, Point& point) {
    point.empty = record_type(reading) == RECORD_EMPTY;
    point.velocity = velocity != 0;
    if (point.empty) return;
    if (session.gage_type == GAGE_FLAW_DETECTOR) {
        const FlawSetup& setup = session.setups[flaw_setup_number(reading)].flaw;
        point.setup = static_cast<int>(flaw_setup_number(reading));
        point.units = ui_text(UI_UNITS + units(setup));
        point.notes = flaw_note_mask(reading);
        point.alarm = alarm_state_text(gate1_alarm(reading));
        point.lost = std::isnan(point.value);
        return;
    }
    const GaugeSetup& setup = session.setups[setup_number(reading)].gauge;
    point.setup = static_cast<int>(setup_number(reading));
    point.units = velocity != 0 ? ui_text(UI_VELOCITY_UNITS + units(reading))
                                : length_unit_text(units(reading), session.gage_type == GAGE_PRECISION &&
                                                                       meas_mode(setup) == MEAS_MODE_CP);
    point.notes = note_mask(reading);
    point.alarm = alarm_state_text(alarm_state(reading));
    point.lost = los(reading) != 0;
    // Alarm types "LOW" (2) and "HIGH-LOW" (3) set a low alarm; lengths count
    // 0.0001 of the setup's unit.
    const std::uint32_t type = alarm_type(setup);
    if (type == 2 || type == 3) point.low_alarm = setup.low_alarm / 10000.0;
}

}  // namespace

int open_survey(Survey& survey, const std::string& path, std::string& why) {
    survey.path = path;
    std::FILE* probe = open_file(path.c_str(), "rb");
    if (probe == nullptr) {
        why = std::string("cannot open: ") + std::strerror(errno);
        return 0;
    }
    std::fclose(probe);
    return opened(survey, open_datalogger_read_only(*survey.session, path.c_str()), why);
}

int open_survey_memory(Survey& survey, const std::uint8_t* bytes, std::size_t size, std::string& why) {
    return opened(survey, open_datalogger_memory(*survey.session, bytes, size), why);
}

bool has_output(const Survey& survey) {
    const std::int32_t t = survey.session->file_type;
    return t >= FILE_TYPE_LINEAR && t <= FILE_TYPE_4D_MANUAL && t != FILE_TYPE_NOTES && t != FILE_TYPE_SETUP &&
           t != FILE_TYPE_INCREMENTAL;
}

std::string conversion_failure(const Survey& survey) {
    if (!has_output(survey)) {
        return std::string("a survey of type ") + std::to_string(survey.session->file_type) + " (" +
               file_type_name(survey.session->file_type) + ") has no output";
    }
    std::string why = read_failure(*survey.session);
    return why.empty() ? "damaged survey: a scan block or the walk of its points is out of range" : why;
}

Facts survey_facts(Survey& survey) {
    DlSession& s = *survey.session;
    Facts f;
    f.file_type = file_type_name(s.file_type);
    f.instrument = s.gage_type == GAGE_CORROSION       ? "corrosion gauge"
                   : s.gage_type == GAGE_PRECISION     ? "precision gauge"
                   : s.gage_type == GAGE_FLAW_DETECTOR ? "flaw detector"
                                                       : "unknown instrument";
    f.model = product_text(s.gage_type);
    f.pattern = walk_pattern_name(s.walk_pattern);
    f.points = point_total_of(s.id_spec.cursor);
    f.description = s.description;
    f.inspector = s.inspector_id;
    f.location = s.location;
    for (const auto& note : s.note_table) f.notes.emplace_back(note);
    f.has_grid = !walks_without_grid(s.file_type);
    if (f.points != 0) {
        char id[ID_TEXT_SIZE] = {};
        session_point_id(s, 0, id, 1);
        f.first_id = id;
        session_point_id(s, std::int64_t{f.points} - 1, id, 1);
        f.last_id = id;
    }
    return f;
}

int read_point(Survey& survey, std::int64_t index, Point& point, std::string& why) {
    DlSession& session = *survey.session;
    point = Point{};
    point.index = index;
    std::string text;
    CsvSink sink;
    sink.write = append_text;
    sink.context = &text;
    ReadingRecord reading{};
    int velocity = 0;
    int ok = 0;
    if (walks_without_grid(session.file_type)) {
        // These surveys' grid form is the walk's line of identifier and value.
        ok = read_reading(session, index, reading, *session.scan_store, 0);
        if (ok != 0) {
            const ReadingScan scan = merge_scan_head(session, reading, *session.scan_store);
            velocity = scan.velocity_flag;
            point.ascan = scan.has_ascan != 0;
            point.bscan = scan.has_bscan != 0;
            ok = print_reading_value(session, reading, sink, 0, layout_of(session.gage_type), OUTPUT_GRID,
                                     scan.ascan_ref, scan.ascan_ref != nullptr ? session.scan_store : nullptr,
                                     velocity);
        }
    } else {
        GridReading cell;
        ok = read_grid_reading(session, index, cell);
        if (ok != 0) {
            reading = cell.reading;
            velocity = cell.velocity_cell;
            point.ascan = cell.scan != nullptr;
            point.bscan = record_type(cell.reading) == RECORD_BSCAN_LINK || record_type(cell.reading) == RECORD_BSCAN_BLOCK;
            ok = print_reading_value(session, reading, sink, 1, layout_of(session.gage_type), OUTPUT_GRID,
                                     cell.scan, cell.scan != nullptr ? session.scan_store : nullptr, velocity);
            if (!text.empty() && text.back() == ',') text.pop_back();
        }
    }
    if (ok == 0) {
        why = conversion_failure(survey);
        return 0;
    }
    point.text = text;
    cell_number(text, point.value, point.decimals);
    fill_facts_of_reading(session, reading, velocity, point);
    return 1;
}

int for_each_point(Survey& survey, const std::function<int(const Point&)>& visit, std::string& why) {
    DlSession& session = *survey.session;
    if (!has_output(survey)) {
        why = conversion_failure(survey);
        return 0;
    }
    for (PointWalk walk = point_walk_begin(session); point_walk_more(walk); point_walk_advance(session, walk)) {
        if (point_walk_runs_off(walk)) {
            why = conversion_failure(survey);
            return 0;
        }
        Point point;
        if (read_point(survey, walk.storage_index, point, why) == 0) return 0;
        char id[ID_COMPOSE_ROOM] = {};
        point_walk_id(session, walk, id);
        point.id = id;
        if (visit(point) == 0) return 0;
    }
    return 1;
}

std::string note_text(const Facts& facts, std::uint32_t mask) {
    std::string letters;
    int count = 0;
    int last = 0;
    for (int b = 0; b < 16; ++b) {
        if (((mask >> b) & 1u) == 0) continue;
        if (!letters.empty()) letters += ':';
        letters += static_cast<char>('A' + b);
        ++count;
        last = b;
    }
    if (count == 1 && static_cast<std::size_t>(last) < facts.notes.size()) return facts.notes[static_cast<std::size_t>(last)];
    return letters;
}

namespace {

std::string dimension_title(DlSession& session, std::int64_t index, int dimension) {
    char text[ID_TEXT_SIZE] = {};
    session_dimension_text(session, index, text, dimension, 1);
    return text;
}

}  // namespace

int survey_grids(Survey& survey, std::vector<Grid>& grids, std::string& why) {
    DlSession& s = *survey.session;
    grids.clear();
    if (!has_output(survey) || walks_without_grid(s.file_type)) return 1;
    const auto& size = s.id_spec.cursor.dim_size;
    const std::uint64_t s0 = static_cast<std::uint32_t>(size[0]), s1 = static_cast<std::uint32_t>(size[1]),
                        s2 = static_cast<std::uint32_t>(size[2]), s3 = static_cast<std::uint32_t>(size[3]);
    // The grid form reads every cell; a survey larger than its file fails there.
    const std::uint64_t cells = s0 * s1 * (s2 == 0 ? 1 : s2) * (s3 == 0 ? 1 : s3);
    if (s0 > UINT32_MAX / 2 || s1 > UINT32_MAX / 2 || cells > slot_capacity(s)) {
        why = "damaged survey: it has more points than its file has slots";
        return 0;
    }
    auto table = [&](std::uint64_t rows, std::uint64_t columns, auto row_dim, auto column_dim, auto cell) {
        Grid g;
        for (std::uint64_t r = 0; r < rows; ++r) g.row_titles.push_back(row_dim(r));
        for (std::uint64_t c = 0; c < columns; ++c) g.column_titles.push_back(column_dim(c));
        for (std::uint64_t r = 0; r < rows; ++r) {
            for (std::uint64_t c = 0; c < columns; ++c) g.cells.push_back(static_cast<std::int64_t>(cell(r, c)));
        }
        return g;
    };
    switch (s.file_type) {
        case FILE_TYPE_LINEAR_CPT:  // custom points across, dimension 1 down
            grids.push_back(table(
                s1, s0, [&](std::uint64_t r) { return dimension_title(s, static_cast<std::int64_t>(r * s0), 1); },
                [&](std::uint64_t c) { return dimension_title(s, static_cast<std::int64_t>(c), 0); },
                [&](std::uint64_t r, std::uint64_t c) { return r * s0 + c; }));
            break;
        case FILE_TYPE_2D:
        case FILE_TYPE_2D_MANUAL:  // dimension 1 across, dimension 0 down
            grids.push_back(table(
                s0, s1, [&](std::uint64_t r) { return dimension_title(s, static_cast<std::int64_t>(r), 0); },
                [&](std::uint64_t c) { return dimension_title(s, static_cast<std::int64_t>(c * s0), 1); },
                [&](std::uint64_t r, std::uint64_t c) { return c * s0 + r; }));
            break;
        default: {  // groups of dimension 2 (and 3): dimension 0 across, dimension 1 down
            const std::uint64_t groups3 = s.file_type == FILE_TYPE_4D_MANUAL ? s3 : 1;
            for (std::uint64_t m = 0; m < groups3; ++m) {
                for (std::uint64_t k = 0; k < s2; ++k) {
                    const std::uint64_t base = (m * s2 + k) * s1 * s0;
                    Grid g = table(
                        s1, s0, [&](std::uint64_t r) { return dimension_title(s, static_cast<std::int64_t>(r * s0), 1); },
                        [&](std::uint64_t c) { return dimension_title(s, static_cast<std::int64_t>(c), 0); },
                        [&](std::uint64_t r, std::uint64_t c) { return base + r * s0 + c; });
                    g.title = dimension_title(s, static_cast<std::int64_t>(k * s0 * s1), 2);
                    if (s.file_type == FILE_TYPE_4D_MANUAL) {
                        g.title = dimension_title(s, static_cast<std::int64_t>(m * s0 * s1 * s2), 3) + " " + g.title;
                    }
                    grids.push_back(std::move(g));
                }
            }
        }
    }
    return 1;
}

namespace {

Ascan ascan_of(DlSession& s, const ReadingRecord& reading, const Point& point) {
    const ScanStore& store = *s.scan_store;
    const AscanRecord& a = store.ascan;
    Ascan out;
    out.id = point.id;
    out.reading = point.text;
    out.units = point.units;
    const std::size_t count = std::min<std::size_t>(a.sample_count, SCAN_SAMPLE_STORE);
    out.max_samples.assign(store.max_samples.begin(), store.max_samples.begin() + static_cast<std::ptrdiff_t>(count));
    out.min_samples.assign(store.min_samples.begin(), store.min_samples.begin() + static_cast<std::ptrdiff_t>(count));
    if (s.gage_type == GAGE_FLAW_DETECTOR) {
        if (peak_shown(a) != 0) {
            out.peak_samples.assign(store.peak_samples.begin(),
                                    store.peak_samples.begin() + static_cast<std::ptrdiff_t>(count));
        }
        auto gate = [](const char* name, std::uint16_t mti, std::uint16_t amplitude) {
            return Ascan::Mark{name, mti >= PEAK_LOST ? -1 : static_cast<int>(mti),
                               amplitude >= AMPLITUDE_LOST ? -1 : static_cast<int>(amplitude)};
        };
        out.marks.push_back(gate("GATE 1", a.gate1_mti, a.gate1_amplitude));
        out.marks.push_back(gate("GATE 2", a.gate2_mti, a.gate2_amplitude));
        const FlawSetup& setup = s.setups[flaw_setup_number(reading)].flaw;
        out.gate1_alarm = alarm_kind_text(gate1_alarm(setup));
        out.gate2_alarm = alarm_kind_text(gate2_alarm(setup));
        if (dac_shown(a) != 0) {
            for (const DacPoint& p : store.dac_points) {
                if (p.dac_amplitude == 0) break;
                out.dac_points.emplace_back(p.dac_count, p.dac_amplitude);
            }
        }
        return out;
    }
    const std::uint32_t u = units(a.head);
    char text[NUMBER_TEXT_SIZE];
    format_scan_scale(text, sizeof text, a.delay, u, 0);
    out.delay = std::string(text + std::strspn(text, " ")) + " " + length_unit_text(u, false);
    format_scan_scale(text, sizeof text, static_cast<std::int32_t>(a.range), u, 0);
    out.range = std::string(text + std::strspn(text, " ")) + " " + length_unit_text(u, false);
    out.marks = {{"MB BLANK", a.mb_blank, -1}, {"MARKER1", a.marker1, -1}, {"MARKER2", a.marker2, -1}};
    if (s.gage_type == GAGE_PRECISION) {
        out.marks.push_back({"MARKER3", a.marker3, -1});
        out.marks.push_back({"ECHO WIND", a.echo_window, -1});
    }
    return out;
}

Bscan bscan_of(DlSession& s, const ReadingRecord& reading, const Point& point) {
    const ScanStore& store = *s.scan_store;
    Bscan out;
    out.id = point.id;
    out.reading = point.text;
    const PointFormat format = point_format(s, reading);
    out.units = format.unit;
    for (std::size_t i = 0; i < store.bscan.point_count; ++i) {
        const BscanPoint p = bscan_point(store, i);
        char text[NUMBER_TEXT_SIZE];
        point_value_text(text, sizeof text, p, format);
        out.texts.emplace_back(text);
        double value = std::numeric_limits<double>::quiet_NaN();
        int decimals = 0;
        cell_number(text, value, decimals);
        out.values.push_back(value);
        out.alarms.emplace_back(alarm_state_text(point_alarm(p)));
    }
    return out;
}

}  // namespace

int for_each_scan(Survey& survey, const std::function<int(const Ascan&)>& ascan,
                  const std::function<int(const Bscan&)>& bscan, std::string& why) {
    DlSession& session = *survey.session;
    return for_each_point(survey, [&](const Point& point) {
        if (!point.ascan && !point.bscan) return 1;
        // The scan itself, as the detailed form reads it.
        ReadingRecord reading{};
        if (read_reading(session, point.index, reading, *session.scan_store, 1) == 0) {
            why = conversion_failure(survey);
            return 0;
        }
        const ReadingScan scan = merge_scan_head(session, reading, *session.scan_store);
        if (scan.has_ascan != 0 && ascan(ascan_of(session, reading, point)) == 0) return 0;
        if (scan.has_bscan != 0 && bscan(bscan_of(session, reading, point)) == 0) return 0;
        return 1;
    }, why);
}

}  // namespace ugf::kit
