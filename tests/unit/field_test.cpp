#include <gtest/gtest.h>

#include <string>

#include "file/field.h"
#include "support/image_builder.h"
#include "support/scratch.h"

namespace ugf {
namespace {

const char* const READ_ERROR = "ERROR: FS_READ_ERROR.\n";

struct OpenImage {
    test::ScratchDir dir;
    DlStream stream;
    explicit OpenImage(const test::ImageBuilder& image) {
        image.save(dir.file("f.ugf"));
        EXPECT_EQ(dl_open(stream, dir.file("f.ugf").c_str()), 1);
    }
    ~OpenImage() { dl_close(stream); }
};

template <typename Read>
std::string console_of(Read read) {
    testing::internal::CaptureStdout();
    read();
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

TEST(FieldRead, BigEndianNumbersOfEveryWidth) {
    test::ImageBuilder image;
    image.u16(0, 0x1234).u24(2, 0x010203).u32(5, 0xA1B2C3D4).u40(9, 0x0100000002ull);
    OpenImage f(image);
    int ok = 0;
    EXPECT_EQ(read_u16_be(f.stream, 0, &ok), 0x1234);
    EXPECT_EQ(ok, 1);
    EXPECT_EQ(read_u24_be(f.stream, 2, &ok), 66051u);
    EXPECT_EQ(read_u32_be(f.stream, 5, &ok), 0xA1B2C3D4u);
    EXPECT_EQ(read_u40_be(f.stream, 9, &ok), 2u) << "the first of the five bytes has no effect";
    EXPECT_EQ(read_u8(f.stream, 13, &ok), 2);
}

TEST(FieldRead, ReadsAtAndAcrossTheEndPrintOneLineAndFail) {
    test::ImageBuilder image;
    image.fill(0, 10, 0xFF);
    OpenImage f(image);
    struct Case {
        const char* name;
        std::uint64_t offset;
        int width;
    } cases[] = {
        {"u32 over the last three bytes", 7, 4}, {"u16 over the last byte", 9, 2},
        {"u8 at the end", 10, 1},                {"u8 far past the end", 1u << 30, 1},
        {"u40 whose last byte is missing", 6, 5},
    };
    for (const Case& c : cases) {
        int ok = 1;
        std::uint64_t value = 1;
        std::string console = console_of([&] {
            switch (c.width) {
                case 1: value = read_u8(f.stream, c.offset, &ok); break;
                case 2: value = read_u16_be(f.stream, c.offset, &ok); break;
                case 4: value = read_u32_be(f.stream, c.offset, &ok); break;
                default: value = read_u40_be(f.stream, c.offset, &ok); break;
            }
        });
        EXPECT_EQ(console, READ_ERROR) << c.name;
        EXPECT_EQ(ok, 0) << c.name;
        EXPECT_EQ(value, 0u) << c.name;
    }
    int ok = 0;
    EXPECT_EQ(read_u32_be(f.stream, 6, &ok), 0xFFFFFFFFu) << "the last whole field still reads";
    EXPECT_EQ(ok, 1);
}

TEST(FieldRead, LargeImagesReadBackAcrossManyPages) {
    test::ImageBuilder image;
    for (std::uint32_t i = 0; i < 300000; ++i) image.u32(4 * i, i * 2654435761u);
    OpenImage f(image);
    int ok = 0;
    // Strided and backward reads, as the grid and the walks make them.
    for (std::uint32_t i = 299999; i < 300000; i = i >= 7919 ? i - 7919 : 300000) {
        ASSERT_EQ(read_u32_be(f.stream, 4 * i, &ok), i * 2654435761u) << i;
    }
    for (std::uint32_t i = 0; i < 300000; i += 1021) {
        ASSERT_EQ(read_u32_be(f.stream, 4 * i, &ok), i * 2654435761u) << i;
    }
}

TEST(TextRead, TerminatorLimitAndEndOfFile) {
    test::ImageBuilder image;
    image.text(0, "")                            // empty text
        .chars(1, std::string(20, 'X'))          // 20 characters, no terminator
        .text(21, std::string(19, 'Y'))          // 19 characters and a terminator
        .chars(41, "ABC");                       // runs into the end of the file
    OpenImage f(image);
    char dst[40];
    std::string console = console_of([&] { EXPECT_EQ(read_text(f.stream, 0, dst, sizeof dst, 20), 1); });
    EXPECT_STREQ(dst, "");
    EXPECT_EQ(console, "");

    console = console_of([&] { EXPECT_EQ(read_text(f.stream, 1, dst, sizeof dst, 20), 0); });
    EXPECT_EQ(console, "") << "a full field without terminator fails silently";

    console = console_of([&] { EXPECT_EQ(read_text(f.stream, 21, dst, sizeof dst, 20), 1); });
    EXPECT_STREQ(dst, std::string(19, 'Y').c_str());

    console = console_of([&] { EXPECT_EQ(read_text(f.stream, 41, dst, sizeof dst, 20), 0); });
    EXPECT_EQ(console, READ_ERROR);
    EXPECT_STREQ(dst, "ABC") << "a terminated partial text stays";
}

TEST(TextRead, ASmallerDestinationKeepsWhatFitsAndReadsOn) {
    test::ImageBuilder image;
    image.chars(0, std::string(32, 'N')).u8(32, 0);  // 32 characters, terminator in the next row
    OpenImage f(image);
    char row[31];
    EXPECT_EQ(read_text(f.stream, 0, row, sizeof row, 33), 1);
    EXPECT_EQ(std::string(row), std::string(30, 'N'));
}

}  // namespace
}  // namespace ugf
