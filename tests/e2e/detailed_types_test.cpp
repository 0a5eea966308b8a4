// The detailed file of the survey kinds that no other whole-file test covers,
// each a box of two points of the corrosion gauge with a reading and an empty
// slot: their head, the custom point list where the kind has custom points,
// identifiers composed by the kind's rules, and the setup table.
#include <gtest/gtest.h>

#include <string>

#include "detailed_support.h"

namespace ugf::test {
namespace {

const std::string READING_ROW = ", 1.235,IN,OFF,OFF,LOW ,OFF,,0,STD,OFF,OFF,,,,,,\n";
const std::string EMPTY_ROW = ",,,,,,,,,,,,,,,,,\n";

ImageBuilder two_point_survey(const SurveyHeader& h) {
    ImageBuilder image = survey_image(h);
    write_slot(image, h.file_type, 0, gauge_record({.resolution = 1, .thickness = 12345}));
    write_slot(image, h.file_type, 1, {});
    return image;
}

TEST(DetailedTypes, TwoDimensionsWithCustomPoints) {
    SurveyHeader h = survey_header(3, 5, "V");
    h.id_count = 2;
    set_ranges(h, {{"1", "2"}, {"1", "1"}, {"A", "A"}});
    h.custom_point_labels[0] = "IN";
    h.custom_point_labels[1] = "OUT";
    expect_converts(
        two_point_survey(h), "d",
        PREAMBLE_CORROSION +
            "PREFIX,START COL,START ROW,START CUSTOM POINT,END COL,END ROW,END CUSTOM POINT,"
            "1ST INC,2ND INC,COL STEP,ROW STEP,PATTERN,# ID,# SETUP,# NOTES,CREATED,LAST SAVED,\n"
            "FILE-NAME.CSV,2D+CPT,29,V,A,1,IN,A,1,OUT,CUSTOM POINT,ROW,1,1,STANDARD,2,0," + STAMPS +
            IDENTITY_EMPTY + CUSTOM_POINTS_TITLE + "0,IN\n1,OUT\n" + CUSTOM_POINTS_2_TO_19 +
            NOTES_EMPTY + TITLES_CORROSION + "VA1IN" + READING_ROW + "VA1OUT" + EMPTY_ROW +
            SETUP_TITLES_CORROSION);
}

TEST(DetailedTypes, BoilerWithElevationUnit) {
    SurveyHeader h = survey_header(5, 5);
    h.id_count = 2;
    h.elevation_unit = 2;
    set_ranges(h, {{"1", "2"}, {"10", "10", 10}, {"07", "07"}});
    h.custom_point_labels[0] = "NW";
    h.custom_point_labels[1] = "SE";
    expect_converts(
        two_point_survey(h), "d",
        PREAMBLE_CORROSION +
            "PREFIX,START TUBE,START ELEV,START TEST PT,END TUBE,END ELEV,END TEST PT,ELEV UNITS,"
            "1ST INC,2ND INC,TUBE STEP,ELEV STEP,PATTERN,# ID,# SETUP,# NOTES,CREATED,LAST SAVED\n"
            "FILE-NAME.CSV,BOILER,29,,07,10,NW,07,10,SE,FT,CUSTOM POINT,ELEV,1,10,STANDARD,2,0," +
            STAMPS + IDENTITY_EMPTY + CUSTOM_POINTS_TITLE + "0,NW\n1,SE\n" + CUSTOM_POINTS_2_TO_19 +
            NOTES_EMPTY + TITLES_CORROSION + "0710FTNW" + READING_ROW + "0710FTSE" + EMPTY_ROW +
            SETUP_TITLES_CORROSION);
}

TEST(DetailedTypes, ThreeLabelledDimensions) {
    SurveyHeader h = survey_header(11, 5);
    h.id_count = 2;
    set_manual_labels(h, {{"1", "2"}, {"E"}, {"T3"}});
    h.c0 = 1;
    h.c1 = 1;
    h.c2 = 2;
    expect_converts(
        two_point_survey(h), "d",
        PREAMBLE_CORROSION +
            "DIM1 LEN,DIM1 # LABELS,DIM2 LEN,DIM2 # LABELS,DIM3 LEN,DIM3 # LABELS,1ST INC,2ND INC,"
            "PATTERN,# ID,# SETUP,# NOTES,CREATED,LAST SAVED\n"
            "FILE-NAME.CSV,3D-MANUAL,29,2,1,1,1,1,2,DIM3,DIM2,STANDARD,2,0," + STAMPS +
            "DIM1 LABELS:\nT3,\n\nDIM2 LABELS:\nE,\n\nDIM3 LABELS:\n1,\n2,\n\n" + IDENTITY_EMPTY +
            NOTES_EMPTY + TITLES_CORROSION + "T3E1" + READING_ROW + "T3E2" + EMPTY_ROW +
            SETUP_TITLES_CORROSION);
}

TEST(DetailedTypes, FourLabelledDimensions) {
    SurveyHeader h = survey_header(12, 5);
    h.id_count = 2;
    set_manual_labels(h, {{"1", "2"}, {"W"}, {"TOP"}, {"K1"}});
    h.c0 = 1;
    h.c1 = 1;
    h.c2 = 3;
    h.c3 = 2;
    expect_converts(
        two_point_survey(h), "d",
        PREAMBLE_CORROSION +
            "DIM1 LEN,DIM1 # LABELS,DIM2 LEN,DIM2 # LABELS,DIM3 LEN,DIM3 # LABELS,DIM4 LEN,"
            "DIM4 # LABELS,1ST INC,2ND INC,3RD INC,PATTERN,# ID,# SETUP,# NOTES,CREATED,"
            "LAST SAVED\n"
            "FILE-NAME.CSV,4D-MANUAL,29,2,1,3,1,1,1,1,2,DIM4,DIM3,DIM2,STANDARD,2,0," + STAMPS +
            "DIM1 LABELS:\nK1,\n\nDIM2 LABELS:\nTOP,\n\nDIM3 LABELS:\nW,\n\nDIM4 LABELS:\n1,\n2,\n\n" +
            IDENTITY_EMPTY + NOTES_EMPTY + TITLES_CORROSION + "K1TOPW1" + READING_ROW + "K1TOPW2" +
            EMPTY_ROW + SETUP_TITLES_CORROSION);
}

}  // namespace
}  // namespace ugf::test
