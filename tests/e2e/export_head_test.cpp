// The head of detailed output: the "UFH:" row, the column names, the value
// row, the label lists of manual files and the identity rows, for every file
// type with an export; and the file types without one. The body behind the
// head is the subject of the tests of whole detailed files; these surveys
// have no reading slots, so their runs end at the first reading.
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "detailed_support.h"

namespace ugf::test {
namespace {

// What a detailed run writes before the reading table, part by part.
const std::string UFH_CORROSION = PREAMBLE_CORROSION.substr(0, PREAMBLE_CORROSION.find('\n') + 1);
const std::string UFH_PRECISION = PREAMBLE_PRECISION.substr(0, PREAMBLE_PRECISION.find('\n') + 1);
const std::string UFH_FLAW = PREAMBLE_FLAW.substr(0, PREAMBLE_FLAW.find('\n') + 1);
const std::string UFH_UNKNOWN = "UFH: 1,PRODUCT: " + std::string(31, ' ') + ",VERSION: V3.03.03\n";
const std::string NAMES = "FILENAME,TYPE,FILE VERSION,";
const std::string TAIL = "PATTERN,# ID,# SETUP,# NOTES,CREATED,LAST SAVED";
const std::string NO_IDENTITY = IDENTITY_EMPTY;
// Every survey here has four notes. A note of 32 characters has its
// terminator in the next row's first byte; the output writes "%%" as "%",
// and a lone "%" as it is.
const std::string NOTES = "\nNOTES DESIGNATOR,NOTE TEXT\nA,CORROSION UNDER INSULATION\nB,LOSS 100%\nC,\nD," + std::string(32, 'N') +
                          "\nE,\nF,\nG,\nH,\nI,\nJ,\nK,\nL,\nM,\nN,\nO,\nP,50% WALL LOSS\n";

struct HeadCase {
    const char* name;
    SurveyHeader header;
    std::string head;  // the whole expected head
};

SurveyHeader header(std::uint32_t file_type, std::uint32_t gage_type) {
    SurveyHeader h{.file_type = file_type, .gage_type = gage_type};
    h.setup_count = 1;
    h.id_count = 1;
    return h;
}

std::vector<HeadCase> head_cases() {
    std::vector<HeadCase> cases;
    {
        SurveyHeader h = header(1, 5);
        set_ranges(h, {{"1", "3"}, {"1", "2"}});
        h.custom_point_labels[0] = "NORTH";
        h.custom_point_labels[1] = "SOUTH";
        h.custom_point_labels[2] = "EAST";
        h.id_count = 6;
        h.description = "FEED WATER LINE";
        h.location = "UNIT 3";
        h.inspector_id = "J. DOE";
        cases.push_back({"LINEAR+CPT", h,
                         UFH_CORROSION + NAMES +
                             "PREFIX,START COL,START CUSTOM POINT,END COL,END CUSTOM POINT,1ST INC,COL STEP," +
                             TAIL + "\n" + "FILE-NAME.CSV,LINEAR+CPT,29,,1,NORTH,2,EAST,CUSTOM POINT,1,STANDARD,6,1" +
                             "," + STAMPS + "DESCRIPTION:,FEED WATER LINE\nLOCATION:,UNIT 3\nINSPECTOR ID:,J. DOE\n"});
    }
    {
        SurveyHeader h = header(2, 6);
        h.prefix = "P";
        set_ranges(h, {{"01", "05"}, {"A", "C"}});
        h.walk_pattern = 2;
        h.id_count = 15;
        cases.push_back({"2D", h,
                         UFH_PRECISION + NAMES + "PREFIX,START COL,START ROW,END COL,END ROW,1ST INC,COL STEP,ROW STEP," +
                             TAIL + "\n" + "FILE-NAME.CSV,2D,29,P,A,01,C,05,ROW,1,1,ZIGZAG,15,1" + "," + STAMPS + NO_IDENTITY});
    }
    {
        // Every first increment but 1 names COL; no setups and an identifier
        // count other than the points: the counts show as they are.
        SurveyHeader h = header(2, 5);
        h.prefix = "Q";
        set_ranges(h, {{"A", "A"}, {"1", "2"}});
        h.first_inc = 0;
        h.setup_count = 0;
        h.id_count = 5;
        cases.push_back({"2D, first increment 0", h,
                         UFH_CORROSION + NAMES + "PREFIX,START COL,START ROW,END COL,END ROW,1ST INC,COL STEP,ROW STEP," +
                             TAIL + "\n" + "FILE-NAME.CSV,2D,29,Q,1,A,2,A,COL,1,1,STANDARD,2,0" + "," + STAMPS + NO_IDENTITY});
    }
    {
        // A second increment of 0 writes nothing, not even its comma.
        SurveyHeader h = header(3, 5);
        h.prefix = "B7-";
        set_ranges(h, {{"1", "2"}, {"1", "3"}, {"A", "B"}});
        h.custom_point_labels[0] = "IN";
        h.custom_point_labels[1] = "OUT";
        h.second_inc = 0;
        h.setup_count = 3;
        cases.push_back({"2D+CPT", h,
                         UFH_CORROSION + NAMES +
                             "PREFIX,START COL,START ROW,START CUSTOM POINT,END COL,END ROW,END CUSTOM POINT,"
                             "1ST INC,2ND INC,COL STEP,ROW STEP," +
                             TAIL + ",\n" + "FILE-NAME.CSV,2D+CPT,29,B7-,A,1,IN,B,3,OUT,CUSTOM POINT,1,1,STANDARD,12,3" +
                             "," + STAMPS + NO_IDENTITY});
    }
    {
        // A step above 65535 shows its low 16 bits; a pattern without a name
        // leaves its cell empty; increment 1 names the point.
        SurveyHeader h = header(4, 7);
        set_ranges(h, {{"000000", "200000", 100000}, {"01", "02"}, {"X", "Y"}});
        h.first_inc = 3;
        h.second_inc = 1;
        h.walk_pattern = 4;
        h.setup_count = 32;
        cases.push_back({"3D", h,
                         UFH_FLAW + NAMES +
                             "PREFIX,START COL,START ROW,START POINT,END COL,END ROW,END POINT,1ST INC,2ND INC,"
                             "COL STEP,ROW STEP,POINT STEP," +
                             TAIL + "\n" + "FILE-NAME.CSV,3D,29,,X,01,000000,Y,02,200000,COL,POINT,1,1,34464,,12,32" +
                             "," + STAMPS + NO_IDENTITY});
    }
    {
        SurveyHeader h = header(5, 7);
        set_ranges(h, {{"1", "2"}, {"10", "30", 10}, {"01", "04"}});
        h.custom_point_labels[0] = "NORTH";
        h.custom_point_labels[1] = "SOUTH";
        h.elevation_unit = 2;
        h.location = "BOILER 2, EAST WALL";
        cases.push_back({"BOILER", h,
                         UFH_FLAW + NAMES +
                             "PREFIX,START TUBE,START ELEV,START TEST PT,END TUBE,END ELEV,END TEST PT,ELEV UNITS,"
                             "1ST INC,2ND INC,TUBE STEP,ELEV STEP," +
                             TAIL + "\n" +
                             "FILE-NAME.CSV,BOILER,29,,01,10,NORTH,04,30,SOUTH,FT,CUSTOM POINT,ELEV,1,10,STANDARD,24,1" +
                             "," + STAMPS + "DESCRIPTION:,\nLOCATION:,BOILER 2, EAST WALL\nINSPECTOR ID:,\n"});
    }
    {
        SurveyHeader h = header(10, 6);
        set_manual_labels(h, {{"A1", "A2"}, {"R1"}});
        h.c0 = 2;
        h.c1 = 2;
        h.first_inc = 2;
        cases.push_back({"2D-MANUAL", h,
                         UFH_PRECISION + NAMES + "DIM1 LEN,DIM1 # LABELS,DIM2 LEN,DIM2 # LABELS,1ST INC," + TAIL +
                             "\n" + "FILE-NAME.CSV,2D-MANUAL,29,2,1,2,2,DIM1,STANDARD,2,1" + "," + STAMPS +
                             "DIM1 LABELS:\nR1,\n\nDIM2 LABELS:\nA1,\nA2,\n\n" + NO_IDENTITY});
    }
    {
        SurveyHeader h = header(11, 9);
        set_manual_labels(h, {{"P1", "P2", "P3", "P4"}, {"N", "NE", "E", "SE", "S"}, {"TOP", "BOTTOM"}});
        h.c0 = 2;
        h.c1 = 4;
        h.c2 = 3;
        h.walk_pattern = 1;
        cases.push_back({"3D-MANUAL", h,
                         UFH_UNKNOWN + NAMES +
                             "DIM1 LEN,DIM1 # LABELS,DIM2 LEN,DIM2 # LABELS,DIM3 LEN,DIM3 # LABELS,1ST INC,2ND INC," +
                             TAIL + "\n" + "FILE-NAME.CSV,3D-MANUAL,29,3,2,4,5,2,4,DIM3,DIM2,REVERSE,40,1" + "," + STAMPS +
                             "DIM1 LABELS:\nTOP,\nBOTTOM,\n\nDIM2 LABELS:\nN,\nNE,\nE,\nSE,\nS,\n\n"
                             "DIM3 LABELS:\nP1,\nP2,\nP3,\nP4,\n\n" +
                             NO_IDENTITY + NOTES});
    }
    {
        // The unused dimension 3 writes no label block; an identifier count
        // of 0 shows 0 whatever the extent.
        SurveyHeader h = header(12, 5);
        set_manual_labels(h, {{"L", "R"}, {"MID"}, {"DECK"}});
        h.c0 = 1;
        h.c1 = 1;
        h.c2 = 3;
        h.c3 = 5;
        h.walk_pattern = 3;
        h.id_count = 0;
        h.setup_count = 0;
        cases.push_back({"4D-MANUAL", h,
                         UFH_CORROSION + NAMES +
                             "DIM1 LEN,DIM1 # LABELS,DIM2 LEN,DIM2 # LABELS,DIM3 LEN,DIM3 # LABELS,DIM4 LEN,"
                             "DIM4 # LABELS,1ST INC,2ND INC,3RD INC," +
                             TAIL + "\n" + "FILE-NAME.CSV,4D-MANUAL,29,5,0,3,1,1,1,1,2,DIM4,DIM3,DIM2,REVERSE ZIGZAG,0,0" +
                             "," + STAMPS + "DIM2 LABELS:\nDECK,\n\nDIM3 LABELS:\nMID,\n\nDIM4 LABELS:\nL,\nR,\n\n" + NO_IDENTITY});
    }
    {
        // 65536 x 65535 points: the count passes 2^31 and prints unsigned;
        // the setup count is the byte as stored.
        SurveyHeader h = header(2, 5);
        set_ranges(h, {{"00001", "65536"}, {"00001", "65535"}});
        h.setup_count = 255;
        cases.push_back({"2D, counts past 2^31", h,
                         UFH_CORROSION + NAMES + "PREFIX,START COL,START ROW,END COL,END ROW,1ST INC,COL STEP,ROW STEP," +
                             TAIL + "\nFILE-NAME.CSV,2D,29,,00001,00001,65535,65536,ROW,1,1,STANDARD,4294901760,255" +
                             "," + STAMPS});
    }
    {
        // LINEAR writes its head with the body; without points the last
        // identifier has no text.
        SurveyHeader h = header(0, 5);
        h.prefix = "TK";
        h.setup_count = 0;
        cases.push_back({"LINEAR without points", h,
                         UFH_CORROSION + NAMES + "PREFIX,START COL,END COL,COL STEP," + TAIL +
                             "\nFILE-NAME.CSV,LINEAR,29,TK,,,0,STANDARD,0,0" + "," + STAMPS + NO_IDENTITY + NOTES});
    }
    return cases;
}

TEST(DetailedHead, EveryFileTypeWithAnExport) {
    for (const HeadCase& c : head_cases()) {
        ImageBuilder image = survey_image(c.header);
        write_note(image, c.header.file_type, 0, "CORROSION UNDER INSULATION");
        write_note(image, c.header.file_type, 1, "LOSS 100%");
        write_note(image, c.header.file_type, 3, std::string(32, 'N'));
        write_note(image, c.header.file_type, 15, "50%% WALL LOSS");
        const Conversion run = convert(image, "d", "v");
        EXPECT_EQ(run.output.value_or("").substr(0, c.head.size()), c.head) << c.name;
        std::string echo = console_of_success(c.head);
        echo.erase(echo.find("STATUS: Export done"));
        EXPECT_EQ(run.run.console.substr(0, echo.size()), echo) << c.name;
    }
}

TEST(DetailedHead, TypesWithoutAnExportLeaveAnEmptyFile) {
    for (std::uint32_t type : {6u, 7u, 9u, 13u}) {
        for (const char* form : {"d", "g"}) expect_fails_after(survey_image(header(type, 5)), form, "");
    }
}


// The identifiers of the reading rows of a detailed run, one after another.
std::string row_identifiers(const std::string& output) {
    std::string ids;
    std::size_t at = output.find("\nID,");
    while ((at = output.find('\n', at + 1)) != std::string::npos && at + 1 < output.size() && output[at + 1] != '\n') {
        ids += (ids.empty() ? "" : " ") + output.substr(at + 1, output.find(',', at) - at - 1);
    }
    return ids;
}

// Identifiers composed by the rules of each kind of survey.
TEST(DetailedHead, IdentifiersOfEveryKind) {
    const auto labelled = [](std::uint32_t type, const std::vector<std::vector<std::string>>& labels,
                             std::array<std::uint32_t, 4> counts) {
        SurveyHeader h = header(type, 5);
        set_manual_labels(h, labels);
        h.c0 = counts[0], h.c1 = counts[1], h.c2 = counts[2], h.c3 = counts[3];
        return h;
    };
    SurveyHeader two_d_cpt = header(3, 5);
    two_d_cpt.prefix = "V";
    set_ranges(two_d_cpt, {{"1", "2"}, {"1", "1"}, {"A", "A"}});
    two_d_cpt.custom_point_labels = {"IN", "OUT"};
    SurveyHeader boiler = header(5, 5);
    set_ranges(boiler, {{"1", "2"}, {"10", "10", 10}, {"07", "07"}});
    boiler.custom_point_labels = {"NW", "SE"};
    boiler.elevation_unit = 2;
    // Custom points past the 20 labels have no text.
    SurveyHeader many_points = header(1, 5);
    set_ranges(many_points, {{"01", "21"}, {"1", "1"}});
    for (int i = 0; i < 20; ++i) many_points.custom_point_labels[static_cast<std::size_t>(i)] = std::string(1, 'A' + i);
    // An elevation of 19 characters and its unit make 21: the dimension text
    // keeps 20.
    SurveyHeader long_elevation = header(5, 5);
    set_ranges(long_elevation, {{"1", "2"}, {"0000000000000000010", "0000000000000000030", 10}});
    long_elevation.custom_point_labels[0] = "NORTH";
    long_elevation.elevation_unit = 2;
    const struct {
        SurveyHeader header;
        const char* ids;
    } cases[] = {
        {two_d_cpt, "VA1IN VA1OUT"},
        {boiler, "0710FTNW 0710FTSE"},
        {long_elevation, "0000000000000000010F 0000000000000000010F 0000000000000000020F 0000000000000000020F "
                         "0000000000000000030F 0000000000000000030F"},
        {many_points, "1A 1B 1C 1D 1E 1F 1G 1H 1I 1J 1K 1L 1M 1N 1O 1P 1Q 1R 1S 1T 1"},
        {labelled(11, {{"1", "2"}, {"E"}, {"T3"}}, {1, 1, 2, 0}), "T3E1 T3E2"},
        {labelled(12, {{"1", "2"}, {"W"}, {"TOP"}, {"K1"}}, {1, 1, 3, 2}), "K1TOPW1 K1TOPW2"},
    };
    for (const auto& c : cases) {
        ImageBuilder image = survey_image(c.header);
        write_slot(image, c.header.file_type, 0, gauge_record({.resolution = 1, .thickness = 12345}));
        image.resize(slot_at(c.header.file_type, 21));
        const Conversion run = convert(image, "d");
        EXPECT_EQ(run.run.status, 0) << c.ids;
        EXPECT_EQ(row_identifiers(run.output.value_or("")), c.ids);
    }
}

}  // namespace
}  // namespace ugf::test
