// Identifiers and dimension texts of an opened session, by file type: the
// counted texts, custom point labels, elevation units, manual labels and the
// identifiers kept in the slots of MANUAL files.
#include <gtest/gtest.h>

#include <string>

#include "store/session_id.h"
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
};

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
