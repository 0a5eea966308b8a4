#include "ugf/report.hpp"

#include <cmath>
#include <set>

#include "core/html.h"
#include "ugf/stats.hpp"

namespace ugf::kit {

namespace {

constexpr std::size_t LISTED_MAX = 2000;  // rows of a list before "and N more"

bool blank(const std::string& text) { return text.find_first_not_of(' ') == std::string::npos; }

// What the page needs of a point, in the survey's units.
struct Reading {
    double value = std::numeric_limits<double>::quiet_NaN();  // NaN: no thickness to colour
    double limit = std::numeric_limits<double>::quiet_NaN();
    bool below = false;
};

Reading reading_of(const Point& p, const Stats& stats) {
    Reading r;
    if (p.empty || p.velocity || p.lost || std::isnan(p.value)) return r;
    r.value = convert_length(p.value, p.units, stats.units);
    r.limit = stats.minimum_source == "--minimum" ? stats.minimum : convert_length(p.low_alarm, p.units, stats.units);
    r.below = !std::isnan(r.value) && !std::isnan(r.limit) && r.value < r.limit;
    return r;
}

MapCell cell_of(const Point& p, const Stats& stats, const Scale& scale) {
    MapCell cell{p.text, CellKind::Empty, -1};
    if (p.empty) return cell;
    if (p.velocity) {
        cell.kind = CellKind::Other;
        return cell;
    }
    if (p.lost || std::isnan(p.value)) {
        cell.kind = CellKind::Hatched;
        return cell;
    }
    const Reading r = reading_of(p, stats);
    cell.kind = std::isnan(r.value) ? CellKind::Other : r.below ? CellKind::Below : CellKind::Value;
    cell.step = scale_step(scale, r.value);
    return cell;
}

std::string list_table(const std::vector<std::string>& titles, const std::vector<std::vector<std::string>>& rows,
                       std::size_t total) {
    std::string out = "<table class=\"list\"><thead><tr>";
    for (const std::string& t : titles) out += "<th>" + escape(t) + "</th>";
    out += "</tr></thead><tbody>\n";
    for (const auto& row : rows) {
        out += "<tr>";
        for (const std::string& cell : row) out += "<td>" + escape(cell) + "</td>";
        out += "</tr>\n";
    }
    out += "</tbody></table>\n";
    if (total > rows.size()) out += "<p class=\"note\">and " + std::to_string(total - rows.size()) + " more</p>\n";
    return out;
}

std::vector<std::pair<std::string, std::string>> stats_rows(const Stats& s) {
    const int d = s.decimals + 1;
    std::vector<std::pair<std::string, std::string>> rows = {
        {"units", s.units},
        {"readings", std::to_string(s.readings)},
        {"empty points", std::to_string(s.empty)},
        {"lost signals and notes", std::to_string(s.lost)},
    };
    if (s.velocity != 0) rows.emplace_back("velocity checks", std::to_string(s.velocity));
    if (s.readings != 0) {
        rows.emplace_back("minimum", s.min_text + " at " + s.min_id);
        rows.emplace_back("maximum", s.max_text + " at " + s.max_id);
        rows.emplace_back("mean", fixed(s.mean, d));
        rows.emplace_back("std deviation", fixed(s.stddev, d));
        if (!std::isnan(s.cv)) rows.emplace_back("coeff. of variation", fixed(s.cv, 1) + "%");
    }
    if (!s.minimum_source.empty()) {
        const std::string limit = s.minimum_source == "--minimum" ? fixed(s.minimum, s.decimals) : "the low alarm of each setup";
        rows.emplace_back("below minimum", std::to_string(s.below) + " (" + fixed(s.below_share, 1) + "%) below " + limit);
    }
    return rows;
}

}  // namespace

int survey_report(Survey& survey, const ReportOptions& options, std::string& page, std::string& why) {
    if (!has_output(survey)) {
        why = conversion_failure(survey);
        return 0;
    }
    const Facts facts = survey_facts(survey);
    Stats stats;
    if (survey_stats(survey, options.minimum, stats, why) == 0) return 0;
    const double nominal = options.nominal ? *options.nominal : std::numeric_limits<double>::quiet_NaN();

    // One walk gathers the setups used, the readings below the minimum, the
    // gate alarms, and the profile of a survey without a grid.
    std::set<int> setups;
    std::set<double> limits;
    std::vector<std::vector<std::string>> below_rows, alarm_rows;
    std::size_t below_total = 0, alarm_total = 0;
    Profile profile;
    profile.units = stats.units;
    profile.decimals = stats.decimals;
    const bool flaw = facts.instrument == "flaw detector";
    int ok = for_each_point(survey, [&](const Point& p) {
        if (!p.empty) setups.insert(p.setup);
        const Reading r = reading_of(p, stats);
        if (!std::isnan(r.limit)) limits.insert(r.limit);
        if (r.below && ++below_total <= LISTED_MAX) {
            below_rows.push_back({p.id, trim_blanks(p.text), p.units, fixed(r.limit, stats.decimals), note_text(facts, p.notes), trim_blanks(p.alarm)});
        }
        if (flaw && !p.empty && trim_blanks(p.alarm) != "OFF" && ++alarm_total <= LISTED_MAX) {
            alarm_rows.push_back({p.id, trim_blanks(p.text), p.units, trim_blanks(p.alarm), note_text(facts, p.notes)});
        }
        if (!facts.has_grid) {
            profile.values.push_back(r.value);
            profile.labels.push_back(p.id);
            profile.below.push_back(r.below ? 1 : 0);
        }
        return 1;
    }, why);
    if (ok == 0) return 0;
    const double one_limit = limits.size() == 1 ? *limits.begin() : std::numeric_limits<double>::quiet_NaN();

    const std::string name = survey_name(survey.path);
    page = page_start(name + ": survey report");
    page += "<h1>Survey " + escape(name) + "</h1>\n<div class=\"head\">";
    std::string setup_list;
    for (int s : setups) setup_list += (setup_list.empty() ? "" : ", ") + std::to_string(s);
    std::vector<std::pair<std::string, std::string>> rows = {
        {"file type", facts.file_type_name},
        {"instrument", facts.instrument + (blank(facts.model) ? "" : " (" + trim_blanks(facts.model) + ")")},
        {"identifiers", facts.first_id + " to " + facts.last_id},
        {"pattern", facts.walk_pattern_name},
        {"points", std::to_string(facts.points)},
        {"setups used", setup_list},
    };
    for (const auto& [label, value] : {std::pair<const char*, const std::string&>{"description", facts.description},
                                       {"location", facts.location},
                                       {"inspector", facts.inspector_id}}) {
        if (!blank(value)) rows.emplace_back(label, trim_blanks(value));
    }
    page += facts_table(rows) + facts_table(stats_rows(stats)) + "</div>\n";

    if (facts.has_grid) {
        const Scale scale = make_scale(stats.min, stats.max, nominal);
        std::vector<Grid> grids;
        if (survey_grids(survey, grids, why) == 0) return 0;
        page += "<h2>Thickness map</h2>\n" +
                legend(scale, {stats.units, stats.decimals, options.minimum ? *options.minimum : one_limit, nominal});
        for (const Grid& grid : grids) {
            std::vector<MapCell> cells;
            cells.reserve(grid.cells.size());
            for (std::int64_t index : grid.cells) {
                Point p;
                if (read_point(survey, index, p, why) == 0) return 0;
                cells.push_back(cell_of(p, stats, scale));
            }
            page += map_tables(grid, cells);
        }
    } else {
        profile.minimum = options.minimum ? *options.minimum : one_limit;
        profile.nominal = nominal;
        page += "<h2>Thickness profile</h2>\n<figure>" + profile_svg(profile) +
                "<figcaption>The readings in the order of the walk, in " + escape(stats.units) +
                "; red: below the minimum; gaps: lost signals, notes and empty points</figcaption></figure>\n";
    }

    page += "<h2>Readings below the minimum (" + std::to_string(below_total) + ")</h2>\n";
    if (stats.minimum_source.empty()) {
        page += "<p class=\"note\">No minimum: give --minimum, or set a low alarm in the setups.</p>\n";
    } else if (below_total != 0) {
        page += list_table({"ID", "reading", "units", "minimum", "notes", "alarm"}, below_rows, below_total);
    }
    if (flaw) {
        page += "<h2>Gate alarms (" + std::to_string(alarm_total) + ")</h2>\n";
        if (alarm_total != 0) page += list_table({"ID", "reading", "units", "gate 1 alarm", "notes"}, alarm_rows, alarm_total);
    }

    std::string ascans, bscans;
    std::size_t ascan_count = 0, bscan_count = 0;
    ok = for_each_scan(survey, [&](const Ascan& a) {
        ++ascan_count;
        ascans += ascan_figure(a);
        return 1;
    }, [&](const Bscan& b) {
        ++bscan_count;
        bscans += bscan_figure(b);
        return 1;
    }, why);
    if (ok == 0) return 0;
    if (ascan_count != 0) page += "<h2>A-scans (" + std::to_string(ascan_count) + ")</h2>\n" + ascans;
    if (bscan_count != 0) page += "<h2>B-scans (" + std::to_string(bscan_count) + ")</h2>\n" + bscans;
    page += page_end();
    return 1;
}

}  // namespace ugf::kit
