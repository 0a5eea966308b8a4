// Writes the sample surveys of this folder with the image builder of the
// tests: small, realistic files of every file type that has an export, from
// all three instruments.
//   make_examples FOLDER          writes the samples into FOLDER
//   make_examples --check FOLDER  exits with 1 when a sample in FOLDER
//                                 differs from what the generator writes
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "support/survey_image.h"

using namespace ugf::test;

namespace {

struct Sample {
    const char* file;
    ImageBuilder image;
};

// A wall thickness around `nominal` (0.0001 inch or 0.001 mm), worn a little
// differently at each point.
std::uint32_t wall(std::uint32_t nominal, std::uint32_t i) { return nominal - (i * 37u) % 400u - (i % 7u) * 11u; }

void header_texts(SurveyHeader& h, const char* description, const char* location, const char* inspector) {
    h.description = description;
    h.location = location;
    h.inspector_id = inspector;
}

// Corrosion gauge, "2D": a tank floor of 8 columns by 12 rows, with points
// not yet measured, lost signals with notes, a velocity check, an A-scan and
// a B-scan. With `years` the same floor that many years later: every point
// has lost some wall (more near the ladder, at column C), and column H is
// measured whole. Past three years the floor thins more slowly, except a pit
// at E07 that deepens fast; A06 reads a little thicker than three years
// before, as a gauge's scatter has it.
Sample corrosion_2d(std::uint32_t years = 0) {
    SurveyHeader h;
    h.file_type = 2;
    h.gage_type = 5;
    h.prefix = "TANK4-";
    h.id_count = 96;
    h.setup_count = 1;
    header_texts(h, "TANK 4 FLOOR", "NORTH TANK FARM", "INSP-0117");
    set_ranges(h, {{"01", "12"}, {"A", "H"}});
    ImageBuilder image = survey_image(h);
    write_gauge_setup(image, 2, 0,
                      {.alarm_type = 1, .resolution = 1, .low_alarm = 2000, .high_alarm = 3000,
                       .velocity = 23300, .setup_name = "TANK FLOOR"});
    write_note(image, 2, 0, "PITTED");
    write_note(image, 2, 1, "UNDER LADDER");
    write_note(image, 2, 2, "WELD SEAM");
    const std::size_t ascan_at = slot_at(2, 96);
    const std::size_t bscan_at = ascan_at + THICKNESS_ASCAN_BYTES;
    for (std::uint32_t i = 0; i < 96; ++i) {
        if (i >= 90 && years == 0) continue;  // the lower half of column H is still to be measured
        const std::uint32_t later = years > 3 ? years - 3 : 0;
        std::uint32_t loss = (years - later) * (12 + (i * 7) % 9 + (i / 12 == 2 ? 10 : 0));
        if (i == 5) loss -= later * 7;  // thicker than before
        else loss += later * (7 + (i * 5) % 7 + (i * 3) % 4 + (i / 12 == 2 ? 6 : 0)) + (i == 54 ? 16 * later : 0);
        GaugeReading r{.resolution = 1, .thickness = wall(2500, i) - loss};
        if (i == 17) r = {.los = 1, .note_mask = 1};
        if (i == 42) r = {.los = 1, .note_mask = 6};
        if (i == 55) r = {.los = 1};
        if (i == 30) r = velocity_reading(23280, 0);
        write_slot(image, 2, i, gauge_record(r));
    }
    write_slot(image, 2, 25, link_record(2, static_cast<std::uint32_t>(ascan_at)));
    write_slot(image, 2, 61, link_record(4, static_cast<std::uint32_t>(bscan_at)));
    ThicknessAscanImage a;
    a.head.resolution = 1;
    a.head.thickness = 1876;
    for (int s = 0; s < 120; ++s) {
        const auto echo = static_cast<std::uint16_t>(s > 40 && s < 50 ? 180 - 8 * (s - 45) * (s - 45) / 5 : 4);
        a.max_samples.push_back(echo);
        a.min_samples.push_back(static_cast<std::uint16_t>(echo / 2));
    }
    a.range = 10000;
    write_ascan_thickness(image, ascan_at, a);
    BscanImage b;
    b.head = gauge_record({.record_type = 5, .resolution = 1, .thickness = 2214});
    for (std::uint32_t p = 0; p < 40; ++p) b.points.push_back({.magnitude = wall(2400, p)});
    write_bscan(image, bscan_at, b);
    return {years == 0 ? "corrosion_2d.ugf" : years == 3 ? "corrosion_2d_2029.ugf" : "corrosion_2d_2032.ugf", image};
}

// Corrosion gauge, "BOILER": 12 tubes at five elevations in feet, three
// custom points around each tube.
Sample boiler() {
    SurveyHeader h;
    h.file_type = 5;
    h.gage_type = 5;
    h.prefix = "B2-";
    h.id_count = 180;
    h.setup_count = 1;
    h.elevation_unit = 2;
    header_texts(h, "BOILER 2 WATER WALL", "UNIT 2, EAST WALL", "INSP-0042");
    set_ranges(h, {{"1", "3"}, {"10", "50", 10}, {"01", "12"}});
    h.custom_point_labels[0] = "LEFT";
    h.custom_point_labels[1] = "CREST";
    h.custom_point_labels[2] = "RIGHT";
    ImageBuilder image = survey_image(h);
    write_gauge_setup(image, 5, 0, {.resolution = 1, .velocity = 23300, .setup_name = "TUBES"});
    write_note(image, 5, 0, "SCALE");
    for (std::uint32_t i = 0; i < 180; ++i) {
        GaugeReading r{.resolution = 1, .thickness = wall(2200, i * 3)};
        if (i % 41 == 40) r = {.los = 1, .note_mask = 1};
        write_slot(image, 5, i, gauge_record(r));
    }
    return {"boiler.ugf", image};
}

// Precision gauge, "3D": four vanes, five rows, three points a row, in
// millimetres.
Sample precision_3d() {
    SurveyHeader h;
    h.file_type = 4;
    h.gage_type = 6;
    h.prefix = "VANE-";
    h.id_count = 60;
    h.setup_count = 1;
    header_texts(h, "STATOR VANES, STAGE 3", "BAY 2", "INSP-0009");
    set_ranges(h, {{"1", "3"}, {"1", "5"}, {"A", "D"}});
    ImageBuilder image = survey_image(h);
    write_gauge_setup(image, 4, 0, {.units = 1, .resolution = 1, .velocity = 23300, .setup_name = "VANES"});
    for (std::uint32_t i = 0; i < 60; ++i) {
        GaugeReading r{.units = 1, .resolution = 1, .thickness = 3150 - (i * 13) % 120};
        if (i == 23) r = {.los = 1, .units = 1};
        write_slot(image, 4, i, gauge_record(r));
    }
    return {"precision_3d.ugf", image};
}

// Corrosion gauge, "4D-MANUAL": two tanks, shell and roof, four sides, three
// points a side, all named by labels.
Sample manual_4d() {
    SurveyHeader h;
    h.file_type = 12;
    h.gage_type = 5;
    h.id_count = 48;
    h.setup_count = 1;
    h.c0 = 1;
    h.c1 = 1;
    h.c2 = 5;
    h.c3 = 5;
    h.fourth_inc = 4;
    header_texts(h, "STORAGE TANKS 1 AND 2", "WEST YARD", "INSP-0117");
    set_manual_labels(h, {{"1", "2", "3"}, {"N", "E", "S", "W"}, {"SHELL", "ROOF"}, {"TANK1", "TANK2"}});
    ImageBuilder image = survey_image(h);
    write_gauge_setup(image, 12, 0, {.resolution = 1, .velocity = 23300, .setup_name = "TANKS"});
    for (std::uint32_t i = 0; i < 48; ++i) {
        write_slot(image, 12, i, gauge_record({.resolution = 1, .thickness = wall(3750, i * 5)}));
    }
    return {"manual_4d.ugf", image};
}

// Flaw detector, "2D+CPT": four welds, three rows, upstream and downstream
// of each weld, with A-scans at two points. Box 1 shows the gate 1
// thickness, box 2 the gate 1 peak amplitude, box 3 the sound path.
Sample flaw_welds() {
    SurveyHeader h;
    h.file_type = 3;
    h.gage_type = 7;
    h.file_version = 24;
    h.prefix = "W-";
    h.id_count = 24;
    h.setup_count = 1;
    header_texts(h, "FEED LINE WELDS", "PIPE RACK 7", "INSP-0203");
    set_ranges(h, {{"1", "2"}, {"1", "3"}, {"A", "D"}});
    h.custom_point_labels[0] = "UP";
    h.custom_point_labels[1] = "DOWN";
    ImageBuilder image = survey_image(h);
    write_flaw_setup(image, 3, 0,
                     {.velocity = 232000, .range = 20000, .frequency = 50, .box1_kind = 1, .box2_kind = 10,
                      .box3_kind = 2, .gate1_start = 1000, .gate1_width = 8000, .gate1_level = 200,
                      .resolution = 1});
    write_note(image, 3, 0, "GRIND MARK");
    const std::size_t first_ascan = slot_at(3, 24);
    std::size_t ascan_at = first_ascan;
    for (std::uint32_t i = 0; i < 24; ++i) {
        const std::uint32_t thickness = 3760 - (i * 23) % 90;
        write_slot(image, 3, i, flaw_record({.flaw_note_mask = i == 9 ? 1u : 0u,
                                              .box_value = {thickness, 60 + (i * 7) % 30, thickness + 12}}));
        if (i == 5 || i == 14) {
            write_slot(image, 3, i, link_record(2, static_cast<std::uint32_t>(ascan_at)));
            FlawAscanImage a{.box_value = {thickness - 5, 82, thickness + 8}};
            for (int s = 0; s < 100; ++s) {
                a.max_samples.push_back(static_cast<std::uint8_t>(s >= 60 && s < 66 ? 200 : 12));
                a.min_samples.push_back(static_cast<std::uint8_t>(s >= 60 && s < 66 ? 90 : 3));
            }
            write_ascan_flaw(image, ascan_at, a);
            ascan_at += FLAW_ASCAN_BYTES;
        }
    }
    return {"flaw_welds.ugf", image};
}

// Corrosion gauge, "LINEAR+CPT": ten stations along a pipe, four clock
// positions at each.
Sample pipe_linear_cpt() {
    SurveyHeader h;
    h.file_type = 1;
    h.gage_type = 5;
    h.prefix = "L3-";
    h.id_count = 40;
    h.setup_count = 1;
    header_texts(h, "CONDENSATE LINE 3", "PIPE BRIDGE", "INSP-0042");
    set_ranges(h, {{"1", "4"}, {"001", "010"}});
    h.custom_point_labels[0] = "12 OCLOCK";
    h.custom_point_labels[1] = "3 OCLOCK";
    h.custom_point_labels[2] = "6 OCLOCK";
    h.custom_point_labels[3] = "9 OCLOCK";
    ImageBuilder image = survey_image(h);
    write_gauge_setup(image, 1, 0, {.resolution = 1, .velocity = 23300, .setup_name = "PIPE"});
    for (std::uint32_t i = 0; i < 40; ++i) {
        write_slot(image, 1, i, gauge_record({.resolution = 1, .thickness = wall(3220, i * 11)}));
    }
    return {"pipe_linear_cpt.ugf", image};
}

// Precision gauge, "2D-MANUAL": three nozzles, four angles each.
Sample nozzles_2d_manual() {
    SurveyHeader h;
    h.file_type = 10;
    h.gage_type = 6;
    h.id_count = 12;
    h.setup_count = 1;
    h.c0 = 6;
    h.c1 = 8;
    header_texts(h, "REACTOR NOZZLES", "LEVEL 3", "INSP-0009");
    set_manual_labels(h, {{"0DEG", "90DEG", "180DEG", "270DEG"}, {"NOZZLE A", "NOZZLE B", "MANWAY"}});
    ImageBuilder image = survey_image(h);
    write_gauge_setup(image, 10, 0, {.resolution = 1, .velocity = 23300, .setup_name = "NOZZLES"});
    for (std::uint32_t i = 0; i < 12; ++i) {
        write_slot(image, 10, i, gauge_record({.resolution = 1, .thickness = 5120 + (i * 29) % 150}));
    }
    return {"nozzles_2d_manual.ugf", image};
}

// Corrosion gauge, "3D-MANUAL": shell and channel of a heat exchanger, inlet
// and outlet, top and bottom.
Sample exchanger_3d_manual() {
    SurveyHeader h;
    h.file_type = 11;
    h.gage_type = 5;
    h.id_count = 8;
    h.setup_count = 1;
    h.c0 = 6;
    h.c1 = 6;
    h.c2 = 7;
    header_texts(h, "EXCHANGER E-104", "UNIT 1", "INSP-0203");
    set_manual_labels(h, {{"TOP", "BOTTOM"}, {"INLET", "OUTLET"}, {"SHELL", "CHANNEL"}});
    ImageBuilder image = survey_image(h);
    write_gauge_setup(image, 11, 0, {.resolution = 1, .velocity = 23300, .setup_name = "EXCHANGER"});
    for (std::uint32_t i = 0; i < 8; ++i) {
        write_slot(image, 11, i, gauge_record({.resolution = 1, .thickness = wall(4375, i * 9)}));
    }
    return {"exchanger_3d_manual.ugf", image};
}

// Corrosion gauge, "LINEAR": a drain line walked backwards from its last
// point, with a lost signal under a note and an A-scan.
Sample drain_linear() {
    SurveyHeader h;
    h.file_type = 0;
    h.gage_type = 5;
    h.prefix = "DRAIN-";
    h.id_count = 12;
    h.setup_count = 1;
    h.walk_pattern = 1;
    h.second_inc = 0;  // one dimension: no other place in the increment order
    h.third_inc = 0;
    header_texts(h, "DRAIN LINE 5", "PUMP HOUSE", "INSP-0117");
    set_ranges(h, {{"01", "12"}});
    ImageBuilder image = survey_image(h);
    write_gauge_setup(image, 0, 0, {.resolution = 1, .velocity = 23300, .setup_name = "DRAIN"});
    write_note(image, 0, 0, "INSULATED");
    for (std::uint32_t i = 0; i < 12; ++i) {
        GaugeReading r{.resolution = 1, .thickness = wall(1540, i * 13)};
        if (i == 4) r = {.los = 1, .note_mask = 1};
        write_slot(image, 0, i, gauge_record(r));
    }
    const std::size_t ascan_at = slot_at(0, 12);
    write_slot(image, 0, 7, link_record(2, static_cast<std::uint32_t>(ascan_at)));
    ThicknessAscanImage a;
    a.head.resolution = 1;
    a.head.thickness = 1389;
    for (int s = 0; s < 30; ++s) {
        a.max_samples.push_back(static_cast<std::uint16_t>(s >= 18 && s < 22 ? 160 : 6));
        a.min_samples.push_back(static_cast<std::uint16_t>(s >= 18 && s < 22 ? 70 : 2));
    }
    a.range = 1000;
    write_ascan_thickness(image, ascan_at, a);
    return {"drain_linear.ugf", image};
}

// Precision gauge, "MANUAL": valve bodies measured in the order the inspector
// came to them, each point named when it was taken.
Sample valves_manual() {
    SurveyHeader h;
    h.file_type = 8;
    h.gage_type = 6;
    h.prefix = "V";
    h.id_count = 6;
    h.setup_count = 1;
    header_texts(h, "CONTROL VALVES", "SKID 4", "INSP-0009");
    set_ranges(h, {{"1", "6"}});
    ImageBuilder image = survey_image(h);
    write_gauge_setup(image, 8, 0, {.units = 1, .resolution = 1, .velocity = 5920, .setup_name = "VALVES"});
    const char* names[] = {"V101 INLET", "V101 OUTLET", "V102 INLET", "V102 OUTLET", "V103 BONNET", "V104 INLET"};
    for (std::uint32_t i = 0; i < 6; ++i) {
        write_slot(image, 8, i, gauge_record({.units = 1, .resolution = 1, .thickness = 8120 - (i * 71) % 300}),
                   names[i]);
    }
    return {"valves_manual.ugf", image};
}

std::vector<Sample> samples() {
    return {corrosion_2d(), corrosion_2d(3), corrosion_2d(6), boiler(), precision_3d(), manual_4d(), flaw_welds(),
            pipe_linear_cpt(), nozzles_2d_manual(), exchanger_3d_manual(), drain_linear(), valves_manual()};
}

bool same_as_file(const ImageBuilder& image, const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    const std::vector<std::uint8_t> stored((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    return stored == image.bytes;
}

}  // namespace

int main(int argc, char** argv) {
    const bool check = argc == 3 && std::strcmp(argv[1], "--check") == 0;
    if (argc != 2 && !check) {
        std::fprintf(stderr, "usage: make_examples [--check] FOLDER\n");
        return 2;
    }
    const std::string folder = argv[argc - 1];
    int status = 0;
    for (const Sample& s : samples()) {
        const std::string path = folder + "/" + s.file;
        if (!check) {
            s.image.save(path);
        } else if (!same_as_file(s.image, path)) {
            std::fprintf(stderr, "%s differs from what make_examples writes\n", path.c_str());
            status = 1;
        }
    }
    return status;
}
