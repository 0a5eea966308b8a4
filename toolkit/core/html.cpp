#include "core/html.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>

#include "ugf/files.hpp"
#include "ugf/stats.hpp"

namespace ugf::kit {

namespace {

// Viridis at 0, 0.1, ..., 1: perceptually even and readable with any colour
// vision; the steps between are interpolated.
constexpr unsigned VIRIDIS[11] = {0x440154, 0x482475, 0x414487, 0x355f8d, 0x2a788e, 0x21918c,
                                  0x22a884, 0x44bf70, 0x7ad151, 0xbddf26, 0xfde725};

unsigned step_rgb(int step) {
    const double t = static_cast<double>(std::clamp(step, 0, SCALE_STEPS - 1)) / (SCALE_STEPS - 1) * 10.0;
    const int i = std::min(static_cast<int>(t), 9);
    const double f = t - i;
    unsigned rgb = 0;
    for (int shift = 16; shift >= 0; shift -= 8) {
        const double a = (VIRIDIS[i] >> shift) & 0xFF, b = (VIRIDIS[i + 1] >> shift) & 0xFF;
        rgb |= static_cast<unsigned>(std::lround(a + (b - a) * f)) << shift;
    }
    return rgb;
}

std::string hex_colour(unsigned rgb) {
    char text[8];
    std::snprintf(text, sizeof text, "#%06x", rgb & 0xFFFFFFu);
    return text;
}

std::string num(double v) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", v);
    return text;
}

// The length of a UTF-8 sequence at `i` that XML accepts, or 0.
std::size_t utf8_run(const std::string& s, std::size_t i) {
    const auto b = [&](std::size_t k) { return static_cast<unsigned char>(s[k]); };
    const unsigned c = b(i);
    std::size_t n = c >= 0xF0 && c <= 0xF4 ? 4 : c >= 0xE0 ? 3 : c >= 0xC2 && c <= 0xDF ? 2 : 0;
    if (n == 0 || c > 0xF4 || i + n > s.size()) return 0;
    unsigned code = c & (0xFFu >> (n + 1));
    for (std::size_t k = 1; k < n; ++k) {
        if ((b(i + k) & 0xC0) != 0x80) return 0;
        code = (code << 6) | (b(i + k) & 0x3F);
    }
    const unsigned least = n == 2 ? 0x80 : n == 3 ? 0x800 : 0x10000;
    if (code < least || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF) || code == 0xFFFE || code == 0xFFFF) {
        return 0;
    }
    return n;
}

}  // namespace

std::string escape(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        if (c >= 0x80) {
            if (const std::size_t n = utf8_run(text, i); n != 0) {
                out.append(text, i, n);
                i += n;
            } else {
                char ref[8];
                std::snprintf(ref, sizeof ref, "&#x%02X;", c);
                out += ref;
                ++i;
            }
            continue;
        }
        switch (c) {
            case '&': out += "&amp;"; break;
            case '<': out += "&lt;"; break;
            case '>': out += "&gt;"; break;
            case '"': out += "&quot;"; break;
            case '\t': case '\n': case '\r': out += static_cast<char>(c); break;
            default: out += c < 0x20 ? "\xEF\xBF\xBD" : std::string(1, static_cast<char>(c));
        }
        ++i;
    }
    return out;
}

std::string trim_blanks(const std::string& text) {
    const std::size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string survey_name(const std::string& path) {
    std::string name = last_part(path);
    if (has_survey_extension(name)) name.resize(name.size() - 4);
    return name;
}

Scale make_scale(double smallest, double largest, double centre) {
    Scale s{smallest, largest};
    if (std::isnan(smallest) || std::isnan(largest)) return s;
    if (!std::isnan(centre)) {
        const double half = std::max(std::fabs(largest - centre), std::fabs(centre - smallest));
        s = {centre - half, centre + half};
    }
    return s;
}

int scale_step(const Scale& scale, double value) {
    if (std::isnan(scale.low) || std::isnan(scale.high) || std::isnan(value)) return -1;
    if (scale.high == scale.low) return SCALE_STEPS / 2;
    // With high below low the division turns the scale round.
    const double t = (value - scale.low) / (scale.high - scale.low) * SCALE_STEPS;
    return static_cast<int>(std::clamp(std::floor(t), 0.0, static_cast<double>(SCALE_STEPS - 1)));
}

std::string step_colour(int step) { return hex_colour(step_rgb(step)); }

std::string number_text(double value, int decimals) { return fixed(value, decimals); }

std::string page_start(const std::string& title) {
    std::string css =
        "*{box-sizing:border-box;-webkit-print-color-adjust:exact;print-color-adjust:exact}"
        "body{font:13px/1.35 sans-serif;color:#111;background:#fff;margin:16px}"
        "h1{font-size:20px;margin:0 0 8px}h2{font-size:16px;margin:22px 0 6px;border-bottom:1px solid #999}"
        "h2,h3{break-after:avoid}h3{font-size:14px;margin:12px 0 4px}"
        "table{border-collapse:collapse;margin:4px 0 10px}th,td{border:1px solid #bbb;padding:1px 5px}"
        ".head{display:flex;flex-wrap:wrap;gap:0 28px;align-items:flex-start}.facts th{text-align:left;font-weight:normal;background:#f2f2f2}"
        ".list th{background:#eee}.list td{white-space:pre}tr{break-inside:avoid}thead{display:table-header-group}"
        "table.map{font:11px/16px monospace}.map th,.map td{height:18px;padding:0 2px;white-space:pre;text-align:right}"
        ".map th{background:#eee;font-weight:normal;color:#111}.map thead th{width:calc(var(--w) + 6px)}"
        ".map thead th:first-child{width:auto}"
        ".map td.lo{background:#d62728;color:#fff;font-weight:bold;outline:2px solid #111;outline-offset:-2px}"
        ".map td.h{background:repeating-linear-gradient(45deg,#fff 0 3px,#9e9e9e 3px 5px);"
        "text-shadow:0 0 2px #fff,0 0 2px #fff,0 0 2px #fff}"
        ".map td.o{background:#e0e0e0;font-style:italic}"
        ".map td.due{outline:3px solid #ff7f0e;outline-offset:-3px;font-weight:bold}"
        "figure{break-inside:avoid;margin:8px 0 14px}figcaption{font-size:12px}svg text{font:11px sans-serif}"
        ".note{color:#555}@page{margin:12mm}@media print{body{margin:0}}";
    for (int s = 0; s < SCALE_STEPS; ++s) {
        css += ".v" + std::to_string(s) + "{background:" + step_colour(s) + ";color:" + (s < SCALE_STEPS / 2 ? "#fff" : "#000") + "}";
    }
    return "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"/>"
           "<meta name=\"viewport\" content=\"width=device-width\"/><title>" +
           escape(title) + "</title><style>" + css + "</style></head>\n<body>\n";
}

std::string page_end() { return "</body></html>\n"; }

std::string facts_table(const std::vector<std::pair<std::string, std::string>>& rows) {
    std::string out = "<table class=\"facts\"><tbody>";
    for (const auto& [label, value] : rows) out += "<tr><th>" + escape(label) + "</th><td>" + escape(value) + "</td></tr>";
    return out + "</tbody></table>\n";
}

std::string map_tables(const Grid& grid, const std::vector<MapCell>& cells) {
    const std::size_t columns = grid.column_titles.size();
    std::size_t width = 4, row_width = 1;
    for (const MapCell& c : cells) width = std::max(width, c.text.size());
    for (const std::string& t : grid.column_titles) width = std::max(width, t.size());
    for (const std::string& t : grid.row_titles) row_width = std::max(row_width, t.size());
    width = std::min<std::size_t>(width, 14);
    row_width = std::min<std::size_t>(row_width, 24);
    // Bands of columns that fit the width of a printed A4 or Letter page
    // (about 700 CSS pixels, 6.6 pixels to a character of the map's font).
    const double room = 700.0 - (static_cast<double>(row_width) * 6.6 + 8.0);
    const std::size_t fit = std::max<std::size_t>(1, static_cast<std::size_t>(room / (static_cast<double>(width) * 6.6 + 8.0)));
    const std::size_t bands = columns == 0 ? 1 : (columns + fit - 1) / fit;
    const std::size_t per = columns == 0 ? 1 : (columns + bands - 1) / bands;

    std::string out;
    if (!grid.title.empty()) out += "<h3>" + escape(grid.title) + "</h3>\n";
    static const char* const KIND_CLASS[] = {"", "", "lo", "h", "o"};
    for (std::size_t first = 0; first < columns || first == 0; first += per) {
        const std::size_t last = std::min(columns, first + per);
        if (bands > 1) {
            out += "<p class=\"note\">Columns " + escape(grid.column_titles[first]) + " to " +
                   escape(grid.column_titles[last - 1]) + "</p>\n";
        }
        out += "<table class=\"map\" style=\"--w:" + std::to_string(width) + "ch\"><thead><tr><th></th>";
        for (std::size_t c = first; c < last; ++c) out += "<th>" + escape(grid.column_titles[c]) + "</th>";
        out += "</tr></thead><tbody>\n";
        for (std::size_t r = 0; r < grid.row_titles.size(); ++r) {
            out += "<tr><th>" + escape(grid.row_titles[r]) + "</th>";
            for (std::size_t c = first; c < last; ++c) {
                const std::size_t i = r * columns + c;
                if (i >= cells.size()) break;
                const MapCell& cell = cells[i];
                // The class: the scale's step or the kind of cell, and "due".
                const char* kind = KIND_CLASS[static_cast<int>(cell.kind)];
                const bool classed = cell.kind == CellKind::Value || *kind != '\0';
                out += "<td";
                if (classed || cell.due) out += " class=\"";
                if (cell.kind == CellKind::Value) {
                    out += 'v';
                    out += std::to_string(std::clamp(cell.step, 0, SCALE_STEPS - 1));
                } else {
                    out += kind;
                }
                if (cell.due) out += classed ? " due" : "due";
                if (classed || cell.due) out += '"';
                out += '>';
                out += escape(cell.text) + "</td>";
            }
            out += "</tr>\n";
        }
        out += "</tbody></table>\n";
        if (columns == 0) break;
    }
    return out;
}

std::string legend(const Scale& scale, const LegendMarks& m) {
    constexpr double X = 10, STEP = 22, W = STEP * SCALE_STEPS;
    std::string out = "<div class=\"legend\"><svg xmlns=\"http://www.w3.org/2000/svg\" width=\"620\" height=\"92\" "
                      "role=\"img\"><title>Legend of the map</title>"
                      "<defs><pattern id=\"hatch\" width=\"5\" height=\"5\" patternUnits=\"userSpaceOnUse\" "
                      "patternTransform=\"rotate(45)\"><rect width=\"5\" height=\"5\" fill=\"#fff\"/>"
                      "<rect width=\"2\" height=\"5\" fill=\"#9e9e9e\"/></pattern></defs>";
    const bool has_scale = !std::isnan(scale.low) && !std::isnan(scale.high);
    if (has_scale) {
        for (int s = 0; s < SCALE_STEPS; ++s) {
            out += "<rect x=\"" + num(X + s * STEP) + "\" y=\"16\" width=\"" + num(STEP) + "\" height=\"18\" fill=\"" +
                   step_colour(s) + "\"/>";
        }
        out += "<text x=\"" + num(X) + "\" y=\"48\">" + escape(fixed(scale.low, m.decimals) + " " + m.units) +
               "</text><text x=\"" + num(X + W) + "\" y=\"48\" text-anchor=\"end\">" +
               escape(fixed(scale.high, m.decimals) + " " + m.units) + "</text><text x=\"" + num(X + W + 8) +
               "\" y=\"30\">" + escape(m.what) + "</text>";
        auto tick = [&](double v, const char* colour, const std::string& label) {
            if (std::isnan(v)) return;
            const double span = scale.high - scale.low;
            const double t = span != 0 ? std::clamp((v - scale.low) / span, 0.0, 1.0) : 0.5;
            const std::string x = num(X + t * W);
            out += "<line x1=\"" + x + "\" y1=\"12\" x2=\"" + x + "\" y2=\"38\" stroke=\"" + colour +
                   "\" stroke-width=\"2\"/><text x=\"" + x + "\" y=\"10\" text-anchor=\"" +
                   (t < 0.2 ? "start" : t > 0.8 ? "end" : "middle") + "\">" + escape(label) +
                   "</text>";
        };
        tick(m.minimum, "#111", "minimum " + fixed(m.minimum, m.decimals));
        tick(m.nominal, "#111", "nominal " + fixed(m.nominal, m.decimals));
    }
    std::vector<Swatch> swatches = m.swatches;
    if (swatches.empty()) {
        swatches.push_back({"#d62728", m.below});
        swatches.push_back({"url(#hatch)", "lost signal or note"});
        swatches.push_back({"#fff", "empty point"});
        swatches.push_back({"#e0e0e0", "other reading"});
    }
    double x = X;
    for (const Swatch& s : swatches) {
        out += "<rect x=\"" + num(x) + "\" y=\"64\" width=\"14\" height=\"14\" fill=\"" + s.fill + "\" stroke=\"";
        out += s.frame;
        out += s.frame == "#888" ? "\"" : "\" stroke-width=\"2.5\"";
        out += "/><text x=\"" + num(x + 19) + "\" y=\"75\">" + escape(s.label) + "</text>";
        x += 28 + 6.2 * static_cast<double>(s.label.size());
    }
    return out + "</svg></div>\n";
}

namespace {

// A chart's frame: the value axis with five labels between `low` and `high`.
struct Frame {
    double width, height, left, right, top, bottom, low, high;
    double x(double i, double n) const { return left + (n > 1 ? i / (n - 1) : 0.5) * (width - left - right); }
    double y(double v) const {
        return high > low ? height - bottom - (v - low) / (high - low) * (height - top - bottom)
                          : (height - bottom + top) / 2;
    }
    std::string axes(int decimals) const {
        std::string out = "<rect x=\"" + num(left) + "\" y=\"" + num(top) + "\" width=\"" + num(width - left - right) +
                          "\" height=\"" + num(height - top - bottom) + "\" fill=\"none\" stroke=\"#888\"/>";
        for (int k = 0; k <= 4; ++k) {
            const double v = low + (high - low) * k / 4.0;
            out += "<text x=\"" + num(left - 4) + "\" y=\"" + num(y(v) + 4) + "\" text-anchor=\"end\">" +
                   escape(fixed(v, decimals)) + "</text>";
        }
        return out;
    }
};

std::string polyline(const std::string& points, const char* colour, const char* extra = "") {
    return "<polyline fill=\"none\" stroke=\"" + std::string(colour) + "\" stroke-width=\"1.3\" vector-effect=\"non-scaling-stroke\" " + extra +
           "points=\"" + points + "\"/>";
}

std::string svg_open(double width, double height, const std::string& title) {
    return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + num(width) + "\" height=\"" + num(height) +
           "\" viewBox=\"0 0 " + num(width) + " " + num(height) + "\" role=\"img\"><title>" + escape(title) + "</title>";
}

}  // namespace

std::string profile_svg(const Profile& p) {
    const std::size_t n = p.values.size();
    double low = p.minimum, high = p.minimum;
    for (double v : p.values) {
        if (std::isnan(v)) continue;
        low = std::isnan(low) ? v : std::min(low, v);
        high = std::isnan(high) ? v : std::max(high, v);
    }
    if (!std::isnan(p.nominal) && !std::isnan(low)) low = std::min(low, p.nominal), high = std::max(high, p.nominal);
    if (std::isnan(low)) low = 0, high = 1;
    const double pad = high > low ? (high - low) * 0.08 : 0.5;
    const Frame f{720, 260, 64, 12, 10, 70, low - pad, high + pad};
    std::string out = svg_open(f.width, f.height, "Profile of the readings") + f.axes(p.decimals);
    std::string run;
    auto flush = [&] {
        if (!run.empty()) out += polyline(run, "#31688e");
        run.clear();
    };
    // A long profile is drawn as the smallest and largest value of each of
    // about 650 columns, which is all that the chart's pixels can show.
    const std::size_t bucket = std::max<std::size_t>(1, (n + 649) / 650);
    std::size_t last_dot = SIZE_MAX;
    for (std::size_t start = 0; start < n; start += bucket) {
        std::size_t lo = SIZE_MAX, hi = SIZE_MAX;
        for (std::size_t i = start; i < std::min(n, start + bucket); ++i) {
            if (std::isnan(p.values[i])) continue;
            if (lo == SIZE_MAX || p.values[i] < p.values[lo]) lo = i;
            if (hi == SIZE_MAX || p.values[i] > p.values[hi]) hi = i;
        }
        if (lo == SIZE_MAX || (bucket == 1 && std::isnan(p.values[start]))) {
            flush();
            continue;
        }
        for (std::size_t i : {std::min(lo, hi), std::max(lo, hi)}) {
            if (i == last_dot) continue;
            run += num(f.x(static_cast<double>(i), static_cast<double>(n))) + "," + num(f.y(p.values[i])) + " ";
            last_dot = i;
        }
    }
    flush();
    last_dot = SIZE_MAX;
    for (std::size_t i = 0; i < n; ++i) {
        const double v = p.values[i];
        if (std::isnan(v)) continue;
        const bool below = i < p.below.size() ? p.below[i] != 0 : (!std::isnan(p.minimum) && v < p.minimum);
        if (n > 600 && (!below || (last_dot != SIZE_MAX && i / bucket == last_dot / bucket))) continue;
        if (below) last_dot = i;
        out += "<circle cx=\"" + num(f.x(static_cast<double>(i), static_cast<double>(n))) + "\" cy=\"" + num(f.y(v)) +
               "\" r=\"" + (below ? "3.5\" fill=\"#d62728\"/>" : "2\" fill=\"#31688e\"/>");
    }
    auto level = [&](double v, const char* colour, const std::string& label) {
        if (std::isnan(v)) return;
        out += "<line x1=\"" + num(f.left) + "\" x2=\"" + num(f.width - f.right) + "\" y1=\"" + num(f.y(v)) +
               "\" y2=\"" + num(f.y(v)) + "\" stroke=\"" + colour + "\" stroke-dasharray=\"5 4\"/><text x=\"" +
               num(f.width - f.right - 4) + "\" y=\"" + num(f.y(v) - 3) + "\" text-anchor=\"end\">" + escape(label) + "</text>";
    };
    level(p.minimum, "#d62728", "minimum " + fixed(p.minimum, p.decimals));
    level(p.nominal, "#111", "nominal " + fixed(p.nominal, p.decimals));
    // Up to 16 labels along the axis, evenly spread.
    const std::size_t stride = std::max<std::size_t>(1, (n + 15) / 16);
    for (std::size_t i = 0; i < n && i < p.labels.size(); i += stride) {
        const std::string x = num(f.x(static_cast<double>(i), static_cast<double>(n)));
        const std::string y = num(f.height - f.bottom + 12);
        out += "<text x=\"" + x + "\" y=\"" + y + "\" text-anchor=\"end\" transform=\"rotate(-40 " + x + " " + y +
               ")\">" + escape(p.labels[i]) + "</text>";
    }
    out += "<text x=\"14\" y=\"" + num(f.top + 10) + "\" transform=\"rotate(-90 14 " + num(f.top + 10) +
           ")\" text-anchor=\"end\">" + escape(p.units) + "</text>";
    return out + "</svg>";
}

std::string ascan_figure(const Ascan& a) {
    const bool flaw = !a.marks.empty() && a.marks[0].name.rfind("GATE", 0) == 0;
    const std::size_t n = a.max_samples.size();
    int top = flaw ? 511 : 255;
    if (!flaw) {
        for (int v : a.max_samples) top = std::max(top, v);
    }
    const Frame f{640, 230, 44, 12, 10, 26, 0, static_cast<double>(top)};
    std::string out = "<figure>" + svg_open(f.width, f.height, "A-scan of " + a.id) + f.axes(0);
    auto trace = [&](const std::vector<int>& samples, const char* colour, const char* extra) {
        std::string run;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            if (samples[i] > top || samples[i] < 0) {  // the flaw detector's 512: no signal
                if (!run.empty()) out += polyline(run, colour, extra);
                run.clear();
                continue;
            }
            // The inner points of a level stretch add nothing to the line.
            if (!run.empty() && i + 1 < samples.size() && samples[i - 1] == samples[i] && samples[i + 1] == samples[i]) {
                continue;
            }
            run += std::to_string(i) + "," + std::to_string(samples[i]) + " ";
        }
        if (!run.empty()) out += polyline(run, colour, extra);
    };
    // The traces are drawn in samples and counts, which the group maps onto the frame.
    const double sx = n > 1 ? (f.width - f.left - f.right) / static_cast<double>(n - 1) : 1.0;
    out += "<g transform=\"matrix(" + std::to_string(sx) + " 0 0 " + std::to_string(-(f.height - f.top - f.bottom) / top) +
           " " + num(n > 1 ? f.left : f.x(0, 1)) + " " + num(f.height - f.bottom) + ")\">";
    trace(a.min_samples, "#8fb3df", "");
    trace(a.max_samples, "#1f4e9c", "");
    trace(a.peak_samples, "#e69f00", "stroke-dasharray=\"3 2\" ");
    out += "</g>";
    std::string dac;
    for (const auto& [count, amplitude] : a.dac_points) {
        dac += num(f.x(count, static_cast<double>(n))) + "," + num(f.y(std::min(amplitude, top))) + " ";
    }
    if (!dac.empty()) out += polyline(dac, "#7b3294", "stroke-dasharray=\"6 3\" ");
    int shown = 0;
    for (const Ascan::Mark& m : a.marks) {
        if (m.position < 0 || static_cast<std::size_t>(m.position) >= std::max<std::size_t>(n, 1)) continue;
        const std::string x = num(f.x(m.position, static_cast<double>(n)));
        out += "<line x1=\"" + x + "\" x2=\"" + x + "\" y1=\"" + num(f.top) + "\" y2=\"" + num(f.height - f.bottom) +
               "\" stroke=\"#555\" stroke-dasharray=\"4 3\"/><text x=\"" + x + "\" y=\"" +
               num(f.top + 11 + 11 * shown++) + "\" dx=\"3\">" + escape(m.name) + "</text>";
        if (m.amplitude >= 0) {
            const std::string y = num(f.y(std::min(m.amplitude, top)));
            out += "<circle cx=\"" + x + "\" cy=\"" + y + "\" r=\"4\" fill=\"none\" stroke=\"#111\" stroke-width=\"1.5\"/>";
        }
    }
    out += "</svg><figcaption><b>" + escape(a.id) + "</b>: reading " + escape(a.reading) + " " + escape(a.units);
    if (!a.delay.empty()) out += "; delay " + escape(a.delay) + ", range " + escape(a.range);
    for (const Ascan::Mark& m : a.marks) {
        if (m.position < 0) out += "; " + escape(m.name) + ": no signal";
        else if (m.amplitude >= 0) out += "; " + escape(m.name) + " at " + std::to_string(m.position) + ", amplitude " + std::to_string(m.amplitude);
    }
    if (flaw) {
        out += "; gate 1 alarm " + escape(trim_blanks(a.gate1_alarm)) + ", gate 2 alarm " + escape(trim_blanks(a.gate2_alarm));
    }
    if (!a.dac_points.empty()) out += "; DAC curve of " + std::to_string(a.dac_points.size()) + " points";
    return out + " (" + std::to_string(n) + " samples)</figcaption></figure>\n";
}

std::string bscan_figure(const Bscan& b) {
    Profile p;
    p.values = b.values;
    p.units = b.units;
    int decimals = 0;
    for (const std::string& t : b.texts) {
        const std::size_t dot = t.find('.');
        if (dot != std::string::npos) decimals = std::max(decimals, static_cast<int>(t.size() - dot - 1));
    }
    p.decimals = std::min(decimals, 6);
    for (std::size_t i = 0; i < b.values.size(); ++i) p.labels.push_back(std::to_string(i));
    std::size_t lost = 0;
    for (double v : b.values) lost += std::isnan(v) ? 1 : 0;
    return "<figure>" + profile_svg(p) + "<figcaption><b>" + escape(b.id) + "</b>: reading " + escape(b.reading) +
           " " + escape(b.units) + "; B-scan of " + std::to_string(b.values.size()) + " points, " +
           std::to_string(lost) + " without a thickness</figcaption></figure>\n";
}

}  // namespace ugf::kit
