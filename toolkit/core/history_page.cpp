#include "ugf/history_page.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <tuple>

#include "core/html.h"
#include "ugf/stats.hpp"

namespace ugf::kit {

namespace {

constexpr std::size_t LISTED_MAX = 500;  // rows of the inspection table; the CSV has all
constexpr double DAYS_PER_YEAR = 365.25;
constexpr const char* DUE_FRAME = "#ff7f0e";  // as the map's .due cells

using Rows = std::vector<std::pair<std::string, std::string>>;

// The latest survey as make_history takes it: the latest date; of one date
// the larger id; of equal ids the later in the list.
const DatedSurvey* latest_of(const std::vector<DatedSurvey>& surveys) {
    const DatedSurvey* latest = nullptr;
    for (const DatedSurvey& s : surveys) {
        if (latest == nullptr || std::tie(s.date, s.id) >= std::tie(latest->date, latest->id)) latest = &s;
    }
    return latest;
}

std::string num(double v) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", v);
    return text;
}

std::string life_text(double years) { return fixed(years, 1); }

// The rows that have a remaining life, shortest first (of equal lives, in
// the history's order).
std::vector<const HistoryRow*> by_life(const History& h) {
    std::vector<const HistoryRow*> rows;
    for (const HistoryRow& r : h.rows) {
        if (!std::isnan(r.remaining_life)) rows.push_back(&r);
    }
    std::stable_sort(rows.begin(), rows.end(),
                     [](const HistoryRow* a, const HistoryRow* b) { return a->remaining_life < b->remaining_life; });
    return rows;
}

std::string required_source(const History& h) {
    if (h.options.minimum) return fixed(*h.options.minimum, h.decimals) + " " + h.units + " (--minimum) for every point";
    if (!h.options.minimums.empty()) {
        return "the part's table of " + std::to_string(h.options.minimums.size()) +
               " minimums, else the low alarm of the latest reading's setup";
    }
    return "the low alarm of the latest reading's setup";
}

Rows summary_rows(const History& h, const std::vector<const HistoryRow*>& lives) {
    std::size_t counts[5] = {};
    const HistoryRow *soonest = nullptr, *fastest = nullptr;
    for (const HistoryRow& r : h.rows) {
        ++counts[static_cast<int>(r.status)];
        if (r.next_inspection != NO_DATE && (soonest == nullptr || r.next_inspection < soonest->next_inspection)) {
            soonest = &r;
        }
        if (!std::isnan(r.governing_rate) && (fastest == nullptr || r.governing_rate > fastest->governing_rate)) {
            fastest = &r;
        }
    }
    auto count = [&](HistoryStatus s) { return std::to_string(counts[static_cast<int>(s)]); };
    Rows rows = {
        {"points", std::to_string(h.rows.size())},
        {"with a remaining life", std::to_string(lives.size())},
        {"below minimum", count(HistoryStatus::BELOW_MINIMUM)},
        {"due by " + date_text(h.as_of), count(HistoryStatus::DUE)},
        {"ok", count(HistoryStatus::OK)},
        {"one reading only", count(HistoryStatus::ONE_READING)},
        {"no thickness", count(HistoryStatus::NO_THICKNESS)},
    };
    if (!lives.empty()) {
        const HistoryRow& r = *lives.front();
        rows.emplace_back("shortest remaining life", life_text(r.remaining_life) + " years at " + r.id +
                                                         (r.retirement_date == NO_DATE ? "" : " (retirement " + date_text(r.retirement_date) + ")"));
    }
    if (soonest != nullptr) rows.emplace_back("soonest inspection", date_text(soonest->next_inspection) + " at " + soonest->id);
    if (fastest != nullptr) {
        rows.emplace_back("largest governing rate",
                          fixed(fastest->governing_rate, h.decimals + 1) + " " + h.units + " a year at " + fastest->id);
    }
    return rows;
}

// A map cell: the remaining life in years on the scale, red below the
// minimum, framed when due; grey with the latest reading's text where there
// is no remaining life.
MapCell life_cell(const HistoryRow* row, const Point* point, const Scale& scale) {
    MapCell cell;
    if (row == nullptr || point == nullptr) return cell;  // outside the walk
    cell.due = row->status == HistoryStatus::DUE;
    if (row->status == HistoryStatus::BELOW_MINIMUM) {
        cell.kind = CellKind::Below;
        cell.text = std::isnan(row->remaining_life) ? trim_blanks(point->text) : life_text(row->remaining_life);
    } else if (!std::isnan(row->remaining_life)) {
        cell.kind = CellKind::Value;
        cell.text = life_text(row->remaining_life);
        cell.step = scale_step(scale, row->remaining_life);
    } else {
        cell.kind = point->empty && row->readings.empty() ? CellKind::Empty : CellKind::Other;
        cell.text = point->text;
    }
    return cell;
}

std::string map_section(const History& h, const DatedSurvey& latest, const std::vector<Grid>& grids,
                        const std::vector<const HistoryRow*>& lives) {
    std::map<std::string, const HistoryRow*> row_of;
    for (const HistoryRow& r : h.rows) row_of.emplace(r.id, &r);
    // Beyond twice the longest interval every life gives the same inspection
    // interval, so the scale stops there.
    double longest = 0;
    for (const HistoryRow* r : lives) longest = std::max(longest, r->remaining_life);
    const Scale scale = lives.empty() ? Scale{} : Scale{0, std::min(longest, 2 * h.options.max_interval)};
    LegendMarks marks;
    marks.units = "years";
    marks.decimals = 1;
    marks.what = "remaining life";
    marks.swatches = {{"#d62728", "below the minimum"},
                      {"#fff", "due", DUE_FRAME},
                      {"#e0e0e0", "no remaining life (reading shown)"},
                      {"#fff", "empty point"}};
    std::string out = "<h2>Remaining life</h2>\n";
    if (grids.empty()) {
        Profile profile;
        profile.units = "years";
        profile.decimals = 1;
        for (const Point& p : latest.points) {
            const auto found = row_of.find(p.id);
            const HistoryRow* r = found == row_of.end() ? nullptr : found->second;
            profile.values.push_back(r == nullptr ? HistoryRow::NONE : r->remaining_life);
            profile.labels.push_back(p.id);
            profile.below.push_back(r != nullptr && r->status == HistoryStatus::BELOW_MINIMUM ? 1 : 0);
        }
        return out + "<figure>" + profile_svg(profile) + "<figcaption>The remaining life of each point of " +
               escape(latest.name) + " in the order of its walk, in years; red: below the minimum; gaps: no remaining "
               "life</figcaption></figure>\n";
    }
    std::map<std::int64_t, const Point*> point_at;
    for (const Point& p : latest.points) point_at[p.index] = &p;
    out += legend(scale, marks);
    for (const Grid& grid : grids) {
        std::vector<MapCell> cells;
        cells.reserve(grid.cells.size());
        for (std::int64_t index : grid.cells) {
            const auto p = point_at.find(index);
            const Point* point = p == point_at.end() ? nullptr : p->second;
            const auto r = point == nullptr ? row_of.end() : row_of.find(point->id);
            cells.push_back(life_cell(r == row_of.end() ? nullptr : r->second, point, scale));
        }
        out += map_tables(grid, cells);
    }
    return out + "<p class=\"note\">Laid out as the latest survey, " + escape(latest.name) + " (" +
           date_text(latest.date) + "); each cell shows the point's remaining life in years.</p>\n";
}

std::string inspection_table(const History& h) {
    std::vector<const HistoryRow*> rows;
    for (const HistoryRow& r : h.rows) {
        if (r.next_inspection != NO_DATE) rows.push_back(&r);
    }
    std::stable_sort(rows.begin(), rows.end(),
                     [](const HistoryRow* a, const HistoryRow* b) { return a->next_inspection < b->next_inspection; });
    const int d = h.decimals;
    std::string out = "<h2>Points by next inspection</h2>\n<table class=\"list\"><thead><tr><th>ID</th><th>status</th>"
                      "<th>readings</th><th>latest date</th><th>latest</th><th>governing rate a year</th>"
                      "<th>required</th><th>remaining life (years)</th><th>retirement</th><th>next inspection</th>"
                      "<th>note</th></tr></thead><tbody>\n";
    for (std::size_t i = 0; i < rows.size() && i < LISTED_MAX; ++i) {
        const HistoryRow& r = *rows[i];
        const std::string cells[] = {r.id, history_status_text(r.status), std::to_string(r.readings.size()),
                                     date_text(r.latest_date), fixed(r.latest, d), fixed(r.governing_rate, d + 1),
                                     fixed(r.required, d), life_text(r.remaining_life), date_text(r.retirement_date),
                                     date_text(r.next_inspection), history_note_text(h, r)};
        out += "<tr>";
        for (const std::string& c : cells) out += "<td>" + escape(c) + "</td>";
        out += "</tr>\n";
    }
    out += "</tbody></table>\n";
    if (rows.size() > LISTED_MAX) out += "<p class=\"note\">and " + std::to_string(rows.size() - LISTED_MAX) + " more in the CSV</p>\n";
    if (rows.size() < h.rows.size()) {
        out += "<p class=\"note\">" + std::to_string(h.rows.size() - rows.size()) +
               " points have no next inspection (one reading only, or no thickness).</p>\n";
    }
    return out;
}

// 1 January of a year, in days.
std::int32_t new_year(int year) {
    char text[16];
    std::snprintf(text, sizeof text, "%04d0101", year);
    std::int32_t days = NO_DATE;
    return parse_date(text, days) != 0 ? days : NO_DATE;
}

// The thickness of one point over the years: its readings, the required
// thickness, and the governing rate from the latest reading down to the
// required thickness at the retirement date.
std::string life_chart(const History& h, const HistoryRow& r) {
    constexpr double W = 560, H = 230, LEFT = 60, RIGHT = 16, TOP = 14, BOTTOM = 34;
    const double first = r.readings.front().date, latest = r.latest_date;
    const double span = std::max(latest - first, DAYS_PER_YEAR);
    // The projection is drawn to the retirement date, or as far as the
    // chart goes: twice the span of the readings, at least 10 years.
    const double ahead = std::clamp(r.remaining_life * DAYS_PER_YEAR, span * 0.15, std::max(2 * span, 10 * DAYS_PER_YEAR));
    const double x_low = first - span * 0.05, x_high = latest + ahead;
    const double end_years = std::min(r.remaining_life, ahead / DAYS_PER_YEAR);
    const double end_value = r.latest - r.governing_rate * end_years;
    double low = std::min(r.required, end_value), high = r.required;
    for (const Reading& x : r.readings) low = std::min(low, x.value), high = std::max(high, x.value);
    // Room below the required thickness for the retirement's label.
    const double range = high > low ? high - low : 1.0;
    low -= range * 0.25;
    high += range * 0.1;
    auto x_of = [&](double day) { return LEFT + (day - x_low) / (x_high - x_low) * (W - LEFT - RIGHT); };
    auto y_of = [&](double v) { return H - BOTTOM - (v - low) / (high - low) * (H - TOP - BOTTOM); };

    std::string out = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + num(W) + "\" height=\"" + num(H) +
                      "\" viewBox=\"0 0 " + num(W) + " " + num(H) + "\" role=\"img\"><title>" +
                      escape("Thickness of " + r.id + " over the years") + "</title><rect x=\"" + num(LEFT) + "\" y=\"" +
                      num(TOP) + "\" width=\"" + num(W - LEFT - RIGHT) + "\" height=\"" + num(H - TOP - BOTTOM) +
                      "\" fill=\"none\" stroke=\"#888\"/>";
    for (int k = 0; k <= 4; ++k) {
        const double v = low + (high - low) * k / 4.0;
        out += "<text x=\"" + num(LEFT - 4) + "\" y=\"" + num(y_of(v) + 4) + "\" text-anchor=\"end\">" +
               escape(fixed(v, h.decimals)) + "</text>";
    }
    // Years along the axis, at most about eight labels.
    const auto year_of = [](double day) {
        return std::stoi(date_text(static_cast<std::int32_t>(std::clamp<double>(day, FIRST_DATE, LAST_DATE))).substr(0, 4));
    };
    const int first_year = year_of(std::ceil(x_low)), last_year = year_of(std::floor(x_high));
    int step = 1;
    for (int s : {1, 2, 5, 10, 20, 50, 100, 200, 500}) {
        step = s;
        if ((last_year - first_year) / s <= 8) break;
    }
    for (int y = (first_year + step - 1) / step * step; y <= last_year; y += step) {
        const std::int32_t day = new_year(y);
        if (day == NO_DATE || day < x_low || day > x_high) continue;
        const std::string x = num(x_of(day));
        out += "<line x1=\"" + x + "\" x2=\"" + x + "\" y1=\"" + num(H - BOTTOM) + "\" y2=\"" + num(H - BOTTOM + 4) +
               "\" stroke=\"#888\"/><text x=\"" + x + "\" y=\"" + num(H - BOTTOM + 16) + "\" text-anchor=\"middle\">" +
               std::to_string(y) + "</text>";
    }
    out += "<text x=\"14\" y=\"" + num(TOP + 10) + "\" transform=\"rotate(-90 14 " + num(TOP + 10) +
           ")\" text-anchor=\"end\">" + escape(h.units) + "</text>";
    const std::string req = num(y_of(r.required));
    out += "<line x1=\"" + num(LEFT) + "\" x2=\"" + num(W - RIGHT) + "\" y1=\"" + req + "\" y2=\"" + req +
           "\" stroke=\"#d62728\" stroke-dasharray=\"5 4\"/><text x=\"" + num(LEFT + 4) + "\" y=\"" +
           num(y_of(r.required) - 4) + "\" fill=\"#d62728\">" +
           escape("required " + fixed(r.required, h.decimals)) + "</text>";
    out += "<line x1=\"" + num(x_of(latest)) + "\" y1=\"" + num(y_of(r.latest)) + "\" x2=\"" +
           num(x_of(latest + end_years * DAYS_PER_YEAR)) + "\" y2=\"" + num(y_of(end_value)) +
           "\" stroke=\"" + DUE_FRAME + "\" stroke-width=\"1.5\" stroke-dasharray=\"3 3\"/>";
    if (r.retirement_date != NO_DATE && r.retirement_date <= x_high) {
        const std::string x = num(x_of(r.retirement_date));
        out += "<circle cx=\"" + x + "\" cy=\"" + req + "\" r=\"4\" fill=\"none\" stroke=\"#d62728\" stroke-width=\"1.5\"/>"
               "<text x=\"" + x + "\" y=\"" + num(y_of(r.required) + 15) + "\" text-anchor=\"" +
               (x_of(r.retirement_date) > W - 120 ? "end" : "middle") + "\">" + escape("retirement " + date_text(r.retirement_date)) +
               "</text>";
    }
    std::string line;
    for (const Reading& x : r.readings) line += num(x_of(x.date)) + "," + num(y_of(x.value)) + " ";
    out += "<polyline fill=\"none\" stroke=\"#31688e\" stroke-width=\"1.5\" points=\"" + line + "\"/>";
    for (const Reading& x : r.readings) {
        out += "<circle cx=\"" + num(x_of(x.date)) + "\" cy=\"" + num(y_of(x.value)) + "\" r=\"3\" fill=\"#31688e\"/>";
    }
    return out + "</svg>";
}

std::string chart_caption(const History& h, const HistoryRow& r) {
    const int d = h.decimals;
    std::string rate = fixed(r.governing_rate, d + 1) + " " + h.units + " a year";
    if (!std::isnan(r.least_squares_rate)) rate += " (least squares " + fixed(r.least_squares_rate, d + 1) + ")";
    return "<b>" + escape(r.id) + "</b>: " + escape(history_status_text(r.status)) + "; " +
           std::to_string(r.readings.size()) + " readings, latest " + fixed(r.latest, d) + " " + escape(h.units) + " on " +
           date_text(r.latest_date) + "; governing rate " + escape(rate) + "; required " + fixed(r.required, d) +
           " (" + escape(r.required_from) + "); remaining life " + life_text(r.remaining_life) + " years" +
           (r.retirement_date == NO_DATE ? "" : ", retirement " + date_text(r.retirement_date)) + "; next inspection " +
           date_text(r.next_inspection);
}

}  // namespace

int history_page(const History& h, const std::vector<DatedSurvey>& surveys, const std::vector<Grid>& latest_grids,
                 std::string& page, std::string& why) {
    const DatedSurvey* latest = latest_of(surveys);
    if (latest == nullptr || h.surveys.empty()) {
        why = "no survey of " + h.part;
        return 0;
    }
    const std::vector<const HistoryRow*> lives = by_life(h);
    page = page_start(h.part + ": inspection history");
    page += "<h1>" + escape(h.part) + ": inspection history</h1>\n<div class=\"head\">";
    page += facts_table({
        {"part", h.part},
        {"surveys", std::to_string(surveys.size()) + ", " + date_text(h.surveys.front().date) + " to " +
                        date_text(h.latest_date)},
        {"units", h.units},
        {"required thickness", required_source(h)},
        {"maximum interval", fixed(h.options.max_interval, 1) + " years"},
        {"as of", date_text(h.as_of)},
    });
    page += facts_table(summary_rows(h, lives)) + "</div>\n";

    // The surveys in the history's order (oldest first), with their counts.
    std::map<std::int64_t, const DatedSurvey*> by_id;
    for (const DatedSurvey& s : surveys) by_id[s.id] = &s;
    page += "<h2>Surveys</h2>\n<table class=\"list\"><thead><tr><th>survey</th><th>date</th><th>file</th>"
            "<th>points</th><th>thickness readings</th></tr></thead><tbody>\n";
    for (const HistorySurvey& s : h.surveys) {
        const auto match = by_id.find(s.id);
        if (match == by_id.end()) {
            why = "survey " + std::to_string(s.id) + " of the history is not among the surveys given";
            return 0;
        }
        const DatedSurvey& found = *match->second;
        const auto readings = std::count_if(found.points.begin(), found.points.end(), is_thickness);
        page += "<tr><td>" + std::to_string(s.id) + "</td><td>" + date_text(s.date) + "</td><td>" + escape(s.name) +
                "</td><td>" + std::to_string(found.points.size()) + "</td><td>" + std::to_string(readings) +
                "</td></tr>\n";
    }
    page += "</tbody></table>\n";

    page += map_section(h, *latest, latest_grids, lives);
    page += inspection_table(h);

    if (!lives.empty()) {
        const std::size_t shown = std::min(lives.size(), HISTORY_CHARTS);
        page += "<h2>The " + std::to_string(shown) + " shortest remaining lives</h2>\n<p class=\"note\">Readings (blue), "
                "the required thickness (red, dashed) and the governing rate from the latest reading down to it "
                "(orange, dotted).</p>\n";
        page += "<div class=\"head\">\n";
        for (std::size_t i = 0; i < shown; ++i) {
            page += "<figure style=\"width:560px\"><figcaption>" + chart_caption(h, *lives[i]) + "</figcaption>" +
                    life_chart(h, *lives[i]) + "</figure>\n";
        }
        page += "</div>\n";
    }
    page += page_end();
    return 1;
}

int history_page(const History& history, const std::vector<DatedSurvey>& surveys, Survey& latest,
                 std::string& page, std::string& why) {
    std::vector<Grid> grids;
    if (survey_facts(latest).has_grid && survey_grids(latest, grids, why) == 0) return 0;
    return history_page(history, surveys, grids, page, why);
}

std::string history_output_name(const std::string& part, const std::string& ending) {
    std::string name = part;
    for (char& ch : name) {
        if (static_cast<unsigned char>(ch) < 0x20 || std::strchr("/\\:*?\"<>|", ch) != nullptr) ch = '_';
    }
    if (name.empty() || name[0] == '.') name.insert(0, "_");
    return name + ending;
}

}  // namespace ugf::kit
