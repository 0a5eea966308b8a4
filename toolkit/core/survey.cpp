#include "ugf/survey.hpp"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "core/survey_state.h"
#include "base/console.h"
#include "base/files.h"
#include "base/labels.h"
#include "detailed/preamble.h"
#include "detailed/reading_row.h"
#include "detailed/scan_dump.h"
#include "present/dac_curve.h"
#include "present/number_format.h"
#include "grid/grid.h"
#include "present/flaw_row.h"
#include "present/reading_value.h"
#include "present/scan_head.h"
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
    why = read_failure(session_of(survey));
    if (why.empty()) why = "not a datalogger file (its header names no survey this program reads)";
    return 0;
}

// Text appended by a sink into a std::string.
void append_text(void* context, const char* text, std::size_t n) {
    static_cast<std::string*>(context)->append(text, n);
}

bool walks_without_grid(std::int32_t file_type) { return grid_shape(file_type).kind == GRID_LINES; }

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

Survey::Survey() : state(std::make_unique<SurveyState>()) {}
Survey::~Survey() = default;
Survey::Survey(Survey&&) noexcept = default;
Survey& Survey::operator=(Survey&&) noexcept = default;

void close_survey(Survey& survey) {
    if (survey.state != nullptr) close_datalogger_session(session_of(survey));
}

ErrorCode error_code_of(const std::string& why) {
    // The texts begin with what went wrong; the table is in the order of the codes.
    static constexpr std::pair<const char*, ErrorCode> starts[] = {
        {"cannot open", ERROR_OPEN},        {"no such file", ERROR_OPEN},
        {"not a datalogger", ERROR_NOT_SURVEY}, {"read error", ERROR_READ},
        {"cannot seek", ERROR_READ},        {"a survey of type", ERROR_NO_OUTPUT},
        {"damaged survey", ERROR_DAMAGED},  {"cannot create", ERROR_OUTPUT},
        {"cannot write", ERROR_OUTPUT},     {"cannot replace", ERROR_OUTPUT},
        {"the output was refused", ERROR_OUTPUT}, {"no memory", ERROR_MEMORY},
    };
    if (why.empty()) return ERROR_NONE;
    for (const auto& [start, code] : starts) {
        if (why.rfind(start, 0) == 0) return code;
    }
    return ERROR_ARGUMENT;
}

int open_survey(Survey& survey, const std::string& path, std::string& why) {
    survey.path = path;
    std::FILE* probe = open_file(path.c_str(), "rb");
    if (probe == nullptr) {
        why = std::string("cannot open: ") + std::strerror(errno);
        return 0;
    }
    std::fclose(probe);
    return opened(survey, open_datalogger_read_only(session_of(survey), path.c_str()), why);
}

int open_survey_memory(Survey& survey, const std::uint8_t* bytes, std::size_t size, std::string& why) {
    return opened(survey, open_datalogger_memory(session_of(survey), bytes, size), why);
}

bool has_output(const Survey& survey) { return file_type_has_output(session_of(survey).file_type) != 0; }

std::string conversion_failure(const Survey& survey) {
    if (!has_output(survey)) {
        return std::string("a survey of type ") + std::to_string(session_of(survey).file_type) + " (" +
               file_type_name(session_of(survey).file_type) + ") has no output";
    }
    std::string why = read_failure(session_of(survey));
    return why.empty() ? "damaged survey: a scan block or the walk of its points is out of range" : why;
}

Facts survey_facts(Survey& survey) {
    DlSession& s = session_of(survey);
    Facts f;
    f.file_type_name = file_type_name(s.file_type);
    f.instrument = s.gage_type == GAGE_CORROSION       ? "corrosion gauge"
                   : s.gage_type == GAGE_PRECISION     ? "precision gauge"
                   : s.gage_type == GAGE_FLAW_DETECTOR ? "flaw detector"
                                                       : "unknown instrument";
    f.model = product_text(s.gage_type);
    f.walk_pattern_name = walk_pattern_name(s.walk_pattern);
    f.points = point_total_of(s.id_spec.cursor);
    f.description = s.description;
    f.inspector_id = s.inspector_id;
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
    DlSession& session = session_of(survey);
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
            ok = print_reading_value(session, reading, sink, 0, digit_layout_of(session.gage_type), OUTPUT_GRID,
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
            ok = print_reading_value(session, reading, sink, 1, digit_layout_of(session.gage_type), OUTPUT_GRID,
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
    DlSession& session = session_of(survey);
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
    DlSession& s = session_of(survey);
    grids.clear();
    const GridShape shape = grid_shape(s.file_type);
    if (!has_output(survey) || shape.kind == GRID_LINES) return 1;
    const auto& size = s.id_spec.cursor.dim_size;
    const std::uint32_t sizes[4] = {static_cast<std::uint32_t>(size[0]), static_cast<std::uint32_t>(size[1]),
                                    static_cast<std::uint32_t>(size[2]), static_cast<std::uint32_t>(size[3])};
    // The grid form reads every cell; a survey larger than its file fails there.
    std::uint64_t cells = std::uint64_t{sizes[0]} * sizes[1];
    for (int g = 0; g < shape.groups; ++g) cells *= sizes[2 + g];
    if (sizes[0] > UINT32_MAX / 2 || sizes[1] > UINT32_MAX / 2 || cells > slot_capacity(s)) {
        why = "damaged survey: it has more points than its file has slots";
        return 0;
    }
    // The storage index of a column and row position inside group (k, m), as
    // the grid form computes it.
    auto index = [&](std::uint32_t across, std::uint32_t down, std::uint32_t k, std::uint32_t m) {
        std::uint32_t at[4] = {0, 0, k, m};
        at[shape.across] = across;
        at[shape.down] = down;
        return grid_storage_index(sizes[0], sizes[1], sizes[2], at[0], at[1], at[2], at[3]);
    };
    const std::uint32_t groups2 = shape.groups >= 1 ? sizes[2] : 1, groups3 = shape.groups >= 2 ? sizes[3] : 1;
    for (std::uint32_t m = 0; m < groups3; ++m) {
        for (std::uint32_t k = 0; k < groups2; ++k) {
            Grid g;
            for (std::uint32_t r = 0; r < sizes[shape.down]; ++r) g.row_titles.push_back(dimension_title(s, index(0, r, 0, 0), shape.down));
            for (std::uint32_t c = 0; c < sizes[shape.across]; ++c) g.column_titles.push_back(dimension_title(s, index(c, 0, 0, 0), shape.across));
            for (std::uint32_t r = 0; r < sizes[shape.down]; ++r) {
                for (std::uint32_t c = 0; c < sizes[shape.across]; ++c) g.cells.push_back(index(c, r, k, m));
            }
            if (shape.groups >= 1) g.title = dimension_title(s, grid_storage_index(sizes[0], sizes[1], sizes[2], 0, 0, k, 0), 2);
            if (shape.groups >= 2) {
                g.title = dimension_title(s, grid_storage_index(sizes[0], sizes[1], sizes[2], 0, 0, 0, m), 3) + " " + g.title;
            }
            grids.push_back(std::move(g));
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
    DlSession& session = session_of(survey);
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
