// Both setup layouts: every field at its offset, the split velocity, the two
// readings of the bytes at 0x68, single precision of the K factor, the bit
// fields, and reads that run into the end of the file.
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

GaugeSetupImage every_gauge_field() {
    GaugeSetupImage s;
    s.setup_present = 0x01020304;
    s.alarm_type = 5;
    s.diff_type = 2;
    s.diff_ref_blank = 1;
    s.units = 1;
    s.resolution = 3;
    s.measurement_type = 2;
    s.echo1_negative = 1;
    s.echo2_negative = 0;
    s.pulser_power = 2;
    s.low_alarm = 0x11223344;
    s.high_alarm = 0x55667788;
    s.diff_reference = 0x99AABBCC;
    s.bs_range = 0xDDEEFF01;
    s.alarm_percent = 0xF7;
    s.transducer = 0x0123;
    s.zero = -123456;
    s.velocity = 0xABCD1234;
    s.gain_mode = 0x0405;
    s.gain_db = 0x0607;
    s.slope = 0x0809;
    s.transducer_frequency = 0x0A0B;
    s.mb_blank = -2;
    s.if_blank = -300;
    s.c3_blank = 32767;
    s.echo_window = 0xFEDC;
    s.setup_name = "STEEL PLATE 12MM";
    s.auto_phase_detect = 1;
    s.auto_mb = 0;
    s.temp_compensation = 1;
    s.coating_thickness = 1;
    s.bs_res_mode = 2;
    s.bs_encoder = 9;
    s.bs_step_code = 45;
    s.reserved_54 = 0x5A;
    s.coating_velocity = 0x1357;
    s.temp_coefficient = -987654;
    s.temp_calibration = -40;
    s.reserved_5e = 0x2468;
    s.meas_mode = 5;
    s.meas_word_rest = 0xABC;
    s.custom_encoder_res = 0x010203;
    return s;
}

void expect_gauge_fields(const GaugeSetup& g, const GaugeSetupImage& s) {
    EXPECT_EQ(g.setup_present, s.setup_present);
    EXPECT_EQ(g.low_alarm, s.low_alarm);
    EXPECT_EQ(g.high_alarm, s.high_alarm);
    EXPECT_EQ(g.diff_reference, s.diff_reference);
    EXPECT_EQ(g.bs_range, s.bs_range);
    EXPECT_EQ(g.alarm_percent, s.alarm_percent);
    EXPECT_EQ(g.transducer, s.transducer);
    EXPECT_EQ(g.zero, s.zero);
    EXPECT_EQ(g.velocity, s.velocity);
    EXPECT_EQ(g.gain_mode, s.gain_mode);
    EXPECT_EQ(g.gain_db, s.gain_db);
    EXPECT_EQ(g.slope, s.slope);
    EXPECT_EQ(g.transducer_frequency, s.transducer_frequency);
    EXPECT_EQ(g.mb_blank, s.mb_blank);
    EXPECT_EQ(g.if_blank, s.if_blank);
    EXPECT_EQ(g.c3_blank, s.c3_blank);
    EXPECT_EQ(g.echo_window, s.echo_window);
    EXPECT_EQ(std::string(g.setup_name), s.setup_name);
    EXPECT_EQ(g.reserved_54, s.reserved_54);
    EXPECT_EQ(g.coating_velocity, s.coating_velocity);
    EXPECT_EQ(g.temp_coefficient, s.temp_coefficient);
    EXPECT_EQ(g.temp_calibration, s.temp_calibration);
    EXPECT_EQ(g.reserved_5e, s.reserved_5e);
    EXPECT_EQ(g.custom_encoder_res, s.custom_encoder_res);
    EXPECT_EQ(alarm_type(g), s.alarm_type);
    EXPECT_EQ(diff_type(g), s.diff_type);
    EXPECT_EQ(diff_ref_blank(g), s.diff_ref_blank);
    EXPECT_EQ(units(g), s.units);
    EXPECT_EQ(resolution(g), s.resolution);
    EXPECT_EQ(measurement_type(g), s.measurement_type);
    EXPECT_EQ(echo1_negative(g), s.echo1_negative);
    EXPECT_EQ(echo2_negative(g), s.echo2_negative);
    EXPECT_EQ(pulser_power(g), s.pulser_power);
    EXPECT_EQ(auto_phase_detect(g), s.auto_phase_detect);
    EXPECT_EQ(auto_mb(g), s.auto_mb);
    EXPECT_EQ(temp_compensation(g), s.temp_compensation);
    EXPECT_EQ(coating_thickness(g), s.coating_thickness);
    EXPECT_EQ(bs_res_mode(g), s.bs_res_mode);
    EXPECT_EQ(bs_encoder(g), s.bs_encoder);
    EXPECT_EQ(bs_step_code(g), s.bs_step_code);
    EXPECT_EQ(meas_mode(g), s.meas_mode);
}

TEST(GaugeSetupRead, EveryFieldOfEntriesInBothLayouts) {
    // Entry 31 of the standard layout ends at 0x12FF, just before the notes;
    // entries of the manual layout stand behind the label table.
    struct Case {
        std::uint32_t file_type;
        int entry;
        std::size_t expected_start;
    } cases[] = {{0, 0, 0x0300}, {9, 31, 0x1280}, {10, 0, 0x2240}, {12, 31, 0x31C0}, {200, 7, 0x0680}};
    for (const Case& c : cases) {
        const GaugeSetupImage s = every_gauge_field();
        ImageBuilder image;
        test::write_gauge_setup(image, c.file_type, c.entry, s);
        ASSERT_EQ(test::setup_entry_at(c.file_type, c.entry), c.expected_start);
        image.resize(c.expected_start + 128);
        OpenImage f(image);
        GaugeSetup g;
        std::string console = console_of([&] { EXPECT_EQ(read_gauge_setup(f.stream, c.entry, g, static_cast<std::int32_t>(c.file_type)), 1); });
        EXPECT_EQ(console, "") << c.file_type;
        expect_gauge_fields(g, s);
    }
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

TEST(GaugeSetupRead, AllZeroEntryReadsAsAbsent) {
    ImageBuilder image;
    image.resize(0x1300);
    OpenImage f(image);
    GaugeSetup g;
    g.setup_present = 7;
    EXPECT_EQ(read_gauge_setup(f.stream, 31, g, 0), 1);
    EXPECT_EQ(g.setup_present, 0u);
    EXPECT_STREQ(g.setup_name, "");
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
        GaugeSetupImage s = every_gauge_field();
        ImageBuilder image;
        test::write_gauge_setup(image, 0, 2, s);
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

FlawSetupImage every_flaw_field() {
    FlawSetupImage s;
    s.velocity = 0x00E4A1C0;
    s.zero = -5000;
    s.reference_gain = -125;
    s.ref_gain_step = 60;
    s.gain = 455;
    s.delay = 0x01020304;
    s.range = 0x05060708;
    s.frequency = 225;
    s.reject_value = 300;
    s.box1_kind = 35;
    s.box2_kind = 200;
    s.box3_kind = 17;
    s.gate1_start = 0x11111111;
    s.gate1_width = 0x22222222;
    s.gate1_min_depth = 0x33333333;
    s.gate1_level = 0x4444;
    s.gate2_start = 0x55555555;
    s.gate2_width = 0x66666666;
    s.gate2_min_depth = 0x77777777;
    s.gate2_level = 0x8888;
    s.gate1_alarm = 0xC3;
    s.gate2_alarm = 0x3C;
    s.angle = 70;
    s.angle_beam_thickness = 0x0A0B0C0D;
    s.x_value = 0x0E0F1011;
    s.bscan_max_thickness = 0x12131415;
    s.bscan_mode = 2;
    s.bscan_direction = 1;
    s.bscan_step_code = 41;
    s.bscan_encoder = 5;
    s.bscan_rewrite = 1;
    s.bscan_save_ascan = 2;
    s.bscan_los = 1;
    s.dac_mode = 6;
    s.dac_curve_selected = 0x81;
    s.dac_gain = -32768;
    s.dac_gain_step = 10;
    s.rl_gain = -1;
    s.sl_gain = 32767;
    s.el_gain = -600;
    s.ref_gain_enabled = 1;
    s.rectification = 2;
    s.units = 3;
    s.resolution = 1;
    s.meas_mode = 2;
    s.gate2_enabled = 1;
    s.zoom = 0;
    s.peak_mode = 2;
    s.gate1_peak = 1;
    s.gate2_peak = 0;
    s.peak_pitch = 1;
    s.curve_correction = 1;
    s.floating_gate_level = 27;
    s.energy = 3;
    s.dac_on = 1;
    s.waveform_outline = 0;
    s.floating_gate1 = 1;
    s.floating_gate2 = 0;
    s.gate_tracking = 1;
    s.x_axis_legs = 1;
    s.csc = 0;
    s.api_5ue = 1;
    s.dac_rectification = 7;
    s.setup_present = 0x80000000;
    s.pipe_diameter = 0x0019B2A0;
    s.api_k_factor = 12345;
    s.custom_encoder_res = 0xFF1234;
    return s;
}

TEST(FlawSetupRead, EveryFieldOfEntriesInBothLayouts) {
    const std::uint32_t file_types[] = {3, 11};
    for (std::uint32_t file_type : file_types) {
        const FlawSetupImage s = every_flaw_field();
        ImageBuilder image;
        test::write_flaw_setup(image, file_type, 30, s);
        image.resize(test::setup_entry_at(file_type, 31));
        OpenImage f(image);
        FlawSetup g;
        std::string console = console_of([&] { EXPECT_EQ(read_flaw_setup(f.stream, 30, g, static_cast<std::int32_t>(file_type)), 1); });
        EXPECT_EQ(console, "");
        EXPECT_EQ(g.velocity, s.velocity);
        EXPECT_EQ(g.zero, s.zero);
        EXPECT_EQ(g.reference_gain, s.reference_gain);
        EXPECT_EQ(g.ref_gain_step, s.ref_gain_step);
        EXPECT_EQ(g.gain, s.gain);
        EXPECT_EQ(g.delay, s.delay);
        EXPECT_EQ(g.range, s.range);
        EXPECT_EQ(g.frequency, s.frequency);
        EXPECT_EQ(g.gate1_start, s.gate1_start);
        EXPECT_EQ(g.gate1_width, s.gate1_width);
        EXPECT_EQ(g.gate1_min_depth, s.gate1_min_depth);
        EXPECT_EQ(g.gate1_level, s.gate1_level);
        EXPECT_EQ(g.gate2_start, s.gate2_start);
        EXPECT_EQ(g.gate2_width, s.gate2_width);
        EXPECT_EQ(g.gate2_min_depth, s.gate2_min_depth);
        EXPECT_EQ(g.gate2_level, s.gate2_level);
        EXPECT_EQ(g.angle, s.angle);
        EXPECT_EQ(g.angle_beam_thickness, s.angle_beam_thickness);
        EXPECT_EQ(g.x_value, s.x_value);
        EXPECT_EQ(g.bscan_max_thickness, s.bscan_max_thickness);
        EXPECT_EQ(g.dac_gain, s.dac_gain);
        EXPECT_EQ(g.dac_gain_step, s.dac_gain_step);
        EXPECT_EQ(g.rl_gain, s.rl_gain);
        EXPECT_EQ(g.sl_gain, s.sl_gain);
        EXPECT_EQ(g.el_gain, s.el_gain);
        EXPECT_EQ(g.dac_rectification, s.dac_rectification);
        EXPECT_EQ(g.setup_present, s.setup_present);
        EXPECT_EQ(g.pipe_diameter, s.pipe_diameter);
        EXPECT_EQ(g.custom_encoder_res, 0x1234u) << "the first of the three bytes has no effect";
        EXPECT_EQ(reject_value(g), s.reject_value);
        EXPECT_EQ(box1_kind(g), s.box1_kind);
        EXPECT_EQ(box2_kind(g), s.box2_kind);
        EXPECT_EQ(box3_kind(g), s.box3_kind);
        EXPECT_EQ(gate1_alarm(g), s.gate1_alarm);
        EXPECT_EQ(gate2_alarm(g), s.gate2_alarm);
        EXPECT_EQ(dac_mode(g), s.dac_mode) << "a mode of 4 or above is carried";
        EXPECT_EQ(dac_curve_selected(g), s.dac_curve_selected);
        EXPECT_EQ(bscan_mode(g), s.bscan_mode);
        EXPECT_EQ(bscan_direction(g), s.bscan_direction);
        EXPECT_EQ(bscan_step_code(g), s.bscan_step_code);
        EXPECT_EQ(bscan_encoder(g), s.bscan_encoder);
        EXPECT_EQ(bscan_rewrite(g), s.bscan_rewrite);
        EXPECT_EQ(bscan_save_ascan(g), s.bscan_save_ascan);
        EXPECT_EQ(bscan_los(g), s.bscan_los);
        EXPECT_EQ(ref_gain_enabled(g), s.ref_gain_enabled);
        EXPECT_EQ(rectification(g), s.rectification);
        EXPECT_EQ(units(g), s.units);
        EXPECT_EQ(resolution(g), s.resolution);
        EXPECT_EQ(meas_mode(g), s.meas_mode);
        EXPECT_EQ(gate2_enabled(g), s.gate2_enabled);
        EXPECT_EQ(zoom(g), s.zoom);
        EXPECT_EQ(peak_mode(g), s.peak_mode);
        EXPECT_EQ(gate1_peak(g), s.gate1_peak);
        EXPECT_EQ(gate2_peak(g), s.gate2_peak);
        EXPECT_EQ(peak_pitch(g), s.peak_pitch);
        EXPECT_EQ(curve_correction(g), s.curve_correction);
        EXPECT_EQ(floating_gate_level(g), s.floating_gate_level);
        EXPECT_EQ(energy(g), s.energy);
        EXPECT_EQ(dac_on(g), s.dac_on);
        EXPECT_EQ(waveform_outline(g), s.waveform_outline);
        EXPECT_EQ(floating_gate1(g), s.floating_gate1);
        EXPECT_EQ(floating_gate2(g), s.floating_gate2);
        EXPECT_EQ(gate_tracking(g), s.gate_tracking);
        EXPECT_EQ(x_axis_legs(g), s.x_axis_legs);
        EXPECT_EQ(csc(g), s.csc);
        EXPECT_EQ(api_5ue(g), s.api_5ue);
    }
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
        test::write_flaw_setup(image, 0, 0, every_flaw_field());
        image.resize(0x0300 + cut);
        OpenImage f(image);
        FlawSetup g;
        std::string console = console_of([&] { EXPECT_EQ(read_flaw_setup(f.stream, 0, g, 0), 0) << cut; });
        EXPECT_EQ(console, READ_ERROR) << cut;
    }
}

}  // namespace
}  // namespace ugf
