// Times the archive: adds a part's surveys of 52 x 999 points each to a new
// archive (readings a second), then loads all points of all of them, as the
// history of the part does.
//
//   archive_bench [SURVEYS] [FOLDER]   (20 surveys; the system's temporary folder)
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <random>
#include <string>
#include <unistd.h>

#include "ugf/archive.hpp"

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

}  // namespace

int main(int argc, char** argv) {
    const int count = argc > 1 ? std::atoi(argv[1]) : 20;
    const std::filesystem::path folder = argc > 2 ? argv[2] : std::filesystem::temp_directory_path();
    const std::string path = (folder / ("archive_bench_" + std::to_string(::getpid()) + ".ugfdb")).string();
    std::mt19937 random(7);
    std::string why;
    ugf::kit::Archive archive;
    if (!ugf::kit::archive_open(archive, path, true, why)) {
        std::fprintf(stderr, "archive_bench: %s\n", why.c_str());
        return 1;
    }
    double adding = 0, adding_processor = 0;
    std::uint64_t readings = 0;
    for (int i = 0; i < count; ++i) {
        const ugf::kit::NewSurvey survey = make_survey(2000 + i, random);
        const Clock::time_point start = Clock::now();
        const double processor = processor_seconds();
        std::int64_t id = 0, existing = 0;
        if (!ugf::kit::archive_add(archive, survey, id, existing, why)) {
            std::fprintf(stderr, "archive_bench: %s\n", why.c_str());
            return 1;
        }
        adding += seconds_since(start);
        adding_processor += processor_seconds() - processor;
        readings += survey.points.size();
    }
    std::printf("add:  %d surveys, %llu points in %.3f s (processor %.3f s): %.0f points a second\n", count,
                static_cast<unsigned long long>(readings), adding, adding_processor, readings / adding);

    const Clock::time_point start = Clock::now();
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
    const double loading = seconds_since(start);
    std::printf("load: %zu surveys, %llu points in %.3f s (processor %.3f s): %.0f points a second\n",
                surveys.size(), static_cast<unsigned long long>(loaded), loading, processor_seconds() - processor,
                loaded / loading);
    ugf::kit::archive_close(archive);
    std::filesystem::remove(path);
    return 0;
}
