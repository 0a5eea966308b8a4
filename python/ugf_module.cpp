// The compiled part `ugf._ugf` of the Python package `ugf`: surveys as arrays
// and tables, on the same library and toolkit code as the command line. A
// thin layer: every figure and text comes from toolkit/core; this file only
// turns them into Python objects. The package (python/ugf/) re-exports it.
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

// The Python class ugf.Error, made when the module loads.
PyObject* error_type = nullptr;

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
    auto bools = [](const std::vector<bool>& v) {
        py::array_t<bool> a(static_cast<py::ssize_t>(v.size()));
        for (std::size_t i = 0; i < v.size(); ++i) a.mutable_data()[i] = v[i];
        return a;
    };
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

void to_csv(PySurvey& s, const std::filesystem::path& path, const std::string& form, bool quote) {
    if (form != "detailed" && form != "grid") throw py::value_error("form is \"detailed\" or \"grid\"");
    std::lock_guard<std::mutex> guard(s.lock);
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

py::object to_json(PySurvey& s, const std::optional<std::filesystem::path>& path) {
    std::lock_guard<std::mutex> guard(s.lock);
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
    if (&baseline == &latest) {
        lock_baseline.lock();
    } else {
        lock_latest = std::unique_lock<std::mutex>(latest.lock, std::defer_lock);
        std::lock(lock_baseline, lock_latest);
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
    // A message holds the file's name as given: bytes that aren't UTF-8 are
    // read as Latin-1, as the texts from a file are.
    py::register_exception_translator([](std::exception_ptr failure) {
        try {
            if (failure) std::rethrow_exception(failure);
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
                std::lock_guard<std::mutex> guard(s.lock);
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
                std::lock_guard<std::mutex> guard(s.lock);
                close_survey(s.survey);
                s.open = false;
            }, "Closes the file. Closing a closed survey does nothing.")
        .def("__enter__", [](PySurvey& s) -> PySurvey& { return s; }, py::return_value_policy::reference,
            "Returns the survey itself.")
        .def("__exit__", [](PySurvey& s, py::object, py::object, py::object) {
                std::lock_guard<std::mutex> guard(s.lock);
                close_survey(s.survey);
                s.open = false;
            }, py::arg("kind"), py::arg("value"), py::arg("traceback"), "Closes the file.")
        .def("__repr__", [](PySurvey& s) { return text("<ugf.Survey " + s.survey.path + (s.open ? "" : " (closed)") + ">"); },
            "<ugf.Survey PATH>, with \"(closed)\" after a closed survey's path.");

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
