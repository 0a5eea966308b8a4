// Reading records: slot geometry of every file type, what read_record_head
// reads for each record type and gage family, the derived values and the
// velocity text.
#include <gtest/gtest.h>

#include <string>

#include "store/record.h"
#include "support/scratch.h"
#include "support/survey_image.h"

namespace ugf {
namespace {

using test::ImageBuilder;

const char* const READ_ERROR = "ERROR: FS_READ_ERROR.\n";

// A session on an image, without the header decode: the record readers need
// only the stream, the gage type and the file type.
struct ImageSession {
    test::ScratchDir dir;
    DlSession session;
    ImageSession(const ImageBuilder& image, std::int32_t gage_type, std::int32_t file_type = 0) {
        image.save(dir.file("s.ugf"));
        EXPECT_EQ(dl_open(session.stream, dir.file("s.ugf").c_str()), 1);
        session.gage_type = gage_type;
        session.file_type = file_type;
    }
    ~ImageSession() { dl_close(session.stream); }
};

template <typename Read>
std::string console_of(Read read) {
    testing::internal::CaptureStdout();
    read();
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

TEST(RecordHead, EndOfFileInsideTheFieldsTheTypeAsksFor) {
    struct Case {
        std::int32_t gage;
        std::uint32_t type;
        std::size_t length;  // bytes of the record that the file still has
        int ok;
    } cases[] = {
        {5, 0, 0, 0},  {5, 0, 3, 0},   {5, 0, 4, 1},    // an empty slot needs only word0
        {5, 6, 4, 1},  {7, 7, 4, 1},                    // unassigned types too
        {5, 1, 5, 0},  {5, 1, 7, 0},   {5, 1, 11, 0},   {5, 1, 15, 0}, {5, 1, 16, 1},
        {5, 2, 7, 0},  {5, 2, 8, 1},   {7, 4, 8, 1},    // links stop after the link
        {7, 1, 9, 0},  {7, 5, 15, 0},  {7, 5, 16, 1},
        {7, 3, 4, 1},                                   // a flaw A-scan head is word0 alone
        {6, 3, 13, 0}, {6, 5, 12, 0},
    };
    for (const Case& c : cases) {
        ImageBuilder image;
        test::write_record(image, 0x200, {c.type << 29 | 0x00FF00FF, 0x01020304, 0x05060708, 0x090A0B0C});
        image.resize(0x200 + c.length);
        ImageSession s(image, c.gage);
        ReadingRecord record;
        int result = -1;
        std::string console = console_of([&] { result = read_record_head(s.session, record, 0x200); });
        EXPECT_EQ(result, c.ok) << c.gage << " " << c.type << " " << c.length;
        EXPECT_EQ(console, c.ok ? "" : READ_ERROR) << c.gage << " " << c.type << " " << c.length;
    }
}

TEST(RecordFields, GaugeWordZeroFromHandMadeBits) {
    // 001 1 11 011 10 01 101 10100 10 1111 1 0111
    ReadingRecord r{0x3DCDA5F7, 0, 0, 0};
    EXPECT_EQ(record_type(r), 1u);
    EXPECT_EQ(los(r), 1u);
    EXPECT_EQ(units(r), 3u);
    EXPECT_EQ(alarm_state(r), 3u);
    EXPECT_EQ(fast_mode(r), 2u);
    EXPECT_EQ(bscan_mode(r), 1u);
    EXPECT_EQ(setup_number(r), 20u);
    EXPECT_EQ(resolution(r), 2u);
    EXPECT_EQ(thick_hi(r), 15u);
    EXPECT_EQ(echo_to_echo(r), 1u);
}

TEST(RecordFields, FlawWordZeroFromHandMadeBits) {
    // 001 11110 101 1 1 000 1010101111001101
    ReadingRecord r{0x3EB8ABCD, 0, 0, 0};
    EXPECT_EQ(record_type(r), 1u);
    EXPECT_EQ(flaw_setup_number(r), 30u);
    EXPECT_EQ(gate1_alarm(r), 5u);
    EXPECT_EQ(ascan_mark(r), 1u);
    EXPECT_EQ(bscan_mark(r), 1u);
    EXPECT_EQ(flaw_note_mask(r), 0xABCDu);
}

TEST(RecordFields, MetricThicknessCountsThousandthsOfAMillimetre) {
    // Units code 1 in bits 27-26, thick_hi 0xA, thick_lo 0xBCDE.
    ReadingRecord r{(1u << 29) | (1u << 26) | (0xAu << 5), 0x0000BCDE, 0, 0};
    EXPECT_EQ(raw_thickness(r), 0xABCDEu);
    EXPECT_EQ(thickness_length(r), 0xABCDE * 10);
    r.word0 &= ~(3u << 26);  // inches
    EXPECT_EQ(thickness_length(r), 0xABCDE);
}

TEST(RecordFields, VelocityReadingTakesItsHighBitsFromWordThree) {
    // thick_hi 15 and thick_lo 0xFFFA in millimetres: the test looks at the raw
    // value, not the metric length. min_lo holds 0x5B04, the low nibble of
    // max_lo 3, and min_hi 9, which is not part of the velocity.
    ImageBuilder image;
    image.u32(5376, (1u << 29) | (1u << 26) | (15u << 5))
        .u16(5380, 0xFFFA)
        .u16(5382, 0)
        .u16(5384, 0)
        .u16(5386, 0x5B04)
        .u16(5388, 0x0003)
        .u16(5390, 0x0900);
    ImageSession s(image, 6);
    ReadingRecord r;
    ASSERT_EQ(read_record_head(s.session, r, 5376), 1);
    EXPECT_TRUE(is_velocity_reading(r));
    EXPECT_EQ(velocity_value(r), 0x35B04u);
    EXPECT_EQ(min_value(r), 0x95B04u);

}

TEST(VelocityText, InchesAndMetresWithTheirPrecisionAndCut) {
    struct Case {
        std::uint32_t velocity;
        std::uint32_t units;
        const char* text;
    } cases[] = {
        {23300, 0, "0.2330"},
        {23300, 1, " 5918"},
        {23300, 2, " 5918"},       // every code but 0 is metric
        {0, 0, "0.0000"},
        {0, 3, "    0"},
        {15, 0, "0.0002"},         // 15 / 100000 in single precision lies above 0.00015
        {1048575, 0, "10.485"},    // "10.4858" cut to six characters
        {1048575, 1, "266338"},
        {4294967295u, 1, "109092"},  // 1090921693, cut
    };
    for (const Case& c : cases) {
        make_velocity_text(c.velocity, c.units);
        EXPECT_STREQ(velocity_text(), c.text) << c.velocity << " " << c.units;
    }
}

}  // namespace
}  // namespace ugf
