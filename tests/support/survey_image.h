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

#include "store/dac_point.h"
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
    std::uint32_t file_version = 24;  // 0x002 u16
    std::uint32_t file_type = 0;      // 0x004 u16
    std::uint32_t c0 = 0;             // 0x008 u8: characters of dimension 0 (last part)
    std::uint32_t c1 = 0;             // 0x00A u8: characters of dimension 1
    std::uint32_t c2 = 0;             // 0x00C u8: characters of dimension 2 (first part)
    std::string prefix;               // 0x00E text 20
    std::string start_id;             // 0x022 text 21
    std::string end_id;               // 0x038 text 21
    std::uint32_t id_count = 0;       // 0x04E u32
    std::uint64_t current_index = 0;  // 0x05E u40
    // Steps of dimensions 0 to 3: u40 at 0x064, 0x06A, 0x070 and 0x0FC.
    std::array<std::uint64_t, 4> steps{1, 1, 1, 1};
    std::uint32_t setup_count = 0;  // 0x076 u8
    std::string description;        // 0x078 text 33
    std::string inspector_id;       // 0x09A text 33
    std::string location;           // 0x0BC text 33
    std::uint32_t gage_type = 5;    // 0x0DE u8
    // 0x0E2 + 20 i, text 20. They share their bytes with c3, step 3,
    // fourth_inc and the label counts: a label that is not empty is written
    // after those fields and wins.
    std::array<std::string, 20> custom_point_labels{};
    std::uint32_t c3 = 0;          // 0x0FA u8: characters of dimension 3 (4D-MANUAL)
    std::uint32_t fourth_inc = 0;  // 0x102 u8
    std::array<std::uint32_t, 4> dim_label_count{};  // 0x104 .. 0x10A u16
    // Manual dimension labels, text 20 at 0x300 + 20 (100 d + j); written in
    // the manual layout only (elsewhere those bytes are the setup table).
    std::array<std::vector<std::string>, 4> manual_labels{};
    std::uint32_t walk_pattern = 0;    // 0x272 u8
    std::uint32_t first_inc = 1;       // 0x274 u8
    std::uint32_t second_inc = 2;      // 0x276 u8
    std::uint32_t third_inc = 3;       // 0x278 u8
    std::uint32_t elevation_unit = 0;  // 0x27A u8
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
    std::uint32_t setup_present = 1;  // 0x00 u32
    // diff_flags, 0x04 u16
    std::uint32_t alarm_type = 0;        // bits 15-13
    std::uint32_t diff_type = 0;         // bits 12-11
    std::uint32_t diff_ref_blank = 0;    // bit 10
    std::uint32_t units = 0;             // bits 9-8
    std::uint32_t resolution = 0;        // bits 7-6
    std::uint32_t measurement_type = 0;  // bits 5-4
    std::uint32_t echo1_negative = 0;    // bit 3
    std::uint32_t echo2_negative = 0;    // bit 2
    std::uint32_t pulser_power = 0;      // bits 1-0
    std::uint32_t low_alarm = 0;         // 0x06 u32
    std::uint32_t high_alarm = 0;        // 0x0A u32
    std::uint32_t diff_reference = 0;    // 0x0E u32
    std::uint32_t bs_range = 0;          // 0x12 u32
    std::uint32_t alarm_percent = 0;     // 0x16 u8
    std::uint32_t transducer = 0;        // 0x18 u16
    std::int32_t zero = 0;               // 0x1A u32
    std::uint32_t velocity = 0;          // low half 0x1E, high half 0x60
    std::uint32_t gain_mode = 0;         // 0x20 u16
    std::uint32_t gain_db = 0;           // 0x22 u16
    std::uint32_t slope = 0;             // 0x24 u16
    std::uint32_t transducer_frequency = 0;  // 0x26 u16
    std::int32_t mb_blank = 0;           // 0x28 u16
    std::int32_t if_blank = 0;           // 0x2A u16
    std::int32_t c3_blank = 0;           // 0x2C u16
    std::uint32_t echo_window = 0;       // 0x2E u16
    std::string setup_name;              // 0x30 text 33
    // option_flags, 0x52 u16
    std::uint32_t auto_phase_detect = 0;  // bit 15
    std::uint32_t auto_mb = 0;            // bit 14
    std::uint32_t temp_compensation = 0;  // bit 13
    std::uint32_t coating_thickness = 0;  // bit 12
    std::uint32_t bs_res_mode = 0;        // bits 11-10
    std::uint32_t bs_encoder = 0;         // bits 9-6
    std::uint32_t bs_step_code = 0;       // bits 5-0
    std::uint32_t coating_velocity = 0;   // 0x56 u16
    std::int32_t temp_coefficient = 0;    // 0x58 u32
    std::int32_t temp_calibration = 0;    // 0x5C u16
    // meas_word, 0x62 u16
    std::uint32_t meas_mode = 0;          // bits 15-12
    std::uint32_t custom_encoder_res = 0;  // 0x68 u24
};
void write_gauge_setup(ImageBuilder& image, std::uint32_t file_type, int entry,
                       const GaugeSetupImage& s);

// Flaw detector layout, gage type 7.
struct FlawSetupImage {
    std::uint32_t velocity = 0;          // 0x00 u32
    std::int32_t zero = 0;               // 0x04 u32
    std::int32_t reference_gain = 0;     // 0x08 u16
    std::uint32_t ref_gain_step = 0;     // 0x0A u16
    std::uint32_t gain = 0;              // 0x0C u16
    std::uint32_t delay = 0;             // 0x0E u32
    std::uint32_t range = 0;             // 0x12 u32
    std::uint32_t frequency = 0;         // 0x16 u16
    std::uint32_t reject_value = 0;      // 0x18 bits 15-7
    std::uint32_t box1_kind = 0;         // 0x18 bits 6-0
    std::uint32_t box2_kind = 0;         // 0x1A bits 15-8
    std::uint32_t box3_kind = 0;         // 0x1A bits 7-0
    std::uint32_t gate1_start = 0;       // 0x1C u32
    std::uint32_t gate1_width = 0;       // 0x20 u32
    std::uint32_t gate1_min_depth = 0;   // 0x24 u32
    std::uint32_t gate1_level = 0;       // 0x28 u16
    std::uint32_t gate2_start = 0;       // 0x2A u32
    std::uint32_t gate2_width = 0;       // 0x2E u32
    std::uint32_t gate2_min_depth = 0;   // 0x32 u32
    std::uint32_t gate2_level = 0;       // 0x36 u16
    std::uint32_t gate1_alarm = 0;       // 0x38 bits 15-8
    std::uint32_t gate2_alarm = 0;       // 0x38 bits 7-0
    std::uint32_t angle = 0;             // 0x3A u16
    std::uint32_t angle_beam_thickness = 0;  // 0x3C u32
    std::uint32_t x_value = 0;           // 0x40 u32
    std::uint32_t bscan_max_thickness = 0;   // 0x44 u32
    // bscan_flags, 0x48 u16
    std::uint32_t bscan_mode = 0;        // bits 15-14
    std::uint32_t bscan_direction = 0;   // bit 13
    std::uint32_t bscan_step_code = 0;   // bits 12-7
    std::uint32_t bscan_encoder = 0;     // bits 6-4
    std::uint32_t bscan_rewrite = 0;     // bit 3
    std::uint32_t bscan_save_ascan = 0;  // bits 2-1
    std::uint32_t bscan_los = 0;         // bit 0
    std::uint32_t dac_mode = 0;          // 0x4A bits 15-8
    std::uint32_t dac_curve_selected = 0;  // 0x4A bits 7-0
    std::int32_t dac_gain = 0;           // 0x4C u16
    std::uint32_t dac_gain_step = 0;     // 0x4E u16
    std::int32_t rl_gain = 0;            // 0x50 u16
    std::int32_t sl_gain = 0;            // 0x52 u16
    std::int32_t el_gain = 0;            // 0x54 u16
    // mode_word, 0x56 u16
    std::uint32_t ref_gain_enabled = 0;  // bit 15
    std::uint32_t rectification = 0;     // bits 14-13
    std::uint32_t units = 0;             // bits 12-11
    std::uint32_t resolution = 0;        // bit 10
    std::uint32_t meas_mode = 0;         // bits 9-8
    std::uint32_t gate2_enabled = 0;     // bit 7
    std::uint32_t zoom = 0;              // bit 6
    std::uint32_t peak_mode = 0;         // bits 5-4
    std::uint32_t gate1_peak = 0;        // bit 3
    std::uint32_t gate2_peak = 0;        // bit 2
    std::uint32_t peak_pitch = 0;        // bit 1
    std::uint32_t curve_correction = 0;  // bit 0
    // display_word, 0x58 u16
    std::uint32_t floating_gate_level = 0;  // bits 15-11
    std::uint32_t energy = 0;            // bits 10-9
    std::uint32_t dac_on = 0;            // bit 8
    std::uint32_t waveform_outline = 0;  // bit 7
    std::uint32_t floating_gate1 = 0;    // bit 6
    std::uint32_t floating_gate2 = 0;    // bit 5
    std::uint32_t gate_tracking = 0;     // bit 4
    std::uint32_t x_axis_legs = 0;       // bit 3
    std::uint32_t csc = 0;               // bit 2
    std::uint32_t api_5ue = 0;           // bit 1
    std::uint32_t dac_rectification = 0;  // 0x5A u16
    std::uint32_t setup_present = 1;     // 0x5C u32
    std::uint32_t pipe_diameter = 0;     // 0x60 u32
    std::uint32_t api_k_factor = 0;      // 0x64 u32, in ten-thousandths
    std::uint32_t custom_encoder_res = 0;  // 0x68, three bytes (the first has no effect)
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
    std::uint32_t word0 = 0;
    std::uint32_t at4 = 0;
    std::uint32_t at8 = 0;
    std::uint32_t at12 = 0;
};

// A record of gage types 5 and 6 in the measurement layout.
struct GaugeReading {
    std::uint32_t record_type = 1;  // bits 31-29
    std::uint32_t los = 0;          // bit 28
    std::uint32_t units = 0;        // bits 27-26
    std::uint32_t alarm_state = 0;  // bits 25-23
    std::uint32_t fast_mode = 0;    // bits 22-21
    std::uint32_t bscan_mode = 0;   // bits 20-19
    std::uint32_t setup_number = 0;  // bits 15-11
    std::uint32_t resolution = 0;   // bits 10-9
    std::uint32_t echo_to_echo = 0;  // bit 4
    std::uint32_t thickness = 0;    // raw 20 bits: thick_hi (word0 bits 8-5) and thick_lo
    std::uint32_t note_mask = 0;    // bit 0 is note A
    std::uint32_t first_kind = 0;   // value_tags bits 3-2
    std::uint32_t second_kind = 0;  // value_tags bits 1-0
    std::uint32_t first_value = 0;  // 20 bits
    std::uint32_t min_value = 0;    // 20 bits
    std::uint32_t max_value = 0;    // 20 bits
};
RecordImage gauge_record(const GaugeReading& r);
// A velocity reading: raw thickness 0xFFFFA, the velocity's low 16 bits in
// min_lo and its bits 16 to 19 in the low bits of max_lo.
GaugeReading velocity_reading(std::uint32_t velocity, std::uint32_t units);

// A record of gage type 7: word0 and the three box values.
struct FlawReading {
    std::uint32_t record_type = 1;        // bits 31-29
    std::uint32_t flaw_setup_number = 0;  // bits 28-24
    std::uint32_t gate1_alarm = 0;        // bits 23-21
    std::uint32_t ascan_mark = 0;         // bit 20
    std::uint32_t bscan_mark = 0;         // bit 19
    std::uint32_t flaw_note_mask = 0;     // bits 15-0
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
    std::uint32_t delay = 0;                 // 1290
    std::uint32_t range = 0;                 // range_lo 1292, range_hi 1314
    // display_flags, 1294
    std::uint32_t rect_index = 0;      // bits 15-14
    std::uint32_t zoom_bits = 0;       // bits 13-12
    std::uint32_t freeze = 0;          // bit 11
    std::uint32_t outline = 0;         // bit 10
    std::uint32_t bracket_3 = 0;       // bits 9-8
    std::uint32_t delay_negative = 0;  // bit 7
    std::int32_t echo_window = 0;   // 1296
    std::int32_t marker1 = 0;       // 1298
    std::int32_t marker2 = 0;       // 1300
    std::int32_t marker3 = 0;       // 1302
    std::int32_t mb_blank = 0;      // 1304
    std::int32_t if_blank_raw = 0;  // 1306
    std::int32_t c3_blank = 0;      // 1308
    std::uint32_t bracket_2 = 0;    // 1312
};
void write_ascan_thickness(ImageBuilder& image, std::size_t offset, const ThicknessAscanImage& a);

// A-scan block of gage type 7.
struct FlawAscanImage {
    // word0
    std::uint32_t record_type = 3;         // bits 31-29
    std::uint32_t gate_alarm = 0;          // bits 25-23
    std::uint32_t dac_shown = 0;           // bit 22
    std::uint32_t block_setup_number = 0;  // bits 21-17
    std::uint32_t peak_shown = 0;          // bit 16
    std::uint32_t flaw_note_mask = 0;      // bits 15-0
    // scan_flags, 16
    std::uint32_t bracket_3 = 0;    // bits 15-13
    std::uint32_t bracket_4 = 0;    // bits 12-10
    std::uint32_t dac_stored = 0;   // bit 9
    std::uint32_t peak_stored = 0;  // bit 3
    std::array<std::uint32_t, 3> box_value{};  // 18, 22, 26
    int sample_count = -1;          // 30; -1: the length of the longer sample list
    std::uint32_t bracket_2 = 0;    // 32
    std::vector<std::uint8_t> max_samples;  // byte pairs from 34: the maximum first
    std::vector<std::uint8_t> min_samples;  // then the minimum
    // Written at 670 when not empty (at most 25 are written).
    std::vector<DacPoint> dac_points;
    // Written as stored, after the DAC points: at 720 when both flags are
    // set, else at 670.
    std::vector<std::uint8_t> peak_bytes;
    bool with_gates = true;  // the gate fields 1038 to 1044 (file version 9 on)
    std::uint32_t gate1_amplitude = 0;
    std::uint32_t gate1_mti = 0;
    std::uint32_t gate2_amplitude = 0;
    std::uint32_t gate2_mti = 0;
};
void write_ascan_flaw(ImageBuilder& image, std::size_t offset, const FlawAscanImage& a);

// One B-scan point: two 16-bit words, least significant byte first.
struct BscanPointImage {
    std::uint32_t lost = 0;       // first word bit 15
    std::uint32_t alarm = 0;      // bits 14-12
    std::uint32_t is_min = 0;     // bit 11
    std::uint32_t is_max = 0;     // bit 10
    std::uint32_t negative = 0;   // bit 4
    std::uint32_t magnitude = 0;  // 20 bits: bits 9-6 of the first word, and the second word
};

// B-scan block of every gage type. An embedded A-scan is written by the
// caller at offset + BSCAN_ASCAN_AT.
struct BscanImage {
    RecordImage head{.word0 = 5u << 29};  // type 5: gauge_record or flaw_record
    int point_count = -1;        // 20; -1: the number of points given
    std::uint32_t ascan_follows = 0;  // 34
    std::uint32_t store_full = 0;     // 38; when not 0 the image covers the whole store
    std::vector<BscanPointImage> points;  // from 3164
};
void write_bscan(ImageBuilder& image, std::size_t offset, const BscanImage& b);

}  // namespace ugf::test
