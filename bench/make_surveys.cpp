// Writes the large surveys that the benchmarks convert, with the same image
// builder as the tests:
//   corrosion_2d.ugf   corrosion gauge "2D", 52 columns by 999 rows, a reading in every slot
//   precision_3d.ugf   precision gauge "3D", 26 x 100 x 40 = 104,000 points
//   flaw_ascan.ugf     flaw detector "2D" with 2,000 A-scan readings of 318 samples
//   bscans.ugf         corrosion gauge "2D" with 200 B-scans of 10,000 points each
// Those four repeat a few readings over and over. The varied surveys have the
// same shapes, but their readings change from point to point as a real
// survey's do, drawn from a fixed seed so that every run writes the same bytes:
//   varied_corrosion_2d.ugf  52 x 999: every thickness different, notes, lost
//                            signals, alarms, eight setups, units and modes mixed
//   varied_precision_3d.ugf  26 x 100 x 40, the same kinds of variation, mode 5 too
//   varied_flaw_ascan.ugf    2,000 A-scans of varied gates, boxes and DAC points
//   varied_bscans.ugf        200 B-scans of 10,000 varied points
// Usage: make_surveys FOLDER
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

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

// A fixed-seed generator (splitmix64): the same numbers on every platform.
struct Draw {
    std::uint64_t state;
    std::uint32_t next() {
        std::uint64_t z = (state += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return static_cast<std::uint32_t>((z ^ (z >> 31)) >> 32);
    }
    std::uint32_t below(std::uint32_t n) { return next() % n; }
    bool chance(std::uint32_t percent) { return below(100) < percent; }
};

const char* const NOTES[] = {"PITTING",        "WELD SEAM",     "SUPPORT",      "PAINT LIFTED",
                             "INSULATION OFF", "NOZZLE",        "LAMINATION?",  "GRIND MARK",
                             "RECHECK",        "HOT SURFACE",   "SCALE",        "BRACKET",
                             "LOW COVERAGE",   "PATCH PLATE",   "DENT 5 MM",    "ROUGH SURFACE"};

// Up to two notes on one reading in six, none on the others.
std::uint32_t draw_notes(Draw& d) {
    if (!d.chance(16)) return 0;
    std::uint32_t mask = 1u << d.below(16);
    if (d.chance(30)) mask |= 1u << d.below(16);
    return mask;
}

// A thickness gauge reading whose every field is drawn: thickness, signal,
// alarm, fast mode, setup (and with it units and resolution), echo-to-echo,
// notes and both kinds of extra values. `thick_max` bounds the raw thickness.
GaugeReading draw_gauge_reading(Draw& d, const std::vector<GaugeSetupImage>& setups,
                                std::uint32_t thick_max) {
    const std::uint32_t s = d.below(static_cast<std::uint32_t>(setups.size()));
    GaugeReading r{.los = d.chance(5) ? 1u : 0u, .units = setups[s].units,
                   .alarm_state = d.chance(85) ? 0u : 1 + d.below(2),
                   .fast_mode = d.chance(80) ? 0u : d.below(4), .setup_number = s,
                   .resolution = setups[s].resolution, .echo_to_echo = d.chance(10) ? 1u : 0u,
                   .thickness = 500 + d.below(thick_max), .note_mask = draw_notes(d)};
    r.first_kind = d.chance(60) ? 0u : 1 + d.below(3);
    if (r.first_kind == 3) r.first_value = 20 + d.below(400);  // degrees Fahrenheit
    else if (r.first_kind != 0) r.first_value = d.below(3000);
    r.second_kind = d.below(4);
    r.min_value = r.thickness - d.below(300);
    r.max_value = d.chance(3) ? 0 : r.thickness + d.below(900);
    if (d.chance(2)) r.record_type = 0;  // an empty slot
    return r;
}

// Eight thickness gauge setups: units, resolutions, difference references
// and types, gains, alarms, modes.
std::vector<GaugeSetupImage> gauge_setups(Draw& d, int count, bool precision) {
    std::vector<GaugeSetupImage> setups;
    for (int i = 0; i < count; ++i) {
        GaugeSetupImage s{.diff_type = 1 + static_cast<std::uint32_t>(i % 2),
                          .units = static_cast<std::uint32_t>(i / 2 % 2),
                          .resolution = static_cast<std::uint32_t>(i % 3 == 0 ? 0 : 1),
                          .low_alarm = 1000 + d.below(2000), .high_alarm = 50000 + d.below(50000),
                          .diff_reference = i == 5 ? 0 : 2000 + d.below(200000),
                          .gain_mode = static_cast<std::uint32_t>(i % 5), .gain_db = d.below(95),
                          .setup_name = "SETUP " + std::to_string(i)};
        if (precision) s.meas_mode = i % 4 == 3 ? 5u : static_cast<std::uint32_t>(i % 3);
        setups.push_back(s);
    }
    return setups;
}

void varied_thickness(const std::string& path, bool precision) {
    Draw d{precision ? 0x3D3Du : 0x2D2Du};
    SurveyHeader h;
    h.id_count = 1;
    h.setup_count = 8;
    std::uint32_t points = 0;
    if (precision) {
        h.file_type = 4;
        h.gage_type = 6;
        h.walk_pattern = 2;  // zigzag
        set_ranges(h, {{"01", "40"}, {"001", "100"}, {"A", "Z"}});
        points = 26 * 100 * 40;
    } else {
        h.file_type = 2;
        h.gage_type = 5;
        h.prefix = "TANK-";
        h.first_inc = 1;
        h.second_inc = 2;
        set_ranges(h, {{"001", "999"}, {"AA", "BZ"}});
        points = 999 * 52;
    }
    ImageBuilder image = survey_image(h);
    const std::vector<GaugeSetupImage> setups = gauge_setups(d, 8, precision);
    for (int i = 0; i < 8; ++i) write_gauge_setup(image, h.file_type, i, setups[i]);
    for (int i = 0; i < 16; ++i) write_note(image, h.file_type, i, NOTES[i]);
    for (std::uint32_t i = 0; i < points; ++i) {
        GaugeReading r = draw_gauge_reading(d, setups, precision ? 300000 : 150000);
        if (d.chance(1)) r = velocity_reading(5900 + d.below(300), r.units);
        write_slot(image, h.file_type, i, gauge_record(r));
    }
    image.save(path);
}

void varied_flaw_ascan(const std::string& path) {
    Draw d{0xF1A3u};
    SurveyHeader h;
    h.file_type = 2;
    h.gage_type = 7;
    h.file_version = 24;
    h.id_count = 1;
    h.setup_count = 4;
    set_ranges(h, {{"01", "50"}, {"AA", "BN"}});  // 50 rows x 40 columns
    ImageBuilder image = survey_image(h);
    const std::uint32_t boxes[4][3] = {{1, 13, 10}, {2, 3, 23}, {15, 14, 12}, {4, 26, 9}};
    for (int i = 0; i < 4; ++i) {
        write_flaw_setup(image, 2, i,
                         {.velocity = 23300 + d.below(2000), .zero = static_cast<std::int32_t>(d.below(500)),
                          .range = 20000 + d.below(80000), .box1_kind = boxes[i][0],
                          .box2_kind = boxes[i][1], .box3_kind = boxes[i][2],
                          .gate2_alarm = static_cast<std::uint32_t>(i + 3), .dac_mode = static_cast<std::uint32_t>(i),
                          .units = static_cast<std::uint32_t>(i % 2), .resolution = static_cast<std::uint32_t>(i / 2),
                          .dac_on = 1});
    }
    for (int i = 0; i < 16; ++i) write_note(image, 2, i, NOTES[i]);
    const std::size_t blocks = slot_at(2, 2000) + 64;
    for (std::uint32_t i = 0; i < 2000; ++i) {
        const std::size_t at = blocks + 1100 * static_cast<std::size_t>(i);
        write_slot(image, 2, i, link_record(2, static_cast<std::uint32_t>(at)));
        FlawAscanImage a;
        a.gate_alarm = d.chance(80) ? 0 : d.below(4);
        a.block_setup_number = d.below(4);
        a.flaw_note_mask = draw_notes(d);
        a.dac_shown = d.chance(70) ? 1 : 0;
        a.dac_stored = a.dac_shown;
        a.peak_shown = a.peak_stored = d.chance(50) ? 1 : 0;
        a.bracket_3 = d.below(8);
        a.bracket_4 = d.below(8);
        a.box_value = {1000 + d.below(200000), d.below(1u << 20), d.below(512)};
        a.sample_count = 200 + static_cast<int>(d.below(119));
        for (int s = 0; s < a.sample_count; ++s) {
            a.max_samples.push_back(static_cast<std::uint8_t>(128 + d.below(128)));
            a.min_samples.push_back(static_cast<std::uint8_t>(d.below(128)));
        }
        const std::uint32_t dac = a.dac_shown != 0 ? 2 + d.below(10) : 0;
        for (std::uint32_t k = 0; k < dac; ++k) {
            a.dac_points.push_back({static_cast<std::uint16_t>(100 + 150 * k + d.below(150)),
                                    static_cast<std::uint16_t>(1 + d.below(511))});
        }
        if (a.peak_shown != 0) {
            for (int s = 0; s < a.sample_count; ++s) a.peak_bytes.push_back(static_cast<std::uint8_t>(d.below(256)));
        }
        a.gate1_amplitude = d.chance(10) ? 0xFFFF : d.below(512);
        a.gate1_mti = d.chance(10) ? 0xFFFF : d.below(20000);
        a.gate2_amplitude = d.chance(10) ? 0xFFFF : d.below(512);
        a.gate2_mti = d.chance(10) ? 0xFFFF : d.below(20000);
        write_ascan_flaw(image, at, a);
    }
    image.save(path);
}

void varied_bscans(const std::string& path) {
    Draw d{0xB5CAu};
    SurveyHeader h;
    h.file_type = 2;
    h.gage_type = 5;
    h.id_count = 1;
    h.setup_count = 4;
    set_ranges(h, {{"01", "20"}, {"A", "J"}});  // 20 x 10
    ImageBuilder image = survey_image(h);
    const std::vector<GaugeSetupImage> setups = gauge_setups(d, 4, false);
    for (int i = 0; i < 4; ++i) write_gauge_setup(image, 2, i, setups[i]);
    const std::size_t blocks = slot_at(2, 200) + 64;
    const std::size_t block_bytes = BSCAN_POINTS_AT + 4 * 10000;
    for (std::uint32_t i = 0; i < 200; ++i) {
        const std::size_t at = blocks + block_bytes * i;
        write_slot(image, 2, i, link_record(4, static_cast<std::uint32_t>(at)));
        BscanImage b;
        GaugeReading head = draw_gauge_reading(d, setups, 150000);
        head.record_type = 5;
        b.head = gauge_record(head);
        const std::uint32_t min_at = d.below(10000);
        const std::uint32_t max_at = d.below(10000);
        std::uint32_t level = 2000 + d.below(150000);
        for (std::uint32_t p = 0; p < 10000; ++p) {
            level = level + d.below(401) - 200;  // a profile that wanders
            if (level > 400000) level = 2000 + d.below(1000);
            b.points.push_back({.lost = d.chance(3) ? 1u : 0u, .alarm = d.chance(90) ? 0u : 1 + d.below(2),
                                .is_min = p == min_at ? 1u : 0u, .is_max = p == max_at ? 1u : 0u,
                                .negative = d.chance(1) ? 1u : 0u, .magnitude = level});
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
    varied_thickness(dir + "/varied_corrosion_2d.ugf", false);
    varied_thickness(dir + "/varied_precision_3d.ugf", true);
    varied_flaw_ascan(dir + "/varied_flaw_ascan.ugf");
    varied_bscans(dir + "/varied_bscans.ugf");
    return 0;
}
