// A survey: a datalogger file opened for reading only (or bytes the caller
// holds), its facts, its test points in the walk's order with the text and
// number that each one's grid cell shows, its grids laid out as the grid
// form lays them out, and its stored scans. The survey is opaque: everything
// is read through the library's decoder, so nothing here decodes the file a
// second way. One survey is used by one thread at a time; any number may be
// open at once on any threads.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace ugf::kit {

// The output forms: the detailed form (everything the file holds, in the
// walk's order) and the grid form (laid out like the inspected part).
inline constexpr int FORM_GRID = 0;
inline constexpr int FORM_DETAILED = 1;

// The decoder's state of an open survey (large: it lives on the heap).
struct SurveyState;

struct Survey {
    Survey();
    ~Survey();
    Survey(Survey&&) noexcept;
    Survey& operator=(Survey&&) noexcept;
    std::unique_ptr<SurveyState> state;
    std::string path;  // as given, UTF-8
};

// What went wrong, as a code. The texts that go with them (`why`) are those
// the command line prints after "ugf: PATH: ".
enum ErrorCode : int {
    ERROR_NONE = 0,
    ERROR_OPEN = 1,         // "cannot open: REASON" (no such file, no permission)
    ERROR_NOT_SURVEY = 2,   // "not a datalogger file (its header names no survey this program reads)"
    ERROR_READ = 3,         // "read error at offset 0x...: the file ends before it (FS_READ_ERROR)", or a seek error
    ERROR_NO_OUTPUT = 4,    // "a survey of type 6 (NOTES) has no output"
    ERROR_DAMAGED = 5,      // "damaged survey: ..."
    ERROR_OUTPUT = 6,       // "cannot create the output ...", "cannot write ...": the sink or the file refused
    ERROR_ARGUMENT = 7,     // a wrong argument (an unknown form, a closed survey)
    ERROR_MEMORY = 8,       // no memory
};

// Opens a file for reading only, or bytes the caller keeps while the survey
// is open. On failure `why` says what went wrong in words ("cannot open:
// ...", "read error at offset 0x...", "not a datalogger file ...").
int open_survey(Survey& survey, const std::string& path, std::string& why);
int open_survey_memory(Survey& survey, const std::uint8_t* bytes, std::size_t size,
                       std::string& why);

// Closes the input; the survey keeps what it decoded. The survey may be
// opened again.
void close_survey(Survey& survey);

// What went wrong in a conversion of the open survey that gave 0.
std::string conversion_failure(const Survey& survey);
// The code of a failure text made here ("cannot open: ..." gives ERROR_OPEN).
ErrorCode error_code_of(const std::string& why);

// Whether the survey's type has an output at all (not NOTES, SETUP,
// INCREMENTAL, nor an unknown type).
bool has_output(const Survey& survey);

struct Facts {
    std::string file_type_name;  // "2D", "LINEAR", ...
    std::string instrument;  // "corrosion gauge", "precision gauge", "flaw detector"
    std::string model;       // the instrument's model text, as the detailed head names it
    std::string first_id;
    std::string last_id;
    std::string walk_pattern_name;  // "STANDARD", ...
    std::uint32_t points = 0;
    std::string description;
    std::string inspector_id;
    std::string location;
    std::vector<std::string> notes;  // the 16 notes, "A" first
    bool has_grid = false;           // LINEAR and MANUAL surveys have none
};

Facts survey_facts(Survey& survey);

// One test point.
struct Point {
    std::int64_t index = 0;  // storage index
    std::string id;          // as the detailed form writes it
    std::string text;        // the grid cell's text, leading blanks kept
    double value = std::numeric_limits<double>::quiet_NaN();  // the number the cell shows
    int decimals = 0;         // of that number
    bool empty = false;       // no reading stored
    bool lost = false;        // a lost signal: the cell shows a marker or notes
    bool velocity = false;    // a sound velocity check, not a thickness
    std::string units;        // "IN", "MM", "US", ... as the detailed form names them
    std::uint32_t notes = 0;  // note mask, bit 0 is note "A"
    int setup = 0;
    std::string alarm;        // the reading's alarm state text
    double low_alarm = std::numeric_limits<double>::quiet_NaN();  // of its setup, where set
    bool ascan = false;
    bool bscan = false;
};

// Whether a point holds a thickness: a number that is not a lost signal, an
// empty point nor a sound velocity check.
inline bool is_thickness(const Point& p) { return !p.empty && !p.velocity && !p.lost && p.value == p.value; }

// The reading at a storage index as the grid shows it (id left empty).
int read_point(Survey& survey, std::int64_t index, Point& point, std::string& why);

// Calls `visit` for every point in the detailed form's order; stops with 0
// at the first read that fails (`why` says where) or when visit gives 0.
int for_each_point(Survey& survey, const std::function<int(const Point&)>& visit,
                   std::string& why);

// The letters of a note mask joined by ":" ("A:C"), or the note's own text
// when there is one note.
std::string note_text(const Facts& facts, std::uint32_t mask);

// One table of the grid form: a 2D survey has one, a 3D survey one for each
// position of its dimension 2, a 4D-MANUAL survey one for each pair of its
// dimensions 3 and 2.
struct Grid {
    std::string title;  // the group's titles, joined by " "; empty with one table
    std::vector<std::string> row_titles;
    std::vector<std::string> column_titles;
    std::vector<std::int64_t> cells;  // storage index of each cell, row by row
};

// The tables of a survey with a grid. 0 (with `why`) when the survey is
// larger than its file can hold, as a grid conversion would fail.
int survey_grids(Survey& survey, std::vector<Grid>& grids, std::string& why);

// A stored A-scan: the waveform of the reading that saved it, with the
// positions and levels the instrument marked on it. Positions count trace
// samples (0 to sample_count - 1); amplitudes are the stored counts (the
// flaw detector's run 0 to 511, 512 meaning no signal).
struct Ascan {
    std::string id;
    std::string reading;  // the point's cell text
    std::string units;
    std::vector<int> max_samples;
    std::vector<int> min_samples;
    std::vector<int> peak_samples;  // flaw detector, when the head shows them
    std::string delay;              // thickness gauges: the display's start and width, with units
    std::string range;
    struct Mark {
        std::string name;  // "MB BLANK", "MARKER1", "GATE 1", ...
        int position = -1;     // trace position, -1 when the gate lost its signal
        int amplitude = -1;    // detection amplitude of a gate, -1 when none
    };
    std::vector<Mark> marks;
    std::string gate1_alarm;  // flaw detector
    std::string gate2_alarm;
    std::vector<std::pair<int, int>> dac_points;  // detection count, amplitude
};

// A stored B-scan: the thickness profile saved with a reading.
struct Bscan {
    std::string id;
    std::string reading;
    std::string units;
    std::vector<std::string> texts;  // each point as the detailed dump prints it
    std::vector<double> values;      // NaN for a lost or empty point
    std::vector<std::string> alarms;
};

// Calls `ascan` and `bscan` for every stored scan, in the detailed form's
// order. 0 (with `why`) when a read fails or a call gives 0.
int for_each_scan(Survey& survey, const std::function<int(const Ascan&)>& ascan,
                  const std::function<int(const Bscan&)>& bscan, std::string& why);

}  // namespace ugf::kit
