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

py::array_t<bool> bools(const std::vector<bool>& values) {
    py::array_t<bool> a(static_cast<py::ssize_t>(values.size()));
    for (std::size_t i = 0; i < values.size(); ++i) a.mutable_data()[i] = values[i];
    return a;
}

py::object object_array(const std::vector<std::string>& values) {
    py::list items;
    for (const std::string& v : values) items.append(text(v));
    return py::module_::import("numpy").attr("array")(items, py::arg("dtype") = "object");
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
    std::vector<std::string> id, txt, units, note_texts, alarm;
    std::vector<double> value, low_alarm;
    std::vector<bool> lost, empty, velocity, ascan, bscan;
    std::vector<std::int64_t> index, setup, notes;
    for (const Point& p : all) {
        id.push_back(p.id);
        txt.push_back(p.text);
        units.push_back(p.units);
        notes.push_back(p.notes);
        note_texts.push_back(note_text(facts, p.notes));
        alarm.push_back(p.alarm);
        value.push_back(p.value);
        low_alarm.push_back(p.low_alarm);
        lost.push_back(p.lost);
        empty.push_back(p.empty);
        velocity.push_back(p.velocity);
        ascan.push_back(p.ascan);
        bscan.push_back(p.bscan);
        index.push_back(p.index);
        setup.push_back(p.setup);
    }
    // The columns are the point fields of the JSON export, in its order, and
    // note_text: what the detailed form shows for the note mask.
    py::dict columns;
    columns["index"] = array_of(index);
    columns["id"] = object_array(id);
    columns["text"] = object_array(txt);
    columns["value"] = array_of(value);
    columns["empty"] = bools(empty);
    columns["lost"] = bools(lost);
    columns["velocity"] = bools(velocity);
    columns["units"] = object_array(units);
    columns["notes"] = array_of(notes);
    columns["note_text"] = object_array(note_texts);
    columns["setup"] = array_of(setup);
    columns["alarm"] = object_array(alarm);
    columns["low_alarm"] = array_of(low_alarm);
    columns["ascan"] = bools(ascan);
    columns["bscan"] = bools(bscan);
    return table(columns);
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
    std::vector<std::string> id, status, baseline_text, latest_text;
    std::vector<double> b, l, loss, share, rate, limit, life;
    for (const CompareRow& r : c.rows) {
        id.push_back(r.id);
        status.push_back(r.status == CompareRow::BOTH ? "both" : r.status == CompareRow::BASELINE_ONLY ? "baseline only" : "latest only");
        baseline_text.push_back(r.baseline_text);
        latest_text.push_back(r.latest_text);
        b.push_back(r.baseline);
        l.push_back(r.latest);
        loss.push_back(r.loss);
        share.push_back(r.share);
        rate.push_back(r.rate);
        limit.push_back(r.limit);
        life.push_back(r.life);
    }
    py::dict columns;
    columns["id"] = object_array(id);
    columns["status"] = object_array(status);
    columns["baseline_text"] = object_array(baseline_text);
    columns["latest_text"] = object_array(latest_text);
    columns["baseline"] = array_of(b);
    columns["latest"] = array_of(l);
    columns["loss"] = array_of(loss);
    columns["share"] = array_of(share);
    columns["rate"] = array_of(rate);
    columns["minimum"] = array_of(limit);
    columns["remaining_life"] = array_of(life);
    return table(columns);
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

py::object object_column(const py::list& items) {
    return py::module_::import("numpy").attr("array")(items, py::arg("dtype") = "object");
}

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
    std::vector<std::int64_t> id, points, readings;
    std::vector<std::string> part_name, file_name, type, instrument, model, first_id, last_id, walk, description,
        inspector, location, sha256;
    std::vector<bool> has_grid;
    py::list dates;
    for (const StoredSurvey& s : stored) {
        id.push_back(s.id);
        part_name.push_back(s.part);
        dates.append(date(s.date));
        file_name.push_back(s.file_name);
        points.push_back(static_cast<std::int64_t>(s.points));
        readings.push_back(static_cast<std::int64_t>(s.readings));
        type.push_back(s.facts.file_type_name);
        instrument.push_back(s.facts.instrument);
        model.push_back(s.facts.model);
        first_id.push_back(s.facts.first_id);
        last_id.push_back(s.facts.last_id);
        walk.push_back(s.facts.walk_pattern_name);
        description.push_back(s.facts.description);
        inspector.push_back(s.facts.inspector_id);
        location.push_back(s.facts.location);
        has_grid.push_back(s.facts.has_grid);
        sha256.push_back(s.sha256);
    }
    py::dict columns;
    columns["id"] = array_of(id);
    columns["part"] = object_array(part_name);
    columns["date"] = object_column(dates);
    columns["file_name"] = object_array(file_name);
    columns["points"] = array_of(points);
    columns["readings"] = array_of(readings);
    columns["file_type_name"] = object_array(type);
    columns["instrument"] = object_array(instrument);
    columns["model"] = object_array(model);
    columns["first_id"] = object_array(first_id);
    columns["last_id"] = object_array(last_id);
    columns["walk_pattern_name"] = object_array(walk);
    columns["description"] = object_array(description);
    columns["inspector_id"] = object_array(inspector);
    columns["location"] = object_array(location);
    columns["has_grid"] = bools(has_grid);
    columns["sha256"] = object_array(sha256);
    return table(columns);
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
    const Dates date;
    std::vector<std::int64_t> survey;
    std::vector<std::string> id, txt, units;
    std::vector<double> value;
    std::vector<bool> empty, lost, velocity;
    std::vector<std::int64_t> notes;
    py::list dates;
    for (std::size_t k = 0; k < stored.size(); ++k) {
        const py::object day = date(stored[k].date);  // one object for the survey's rows
        for (const Point& p : points[k]) {
            survey.push_back(stored[k].id);
            dates.append(day);
            id.push_back(p.id);
            value.push_back(p.value);
            txt.push_back(p.text);
            units.push_back(p.units);
            empty.push_back(p.empty);
            lost.push_back(p.lost);
            velocity.push_back(p.velocity);
            notes.push_back(p.notes);
        }
    }
    py::dict columns;
    columns["survey"] = array_of(survey);
    columns["id"] = object_array(id);
    columns["date"] = object_column(dates);
    columns["value"] = array_of(value);
    columns["text"] = object_array(txt);
    columns["units"] = object_array(units);
    columns["empty"] = bools(empty);
    columns["lost"] = bools(lost);
    columns["velocity"] = bools(velocity);
    columns["notes"] = array_of(notes);
    return table(columns);
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
    std::vector<std::string> id, status, units, required_from, note;
    std::vector<std::int64_t> count;
    std::vector<double> first, previous, latest, long_term, short_term, least_squares, governing, required, life;
    py::list first_date, previous_date, latest_date, retirement, next;
    for (const HistoryRow& r : h.rows) {
        id.push_back(r.id);
        status.push_back(history_status_text(r.status));
        count.push_back(static_cast<std::int64_t>(r.readings.size()));
        first_date.append(date(r.first_date));
        first.push_back(r.first);
        previous_date.append(date(r.previous_date));
        previous.push_back(r.previous);
        latest_date.append(date(r.latest_date));
        latest.push_back(r.latest);
        units.push_back(h.units);
        long_term.push_back(r.long_term_rate);
        short_term.push_back(r.short_term_rate);
        least_squares.push_back(r.least_squares_rate);
        governing.push_back(r.governing_rate);
        required.push_back(r.required);
        required_from.push_back(r.required_from);
        life.push_back(r.remaining_life);
        retirement.append(date(r.retirement_date));
        next.append(date(r.next_inspection));
        note.push_back(history_note_text(h, r));
    }
    // The columns of `ugf archive history`'s CSV, in its order.
    py::dict columns;
    columns["id"] = object_array(id);
    columns["status"] = object_array(status);
    columns["readings"] = array_of(count);
    columns["first_date"] = object_column(first_date);
    columns["first"] = array_of(first);
    columns["previous_date"] = object_column(previous_date);
    columns["previous"] = array_of(previous);
    columns["latest_date"] = object_column(latest_date);
    columns["latest"] = array_of(latest);
    columns["units"] = object_array(units);
    columns["long_term_rate"] = array_of(long_term);
    columns["short_term_rate"] = array_of(short_term);
    columns["least_squares_rate"] = array_of(least_squares);
    columns["governing_rate"] = array_of(governing);
    columns["required"] = array_of(required);
    columns["required_from"] = object_array(required_from);
    columns["remaining_life"] = array_of(life);
    columns["retirement_date"] = object_column(retirement);
    columns["next_inspection"] = object_column(next);
    columns["note"] = object_array(note);
    return table(columns);
}

py::object minimums(PyArchive& a, const std::string& part) {
    std::vector<MinimumRow> rows;
    a.run([&](std::string& why) { return archive_minimums(a.archive, part, rows, why); });
    std::vector<std::string> id, units;
    std::vector<double> value;
    for (const MinimumRow& r : rows) {
        id.push_back(r.id);
        value.push_back(r.value);
        units.push_back(r.units);
    }
    py::dict columns;
    columns["id"] = object_array(id);
    columns["value"] = array_of(value);
    columns["units"] = object_array(units);
    return table(columns);
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
        // As `ugf archive get`: the stored name's last part, never a folder
        // above out_dir.
        name = name.substr(name.find_last_of("/\\") + 1);
        if (name.empty() || name == "." || name == "..") name = "survey_" + std::to_string(id) + ".ugf";
        target = out_dir / name;
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
