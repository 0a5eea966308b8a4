#include "ugf/history.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "ugf/json.hpp"
#include "ugf/stats.hpp"

namespace ugf::kit {

namespace {

constexpr double DAYS_PER_YEAR = 365.25;
constexpr double MAX_INTERVAL_LIMIT = 1000;
// Days are counted down to whole days; a product within this much below a
// whole day is taken as that day, so that the binary rounding of the
// thicknesses doesn't take a day off an interval that is whole on paper.
constexpr double DAY_SLACK = 1e-6;

// Every text a row shows for its status and note, by code.
constexpr const char* STATUS_TEXTS[] = {"ok", "due", "below minimum", "one reading only", "no thickness"};
constexpr const char* NOTE_TEXTS[] = {"", "no thickness in the latest survey (%s): the reading of %s is used",
                                      "not in the latest survey (%s): the reading of %s is used"};

// Days since 1970-01-01 of a proleptic Gregorian date, and back (the
// calendar counted in 400-year eras that start on 1 March).
constexpr std::int64_t days_from_civil(std::int64_t y, unsigned m, unsigned d) {
    y -= m <= 2 ? 1 : 0;
    const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
    const std::int64_t yoe = y - era * 400;
    const std::int64_t doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
    const std::int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe - 719468;
}
static_assert(days_from_civil(1, 1, 1) == FIRST_DATE && days_from_civil(9999, 12, 31) == LAST_DATE);

struct Civil {
    std::int64_t year;
    unsigned month, day;
};

Civil civil_from_days(std::int64_t z) {
    z += 719468;
    const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const std::int64_t doe = z - era * 146097;
    const std::int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const std::int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const std::int64_t mp = (5 * doy + 2) / 153;
    const unsigned d = static_cast<unsigned>(doy - (153 * mp + 2) / 5 + 1);
    const unsigned m = static_cast<unsigned>(mp < 10 ? mp + 3 : mp - 9);
    return {yoe + era * 400 + (m <= 2 ? 1 : 0), m, d};
}

bool is_digit(char c) { return c >= '0' && c <= '9'; }

int digits(const char* text, int count) {
    int n = 0;
    for (int i = 0; i < count; ++i) n = n * 10 + (text[i] - '0');
    return n;
}

// A date of year, month and day; 0 when the calendar has no such day.
int civil_date(int year, int month, int day, std::int32_t& days) {
    static constexpr int MONTH_DAYS[] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (year < 1 || month < 1 || month > 12 || day < 1 || day > MONTH_DAYS[month - 1]) return 0;
    const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    if (month == 2 && day == 29 && !leap) return 0;
    days = static_cast<std::int32_t>(days_from_civil(year, static_cast<unsigned>(month), static_cast<unsigned>(day)));
    return 1;
}

// The date written at text[0..length) in one of the two forms; the caller
// checks what stands around it.
int date_at(const char* text, std::size_t length, std::int32_t& days) {
    if (length == 8 && std::all_of(text, text + 8, is_digit)) {
        return civil_date(digits(text, 4), digits(text + 4, 2), digits(text + 6, 2), days);
    }
    if (length == 10 && text[4] == '-' && text[7] == '-' && std::all_of(text, text + 4, is_digit) &&
        std::all_of(text + 5, text + 7, is_digit) && std::all_of(text + 8, text + 10, is_digit)) {
        return civil_date(digits(text, 4), digits(text + 5, 2), digits(text + 8, 2), days);
    }
    return 0;
}

// The last date in one file or folder name that no digit touches.
int date_in_name(const std::string& name, std::int32_t& days) {
    for (std::size_t start = name.size(); start-- > 0;) {
        if (start > 0 && is_digit(name[start - 1])) continue;
        for (std::size_t length : {10, 8}) {
            const std::size_t end = start + length;
            if (end > name.size() || (end < name.size() && is_digit(name[end]))) continue;
            if (date_at(name.data() + start, length, days) != 0) return 1;
        }
    }
    return 0;
}

// A date `years` after `date`, counted down to whole days; NO_DATE past 9999.
std::int32_t add_years(std::int32_t date, double years) {
    const double days = std::floor(years * DAYS_PER_YEAR + DAY_SLACK);
    if (!(days <= static_cast<double>(LAST_DATE - date))) return NO_DATE;
    return date + static_cast<std::int32_t>(days);
}

double years_between(std::int32_t from, std::int32_t to) { return (to - from) / DAYS_PER_YEAR; }

// The units of most thickness readings of a survey (of equal counts the first
// in alphabetical order) and the most decimals a reading in them shows.
std::pair<std::string, int> survey_units(const DatedSurvey& survey) {
    std::map<std::string, std::size_t> counts;
    for (const Point& p : survey.points) {
        if (is_thickness(p)) ++counts[p.units];
    }
    std::string units;
    std::size_t most = 0;
    for (const auto& [name, count] : counts) {
        if (count > most) {
            units = name;
            most = count;
        }
    }
    int decimals = 0;
    for (const Point& p : survey.points) {
        if (is_thickness(p) && p.units == units) decimals = std::max(decimals, p.decimals);
    }
    return {units, decimals};
}

// Minus the slope of the least-squares line of thickness against years.
double least_squares_rate(const std::vector<Reading>& readings) {
    const double n = static_cast<double>(readings.size());
    double mean_x = 0, mean_y = 0;
    for (const Reading& r : readings) {
        mean_x += years_between(readings.front().date, r.date) / n;
        mean_y += r.value / n;
    }
    double sxy = 0, sxx = 0;
    for (const Reading& r : readings) {
        const double dx = years_between(readings.front().date, r.date) - mean_x;
        sxy += dx * (r.value - mean_y);
        sxx += dx * dx;
    }
    return 0.0 - sxy / sxx;  // never -0
}

int required_thickness(const History& h, HistoryRow& row, double low_alarm, std::string& why) {
    const auto listed = h.options.minimums.find(row.id);
    if (h.options.minimum) {
        row.required = *h.options.minimum;
        row.required_from = "--minimum";
    } else if (listed != h.options.minimums.end()) {
        const Minimum& m = listed->second;
        row.required = convert_length(m.value, m.units.empty() ? h.units : m.units, h.units);
        if (std::isnan(row.required)) {
            why = "the minimum of " + row.id + " is in " + m.units + ", which does not convert to " + h.units;
            return 0;
        }
        row.required_from = "minimums";
    } else if (!std::isnan(low_alarm)) {
        row.required = low_alarm;
        row.required_from = "low alarm";
    }
    return 1;
}

// Everything of a row that follows from its readings.
int figure_row(const History& h, HistoryRow& row, double low_alarm, std::string& why) {
    const std::vector<Reading>& rs = row.readings;
    if (rs.empty()) return 1;  // NO_THICKNESS, as made
    row.first = rs.front().value;
    row.first_date = rs.front().date;
    row.latest = rs.back().value;
    row.latest_date = rs.back().date;
    if (row.latest_date < h.latest_date) row.note = HistoryNote::NOT_IN_LATEST;
    if (required_thickness(h, row, low_alarm, why) == 0) return 0;

    if (rs.size() >= 2) {
        const Reading& previous = rs[rs.size() - 2];
        row.previous = previous.value;
        row.previous_date = previous.date;
        // Dates are distinct (one reading a date), so no span is 0.
        row.long_term_rate = (row.first - row.latest) / years_between(row.first_date, row.latest_date);
        row.short_term_rate = (row.previous - row.latest) / years_between(row.previous_date, row.latest_date);
        row.governing_rate = std::max(row.long_term_rate, row.short_term_rate);
        if (rs.size() >= 3) row.least_squares_rate = least_squares_rate(rs);
        if (row.governing_rate > 0 && !std::isnan(row.required)) {
            row.remaining_life = std::max(0.0, (row.latest - row.required) / row.governing_rate);
            row.retirement_date = add_years(row.latest_date, row.remaining_life);
        }
        const double interval =
            std::isnan(row.remaining_life) ? h.options.max_interval : std::min(row.remaining_life / 2, h.options.max_interval);
        row.next_inspection = add_years(row.latest_date, interval);
        row.status = row.next_inspection != NO_DATE && row.next_inspection <= h.as_of ? HistoryStatus::DUE : HistoryStatus::OK;
    } else {
        row.status = HistoryStatus::ONE_READING;
    }
    if (row.latest < row.required) {
        row.status = HistoryStatus::BELOW_MINIMUM;
        row.next_inspection = row.latest_date;
    }
    return 1;
}

}  // namespace

int parse_date(const std::string& text, std::int32_t& days) { return date_at(text.data(), text.size(), days); }

std::string date_text(std::int32_t days) {
    if (days == NO_DATE) return "";
    const Civil c = civil_from_days(days);
    char text[32];
    std::snprintf(text, sizeof text, "%04lld-%02u-%02u", static_cast<long long>(c.year), c.month, c.day);
    return text;
}

std::int32_t today_days() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
#ifdef _WIN32
    localtime_s(&local, &now);
#else
    localtime_r(&now, &local);
#endif
    return static_cast<std::int32_t>(days_from_civil(local.tm_year + 1900, static_cast<unsigned>(local.tm_mon + 1),
                                                     static_cast<unsigned>(local.tm_mday)));
}

int date_in_path(const std::string& path, std::int32_t& days) {
    std::size_t end = path.size();
    while (end > 0) {
        const std::size_t slash = path.find_last_of("/\\", end - 1);
        const std::size_t start = slash == std::string::npos ? 0 : slash + 1;
        if (date_in_name(path.substr(start, end - start), days) != 0) return 1;
        if (slash == std::string::npos) break;
        end = slash;
    }
    return 0;
}

std::string history_status_text(HistoryStatus status) { return STATUS_TEXTS[static_cast<int>(status)]; }

std::string history_note_text(const History& history, const HistoryRow& row) {
    if (row.note == HistoryNote::NONE) return "";
    char text[160];
    std::snprintf(text, sizeof text, NOTE_TEXTS[static_cast<int>(row.note)], date_text(history.latest_date).c_str(),
                  date_text(row.latest_date).c_str());
    return text;
}

int make_history(const std::string& part, const std::vector<DatedSurvey>& surveys, const HistoryOptions& options,
                 History& h, std::string& why) {
    h = History{};
    h.part = part;
    h.options = options;
    h.as_of = options.as_of ? *options.as_of : today_days();
    if (surveys.empty()) {
        why = "no survey of " + part;
        return 0;
    }
    if (!(options.max_interval > 0 && options.max_interval <= MAX_INTERVAL_LIMIT)) {
        why = "the maximum interval must be above 0 and at most 1000 years";
        return 0;
    }
    bool finite = !options.minimum || std::isfinite(*options.minimum);
    for (const auto& [id, m] : options.minimums) finite = finite && std::isfinite(m.value);
    if (!finite) {
        why = "a minimum is not a number";
        return 0;
    }

    // Oldest first; of one date the later stored last, so that its readings
    // replace those of the earlier.
    std::vector<const DatedSurvey*> order;
    for (const DatedSurvey& s : surveys) {
        if (s.date < FIRST_DATE || s.date > LAST_DATE) {
            why = "survey " + std::to_string(s.id) + " (" + s.name + "): its date is outside the years 0001 to 9999";
            return 0;
        }
        order.push_back(&s);
    }
    std::stable_sort(order.begin(), order.end(), [](const DatedSurvey* a, const DatedSurvey* b) {
        return a->date != b->date ? a->date < b->date : a->id < b->id;
    });
    h.latest_date = order.back()->date;
    // The units are those of the latest survey with a thickness.
    for (auto s = order.rbegin(); s != order.rend() && h.units.empty(); ++s) {
        std::tie(h.units, h.decimals) = survey_units(**s);
    }

    // Each identifier's thickness of each date; the last of a survey's walk
    // and the last survey of a date win. The surveys come oldest first, so a
    // reading of the date of the identifier's last one replaces it. Each
    // point's identifier gets a slot, kept for the rows; surveys of a part
    // mostly walk the same identifiers in the same order, so a point whose
    // identifier is that of the same place in the survey before takes its
    // slot without a look-up.
    // With each identifier's readings, the low alarm of its latest one, in
    // the history's units.
    std::unordered_map<std::string_view, std::uint32_t> slot_of;
    std::vector<std::vector<Reading>> readings;
    std::vector<double> low_alarms;
    std::vector<std::vector<std::uint32_t>> slots(order.size());
    for (std::size_t k = 0; k < order.size(); ++k) {
        const DatedSurvey& s = *order[k];
        h.surveys.push_back({s.id, s.date, s.name});
        slots[k].reserve(s.points.size());
        for (std::size_t i = 0; i < s.points.size(); ++i) {
            const Point& p = s.points[i];
            std::uint32_t slot = 0;
            if (k > 0 && i < slots[k - 1].size() && order[k - 1]->points[i].id == p.id) {
                slot = slots[k - 1][i];
            } else {
                const auto [at, added] = slot_of.try_emplace(p.id, static_cast<std::uint32_t>(readings.size()));
                if (added) {
                    readings.emplace_back().reserve(order.size() - k);
                    low_alarms.push_back(HistoryRow::NONE);
                }
                slot = at->second;
            }
            slots[k].push_back(slot);
            const double value = is_thickness(p) ? convert_length(p.value, p.units, h.units) : HistoryRow::NONE;
            if (std::isnan(value)) continue;
            std::vector<Reading>& dates = readings[slot];
            if (dates.empty() || dates.back().date != s.date) dates.emplace_back();
            dates.back() = {s.date, value, s.id};
            low_alarms[slot] = convert_length(p.low_alarm, p.units, h.units);
        }
    }

    // Rows: newest survey first, each in its walk order, each identifier once.
    std::vector<char> seen(readings.size(), 0), in_latest(readings.size(), 0);
    std::vector<std::uint32_t> row_slots;
    for (std::size_t k = order.size(); k-- > 0;) {
        const DatedSurvey& s = *order[k];
        for (std::size_t i = 0; i < s.points.size(); ++i) {
            const std::uint32_t slot = slots[k][i];
            if (s.date == h.latest_date) in_latest[slot] = 1;
            if (seen[slot] != 0) continue;
            seen[slot] = 1;
            HistoryRow row;
            row.id = s.points[i].id;
            row.readings = std::move(readings[slot]);
            if (figure_row(h, row, low_alarms[slot], why) == 0) return 0;
            h.rows.push_back(std::move(row));
            row_slots.push_back(slot);
        }
    }
    for (std::size_t r = 0; r < h.rows.size(); ++r) {
        HistoryRow& row = h.rows[r];
        if (row.note == HistoryNote::NOT_IN_LATEST && in_latest[row_slots[r]] != 0) row.note = HistoryNote::NO_THICKNESS_IN_LATEST;
    }
    return 1;
}

std::string history_csv(const History& h) {
    std::string out =
        "ID,STATUS,READINGS,FIRST DATE,FIRST,PREVIOUS DATE,PREVIOUS,LATEST DATE,LATEST,UNITS,"
        "LONG-TERM RATE PER YEAR,SHORT-TERM RATE PER YEAR,LEAST-SQUARES RATE PER YEAR,GOVERNING RATE PER YEAR,"
        "REQUIRED,REQUIRED FROM,REMAINING LIFE (YEARS),RETIREMENT DATE,NEXT INSPECTION,NOTE\n";
    const int d = h.decimals;
    for (const HistoryRow& r : h.rows) {
        const std::string cells[] = {
            r.id, history_status_text(r.status), std::to_string(r.readings.size()), date_text(r.first_date),
            fixed(r.first, d), date_text(r.previous_date), fixed(r.previous, d), date_text(r.latest_date),
            fixed(r.latest, d), h.units, fixed(r.long_term_rate, d + 1), fixed(r.short_term_rate, d + 1),
            fixed(r.least_squares_rate, d + 1), fixed(r.governing_rate, d + 1), fixed(r.required, d), r.required_from,
            fixed(r.remaining_life, 1), date_text(r.retirement_date), date_text(r.next_inspection),
            history_note_text(h, r)};
        for (const std::string& cell : cells) out += csv_cell(cell) + ",";
        out.back() = '\n';
    }
    return out;
}

nlohmann::ordered_json history_json(const History& h) {
    using json = nlohmann::ordered_json;
    auto number = [](double v) { return std::isnan(v) ? json(nullptr) : json(v); };
    auto date = [](std::int32_t d) { return d == NO_DATE ? json(nullptr) : json(date_text(d)); };
    auto text = [](const std::string& t) { return t.empty() ? json(nullptr) : json(json_text(t)); };
    json surveys = json::array();
    for (const HistorySurvey& s : h.surveys) surveys.push_back({{"id", s.id}, {"date", date_text(s.date)}, {"name", json_text(s.name)}});
    json rows = json::array();
    for (const HistoryRow& r : h.rows) {
        json readings = json::array();
        for (const Reading& x : r.readings) readings.push_back({{"date", date_text(x.date)}, {"value", x.value}, {"survey", x.survey}});
        rows.push_back({
            {"id", json_text(r.id)},
            {"status", history_status_text(r.status)},
            {"readings", readings},
            {"first_date", date(r.first_date)},
            {"first", number(r.first)},
            {"previous_date", date(r.previous_date)},
            {"previous", number(r.previous)},
            {"latest_date", date(r.latest_date)},
            {"latest", number(r.latest)},
            {"long_term_rate", number(r.long_term_rate)},
            {"short_term_rate", number(r.short_term_rate)},
            {"least_squares_rate", number(r.least_squares_rate)},
            {"governing_rate", number(r.governing_rate)},
            {"required", number(r.required)},
            {"required_from", text(r.required_from)},
            {"remaining_life", number(r.remaining_life)},
            {"retirement_date", date(r.retirement_date)},
            {"next_inspection", date(r.next_inspection)},
            {"note", text(history_note_text(h, r))},
        });
    }
    return {
        {"part", json_text(h.part)},
        {"units", json_text(h.units)},
        {"decimals", h.decimals},
        {"latest_date", date(h.latest_date)},
        {"as_of", date(h.as_of)},
        {"max_interval", h.options.max_interval},
        {"minimum", h.options.minimum ? json(*h.options.minimum) : json(nullptr)},
        {"surveys", surveys},
        {"rows", rows},
    };
}

}  // namespace ugf::kit
