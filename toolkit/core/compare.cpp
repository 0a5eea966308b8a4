#include "ugf/compare.hpp"

#include <algorithm>
#include <cmath>
#include <map>

#include "core/html.h"
#include "ugf/stats.hpp"

namespace ugf::kit {

namespace {

constexpr std::size_t LISTED_MAX = 500;  // rows of the page's loss table; the CSV has all

const char* status_text(CompareRow::Status s) {
    return s == CompareRow::BOTH ? "both" : s == CompareRow::BASELINE_ONLY ? "baseline only" : "latest only";
}

// A reading as the CSV and page show it: its number in the latest's units,
// or the cell's own text where it has none.
std::string shown(double value, const std::string& text, int decimals) {
    return std::isnan(value) ? text : fixed(value, decimals);
}

}  // namespace

int compare_surveys(Survey& baseline, Survey& latest, const CompareOptions& options, Comparison& c, std::string& why) {
    c = Comparison{};
    c.baseline_path = baseline.path;
    c.latest_path = latest.path;
    c.options = options;
    Stats base_stats, stats;
    if (survey_stats(baseline, std::nullopt, base_stats, why) == 0) return 0;
    if (survey_stats(latest, options.minimum, stats, why) == 0) return 0;
    c.baseline_facts = survey_facts(baseline);
    c.latest_facts = survey_facts(latest);
    c.baseline_units = base_stats.units;
    c.units = stats.units;
    c.decimals = stats.decimals;

    // The baseline's points by identifier; a repeated identifier matches the
    // latest's repeats in walk order.
    std::vector<CompareRow> base_rows;
    std::map<std::string, std::vector<std::size_t>> by_id;
    int ok = for_each_point(baseline, [&](const Point& p) {
        CompareRow r;
        r.id = p.id;
        r.status = CompareRow::BASELINE_ONLY;
        r.baseline_text = trim_blanks(p.text);
        if (is_thickness(p)) r.baseline = convert_length(p.value, p.units, c.units);
        by_id[p.id].push_back(base_rows.size());
        base_rows.push_back(std::move(r));
        return 1;
    }, why);
    if (ok == 0) return 0;
    for (auto& [id, list] : by_id) std::reverse(list.begin(), list.end());
    std::vector<char> used(base_rows.size(), 0);

    ok = for_each_point(latest, [&](const Point& p) {
        CompareRow r;
        r.id = p.id;
        r.status = CompareRow::LATEST_ONLY;
        r.latest_text = trim_blanks(p.text);
        r.latest_index = p.index;
        r.latest_empty = p.empty;
        r.latest_lost = !p.empty && !p.velocity && (p.lost || std::isnan(p.value));
        if (is_thickness(p)) {
            r.latest = convert_length(p.value, p.units, c.units);
            r.limit = options.minimum ? *options.minimum : convert_length(p.low_alarm, p.units, c.units);
        }
        auto match = by_id.find(p.id);
        if (match != by_id.end() && !match->second.empty()) {
            const std::size_t b = match->second.back();
            match->second.pop_back();
            used[b] = 1;
            r.status = CompareRow::BOTH;
            r.baseline_text = base_rows[b].baseline_text;
            r.baseline = base_rows[b].baseline;
        }
        c.rows.push_back(std::move(r));
        return 1;
    }, why);
    if (ok == 0) return 0;
    for (std::size_t b = 0; b < base_rows.size(); ++b) {
        if (used[b] == 0) c.rows.push_back(std::move(base_rows[b]));
    }

    for (CompareRow& r : c.rows) {
        ++(r.status == CompareRow::BOTH ? c.both : r.status == CompareRow::BASELINE_ONLY ? c.baseline_only : c.latest_only);
        if (std::isnan(r.baseline) || std::isnan(r.latest)) continue;
        ++c.compared;
        r.loss = r.baseline - r.latest;
        if (r.baseline != 0) r.share = 100.0 * r.loss / r.baseline;
        if (options.years && *options.years > 0) r.rate = r.loss / *options.years;
        if (r.rate > 0 && !std::isnan(r.limit)) r.life = std::max(0.0, (r.latest - r.limit) / r.rate);
    }
    if (c.latest_facts.has_grid && survey_grids(latest, c.grids, why) == 0) return 0;
    return 1;
}

std::string compare_csv(const Comparison& c) {
    std::string out = "ID,STATUS,BASELINE,LATEST,UNITS,LOSS,LOSS %,RATE PER YEAR,REMAINING LIFE (YEARS)\n";
    const int d = c.decimals;
    for (const CompareRow& r : c.rows) {
        out += csv_cell(r.id) + "," + status_text(r.status) + "," + csv_cell(shown(r.baseline, r.baseline_text, d)) + "," +
               csv_cell(shown(r.latest, r.latest_text, d)) + "," + c.units + "," + fixed(r.loss, d) + "," +
               fixed(r.share, 1) + "," + fixed(r.rate, d + 1) + "," + fixed(r.life, 1) + "\n";
    }
    return out;
}

int compare_page(const Comparison& c, Survey& latest, std::string& page, std::string& why) {
    const int d = c.decimals;
    const std::string base_name = survey_name(c.baseline_path), name = survey_name(c.latest_path);
    page = page_start(name + " compared with " + base_name);
    page += "<h1>Survey " + escape(name) + " compared with " + escape(base_name) + "</h1>\n<div class=\"head\">";
    auto survey_rows = [](const char* role, const std::string& path, const Facts& f, const std::string& units) {
        std::vector<std::pair<std::string, std::string>> rows = {
            {role, survey_name(path)}, {"file type", f.file_type_name}, {"instrument", f.instrument},
            {"identifiers", f.first_id + " to " + f.last_id}, {"points", std::to_string(f.points)}, {"units", units}};
        if (f.description.find_first_not_of(' ') != std::string::npos) rows.emplace_back("description", trim_blanks(f.description));
        return rows;
    };
    page += facts_table(survey_rows("baseline", c.baseline_path, c.baseline_facts, c.baseline_units));
    page += facts_table(survey_rows("latest", c.latest_path, c.latest_facts, c.units));

    // The summary, and the rows with a loss by largest loss first.
    std::vector<const CompareRow*> losses;
    double smallest = std::numeric_limits<double>::quiet_NaN(), largest = smallest, sum = 0;
    const CompareRow* shortest = nullptr;
    for (const CompareRow& r : c.rows) {
        if (std::isnan(r.loss)) continue;
        losses.push_back(&r);
        sum += r.loss;
        smallest = std::isnan(smallest) ? r.loss : std::min(smallest, r.loss);
        largest = std::isnan(largest) ? r.loss : std::max(largest, r.loss);
        if (!std::isnan(r.life) && (shortest == nullptr || r.life < shortest->life)) shortest = &r;
    }
    std::stable_sort(losses.begin(), losses.end(), [](const CompareRow* a, const CompareRow* b) { return a->loss > b->loss; });
    std::vector<std::pair<std::string, std::string>> summary = {
        {"matched points", std::to_string(c.both)},
        {"baseline only", std::to_string(c.baseline_only)},
        {"latest only", std::to_string(c.latest_only)},
        {"compared readings", std::to_string(c.compared)},
    };
    if (!losses.empty()) {
        summary.emplace_back("mean loss", fixed(sum / static_cast<double>(losses.size()), d + 1) + " " + c.units);
        summary.emplace_back("largest loss", fixed(largest, d) + " " + c.units + " at " + losses.front()->id);
    }
    if (c.options.years) summary.emplace_back("years between", fixed(*c.options.years, 2));
    if (c.options.minimum) summary.emplace_back("minimum", fixed(*c.options.minimum, d) + " " + c.units);
    if (shortest != nullptr) summary.emplace_back("shortest remaining life", fixed(shortest->life, 1) + " years at " + shortest->id);
    page += facts_table(summary) + "</div>\n";

    std::map<std::int64_t, const CompareRow*> by_index;
    for (const CompareRow& r : c.rows) {
        if (r.latest_index >= 0) by_index.emplace(r.latest_index, &r);
    }
    // Darkest where the most was lost, as thin spots are darkest on the
    // thickness map.
    const Scale scale{largest, smallest};
    if (c.latest_facts.has_grid) {
        page += "<h2>Loss map</h2>\n" +
                legend(scale, {c.units, d, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::quiet_NaN(),
                               "loss", "latest below the minimum"});
        for (const Grid& grid : c.grids) {
            std::vector<MapCell> cells;
            cells.reserve(grid.cells.size());
            for (std::int64_t index : grid.cells) {
                auto found = by_index.find(index);
                MapCell cell;
                if (found == by_index.end()) {
                    // A cell outside the walk: shown as the latest survey's grid shows it.
                    Point p;
                    if (read_point(latest, index, p, why) == 0) return 0;
                    cell = {p.text, p.empty ? CellKind::Empty : CellKind::Other, -1};
                } else {
                    const CompareRow& r = *found->second;
                    cell.text = std::isnan(r.loss) ? r.latest_text : fixed(r.loss, d);
                    cell.kind = r.latest_empty ? CellKind::Empty
                                : r.latest_lost ? CellKind::Hatched
                                : std::isnan(r.loss) ? CellKind::Other
                                : r.latest < r.limit ? CellKind::Below
                                                     : CellKind::Value;
                    cell.step = scale_step(scale, r.loss);
                }
                cells.push_back(std::move(cell));
            }
            page += map_tables(grid, cells);
        }
    } else {
        Profile profile;
        profile.units = c.units;
        profile.decimals = d;
        for (const CompareRow& r : c.rows) {
            if (r.latest_index < 0) continue;
            profile.values.push_back(r.loss);
            profile.labels.push_back(r.id);
        }
        page += "<h2>Loss profile</h2>\n<figure>" + profile_svg(profile) + "<figcaption>The loss at each point of " +
                escape(name) + " in the order of its walk, in " + escape(c.units) + "</figcaption></figure>\n";
    }

    page += "<h2>Points by largest loss</h2>\n<table class=\"list\"><thead><tr><th>ID</th><th>baseline</th>"
            "<th>latest</th><th>loss</th><th>loss %</th><th>rate per year</th><th>remaining life (years)</th></tr>"
            "</thead><tbody>\n";
    for (std::size_t i = 0; i < losses.size() && i < LISTED_MAX; ++i) {
        const CompareRow& r = *losses[i];
        page += "<tr><td>" + escape(r.id) + "</td><td>" + fixed(r.baseline, d) + "</td><td>" + fixed(r.latest, d) +
                "</td><td>" + fixed(r.loss, d) + "</td><td>" + fixed(r.share, 1) + "</td><td>" + fixed(r.rate, d + 1) +
                "</td><td>" + fixed(r.life, 1) + "</td></tr>\n";
    }
    page += "</tbody></table>\n";
    if (losses.size() > LISTED_MAX) {
        page += "<p class=\"note\">and " + std::to_string(losses.size() - LISTED_MAX) + " more in the CSV</p>\n";
    }
    page += page_end();
    return 1;
}

}  // namespace ugf::kit
