#include "ugf/stats.hpp"

#include "ugf/json.hpp"

#include <cmath>
#include <cstdio>
#include <map>

namespace ugf::kit {

double convert_length(double value, const std::string& from, const std::string& to) {
    if (from == to) return value;
    if (from == "IN" && to == "MM") return value * 25.4;
    if (from == "MM" && to == "IN") return value / 25.4;
    return std::numeric_limits<double>::quiet_NaN();
}

std::string fixed(double value, int decimals) {
    if (std::isnan(value)) return "";
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

std::string csv_cell(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string out = "\"";
    for (char c : text) out += c == '"' ? std::string("\"\"") : std::string(1, c);
    return out + "\"";
}

int survey_stats(Survey& survey, std::optional<double> minimum, Stats& stats, std::string& why) {
    const Facts facts = survey_facts(survey);
    stats = Stats{};
    stats.path = survey.path;
    stats.instrument = facts.instrument;
    stats.model = facts.model;
    stats.file_type_name = facts.file_type_name;
    if (minimum) {
        stats.minimum_source = "--minimum";
        stats.minimum = *minimum;
    }

    // The first walk counts and finds the units of the most readings; the
    // second takes the values in those units. Nothing is kept per point.
    std::map<std::string, std::uint64_t> unit_count;
    int ok = for_each_point(survey, [&](const Point& p) {
        ++stats.points;
        if (p.empty) {
            ++stats.empty;
        } else if (p.velocity) {
            ++stats.velocity;
        } else if (p.lost || std::isnan(p.value)) {
            ++stats.lost;
        } else {
            ++unit_count[p.units];
        }
        return 1;
    }, why);
    if (ok == 0) return 0;
    for (const auto& [units, count] : unit_count) {
        if (stats.units.empty() || count > unit_count[stats.units]) stats.units = units;
    }

    double sum = 0.0;
    double sum_sq = 0.0;
    ok = for_each_point(survey, [&](const Point& p) {
        if (p.empty || p.velocity || p.lost || std::isnan(p.value)) return 1;
        const double x = convert_length(p.value, p.units, stats.units);
        if (std::isnan(x)) return 1;
        ++stats.readings;
        sum += x;
        sum_sq += x * x;
        if (p.units == stats.units && p.decimals > stats.decimals) stats.decimals = p.decimals;
        auto shown = [&] { return p.units == stats.units ? p.text.substr(p.text.find_first_not_of(' ')) : ""; };
        if (std::isnan(stats.min) || x < stats.min) {
            stats.min = x;
            stats.min_text = shown();
            stats.min_id = p.id;
        }
        if (std::isnan(stats.max) || x > stats.max) {
            stats.max = x;
            stats.max_text = shown();
            stats.max_id = p.id;
        }
        // The reading's own setup says its low alarm, in the reading's units.
        const double limit = minimum ? *minimum : convert_length(p.low_alarm, p.units, stats.units);
        if (!std::isnan(limit)) {
            if (!minimum) stats.minimum_source = "low alarm";
            if (x < limit) ++stats.below;
        }
        return 1;
    }, why);
    if (ok == 0) return 0;
    if (stats.min_text.empty()) stats.min_text = fixed(stats.min, stats.decimals);
    if (stats.max_text.empty()) stats.max_text = fixed(stats.max, stats.decimals);
    if (stats.readings != 0) {
        const double n = static_cast<double>(stats.readings);
        stats.mean = sum / n;
        const double variance = sum_sq / n - stats.mean * stats.mean;
        stats.stddev = std::sqrt(variance > 0.0 ? variance : 0.0);
        if (stats.mean != 0.0) stats.cv = 100.0 * stats.stddev / stats.mean;
        if (!stats.minimum_source.empty()) stats.below_share = 100.0 * static_cast<double>(stats.below) / n;
    }
    return 1;
}

std::string stats_text(const Stats& s) {
    std::string out;
    auto line = [&out](const char* label, const std::string& value) {
        char text[512];
        std::snprintf(text, sizeof text, "  %-18s %s\n", label, value.c_str());
        out += text;
    };
    const int d = s.decimals + 1;
    out += s.path + "\n";
    line("instrument", s.instrument + (s.model.find_first_not_of(' ') == std::string::npos ? "" : " (" + s.model + ")"));
    line("file type", s.file_type_name);
    line("units", s.units);
    line("points", std::to_string(s.points));
    line("readings", std::to_string(s.readings));
    line("empty points", std::to_string(s.empty));
    line("lost signals", std::to_string(s.lost));
    if (s.velocity != 0) line("velocity checks", std::to_string(s.velocity));
    if (s.readings != 0) {
        line("minimum", s.min_text + " at " + s.min_id);
        line("maximum", s.max_text + " at " + s.max_id);
        line("mean", fixed(s.mean, d));
        line("std deviation", fixed(s.stddev, d));
        line("coeff. of var.", std::isnan(s.cv) ? "" : fixed(s.cv, 1) + "%");
    }
    if (!s.minimum_source.empty()) {
        const std::string limit = s.minimum_source == "--minimum" ? fixed(s.minimum, d) : "low alarm of each setup";
        line("below minimum", std::to_string(s.below) + " (" + fixed(s.below_share, 1) + "%) below " + limit);
    }
    return out;
}

nlohmann::ordered_json stats_json(const Stats& s) {
    using json = nlohmann::ordered_json;
    auto number = [](double v) { return std::isnan(v) ? json(nullptr) : json(v); };
    json j = {
        {"file", json_text(s.path)},
        {"instrument", s.instrument},
        {"model", json_text(s.model)},
        {"file_type_name", s.file_type_name},
        {"units", s.units},
        {"points", s.points},
        {"readings", s.readings},
        {"empty", s.empty},
        {"lost", s.lost},
        {"velocity_checks", s.velocity},
        {"minimum", s.readings != 0 ? json{{"value", number(s.min)}, {"text", json_text(s.min_text)}, {"id", json_text(s.min_id)}}
                                    : json(nullptr)},
        {"maximum", s.readings != 0 ? json{{"value", number(s.max)}, {"text", json_text(s.max_text)}, {"id", json_text(s.max_id)}}
                                    : json(nullptr)},
        {"mean", number(s.mean)},
        {"stddev", number(s.stddev)},
        {"cv_percent", number(s.cv)},
        {"below_minimum",
         s.minimum_source.empty()
             ? json(nullptr)
             : json{{"limit", s.minimum_source == "--minimum" ? number(s.minimum) : json("low alarm")},
                              {"count", s.below},
                              {"percent", number(s.below_share)}}},
    };
    return j;
}

}  // namespace ugf::kit
