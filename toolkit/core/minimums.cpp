// The table of a part's required thicknesses as the user writes it: CSV lines
// ID,MINIMUM[,UNITS], checked line by line so that a mistake is told by its
// line number.
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <map>

#include "ugf/history.hpp"

namespace ugf::kit {

namespace {

std::string trim(const std::string& text) {
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

// A CSV record and the line it begins on.
struct Record {
    std::size_t line = 0;
    std::vector<std::string> fields;
};

// RFC 4180: fields apart by commas, a field in double quotes may hold commas,
// line ends and doubled quotes. 0 with `why` ("line N: ...").
int parse_csv(const std::string& text, std::vector<Record>& records, std::string& why) {
    std::size_t line = 1, i = text.rfind("\xEF\xBB\xBF", 0) == 0 ? 3 : 0;
    while (i < text.size()) {
        Record r{line, {""}};
        for (bool record_end = false; !record_end;) {
            if (i < text.size() && text[i] == '"') {
                for (++i;; ++i) {
                    if (i >= text.size()) {
                        why = "line " + std::to_string(r.line) + ": a quoted field is not closed";
                        return 0;
                    }
                    if (text[i] == '"' && (i + 1 >= text.size() || text[i + 1] != '"')) break;
                    if (text[i] == '"') ++i;
                    if (text[i] == '\n') ++line;
                    r.fields.back() += text[i];
                }
                ++i;  // past the closing quote
                if (i < text.size() && text[i] != ',' && text[i] != '\n' && text.compare(i, 2, "\r\n") != 0) {
                    why = "line " + std::to_string(line) + ": text after a closing quote";
                    return 0;
                }
            }
            for (; i < text.size() && text[i] != ',' && text[i] != '\n'; ++i) {
                if (text[i] == '"') {
                    why = "line " + std::to_string(line) + ": a quote inside a field that is not quoted";
                    return 0;
                }
                if (text[i] != '\r' || (i + 1 < text.size() && text[i + 1] != '\n')) r.fields.back() += text[i];
            }
            if (i < text.size() && text[i] == ',') {
                r.fields.emplace_back();
            } else {
                record_end = true;
                ++line;
            }
            ++i;
        }
        if (r.fields.size() > 1 || !trim(r.fields[0]).empty()) records.push_back(std::move(r));
    }
    return 1;
}

}  // namespace

int parse_minimums(const std::string& text, std::vector<MinimumRow>& rows, std::string& why) {
    std::vector<Record> records;
    if (parse_csv(text, records, why) == 0) return 0;
    std::map<std::string, std::size_t> first_line;
    for (const Record& r : records) {
        const std::string at = "line " + std::to_string(r.line) + ": ";
        if (r.fields.size() < 2 || r.fields.size() > 3) {
            why = at + "ID,MINIMUM or ID,MINIMUM,UNITS expected, found " + std::to_string(r.fields.size()) +
                  (r.fields.size() == 1 ? " field" : " fields");
            return 0;
        }
        MinimumRow row{trim(r.fields[0]), 0, r.fields.size() == 3 ? trim(r.fields[2]) : ""};
        const std::string value = trim(r.fields[1]);
        char* end = nullptr;
        row.value = std::strtod(value.c_str(), &end);
        if (value.empty() || *end != '\0' || !std::isfinite(row.value)) {
            if (&r == &records.front()) continue;  // the header
            why = at + "the minimum is not a number: " + value;
            return 0;
        }
        for (char& ch : row.units) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
        if (row.id.empty()) why = at + "no identifier";
        else if (!(row.value > 0)) why = at + "the minimum must be above 0: " + value;
        else if (!row.units.empty() && row.units != "IN" && row.units != "MM") why = at + "the units must be IN or MM: " + trim(r.fields[2]);
        else if (const auto [first, added] = first_line.emplace(row.id, r.line); !added) {
            why = at + row.id + " is given twice (first on line " + std::to_string(first->second) + ")";
        }
        if (!why.empty()) return 0;
        rows.push_back(std::move(row));
    }
    return 1;
}

}  // namespace ugf::kit
