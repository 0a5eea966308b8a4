#include "file/setup.h"

namespace ugf {

int read_gauge_setup(DlStream& stream, std::uint64_t offset, GaugeSetup& setup) {
    FieldRun f{stream, offset};
    setup.setup_present = f.u32(0x00);
    setup.diff_flags = f.u16(0x04);
    setup.low_alarm = f.u32(0x06);
    setup.high_alarm = f.u32(0x0A);
    setup.diff_reference = f.u32(0x0E);
    setup.bs_range = f.u32(0x12);
    setup.alarm_percent = f.u8(0x16);
    setup.transducer = f.u16(0x18);
    setup.zero = f.i32(0x1A);
    const std::uint16_t velocity_low = f.u16(0x1E);
    setup.gain_mode = f.u16(0x20);
    setup.gain_db = f.u16(0x22);
    setup.slope = f.u16(0x24);
    setup.transducer_frequency = f.u16(0x26);
    setup.mb_blank = f.i16(0x28);
    setup.if_blank = f.i16(0x2A);
    setup.c3_blank = f.i16(0x2C);
    setup.echo_window = f.u16(0x2E);
    f.text(0x30, setup.setup_name, sizeof setup.setup_name, SETUP_NAME_SIZE);
    setup.option_flags = f.u16(0x52);
    setup.reserved_54 = f.u8(0x54);
    setup.coating_velocity = f.u16(0x56);
    setup.temp_coefficient = f.i32(0x58);
    setup.temp_calibration = f.i16(0x5C);
    setup.reserved_5e = f.u16(0x5E);
    // The two halves of the velocity lie 66 bytes apart.
    const std::uint16_t velocity_high = f.u16(0x60);
    setup.velocity = (static_cast<std::uint32_t>(velocity_high) << 16) | velocity_low;
    setup.meas_word = f.u16(0x62);
    setup.custom_encoder_res = f.u24(0x68);
    return f.ok;
}

int read_flaw_setup(DlStream& stream, std::uint64_t offset, FlawSetup& setup) {
    FieldRun f{stream, offset};
    setup.velocity = f.u32(0x00);
    setup.zero = f.i32(0x04);
    setup.reference_gain = f.i16(0x08);
    setup.ref_gain_step = f.u16(0x0A);
    setup.gain = f.u16(0x0C);
    setup.delay = f.u32(0x0E);
    setup.range = f.u32(0x12);
    setup.frequency = f.u16(0x16);
    setup.reject_word = f.u16(0x18);
    setup.box_word = f.u16(0x1A);
    setup.gate1_start = f.u32(0x1C);
    setup.gate1_width = f.u32(0x20);
    setup.gate1_min_depth = f.u32(0x24);
    setup.gate1_level = f.u16(0x28);
    setup.gate2_start = f.u32(0x2A);
    setup.gate2_width = f.u32(0x2E);
    setup.gate2_min_depth = f.u32(0x32);
    setup.gate2_level = f.u16(0x36);
    setup.gate_alarms = f.u16(0x38);
    setup.angle = f.u16(0x3A);
    setup.angle_beam_thickness = f.u32(0x3C);
    setup.x_value = f.u32(0x40);
    setup.bscan_max_thickness = f.u32(0x44);
    setup.bscan_flags = f.u16(0x48);
    setup.dac_word = f.u16(0x4A);
    setup.dac_gain = f.i16(0x4C);
    setup.dac_gain_step = f.u16(0x4E);
    setup.rl_gain = f.i16(0x50);
    setup.sl_gain = f.i16(0x52);
    setup.el_gain = f.i16(0x54);
    setup.mode_word = f.u16(0x56);
    setup.display_word = f.u16(0x58);
    setup.dac_rectification = f.u16(0x5A);
    setup.setup_present = f.u32(0x5C);
    setup.pipe_diameter = f.u32(0x60);
    // The factor goes through single precision: to double, narrowed to float,
    // divided as a float, widened again.
    const std::uint32_t k_factor = f.u32(0x64);
    const float narrowed = static_cast<float>(static_cast<double>(k_factor));
    setup.api_k_factor = static_cast<double>(narrowed / 10000.0f);
    // Three bytes are read; the first has no effect.
    setup.custom_encoder_res = f.u24(0x68) & 0xFFFFu;
    return f.ok;
}

}  // namespace ugf
