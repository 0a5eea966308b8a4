// The Python module `ugf`: surveys as arrays and tables, on the same library
// and toolkit code as the command line. A thin layer: every figure and text
// comes from toolkit/core; this file only turns them into Python objects.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <cmath>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

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

std::unique_ptr<PySurvey> open_path(const std::string& path) {
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
    std::lock_guard<std::mutex> guard(s.lock);
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
    std::lock_guard<std::mutex> guard(s.lock);
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
    std::vector<std::string> id, txt, units, notes, alarm;
    std::vector<double> value;
    std::vector<bool> lost, empty, velocity;
    std::vector<std::int64_t> index, setup;
    for (const Point& p : all) {
        id.push_back(p.id);
        txt.push_back(p.text);
        units.push_back(p.units);
        notes.push_back(note_text(facts, p.notes));
        alarm.push_back(p.alarm);
        value.push_back(p.value);
        lost.push_back(p.lost);
        empty.push_back(p.empty);
        velocity.push_back(p.velocity);
        index.push_back(p.index);
        setup.push_back(p.setup);
    }
    auto bools = [](const std::vector<bool>& v) {
        py::array_t<bool> a(static_cast<py::ssize_t>(v.size()));
        for (std::size_t i = 0; i < v.size(); ++i) a.mutable_data()[i] = v[i];
        return a;
    };
    py::dict columns;
    columns["id"] = object_array(id);
    columns["value"] = array_of(value);
    columns["text"] = object_array(txt);
    columns["units"] = object_array(units);
    columns["lost"] = bools(lost);
    columns["empty"] = bools(empty);
    columns["notes"] = object_array(notes);
    columns["setup"] = array_of(setup);
    columns["alarm"] = object_array(alarm);
    columns["velocity"] = bools(velocity);
    columns["index"] = array_of(index);
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
    std::lock_guard<std::mutex> guard(s.lock);
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
    std::lock_guard<std::mutex> guard(s.lock);
    s.check();
    const std::vector<Grid> grids = grids_of(s);
    if (k >= grids.size()) throw py::index_error("the survey has " + std::to_string(grids.size()) + " grids");
    const Grid& g = grids[k];
    py::array_t<std::int64_t> a({static_cast<py::ssize_t>(g.row_titles.size()), static_cast<py::ssize_t>(g.column_titles.size())});
    std::copy(g.cells.begin(), g.cells.end(), a.mutable_data());
    return a;
}

py::list scans(PySurvey& s, bool want_ascans) {
    std::lock_guard<std::mutex> guard(s.lock);
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

void to_csv(PySurvey& s, const std::string& path, const std::string& form, bool quote) {
    if (form != "detailed" && form != "grid") throw py::value_error("form is \"detailed\" or \"grid\"");
    std::lock_guard<std::mutex> guard(s.lock);
    s.check();
    std::string why;
    int ok = 0;
    {
        py::gil_scoped_release release;
        ok = convert_to_file(s.survey, {form == "detailed" ? FORM_DETAILED : FORM_GRID, quote}, path, why);
    }
    if (ok == 0) s.fail(why);
}

py::object stats(PySurvey& s, std::optional<double> minimum) {
    std::lock_guard<std::mutex> guard(s.lock);
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

py::object to_json(PySurvey& s, std::optional<std::string> path) {
    std::lock_guard<std::mutex> guard(s.lock);
    s.check();
    std::string json, why;
    int ok = 0;
    {
        py::gil_scoped_release release;
        ok = write_survey_json(s.survey, [&](std::string_view t) { json.append(t); }, why);
        if (ok != 0 && path) ok = write_file_atomically(*path, json, false, why);
    }
    if (ok == 0) s.fail(why);
    if (path) return py::none();
    return py::str(json);
}

// The rows of `ugf compare`: a pandas.DataFrame, or a dict of numpy arrays.
py::object compare(PySurvey& baseline, PySurvey& latest, std::optional<double> years, std::optional<double> minimum) {
    std::scoped_lock guard(baseline.lock, latest.lock);
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

}  // namespace

PYBIND11_MODULE(ugf, m) {
    m.doc() =
        "Datalogger surveys (.ugf) of ultrasonic thickness gauges and flaw detectors, as arrays and tables.\n\n"
        "    import ugf\n"
        "    with ugf.open('tank4.ugf') as survey:\n"
        "        print(survey.info['file_type_name'], survey.stats()['mean'])\n"
        "        table = survey.points()          # pandas.DataFrame, or a dict of numpy arrays\n"
        "        values, rows, columns = survey.grid(0)\n\n"
        "Readings are the numbers that the points' grid cells show, in the survey's units.\n"
        "Every failure raises ugf.Error with the message that the `ugf` command prints.";
    auto error = py::register_exception<Error>(m, "Error", PyExc_Exception);
    error.doc() = "A survey that can't be opened, read or written; the message names the file and what went wrong.";

    py::class_<PySurvey>(m, "Survey", "An open survey (from ugf.open). Use it as a context manager, or call close().")
        .def_property_readonly("info", &info,
                               "The survey's facts: file_type_name, instrument, model, units, first_id, last_id, "
                               "walk_pattern_name, points, setups_used, description, inspector_id, location, notes.")
        .def("points", &points,
             "One row per point in the detailed form's order, as a pandas.DataFrame when pandas can be imported "
             "and otherwise a dict of numpy arrays. Columns: id, value (float64, NaN where the cell shows no "
             "number), text (the grid cell's text), units, lost, empty, notes, setup, alarm, velocity, index.")
        .def_property_readonly("grid_count", [](PySurvey& s) {
                std::lock_guard<std::mutex> guard(s.lock);
                s.check();
                return grids_of(s).size();
            }, "The number of grids: one for a 2D survey, one per group of a 3D or 4D survey, none for LINEAR and MANUAL.")
        .def("grid", &grid, py::arg("k") = 0,
             "(values, row_titles, column_titles) of the k-th grid, laid out as the grid CSV: values is a 2-D "
             "float64 array with NaN where a cell shows no number.")
        .def("grid_indexes", &grid_indexes, py::arg("k") = 0,
             "The storage index of each cell of the k-th grid (a 2-D int64 array): the `index` column of points() "
             "tells which point stands where.")
        .def("ascans", [](PySurvey& s) { return scans(s, true); },
             "The stored A-scans: dicts with id, reading, units, max_samples, min_samples, peak_samples (numpy arrays "
             "of trace amplitudes), delay, range, marks (name, position, amplitude), gate alarms and DAC points.")
        .def("bscans", [](PySurvey& s) { return scans(s, false); },
             "The stored B-scans: dicts with id, reading, units, values (float64 thickness profile, NaN where lost), "
             "texts and alarms.")
        .def("to_csv", &to_csv, py::arg("path"), py::arg("form") = "detailed", py::arg("quote") = false,
             "Writes the CSV: exactly the bytes of ugf2csv (or of `ugf convert --quote` with quote=True). The file is "
             "written under a temporary name and renamed, so a failure raises ugf.Error and leaves no file.")
        .def("stats", &stats, py::arg("minimum") = py::none(),
             "The figures of `ugf stats --json`, as a dict.")
        .def("to_json", &to_json, py::arg("path") = py::none(),
             "Every field of the survey as JSON (docs/survey.schema.json): returned as a str, or written to path.")
        .def("close", [](PySurvey& s) {
                std::lock_guard<std::mutex> guard(s.lock);
                close_survey(s.survey);
                s.open = false;
            }, "Closes the file.")
        .def("__enter__", [](PySurvey& s) -> PySurvey& { return s; }, py::return_value_policy::reference)
        .def("__exit__", [](PySurvey& s, py::object, py::object, py::object) {
                std::lock_guard<std::mutex> guard(s.lock);
                close_survey(s.survey);
                s.open = false;
            })
        .def("__repr__", [](PySurvey& s) { return "<ugf.Survey " + s.survey.path + (s.open ? "" : " (closed)") + ">"; });

    m.def("open", &open_path, py::arg("path"), "Opens a survey file for reading only and returns a Survey.");
    m.def("compare", &compare, py::arg("baseline"), py::arg("latest"), py::arg("years") = py::none(),
          py::arg("minimum") = py::none(),
          "The rows of `ugf compare`: points matched by identifier, in the latest's units, with the two readings, "
          "the loss and its share (percent) of the baseline, with `years` the rate per year, with a minimum "
          "(else each latest reading's low alarm) the remaining life. A pandas.DataFrame, or a dict of numpy "
          "arrays; status tells points found in one survey only.");
}
