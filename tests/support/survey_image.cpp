#include "support/survey_image.h"

#include <algorithm>
#include <initializer_list>

namespace ugf::test {

namespace {

bool manual_layout(std::uint32_t file_type) { return file_type >= 10 && file_type <= 12; }
std::size_t slot_bytes(std::uint32_t file_type) { return file_type == 8 || file_type == 9 ? 37 : 16; }
std::size_t setup_at(std::uint32_t file_type, int entry) {
    return (manual_layout(file_type) ? 0x2240 : 0x0300) + 128 * static_cast<std::size_t>(entry);
}

// Bits `low` and up of a packed word hold the low `count` bits of `value`.
std::uint32_t field(std::uint32_t value, int low, int count) {
    return (value & ((1u << count) - 1u)) << low;
}

std::size_t count_or(int given, std::size_t fallback) {
    return given < 0 ? fallback : static_cast<std::size_t>(given);
}

// A big-endian number of `width` bytes at `at`: its low bytes, so a signed
// value is written in two's complement.
struct Field {
    std::size_t at;
    int width;
    std::uint64_t value;
    template <typename T>
    Field(std::size_t a, int w, T v) : at(a), width(w), value(static_cast<std::uint64_t>(v)) {}
};

void put(ImageBuilder& image, std::size_t base, std::initializer_list<Field> fields) {
    for (const Field& f : fields) {
        for (int b = 0; b < f.width; ++b) image.u8(base + f.at + b, static_cast<std::uint32_t>(f.value >> 8 * (f.width - 1 - b)));
    }
}

// A text field of `width` bytes: the characters (cut to the width) and a
// terminator when they leave room for one.
void put_text(ImageBuilder& image, std::size_t offset, std::string_view text, std::size_t width) {
    if (text.size() >= width) {
        image.chars(offset, text.substr(0, width));
    } else {
        image.text(offset, text);
    }
}

}  // namespace

std::size_t record_table_at(std::uint32_t file_type) { return manual_layout(file_type) ? 0x3440 : 0x1500; }
std::size_t slot_at(std::uint32_t file_type, std::uint32_t index) {
    return record_table_at(file_type) + slot_bytes(file_type) * index;
}

// ------------------------------------------------------------------ header

void set_ranges(SurveyHeader& header, const std::vector<DimRange>& dims) {
    std::uint32_t* counts[3] = {&header.c0, &header.c1, &header.c2};
    header.c0 = header.c1 = header.c2 = 0;
    header.start_id.clear();
    header.end_id.clear();
    // Dimension 2 stands first in the identifier, dimension 0 last.
    for (std::size_t d = std::min<std::size_t>(dims.size(), 3); d-- > 0;) {
        *counts[d] = static_cast<std::uint32_t>(dims[d].start.size());
        header.start_id += dims[d].start;
        header.end_id += dims[d].end;
        header.steps[d] = dims[d].step;
    }
}

void set_manual_labels(SurveyHeader& header, const std::vector<std::vector<std::string>>& labels) {
    for (std::size_t d = 0; d < 4; ++d) {
        header.manual_labels[d] = d < labels.size() ? labels[d] : std::vector<std::string>{};
        header.dim_label_count[d] = static_cast<std::uint32_t>(header.manual_labels[d].size());
    }
}

ImageBuilder survey_image(const SurveyHeader& h) {
    ImageBuilder image;
    put(image, 0, {{0x002, 2, h.file_version}, {0x004, 2, h.file_type}, {0x008, 1, h.c0}, {0x00A, 1, h.c1},
                   {0x00C, 1, h.c2}});
    put_text(image, 0x00E, h.prefix, 20);
    put_text(image, 0x022, h.start_id, 21);
    put_text(image, 0x038, h.end_id, 21);
    put(image, 0, {{0x04E, 4, h.id_count}, {0x05E, 5, h.current_index}, {0x064, 5, h.steps[0]},
                   {0x06A, 5, h.steps[1]}, {0x070, 5, h.steps[2]}, {0x076, 1, h.setup_count}});
    put_text(image, 0x078, h.description, 33);
    put_text(image, 0x09A, h.inspector_id, 33);
    put_text(image, 0x0BC, h.location, 33);
    // The fields that share their bytes with the custom point labels, which
    // are written behind them and win.
    put(image, 0, {{0x0DE, 1, h.gage_type}, {0x0FA, 1, h.c3}, {0x0FC, 5, h.steps[3]}, {0x102, 1, h.fourth_inc}});
    for (std::size_t d = 0; d < 4; ++d) image.u16(0x104 + 2 * d, h.dim_label_count[d]);
    for (std::size_t i = 0; i < 20; ++i) {
        if (!h.custom_point_labels[i].empty()) put_text(image, 0x0E2 + 20 * i, h.custom_point_labels[i], 20);
    }
    put(image, 0, {{0x272, 1, h.walk_pattern}, {0x274, 1, h.first_inc}, {0x276, 1, h.second_inc},
                   {0x278, 1, h.third_inc}, {0x27A, 1, h.elevation_unit}});
    if (manual_layout(h.file_type)) {
        for (std::size_t d = 0; d < 4; ++d) {
            for (std::size_t j = 0; j < h.manual_labels[d].size() && j < 100; ++j) {
                put_text(image, 0x300 + 20 * (100 * d + j), h.manual_labels[d][j], 20);
            }
        }
    }
    image.resize(std::max(image.bytes.size(), record_table_at(h.file_type)));
    return image;
}

// ------------------------------------------------------------------ setups

void write_gauge_setup(ImageBuilder& image, std::uint32_t file_type, int entry, const GaugeSetupImage& s) {
    const std::uint32_t diff_flags =
        field(s.alarm_type, 13, 3) | field(s.diff_type, 11, 2) | field(s.diff_ref_blank, 10, 1) |
        field(s.units, 8, 2) | field(s.resolution, 6, 2) | field(s.measurement_type, 4, 2) |
        field(s.echo1_negative, 3, 1) | field(s.echo2_negative, 2, 1) | field(s.pulser_power, 0, 2);
    const std::uint32_t option_flags =
        field(s.auto_phase_detect, 15, 1) | field(s.auto_mb, 14, 1) | field(s.temp_compensation, 13, 1) |
        field(s.coating_thickness, 12, 1) | field(s.bs_res_mode, 10, 2) | field(s.bs_encoder, 6, 4) |
        field(s.bs_step_code, 0, 6);
    const std::size_t at = setup_at(file_type, entry);
    put(image, at, {{0x00, 4, s.setup_present}, {0x04, 2, diff_flags}, {0x06, 4, s.low_alarm},
                    {0x0A, 4, s.high_alarm}, {0x0E, 4, s.diff_reference}, {0x12, 4, s.bs_range},
                    {0x16, 1, s.alarm_percent}, {0x18, 2, s.transducer}, {0x1A, 4, s.zero},
                    {0x1E, 2, s.velocity}, {0x20, 2, s.gain_mode}, {0x22, 2, s.gain_db}, {0x24, 2, s.slope},
                    {0x26, 2, s.transducer_frequency}, {0x28, 2, s.mb_blank}, {0x2A, 2, s.if_blank},
                    {0x2C, 2, s.c3_blank}, {0x2E, 2, s.echo_window}});
    put_text(image, at + 0x30, s.setup_name, 33);
    put(image, at, {{0x52, 2, option_flags}, {0x56, 2, s.coating_velocity}, {0x58, 4, s.temp_coefficient},
                    {0x5C, 2, s.temp_calibration}, {0x60, 2, s.velocity >> 16}, {0x62, 2, field(s.meas_mode, 12, 4)},
                    {0x68, 3, s.custom_encoder_res}});
}

void write_flaw_setup(ImageBuilder& image, std::uint32_t file_type, int entry, const FlawSetupImage& s) {
    const std::uint32_t bscan_flags =
        field(s.bscan_mode, 14, 2) | field(s.bscan_direction, 13, 1) | field(s.bscan_step_code, 7, 6) |
        field(s.bscan_encoder, 4, 3) | field(s.bscan_rewrite, 3, 1) | field(s.bscan_save_ascan, 1, 2) |
        field(s.bscan_los, 0, 1);
    const std::uint32_t mode_word =
        field(s.ref_gain_enabled, 15, 1) | field(s.rectification, 13, 2) | field(s.units, 11, 2) |
        field(s.resolution, 10, 1) | field(s.meas_mode, 8, 2) | field(s.gate2_enabled, 7, 1) | field(s.zoom, 6, 1) |
        field(s.peak_mode, 4, 2) | field(s.gate1_peak, 3, 1) | field(s.gate2_peak, 2, 1) |
        field(s.peak_pitch, 1, 1) | field(s.curve_correction, 0, 1);
    const std::uint32_t display_word =
        field(s.floating_gate_level, 11, 5) | field(s.energy, 9, 2) | field(s.dac_on, 8, 1) |
        field(s.waveform_outline, 7, 1) | field(s.floating_gate1, 6, 1) | field(s.floating_gate2, 5, 1) |
        field(s.gate_tracking, 4, 1) | field(s.x_axis_legs, 3, 1) | field(s.csc, 2, 1) | field(s.api_5ue, 1, 1);
    put(image, setup_at(file_type, entry),
        {{0x00, 4, s.velocity}, {0x04, 4, s.zero}, {0x08, 2, s.reference_gain}, {0x0A, 2, s.ref_gain_step},
         {0x0C, 2, s.gain}, {0x0E, 4, s.delay}, {0x12, 4, s.range}, {0x16, 2, s.frequency},
         {0x18, 2, field(s.reject_value, 7, 9) | field(s.box1_kind, 0, 7)},
         {0x1A, 2, field(s.box2_kind, 8, 8) | field(s.box3_kind, 0, 8)}, {0x1C, 4, s.gate1_start},
         {0x20, 4, s.gate1_width}, {0x24, 4, s.gate1_min_depth}, {0x28, 2, s.gate1_level}, {0x2A, 4, s.gate2_start},
         {0x2E, 4, s.gate2_width}, {0x32, 4, s.gate2_min_depth}, {0x36, 2, s.gate2_level},
         {0x38, 2, field(s.gate1_alarm, 8, 8) | field(s.gate2_alarm, 0, 8)}, {0x3A, 2, s.angle},
         {0x3C, 4, s.angle_beam_thickness}, {0x40, 4, s.x_value}, {0x44, 4, s.bscan_max_thickness},
         {0x48, 2, bscan_flags}, {0x4A, 2, field(s.dac_mode, 8, 8) | field(s.dac_curve_selected, 0, 8)},
         {0x4C, 2, s.dac_gain}, {0x4E, 2, s.dac_gain_step}, {0x50, 2, s.rl_gain}, {0x52, 2, s.sl_gain},
         {0x54, 2, s.el_gain}, {0x56, 2, mode_word}, {0x58, 2, display_word}, {0x5A, 2, s.dac_rectification},
         {0x5C, 4, s.setup_present}, {0x60, 4, s.pipe_diameter}, {0x64, 4, s.api_k_factor},
         {0x68, 3, s.custom_encoder_res}});
}

// ------------------------------------------------------------------- notes

void write_note(ImageBuilder& image, std::uint32_t file_type, int row, std::string_view text) {
    put_text(image, (manual_layout(file_type) ? 0x3240 : 0x1300) + 32 * static_cast<std::size_t>(row), text, 32);
}

// ----------------------------------------------------------------- records

RecordImage gauge_record(const GaugeReading& r) {
    const std::uint32_t word0 =
        field(r.record_type, 29, 3) | field(r.los, 28, 1) | field(r.units, 26, 2) | field(r.alarm_state, 23, 3) |
        field(r.fast_mode, 21, 2) | field(r.bscan_mode, 19, 2) | field(r.setup_number, 11, 5) |
        field(r.resolution, 9, 2) | field(r.thickness >> 16, 5, 4) | field(r.echo_to_echo, 4, 1);
    const std::uint32_t value_tags = field(r.second_kind, 0, 2) | field(r.first_kind, 2, 2) |
                                     field(r.max_value >> 16, 4, 4) | field(r.min_value >> 16, 8, 4) |
                                     field(r.first_value >> 16, 12, 4);
    return {word0, field(r.thickness, 16, 16) | field(r.note_mask, 0, 16),
            field(r.first_value, 16, 16) | field(r.min_value, 0, 16), field(r.max_value, 16, 16) | value_tags};
}

GaugeReading velocity_reading(std::uint32_t velocity, std::uint32_t units) {
    return {.units = units, .thickness = 0xFFFFA, .min_value = velocity & 0xFFFFu, .max_value = (velocity >> 16) & 0xFu};
}

RecordImage flaw_record(const FlawReading& r) {
    return {field(r.record_type, 29, 3) | field(r.flaw_setup_number, 24, 5) | field(r.gate1_alarm, 21, 3) |
                field(r.ascan_mark, 20, 1) | field(r.bscan_mark, 19, 1) | field(r.flaw_note_mask, 0, 16),
            r.box_value[0], r.box_value[1], r.box_value[2]};
}

RecordImage link_record(std::uint32_t record_type, std::uint32_t link, std::uint32_t word0_bits) {
    return {field(record_type, 29, 3) | (word0_bits & 0x1FFFFFFFu), link, 0, 0};
}

void write_record(ImageBuilder& image, std::size_t offset, const RecordImage& r) {
    put(image, offset, {{0, 4, r.word0}, {4, 4, r.at4}, {8, 4, r.at8}, {12, 4, r.at12}});
}

void write_slot(ImageBuilder& image, std::uint32_t file_type, std::uint32_t index, const RecordImage& record,
                std::string_view stored_id) {
    const std::size_t at = slot_at(file_type, index);
    write_record(image, at, record);
    if (slot_bytes(file_type) == 37) put_text(image, at + 16, stored_id, 21);
}

// ------------------------------------------------------------------- scans

void write_ascan_thickness(ImageBuilder& image, std::size_t offset, const ThicknessAscanImage& a) {
    write_record(image, offset, gauge_record(a.head));
    for (std::size_t i = 0; i < a.min_samples.size(); ++i) image.u16(offset + 16 + 2 * i, a.min_samples[i]);
    for (std::size_t i = 0; i < a.max_samples.size(); ++i) image.u16(offset + 652 + 2 * i, a.max_samples[i]);
    const std::uint32_t display_flags = field(a.rect_index, 14, 2) | field(a.zoom_bits, 12, 2) | field(a.freeze, 11, 1) |
                                        field(a.outline, 10, 1) | field(a.bracket_3, 8, 2) | field(a.delay_negative, 7, 1);
    put(image, offset,
        {{1288, 2, count_or(a.sample_count, std::max(a.min_samples.size(), a.max_samples.size()))},
         {1290, 2, a.delay}, {1292, 2, a.range}, {1294, 2, display_flags}, {1296, 2, a.echo_window},
         {1298, 2, a.marker1}, {1300, 2, a.marker2}, {1302, 2, a.marker3}, {1304, 2, a.mb_blank},
         {1306, 2, a.if_blank_raw}, {1308, 2, a.c3_blank}, {1310, 2, 0}, {1312, 2, a.bracket_2},
         {1314, 2, a.range >> 16}});
}

void write_ascan_flaw(ImageBuilder& image, std::size_t offset, const FlawAscanImage& a) {
    const std::uint32_t word0 = field(a.record_type, 29, 3) | field(a.gate_alarm, 23, 3) | field(a.dac_shown, 22, 1) |
                                field(a.block_setup_number, 17, 5) | field(a.peak_shown, 16, 1) |
                                field(a.flaw_note_mask, 0, 16);
    const std::uint32_t scan_flags = field(a.bracket_3, 13, 3) | field(a.bracket_4, 10, 3) |
                                     field(a.dac_stored, 9, 1) | field(a.peak_stored, 3, 1);
    put(image, offset,
        {{0, 4, word0}, {16, 2, scan_flags}, {18, 4, a.box_value[0]}, {22, 4, a.box_value[1]},
         {26, 4, a.box_value[2]}, {30, 2, count_or(a.sample_count, std::max(a.max_samples.size(), a.min_samples.size()))},
         {32, 2, a.bracket_2}});
    for (std::size_t i = 0; i < a.max_samples.size(); ++i) image.u8(offset + 34 + 2 * i, a.max_samples[i]);
    for (std::size_t i = 0; i < a.min_samples.size(); ++i) image.u8(offset + 35 + 2 * i, a.min_samples[i]);
    for (std::size_t i = 0; i < a.dac_points.size() && i < 25; ++i) {
        put(image, offset + 670 + 4 * i, {{0, 2, a.dac_points[i].dac_count}, {2, 2, a.dac_points[i].dac_amplitude}});
    }
    const std::size_t peak_at = a.dac_stored != 0 && a.peak_stored != 0 ? 720 : 670;
    for (std::size_t i = 0; i < a.peak_bytes.size(); ++i) image.u8(offset + peak_at + i, a.peak_bytes[i]);
    if (a.with_gates) {
        put(image, offset, {{1038, 2, a.gate1_amplitude}, {1040, 2, a.gate1_mti}, {1042, 2, a.gate2_amplitude},
                            {1044, 2, a.gate2_mti}});
    }
}

void write_bscan(ImageBuilder& image, std::size_t offset, const BscanImage& b) {
    write_record(image, offset, b.head);
    put(image, offset, {{20, 2, count_or(b.point_count, b.points.size())}, {34, 2, b.ascan_follows},
                        {38, 2, b.store_full}});
    for (std::size_t i = 0; i < b.points.size(); ++i) {
        const BscanPointImage& p = b.points[i];
        const std::uint32_t first = field(p.lost, 15, 1) | field(p.alarm, 12, 3) | field(p.is_min, 11, 1) |
                                    field(p.is_max, 10, 1) | field(p.magnitude >> 16, 6, 4) | field(p.negative, 4, 1);
        // Two 16-bit words, least significant byte first.
        image.le16(offset + BSCAN_POINTS_AT + 4 * i, first).le16(offset + BSCAN_POINTS_AT + 4 * i + 2, p.magnitude);
    }
    if (b.store_full != 0 && image.bytes.size() < offset + BSCAN_POINTS_AT + BSCAN_STORE_BYTES) {
        image.resize(offset + BSCAN_POINTS_AT + BSCAN_STORE_BYTES);
    }
}

ImageBuilder small_tank(const std::string& prefix) {
    SurveyHeader h{.file_type = 2, .gage_type = 5};
    h.prefix = prefix;
    h.id_count = 6;
    h.setup_count = 1;
    h.description = "TANK \"B\", EAST";
    h.location = "ROW 1\nROW 2";
    h.inspector_id = "J. DOE";
    set_ranges(h, {{"1", "3"}, {"A", "B"}});
    ImageBuilder image = survey_image(h);
    write_gauge_setup(image, 2, 0, {.alarm_type = 2, .low_alarm = 2000});
    write_note(image, 2, 0, "PIT, DEEP");
    const std::uint32_t thickness[] = {2500, 1900, 0, 2100, 0, 2400};
    for (std::uint32_t i = 0; i < 6; ++i) {
        if (i == 4) continue;  // never measured
        write_slot(image, 2, i, gauge_record({.los = i == 2 ? 1u : 0u, .resolution = 1, .thickness = thickness[i],
                                              .note_mask = i == 2 ? 1u : 0u}));
    }
    return image;
}

}  // namespace ugf::test
