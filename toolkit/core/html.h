// The pieces that the report and comparison pages share: escaping stored
// texts, the colour scale of the thickness and loss maps, the map tables laid
// out as the grid form, and the SVG charts. Everything returns text; the
// pages are XHTML-compatible HTML (every element closed, attributes quoted,
// only the XML entities), self-contained, with no script.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "ugf/survey.hpp"

namespace ugf::kit {

// `text` fit for an element or a quoted attribute: & < > " are escaped, valid
// UTF-8 stays, any other byte above 0x7F is taken as Latin-1 and a control
// character becomes U+FFFD, so that any stored text makes a well-formed page.
std::string escape(const std::string& text);

// `text` without its leading and trailing blanks.
std::string trim_blanks(const std::string& text);

// The last part of a path, without a ".ugf" ending in any case.
std::string survey_name(const std::string& path);

inline constexpr int SCALE_STEPS = 16;  // colour classes "v0" to "v15"

// A sequential colour scale (viridis) from `low` (its first colour) to
// `high`; `high` may be below `low`.
struct Scale {
    double low = std::numeric_limits<double>::quiet_NaN();
    double high = std::numeric_limits<double>::quiet_NaN();
};

// From the smallest to the largest value, or centred on `centre` (not NaN)
// and wide enough for both.
Scale make_scale(double smallest, double largest, double centre);
// The class 0 to SCALE_STEPS - 1 of a value; -1 when there is no scale.
int scale_step(const Scale& scale, double value);
// "#rrggbb" of a class.
std::string step_colour(int step);

// The page's head, style sheet included, and its end.
std::string page_start(const std::string& title);
std::string page_end();

// A table of label and value rows; values are escaped.
std::string facts_table(const std::vector<std::pair<std::string, std::string>>& rows);

// One cell of a map: its text (shown exactly) and how it is drawn.
enum class CellKind { Empty, Value, Below, Hatched, Other };
struct MapCell {
    std::string text;
    CellKind kind = CellKind::Empty;
    int step = -1;  // with Value
    bool due = false;  // framed: its inspection is due
};

// One grid as tables in the grid form's layout (split into bands of columns
// that fit a printed page), with its title as a heading.
std::string map_tables(const Grid& grid, const std::vector<MapCell>& cells);

// A swatch of the legend: its fill (a colour or "url(#hatch)"), its frame,
// and what it stands for.
struct Swatch {
    std::string fill;
    std::string label;
    std::string frame = "#888";
};

// The scale's legend: the steps from low to high with their values and
// units, ticks for the minimum and the nominal (where not NaN), and the
// swatches of the other kinds of cell (those of the thickness map when
// `swatches` is empty).
struct LegendMarks {
    std::string units;
    int decimals = 3;
    double minimum = std::numeric_limits<double>::quiet_NaN();
    double nominal = std::numeric_limits<double>::quiet_NaN();
    std::string what = "thickness";
    std::string below = "below the minimum";
    std::vector<Swatch> swatches = {};
};
std::string legend(const Scale& scale, const LegendMarks& marks);

// A profile of values by point (LINEAR and MANUAL surveys, B-scans): a line
// with gaps at NaN, red dots below `minimum`, dashed lines at the minimum
// and nominal; `labels` name some of the points along the axis.
struct Profile {
    std::vector<double> values;
    std::vector<std::string> labels;  // one per value, may be empty
    std::string units;
    int decimals = 3;
    double minimum = std::numeric_limits<double>::quiet_NaN();
    double nominal = std::numeric_limits<double>::quiet_NaN();
    std::vector<char> below;  // per value, when the minimum varies by point
};
std::string profile_svg(const Profile& profile);

// An A-scan as a plot of its waveform with its marks or gates.
std::string ascan_figure(const Ascan& scan);
// A B-scan as its thickness profile.
std::string bscan_figure(const Bscan& scan);

// A number with `decimals` digits, as `fixed`, escaped-safe.
std::string number_text(double value, int decimals);

}  // namespace ugf::kit
