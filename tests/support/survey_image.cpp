#include "support/survey_image.h"

#include <algorithm>

namespace ugf::test {

namespace {

bool manual_layout(std::uint32_t file_type) { return file_type >= 10 && file_type <= 12; }

std::uint32_t field(std::uint32_t value, int low, int count) {
    return (value & ((1u << count) - 1u)) << low;
}

std::uint32_t u16_of(std::int32_t value) { return static_cast<std::uint32_t>(value) & 0xFFFFu; }

std::size_t count_or(int given, std::size_t fallback) {
    return given < 0 ? fallback : static_cast<std::size_t>(given);
}

}  // namespace

// ---------------------------------------------------------------- file map

std::size_t setup_table_at(std::uint32_t file_type) { return manual_layout(file_type) ? 0x2240 : 0x0300; }
std::size_t setup_entry_at(std::uint32_t file_type, int entry) {
    return setup_table_at(file_type) + 128 * static_cast<std::size_t>(entry);
}
std::size_t note_table_at(std::uint32_t file_type) { return manual_layout(file_type) ? 0x3240 : 0x1300; }
std::size_t note_at(std::uint32_t file_type, int row) {
    return note_table_at(file_type) + 32 * static_cast<std::size_t>(row);
}
std::size_t record_table_at(std::uint32_t file_type) { return manual_layout(file_type) ? 0x3440 : 0x1500; }
std::size_t slot_bytes(std::uint32_t file_type) { return file_type == 8 || file_type == 9 ? 37 : 16; }
std::size_t slot_at(std::uint32_t file_type, std::uint32_t index) {
    return record_table_at(file_type) + slot_bytes(file_type) * index;
}
std::size_t manual_label_at(int dimension, int j) {
    return 0x300 + 20 * (100 * static_cast<std::size_t>(dimension) + static_cast<std::size_t>(j));
}
std::size_t custom_point_label_at(int i) { return 0x0E2 + 20 * static_cast<std::size_t>(i); }

void put_text(ImageBuilder& image, std::size_t offset, std::string_view text, std::size_t width) {
    if (text.size() >= width) {
        image.chars(offset, text.substr(0, width));
    } else {
        image.text(offset, text);
    }
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

void write_header(ImageBuilder& image, const SurveyHeader& h) {
    image.u16(0x002, h.file_version)
        .u16(0x004, h.file_type)
        .u8(0x006, h.reserved_006)
        .u8(0x008, h.c0)
        .u8(0x00A, h.c1)
        .u8(0x00C, h.c2);
    put_text(image, 0x00E, h.prefix, 20);
    put_text(image, 0x022, h.start_id, 21);
    put_text(image, 0x038, h.end_id, 21);
    image.u32(0x04E, h.id_count)
        .u40(0x058, h.reserved_058)
        .u40(0x05E, h.current_index)
        .u40(0x064, h.steps[0])
        .u40(0x06A, h.steps[1])
        .u40(0x070, h.steps[2])
        .u8(0x076, h.setup_count);
    put_text(image, 0x078, h.description, 33);
    put_text(image, 0x09A, h.inspector_id, 33);
    put_text(image, 0x0BC, h.location, 33);
    image.u8(0x0DE, h.gage_type).u8(0x0E0, h.reserved_0e0);
    // The fields that share their bytes with the custom point labels.
    image.u8(0x0FA, h.c3).u40(0x0FC, h.steps[3]).u8(0x102, h.fourth_inc);
    for (std::size_t d = 0; d < 4; ++d) image.u16(0x104 + 2 * d, h.dim_label_count[d]);
    for (int i = 0; i < 20; ++i) {
        const std::string& label = h.custom_point_labels[static_cast<std::size_t>(i)];
        if (!label.empty()) put_text(image, custom_point_label_at(i), label, 20);
    }
    image.u8(0x272, h.walk_pattern)
        .u8(0x274, h.first_inc)
        .u8(0x276, h.second_inc)
        .u8(0x278, h.third_inc)
        .u8(0x27A, h.elevation_unit)
        .u40(0x27E, h.reserved_27e)
        .u32(0x284, h.reserved_284)
        .u8(0x288, h.reserved_288);
    if (manual_layout(h.file_type)) {
        for (int d = 0; d < 4; ++d) {
            const std::vector<std::string>& labels = h.manual_labels[static_cast<std::size_t>(d)];
            for (std::size_t j = 0; j < labels.size() && j < 100; ++j) {
                put_text(image, manual_label_at(d, static_cast<int>(j)), labels[j], 20);
            }
        }
    }
}

ImageBuilder survey_image(const SurveyHeader& header) {
    ImageBuilder image;
    write_header(image, header);
    if (image.bytes.size() < record_table_at(header.file_type)) {
        image.resize(record_table_at(header.file_type));
    }
    return image;
}

// ------------------------------------------------------------------ setups

std::uint16_t diff_flags_of(const GaugeSetupImage& s) {
    return static_cast<std::uint16_t>(
        field(s.alarm_type, 13, 3) | field(s.diff_type, 11, 2) | field(s.diff_ref_blank, 10, 1) |
        field(s.units, 8, 2) | field(s.resolution, 6, 2) | field(s.measurement_type, 4, 2) |
        field(s.echo1_negative, 3, 1) | field(s.echo2_negative, 2, 1) | field(s.pulser_power, 0, 2));
}

std::uint16_t option_flags_of(const GaugeSetupImage& s) {
    return static_cast<std::uint16_t>(
        field(s.auto_phase_detect, 15, 1) | field(s.auto_mb, 14, 1) |
        field(s.temp_compensation, 13, 1) | field(s.coating_thickness, 12, 1) |
        field(s.bs_res_mode, 10, 2) | field(s.bs_encoder, 6, 4) | field(s.bs_step_code, 0, 6));
}

std::uint16_t meas_word_of(const GaugeSetupImage& s) {
    return static_cast<std::uint16_t>(field(s.meas_mode, 12, 4) | field(s.meas_word_rest, 0, 12));
}

void write_gauge_setup(ImageBuilder& image, std::uint32_t file_type, int entry,
                       const GaugeSetupImage& s) {
    const std::size_t at = setup_entry_at(file_type, entry);
    image.u32(at + 0x00, s.setup_present)
        .u16(at + 0x04, diff_flags_of(s))
        .u32(at + 0x06, s.low_alarm)
        .u32(at + 0x0A, s.high_alarm)
        .u32(at + 0x0E, s.diff_reference)
        .u32(at + 0x12, s.bs_range)
        .u8(at + 0x16, s.alarm_percent)
        .u16(at + 0x18, s.transducer)
        .u32(at + 0x1A, static_cast<std::uint32_t>(s.zero))
        .u16(at + 0x1E, s.velocity & 0xFFFFu)
        .u16(at + 0x20, s.gain_mode)
        .u16(at + 0x22, s.gain_db)
        .u16(at + 0x24, s.slope)
        .u16(at + 0x26, s.transducer_frequency)
        .u16(at + 0x28, u16_of(s.mb_blank))
        .u16(at + 0x2A, u16_of(s.if_blank))
        .u16(at + 0x2C, u16_of(s.c3_blank))
        .u16(at + 0x2E, s.echo_window);
    put_text(image, at + 0x30, s.setup_name, 33);
    image.u16(at + 0x52, option_flags_of(s))
        .u8(at + 0x54, s.reserved_54)
        .u16(at + 0x56, s.coating_velocity)
        .u32(at + 0x58, static_cast<std::uint32_t>(s.temp_coefficient))
        .u16(at + 0x5C, u16_of(s.temp_calibration))
        .u16(at + 0x5E, s.reserved_5e)
        .u16(at + 0x60, s.velocity >> 16)
        .u16(at + 0x62, meas_word_of(s))
        .u24(at + 0x68, s.custom_encoder_res);
}

std::uint16_t reject_word_of(const FlawSetupImage& s) {
    return static_cast<std::uint16_t>(field(s.reject_value, 7, 9) | field(s.box1_kind, 0, 7));
}
std::uint16_t box_word_of(const FlawSetupImage& s) {
    return static_cast<std::uint16_t>(field(s.box2_kind, 8, 8) | field(s.box3_kind, 0, 8));
}
std::uint16_t gate_alarms_of(const FlawSetupImage& s) {
    return static_cast<std::uint16_t>(field(s.gate1_alarm, 8, 8) | field(s.gate2_alarm, 0, 8));
}
std::uint16_t bscan_flags_of(const FlawSetupImage& s) {
    return static_cast<std::uint16_t>(
        field(s.bscan_mode, 14, 2) | field(s.bscan_direction, 13, 1) |
        field(s.bscan_step_code, 7, 6) | field(s.bscan_encoder, 4, 3) |
        field(s.bscan_rewrite, 3, 1) | field(s.bscan_save_ascan, 1, 2) | field(s.bscan_los, 0, 1));
}
std::uint16_t dac_word_of(const FlawSetupImage& s) {
    return static_cast<std::uint16_t>(field(s.dac_mode, 8, 8) | field(s.dac_curve_selected, 0, 8));
}
std::uint16_t mode_word_of(const FlawSetupImage& s) {
    return static_cast<std::uint16_t>(
        field(s.ref_gain_enabled, 15, 1) | field(s.rectification, 13, 2) | field(s.units, 11, 2) |
        field(s.resolution, 10, 1) | field(s.meas_mode, 8, 2) | field(s.gate2_enabled, 7, 1) |
        field(s.zoom, 6, 1) | field(s.peak_mode, 4, 2) | field(s.gate1_peak, 3, 1) |
        field(s.gate2_peak, 2, 1) | field(s.peak_pitch, 1, 1) | field(s.curve_correction, 0, 1));
}
std::uint16_t display_word_of(const FlawSetupImage& s) {
    return static_cast<std::uint16_t>(
        field(s.floating_gate_level, 11, 5) | field(s.energy, 9, 2) | field(s.dac_on, 8, 1) |
        field(s.waveform_outline, 7, 1) | field(s.floating_gate1, 6, 1) |
        field(s.floating_gate2, 5, 1) | field(s.gate_tracking, 4, 1) | field(s.x_axis_legs, 3, 1) |
        field(s.csc, 2, 1) | field(s.api_5ue, 1, 1));
}

void write_flaw_setup(ImageBuilder& image, std::uint32_t file_type, int entry,
                      const FlawSetupImage& s) {
    const std::size_t at = setup_entry_at(file_type, entry);
    image.u32(at + 0x00, s.velocity)
        .u32(at + 0x04, static_cast<std::uint32_t>(s.zero))
        .u16(at + 0x08, u16_of(s.reference_gain))
        .u16(at + 0x0A, s.ref_gain_step)
        .u16(at + 0x0C, s.gain)
        .u32(at + 0x0E, s.delay)
        .u32(at + 0x12, s.range)
        .u16(at + 0x16, s.frequency)
        .u16(at + 0x18, reject_word_of(s))
        .u16(at + 0x1A, box_word_of(s))
        .u32(at + 0x1C, s.gate1_start)
        .u32(at + 0x20, s.gate1_width)
        .u32(at + 0x24, s.gate1_min_depth)
        .u16(at + 0x28, s.gate1_level)
        .u32(at + 0x2A, s.gate2_start)
        .u32(at + 0x2E, s.gate2_width)
        .u32(at + 0x32, s.gate2_min_depth)
        .u16(at + 0x36, s.gate2_level)
        .u16(at + 0x38, gate_alarms_of(s))
        .u16(at + 0x3A, s.angle)
        .u32(at + 0x3C, s.angle_beam_thickness)
        .u32(at + 0x40, s.x_value)
        .u32(at + 0x44, s.bscan_max_thickness)
        .u16(at + 0x48, bscan_flags_of(s))
        .u16(at + 0x4A, dac_word_of(s))
        .u16(at + 0x4C, u16_of(s.dac_gain))
        .u16(at + 0x4E, s.dac_gain_step)
        .u16(at + 0x50, u16_of(s.rl_gain))
        .u16(at + 0x52, u16_of(s.sl_gain))
        .u16(at + 0x54, u16_of(s.el_gain))
        .u16(at + 0x56, mode_word_of(s))
        .u16(at + 0x58, display_word_of(s))
        .u16(at + 0x5A, s.dac_rectification)
        .u32(at + 0x5C, s.setup_present)
        .u32(at + 0x60, s.pipe_diameter)
        .u32(at + 0x64, s.api_k_factor)
        .u24(at + 0x68, s.custom_encoder_res);
}

// ------------------------------------------------------------------- notes

void write_note(ImageBuilder& image, std::uint32_t file_type, int row, std::string_view text) {
    put_text(image, note_at(file_type, row), text, 32);
}

// ----------------------------------------------------------------- records

std::uint32_t gauge_word0(const GaugeReading& r) {
    return field(r.record_type, 29, 3) | field(r.los, 28, 1) | field(r.units, 26, 2) |
           field(r.alarm_state, 23, 3) | field(r.fast_mode, 21, 2) | field(r.bscan_mode, 19, 2) |
           field(r.setup_number, 11, 5) | field(r.resolution, 9, 2) |
           field(r.thickness >> 16, 5, 4) | field(r.echo_to_echo, 4, 1) |
           (r.unread_bits & 0x0007000Fu);
}

std::uint16_t value_tags_of(const GaugeReading& r) {
    return static_cast<std::uint16_t>(
        field(r.second_kind, 0, 2) | field(r.first_kind, 2, 2) | field(r.max_value >> 16, 4, 4) |
        field(r.min_value >> 16, 8, 4) | field(r.first_value >> 16, 12, 4));
}

RecordImage gauge_record(const GaugeReading& r) {
    return {gauge_word0(r), field(r.thickness, 16, 16) | field(r.note_mask, 0, 16),
            field(r.first_value, 16, 16) | field(r.min_value, 0, 16),
            field(r.max_value, 16, 16) | value_tags_of(r)};
}

GaugeReading velocity_reading(std::uint32_t velocity, std::uint32_t units) {
    GaugeReading r;
    r.units = units;
    r.thickness = 0xFFFFA;
    r.min_value = velocity & 0xFFFFu;
    r.max_value = (velocity >> 16) & 0xFu;
    return r;
}

std::uint32_t flaw_word0(const FlawReading& r) {
    return field(r.record_type, 29, 3) | field(r.flaw_setup_number, 24, 5) |
           field(r.gate1_alarm, 21, 3) | field(r.ascan_mark, 20, 1) | field(r.bscan_mark, 19, 1) |
           field(r.flaw_note_mask, 0, 16);
}

RecordImage flaw_record(const FlawReading& r) {
    return {flaw_word0(r), r.box_value[0], r.box_value[1], r.box_value[2]};
}

RecordImage link_record(std::uint32_t record_type, std::uint32_t link, std::uint32_t word0_bits) {
    return {field(record_type, 29, 3) | (word0_bits & 0x1FFFFFFFu), link, 0, 0};
}

void write_record(ImageBuilder& image, std::size_t offset, const RecordImage& record) {
    image.u32(offset, record.word0)
        .u32(offset + 4, record.at4)
        .u32(offset + 8, record.at8)
        .u32(offset + 12, record.at12);
}

void write_slot(ImageBuilder& image, std::uint32_t file_type, std::uint32_t index,
                const RecordImage& record, std::string_view stored_id) {
    const std::size_t at = slot_at(file_type, index);
    write_record(image, at, record);
    if (slot_bytes(file_type) == 37) put_text(image, at + 16, stored_id, 21);
}

// ------------------------------------------------------------------- scans

std::uint16_t display_flags_of(const ThicknessAscanImage& a) {
    return static_cast<std::uint16_t>(field(a.rect_index, 14, 2) | field(a.zoom_bits, 12, 2) |
                                      field(a.freeze, 11, 1) | field(a.outline, 10, 1) |
                                      field(a.bracket_3, 8, 2) | field(a.delay_negative, 7, 1));
}

void write_ascan_thickness(ImageBuilder& image, std::size_t offset, const ThicknessAscanImage& a) {
    write_record(image, offset, gauge_record(a.head));
    for (std::size_t i = 0; i < a.min_samples.size(); ++i) image.u16(offset + 16 + 2 * i, a.min_samples[i]);
    for (std::size_t i = 0; i < a.max_samples.size(); ++i) image.u16(offset + 652 + 2 * i, a.max_samples[i]);
    const std::size_t count =
        count_or(a.sample_count, std::max(a.min_samples.size(), a.max_samples.size()));
    image.u16(offset + 1288, static_cast<std::uint32_t>(count))
        .u16(offset + 1290, a.delay)
        .u16(offset + 1292, a.range & 0xFFFFu)
        .u16(offset + 1294, display_flags_of(a))
        .u16(offset + 1296, u16_of(a.echo_window))
        .u16(offset + 1298, u16_of(a.marker1))
        .u16(offset + 1300, u16_of(a.marker2))
        .u16(offset + 1302, u16_of(a.marker3))
        .u16(offset + 1304, u16_of(a.mb_blank))
        .u16(offset + 1306, u16_of(a.if_blank_raw))
        .u16(offset + 1308, u16_of(a.c3_blank))
        .u16(offset + 1310, a.unused_1310)
        .u16(offset + 1312, a.bracket_2)
        .u16(offset + 1314, a.range >> 16);
}

std::uint32_t flaw_ascan_word0(const FlawAscanImage& a) {
    return field(a.record_type, 29, 3) | field(a.gate_alarm, 23, 3) | field(a.dac_shown, 22, 1) |
           field(a.block_setup_number, 17, 5) | field(a.peak_shown, 16, 1) |
           field(a.flaw_note_mask, 0, 16);
}

std::uint16_t scan_flags_of(const FlawAscanImage& a) {
    return static_cast<std::uint16_t>(field(a.bracket_3, 13, 3) | field(a.bracket_4, 10, 3) |
                                      field(a.dac_stored, 9, 1) | field(a.peak_stored, 3, 1));
}

void write_ascan_flaw(ImageBuilder& image, std::size_t offset, const FlawAscanImage& a) {
    const std::size_t count =
        count_or(a.sample_count, std::max(a.max_samples.size(), a.min_samples.size()));
    image.u32(offset, flaw_ascan_word0(a))
        .u16(offset + 16, scan_flags_of(a))
        .u32(offset + 18, a.box_value[0])
        .u32(offset + 22, a.box_value[1])
        .u32(offset + 26, a.box_value[2])
        .u16(offset + 30, static_cast<std::uint32_t>(count))
        .u16(offset + 32, a.bracket_2);
    for (std::size_t i = 0; i < a.max_samples.size(); ++i) image.u8(offset + 34 + 2 * i, a.max_samples[i]);
    for (std::size_t i = 0; i < a.min_samples.size(); ++i) image.u8(offset + 35 + 2 * i, a.min_samples[i]);
    for (std::size_t i = 0; i < a.dac_points.size() && i < 25; ++i) {
        image.u16(offset + 670 + 4 * i, a.dac_points[i].dac_count)
            .u16(offset + 672 + 4 * i, a.dac_points[i].dac_amplitude);
    }
    const std::size_t peak_at = a.dac_stored != 0 && a.peak_stored != 0 ? 720 : 670;
    for (std::size_t i = 0; i < a.peak_bytes.size(); ++i) image.u8(offset + peak_at + i, a.peak_bytes[i]);
    if (a.with_gates) {
        image.u16(offset + 1038, a.gate1_amplitude)
            .u16(offset + 1040, a.gate1_mti)
            .u16(offset + 1042, a.gate2_amplitude)
            .u16(offset + 1044, a.gate2_mti);
    }
}

std::uint16_t point_first_word(const BscanPointImage& p) {
    return static_cast<std::uint16_t>(field(p.lost, 15, 1) | field(p.alarm, 12, 3) |
                                      field(p.is_min, 11, 1) | field(p.is_max, 10, 1) |
                                      field(p.magnitude >> 16, 6, 4) | field(p.negative, 4, 1) |
                                      (p.unread_bits & 0x2Fu));
}

std::uint16_t point_second_word(const BscanPointImage& p) {
    return static_cast<std::uint16_t>(p.magnitude & 0xFFFFu);
}

void write_bscan(ImageBuilder& image, std::size_t offset, const BscanImage& b) {
    write_record(image, offset, b.head);
    image.u16(offset + 20, static_cast<std::uint32_t>(count_or(b.point_count, b.points.size())))
        .u16(offset + 34, b.ascan_follows)
        .u16(offset + 38, b.store_full);
    for (std::size_t i = 0; i < b.points.size(); ++i) {
        image.le16(offset + BSCAN_POINTS_AT + 4 * i, point_first_word(b.points[i]))
            .le16(offset + BSCAN_POINTS_AT + 4 * i + 2, point_second_word(b.points[i]));
    }
    if (b.store_full != 0 && image.bytes.size() < offset + BSCAN_POINTS_AT + BSCAN_STORE_BYTES) {
        image.resize(offset + BSCAN_POINTS_AT + BSCAN_STORE_BYTES);
    }
}

}  // namespace ugf::test
