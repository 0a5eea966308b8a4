// Both setup layouts: where the entries stand, the split velocity, the two
// readings of the bytes at 0x68, single precision of the K factor, the bit
// fields from hand-made words, and reads that run into the end of the file.
#include <gtest/gtest.h>

#include <string>

#include "file/setup.h"
#include "support/scratch.h"
#include "support/survey_image.h"

namespace ugf {
namespace {

using test::FlawSetupImage;
using test::GaugeSetupImage;
using test::ImageBuilder;

const char* const READ_ERROR = "ERROR: FS_READ_ERROR.\n";

struct OpenImage {
    test::ScratchDir dir;
    DlStream stream;
    explicit OpenImage(const ImageBuilder& image) {
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

TEST(GaugeSetupRead, HandMadeBytesOfTheSplitAndPackedFields) {
    ImageBuilder image;
    const std::size_t at = 0x0300;
    image.resize(at + 128)
        .u16(at + 0x04, 0xA5C9)  // 101 00 1 01 11 00 1 0 01
        .u16(at + 0x1E, 0x1234)
        .u16(at + 0x60, 0xABCD)
        .u16(at + 0x52, 0xAE6D)  // 1 0 1 0 11 1001 101101
        .u16(at + 0x62, 0x5FFF)
        .u8(at + 0x68, 0x01).u8(at + 0x69, 0x02).u8(at + 0x6A, 0x03)
        .u32(at + 0x1A, 0xFFFFFFFE)
        .u16(at + 0x28, 0x8000);
    OpenImage f(image);
    GaugeSetup g;
    ASSERT_EQ(read_gauge_setup(f.stream, 0, g, 0), 1);
    EXPECT_EQ(g.velocity, 0xABCD1234u) << "high half at 0x60, low half at 0x1E";
    EXPECT_EQ(g.custom_encoder_res, 66051u) << "all three bytes count";
    EXPECT_EQ(g.zero, -2);
    EXPECT_EQ(g.mb_blank, -32768);
    EXPECT_EQ(alarm_type(g), 5u);
    EXPECT_EQ(diff_type(g), 0u);
    EXPECT_EQ(diff_ref_blank(g), 1u);
    EXPECT_EQ(units(g), 1u);
    EXPECT_EQ(resolution(g), 3u);
    EXPECT_EQ(measurement_type(g), 0u);
    EXPECT_EQ(echo1_negative(g), 1u);
    EXPECT_EQ(echo2_negative(g), 0u);
    EXPECT_EQ(pulser_power(g), 1u);
    EXPECT_EQ(auto_phase_detect(g), 1u);
    EXPECT_EQ(auto_mb(g), 0u);
    EXPECT_EQ(temp_compensation(g), 1u);
    EXPECT_EQ(coating_thickness(g), 0u);
    EXPECT_EQ(bs_res_mode(g), 3u);
    EXPECT_EQ(bs_encoder(g), 9u);
    EXPECT_EQ(bs_step_code(g), 45u);
    EXPECT_EQ(meas_mode(g), 5u);
}

TEST(GaugeSetupRead, SetupNameNeedsItsTerminatorWithinThirtyThreeBytes) {
    struct Case {
        std::string name;
        int ok;
        const char* kept;
    } cases[] = {
        {std::string(32, 'N'), 1, "NNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNN"},
        {std::string(33, 'N'), 0, nullptr},
    };
    for (const Case& c : cases) {
        GaugeSetupImage s;
        s.setup_name = c.name;
        ImageBuilder image;
        test::write_gauge_setup(image, 0, 0, s);
        image.resize(0x300 + 128);
        OpenImage f(image);
        GaugeSetup g;
        std::string console = console_of([&] { EXPECT_EQ(read_gauge_setup(f.stream, 0, g, 0), c.ok) << c.name.size(); });
        EXPECT_EQ(console, "") << "a missing terminator prints nothing";
        if (c.kept != nullptr) { EXPECT_STREQ(g.setup_name, c.kept); }
    }
}

TEST(GaugeSetupRead, EntriesCutByTheEndOfTheFileFailWithOneLine) {
    // Offsets from the entry's start; the last byte read is 0x6A.
    const std::size_t cuts[] = {0, 3, 0x05, 0x17, 0x1F, 0x31, 0x50, 0x53, 0x61, 0x68, 0x6A};
    for (std::size_t cut : cuts) {
        ImageBuilder image;
        test::write_gauge_setup(image, 0, 2, {.setup_present = 1});
        image.resize(0x0300 + 2 * 128 + cut);
        OpenImage f(image);
        GaugeSetup g;
        std::string console = console_of([&] { EXPECT_EQ(read_gauge_setup(f.stream, 2, g, 0), 0) << cut; });
        EXPECT_EQ(console, READ_ERROR) << cut;
    }
    ImageBuilder image;
    image.resize(0x0300 + 2 * 128 + 0x6B);
    OpenImage f(image);
    GaugeSetup g;
    EXPECT_EQ(read_gauge_setup(f.stream, 2, g, 0), 1) << "bytes 0x6B to 0x7F are not read";
}

TEST(FlawSetupRead, HandMadeWordsAndTheSinglePrecisionFactor) {
    ImageBuilder image;
    const std::size_t at = 0x0300;
    image.resize(at + 128)
        .u16(at + 0x18, 0x0485)  // reject 9, box 1 kind 5
        .u16(at + 0x48, 0x9A5B)  // 10 0 110100 101 1 01 1
        .u16(at + 0x56, 0x6BDA)  // 0 11 01 0 11 1 1 01 1 0 1 0
        .u16(at + 0x58, 0xF9AA)  // 11111 00 1 1 0 1 0 1 0 1 0
        .u32(at + 0x64, 12345)
        .u8(at + 0x68, 0xFF).u8(at + 0x69, 0x12).u8(at + 0x6A, 0x34);
    OpenImage f(image);
    FlawSetup g;
    ASSERT_EQ(read_flaw_setup(f.stream, 0, g, 0), 1);
    EXPECT_EQ(box1_kind(g), 5u);
    EXPECT_EQ(reject_value(g), 9u);
    EXPECT_EQ(g.custom_encoder_res, 0x1234u);
    // 12345 / 10000 in single precision, then widened: not the double 1.2345.
    EXPECT_EQ(g.api_k_factor, static_cast<double>(1.2345f));
    EXPECT_NE(g.api_k_factor, 1.2345);

    EXPECT_EQ(bscan_mode(g), 2u);
    EXPECT_EQ(bscan_direction(g), 0u);
    EXPECT_EQ(bscan_step_code(g), 0x34u);
    EXPECT_EQ(bscan_encoder(g), 5u);
    EXPECT_EQ(bscan_rewrite(g), 1u);
    EXPECT_EQ(bscan_save_ascan(g), 1u);
    EXPECT_EQ(bscan_los(g), 1u);

    EXPECT_EQ(ref_gain_enabled(g), 0u);
    EXPECT_EQ(rectification(g), 3u);
    EXPECT_EQ(units(g), 1u);
    EXPECT_EQ(resolution(g), 0u);
    EXPECT_EQ(meas_mode(g), 3u);
    EXPECT_EQ(gate2_enabled(g), 1u);
    EXPECT_EQ(zoom(g), 1u);
    EXPECT_EQ(peak_mode(g), 1u);
    EXPECT_EQ(gate1_peak(g), 1u);
    EXPECT_EQ(gate2_peak(g), 0u);
    EXPECT_EQ(peak_pitch(g), 1u);
    EXPECT_EQ(curve_correction(g), 0u);

    EXPECT_EQ(floating_gate_level(g), 31u);
    EXPECT_EQ(energy(g), 0u);
    EXPECT_EQ(dac_on(g), 1u);
    EXPECT_EQ(waveform_outline(g), 1u);
    EXPECT_EQ(floating_gate1(g), 0u);
    EXPECT_EQ(floating_gate2(g), 1u);
    EXPECT_EQ(gate_tracking(g), 0u);
    EXPECT_EQ(x_axis_legs(g), 1u);
    EXPECT_EQ(csc(g), 0u);
    EXPECT_EQ(api_5ue(g), 1u);
}

TEST(FlawSetupRead, EntriesCutByTheEndOfTheFileFailWithOneLine) {
    const std::size_t cuts[] = {0, 2, 0x0D, 0x27, 0x39, 0x4B, 0x5B, 0x63, 0x66, 0x69, 0x6A};
    for (std::size_t cut : cuts) {
        ImageBuilder image;
        test::write_flaw_setup(image, 0, 0, {.setup_present = 1});
        image.resize(0x0300 + cut);
        OpenImage f(image);
        FlawSetup g;
        std::string console = console_of([&] { EXPECT_EQ(read_flaw_setup(f.stream, 0, g, 0), 0) << cut; });
        EXPECT_EQ(console, READ_ERROR) << cut;
    }
}

}  // namespace
}  // namespace ugf
