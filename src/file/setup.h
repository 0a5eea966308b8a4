// The 32 stored measurement setups of a datalogger file, in the two layouts
// of the instruments: the thickness gauge layout (gage types 5 and 6, and any
// unknown type) and the flaw detector layout (gage type 7). Entry i lies at
// the setup table's offset + 128 i; the offsets below are from its start.
//
// Fields keep the width and the numeric form that the file gives; bit fields
// are read through the small accessors named after them.
#pragma once

#include <cstdint>

#include "file/field.h"

namespace ugf {

inline constexpr int SETUP_NAME_SIZE = 33;  // 32 characters and the terminator

// Thickness gauge layout.
struct GaugeSetup {
    std::uint32_t setup_present = 0;         // 0x00: 0 when the setup doesn't exist
    std::uint16_t diff_flags = 0;            // 0x04: bit field
    std::uint32_t low_alarm = 0;             // 0x06: length
    std::uint32_t high_alarm = 0;            // 0x0A: length
    std::uint32_t diff_reference = 0;        // 0x0E: length
    std::uint32_t bs_range = 0;              // 0x12: length
    std::uint8_t alarm_percent = 0;          // 0x16
    std::uint16_t transducer = 0;            // 0x18: a row of the transducer names
    std::int32_t zero = 0;                   // 0x1A
    std::uint32_t velocity = 0;              // low half at 0x1E, high half at 0x60
    std::uint16_t gain_mode = 0;             // 0x20 (initial gain of gage type 6)
    std::uint16_t gain_db = 0;               // 0x22 (final gain of gage type 6)
    std::uint16_t slope = 0;                 // 0x24
    std::uint16_t transducer_frequency = 0;  // 0x26
    std::int16_t mb_blank = 0;               // 0x28
    std::int16_t if_blank = 0;               // 0x2A
    std::int16_t c3_blank = 0;               // 0x2C
    std::uint16_t echo_window = 0;           // 0x2E
    char setup_name[SETUP_NAME_SIZE] = {};   // 0x30: text field of 33 bytes
    std::uint16_t option_flags = 0;          // 0x52: bit field
    std::uint8_t reserved_54 = 0;            // 0x54
    std::uint16_t coating_velocity = 0;      // 0x56
    std::int32_t temp_coefficient = 0;       // 0x58
    std::int16_t temp_calibration = 0;       // 0x5C: degrees Fahrenheit
    std::uint16_t reserved_5e = 0;           // 0x5E
    std::uint16_t meas_word = 0;             // 0x62: bits 15 to 12 are meas_mode
    std::uint32_t custom_encoder_res = 0;    // 0x68: u24, all three bytes count
};

// Flaw detector layout.
struct FlawSetup {
    std::uint32_t velocity = 0;              // 0x00
    std::int32_t zero = 0;                   // 0x04: length
    std::int16_t reference_gain = 0;         // 0x08: tenths of a dB
    std::uint16_t ref_gain_step = 0;         // 0x0A
    std::uint16_t gain = 0;                  // 0x0C
    std::uint32_t delay = 0;                 // 0x0E: length
    std::uint32_t range = 0;                 // 0x12: length
    std::uint16_t frequency = 0;             // 0x16: hundredths of a MHz
    std::uint16_t reject_word = 0;           // 0x18: reject value, box1_kind
    std::uint16_t box_word = 0;              // 0x1A: box2_kind, box3_kind
    std::uint32_t gate1_start = 0;           // 0x1C
    std::uint32_t gate1_width = 0;           // 0x20
    std::uint32_t gate1_min_depth = 0;       // 0x24
    std::uint16_t gate1_level = 0;           // 0x28
    std::uint32_t gate2_start = 0;           // 0x2A
    std::uint32_t gate2_width = 0;           // 0x2E
    std::uint32_t gate2_min_depth = 0;       // 0x32
    std::uint16_t gate2_level = 0;           // 0x36
    std::uint16_t gate_alarms = 0;           // 0x38: gate1_alarm, gate2_alarm
    std::uint16_t angle = 0;                 // 0x3A
    std::uint32_t angle_beam_thickness = 0;  // 0x3C
    std::uint32_t x_value = 0;               // 0x40
    std::uint32_t bscan_max_thickness = 0;   // 0x44
    std::uint16_t bscan_flags = 0;           // 0x48: bit field
    std::uint16_t dac_word = 0;              // 0x4A: dac_mode, selected curve
    std::int16_t dac_gain = 0;               // 0x4C
    std::uint16_t dac_gain_step = 0;         // 0x4E
    std::int16_t rl_gain = 0;                // 0x50
    std::int16_t sl_gain = 0;                // 0x52
    std::int16_t el_gain = 0;                // 0x54
    std::uint16_t mode_word = 0;             // 0x56: bit field
    std::uint16_t display_word = 0;          // 0x58: bit field
    std::uint16_t dac_rectification = 0;     // 0x5A
    std::uint32_t setup_present = 0;         // 0x5C: 0 when the setup doesn't exist
    std::uint32_t pipe_diameter = 0;         // 0x60: length
    double api_k_factor = 0.0;               // 0x64: stored in ten-thousandths
    std::uint32_t custom_encoder_res = 0;    // 0x68: the last two of three bytes
};

// One entry of the setup table; `gage_type` of the session says which of the
// two members was read (the other stays zero).
struct SetupRecord {
    GaugeSetup gauge{};
    FlawSetup flaw{};
};

// Reads the setup table entry at `offset` (the map's setup_offset). Every
// field goes through the field reader, in table order, stopping at the first
// failure. 1, or 0 when a field can't be read (or the setup name has no
// terminator within its 33 bytes).
int read_gauge_setup(DlStream& stream, std::uint64_t offset, GaugeSetup& setup);
int read_flaw_setup(DlStream& stream, std::uint64_t offset, FlawSetup& setup);

// diff_flags of the gauge layout.
inline std::uint32_t alarm_type(const GaugeSetup& s) { return word_bits(s.diff_flags, 13, 3); }
inline std::uint32_t diff_type(const GaugeSetup& s) { return word_bits(s.diff_flags, 11, 2); }
inline std::uint32_t diff_ref_blank(const GaugeSetup& s) { return word_bits(s.diff_flags, 10, 1); }
inline std::uint32_t units(const GaugeSetup& s) { return word_bits(s.diff_flags, 8, 2); }
inline std::uint32_t resolution(const GaugeSetup& s) { return word_bits(s.diff_flags, 6, 2); }
inline std::uint32_t measurement_type(const GaugeSetup& s) { return word_bits(s.diff_flags, 4, 2); }
inline std::uint32_t echo1_negative(const GaugeSetup& s) { return word_bits(s.diff_flags, 3, 1); }
inline std::uint32_t echo2_negative(const GaugeSetup& s) { return word_bits(s.diff_flags, 2, 1); }
inline std::uint32_t pulser_power(const GaugeSetup& s) { return word_bits(s.diff_flags, 0, 2); }

// option_flags of the gauge layout.
inline std::uint32_t auto_phase_detect(const GaugeSetup& s) { return word_bits(s.option_flags, 15, 1); }
inline std::uint32_t auto_mb(const GaugeSetup& s) { return word_bits(s.option_flags, 14, 1); }
inline std::uint32_t temp_compensation(const GaugeSetup& s) { return word_bits(s.option_flags, 13, 1); }
inline std::uint32_t coating_thickness(const GaugeSetup& s) { return word_bits(s.option_flags, 12, 1); }
inline std::uint32_t bs_res_mode(const GaugeSetup& s) { return word_bits(s.option_flags, 10, 2); }
inline std::uint32_t bs_encoder(const GaugeSetup& s) { return word_bits(s.option_flags, 6, 4); }
inline std::uint32_t bs_step_code(const GaugeSetup& s) { return word_bits(s.option_flags, 0, 6); }

// meas_word of the gauge layout: 0 C1, 1 C2, 2 C3, 3 OX, 4 C5, 5 CP.
inline std::uint32_t meas_mode(const GaugeSetup& s) { return word_bits(s.meas_word, 12, 4); }

// reject_word and box_word of the flaw layout.
inline std::uint32_t reject_value(const FlawSetup& s) { return word_bits(s.reject_word, 7, 9); }
inline std::uint32_t box1_kind(const FlawSetup& s) { return word_bits(s.reject_word, 0, 7); }
inline std::uint32_t box2_kind(const FlawSetup& s) { return word_bits(s.box_word, 8, 8); }
inline std::uint32_t box3_kind(const FlawSetup& s) { return word_bits(s.box_word, 0, 8); }

// gate_alarms and dac_word of the flaw layout.
inline std::uint32_t gate1_alarm(const FlawSetup& s) { return word_bits(s.gate_alarms, 8, 8); }
inline std::uint32_t gate2_alarm(const FlawSetup& s) { return word_bits(s.gate_alarms, 0, 8); }
inline std::uint32_t dac_mode(const FlawSetup& s) { return word_bits(s.dac_word, 8, 8); }
inline std::uint32_t dac_curve_selected(const FlawSetup& s) { return word_bits(s.dac_word, 0, 8); }

// bscan_flags of the flaw layout.
inline std::uint32_t bscan_mode(const FlawSetup& s) { return word_bits(s.bscan_flags, 14, 2); }
inline std::uint32_t bscan_direction(const FlawSetup& s) { return word_bits(s.bscan_flags, 13, 1); }
inline std::uint32_t bscan_step_code(const FlawSetup& s) { return word_bits(s.bscan_flags, 7, 6); }
inline std::uint32_t bscan_encoder(const FlawSetup& s) { return word_bits(s.bscan_flags, 4, 3); }
inline std::uint32_t bscan_rewrite(const FlawSetup& s) { return word_bits(s.bscan_flags, 3, 1); }
inline std::uint32_t bscan_save_ascan(const FlawSetup& s) { return word_bits(s.bscan_flags, 1, 2); }
inline std::uint32_t bscan_los(const FlawSetup& s) { return word_bits(s.bscan_flags, 0, 1); }

// mode_word of the flaw layout.
inline std::uint32_t ref_gain_enabled(const FlawSetup& s) { return word_bits(s.mode_word, 15, 1); }
inline std::uint32_t rectification(const FlawSetup& s) { return word_bits(s.mode_word, 13, 2); }
inline std::uint32_t units(const FlawSetup& s) { return word_bits(s.mode_word, 11, 2); }
inline std::uint32_t resolution(const FlawSetup& s) { return word_bits(s.mode_word, 10, 1); }
inline std::uint32_t meas_mode(const FlawSetup& s) { return word_bits(s.mode_word, 8, 2); }
// Flaw detector measurement mode "THRU" (through-transmission): its lengths
// show doubled.
inline constexpr std::uint32_t FLAW_MEAS_MODE_THRU = 2;
inline std::uint32_t gate2_enabled(const FlawSetup& s) { return word_bits(s.mode_word, 7, 1); }
inline std::uint32_t zoom(const FlawSetup& s) { return word_bits(s.mode_word, 6, 1); }
inline std::uint32_t peak_mode(const FlawSetup& s) { return word_bits(s.mode_word, 4, 2); }
inline std::uint32_t gate1_peak(const FlawSetup& s) { return word_bits(s.mode_word, 3, 1); }
inline std::uint32_t gate2_peak(const FlawSetup& s) { return word_bits(s.mode_word, 2, 1); }
inline std::uint32_t peak_pitch(const FlawSetup& s) { return word_bits(s.mode_word, 1, 1); }
inline std::uint32_t curve_correction(const FlawSetup& s) { return word_bits(s.mode_word, 0, 1); }

// display_word of the flaw layout.
inline std::uint32_t floating_gate_level(const FlawSetup& s) { return word_bits(s.display_word, 11, 5); }
inline std::uint32_t energy(const FlawSetup& s) { return word_bits(s.display_word, 9, 2); }
inline std::uint32_t dac_on(const FlawSetup& s) { return word_bits(s.display_word, 8, 1); }
inline std::uint32_t waveform_outline(const FlawSetup& s) { return word_bits(s.display_word, 7, 1); }
inline std::uint32_t floating_gate1(const FlawSetup& s) { return word_bits(s.display_word, 6, 1); }
inline std::uint32_t floating_gate2(const FlawSetup& s) { return word_bits(s.display_word, 5, 1); }
inline std::uint32_t gate_tracking(const FlawSetup& s) { return word_bits(s.display_word, 4, 1); }
inline std::uint32_t x_axis_legs(const FlawSetup& s) { return word_bits(s.display_word, 3, 1); }
inline std::uint32_t csc(const FlawSetup& s) { return word_bits(s.display_word, 2, 1); }
inline std::uint32_t api_5ue(const FlawSetup& s) { return word_bits(s.display_word, 1, 1); }

}  // namespace ugf
