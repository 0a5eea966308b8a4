// Session open on built images: setups of both layouts and every gage
// family, notes, manual labels, the identifier split and the cursor, the
// refusal by type and version, the limits of the data model, and
// the two label operations.
#include <gtest/gtest.h>

#include <string>

#include "file/session.h"
#include "support/scratch.h"
#include "support/survey_image.h"

namespace ugf {
namespace {

using test::ImageBuilder;
using test::SurveyHeader;

const char* const READ_ERROR = "ERROR: FS_READ_ERROR.\n";

template <typename Read>
std::string console_of(Read read) {
    testing::internal::CaptureStdout();
    read();
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

// An image saved and opened as a session, with the open's result and console text.
struct Opened {
    test::ScratchDir dir;
    DlSession session;
    int result = -1;
    std::string console;
    explicit Opened(const ImageBuilder& image) {
        image.save(dir.file("survey.ugf"));
        console = console_of([&] { result = open_datalogger_session(session, dir.file("survey.ugf").c_str()); });
    }
    ~Opened() { dl_close(session.stream); }
};

// "3D" survey: columns A to C, rows 01 to 03, points 1 to 2 (18 points).
SurveyHeader three_d_header() {
    SurveyHeader h;
    h.file_type = 4;
    h.prefix = "T1-";
    test::set_ranges(h, {{"1", "2"}, {"01", "03"}, {"A", "C"}});
    return h;
}

TEST(SessionOpen, NotesAreCutToThirtyAndALongNoteRunsIntoTheNextRow) {
    struct Case {
        const char* name;
        std::string note;       // note 3
        std::string next_note;  // note 4
        int ok;
        std::string kept;
    } cases[] = {
        {"thirty", std::string(30, 'A'), "", 1, std::string(30, 'A')},
        {"thirty-one", std::string(31, 'B'), "", 1, std::string(30, 'B')},
        {"thirty-two, next row empty", std::string(32, 'C'), "", 1, std::string(30, 'C')},
        {"thirty-two, next row holds a note", std::string(32, 'D'), "X", 0, ""},
        {"empty", "", "NEXT", 1, ""},
    };
    for (std::uint32_t file_type : {0u, 12u}) {
        for (const Case& c : cases) {
            SurveyHeader h;
            h.file_type = file_type;
            if (file_type == 12) test::set_manual_labels(h, {{"1"}, {"2"}, {"3"}, {"4"}});
            ImageBuilder image = test::survey_image(h);
            test::write_note(image, file_type, 0, "FIRST NOTE");
            test::write_note(image, file_type, 3, c.note);
            test::write_note(image, file_type, 4, c.next_note);
            test::write_note(image, file_type, 15, "LAST NOTE");
            Opened o(image);
            EXPECT_EQ(o.result, c.ok) << c.name;
            EXPECT_EQ(o.console, "") << c.name;
            if (c.ok) {
                EXPECT_EQ(std::string(o.session.note_table[0]), "FIRST NOTE");
                EXPECT_EQ(std::string(o.session.note_table[3]), c.kept) << c.name;
                EXPECT_EQ(std::string(o.session.note_table[4]), c.next_note) << c.name;
                EXPECT_EQ(std::string(o.session.note_table[15]), "LAST NOTE");
            }
        }
    }
}

TEST(SessionOpen, LastNoteOfThirtyTwoRunsIntoTheRecordTable) {
    for (std::uint32_t first_slot_byte : {0u, 0x20u}) {
        SurveyHeader h;
        ImageBuilder image = test::survey_image(h);
        test::write_note(image, 0, 15, std::string(32, 'Z'));
        image.u8(test::record_table_at(0), first_slot_byte);
        Opened o(image);
        EXPECT_EQ(o.result, first_slot_byte == 0 ? 1 : 0);
        EXPECT_EQ(o.console, "");
    }
    SurveyHeader h;
    ImageBuilder image = test::survey_image(h);
    test::write_note(image, 0, 15, std::string(32, 'Z'));
    image.resize(test::record_table_at(0));
    Opened o(image);
    EXPECT_EQ(o.result, 0);
    EXPECT_EQ(o.console, READ_ERROR) << "the terminator would be the first byte past the end";
}

TEST(SessionOpen, ManualTypesLoadOnlyTheirOwnDimensions) {
    // Type 10 uses dimensions 0 and 1: the labels and counts of 2 and 3 are
    // neither read nor checked.
    SurveyHeader h;
    h.file_type = 10;
    test::set_manual_labels(h, {{"P1", "P2"}, {std::string(19, 'L')}, {"NOT", "READ"}});
    h.dim_label_count[2] = 500;
    h.dim_label_count[3] = 101;
    Opened o(test::survey_image(h));
    ASSERT_EQ(o.result, 1);
    EXPECT_STREQ(o.session.dim_label_table[1][0], std::string(19, 'L').c_str());
    EXPECT_STREQ(o.session.dim_label_table[0][1], "P2");
    EXPECT_STREQ(o.session.dim_label_table[2][0], "");
    EXPECT_EQ(o.session.id_spec.cursor.dim_size[2], 0);

    // A label without a terminator in its 20 bytes fails the open silently.
    h.manual_labels[1][0] = std::string(20, 'L');
    Opened bad(test::survey_image(h));
    EXPECT_EQ(bad.result, 0);
    EXPECT_EQ(bad.console, "");
}

TEST(SessionOpen, RefusedByTypeAndVersion) {
    for (std::uint32_t file_type = 0; file_type <= 14; ++file_type) {
        for (std::uint32_t version : {8u, 20u, 21u, 22u, 23u, 24u, 0xFFFFu}) {
            SurveyHeader h;
            h.file_type = file_type;
            h.file_version = version;
            if (file_type >= 10 && file_type <= 12) test::set_manual_labels(h, {{"A"}, {"B"}, {"C"}, {"D"}});
            Opened o(test::survey_image(h));
            const bool refused = file_type > 5 && version >= 21 && version <= 23;
            EXPECT_EQ(o.result, refused ? 0 : 1) << file_type << " " << version;
            EXPECT_EQ(o.console, "");
            EXPECT_EQ(o.session.is_open, refused ? 0 : 1);
        }
    }
}

TEST(SessionOpen, LimitsOfTheDataModel) {
    struct Case {
        const char* name;
        std::uint32_t file_type;
        std::uint32_t c0, c1, c2;
        std::array<std::uint32_t, 4> label_counts;
        int ok;
    } cases[] = {
        {"c2 of 18", 4, 1, 1, 18, {}, 1},
        {"c2 of 19", 4, 1, 1, 19, {}, 0},
        {"c1 of 19", 2, 1, 19, 0, {}, 1},
        {"c1 of 20", 2, 1, 20, 0, {}, 0},
        {"c0 of 20", 0, 20, 0, 0, {}, 1},
        {"c0 of 21", 0, 21, 0, 0, {}, 0},
        {"counts of a manual file are display lengths", 10, 255, 255, 255, {1, 1, 0, 0}, 1},
        {"100 labels", 11, 0, 0, 0, {100, 1, 100, 0}, 1},
        {"101 labels of a used dimension", 11, 0, 0, 0, {100, 1, 101, 0}, 0},
        {"101 labels of dimension 0", 12, 0, 0, 0, {101, 1, 1, 1}, 0},
        {"dimension 0 unused below a used one", 2, 0, 2, 0, {}, 0},
        {"dimension 1 unused below a used one", 4, 1, 0, 1, {}, 0},
        {"no dimension at all", 4, 0, 0, 0, {}, 1},
        {"manual: no label below a labelled dimension", 11, 0, 0, 0, {0, 2, 2, 0}, 0},
        {"manual: dimension 3 unused above the others", 12, 0, 0, 0, {2, 2, 2, 0}, 1},
        {"manual: nothing labelled", 12, 0, 0, 0, {0, 0, 0, 0}, 1},
    };
    for (const Case& c : cases) {
        SurveyHeader h;
        h.file_type = c.file_type;
        // Texts as long as the counts ask, one character for each dimension.
        h.c0 = c.c0;
        h.c1 = c.c1;
        h.c2 = c.c2;
        const std::size_t length = std::min<std::size_t>(c.c0 + c.c1 + c.c2, 20);
        h.start_id = std::string(length, '1');
        h.end_id = std::string(length, '2');
        if (c.file_type >= 10) {
            for (std::size_t d = 0; d < 4; ++d) {
                h.dim_label_count[d] = c.label_counts[d];
                for (std::uint32_t j = 0; j < c.label_counts[d] && j < 100; ++j) {
                    h.manual_labels[d].push_back(std::to_string(j));
                }
            }
        }
        Opened o(test::survey_image(h));
        EXPECT_EQ(o.result, c.ok) << c.name;
        EXPECT_EQ(o.console, "") << c.name;
    }
}

TEST(SessionOpen, AStepOfZeroLeavesADimensionUnused) {
    SurveyHeader h;
    h.file_type = 2;
    test::set_ranges(h, {{"1", "4", 1}, {"A", "C", 0}});
    Opened top_unused(test::survey_image(h));
    ASSERT_EQ(top_unused.result, 1);
    EXPECT_EQ(top_unused.session.id_spec.cursor.dim_size[1], 0);
    EXPECT_EQ(point_total_of(top_unused.session.id_spec.cursor), 4u);

    test::set_ranges(h, {{"1", "4", 0}, {"A", "C", 1}});
    Opened bottom_unused(test::survey_image(h));
    EXPECT_EQ(bottom_unused.result, 0) << "an unused dimension below a used one";
}

TEST(SessionOpen, IdentifiersAreCutByCountAlone) {
    struct Case {
        std::uint32_t c0, c1, c2;
        std::string start, end;
        const char* dims_start[3];  // dimension 0, 1, 2
        const char* dims_end[3];
    } cases[] = {
        {3, 2, 1, "A0112", "C0315", {"12", "01", "A"}, {"15", "03", "C"}},  // short: dimension 0 takes what is there
        {2, 0, 0, "07", "11", {"07", "", ""}, {"11", "", ""}},
        {1, 1, 2, "AB-1", "AB-3", {"1", "-", "AB"}, {"3", "-", "AB"}},  // what the text holds plays no part
        {0, 0, 0, "A1", "B2", {"", "", ""}, {"", "", ""}},
        {20, 0, 0, "00000000000000000001", "00000000000000000009",
         {"00000000000000000001", "", ""}, {"00000000000000000009", "", ""}},
    };
    for (const Case& c : cases) {
        SurveyHeader h;
        h.file_type = 4;
        h.c0 = c.c0;
        h.c1 = c.c1;
        h.c2 = c.c2;
        h.start_id = c.start;
        h.end_id = c.end;
        Opened o(test::survey_image(h));
        ASSERT_EQ(o.result, 1) << c.start;
        for (int d = 0; d < 3; ++d) {
            EXPECT_STREQ(o.session.id_spec.dims[static_cast<std::size_t>(d)].start_text, c.dims_start[d]) << c.start << " " << d;
            EXPECT_STREQ(o.session.id_spec.dims[static_cast<std::size_t>(d)].end_text, c.dims_end[d]) << c.start << " " << d;
        }
    }
}

TEST(SessionOpen, CursorStandsOnTheLowThirtyTwoBitsOfTheCurrentIndex) {
    struct Case {
        std::uint64_t stored;  // the five bytes: the first one has no effect
        std::int64_t p0, p1, p2;
    } cases[] = {{0, 0, 0, 0}, {17, 1, 2, 2}, {0x100000005ull, 1, 2, 0}, {0xFF00000000ull, 0, 0, 0}};
    for (const Case& c : cases) {
        SurveyHeader h = three_d_header();
        h.current_index = c.stored;
        Opened o(test::survey_image(h));
        ASSERT_EQ(o.result, 1);
        EXPECT_EQ(o.session.current_index, c.stored & 0xFFFFFFFFu);
        EXPECT_EQ(o.session.id_spec.cursor.dim_position[0], c.p0) << c.stored;
        EXPECT_EQ(o.session.id_spec.cursor.dim_position[1], c.p1) << c.stored;
        EXPECT_EQ(o.session.id_spec.cursor.dim_position[2], c.p2) << c.stored;
    }
}

TEST(SessionOpen, TextFieldsWithoutTerminatorFailSilently) {
    struct Case {
        const char* name;
        void (*set)(SurveyHeader&);
        int ok;
    } cases[] = {
        {"prefix of 19", [](SurveyHeader& h) { h.prefix = std::string(19, 'P'); }, 1},
        {"prefix of 20", [](SurveyHeader& h) { h.prefix = std::string(20, 'P'); }, 0},
        {"start of 20", [](SurveyHeader& h) { h.start_id = std::string(20, '1'); }, 1},
        {"start of 21", [](SurveyHeader& h) { h.start_id = std::string(21, '1'); }, 0},
        {"end of 21", [](SurveyHeader& h) { h.end_id = std::string(21, '1'); }, 0},
        {"description of 32", [](SurveyHeader& h) { h.description = std::string(32, 'D'); }, 1},
        {"description of 33", [](SurveyHeader& h) { h.description = std::string(33, 'D'); }, 0},
        {"inspector of 33", [](SurveyHeader& h) { h.inspector_id = std::string(33, 'I'); }, 0},
        {"location of 33", [](SurveyHeader& h) { h.location = std::string(33, 'L'); }, 0},
    };
    for (const Case& c : cases) {
        SurveyHeader h;
        c.set(h);
        Opened o(test::survey_image(h));
        EXPECT_EQ(o.result, c.ok) << c.name;
        EXPECT_EQ(o.console, "") << c.name;
    }
}

TEST(LabelOperations, CustomPointLabelsFromTheHeader) {
    SurveyHeader h;
    h.file_type = 5;
    h.custom_point_labels[0] = "NORTH";
    h.custom_point_labels[1] = "SOUTH";
    h.custom_point_labels[2] = std::string(20, 'X');  // no terminator
    h.custom_point_labels[19] = std::string(19, 'Y');
    Opened o(test::survey_image(h));
    ASSERT_EQ(o.result, 1);
    const LabelOp op = custom_point_label_op(o.session);
    const char* first = op.label(op.context, 0, 0);
    EXPECT_STREQ(first, "NORTH");
    EXPECT_EQ(op.label(op.context, 1, 0), first) << "one shared buffer";
    EXPECT_STREQ(first, "SOUTH");
    EXPECT_STREQ(op.label(op.context, 2, 0), "");
    EXPECT_STREQ(op.label(op.context, 19, 0), std::string(19, 'Y').c_str());
    EXPECT_STREQ(op.label(op.context, 20, 0), "");
    EXPECT_STREQ(op.label(op.context, 0xFFFF, 0), "");
}

TEST(LabelOperations, CustomPointLabelThatCantBeRead) {
    ImageBuilder image;
    image.text(test::custom_point_label_at(0), "ONLY").chars(test::custom_point_label_at(1), "ABC");
    image.resize(test::custom_point_label_at(1) + 3);
    test::ScratchDir dir;
    image.save(dir.file("s.ugf"));
    DlSession session;
    ASSERT_EQ(dl_open(session.stream, dir.file("s.ugf").c_str()), 1);
    EXPECT_STREQ(custom_point_label(&session, 0, 0), "ONLY");
    std::string console = console_of([&] { EXPECT_STREQ(custom_point_label(&session, 1, 0), ""); });
    EXPECT_EQ(console, READ_ERROR);
    dl_close(session.stream);
}

TEST(LabelOperations, ManualLabelsByPositionAndDimension) {
    DlSession session;
    std::snprintf(session.dim_label_table[2][99], DIM_LABEL_SIZE, "%s", "LAST OF DIM 2");
    std::snprintf(session.dim_label_table[0][0], DIM_LABEL_SIZE, "%s", std::string(19, 'Q').c_str());
    const LabelOp op = manual_label_op(session);
    EXPECT_STREQ(op.label(op.context, 99, 2), "LAST OF DIM 2");
    EXPECT_STREQ(op.label(op.context, 0, 0), std::string(19, 'Q').c_str());
    EXPECT_STREQ(op.label(op.context, 1, 0), "") << "a position with no label";
    EXPECT_STREQ(op.label(op.context, 100, 2), "");
    EXPECT_STREQ(op.label(op.context, 0xFFFF, 0), "");
    EXPECT_STREQ(op.label(op.context, 0, 4), "");
    EXPECT_STREQ(op.label(op.context, 0, -1), "");
}

}  // namespace
}  // namespace ugf
