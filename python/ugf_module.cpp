// The compiled part `ugf._ugf` of the Python package `ugf`: surveys as arrays
// and tables, and the survey archive, on the same library and toolkit code as
// the command line. A thin layer: every figure and text comes from
// toolkit/core and toolkit/archive; this file only turns them into Python
// objects. The package (python/ugf/) re-exports it.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>
#include <pybind11/stl/filesystem.h>

#include <cmath>
#include <filesystem>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include "ugf/archive.hpp"
#include "ugf/compare.hpp"
#include "ugf/convert.hpp"
#include "ugf/files.hpp"
#include "ugf/stats.hpp"
#include "ugf/survey.hpp"
#include "ugf/json.hpp"

namespace py = pybind11;
using namespace ugf::kit;

namespace {

// What the command line prints after "ugf: " for a failure.
struct Error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The same bytes stored already: the message, and the id of the survey
// that holds them.
struct Duplicate : Error {
    std::int64_t existing;
    Duplicate(const std::string& why, std::int64_t id) : Error(why), existing(id) {}
};

// The Python classes ugf.Error and ugf.DuplicateError, made when the module
// loads.
PyObject* error_type = nullptr;
PyObject* duplicate_type = nullptr;

// Takes a lock of a survey or an archive. A thread that must wait does so
// without the interpreter lock, which the holder needs to return.
std::unique_lock<std::mutex> take(std::mutex& lock) {
    std::unique_lock<std::mutex> held(lock, std::try_to_lock);
    if (!held.owns_lock()) {
        py::gil_scoped_release release;
        held.lock();
    }
    return held;
}

// Texts from the file are bytes; Python wants Unicode. A byte that isn't
// part of valid UTF-8 is read as Latin-1, as the JSON export does.
py::str text(const std::string& bytes) {
    PyObject* s = PyUnicode_DecodeUTF8(bytes.data(), static_cast<Py_ssize_t>(bytes.size()), "strict");
    if (s == nullptr) {
        PyErr_Clear();
        s = PyUnicode_DecodeLatin1(bytes.data(), static_cast<Py_ssize_t>(bytes.size()), nullptr);
    }
    return py::reinterpret_steal<py::str>(s);
}

template <typename T>
py::array_t<T> array_of(const std::vector<T>& values) {
    py::array_t<T> a(static_cast<py::ssize_t>(values.size()));
    std::copy(values.begin(), values.end(), a.mutable_data());
    return a;
}

// A numpy array of Python objects (texts, dates, None).
py::object object_column(const py::list& items) {
    return py::module_::import("numpy").attr("array")(items, py::arg("dtype") = "object");
}

py::object object_array(const std::vector<std::string>& values) {
    py::list items;
    for (const std::string& v : values) items.append(text(v));
    return object_column(items);
}

// A table of equal columns: a pandas.DataFrame where pandas can be
// imported, else the dict of numpy arrays itself.
py::object table(py::dict columns) {
    try {
        return py::module_::import("pandas").attr("DataFrame")(columns);
    } catch (const py::error_already_set&) {
        return columns;
    }
}

// A table made column by column from rows: each column holds one field of
// every row, as a numpy array of the field's type; texts (decoded as `text`
// does) and other Python objects, such as dates, as an array of objects.
template <typename Row>
struct Columns {
    const std::vector<Row>& rows;
    py::dict columns{};

    template <typename Field>
    Columns& add(const char* name, Field field) {
        using T = std::decay_t<decltype(field(std::declval<const Row&>()))>;
        if constexpr (std::is_same_v<T, std::string> || std::is_same_v<T, py::object>) {
            py::list items;
            for (const Row& r : rows) {
                if constexpr (std::is_same_v<T, std::string>) items.append(text(field(r)));
                else items.append(field(r));
            }
            columns[name] = object_column(items);
        } else {
            py::array_t<T> a(static_cast<py::ssize_t>(rows.size()));
            T* out = a.mutable_data();
            for (const Row& r : rows) *out++ = field(r);
            columns[name] = a;
        }
        return *this;
    }
    py::object done() const { return table(columns); }
};

struct PySurvey {
    Survey survey;
    std::mutex lock;  // one call at a time on a survey; other surveys run on other threads
    bool open = false;

    void check() const {
        if (!open) throw Error(survey.path + ": the survey is closed");
    }
    [[noreturn]] void fail(const std::string& why) const { throw Error(survey.path + ": " + why); }
};

// A file name as Python gives it (str, bytes or any os.PathLike) arrives as
// the bytes of the file system's encoding, so that every name a folder
// listing gives can be opened and written.
std::unique_ptr<PySurvey> open_path(const std::filesystem::path& file) {
    const std::string& path = file.native();
    auto s = std::make_unique<PySurvey>();
    std::string why;
    int ok = 0;
    {
        py::gil_scoped_release release;
        ok = open_survey(s->survey, path, why);
    }
    if (ok == 0) throw Error(path + ": " + why);
    s->open = true;
    return s;
}

py::dict info(PySurvey& s) {
    const auto guard = take(s.lock);
    s.check();
    Facts f;
    std::vector<int> setups;
    std::string units;
    {
        py::gil_scoped_release release;
        f = survey_facts(s.survey);
        Stats stats;
        std::string why;
        if (survey_stats(s.survey, std::nullopt, stats, why) != 0) units = stats.units;
        std::vector<bool> used(32, false);
        for_each_point(s.survey, [&](const Point& p) {
            if (!p.empty) used[static_cast<std::size_t>(p.setup) & 31u] = true;
            return 1;
        }, why);
        for (int i = 0; i < 32; ++i) {
            if (used[static_cast<std::size_t>(i)]) setups.push_back(i);
        }
    }
    py::list notes;
    for (const std::string& n : f.notes) notes.append(text(n));
    py::dict d;
    d["file_type_name"] = f.file_type_name;
    d["instrument"] = f.instrument;
    d["model"] = text(f.model);
    d["units"] = units;
    d["first_id"] = text(f.first_id);
    d["last_id"] = text(f.last_id);
    d["walk_pattern_name"] = f.walk_pattern_name;
    d["points"] = f.points;
    d["setups_used"] = setups;
    d["description"] = text(f.description);
    d["inspector_id"] = text(f.inspector_id);
    d["location"] = text(f.location);
    d["notes"] = notes;
    return d;
}

py::object points(PySurvey& s) {
    const auto guard = take(s.lock);
    s.check();
    std::vector<Point> all;
    Facts facts;
    std::string why;
    int ok = 0;
    {
        py::gil_scoped_release release;
        facts = survey_facts(s.survey);
        ok = for_each_point(s.survey, [&](const Point& p) {
            all.push_back(p);
            return 1;
        }, why);
    }
    if (ok == 0) s.fail(why);
    // The columns are the point fields of the JSON export, in its order, and
    // note_text: what the detailed form shows for the note mask.
    return Columns<Point>{all}
        .add("index", [](const Point& p) { return p.index; })
        .add("id", [](const Point& p) { return p.id; })
        .add("text", [](const Point& p) { return p.text; })
        .add("value", [](const Point& p) { return p.value; })
        .add("empty", [](const Point& p) { return p.empty; })
        .add("lost", [](const Point& p) { return p.lost; })
        .add("velocity", [](const Point& p) { return p.velocity; })
        .add("units", [](const Point& p) { return p.units; })
        .add("notes", [](const Point& p) { return std::int64_t{p.notes}; })
        .add("note_text", [&](const Point& p) { return note_text(facts, p.notes); })
        .add("setup", [](const Point& p) { return std::int64_t{p.setup}; })
        .add("alarm", [](const Point& p) { return p.alarm; })
        .add("low_alarm", [](const Point& p) { return p.low_alarm; })
        .add("ascan", [](const Point& p) { return p.ascan; })
        .add("bscan", [](const Point& p) { return p.bscan; })
        .done();
}

std::vector<Grid> grids_of(PySurvey& s) {
    std::vector<Grid> grids;
    std::string why;
    int ok = 0;
    {
        py::gil_scoped_release release;
        ok = survey_grids(s.survey, grids, why);
    }
    if (ok == 0) s.fail(why);
    return grids;
}

py::tuple grid(PySurvey& s, std::size_t k) {
    const auto guard = take(s.lock);
    s.check();
    const std::vector<Grid> grids = grids_of(s);
    if (k >= grids.size()) throw py::index_error("the survey has " + std::to_string(grids.size()) + " grids");
    const Grid& g = grids[k];
    std::vector<double> values(g.cells.size());
    std::string why;
    int ok = 1;
    {
        py::gil_scoped_release release;
        for (std::size_t i = 0; i < g.cells.size() && ok != 0; ++i) {
            Point p;
            ok = read_point(s.survey, g.cells[i], p, why);
            values[i] = p.value;
        }
    }
    if (ok == 0) s.fail(why);
    py::array_t<double> a({static_cast<py::ssize_t>(g.row_titles.size()), static_cast<py::ssize_t>(g.column_titles.size())});
    std::copy(values.begin(), values.end(), a.mutable_data());
    py::list rows, columns;
    for (const auto& t : g.row_titles) rows.append(text(t));
    for (const auto& t : g.column_titles) columns.append(text(t));
    return py::make_tuple(a, rows, columns);
}

py::array_t<std::int64_t> grid_indexes(PySurvey& s, std::size_t k) {
    const auto guard = take(s.lock);
    s.check();
    const std::vector<Grid> grids = grids_of(s);
    if (k >= grids.size()) throw py::index_error("the survey has " + std::to_string(grids.size()) + " grids");
    const Grid& g = grids[k];
    py::array_t<std::int64_t> a({static_cast<py::ssize_t>(g.row_titles.size()), static_cast<py::ssize_t>(g.column_titles.size())});
    std::copy(g.cells.begin(), g.cells.end(), a.mutable_data());
    return a;
}

py::list scans(PySurvey& s, bool want_ascans) {
    const auto guard = take(s.lock);
    s.check();
    std::vector<Ascan> as;
    std::vector<Bscan> bs;
    std::string why;
    int ok = 0;
    {
        py::gil_scoped_release release;
        ok = for_each_scan(
            s.survey, [&](const Ascan& a) { if (want_ascans) as.push_back(a); return 1; },
            [&](const Bscan& b) { if (!want_ascans) bs.push_back(b); return 1; }, why);
    }
    if (ok == 0) s.fail(why);
    py::list out;
    for (const Ascan& a : as) {
        py::dict d;
        d["id"] = text(a.id);
        d["reading"] = text(a.reading);
        d["units"] = a.units;
        d["max_samples"] = array_of(a.max_samples);
        d["min_samples"] = array_of(a.min_samples);
        d["peak_samples"] = array_of(a.peak_samples);
        d["delay"] = a.delay;
        d["range"] = a.range;
        py::list marks;
        for (const auto& m : a.marks) marks.append(py::dict(py::arg("name") = m.name, py::arg("position") = m.position, py::arg("amplitude") = m.amplitude));
        d["marks"] = marks;
        d["gate1_alarm"] = a.gate1_alarm;
        d["gate2_alarm"] = a.gate2_alarm;
        d["dac_points"] = a.dac_points;
        out.append(d);
    }
    for (const Bscan& b : bs) {
        py::dict d;
        d["id"] = text(b.id);
        d["reading"] = text(b.reading);
        d["units"] = b.units;
        d["values"] = array_of(b.values);
        d["texts"] = object_array(b.texts);
        d["alarms"] = object_array(b.alarms);
        out.append(d);
    }
    return out;
}

void to_csv(PySurvey& s, const std::filesystem::path& path, const std::string& form, bool quote) {
    if (form != "detailed" && form != "grid") throw py::value_error("form is \"detailed\" or \"grid\"");
    const auto guard = take(s.lock);
    s.check();
    std::string why;
    int ok = 0;
    {
        py::gil_scoped_release release;
        ok = convert_to_file(s.survey, {form == "detailed" ? FORM_DETAILED : FORM_GRID, quote}, path.native(), why);
    }
    if (ok == 0) s.fail(why);
}

py::object stats(PySurvey& s, std::optional<double> minimum) {
    const auto guard = take(s.lock);
    s.check();
    Stats st;
    std::string why;
    int ok = 0;
    {
        py::gil_scoped_release release;
        ok = survey_stats(s.survey, minimum, st, why);
    }
    if (ok == 0) s.fail(why);
    return py::module_::import("json").attr("loads")(stats_json(st).dump());
}

py::object to_json(PySurvey& s, const std::optional<std::filesystem::path>& path) {
    const auto guard = take(s.lock);
    s.check();
    std::string json, why;
    int ok = 0;
    {
        py::gil_scoped_release release;
        ok = write_survey_json(s.survey, [&](std::string_view t) { json.append(t); }, why);
        if (ok != 0 && path) ok = write_file_atomically(path->native(), json, false, why);
    }
    if (ok == 0) s.fail(why);
    if (path) return py::none();
    return py::str(json);
}

// A survey that compare() was given, or one it opens from a file name and
// closes when it returns.
using SurveyOrPath = std::variant<PySurvey*, std::filesystem::path>;

struct Operand {
    std::unique_ptr<PySurvey> opened;
    PySurvey* survey = nullptr;

    explicit Operand(const SurveyOrPath& given) {
        if (const auto* path = std::get_if<std::filesystem::path>(&given)) {
            opened = open_path(*path);
            survey = opened.get();
        } else {
            survey = std::get<PySurvey*>(given);
            if (survey == nullptr) throw py::type_error("compare() takes surveys or file names");
        }
    }
    ~Operand() {
        if (opened) close_survey(opened->survey);
    }
};

// The rows of `ugf compare`: a pandas.DataFrame, or a dict of numpy arrays.
py::object compare(const SurveyOrPath& first, const SurveyOrPath& second, std::optional<double> years,
                   std::optional<double> minimum) {
    Operand given_baseline(first), given_latest(second);
    PySurvey& baseline = *given_baseline.survey;
    PySurvey& latest = *given_latest.survey;
    // A survey compared with itself is locked once.
    std::unique_lock<std::mutex> lock_baseline(baseline.lock, std::defer_lock), lock_latest;
    {
        py::gil_scoped_release release;
        if (&baseline == &latest) {
            lock_baseline.lock();
        } else {
            lock_latest = std::unique_lock<std::mutex>(latest.lock, std::defer_lock);
            std::lock(lock_baseline, lock_latest);
        }
    }
    baseline.check();
    latest.check();
    Comparison c;
    std::string why;
    int ok = 0;
    {
        py::gil_scoped_release release;
        ok = compare_surveys(baseline.survey, latest.survey, {years, minimum}, c, why);
    }
    if (ok == 0) throw Error(why);
    using Row = CompareRow;
    return Columns<Row>{c.rows}
        .add("id", [](const Row& r) { return r.id; })
        .add("status", [](const Row& r) {
            return std::string(r.status == Row::BOTH ? "both" : r.status == Row::BASELINE_ONLY ? "baseline only" : "latest only");
        })
        .add("baseline_text", [](const Row& r) { return r.baseline_text; })
        .add("latest_text", [](const Row& r) { return r.latest_text; })
        .add("baseline", [](const Row& r) { return r.baseline; })
        .add("latest", [](const Row& r) { return r.latest; })
        .add("loss", [](const Row& r) { return r.loss; })
        .add("share", [](const Row& r) { return r.share; })
        .add("rate", [](const Row& r) { return r.rate; })
        .add("minimum", [](const Row& r) { return r.limit; })
        .add("remaining_life", [](const Row& r) { return r.life; })
        .done();
}

// ---------------------------------------------------------------- archive

// datetime.date.fromordinal counts 0001-01-01 as day 1; the library counts
// days from 1970-01-01.
constexpr std::int64_t ORDINAL_OF_1970 = 719163;

// A date given to the module: a datetime.date (or datetime), a str
// YYYY-MM-DD or YYYYMMDD, or None.
std::optional<std::int32_t> days_of(py::handle date, const char* argument) {
    if (date.is_none()) return std::nullopt;
    std::int32_t days = 0;
    if (py::isinstance(date, py::module_::import("datetime").attr("date"))) {
        return static_cast<std::int32_t>(date.attr("toordinal")().cast<std::int64_t>() - ORDINAL_OF_1970);
    }
    if (!py::isinstance<py::str>(date)) {
        throw py::type_error(std::string(argument) + " is a datetime.date, a str YYYY-MM-DD or YYYYMMDD, or None");
    }
    const std::string given = date.cast<std::string>();
    if (parse_date(given, days) == 0) throw py::value_error("not a date (YYYY-MM-DD or YYYYMMDD): " + given);
    return days;
}

// Dates as datetime.date objects, None for NO_DATE.
struct Dates {
    py::object from_ordinal = py::module_::import("datetime").attr("date").attr("fromordinal");
    py::object operator()(std::int32_t days) const {
        return days == NO_DATE ? py::none() : from_ordinal(days + ORDINAL_OF_1970);
    }
};

struct PyArchive {
    Archive archive;
    std::mutex lock;  // one call at a time on an archive; surveys are read outside it
    std::string name;  // in messages, kept after closing

    // Runs `work` on the open archive under the lock, without the interpreter
    // lock; raises ugf.Error with `why` when it gives 0.
    template <typename Work>
    void run(Work&& work) {
        std::string why;
        bool closed = false;
        int ok = 0;
        {
            py::gil_scoped_release release;
            std::lock_guard<std::mutex> guard(lock);
            closed = archive.ops == nullptr;
            if (!closed) ok = work(why);
        }
        if (closed) throw Error(name + ": the archive is closed");
        if (ok == 0) throw Error(why);
    }
};

std::unique_ptr<PyArchive> open_archive(const std::filesystem::path& where, bool create) {
    auto a = std::make_unique<PyArchive>();
    std::string why;
    int ok = 0;
    {
        py::gil_scoped_release release;
        ok = archive_open(a->archive, where.native(), create, why);
    }
    if (ok == 0) throw Error(why);
    a->name = a->archive.name;
    return a;
}

// The module's arguments, as messages that ask for a date or a part name them.
const AskFor MODULE_ASKS{"date=\"YYYY-MM-DD\"", "part=\"NAME\""};

std::int64_t add(PyArchive& a, const std::filesystem::path& file, py::handle date, const std::optional<std::string>& part) {
    const std::optional<std::int32_t> days = days_of(date, "date");
    const std::string& path = file.native();
    std::int64_t id = 0, existing = 0;
    NewSurvey survey;
    std::string why;
    bool closed = false;
    int ok = 0;
    {
        // Threads read their surveys at once; only the stores take turns.
        py::gil_scoped_release release;
        ok = read_new_survey(path, days, part.value_or(""), MODULE_ASKS, survey, why);
        if (ok != 0) {
            std::lock_guard<std::mutex> guard(a.lock);
            closed = a.archive.ops == nullptr;
            if (!closed) ok = archive_add(a.archive, survey, id, existing, why);
        }
    }
    if (closed) throw Error(a.name + ": the archive is closed");
    if (ok == 0 && existing > 0) throw Duplicate(path + ": " + why, existing);
    if (ok == 0) throw Error(path + ": " + why);
    return id;
}

py::list parts(PyArchive& a) {
    std::vector<std::string> names;
    a.run([&](std::string& why) { return archive_parts(a.archive, names, why); });
    py::list out;
    for (const std::string& n : names) out.append(text(n));
    return out;
}

py::object surveys(PyArchive& a, const std::optional<std::string>& part) {
    std::vector<StoredSurvey> stored;
    a.run([&](std::string& why) { return archive_surveys(a.archive, part.value_or(""), stored, why); });
    const Dates date;
    using Row = StoredSurvey;
    return Columns<Row>{stored}
        .add("id", [](const Row& s) { return s.id; })
        .add("part", [](const Row& s) { return s.part; })
        .add("date", [&](const Row& s) { return date(s.date); })
        .add("file_name", [](const Row& s) { return s.file_name; })
        .add("points", [](const Row& s) { return static_cast<std::int64_t>(s.points); })
        .add("readings", [](const Row& s) { return static_cast<std::int64_t>(s.readings); })
        .add("file_type_name", [](const Row& s) { return s.facts.file_type_name; })
        .add("instrument", [](const Row& s) { return s.facts.instrument; })
        .add("model", [](const Row& s) { return s.facts.model; })
        .add("first_id", [](const Row& s) { return s.facts.first_id; })
        .add("last_id", [](const Row& s) { return s.facts.last_id; })
        .add("walk_pattern_name", [](const Row& s) { return s.facts.walk_pattern_name; })
        .add("description", [](const Row& s) { return s.facts.description; })
        .add("inspector_id", [](const Row& s) { return s.facts.inspector_id; })
        .add("location", [](const Row& s) { return s.facts.location; })
        .add("has_grid", [](const Row& s) { return s.facts.has_grid; })
        .add("sha256", [](const Row& s) { return s.sha256; })
        .done();
}

py::object readings(PyArchive& a, const std::string& part) {
    std::vector<StoredSurvey> stored;
    std::vector<std::vector<Point>> points;
    a.run([&](std::string& why) {
        if (archive_surveys(a.archive, part, stored, why) == 0) return 0;
        for (const StoredSurvey& s : stored) {
            if (archive_points(a.archive, s.id, points.emplace_back(), why) == 0) return 0;
        }
        return 1;
    });
    // A row a reading, with its survey's id and date (one date object for
    // the survey's rows).
    struct Reading {
        std::int64_t survey;
        py::object date;
        const Point* point;
    };
    const Dates date;
    std::vector<Reading> rows;
    for (std::size_t k = 0; k < stored.size(); ++k) {
        const py::object day = date(stored[k].date);
        for (const Point& p : points[k]) rows.push_back({stored[k].id, day, &p});
    }
    return Columns<Reading>{rows}
        .add("survey", [](const Reading& r) { return r.survey; })
        .add("id", [](const Reading& r) { return r.point->id; })
        .add("date", [](const Reading& r) { return r.date; })
        .add("value", [](const Reading& r) { return r.point->value; })
        .add("text", [](const Reading& r) { return r.point->text; })
        .add("units", [](const Reading& r) { return r.point->units; })
        .add("empty", [](const Reading& r) { return r.point->empty; })
        .add("lost", [](const Reading& r) { return r.point->lost; })
        .add("velocity", [](const Reading& r) { return r.point->velocity; })
        .add("notes", [](const Reading& r) { return std::int64_t{r.point->notes}; })
        .done();
}

py::object history(PyArchive& a, const std::string& part, std::optional<double> minimum, double max_interval,
                   py::handle as_of) {
    HistoryOptions options;
    options.minimum = minimum;
    options.max_interval = max_interval;
    options.as_of = days_of(as_of, "as_of");
    std::vector<DatedSurvey> dated;
    History h;
    a.run([&](std::string& why) { return archive_history(a.archive, part, options, dated, h, why); });
    const Dates date;
    using Row = HistoryRow;
    // The columns of `ugf archive history`'s CSV, in its order.
    return Columns<Row>{h.rows}
        .add("id", [](const Row& r) { return r.id; })
        .add("status", [](const Row& r) { return history_status_text(r.status); })
        .add("readings", [](const Row& r) { return static_cast<std::int64_t>(r.readings.size()); })
        .add("first_date", [&](const Row& r) { return date(r.first_date); })
        .add("first", [](const Row& r) { return r.first; })
        .add("previous_date", [&](const Row& r) { return date(r.previous_date); })
        .add("previous", [](const Row& r) { return r.previous; })
        .add("latest_date", [&](const Row& r) { return date(r.latest_date); })
        .add("latest", [](const Row& r) { return r.latest; })
        .add("units", [&](const Row&) { return h.units; })
        .add("long_term_rate", [](const Row& r) { return r.long_term_rate; })
        .add("short_term_rate", [](const Row& r) { return r.short_term_rate; })
        .add("least_squares_rate", [](const Row& r) { return r.least_squares_rate; })
        .add("governing_rate", [](const Row& r) { return r.governing_rate; })
        .add("required", [](const Row& r) { return r.required; })
        .add("required_from", [](const Row& r) { return r.required_from; })
        .add("remaining_life", [](const Row& r) { return r.remaining_life; })
        .add("retirement_date", [&](const Row& r) { return date(r.retirement_date); })
        .add("next_inspection", [&](const Row& r) { return date(r.next_inspection); })
        .add("note", [&](const Row& r) { return history_note_text(h, r); })
        .done();
}

py::object minimums(PyArchive& a, const std::string& part) {
    std::vector<MinimumRow> rows;
    a.run([&](std::string& why) { return archive_minimums(a.archive, part, rows, why); });
    return Columns<MinimumRow>{rows}
        .add("id", [](const MinimumRow& r) { return r.id; })
        .add("value", [](const MinimumRow& r) { return r.value; })
        .add("units", [](const MinimumRow& r) { return r.units; })
        .done();
}

// A required thickness as `ugf archive minimums` takes it from a CSV line:
// an identifier, a finite value above 0, units "IN", "MM" (in any case) or
// none for the latest survey's.
MinimumRow minimum_row(std::size_t n, const py::object& id, const py::object& value, const py::object& units) {
    const std::string at = "row " + std::to_string(n) + ": ";
    MinimumRow row{py::str(id).cast<std::string>(), py::float_(value).cast<double>(),
                   units.is_none() ? "" : py::str(units).cast<std::string>()};
    for (char& ch : row.units) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    if (row.id.empty()) throw py::value_error(at + "no identifier");
    if (!(row.value > 0) || !std::isfinite(row.value)) throw py::value_error(at + "the minimum must be a number above 0");
    if (!row.units.empty() && row.units != "IN" && row.units != "MM") throw py::value_error(at + "the units must be IN or MM");
    return row;
}

void set_minimums(PyArchive& a, const std::string& part, py::handle given) {
    std::vector<MinimumRow> rows;
    if (py::hasattr(given, "keys")) {  // a table: a dict of columns or a pandas.DataFrame
        const py::object keys = given.attr("keys")();
        const bool has_units = keys.contains("units");
        const py::list ids(given["id"]), values(given["value"]);
        const py::list units = has_units ? py::list(given["units"]) : py::list();
        if (values.size() != ids.size() || (has_units && units.size() != ids.size())) {
            throw py::value_error("the columns id, value and units differ in length");
        }
        for (std::size_t i = 0; i < ids.size(); ++i) {
            rows.push_back(minimum_row(i + 1, ids[i], values[i], has_units ? py::object(units[i]) : py::object(py::none())));
        }
    } else {  // rows (id, value) or (id, value, units)
        std::size_t n = 0;
        for (py::handle item : py::iter(given)) {
            const py::tuple row(py::reinterpret_borrow<py::object>(item));
            if (row.size() != 2 && row.size() != 3) {
                throw py::value_error("row " + std::to_string(n + 1) + ": (id, value) or (id, value, units) expected");
            }
            rows.push_back(minimum_row(++n, row[0], row[1], row.size() == 3 ? py::object(row[2]) : py::object(py::none())));
        }
    }
    a.run([&](std::string& why) { return archive_set_minimums(a.archive, part, rows, why); });
}

std::filesystem::path get(PyArchive& a, std::int64_t id, const std::filesystem::path& out_dir) {
    std::string name, bytes;
    std::filesystem::path target;
    a.run([&](std::string& why) {
        if (archive_file(a.archive, id, name, bytes, why) == 0) return 0;
        target = out_dir / archive_file_out_name(id, name);
        return write_file_atomically(target.native(), bytes, false, why);
    });
    return target;
}

void close_archive(PyArchive& a) {
    py::gil_scoped_release release;
    std::lock_guard<std::mutex> guard(a.lock);
    archive_close(a.archive);
}

}  // namespace

// Sets a name's __module__ to the package, so that help(), signatures and
// tracebacks name ugf.Survey and ugf.open rather than the compiled part.
void belongs_to_package(py::handle object) { object.attr("__module__") = "ugf"; }

PYBIND11_MODULE(_ugf, m) {
    m.doc() = "The compiled part of the package ugf: import ugf, which re-exports every name.";
    m.attr("__version__") = UGF_VERSION;
    error_type = PyErr_NewException("ugf.Error", PyExc_Exception, nullptr);
    py::handle error(error_type);
    error.attr("__doc__") =
        "A survey that can't be opened, read or written. The message is the one\n"
        "that the `ugf` command prints: the file's name, then what went wrong\n"
        "(\"cannot open: ...\", \"read error at offset 0x...\", \"not a datalogger\n"
        "file ...\", \"the survey is closed\").";
    m.attr("Error") = error;
    duplicate_type = PyErr_NewExceptionWithDoc(
        "ugf.DuplicateError",
        "Archive.add() of a file whose bytes the archive already holds: the\n"
        "message names the survey that holds them (\"the same file is already\n"
        "stored as survey 12 (tank4, 2026-03-01, tank4_2026.ugf)\"), and its\n"
        "attribute `existing` is that survey's id.",
        error_type, nullptr);
    m.attr("DuplicateError") = py::handle(duplicate_type);
    // A message holds the file's name as given: bytes that aren't UTF-8 are
    // read as Latin-1, as the texts from a file are.
    py::register_exception_translator([](std::exception_ptr failure) {
        try {
            if (failure) std::rethrow_exception(failure);
        } catch (const Duplicate& e) {
            py::object error = py::reinterpret_borrow<py::object>(duplicate_type)(text(e.what()));
            error.attr("existing") = e.existing;
            PyErr_SetObject(duplicate_type, error.ptr());
        } catch (const Error& e) {
            PyErr_SetObject(error_type, text(e.what()).ptr());
        }
    });

    py::class_<PySurvey> survey(m, "Survey",
        "An open survey, from ugf.open(). Use it as a context manager (`with\n"
        "ugf.open(path) as survey:`), or call close(); a closed survey raises\n"
        "ugf.Error. One call at a time runs on a survey; surveys convert at once on\n"
        "Python threads, since the calls release the interpreter lock while they\n"
        "read.");
    belongs_to_package(survey);
    survey
        .def_property_readonly("info", &info,
            "The survey's facts, a dict under the names of the JSON export's header:\n"
            "file_type_name, instrument, model, first_id, last_id, walk_pattern_name,\n"
            "points (the stored count), description, inspector_id, location, notes (the\n"
            "16 note texts, note A first). Two more are worked out from the points:\n"
            "units (of the most readings) and setups_used (the setups that non-empty\n"
            "points use).")
        .def("points", &points,
            "One row per point in the detailed form's order: a pandas.DataFrame when\n"
            "pandas can be imported, else a dict of numpy arrays. The columns are the\n"
            "point fields of the JSON export: index (storage index), id, text (the grid\n"
            "cell's text, leading blanks kept), value (float64, NaN where the cell\n"
            "shows no number), empty, lost, velocity (a sound velocity check), units,\n"
            "notes (the note mask, bit 0 is note A), setup, alarm, low_alarm (of the\n"
            "point's setup, NaN where unset), ascan, bscan; and note_text, what the\n"
            "detailed form shows for the mask: the note's text for one note, else the\n"
            "letters joined by ':' (\"B:C\").")
        .def_property_readonly("grid_count", [](PySurvey& s) {
                const auto guard = take(s.lock);
                s.check();
                return grids_of(s).size();
            }, "The number of grids: one for a 2D survey, one per group of a 3D or 4D\n"
               "survey, none for LINEAR and MANUAL surveys.")
        .def("grid", &grid, py::arg("k") = 0,
            "(values, row_titles, column_titles) of the k-th grid, laid out as the grid\n"
            "CSV: values is a 2-D float64 array with NaN where a cell shows no number.\n"
            "IndexError past the last grid.")
        .def("grid_indexes", &grid_indexes, py::arg("k") = 0,
            "The storage index of each cell of the k-th grid (a 2-D int64 array): the\n"
            "`index` column of points() tells which point stands where.")
        .def("ascans", [](PySurvey& s) { return scans(s, true); },
            "The stored A-scans, as dicts under the JSON export's names: id, reading,\n"
            "units, max_samples, min_samples, peak_samples (int arrays of trace\n"
            "amplitudes), delay, range, marks (dicts of name, position, amplitude),\n"
            "gate1_alarm, gate2_alarm, dac_points (pairs of detection count and\n"
            "amplitude).")
        .def("bscans", [](PySurvey& s) { return scans(s, false); },
            "The stored B-scans, as dicts under the JSON export's names: id, reading,\n"
            "units, values (float64 thickness profile, NaN where lost or empty), texts,\n"
            "alarms.")
        .def("to_csv", &to_csv, py::arg("path"), py::arg("form") = "detailed", py::arg("quote") = false,
            "Writes the CSV to path (a str or os.PathLike) in form \"detailed\" or\n"
            "\"grid\": exactly the bytes of ugf2csv, or of `ugf convert --quote` with\n"
            "quote=True. The file is written under a temporary name and renamed, so a\n"
            "failure raises ugf.Error and leaves no file.")
        .def("stats", &stats, py::arg("minimum") = py::none(),
            "The figures of `ugf stats --json`, as a dict; minimum (in the survey's\n"
            "units) replaces the setups' low alarms in counting the readings below it.")
        .def("to_json", &to_json, py::arg("path") = py::none(),
            "Every field of the survey as JSON (docs/survey.schema.json): returned as a\n"
            "str, or written to path (a str or os.PathLike) and None returned.")
        .def("close", [](PySurvey& s) {
                const auto guard = take(s.lock);
                close_survey(s.survey);
                s.open = false;
            }, "Closes the file. Closing a closed survey does nothing.")
        .def("__enter__", [](PySurvey& s) -> PySurvey& { return s; }, py::return_value_policy::reference,
            "Returns the survey itself.")
        .def("__exit__", [](PySurvey& s, py::object, py::object, py::object) {
                const auto guard = take(s.lock);
                close_survey(s.survey);
                s.open = false;
            }, py::arg("kind"), py::arg("value"), py::arg("traceback"), "Closes the file.")
        .def("__repr__", [](PySurvey& s) { return text("<ugf.Survey " + s.survey.path + (s.open ? "" : " (closed)") + ">"); },
            "<ugf.Survey PATH>, with \"(closed)\" after a closed survey's path.");


    py::class_<PyArchive> archive(m, "Archive",
        "A survey archive, as `ugf archive` keeps it: every dated survey of each\n"
        "part (its facts, its points, the file's own bytes) and each part's\n"
        "required thicknesses. Archive(where, create=True): where is the path of\n"
        "an archive file (a str or os.PathLike; SQLite) or a postgresql:// URI of\n"
        "an archive on a PostgreSQL server (docs/archive.md); both behave alike. A\n"
        "missing archive is made unless create is False. Use it as a context\n"
        "manager, or call close(). The calls release the interpreter lock while\n"
        "the library works: adds on several threads read their surveys at once\n"
        "and store them one at a time; any call may come from any thread.\n"
        "Tables are pandas.DataFrames when pandas can be imported, else dicts of\n"
        "numpy arrays; dates are datetime.date objects.");
    belongs_to_package(archive);
    archive
        .def(py::init(&open_archive), py::arg("where"), py::arg("create") = true)
        .def_property_readonly("name", [](PyArchive& a) { return text(a.name); },
            "The archive as messages name it: the file's path, or HOST/DATABASE of a\n"
            "server (never a user or a password).")
        .def("add", &add, py::arg("path"), py::arg("date") = py::none(), py::arg("part") = py::none(),
            "Stores the survey file at path (a str or os.PathLike) and returns its new\n"
            "id, as `ugf archive add` does. date: a datetime.date, a str YYYY-MM-DD or\n"
            "YYYYMMDD, or None for the last date in the file name, else in a folder\n"
            "name above it (without one, ugf.Error says how to give it). part: None\n"
            "(or \"\") for the survey's description, else the file name without its\n"
            "date and extension. The same bytes a second time raise ugf.DuplicateError; a\n"
            "survey that can't be read raises ugf.Error with the message that `ugf\n"
            "convert` prints; either way nothing is stored.")
        .def("parts", &parts, "The names of the parts, in byte order.")
        .def("surveys", &surveys, py::arg("part") = py::none(),
            "The stored surveys of a part (of every part with None), by part, date\n"
            "and id: id, part, date, file_name, points (stored), readings (points\n"
            "with a reading), the facts file_type_name, instrument, model, first_id,\n"
            "last_id, walk_pattern_name, description, inspector_id, location,\n"
            "has_grid, and sha256 of the file's bytes.")
        .def("readings", &readings, py::arg("part"),
            "Every point of every survey of the part, a row each, by survey (as\n"
            "surveys() orders them) then in walk order: survey (its id), id (the\n"
            "point's identifier), date, value (NaN where the cell shows no number),\n"
            "text (the grid cell's), units, empty, lost, velocity, notes (the note\n"
            "mask, bit 0 is note A).")
        .def("history", &history, py::arg("part"), py::arg("minimum") = py::none(), py::arg("max_interval") = 10.0,
             py::arg("as_of") = py::none(),
            "The rows of `ugf archive history`: a row per identifier with the CSV's\n"
            "columns in snake case (id, status, readings, first_date, first,\n"
            "previous_date, previous, latest_date, latest, units, long_term_rate,\n"
            "short_term_rate, least_squares_rate, governing_rate, required,\n"
            "required_from, remaining_life, retirement_date, next_inspection, note).\n"
            "Numbers are unrounded floats, NaN where none; dates datetime.date or\n"
            "None. minimum: the required thickness of every point (else the part's\n"
            "minimums, else the low alarm); max_interval: most years between\n"
            "inspections; as_of: the day `due` is judged on (a date or str; today).")
        .def("minimums", &minimums, py::arg("part"),
            "The part's required thicknesses by identifier: id, value, units (\"\"\n"
            "means the units of the part's latest survey).")
        .def("set_minimums", &set_minimums, py::arg("part"), py::arg("rows"),
            "Replaces the part's required thicknesses (no rows clears them). rows:\n"
            "(id, value) or (id, value, units) tuples, or a table with columns id,\n"
            "value and optionally units, such as minimums() gives. Values above 0;\n"
            "units IN or MM in any case, or empty. A bad row raises ValueError and an\n"
            "identifier given twice ugf.Error; then nothing changes.")
        .def("get", &get, py::arg("id"), py::arg("out_dir") = std::filesystem::path("."),
            "Writes survey id's original file, byte for byte, under its file name in\n"
            "out_dir (a str or os.PathLike), as `ugf archive get`; returns its path.")
        .def("close", &close_archive, "Closes the archive. Closing a closed archive does nothing.")
        .def("__enter__", [](PyArchive& a) -> PyArchive& { return a; }, py::return_value_policy::reference,
            "Returns the archive itself.")
        .def("__exit__", [](PyArchive& a, py::object, py::object, py::object) { close_archive(a); },
            py::arg("kind"), py::arg("value"), py::arg("traceback"), "Closes the archive.")
        .def("__repr__", [](PyArchive& a) {
                const auto guard = take(a.lock);
                return text("<ugf.Archive " + a.name + (a.archive.ops ? "" : " (closed)") + ">");
            }, "<ugf.Archive NAME>, with \"(closed)\" after a closed archive's name.");

    m.def("open", &open_path, py::arg("path"),
          "Opens a survey file (a str, bytes or os.PathLike) for reading only and\n"
          "returns a Survey; raises ugf.Error when it can't be opened or is no\n"
          "datalogger file.");
    m.def("compare", &compare, py::arg("baseline").none(false), py::arg("latest").none(false),
          py::arg("years") = py::none(), py::arg("minimum") = py::none(),
          "The rows of `ugf compare` of two surveys of one part. baseline and latest\n"
          "are each a Survey or a file name (str or os.PathLike); a file named here\n"
          "is opened and closed by the call. Points are matched by identifier; the\n"
          "numbers are in the latest's units. Columns: id, status (\"both\",\n"
          "\"baseline only\", \"latest only\"), baseline_text, latest_text, baseline,\n"
          "latest, loss, share (percent of the baseline), rate (loss per year, with\n"
          "years), minimum (the given one, else each latest reading's low alarm),\n"
          "remaining_life (years until the minimum). A pandas.DataFrame when pandas\n"
          "can be imported, else a dict of numpy arrays.");
    belongs_to_package(m.attr("open"));
    belongs_to_package(m.attr("compare"));
}
