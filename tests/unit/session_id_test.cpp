// Identifiers and dimension texts of an opened session, by file type: the
// counted texts, custom point labels, elevation units, manual labels and the
// identifiers kept in the slots of MANUAL files.
#include <gtest/gtest.h>

#include <string>

#include "ident/session_id.h"
#include "support/scratch.h"
#include "support/survey_image.h"

namespace ugf {
namespace {

using test::ImageBuilder;
using test::SurveyHeader;

// A built image opened as the session.
struct OpenSurvey {
    test::ScratchDir dir;
    DlSession session;
    explicit OpenSurvey(const ImageBuilder& image) {
        image.save(dir.file("survey.ugf"));
        EXPECT_EQ(open_datalogger_session(session, dir.file("survey.ugf").c_str()), 1);
    }
    ~OpenSurvey() { dl_close(session.stream); }

    std::string point(std::int64_t index, int with_prefix) {
        char out[ID_TEXT_SIZE] = {};
        session_point_id(session, index, out, with_prefix);
        return out;
    }
    std::string dimension(std::int64_t index, int d, int with_unit = 1) {
        char out[ID_TEXT_SIZE] = {};
        session_dimension_text(session, index, out, d, with_unit);
        return out;
    }
};

// Dimension 2 from 01 to 04, dimension 1 from 10 to 30 by 10, custom points
// 1 to 2 named NORTH and SOUTH.
SurveyHeader boiler_header(std::uint32_t elevation_unit) {
    SurveyHeader h;
    h.file_type = 5;
    h.elevation_unit = elevation_unit;
    test::set_ranges(h, {{"1", "2"}, {"10", "30", 10}, {"01", "04"}});
    h.custom_point_labels[0] = "NORTH";
    h.custom_point_labels[1] = "SOUTH";
    return h;
}

TEST(SessionPointId, ThreeDimensionsWithAndWithoutPrefix) {
    SurveyHeader h;
    h.file_type = 4;
    h.prefix = "T1-";
    test::set_ranges(h, {{"1", "2"}, {"01", "03"}, {"A", "C"}});
    OpenSurvey o(test::survey_image(h));
    const struct {
        std::int64_t index;
        const char* with_prefix;
        const char* without;
    } cases[] = {
        {0, "T1-A011", "A011"}, {1, "T1-A012", "A012"}, {2, "T1-A021", "A021"},
        {9, "T1-B022", "B022"}, {17, "T1-C032", "C032"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(o.point(c.index, 1), c.with_prefix) << c.index;
        EXPECT_EQ(o.point(c.index, 0), c.without) << c.index;
    }
    o.point(0, 1);
    EXPECT_EQ(cursor_flat_index(o.session.id_spec.cursor), 0) << "the cursor stands where it was sent";
}

TEST(SessionPointId, BoilerUnitStandsBehindTheElevation) {
    const struct {
        std::uint32_t unit;
        const char* id;
        const char* elevation;
    } cases[] = {
        {2, "0220FTSOUTH", "20FT"},
        {0, "0220SOUTH", "20"},
        {4, "0220MSOUTH", "20M"},
        {5, "0220SOUTH", "20"},  // a unit without a text adds nothing
    };
    for (const auto& c : cases) {
        OpenSurvey o(test::survey_image(boiler_header(c.unit)));
        EXPECT_EQ(o.point(9, 1), c.id) << c.unit;
        EXPECT_EQ(o.dimension(9, 2), "02") << c.unit;
        EXPECT_EQ(o.dimension(9, 1), c.elevation) << c.unit;
        EXPECT_EQ(o.dimension(9, 1, 0), "20") << c.unit;
        EXPECT_EQ(o.dimension(9, 0), "SOUTH") << c.unit;
    }
}

TEST(SessionPointId, ManualFilesJoinTheirLabels) {
    SurveyHeader h;
    h.file_type = 12;
    test::set_manual_labels(h, {{"1", "2", "3"}, {"E", "W"}, {"TOP", "BOT"}, {"TANK1", "TANK2"}});
    OpenSurvey four(test::survey_image(h));
    EXPECT_EQ(four.point(23, 1), "TANK2BOTW3");
    EXPECT_EQ(four.dimension(23, 3), "TANK2");
    EXPECT_EQ(four.dimension(23, 0), "3");

    // A dimension whose step is 0 drops out of the identifier, not out of its title.
    h.steps[2] = 0;
    OpenSurvey stepless(test::survey_image(h));
    EXPECT_EQ(stepless.point(23, 1), "TANK2W3");
    EXPECT_EQ(stepless.dimension(23, 2), "BOT");

    // 2D-MANUAL has no dimension 2, whatever the label table holds there.
    h.file_type = 10;
    h.steps = {1, 1, 1, 1};
    test::set_manual_labels(h, {{"1", "2"}, {"E", "W"}});
    h.manual_labels[2] = {"STRAY"};
    OpenSurvey two(test::survey_image(h));
    EXPECT_EQ(two.point(3, 1), "W2");
    EXPECT_EQ(two.dimension(3, 2), "");
    EXPECT_EQ(two.dimension(3, 1), "W");
}

TEST(SessionStoredId, TheSlotsOfManualFilesKeepTheirIdentifiers) {
    SurveyHeader h;
    h.file_type = 8;
    h.prefix = "IGNORED";
    ImageBuilder image = test::survey_image(h);
    test::write_slot(image, 8, 0, test::gauge_record({.thickness = 2500}), "VALVE-7");
    test::write_slot(image, 8, 1, test::gauge_record({}), std::string(20, 'X'));
    test::write_slot(image, 8, 2, test::gauge_record({}), std::string(21, 'Y'));  // no terminator
    test::write_slot(image, 8, 3, test::gauge_record({.thickness = 2500}), "CUT");
    image.resize(test::slot_at(8, 3) + 8);  // slot 3 is cut inside its record
    OpenSurvey o(image);

    EXPECT_EQ(o.point(0, 1), "VALVE-7");
    EXPECT_EQ(o.point(1, 0), std::string(20, 'X'));
    char out[ID_TEXT_SIZE] = "KEPT";
    session_stored_id(o.session, 2, out);
    EXPECT_STREQ(out, "KEPT") << "a text that can't be read leaves the output";
    testing::internal::CaptureStdout();
    session_stored_id(o.session, 3, out);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "ERROR: FS_READ_ERROR.\n");
    EXPECT_STREQ(out, "") << "a record that can't be read empties the output";
}

}  // namespace
}  // namespace ugf
