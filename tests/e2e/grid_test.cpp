// Grid output end to end: the table shapes of every file type with a table,
// cells found by position whatever the walk, the merge of scan heads into a
// cell, empty surveys, and a file that ends inside its record table.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "detailed_support.h"

namespace ugf {
namespace {

using test::ImageBuilder;
using test::SurveyHeader;

// Cell i of the worked surveys holds a corrosion gauge reading of
// (i + 1) x 0.1 inch with three decimals.
const std::vector<std::string> V = {
    " 0.100", " 0.200", " 0.300", " 0.400", " 0.500", " 0.600", " 0.700", " 0.800",
    " 0.900", " 1.000", " 1.100", " 1.200", " 1.300", " 1.400", " 1.500", " 1.600",
    " 1.700", " 1.800", " 1.900", " 2.000", " 2.100", " 2.200", " 2.300", " 2.400",
};

// The cells of these storage indexes, each with its comma.
std::string cells(std::initializer_list<int> indexes) {
    std::string text;
    for (int i : indexes) text += V[static_cast<std::size_t>(i)] + ",";
    return text;
}

ImageBuilder with_readings(const SurveyHeader& h, std::uint32_t count) {
    ImageBuilder image = test::survey_image(h);
    test::write_gauge_setup(image, h.file_type, 0, {.resolution = 1, .velocity = 23300});
    for (std::uint32_t i = 0; i < count; ++i) {
        test::write_slot(image, h.file_type, i, test::gauge_record({.resolution = 1, .thickness = 1000 * (i + 1)}));
    }
    return image;
}

// A verbose grid run: the console must echo the file between the status lines.
void expect_grid(const ImageBuilder& image, const std::string& grid, const std::string& name) {
    const test::Conversion c = test::convert(image, "g", "v");
    EXPECT_EQ(c.output, grid) << name;
    EXPECT_EQ(c.run.console, test::console_of_success(grid)) << name;
    EXPECT_EQ(c.run.status, 0) << name;
}

SurveyHeader survey(std::uint32_t file_type, const std::vector<test::DimRange>& dims) {
    SurveyHeader h{.file_type = file_type, .id_count = 1};
    test::set_ranges(h, dims);
    return h;
}

SurveyHeader manual(std::uint32_t file_type, const std::vector<std::vector<std::string>>& labels) {
    SurveyHeader h{.file_type = file_type};
    test::set_manual_labels(h, labels);
    return h;
}

SurveyHeader three_d() { return survey(4, {{"X", "Z"}, {"1", "2"}, {"A", "B"}}); }

TEST(Grid, TablesOfEveryShape) {
    SurveyHeader linear_cpt = survey(1, {{"1", "3"}, {"1", "2"}});
    linear_cpt.custom_point_labels[0] = "NORTH";
    linear_cpt.custom_point_labels[1] = "SOUTH";
    linear_cpt.custom_point_labels[2] = "EAST";
    SurveyHeader two_d_cpt = survey(3, {{"1", "2"}, {"1", "1"}, {"A", "B"}});
    two_d_cpt.custom_point_labels[0] = "IN";
    two_d_cpt.custom_point_labels[1] = "OUT";
    SurveyHeader boiler = survey(5, {{"1", "2"}, {"10", "30", 10}, {"01", "04"}});
    boiler.custom_point_labels[0] = "NORTH";
    boiler.custom_point_labels[1] = "SOUTH";
    boiler.elevation_unit = 2;

    const struct {
        const char* name;
        SurveyHeader header;
        std::uint32_t points;
        std::string grid;
    } cases[] = {
        {"LINEAR+CPT", linear_cpt, 6,
         ",NORTH,SOUTH,EAST,\n"
         "1," + cells({0, 1, 2}) + ",\n"
         "2," + cells({3, 4, 5}) + ",\n"},
        {"2D", survey(2, {{"01", "02"}, {"A", "C"}}), 6,
         ",A,B,C,\n"
         "01," + cells({0, 2, 4}) + "\n"
         "02," + cells({1, 3, 5}) + "\n"},
        {"2D, one point", survey(2, {{"01", "01"}, {"A", "A"}}), 1, ",A,\n01," + cells({0}) + "\n"},
        {"2D+CPT", two_d_cpt, 4, ",A,,B,,\n,IN,OUT,IN,OUT,\n1," + cells({0, 1, 2, 3}) + ",\n"},
        {"3D", three_d(), 12,
         ",A,,,B,,,\n" ",X,Y,Z,X,Y,Z,\n"
         "1," + cells({0, 1, 2, 6, 7, 8}) + ",\n"
         "2," + cells({3, 4, 5, 9, 10, 11}) + ",\n"},
        {"BOILER", boiler, 24,
         ",01,,02,,03,,04,,\n" ",NORTH,SOUTH,NORTH,SOUTH,NORTH,SOUTH,NORTH,SOUTH,\n"
         "10FT," + cells({0, 1, 6, 7, 12, 13, 18, 19}) + ",\n"
         "20FT," + cells({2, 3, 8, 9, 14, 15, 20, 21}) + ",\n"
         "30FT," + cells({4, 5, 10, 11, 16, 17, 22, 23}) + ",\n"},
        {"2D-MANUAL", manual(10, {{"1", "2"}, {"E", "W"}}), 4,
         ",E,W,\n1," + cells({0, 2}) + "\n2," + cells({1, 3}) + "\n"},
        // One point a group: no empty titles behind the group's title.
        {"3D-MANUAL", manual(11, {{"1"}, {"R"}, {"P", "Q"}}), 2, ",P,Q,\n,1,1,\nR," + cells({0, 1}) + ",\n"},
        {"4D-MANUAL", manual(12, {{"1", "2"}, {"E", "W"}, {"U", "L"}, {"T1", "T2"}}), 16,
         ",T1,,,,T2,,,,\n" ",U,,L,,U,,L,,\n" ",1,2,1,2,1,2,1,2,\n"
         "E," + cells({0, 1, 4, 5, 8, 9, 12, 13}) + ",\n"
         "W," + cells({2, 3, 6, 7, 10, 11, 14, 15}) + ",\n"},
    };
    for (const auto& c : cases) expect_grid(with_readings(c.header, c.points), c.grid, c.name);
}

TEST(Grid, EmptySurveys) {
    const struct {
        const char* name;
        SurveyHeader header;
        std::string grid;
    } cases[] = {
        {"empty slots", survey(2, {{"01", "02"}, {"A", "C"}}), ",A,B,C,\n01,,,,\n02,,,,\n"},
        // Identifier texts are cut by count: the rows take what is left.
        {"a short text", SurveyHeader{.file_type = 2, .c0 = 2, .c1 = 2, .start_id = "A11", .end_id = "A22"},
         ",A1,A2,\n1,,,\n2,,,\n"},
        {"2D without dimensions", survey(2, {}), ",\n"}, {"3D without dimensions", survey(4, {}), ",\n,\n"},
        {"4D-MANUAL without labels", manual(12, {}), ",\n,\n,\n"},
    };
    for (const auto& c : cases) {
        ImageBuilder image = test::survey_image(c.header);
        image.resize(test::slot_at(c.header.file_type, 6));  // room for six empty slots
        expect_grid(image, c.grid, c.name);
    }
}

TEST(Grid, CellsOfEveryKindOfSlot) {
    // One row of the gauges: dimension 0 has one position, dimension 1 one
    // per cell.
    constexpr std::size_t ASCAN = 0x2000;
    constexpr std::size_t ASCAN_OF_VELOCITY = 0x3000;
    constexpr std::size_t BSCAN = 0x4000;
    constexpr std::size_t BSCAN_OF_VELOCITY = 0x6000;
    ImageBuilder image = test::survey_image(survey(2, {{"1", "1"}, {"A", "I"}}));
    test::write_gauge_setup(image, 2, 0, {});
    test::write_note(image, 2, 2, "PITTED");
    const std::vector<test::RecordImage> slots = {
        {},
        test::gauge_record({.resolution = 1, .thickness = 2500}),
        test::gauge_record({.los = 1, .thickness = 2500}),
        test::gauge_record({.los = 1, .note_mask = 4}),
        test::gauge_record({.los = 1, .note_mask = 0x8001}),
        test::gauge_record(test::velocity_reading(23300, 0)),
        test::link_record(2, ASCAN),
        test::link_record(2, ASCAN_OF_VELOCITY),
        test::link_record(4, BSCAN),
    };
    for (std::uint32_t i = 0; i < slots.size(); ++i) test::write_slot(image, 2, i, slots[i]);
    test::ThicknessAscanImage ascan;
    ascan.head = {.record_type = 3, .resolution = 1, .thickness = 4321};
    test::write_ascan_thickness(image, ASCAN, ascan);
    ascan.head = test::velocity_reading(23300, 1);
    ascan.head.record_type = 3;
    test::write_ascan_thickness(image, ASCAN_OF_VELOCITY, ascan);
    // A block head of the wrong type doesn't matter: the grid reads only the head.
    test::BscanImage bscan;
    bscan.head = test::gauge_record({.resolution = 1, .thickness = 777});
    test::write_bscan(image, BSCAN, bscan);
    const std::string titles = ",A,B,C,D,E,F,G,H,I,\n";
    expect_grid(image, titles + "1,, 0.250,--.---,PITTED,A:P,0.2330, 0.432, 5918, 0.078,\n", "gauges");

    // The head of a B-scan is tested for a velocity too.
    ImageBuilder velocity = test::survey_image(survey(2, {{"1", "1"}, {"A", "A"}}));
    test::write_slot(velocity, 2, 0, test::link_record(4, BSCAN_OF_VELOCITY));
    bscan.head = test::gauge_record(test::velocity_reading(23300, 0));
    bscan.head.word0 = (bscan.head.word0 & 0x1FFFFFFFu) | (5u << 29);
    test::write_bscan(velocity, BSCAN_OF_VELOCITY, bscan);
    expect_grid(velocity, ",A,\n1,0.2330,\n", "B-scan of a velocity");
}

// A lost reading shows its note; a note of 31 characters is kept as 30.
TEST(Grid, LongNoteOfALostReading) {
    ImageBuilder image = test::survey_image(survey(2, {{"1", "1"}, {"A", "A"}}));
    test::write_note(image, 2, 0, "CORROSION UNDER INSULATION 1234");
    test::write_slot(image, 2, 0, test::gauge_record({.los = 1, .note_mask = 1}));
    expect_grid(image, ",A,\n1,CORROSION UNDER INSULATION 123,\n", "note of 31");
}

TEST(Grid, LayoutOfTheGageType) {
    // The same readings under the precision gauge, an unknown gauge and the
    // flaw detector (box 1 is the gate 1 thickness).
    constexpr std::size_t ASCAN = 0x2000;
    constexpr std::size_t BSCAN = 0x3000;
    const test::RecordImage reading = test::gauge_record({.resolution = 1, .thickness = 2500});
    const test::RecordImage lost = test::gauge_record({.los = 1});
    for (std::uint32_t gage : {6u, 9u}) {
        SurveyHeader h = survey(2, {{"1", "1"}, {"A", "B"}});
        h.gage_type = gage;
        ImageBuilder image = test::survey_image(h);
        test::write_slot(image, 2, 0, reading);
        test::write_slot(image, 2, 1, lost);
        expect_grid(image, gage == 6 ? ",A,B,\n1,0.2500,-.---,\n" : ",A,B,\n1, 0.250,--.---,\n",
                    "gage " + std::to_string(gage));
    }

    // The flaw detector: an A-scan shows its own box values; a B-scan link
    // keeps its first word (and so its setup) and takes the head's values.
    SurveyHeader h = survey(2, {{"1", "1"}, {"A", "C"}});
    h.gage_type = 7;
    ImageBuilder image = test::survey_image(h);
    test::write_flaw_setup(image, 2, 0, {.box1_kind = 1, .resolution = 1});
    test::write_flaw_setup(image, 2, 1, {.box1_kind = 1, .units = 1, .resolution = 1});
    test::write_slot(image, 2, 0, test::flaw_record({.box_value = {2500, 0, 0}}));
    test::write_slot(image, 2, 1, test::link_record(2, ASCAN));
    test::write_slot(image, 2, 2, test::link_record(4, BSCAN, 1u << 24));
    test::write_ascan_flaw(image, ASCAN, {.box_value = {3750, 0, 0}});
    test::BscanImage bscan;
    bscan.head = test::flaw_record({.record_type = 5, .box_value = {12345, 0, 0}});
    test::write_bscan(image, BSCAN, bscan);
    expect_grid(image, ",A,B,C,\n1, 0.250, 0.375,  1.23,\n", "gage 7");
}

}  // namespace
}  // namespace ugf
