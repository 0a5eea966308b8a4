// Writes the large surveys that the benchmarks convert, with the same image
// builder as the tests:
//   corrosion_2d.ugf   corrosion gauge "2D", 52 columns by 999 rows, a reading in every slot
//   precision_3d.ugf   precision gauge "3D", 26 x 100 x 40 = 104,000 points
//   flaw_ascan.ugf     flaw detector "2D" with 2,000 A-scan readings of 318 samples
//   bscans.ugf         corrosion gauge "2D" with 200 B-scans of 10,000 points each
// Usage: make_surveys FOLDER
#include <cstdio>
#include <string>

#include "support/survey_image.h"

using namespace ugf::test;

namespace {

void corrosion_2d(const std::string& path) {
    SurveyHeader h;
    h.file_type = 2;
    h.gage_type = 5;
    h.prefix = "TANK-";
    h.id_count = 1;
    h.setup_count = 2;
    h.first_inc = 1;
    h.second_inc = 2;
    set_ranges(h, {{"001", "999"}, {"AA", "BZ"}});
    ImageBuilder image = survey_image(h);
    write_gauge_setup(image, 2, 0, {.resolution = 1, .low_alarm = 1000, .high_alarm = 5000});
    write_gauge_setup(image, 2, 1, {.units = 1, .resolution = 1});
    for (std::uint32_t i = 0; i < 999 * 52; ++i) {
        GaugeReading r{.alarm_state = i % 7 == 0 ? 2u : 0u, .setup_number = i % 2,
                       .resolution = 1, .thickness = 2000 + (i * 37) % 90000,
                       .note_mask = i % 11 == 0 ? 5u : 0u, .second_kind = i % 3,
                       .min_value = 1900, .max_value = 2400};
        if (i % 2 == 1) r.units = 1;
        write_slot(image, 2, i, gauge_record(r));
    }
    image.save(path);
}

void precision_3d(const std::string& path) {
    SurveyHeader h;
    h.file_type = 4;
    h.gage_type = 6;
    h.id_count = 1;
    h.setup_count = 1;
    h.walk_pattern = 2;  // zigzag
    set_ranges(h, {{"01", "40"}, {"001", "100"}, {"A", "Z"}});
    ImageBuilder image = survey_image(h);
    write_gauge_setup(image, 4, 0, {.units = 1, .resolution = 1, .setup_name = "PIPE WALL"});
    for (std::uint32_t i = 0; i < 26 * 100 * 40; ++i) {
        write_slot(image, 4, i,
                   gauge_record({.units = 1, .resolution = 1, .thickness = 1000 + (i * 13) % 800000,
                                 .first_kind = i % 4 == 1 ? 1u : 0u, .first_value = 120}));
    }
    image.save(path);
}

void flaw_ascan(const std::string& path) {
    SurveyHeader h;
    h.file_type = 2;
    h.gage_type = 7;
    h.file_version = 24;
    h.id_count = 1;
    h.setup_count = 1;
    set_ranges(h, {{"01", "50"}, {"AA", "BN"}});  // 50 rows x 40 columns
    ImageBuilder image = survey_image(h);
    write_flaw_setup(image, 2, 0,
                     {.velocity = 23300, .range = 40000, .box1_kind = 1, .box2_kind = 13,
                      .box3_kind = 10, .gate2_alarm = 5, .dac_on = 1});
    const std::size_t blocks = slot_at(2, 2000) + 64;
    for (std::uint32_t i = 0; i < 2000; ++i) {
        const std::size_t at = blocks + 1100 * static_cast<std::size_t>(i);
        write_slot(image, 2, i, link_record(2, static_cast<std::uint32_t>(at)));
        FlawAscanImage a;
        a.dac_shown = a.peak_shown = a.dac_stored = a.peak_stored = 1;
        a.box_value = {10000 + i, 3u << 16, 250};
        for (int s = 0; s < 318; ++s) {
            a.max_samples.push_back(static_cast<std::uint8_t>(128 + (s * 7 + i) % 120));
            a.min_samples.push_back(static_cast<std::uint8_t>((s * 3 + i) % 120));
        }
        a.dac_points = {{200, 400}, {800, 250}, {1600, 120}};
        a.peak_bytes.assign(318, 90);
        a.gate1_amplitude = 300;
        a.gate2_amplitude = 200 + i % 300;
        a.gate2_mti = 900;
        write_ascan_flaw(image, at, a);
    }
    image.save(path);
}

void bscans(const std::string& path) {
    SurveyHeader h;
    h.file_type = 2;
    h.gage_type = 5;
    h.id_count = 1;
    h.setup_count = 1;
    set_ranges(h, {{"01", "20"}, {"A", "J"}});  // 20 x 10
    ImageBuilder image = survey_image(h);
    write_gauge_setup(image, 2, 0, {.resolution = 1});
    const std::size_t blocks = slot_at(2, 200) + 64;
    const std::size_t block_bytes = BSCAN_POINTS_AT + 4 * 10000;
    for (std::uint32_t i = 0; i < 200; ++i) {
        const std::size_t at = blocks + block_bytes * i;
        write_slot(image, 2, i, link_record(4, static_cast<std::uint32_t>(at)));
        BscanImage b;
        b.head = gauge_record({.record_type = 5, .resolution = 1, .thickness = 5000 + i});
        for (std::uint32_t p = 0; p < 10000; ++p) {
            b.points.push_back({.lost = p % 97 == 0 ? 1u : 0u, .is_min = p == 17 ? 1u : 0u,
                                .magnitude = 3000 + (p * 29 + i) % 4000});
        }
        write_bscan(image, at, b);
    }
    image.save(path);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_surveys FOLDER\n");
        return 2;
    }
    const std::string dir = argv[1];
    corrosion_2d(dir + "/corrosion_2d.ugf");
    precision_3d(dir + "/precision_3d.ugf");
    flaw_ascan(dir + "/flaw_ascan.ugf");
    bscans(dir + "/bscans.ugf");
    return 0;
}
