// What every program that adds to an archive or reads a history from it
// shares beyond the store itself: how a survey file becomes a survey to add
// (its date, its part, its points from the very bytes stored), and how a
// part's history is loaded. The command line and the Python module both call
// these, so that they decide alike.
#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "ugf/archive.hpp"
#include "ugf/files.hpp"

namespace ugf::kit {

namespace {

std::string trim(const std::string& text) {
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}



// The part a file name names: the name without its extension and its date,
// and without the separator before the date ("tank4_2026-03-01.ugf" is
// "tank4").
std::string part_from_name(const std::string& path) {
    std::string name = last_part(path);
    if (has_survey_extension(name)) name.resize(name.size() - 4);
    std::int32_t days = 0;
    if (date_in_path(name, days) == 0) return name;
    // The date is the last one written either way that no digit touches.
    std::string text = date_text(days), compact = text;
    compact.erase(std::remove(compact.begin(), compact.end(), '-'), compact.end());
    std::size_t at = std::string::npos, length = 0;
    for (const std::string& form : {text, compact}) {
        for (std::size_t i = name.rfind(form); i != std::string::npos; i = i == 0 ? std::string::npos : name.rfind(form, i - 1)) {
            const std::size_t end = i + form.size();
            const bool apart = (i == 0 || !std::isdigit(static_cast<unsigned char>(name[i - 1]))) &&
                               (end == name.size() || !std::isdigit(static_cast<unsigned char>(name[end])));
            if (apart) {
                if (at == std::string::npos || i > at) at = i, length = form.size();
                break;
            }
        }
    }
    if (at == std::string::npos) return name;
    const auto separator = [&](std::size_t i) { return i < name.size() && std::strchr("_-. ", name[i]) != nullptr; };
    if (at > 0 && separator(at - 1)) --at, ++length;
    else if (separator(at + length)) ++length;
    return name.erase(at, length);
}

}  // namespace

int read_new_survey(const std::string& path, std::optional<std::int32_t> date, const std::string& part,
                    const AskFor& ask, NewSurvey& s, std::string& why) {
    s = NewSurvey();
    if (!has_survey_extension(path)) {
        why = "not a .ugf file";
        return 0;
    }
    s.date = date.value_or(NO_DATE);
    if (!date && date_in_path(path, s.date) == 0) {
        why = "no date: name it in the file name (tank4_2026-03-01.ugf) or give " + ask.date;
        return 0;
    }
    if (read_file(path, s.bytes, why) == 0) return 0;
    Survey survey;
    if (open_survey_memory(survey, reinterpret_cast<const std::uint8_t*>(s.bytes.data()), s.bytes.size(), why) == 0) {
        return 0;
    }
    survey.path = path;
    if (!has_output(survey)) {
        why = conversion_failure(survey);
        return 0;
    }
    s.facts = survey_facts(survey);
    if (for_each_point(survey, [&](const Point& p) {
            s.points.push_back(p);
            return 1;
        }, why) == 0) {
        return 0;
    }
    s.part = !part.empty() ? part : !trim(s.facts.description).empty() ? trim(s.facts.description) : part_from_name(path);
    if (s.part.empty()) {
        why = "no part: give " + ask.part;
        return 0;
    }
    s.file_name = path;
    return 1;
}

int archive_history(Archive& archive, const std::string& part, HistoryOptions options,
                    std::vector<DatedSurvey>& surveys, History& history, std::string& why) {
    surveys.clear();
    std::vector<StoredSurvey> stored;
    std::vector<MinimumRow> minimums;
    if (archive_surveys(archive, part, stored, why) == 0 || archive_minimums(archive, part, minimums, why) == 0) return 0;
    if (stored.empty()) {
        why = "no survey of " + part + " in " + archive.name;
        return 0;
    }
    for (const StoredSurvey& s : stored) {
        DatedSurvey& d = surveys.emplace_back();
        d.id = s.id;
        d.date = s.date;
        d.name = s.file_name;
        if (archive_points(archive, s.id, d.points, why) == 0) return 0;
    }
    options.minimums.clear();
    for (const MinimumRow& m : minimums) options.minimums[m.id] = {m.value, m.units};
    return make_history(part, surveys, options, history, why);
}

}  // namespace ugf::kit
