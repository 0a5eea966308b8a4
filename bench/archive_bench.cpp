// Times the archive: adds a part's surveys of 52 x 999 points each to a new
// archive (surveys and readings a second), from one or several processes at
// once, then loads all points of all of them, as the history of the part
// does, and makes the history, its CSV and its report page from them, as
// `ugf archive history` and `ugf archive report` do.
//
//   archive_bench [SURVEYS] [WHERE] [PROCESSES]
//
// SURVEYS (20) are shared out among PROCESSES (1) adding at once. WHERE is a
// folder for a new archive file (the system's temporary folder), or a
// postgresql:// URI of a database without an archive (bench/archive_pg_bench.sh
// starts a server of its own). Each process makes its surveys before the
// clock starts; the time is from the start of the adds to the end of the last.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

#include "ugf/archive.hpp"
#include "ugf/history.hpp"
#include "ugf/history_page.hpp"

namespace {

using Clock = std::chrono::steady_clock;

double seconds_since(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// The processor time of the process, which other work on the machine
// doesn't lengthen as it does the wall time.
double processor_seconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

// A survey of a tank floor: rows A to AZ, columns 1 to 999, thicknesses
// about 12 mm thinning by the year, a few lost or empty readings and notes.
ugf::kit::NewSurvey make_survey(int year, std::mt19937& random) {
    ugf::kit::NewSurvey survey;
    survey.part = "tank4";
    survey.date = (year - 1970) * 365 + (year - 1969) / 4 + 151;
    survey.file_name = "tank4_" + std::to_string(year) + ".ugf";
    survey.facts.file_type_name = "2D";
    survey.facts.instrument = "corrosion gauge";
    survey.facts.first_id = "A001";
    survey.facts.last_id = "AZ999";
    survey.facts.points = 52 * 999;
    survey.facts.has_grid = true;
    survey.facts.notes.assign(16, "");
    std::normal_distribution<double> thickness(12.0 - 0.08 * (year - 2000), 0.4);
    std::uniform_int_distribution<int> chance(0, 999);
    for (int row = 0; row < 52; ++row) {
        const std::string letters = row < 26 ? std::string(1, char('A' + row)) : "A" + std::string(1, char('A' + row - 26));
        for (int column = 1; column <= 999; ++column) {
            ugf::kit::Point& point = survey.points.emplace_back();
            point.index = row * 999 + column - 1;
            point.id = letters + std::to_string(column);
            point.units = "MM";
            point.decimals = 2;
            point.setup = row % 4;
            point.low_alarm = 9.5;
            point.alarm = "NONE";
            const int roll = chance(random);
            if (roll < 10) {
                point.empty = true;
                point.text = "      ";
            } else if (roll < 25) {
                point.lost = true;
                point.text = "   LOS";
            } else {
                point.value = std::round(thickness(random) * 100) / 100;
                char text[32];
                std::snprintf(text, sizeof text, "%6.2f", point.value);
                point.text = text;
                point.notes = roll < 40 ? 1u << (roll % 16) : 0;
                point.alarm = point.value < 9.5 ? "LOW" : "NONE";
            }
        }
    }
    survey.bytes = "survey of " + survey.file_name + std::string(200000, char('a' + year % 26));
    return survey;
}

// One adding process: makes its surveys, says it is ready, waits for the
// start, adds them and writes its processor time of the adds.
[[noreturn]] void add_process(const std::string& where, int first, int count, int ready, int start, int report) {
    std::mt19937 random(7 + first);
    std::vector<ugf::kit::NewSurvey> surveys;
    for (int i = 0; i < count; ++i) surveys.push_back(make_survey(2000 + first + i, random));
    ugf::kit::Archive archive;
    std::string why;
    int code = ugf::kit::archive_open(archive, where, false, why) ? 0 : 1;
    char byte = 0;
    if (write(ready, &byte, 1) != 1 || read(start, &byte, 1) != 0) code = 1;
    const double processor = processor_seconds();
    for (const ugf::kit::NewSurvey& survey : surveys) {
        std::int64_t id = 0, existing = 0;
        if (code == 0 && !ugf::kit::archive_add(archive, survey, id, existing, why)) code = 1;
    }
    const double used = processor_seconds() - processor;
    if (code != 0) std::fprintf(stderr, "archive_bench: %s\n", why.c_str());
    if (write(report, &used, sizeof used) != sizeof used) code = 1;
    std::_Exit(code);
}

}  // namespace

int main(int argc, char** argv) {
    const int count = argc > 1 ? std::atoi(argv[1]) : 20;
    const std::string where = argc > 2 ? argv[2] : std::filesystem::temp_directory_path().string();
    const int processes = argc > 3 ? std::max(1, std::atoi(argv[3])) : 1;
    const bool server = where.rfind("postgres", 0) == 0;
    const std::string path = server ? where
                                    : (std::filesystem::path(where) /
                                       ("archive_bench_" + std::to_string(::getpid()) + ".ugfdb")).string();
    std::string why;
    ugf::kit::Archive archive;
    if (!ugf::kit::archive_open(archive, path, true, why)) {
        std::fprintf(stderr, "archive_bench: %s\n", why.c_str());
        return 1;
    }
    // Ready: one byte from each process; start: the end of the pipe; report:
    // each process's processor time.
    int ready[2], start[2], report[2];
    if (pipe(ready) != 0 || pipe(start) != 0 || pipe(report) != 0) return 1;
    std::vector<pid_t> children;
    for (int p = 0; p < processes; ++p) {
        const int first = count * p / processes, last = count * (p + 1) / processes;
        const pid_t child = fork();
        if (child == 0) {
            close(start[1]);
            add_process(path, first, last - first, ready[1], start[0], report[1]);
        }
        children.push_back(child);
    }
    close(start[0]);
    char byte;
    for (int p = 0; p < processes; ++p)
        if (read(ready[0], &byte, 1) != 1) return 1;
    const Clock::time_point begin = Clock::now();
    close(start[1]);
    double adding_processor = 0, used = 0;
    bool failed = false;
    for (pid_t child : children) {
        int status = 0;
        failed |= waitpid(child, &status, 0) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0;
    }
    const double adding = seconds_since(begin);
    for (int p = 0; p < processes; ++p)
        if (read(report[0], &used, sizeof used) == sizeof used) adding_processor += used;
    if (failed) return 1;
    const std::uint64_t readings = std::uint64_t{52 * 999} * static_cast<std::uint64_t>(count);
    std::printf("add:  %d processes, %d surveys, %llu points in %.3f s (processor %.3f s): %.2f surveys, %.0f points a second\n",
                processes, count, static_cast<unsigned long long>(readings), adding, adding_processor,
                count / adding, readings / adding);

    const Clock::time_point loading_start = Clock::now();
    const double processor = processor_seconds();
    std::vector<ugf::kit::StoredSurvey> surveys;
    std::vector<std::vector<ugf::kit::Point>> points;
    if (!ugf::kit::archive_surveys(archive, "tank4", surveys, why)) {
        std::fprintf(stderr, "archive_bench: %s\n", why.c_str());
        return 1;
    }
    std::uint64_t loaded = 0;
    for (const ugf::kit::StoredSurvey& survey : surveys) {
        if (!ugf::kit::archive_points(archive, survey.id, points.emplace_back(), why)) {
            std::fprintf(stderr, "archive_bench: %s\n", why.c_str());
            return 1;
        }
        loaded += points.back().size();
    }
    const double loading = seconds_since(loading_start);
    std::printf("load: %zu surveys, %llu points in %.3f s (processor %.3f s): %.0f points a second\n",
                surveys.size(), static_cast<unsigned long long>(loaded), loading, processor_seconds() - processor,
                loaded / loading);

    // The latest survey's grid: rows A to AZ down, columns 1 to 999 across,
    // each cell the storage index of its point.
    ugf::kit::Grid grid;
    for (int row = 0; row < 52; ++row) {
        std::string& title = grid.row_titles.emplace_back(row < 26 ? "" : "A");
        title.push_back(static_cast<char>('A' + row % 26));
    }
    for (int column = 1; column <= 999; ++column) grid.column_titles.push_back(std::to_string(column));
    for (std::int64_t index = 0; index < 52 * 999; ++index) grid.cells.push_back(index);
    std::vector<ugf::kit::DatedSurvey> dated;
    for (std::size_t i = 0; i < surveys.size(); ++i) {
        dated.push_back({surveys[i].id, surveys[i].date, surveys[i].file_name, std::move(points[i])});
    }
    ugf::kit::HistoryOptions options;
    options.as_of = dated.back().date + 100;
    const double history_start = processor_seconds();
    const Clock::time_point history_wall = Clock::now();
    ugf::kit::History history;
    std::string page;
    if (!ugf::kit::make_history("tank4", dated, options, history, why)) {
        std::fprintf(stderr, "archive_bench: %s\n", why.c_str());
        return 1;
    }
    const double made = processor_seconds();
    const std::string csv = ugf::kit::history_csv(history);
    const double written = processor_seconds();
    if (!ugf::kit::history_page(history, dated, {grid}, page, why)) {
        std::fprintf(stderr, "archive_bench: %s\n", why.c_str());
        return 1;
    }
    const double paged = processor_seconds();
    std::printf("history: %zu points of %zu surveys in %.3f s (processor %.3f s: history %.3f, CSV %.3f, page %.3f); "
                "CSV %.1f MB, page %.1f MB\n",
                history.rows.size(), dated.size(), seconds_since(history_wall), paged - history_start,
                made - history_start, written - made, paged - written, csv.size() / 1e6, page.size() / 1e6);
    ugf::kit::archive_close(archive);
    if (!server) std::filesystem::remove(path);
    return 0;
}
