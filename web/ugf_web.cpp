// The page's engine: the library and the toolkit's shared code behind a few
// calls that the page's worker makes. Surveys are the bytes the user gave;
// every result is bytes or text handed back to the page, which never sends
// anything anywhere.
#include <emscripten/bind.h>
#include <emscripten/val.h>

#include <cmath>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ugf/compare.hpp"
#include "ugf/convert.hpp"
#include "ugf/converter.hpp"
#include "ugf/files.hpp"
#include "ugf/history.hpp"
#include "ugf/history_page.hpp"
#include "ugf/report.hpp"
#include "ugf/survey.hpp"

using emscripten::val;
using namespace ugf::kit;

namespace {

struct PageSurvey {
    std::string name;
    std::vector<std::uint8_t> bytes;
    Survey survey;
    bool opened = false;
    std::string why;  // what the toolkit's open said, when it failed
};

// The surveys of the page, by the number the page knows them by. One
// module instance serves one worker, which handles one message at a time.
struct Surveys {
    std::map<int, std::unique_ptr<PageSurvey>> by_id;
    int next = 1;
};

Surveys& surveys() {
    static Surveys all;
    return all;
}

PageSurvey* find(int id) {
    auto it = surveys().by_id.find(id);
    return it == surveys().by_id.end() ? nullptr : it->second.get();
}

// The survey of `id` when the toolkit could open it; else nullptr, with the
// reason in `result` where the survey exists.
PageSurvey* opened(int id, val& result) {
    PageSurvey* s = find(id);
    if (s != nullptr && !s->opened) {
        result.set("error", s->name + ": " + s->why);
        return nullptr;
    }
    return s;
}

val bytes_of(const std::string& text) {
    val array = val::global("Uint8Array").new_(text.size());
    array.call<void>("set", val(emscripten::typed_memory_view(text.size(), reinterpret_cast<const std::uint8_t*>(text.data()))));
    return array;
}

std::string trim(const std::string& text) {
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

// A survey from the page: its name and bytes. Gives its number, the date its
// name holds ("" for none) and its description, which name its place in a
// part's history, or why it can't take part there.
val add_survey(const std::string& name, const val& data) {
    auto s = std::make_unique<PageSurvey>();
    s->name = name;
    s->bytes = emscripten::convertJSArrayToNumberVector<std::uint8_t>(data);
    s->survey.path = name;
    s->opened = open_survey_memory(s->survey, s->bytes.data(), s->bytes.size(), s->why) != 0;
    val result = val::object();
    std::int32_t days = NO_DATE;
    date_in_path(name, days);
    result.set("date", date_text(days));
    if (!s->opened) result.set("error", s->why);
    else if (!has_output(s->survey)) result.set("error", conversion_failure(s->survey));
    else result.set("description", trim(survey_facts(s->survey).description));
    const int id = surveys().next++;
    surveys().by_id[id] = std::move(s);
    result.set("id", id);
    return result;
}

void remove_survey(int id) { surveys().by_id.erase(id); }

// The run of `ugf2csv NAME d a` (or g) on the survey's bytes: its console
// text, its status, and the output file's name and bytes when it made one.
val run_converter_on(int id, const std::string& form, const val& progress) {
    val result = val::object();
    PageSurvey* s = find(id);
    if (s == nullptr) return result;
    std::string output;
    std::size_t reported = 0;  // output bytes at the last report of progress
    ConverterRun run;
    run_converter_on_bytes(s->name, s->bytes.data(), s->bytes.size(), form, [&](const char* text, std::size_t n) {
        output.append(text, n);
        // A report of progress for each MiB of output.
        if (!progress.isUndefined() && output.size() - reported >= (1u << 20)) {
            progress(static_cast<double>(output.size()));
            reported = output.size();
        }
        return 1;
    }, run);
    result.set("status", run.status);
    result.set("console", run.console);
    if (run.status == 0) {
        ConvertOptions options;
        options.form = form == "g" ? FORM_GRID : FORM_DETAILED;
        result.set("name", output_name(s->name, options));
        result.set("bytes", bytes_of(output));
    }
    return result;
}

// A quoted CSV or a workbook of the survey.
val convert_extra(int id, const std::string& kind, const std::string& form) {
    val result = val::object();
    PageSurvey* s = opened(id, result);
    if (s == nullptr) return result;
    ConvertOptions options{form == "g" ? FORM_GRID : FORM_DETAILED, kind == "quoted", kind == "xlsx"};
    std::string out, why;
    if (convert_to_text(s->survey, options, out, why) == 0) {
        result.set("error", s->name + ": " + why);
        return result;
    }
    result.set("name", output_name(s->name, (kind == "quoted" ? std::string("_quoted") : std::string()) + output_ending(options)));
    result.set("bytes", bytes_of(out));
    return result;
}

std::optional<double> given(double v) { return std::isnan(v) ? std::nullopt : std::optional<double>(v); }

// The report page of `ugf report`.
val report(int id, double minimum, double nominal) {
    val result = val::object();
    PageSurvey* s = opened(id, result);
    if (s == nullptr) return result;
    std::string page, why;
    if (survey_report(s->survey, {given(minimum), given(nominal)}, page, why) == 0) {
        result.set("error", s->name + ": " + why);
        return result;
    }
    result.set("name", output_name(s->name, REPORT_ENDING));
    result.set("html", page);
    return result;
}

// The CSV and the page of `ugf compare`.
val compare(int baseline_id, int latest_id, double years, double minimum) {
    val result = val::object();
    PageSurvey* b = opened(baseline_id, result);
    PageSurvey* l = b != nullptr ? opened(latest_id, result) : nullptr;
    if (l == nullptr) return result;
    Comparison comparison;
    std::string page, why;
    if (compare_surveys(b->survey, l->survey, {given(years), given(minimum)}, comparison, why) == 0 ||
        compare_page(comparison, l->survey, page, why) == 0) {
        result.set("error", why);
        return result;
    }
    result.set("csvName", output_name(l->name, COMPARE_CSV_ENDING));
    result.set("csv", bytes_of(compare_csv(comparison)));
    result.set("htmlName", output_name(l->name, COMPARE_PAGE_ENDING));
    result.set("html", page);
    return result;
}

// The inspection history of `part` from the chosen surveys ({engine, id,
// date}: the page's survey, its id in the history, YYYY-MM-DD), as
// `ugf archive history` and `report` make it: its CSV and its page.
val history(const val& chosen, const std::string& part, double minimum, double max_interval, const std::string& as_of) {
    val result = val::object();
    std::vector<DatedSurvey> dated;
    std::map<std::int64_t, PageSurvey*> by_id;
    std::string why, page;
    const auto failed = [&](const std::string& text) {
        result.set("error", text);
        return result;
    };
    if (part.empty()) return failed("no part: give the part's name");
    HistoryOptions options;
    options.minimum = given(minimum);
    if (!std::isnan(max_interval)) options.max_interval = max_interval;
    if (std::int32_t days = 0; !as_of.empty()) {
        if (parse_date(as_of, days) == 0) return failed("the as-of date is not a date: " + as_of);
        options.as_of = days;
    }
    for (unsigned i = 0, n = chosen["length"].as<unsigned>(); i < n; ++i) {
        PageSurvey* s = opened(chosen[i]["engine"].as<int>(), result);
        if (s == nullptr) return result.hasOwnProperty("error") ? result : failed("a survey is missing");
        DatedSurvey& d = dated.emplace_back();
        d.id = chosen[i]["id"].as<int>();
        d.name = s->name;
        if (parse_date(chosen[i]["date"].as<std::string>(), d.date) == 0) return failed(s->name + ": its date is not a date");
        if (for_each_point(s->survey, [&](const Point& p) {
                d.points.push_back(p);
                return 1;
            }, why) == 0) {
            return failed(s->name + ": " + why);
        }
        by_id[d.id] = s;
    }
    History h;
    if (make_history(part, dated, options, h, why) == 0) return failed(why);
    // The map is laid out as the latest survey's grids.
    PageSurvey* latest = by_id[h.surveys.back().id];
    if (history_page(h, dated, latest->survey, page, why) == 0) {
        return failed(latest->name + ": " + why);
    }
    result.set("points", static_cast<double>(h.rows.size()));
    result.set("csvName", history_output_name(part, HISTORY_CSV_ENDING));
    result.set("csv", bytes_of(history_csv(h)));
    result.set("htmlName", history_output_name(part, HISTORY_PAGE_ENDING));
    result.set("html", page);
    return result;
}

}  // namespace

EMSCRIPTEN_BINDINGS(ugf_web) {
    emscripten::function("report", &report);
    emscripten::function("compare", &compare);
    emscripten::function("history", &history);
    emscripten::function("addSurvey", &add_survey);
    emscripten::function("removeSurvey", &remove_survey);
    emscripten::function("runConverter", &run_converter_on);
    emscripten::function("convertExtra", &convert_extra);
}
