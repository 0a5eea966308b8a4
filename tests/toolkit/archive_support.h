// What the archive's tests share: surveys with points of every kind, made
// in the test, and the comparison of points read back.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <limits>
#include <string>
#include <tuple>
#include <vector>

#include "ugf/archive.hpp"

namespace ugf::kit {

constexpr double NONE = std::numeric_limits<double>::quiet_NaN();

// Points of every kind: a thickness, a lost signal with notes, an empty slot,
// a velocity check with scans; the numbers vary with `seed`.
inline std::vector<Point> make_points(int count, int seed = 0) {
    std::vector<Point> points(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        Point& p = points[static_cast<std::size_t>(i)];
        p = {.index = 3 * i + 1, .id = "A" + std::to_string(i), .units = "MM", .setup = i % 32, .alarm = "NONE"};
        switch (i % 4) {
            case 0:
                p.value = 10 + (i + seed) % 997 / 100.0;
                p.decimals = 2;
                p.text = " " + std::to_string(p.value).substr(0, 5);
                p.low_alarm = 9.25;
                break;
            case 1: p = {.index = p.index, .id = p.id, .text = "LOS", .lost = true, .notes = 0x8001u}; break;
            case 2: p.empty = true; break;
            default:
                p = {.index = p.index, .id = p.id, .text = "5920", .value = 5920, .velocity = true, .units = "M/S",
                     .alarm = "LOW", .ascan = true, .bscan = true};
        }
    }
    return points;
}

inline NewSurvey make_survey(const std::string& part, std::int32_t date, const std::string& bytes, int points = 8) {
    NewSurvey survey{.part = part, .date = date, .file_name = part + ".ugf", .points = make_points(points, date),
                     .bytes = bytes};
    survey.facts = {.file_type_name = "2D", .instrument = "corrosion gauge", .model = "CG-7", .first_id = "A0",
                    .last_id = "A" + std::to_string(points - 1), .walk_pattern_name = "STANDARD",
                    .points = static_cast<std::uint32_t>(points), .description = "floor, north half",
                    .inspector_id = "R. Lind", .location = "tank 4", .has_grid = true};
    for (char letter = 'A'; letter <= 'P'; ++letter) survey.facts.notes.push_back(std::string("note ") + letter);
    return survey;
}

inline void expect_same_points(const std::vector<Point>& got, const std::vector<Point>& want) {
    ASSERT_EQ(got.size(), want.size());
    for (std::size_t i = 0; i < want.size(); ++i) {
        const Point &g = got[i], &w = want[i];
        SCOPED_TRACE("point " + std::to_string(i));
        EXPECT_EQ(std::tie(g.index, g.id, g.text, g.decimals, g.empty, g.lost, g.velocity, g.units, g.notes, g.setup,
                           g.alarm, g.ascan, g.bscan),
                  std::tie(w.index, w.id, w.text, w.decimals, w.empty, w.lost, w.velocity, w.units, w.notes, w.setup,
                           w.alarm, w.ascan, w.bscan));
        EXPECT_TRUE(g.value == w.value || (std::isnan(g.value) && std::isnan(w.value)));
        EXPECT_TRUE(g.low_alarm == w.low_alarm || (std::isnan(g.low_alarm) && std::isnan(w.low_alarm)));
    }
}

inline std::int64_t add(Archive& archive, const NewSurvey& survey) {
    std::int64_t id = 0, existing = 0;
    std::string why;
    EXPECT_TRUE(archive_add(archive, survey, id, existing, why)) << why;
    return id;
}

// Waits for a child and gives its exit status, or -1 when it didn't exit.
inline int exit_status(pid_t child) {
    int status = 0;
    if (waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
    return WEXITSTATUS(status);
}

// Runs `body(p)` in processes p = 0 to count - 1 at once, each ending with
// the status the body returns; their statuses in the order of p.
template <typename Body>
std::vector<int> statuses_of_processes(int count, const Body& body) {
    std::vector<pid_t> children;
    for (int p = 0; p < count; ++p) {
        const pid_t child = fork();
        if (child == 0) _exit(body(p));
        children.push_back(child);
    }
    std::vector<int> statuses;
    for (pid_t child : children) statuses.push_back(child < 0 ? -1 : exit_status(child));
    return statuses;
}

}  // namespace ugf::kit
