// `ugf archive`: every dated survey of a part kept in one archive file (its
// facts, its points as the grid shows them and the file's own bytes), the
// part's required thicknesses, and the inspection history and its report
// made from them. Built only where the archive library is (not for Windows
// nor the page).
#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <optional>

#include "cli/commands.h"
#include "ugf/archive.hpp"
#include "ugf/files.hpp"
#include "ugf/history.hpp"
#include "ugf/history_page.hpp"
#include "ugf/json.hpp"

namespace ugf::kit {

namespace {

enum Sub { ADD, LIST, MINIMUMS, HISTORY, REPORT, GET, COPY, SUBS };

struct ArchiveCommand {
    CLI::App* subs[SUBS] = {};
    std::string db;
    std::optional<std::string> date, as_of;  // checked by DATE when given
    std::string part;
    std::vector<std::string> paths;
    bool json = false;
    std::string table;
    std::optional<double> minimum;
    double max_interval = 10;
    std::string out, out_dir;
    std::int64_t id = 0;
    std::string from, to;  // copy
};

std::int32_t days_of(const std::string& text) {
    std::int32_t days = NO_DATE;
    parse_date(text, days);
    return days;
}

const CLI::Validator DATE(
    [](std::string& text) {
        std::int32_t days = 0;
        return parse_date(text, days) != 0 ? std::string() : "not a date (YYYY-MM-DD or YYYYMMDD): " + text;
    },
    "DATE", "date");

int fail(const std::string& why) {
    complain(why);
    return 1;
}



// Reads and stores one survey; "" or what went wrong.
std::string store_survey(const ArchiveCommand& c, Archive& archive, const Input& input) {
    NewSurvey s;
    std::string why;
    if (read_new_survey(input.path, c.date ? std::optional(days_of(*c.date)) : std::nullopt, c.part, {}, s, why) == 0) {
        return why;
    }
    std::int64_t id = 0, existing = 0;
    if (archive_add(archive, s, id, existing, why) == 0) return why;
    std::fprintf(stderr, "stored %s as survey %lld (%s, %s, %zu points)\n", input.path.c_str(), static_cast<long long>(id),
                 s.part.c_str(), date_text(s.date).c_str(), s.points.size());
    return "";
}

int run_add(const ArchiveCommand& c, const std::vector<Input>& inputs, int path_failures, Archive& archive) {
    std::size_t stored = 0;
    for (const Input& input : inputs) {
        const std::string why = store_survey(c, archive, input);
        if (why.empty()) ++stored;
        else complain(input.path + ": " + why);
    }
    std::fprintf(stderr, "stored %zu of %zu surveys\n", stored, inputs.size() + static_cast<std::size_t>(path_failures));
    return stored == inputs.size() && path_failures == 0 ? 0 : 1;
}

int run_list(const ArchiveCommand& c, Archive& archive) {
    std::string why;
    std::vector<std::string> parts;
    if (archive_parts(archive, parts, why) == 0) return fail(why);
    if (!c.part.empty()) {
        if (std::find(parts.begin(), parts.end(), c.part) == parts.end()) return fail("no part " + c.part + " in " + archive.name);
        parts = {c.part};
    }
    nlohmann::ordered_json json = nlohmann::ordered_json::array();
    std::string text;
    for (const std::string& part : parts) {
        std::vector<StoredSurvey> surveys;
        std::vector<MinimumRow> minimums;
        if (archive_surveys(archive, part, surveys, why) == 0 || archive_minimums(archive, part, minimums, why) == 0) {
            return fail(why);
        }
        nlohmann::ordered_json list = nlohmann::ordered_json::array();
        text += part + ": " + std::to_string(surveys.size()) + (surveys.size() == 1 ? " survey, " : " surveys, ") +
                std::to_string(minimums.size()) + " required thicknesses\n";
        if (!surveys.empty()) text += "  SURVEY  DATE        POINTS  READINGS  FILE\n";
        for (const StoredSurvey& s : surveys) {
            char line[96];
            std::snprintf(line, sizeof line, "  %6lld  %-10s  %6llu  %8llu  ", static_cast<long long>(s.id),
                          date_text(s.date).c_str(), static_cast<unsigned long long>(s.points),
                          static_cast<unsigned long long>(s.readings));
            text += line + s.file_name + "\n";
            list.push_back({{"id", s.id}, {"date", date_text(s.date)}, {"file_name", json_text(s.file_name)},
                            {"points", s.points}, {"readings", s.readings}, {"file_type_name", s.facts.file_type_name},
                            {"description", json_text(s.facts.description)}, {"sha256", s.sha256}});
        }
        json.push_back({{"part", json_text(part)}, {"minimums", minimums.size()}, {"surveys", list}});
    }
    const std::string out = c.json ? json.dump(2) + "\n" : text;
    std::fwrite(out.data(), 1, out.size(), stdout);
    return 0;
}

int run_minimums(const ArchiveCommand& c, Archive& archive) {
    std::string text, why;
    std::vector<MinimumRow> rows;
    if (read_file(c.table, text, why) == 0 || parse_minimums(text, rows, why) == 0) return fail(c.table + ": " + why);
    if (archive_set_minimums(archive, c.part, rows, why) == 0) return fail(why);
    std::fprintf(stderr, "kept %zu required thicknesses for %s\n", rows.size(), c.part.c_str());
    return 0;
}

// The part's surveys with their points, and the history made from them.
int load_history(const ArchiveCommand& c, Archive& archive, std::vector<DatedSurvey>& surveys, History& history,
                 std::string& why) {
    HistoryOptions options;
    options.minimum = c.minimum;
    options.max_interval = c.max_interval;
    if (c.as_of) options.as_of = days_of(*c.as_of);
    return archive_history(archive, c.part, options, surveys, history, why);
}

int run_history(const ArchiveCommand& c, Archive& archive) {
    std::vector<DatedSurvey> surveys;
    History history;
    std::string why;
    if (load_history(c, archive, surveys, history, why) == 0) return fail(why);
    const std::string text = c.json ? history_json(history).dump(2) + "\n" : history_csv(history);
    if (c.out.empty()) {
        std::fwrite(text.data(), 1, text.size(), stdout);
        return 0;
    }
    if (write_file_atomically(c.out, text, true, why) == 0) return fail(why);
    std::fprintf(stderr, "wrote the history of %s (%zu points, %zu surveys) to %s\n", c.part.c_str(),
                 history.rows.size(), surveys.size(), c.out.c_str());
    return 0;
}

// A part name fit for a file name: separators, characters that some systems
// refuse and control characters become "_".
int run_report(const ArchiveCommand& c, Archive& archive) {
    std::vector<DatedSurvey> surveys;
    History history;
    std::string why, name, bytes, page;
    if (load_history(c, archive, surveys, history, why) == 0) return fail(why);
    // The map is laid out as the latest survey's grids, made again from its
    // stored file.
    const std::int64_t latest = history.surveys.back().id;
    Survey survey;
    if (archive_file(archive, latest, name, bytes, why) == 0) return fail(why);
    if (open_survey_memory(survey, reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size(), why) == 0 ||
        history_page(history, surveys, survey, page, why) == 0) {
        return fail("survey " + std::to_string(latest) + " (" + name + "): " + why);
    }
    const std::string target = (c.out_dir.empty() ? "" : c.out_dir + "/") + history_output_name(c.part, HISTORY_PAGE_ENDING);
    if (write_file_atomically(target, page, false, why) == 0) return fail(why);
    std::fprintf(stderr, "reported %s (%zu points, %zu surveys) in %s\n", c.part.c_str(), history.rows.size(),
                 surveys.size(), target.c_str());
    return 0;
}

int run_get(const ArchiveCommand& c, Archive& archive) {
    std::string name, bytes, why;
    if (archive_file(archive, c.id, name, bytes, why) == 0) return fail(why);
    const std::string target = (c.out_dir.empty() ? "" : c.out_dir + "/") + archive_file_out_name(c.id, name);
    if (write_file_atomically(target, bytes, false, why) == 0) return fail(why);
    std::fprintf(stderr, "wrote survey %lld to %s\n", static_cast<long long>(c.id), target.c_str());
    return 0;
}

// Every survey and required thickness of one archive into another (created
// where it doesn't exist), a file or a server either way.
int run_copy(const ArchiveCommand& c) {
    Archive from, to;
    std::string why;
    if (archive_open(from, c.from, false, why) == 0 || archive_open(to, c.to, true, why) == 0) return fail(why);
    CopyCounts counts;
    const int ok = archive_copy(from, to, counts, why);
    std::fprintf(stderr, "copied %llu surveys from %s to %s (%llu already there), and %llu tables of required thicknesses\n",
                 static_cast<unsigned long long>(counts.copied), from.name.c_str(), to.name.c_str(),
                 static_cast<unsigned long long>(counts.skipped), static_cast<unsigned long long>(counts.minimum_tables));
    return ok != 0 ? 0 : fail(why);
}

int run_archive(const ArchiveCommand& c) {
    int sub = 0;
    while (sub < SUBS && !c.subs[sub]->parsed()) ++sub;
    if (sub == SUBS) return 2;
    if (sub == COPY) return run_copy(c);
    if (c.db.empty()) {
        complain("no archive: give --db FILE or set UGF_ARCHIVE");
        return 2;
    }
    // `add` gathers its paths first, so that a path that isn't there is told
    // before the archive is made.
    int path_failures = 0;
    const std::vector<Input> inputs = sub == ADD ? gather_inputs(c.paths, path_failures) : std::vector<Input>{};
    Archive archive;
    std::string why;
    if (archive_open(archive, c.db, sub == ADD, why) == 0) return fail(why);
    switch (sub) {
        case ADD: return run_add(c, inputs, path_failures, archive);
        case LIST: return run_list(c, archive);
        case MINIMUMS: return run_minimums(c, archive);
        case HISTORY: return run_history(c, archive);
        case REPORT: return run_report(c, archive);
        default: return run_get(c, archive);
    }
}

}  // namespace

Run add_archive(CLI::App& app) {
    auto c = std::make_shared<ArchiveCommand>();
    CLI::App* cmd = app.add_subcommand("archive", "Keep every dated survey of a part in an archive file; its inspection history and report");
    cmd->require_subcommand(1, 1);
    cmd->footer(
        "The archive is one file (e.g. plant7.ugfdb), named by --db on every subcommand or by the\n"
        "environment variable UGF_ARCHIVE. `add` creates it; the others refuse a missing one.\n"
        "Each survey keeps its date, its part, its facts, every point as the grid shows it and the\n"
        "file's own bytes, so `get` gives the original back.");
    auto db = [&](CLI::App* sub) {
        sub->add_option("--db", c->db, "The archive file, or a postgresql:// URI (default: the environment variable UGF_ARCHIVE)")
            ->envname("UGF_ARCHIVE");
    };
    auto history_options = [&](CLI::App* sub) {
        sub->add_option("--part", c->part, "The part")->required();
        sub->add_option("--minimum", c->minimum,
                        "Required thickness of every point, in the latest survey's units (default: the part's "
                        "minimums, else the low alarm of the latest reading's setup)");
        sub->add_option("--max-interval", c->max_interval, "Most years between inspections (default 10)")
            ->check(CLI::PositiveNumber & CLI::Range(0.0, 1000.0));
        sub->add_option("--as-of", c->as_of, "The day the inspections due are judged on, YYYY-MM-DD (default: today)")->check(DATE);
    };

    CLI::App* add = c->subs[ADD] = cmd->add_subcommand(
        "add", "Store surveys: each with its date, its part, its points and the file's bytes");
    db(add);
    add->add_option("--date", c->date,
                    "The surveys' date, YYYY-MM-DD (default: a date YYYY-MM-DD or YYYYMMDD in the file name, or "
                    "in a folder name above it)")
        ->check(DATE);
    add->add_option("--part", c->part,
                    "The part (default: the survey's description, else the file name without its date)");
    add->add_option("PATH", c->paths, "Survey files, or folders searched for .ugf files")->required();
    add->footer("The same file (by its bytes) is stored once: a second time is refused, naming the survey\n"
                "that holds it. A survey that can't be read stores nothing; the others are stored.");

    CLI::App* list = c->subs[LIST] = cmd->add_subcommand("list", "The parts and their surveys: ids, dates, points, files");
    db(list);
    list->add_option("--part", c->part, "Only this part");
    list->add_flag("--json", c->json, "JSON instead of the table");

    CLI::App* minimums = c->subs[MINIMUMS] = cmd->add_subcommand(
        "minimums", "Keep a part's required thicknesses from a CSV file (replacing the part's table)");
    db(minimums);
    minimums->add_option("--part", c->part, "The part")->required();
    minimums->add_option("FILE", c->table, "CSV lines ID,MINIMUM[,UNITS] (IN or MM; default: the latest survey's), "
                                           "a header row allowed, quoted as RFC 4180; no rows clears the table")
        ->required();

    CLI::App* history = c->subs[HISTORY] = cmd->add_subcommand(
        "history", "The part's history: rates, remaining life and next inspection of every point, as CSV");
    db(history);
    history_options(history);
    history->add_flag("--json", c->json, "JSON instead of CSV");
    history->add_option("--out", c->out, "Write to this file (default: standard output)");
    history->footer(
        "A row per identifier: ID, STATUS (ok; due: the next inspection is on or before --as-of;\n"
        "below minimum; one reading only; no thickness), READINGS (one a date), the FIRST, PREVIOUS and\n"
        "LATEST thickness with their dates, UNITS (the latest survey's), the LONG-TERM, SHORT-TERM,\n"
        "LEAST-SQUARES and GOVERNING (the larger of the first two) RATE PER YEAR of loss, REQUIRED and\n"
        "REQUIRED FROM, REMAINING LIFE (YEARS) (latest - required) / governing rate, RETIREMENT DATE,\n"
        "NEXT INSPECTION (half the remaining life on, at most --max-interval) and a NOTE where the\n"
        "latest survey has no thickness of the point.");

    CLI::App* report = c->subs[REPORT] = cmd->add_subcommand(
        "report", "A page of the part's history (PART_history.html): remaining life map, inspections, worst points");
    db(report);
    history_options(report);
    report->add_option("--out-dir", c->out_dir, "Write the page here (default: the current folder)");
    report->footer(
        "The page: the part's surveys; a summary (points, below minimum, due, shortest remaining life);\n"
        "a map laid out as the latest survey's grid, each point's remaining life in years (below the\n"
        "minimum red, due framed, no remaining life grey), or a profile for a survey without a grid;\n"
        "the points by next inspection; charts of thickness over the years of the six shortest lives.");

    CLI::App* get = c->subs[GET] = cmd->add_subcommand("get", "Write a stored survey's original file, byte for byte");
    db(get);
    get->add_option("ID", c->id, "The survey's id (ugf archive list shows them)")->required()->check(CLI::PositiveNumber);

    CLI::App* copy = c->subs[COPY] = cmd->add_subcommand(
        "copy", "Copy every survey and required thickness of one archive into another (a file or a server, either way)");
    copy->add_option("--from", c->from, "The archive to copy: a file or a postgresql:// URI")->required();
    copy->add_option("--to", c->to, "The archive to copy into (created where it doesn't exist): a file or a postgresql:// URI")
        ->required();
    copy->footer("Surveys are copied in the order they were stored, each in one transaction; a survey whose\n"
                 "bytes the target already holds is skipped, so a copy run again copies only what is new.\n"
                 "Into an archive without other surveys of these parts, the copy's histories are the original's.");
    get->add_option("--out-dir", c->out_dir, "Write it here, under its file name (default: the current folder)");
    return [c] { return run_archive(*c); };
}

}  // namespace ugf::kit
