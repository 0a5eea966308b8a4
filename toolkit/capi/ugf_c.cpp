// The C interface (include/ugf/ugf.h) over the toolkit's public C++ calls.
// A survey handle keeps the C++ survey, its last failure, and the objects
// whose strings it hands out. Every entry point catches whatever the C++
// side throws (std::bad_alloc above all): a C caller only ever sees a result
// and a code.
#include "ugf/ugf.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <functional>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "ugf/compare.hpp"
#include "ugf/convert.hpp"
#include "ugf/files.hpp"
#include "ugf/json.hpp"
#include "ugf/report.hpp"
#include "ugf/stats.hpp"
#include "ugf/survey.hpp"

namespace kit = ugf::kit;

static_assert(UGF_ERROR_NONE == int{kit::ERROR_NONE} && UGF_ERROR_OPEN == int{kit::ERROR_OPEN} &&
              UGF_ERROR_NOT_SURVEY == int{kit::ERROR_NOT_SURVEY} && UGF_ERROR_READ == int{kit::ERROR_READ} &&
              UGF_ERROR_NO_OUTPUT == int{kit::ERROR_NO_OUTPUT} && UGF_ERROR_DAMAGED == int{kit::ERROR_DAMAGED} &&
              UGF_ERROR_OUTPUT == int{kit::ERROR_OUTPUT} && UGF_ERROR_ARGUMENT == int{kit::ERROR_ARGUMENT} &&
              UGF_ERROR_MEMORY == int{kit::ERROR_MEMORY});
static_assert(UGF_GRID == kit::FORM_GRID && UGF_DETAILED == kit::FORM_DETAILED);

struct ugf_survey {
    kit::Survey survey;
    bool open = false;
    std::vector<std::uint8_t> bytes;  // ugf_open_memory's copy, kept while open
    int code = UGF_ERROR_NONE;
    std::string message;
    // What the handed-out strings point into.
    kit::Facts facts;
    std::optional<std::vector<kit::Grid>> grids;  // made on first use
    kit::Point point;
    kit::Stats stats;
};

namespace {

constexpr const char* NOT_OPEN = "the survey is not open";
constexpr const char* REFUSED = "the output was refused";

// Sets the failure. A short text never allocates, so "no memory" always
// gets through.
void fail(ugf_survey* s, int code, const char* text) noexcept {
    s->code = code;
    try {
        s->message = text;
    } catch (...) {
        s->code = UGF_ERROR_MEMORY;
        s->message = "no memory";
    }
}

void fail(ugf_survey* s, const std::string& why) noexcept { fail(s, kit::error_code_of(why), why.c_str()); }

// Runs one call on a survey: clears the last failure and turns whatever the
// C++ side throws into a code. `work` returns 1, or 0 after fail().
template <class Work>
int guarded(ugf_survey* s, bool needs_open, Work&& work) noexcept {
    if (s == nullptr) return 0;
    s->code = UGF_ERROR_NONE;
    s->message.clear();
    if (needs_open && !s->open) {
        fail(s, UGF_ERROR_ARGUMENT, NOT_OPEN);
        return 0;
    }
    try {
        return work();
    } catch (const std::bad_alloc&) {
        fail(s, UGF_ERROR_MEMORY, "no memory");
    } catch (const std::length_error&) {
        fail(s, UGF_ERROR_MEMORY, "no memory");
    } catch (const std::exception& e) {
        fail(s, UGF_ERROR_ARGUMENT, e.what());
    } catch (...) {
        fail(s, UGF_ERROR_ARGUMENT, "unexpected failure");
    }
    return 0;
}

// A call that hands out a string: NULL (with the failure set) when it fails.
template <class Work>
const char* guarded_text(ugf_survey* s, Work&& work) noexcept {
    const char* text = nullptr;
    guarded(s, true, [&] {
        text = work();
        return text != nullptr ? 1 : 0;
    });
    return text;
}

int wrong(ugf_survey* s, const char* what) {
    fail(s, UGF_ERROR_ARGUMENT, what);
    return 0;
}

int failed(ugf_survey* s, const std::string& why) {
    fail(s, why);
    return 0;
}

// Opens the survey and keeps its facts; the handle is open only on success.
template <class Open>
int open_with(ugf_survey* s, Open&& open) {
    std::string why;
    if (open(why) == 0) return failed(s, why);
    s->facts = kit::survey_facts(s->survey);
    s->open = true;
    return 1;
}

ugf_survey* new_survey() noexcept {
    try {
        return new ugf_survey;
    } catch (...) {
        return nullptr;
    }
}

std::filesystem::path to_path(const char* utf8) {
    return std::filesystem::path(std::u8string(reinterpret_cast<const char8_t*>(utf8), std::strlen(utf8)));
}

double nan_to_none(double value, std::optional<double>& out) {
    if (!std::isnan(value)) out = value;
    return value;
}

// A C write function as the toolkit's sink. Once it refuses, nothing more
// is offered and the call fails with UGF_ERROR_OUTPUT.
struct Writer {
    ugf_write_fn write;
    void* context;
    bool refused = false;
    int operator()(const char* data, std::size_t size) {
        if (!refused && size != 0 && write(context, data, size) == 0) refused = true;
        return refused ? 0 : 1;
    }
};

int write_all(ugf_survey* s, ugf_write_fn write, void* context, std::string_view text) {
    if (!text.empty() && write(context, text.data(), text.size()) == 0) {
        fail(s, UGF_ERROR_OUTPUT, REFUSED);
        return 0;
    }
    return 1;
}

// Checks form and flags; the options of a CSV or workbook conversion.
bool conversion_options(int form, int flags, kit::ConvertOptions& options) {
    if ((flags & ~(UGF_QUOTE | UGF_XLSX | UGF_JSON)) != 0) return false;
    if ((flags & UGF_JSON) != 0) return flags == UGF_JSON;
    if ((flags & UGF_QUOTE) != 0 && (flags & UGF_XLSX) != 0) return false;
    if (form != UGF_GRID && form != UGF_DETAILED) return false;
    options = {form, (flags & UGF_QUOTE) != 0, (flags & UGF_XLSX) != 0};
    return true;
}

const std::vector<kit::Grid>* grids_of(ugf_survey* s) {
    if (!s->grids) {
        std::vector<kit::Grid> grids;
        std::string why;
        if (kit::survey_grids(s->survey, grids, why) == 0) {
            fail(s, why);
            return nullptr;
        }
        s->grids = std::move(grids);
    }
    return &*s->grids;
}

const kit::Grid* grid_of(ugf_survey* s, std::size_t k) {
    const std::vector<kit::Grid>* grids = grids_of(s);
    if (grids == nullptr) return nullptr;
    if (k >= grids->size()) {
        fail(s, UGF_ERROR_ARGUMENT, "no such grid");
        return nullptr;
    }
    return &(*grids)[k];
}

const char* title_at(ugf_survey* s, const std::vector<std::string>& titles, std::size_t i) {
    if (i < titles.size()) return titles[i].c_str();
    fail(s, UGF_ERROR_ARGUMENT, "no such row or column");
    return nullptr;
}

ugf_point c_point(const kit::Point& p) {
    return {p.index, p.id.c_str(), p.text.c_str(), p.value, p.decimals, p.empty ? 1 : 0, p.lost ? 1 : 0,
            p.velocity ? 1 : 0, p.units.c_str(), p.notes, p.setup, p.alarm.c_str(), p.low_alarm,
            p.ascan ? 1 : 0, p.bscan ? 1 : 0};
}

}  // namespace

extern "C" {

const char* ugf_version(void) { return UGF_VERSION_STRING; }

int ugf_version_number(void) { return UGF_VERSION_NUMBER; }

int ugf_open(const char* path_utf8, ugf_survey** survey) {
    if (survey == nullptr) return 0;
    *survey = new_survey();
    return guarded(*survey, false, [&] {
        ugf_survey* s = *survey;
        if (path_utf8 == nullptr) return wrong(s, "no path");
        // The same words as the command line for a path that isn't there.
        std::error_code ec;
        const std::filesystem::file_status status = std::filesystem::status(to_path(path_utf8), ec);
        if (!std::filesystem::exists(status)) return failed(s, "no such file or folder");
        if (std::filesystem::is_directory(status)) return failed(s, std::string("cannot open: ") + std::strerror(EISDIR));
        return open_with(s, [&](std::string& why) { return kit::open_survey(s->survey, path_utf8, why); });
    });
}

int ugf_open_memory(const void* bytes, size_t size, ugf_survey** survey) {
    if (survey == nullptr) return 0;
    *survey = new_survey();
    return guarded(*survey, false, [&] {
        ugf_survey* s = *survey;
        if (bytes == nullptr && size != 0) return wrong(s, "no bytes");
        const auto* first = static_cast<const std::uint8_t*>(bytes);
        s->bytes.assign(first, first + size);
        return open_with(s, [&](std::string& why) {
            return kit::open_survey_memory(s->survey, s->bytes.data(), s->bytes.size(), why);
        });
    });
}

void ugf_close(ugf_survey* survey) {
    if (survey == nullptr) return;
    kit::close_survey(survey->survey);
    delete survey;
}

int ugf_errcode(const ugf_survey* survey) { return survey == nullptr ? UGF_ERROR_MEMORY : survey->code; }

const char* ugf_errmsg(const ugf_survey* survey) { return survey == nullptr ? "no memory" : survey->message.c_str(); }

const char* ugf_errstr(int code) {
    switch (code) {
    case UGF_ERROR_NONE: return "no error";
    case UGF_ERROR_OPEN: return "cannot open the file";
    case UGF_ERROR_NOT_SURVEY: return "not a datalogger file";
    case UGF_ERROR_READ: return "the file ends before a field it names";
    case UGF_ERROR_NO_OUTPUT: return "the survey's type has no output";
    case UGF_ERROR_DAMAGED: return "damaged survey";
    case UGF_ERROR_OUTPUT: return "cannot write the output";
    case UGF_ERROR_ARGUMENT: return "wrong argument";
    case UGF_ERROR_MEMORY: return "no memory";
    default: return "unknown error";
    }
}

const char* ugf_fact(ugf_survey* survey, const char* name) {
    return guarded_text(survey, [&]() -> const char* {
        const kit::Facts& f = survey->facts;
        const std::pair<const char*, const std::string*> facts[] = {
            {"file_type_name", &f.file_type_name}, {"instrument", &f.instrument},
            {"model", &f.model},                   {"first_id", &f.first_id},
            {"last_id", &f.last_id},               {"walk_pattern_name", &f.walk_pattern_name},
            {"description", &f.description},       {"inspector_id", &f.inspector_id},
            {"location", &f.location},
        };
        for (const auto& [key, value] : facts) {
            if (name != nullptr && std::strcmp(name, key) == 0) return value->c_str();
        }
        fail(survey, UGF_ERROR_ARGUMENT, "no such fact");
        return nullptr;
    });
}

uint32_t ugf_point_count(ugf_survey* survey) { return survey != nullptr && survey->open ? survey->facts.points : 0; }

int ugf_points(ugf_survey* survey, ugf_point_fn visit, void* context) {
    return guarded(survey, true, [&] {
        if (visit == nullptr) return wrong(survey, "no function");
        bool stopped = false;
        std::string why;
        const int ok = kit::for_each_point(survey->survey, [&](const kit::Point& p) {
            const ugf_point point = c_point(p);
            stopped = visit(context, &point) == 0;
            return stopped ? 0 : 1;
        }, why);
        return ok != 0 || stopped ? 1 : failed(survey, why);
    });
}

int ugf_read_point(ugf_survey* survey, int64_t index, ugf_point* point) {
    return guarded(survey, true, [&] {
        if (point == nullptr || index < 0) return wrong(survey, point == nullptr ? "no point" : "no such point");
        std::string why;
        if (kit::read_point(survey->survey, index, survey->point, why) == 0) return failed(survey, why);
        *point = c_point(survey->point);
        return 1;
    });
}

int ugf_grid_count(ugf_survey* survey, size_t* count) {
    return guarded(survey, true, [&] {
        if (count == nullptr) return wrong(survey, "no count");
        const std::vector<kit::Grid>* grids = grids_of(survey);
        if (grids == nullptr) return 0;
        *count = grids->size();
        return 1;
    });
}

int ugf_grid_shape(ugf_survey* survey, size_t k, size_t* rows, size_t* columns, const char** title) {
    return guarded(survey, true, [&] {
        const kit::Grid* grid = grid_of(survey, k);
        if (grid == nullptr) return 0;
        if (rows != nullptr) *rows = grid->row_titles.size();
        if (columns != nullptr) *columns = grid->column_titles.size();
        if (title != nullptr) *title = grid->title.c_str();
        return 1;
    });
}

const char* ugf_grid_row_title(ugf_survey* survey, size_t k, size_t row) {
    return guarded_text(survey, [&]() -> const char* {
        const kit::Grid* grid = grid_of(survey, k);
        return grid == nullptr ? nullptr : title_at(survey, grid->row_titles, row);
    });
}

const char* ugf_grid_column_title(ugf_survey* survey, size_t k, size_t column) {
    return guarded_text(survey, [&]() -> const char* {
        const kit::Grid* grid = grid_of(survey, k);
        return grid == nullptr ? nullptr : title_at(survey, grid->column_titles, column);
    });
}

int ugf_grid_cells(ugf_survey* survey, size_t k, int64_t* indexes, size_t count) {
    return guarded(survey, true, [&] {
        const kit::Grid* grid = grid_of(survey, k);
        if (grid == nullptr) return 0;
        if (indexes == nullptr || count < grid->cells.size()) return wrong(survey, "the buffer is too small");
        std::copy(grid->cells.begin(), grid->cells.end(), indexes);
        return 1;
    });
}

int ugf_scans(ugf_survey* survey, ugf_ascan_fn ascan, ugf_bscan_fn bscan, void* context) {
    return guarded(survey, true, [&] {
        bool stopped = false;
        std::vector<ugf_mark> marks;
        std::vector<ugf_dac_point> dac;
        std::vector<const char*> texts, alarms;
        auto on_ascan = [&](const kit::Ascan& a) {
            if (ascan == nullptr) return 1;
            marks.clear();
            for (const kit::Ascan::Mark& m : a.marks) marks.push_back({m.name.c_str(), m.position, m.amplitude});
            dac.clear();
            for (const auto& [count, amplitude] : a.dac_points) dac.push_back({count, amplitude});
            const ugf_ascan scan{a.id.c_str(), a.reading.c_str(), a.units.c_str(),
                                 a.max_samples.data(), a.max_samples.size(), a.min_samples.data(), a.min_samples.size(),
                                 a.peak_samples.data(), a.peak_samples.size(), a.delay.c_str(), a.range.c_str(),
                                 marks.data(), marks.size(), a.gate1_alarm.c_str(), a.gate2_alarm.c_str(),
                                 dac.data(), dac.size()};
            stopped = ascan(context, &scan) == 0;
            return stopped ? 0 : 1;
        };
        auto on_bscan = [&](const kit::Bscan& b) {
            if (bscan == nullptr) return 1;
            texts.clear();
            alarms.clear();
            for (const std::string& t : b.texts) texts.push_back(t.c_str());
            for (const std::string& t : b.alarms) alarms.push_back(t.c_str());
            const ugf_bscan scan{b.id.c_str(), b.reading.c_str(), b.units.c_str(), b.texts.size(),
                                 texts.data(), b.values.data(), alarms.data()};
            stopped = bscan(context, &scan) == 0;
            return stopped ? 0 : 1;
        };
        std::string why;
        const int ok = kit::for_each_scan(survey->survey, on_ascan, on_bscan, why);
        return ok != 0 || stopped ? 1 : failed(survey, why);
    });
}

int ugf_convert(ugf_survey* survey, int form, int flags, ugf_write_fn write, void* context) {
    return guarded(survey, true, [&] {
        kit::ConvertOptions options;
        if (!conversion_options(form, flags, options)) return wrong(survey, "no such form or flags");
        if (write == nullptr) return wrong(survey, "no function");
        Writer writer{write, context};
        std::string why;
        int ok = 0;
        if (flags == UGF_JSON) {
            ok = kit::write_survey_json(survey->survey, [&](std::string_view text) { writer(text.data(), text.size()); }, why);
        } else {
            ok = kit::convert_to_sink(survey->survey, options, std::ref(writer), why);
        }
        if (ok != 0 && writer.refused) why = REFUSED;
        return ok != 0 && !writer.refused ? 1 : failed(survey, why);
    });
}

int ugf_convert_to_file(ugf_survey* survey, int form, int flags, const char* path_utf8) {
    return guarded(survey, true, [&] {
        kit::ConvertOptions options;
        if (!conversion_options(form, flags, options)) return wrong(survey, "no such form or flags");
        if (path_utf8 == nullptr) return wrong(survey, "no path");
        std::string why;
        if (flags != UGF_JSON) {
            return kit::convert_to_file(survey->survey, options, path_utf8, why) != 0 ? 1 : failed(survey, why);
        }
        // As `ugf export --json` writes it.
        kit::AtomicFile out;
        if (kit::atomic_open(out, path_utf8, false, why) == 0) return failed(survey, why);
        const int ok = kit::write_survey_json(survey->survey, [&](std::string_view text) {
            std::fwrite(text.data(), 1, text.size(), out.file);
        }, why);
        if (ok == 0) {
            kit::atomic_abandon(out);
            return failed(survey, why);
        }
        return kit::atomic_commit(out, why) != 0 ? 1 : failed(survey, why);
    });
}

size_t ugf_output_name(const char* input_name, int form, int flags, char* buffer, size_t size) {
    try {
        kit::ConvertOptions options;
        if (input_name == nullptr || !conversion_options(form, flags, options)) {
            if (buffer != nullptr && size != 0) buffer[0] = '\0';
            return 0;
        }
        const std::string name = flags == UGF_JSON ? kit::output_name(input_name, kit::JSON_ENDING)
                                                   : kit::output_name(input_name, options);
        if (buffer != nullptr && size != 0) {
            const std::size_t n = std::min(name.size(), size - 1);
            std::memcpy(buffer, name.data(), n);
            buffer[n] = '\0';
        }
        return name.size();
    } catch (...) {
        if (buffer != nullptr && size != 0) buffer[0] = '\0';
        return 0;
    }
}

int ugf_stats(ugf_survey* survey, double minimum, ugf_statistics* stats) {
    return guarded(survey, true, [&] {
        if (stats == nullptr) return wrong(survey, "no stats");
        std::optional<double> limit;
        nan_to_none(minimum, limit);
        std::string why;
        if (kit::survey_stats(survey->survey, limit, survey->stats, why) == 0) return failed(survey, why);
        const kit::Stats& s = survey->stats;
        *stats = {s.path.c_str(), s.instrument.c_str(), s.model.c_str(), s.file_type_name.c_str(), s.units.c_str(),
                  s.points, s.readings, s.empty, s.lost, s.velocity, s.min, s.max,
                  s.min_text.c_str(), s.min_id.c_str(), s.max_text.c_str(), s.max_id.c_str(),
                  s.mean, s.stddev, s.cv, s.decimals, s.minimum_source.c_str(), s.minimum, s.below, s.below_share};
        return 1;
    });
}

int ugf_stats_json(ugf_survey* survey, double minimum, ugf_write_fn write, void* context) {
    return guarded(survey, true, [&] {
        if (write == nullptr) return wrong(survey, "no function");
        std::optional<double> limit;
        nan_to_none(minimum, limit);
        kit::Stats stats;
        std::string why;
        if (kit::survey_stats(survey->survey, limit, stats, why) == 0) return failed(survey, why);
        // Bytes that aren't UTF-8 (in a path) become U+FFFD rather than a failure.
        const std::string line =
            kit::stats_json(stats).dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
        return write_all(survey, write, context, line);
    });
}

int ugf_compare(ugf_survey* baseline, ugf_survey* latest, double years, double minimum, ugf_write_fn csv,
                void* csv_context, ugf_write_fn page, void* page_context) {
    return guarded(latest, true, [&] {
        if (baseline == nullptr || !baseline->open) return wrong(latest, "the baseline survey is not open");
        kit::CompareOptions options;
        if (!std::isnan(nan_to_none(years, options.years)) && !(years > 0)) return wrong(latest, "years must be above 0");
        nan_to_none(minimum, options.minimum);
        kit::Comparison comparison;
        std::string why, text;
        if (kit::compare_surveys(baseline->survey, latest->survey, options, comparison, why) == 0) return failed(latest, why);
        if (csv != nullptr && write_all(latest, csv, csv_context, kit::compare_csv(comparison)) == 0) return 0;
        if (page == nullptr) return 1;
        if (kit::compare_page(comparison, latest->survey, text, why) == 0) return failed(latest, why);
        return write_all(latest, page, page_context, text);
    });
}

int ugf_report(ugf_survey* survey, double minimum, double nominal, ugf_write_fn write, void* context) {
    return guarded(survey, true, [&] {
        if (write == nullptr) return wrong(survey, "no function");
        kit::ReportOptions options;
        nan_to_none(minimum, options.minimum);
        nan_to_none(nominal, options.nominal);
        std::string why, page;
        if (kit::survey_report(survey->survey, options, page, why) == 0) return failed(survey, why);
        return write_all(survey, write, context, page);
    });
}

}  // extern "C"
