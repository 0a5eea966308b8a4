// Datalogger images by region: the header, both setup layouts, notes, slots
// of every file type, reading records from named bit fields, and the A-scan
// and B-scan blocks. Everything is written through ImageBuilder at the
// offsets of the file map, which this unit states on its own (it doesn't ask
// the converter where anything lies).
//
// Plain structs with the file's field names; bit fields are given one by one
// and packed here. Designated initializers follow the declaration order, e.g.
//   GaugeReading{.units = 1, .setup_number = 3, .thickness = 12345}
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "file/records.h"
#include "support/image_builder.h"

namespace ugf::test {

// ---------------------------------------------------------------- file map

// Header 0x000 (768 bytes); manual labels 0x300 (types 10 to 12 only); the
// setup table (0x0300 or 0x2240), the notes (0x1300 or 0x3240) and the
// record table (0x1500 or 0x3440) behind them. Slots are 16 bytes, or 37 in
// types 8 and 9.
std::size_t record_table_at(std::uint32_t file_type);
std::size_t slot_at(std::uint32_t file_type, std::uint32_t index);

// ------------------------------------------------------------------ header

struct SurveyHeader {
    // file_version 0x002 u16; file_type 0x004 u16; c0 0x008 u8: characters of dimension 0 (last
    // part); c1 0x00A u8: characters of dimension 1; c2 0x00C u8: characters of dimension 2 (first
    // part).
    std::uint32_t file_version = 24, file_type = 0, c0 = 0, c1 = 0, c2 = 0;
    std::string prefix;               // 0x00E text 20
    std::string start_id;             // 0x022 text 21
    std::string end_id;               // 0x038 text 21
    // id_count 0x04E u32.
    std::uint32_t id_count = 0;
    // current_index 0x05E u40.
    std::uint64_t current_index = 0;
    // Steps of dimensions 0 to 3: u40 at 0x064, 0x06A, 0x070 and 0x0FC.
    std::array<std::uint64_t, 4> steps{1, 1, 1, 1};
    // setup_count 0x076 u8.
    std::uint32_t setup_count = 0;
    std::string description;        // 0x078 text 33
    std::string inspector_id;       // 0x09A text 33
    std::string location;           // 0x0BC text 33
    // gage_type 0x0DE u8.
    std::uint32_t gage_type = 5;
    // 0x0E2 + 20 i, text 20. They share their bytes with c3, step 3,
    // fourth_inc and the label counts: a label that is not empty is written
    // after those fields and wins.
    std::array<std::string, 20> custom_point_labels{};
    // c3 0x0FA u8: characters of dimension 3 (4D-MANUAL); fourth_inc 0x102 u8.
    std::uint32_t c3 = 0, fourth_inc = 0;
    std::array<std::uint32_t, 4> dim_label_count{};  // 0x104 .. 0x10A u16
    // Manual dimension labels, text 20 at 0x300 + 20 (100 d + j); written in
    // the manual layout only (elsewhere those bytes are the setup table).
    std::array<std::vector<std::string>, 4> manual_labels{};
    // walk_pattern 0x272 u8; first_inc 0x274 u8; second_inc 0x276 u8; third_inc 0x278 u8;
    // elevation_unit 0x27A u8.
    std::uint32_t walk_pattern = 0, first_inc = 1, second_inc = 2, third_inc = 3, elevation_unit = 0;
};

// One ranged dimension: its start and end texts and its step.
struct DimRange {
    std::string start;
    std::string end;
    std::uint64_t step = 1;
};

// Fills c0, c1, c2, start_id, end_id and the steps from the dimensions,
// dimension 0 first; each count is the width of the start text.
void set_ranges(SurveyHeader& header, const std::vector<DimRange>& dims);
// Fills manual_labels and dim_label_count, dimension 0 first.
void set_manual_labels(SurveyHeader& header, const std::vector<std::vector<std::string>>& labels);

// An image that opens: the header, and zeros up to the record table (empty
// setups and notes).
ImageBuilder survey_image(const SurveyHeader& header);

// ------------------------------------------------------------------ setups

// Thickness gauge layout, gage types 5 and 6.
struct GaugeSetupImage {
    // setup_present 0x00 u32.
    std::uint32_t setup_present = 1;
    // diff_flags, 0x04 u16
    // alarm_type bits 15-13; diff_type bits 12-11; diff_ref_blank bit 10; units bits 9-8;
    // resolution bits 7-6; measurement_type bits 5-4; echo1_negative bit 3; echo2_negative bit 2;
    // pulser_power bits 1-0; low_alarm 0x06 u32; high_alarm 0x0A u32; diff_reference 0x0E u32;
    // bs_range 0x12 u32; alarm_percent 0x16 u8; transducer 0x18 u16.
    std::uint32_t alarm_type = 0, diff_type = 0, diff_ref_blank = 0, units = 0, resolution = 0, measurement_type = 0,
        echo1_negative = 0, echo2_negative = 0, pulser_power = 0, low_alarm = 0, high_alarm = 0, diff_reference = 0,
        bs_range = 0, alarm_percent = 0, transducer = 0;
    // zero 0x1A u32.
    std::int32_t zero = 0;
    // velocity low half 0x1E, high half 0x60; gain_mode 0x20 u16; gain_db 0x22 u16; slope 0x24
    // u16; transducer_frequency 0x26 u16.
    std::uint32_t velocity = 0, gain_mode = 0, gain_db = 0, slope = 0, transducer_frequency = 0;
    // mb_blank 0x28 u16; if_blank 0x2A u16; c3_blank 0x2C u16.
    std::int32_t mb_blank = 0, if_blank = 0, c3_blank = 0;
    // echo_window 0x2E u16.
    std::uint32_t echo_window = 0;
    std::string setup_name;              // 0x30 text 33
    // option_flags, 0x52 u16
    // auto_phase_detect bit 15; auto_mb bit 14; temp_compensation bit 13; coating_thickness bit
    // 12; bs_res_mode bits 11-10; bs_encoder bits 9-6; bs_step_code bits 5-0; coating_velocity
    // 0x56 u16.
    std::uint32_t auto_phase_detect = 0, auto_mb = 0, temp_compensation = 0, coating_thickness = 0, bs_res_mode = 0,
        bs_encoder = 0, bs_step_code = 0, coating_velocity = 0;
    // temp_coefficient 0x58 u32; temp_calibration 0x5C u16.
    std::int32_t temp_coefficient = 0, temp_calibration = 0;
    // meas_word, 0x62 u16
    // meas_mode bits 15-12; custom_encoder_res 0x68 u24.
    std::uint32_t meas_mode = 0, custom_encoder_res = 0;
};
void write_gauge_setup(ImageBuilder& image, std::uint32_t file_type, int entry,
                       const GaugeSetupImage& s);

// Flaw detector layout, gage type 7.
struct FlawSetupImage {
    // velocity 0x00 u32.
    std::uint32_t velocity = 0;
    // zero 0x04 u32; reference_gain 0x08 u16.
    std::int32_t zero = 0, reference_gain = 0;
    // ref_gain_step 0x0A u16; gain 0x0C u16; delay 0x0E u32; range 0x12 u32; frequency 0x16 u16;
    // reject_value 0x18 bits 15-7; box1_kind 0x18 bits 6-0; box2_kind 0x1A bits 15-8; box3_kind
    // 0x1A bits 7-0; gate1_start 0x1C u32; gate1_width 0x20 u32; gate1_min_depth 0x24 u32;
    // gate1_level 0x28 u16; gate2_start 0x2A u32; gate2_width 0x2E u32; gate2_min_depth 0x32 u32;
    // gate2_level 0x36 u16; gate1_alarm 0x38 bits 15-8; gate2_alarm 0x38 bits 7-0; angle 0x3A u16;
    // angle_beam_thickness 0x3C u32; x_value 0x40 u32; bscan_max_thickness 0x44 u32.
    std::uint32_t ref_gain_step = 0, gain = 0, delay = 0, range = 0, frequency = 0, reject_value = 0, box1_kind = 0,
        box2_kind = 0, box3_kind = 0, gate1_start = 0, gate1_width = 0, gate1_min_depth = 0, gate1_level = 0,
        gate2_start = 0, gate2_width = 0, gate2_min_depth = 0, gate2_level = 0, gate1_alarm = 0, gate2_alarm = 0,
        angle = 0, angle_beam_thickness = 0, x_value = 0, bscan_max_thickness = 0;
    // bscan_flags, 0x48 u16
    // bscan_mode bits 15-14; bscan_direction bit 13; bscan_step_code bits 12-7; bscan_encoder bits
    // 6-4; bscan_rewrite bit 3; bscan_save_ascan bits 2-1; bscan_los bit 0; dac_mode 0x4A bits
    // 15-8; dac_curve_selected 0x4A bits 7-0.
    std::uint32_t bscan_mode = 0, bscan_direction = 0, bscan_step_code = 0, bscan_encoder = 0, bscan_rewrite = 0,
        bscan_save_ascan = 0, bscan_los = 0, dac_mode = 0, dac_curve_selected = 0;
    // dac_gain 0x4C u16.
    std::int32_t dac_gain = 0;
    // dac_gain_step 0x4E u16.
    std::uint32_t dac_gain_step = 0;
    // rl_gain 0x50 u16; sl_gain 0x52 u16; el_gain 0x54 u16.
    std::int32_t rl_gain = 0, sl_gain = 0, el_gain = 0;
    // mode_word, 0x56 u16
    // ref_gain_enabled bit 15; rectification bits 14-13; units bits 12-11; resolution bit 10;
    // meas_mode bits 9-8; gate2_enabled bit 7; zoom bit 6; peak_mode bits 5-4; gate1_peak bit 3;
    // gate2_peak bit 2; peak_pitch bit 1; curve_correction bit 0.
    std::uint32_t ref_gain_enabled = 0, rectification = 0, units = 0, resolution = 0, meas_mode = 0,
        gate2_enabled = 0, zoom = 0, peak_mode = 0, gate1_peak = 0, gate2_peak = 0, peak_pitch = 0,
        curve_correction = 0;
    // display_word, 0x58 u16
    // floating_gate_level bits 15-11; energy bits 10-9; dac_on bit 8; waveform_outline bit 7;
    // floating_gate1 bit 6; floating_gate2 bit 5; gate_tracking bit 4; x_axis_legs bit 3; csc bit
    // 2; api_5ue bit 1; dac_rectification 0x5A u16; setup_present 0x5C u32; pipe_diameter 0x60
    // u32; api_k_factor 0x64 u32, in ten-thousandths; custom_encoder_res 0x68, three bytes (the
    // first has no effect).
    std::uint32_t floating_gate_level = 0, energy = 0, dac_on = 0, waveform_outline = 0, floating_gate1 = 0,
        floating_gate2 = 0, gate_tracking = 0, x_axis_legs = 0, csc = 0, api_5ue = 0, dac_rectification = 0,
        setup_present = 1, pipe_diameter = 0, api_k_factor = 0, custom_encoder_res = 0;
};
void write_flaw_setup(ImageBuilder& image, std::uint32_t file_type, int entry,
                      const FlawSetupImage& s);

// ------------------------------------------------------------------- notes

// Note row `row` (32 bytes): the characters, and a terminator when the text
// is shorter than 32. A note of 32 characters runs into the next row.
void write_note(ImageBuilder& image, std::uint32_t file_type, int row, std::string_view text);

// ----------------------------------------------------------------- records

// A 16-byte record as the file stores it: four big-endian u32 at 0, 4, 8, 12.
// (In the measurement layout `at4` is thick_lo << 16 | note_mask.)
struct RecordImage {
    std::uint32_t word0 = 0, at4 = 0, at8 = 0, at12 = 0;
};

// A record of gage types 5 and 6 in the measurement layout.
struct GaugeReading {
    // record_type bits 31-29; los bit 28; units bits 27-26; alarm_state bits 25-23; fast_mode bits
    // 22-21; bscan_mode bits 20-19; setup_number bits 15-11; resolution bits 10-9; echo_to_echo
    // bit 4; thickness raw 20 bits: thick_hi (word0 bits 8-5) and thick_lo; note_mask bit 0 is
    // note A; first_kind value_tags bits 3-2; second_kind value_tags bits 1-0; first_value 20
    // bits; min_value 20 bits; max_value 20 bits.
    std::uint32_t record_type = 1, los = 0, units = 0, alarm_state = 0, fast_mode = 0, bscan_mode = 0,
        setup_number = 0, resolution = 0, echo_to_echo = 0, thickness = 0, note_mask = 0, first_kind = 0,
        second_kind = 0, first_value = 0, min_value = 0, max_value = 0;
};
RecordImage gauge_record(const GaugeReading& r);
// A velocity reading: raw thickness 0xFFFFA, the velocity's low 16 bits in
// min_lo and its bits 16 to 19 in the low bits of max_lo.
GaugeReading velocity_reading(std::uint32_t velocity, std::uint32_t units);

// A record of gage type 7: word0 and the three box values.
struct FlawReading {
    // record_type bits 31-29; flaw_setup_number bits 28-24; gate1_alarm bits 23-21; ascan_mark bit
    // 20; bscan_mark bit 19; flaw_note_mask bits 15-0.
    std::uint32_t record_type = 1, flaw_setup_number = 0, gate1_alarm = 0, ascan_mark = 0, bscan_mark = 0,
        flaw_note_mask = 0;
    std::array<std::uint32_t, 3> box_value{};  // at 4, 8, 12
};
RecordImage flaw_record(const FlawReading& r);

// A link record (type 2 or 4): `word0` may carry any other bits.
RecordImage link_record(std::uint32_t record_type, std::uint32_t link, std::uint32_t word0_bits = 0);

void write_record(ImageBuilder& image, std::size_t offset, const RecordImage& record);
// The record of storage index `index`; in the 37-byte slots of types 8 and 9
// also the reading's identifier (text 21 at slot offset 16).
void write_slot(ImageBuilder& image, std::uint32_t file_type, std::uint32_t index,
                const RecordImage& record, std::string_view stored_id = {});

// ------------------------------------------------------------------- scans

inline constexpr std::size_t THICKNESS_ASCAN_BYTES = 1316;
inline constexpr std::size_t FLAW_ASCAN_BYTES = 1046;
inline constexpr std::size_t BSCAN_ASCAN_AT = 76;
inline constexpr std::size_t BSCAN_POINTS_AT = 3164;
inline constexpr std::size_t BSCAN_STORE_BYTES = 40000;

// A-scan block of gage types 5 and 6 (1316 bytes).
struct ThicknessAscanImage {
    GaugeReading head{.record_type = 3};  // the reading itself, type 3
    int sample_count = -1;  // -1: the length of the longer sample list
    std::vector<std::uint16_t> min_samples;  // from 16
    std::vector<std::uint16_t> max_samples;  // from 652
    // delay 1290; range range_lo 1292, range_hi 1314.
    std::uint32_t delay = 0, range = 0;
    // display_flags, 1294
    // rect_index bits 15-14; zoom_bits bits 13-12; freeze bit 11; outline bit 10; bracket_3 bits
    // 9-8; delay_negative bit 7.
    std::uint32_t rect_index = 0, zoom_bits = 0, freeze = 0, outline = 0, bracket_3 = 0, delay_negative = 0;
    // echo_window 1296; marker1 1298; marker2 1300; marker3 1302; mb_blank 1304; if_blank_raw
    // 1306; c3_blank 1308.
    std::int32_t echo_window = 0, marker1 = 0, marker2 = 0, marker3 = 0, mb_blank = 0, if_blank_raw = 0, c3_blank = 0;
    // bracket_2 1312.
    std::uint32_t bracket_2 = 0;
};
void write_ascan_thickness(ImageBuilder& image, std::size_t offset, const ThicknessAscanImage& a);

// A-scan block of gage type 7.
struct FlawAscanImage {
    // word0
    // record_type bits 31-29; gate_alarm bits 25-23; dac_shown bit 22; block_setup_number bits
    // 21-17; peak_shown bit 16; flaw_note_mask bits 15-0.
    std::uint32_t record_type = 3, gate_alarm = 0, dac_shown = 0, block_setup_number = 0, peak_shown = 0,
        flaw_note_mask = 0;
    // scan_flags, 16
    // bracket_3 bits 15-13; bracket_4 bits 12-10; dac_stored bit 9; peak_stored bit 3.
    std::uint32_t bracket_3 = 0, bracket_4 = 0, dac_stored = 0, peak_stored = 0;
    std::array<std::uint32_t, 3> box_value{};  // 18, 22, 26
    int sample_count = -1;          // 30; -1: the length of the longer sample list
    // bracket_2 32.
    std::uint32_t bracket_2 = 0;
    std::vector<std::uint8_t> max_samples;  // byte pairs from 34: the maximum first
    std::vector<std::uint8_t> min_samples;  // then the minimum
    // Written at 670 when not empty (at most 25 are written).
    std::vector<DacPoint> dac_points;
    // Written as stored, after the DAC points: at 720 when both flags are
    // set, else at 670.
    std::vector<std::uint8_t> peak_bytes;
    bool with_gates = true;  // the gate fields 1038 to 1044 (file version 9 on)
    std::uint32_t gate1_amplitude = 0, gate1_mti = 0, gate2_amplitude = 0, gate2_mti = 0;
};
void write_ascan_flaw(ImageBuilder& image, std::size_t offset, const FlawAscanImage& a);

// One B-scan point: two 16-bit words, least significant byte first.
struct BscanPointImage {
    // lost first word bit 15; alarm bits 14-12; is_min bit 11; is_max bit 10; negative bit 4;
    // magnitude 20 bits: bits 9-6 of the first word, and the second word.
    std::uint32_t lost = 0, alarm = 0, is_min = 0, is_max = 0, negative = 0, magnitude = 0;
};

// B-scan block of every gage type. An embedded A-scan is written by the
// caller at offset + BSCAN_ASCAN_AT.
struct BscanImage {
    RecordImage head{.word0 = 5u << 29};  // type 5: gauge_record or flaw_record
    int point_count = -1;        // 20; -1: the number of points given
    // ascan_follows 34; store_full 38; when not 0 the image covers the whole store.
    std::uint32_t ascan_follows = 0, store_full = 0;
    std::vector<BscanPointImage> points;  // from 3164
};
void write_bscan(ImageBuilder& image, std::size_t offset, const BscanImage& b);

// ----------------------------------------------------------- small survey

// A corrosion gauge 2D survey of 3 x 2 points (rows 1 to 3, columns A and
// B; slot i is row i % 3 of column i / 3) with stored texts that hold
// commas, quotes and a line end: readings 0.250, 0.190, a lost reading with
// note A ("PIT, DEEP"), 0.210, an empty point, 0.240, and a setup whose low
// alarm is 0.2000 inch.
ImageBuilder small_tank(const std::string& prefix = "T,1-");

}  // namespace ugf::test
