#include "ugf/json.hpp"

#include "core/survey_state.h"

#include <cmath>

#include <nlohmann/json.hpp>

#include "base/labels.h"
#include "base/utf8.h"
#include "file/field.h"
#include "store/record.h"
#include "store/scan.h"

namespace ugf::kit {

namespace {

using json = nlohmann::ordered_json;

// Texts from the file are bytes; JSON wants UTF-8.
std::string utf8(const char* text) { return utf8_text(text); }

json number_or_null(double v) { return std::isnan(v) ? json(nullptr) : json(v); }

json gauge_setup_json(const GaugeSetup& s) {
    return {{"setup_present", s.setup_present}, {"diff_flags", s.diff_flags}, {"low_alarm", s.low_alarm},
            {"high_alarm", s.high_alarm}, {"diff_reference", s.diff_reference}, {"bs_range", s.bs_range},
            {"alarm_percent", s.alarm_percent}, {"transducer", s.transducer}, {"zero", s.zero},
            {"velocity", s.velocity}, {"gain_mode", s.gain_mode}, {"gain_db", s.gain_db}, {"slope", s.slope},
            {"transducer_frequency", s.transducer_frequency}, {"mb_blank", s.mb_blank}, {"if_blank", s.if_blank},
            {"c3_blank", s.c3_blank}, {"echo_window", s.echo_window}, {"setup_name", utf8(s.setup_name)},
            {"option_flags", s.option_flags}, {"reserved_54", s.reserved_54},
            {"coating_velocity", s.coating_velocity}, {"temp_coefficient", s.temp_coefficient},
            {"temp_calibration", s.temp_calibration}, {"reserved_5e", s.reserved_5e}, {"meas_word", s.meas_word},
            {"custom_encoder_res", s.custom_encoder_res},
            {"decoded",
             {{"alarm_type", alarm_type(s)}, {"diff_type", diff_type(s)}, {"diff_ref_blank", diff_ref_blank(s)},
              {"units", units(s)}, {"resolution", resolution(s)}, {"measurement_type", measurement_type(s)},
              {"echo1_negative", echo1_negative(s)}, {"echo2_negative", echo2_negative(s)},
              {"pulser_power", pulser_power(s)}, {"auto_phase_detect", auto_phase_detect(s)},
              {"auto_mb", auto_mb(s)}, {"temp_compensation", temp_compensation(s)},
              {"coating_thickness", coating_thickness(s)}, {"bs_res_mode", bs_res_mode(s)},
              {"bs_encoder", bs_encoder(s)}, {"bs_step_code", bs_step_code(s)}, {"meas_mode", meas_mode(s)}}}};
}

json flaw_setup_json(const FlawSetup& s) {
    return {{"velocity", s.velocity}, {"zero", s.zero}, {"reference_gain", s.reference_gain},
            {"ref_gain_step", s.ref_gain_step}, {"gain", s.gain}, {"delay", s.delay}, {"range", s.range},
            {"frequency", s.frequency}, {"reject_word", s.reject_word}, {"box_word", s.box_word},
            {"gate1_start", s.gate1_start}, {"gate1_width", s.gate1_width}, {"gate1_min_depth", s.gate1_min_depth},
            {"gate1_level", s.gate1_level}, {"gate2_start", s.gate2_start}, {"gate2_width", s.gate2_width},
            {"gate2_min_depth", s.gate2_min_depth}, {"gate2_level", s.gate2_level}, {"gate_alarms", s.gate_alarms},
            {"angle", s.angle}, {"angle_beam_thickness", s.angle_beam_thickness}, {"x_value", s.x_value},
            {"bscan_max_thickness", s.bscan_max_thickness}, {"bscan_flags", s.bscan_flags},
            {"dac_word", s.dac_word}, {"dac_gain", s.dac_gain}, {"dac_gain_step", s.dac_gain_step},
            {"rl_gain", s.rl_gain}, {"sl_gain", s.sl_gain}, {"el_gain", s.el_gain}, {"mode_word", s.mode_word},
            {"display_word", s.display_word}, {"dac_rectification", s.dac_rectification},
            {"setup_present", s.setup_present}, {"pipe_diameter", s.pipe_diameter},
            {"api_k_factor", s.api_k_factor}, {"custom_encoder_res", s.custom_encoder_res},
            {"decoded",
             {{"reject_value", reject_value(s)}, {"box1_kind", box1_kind(s)}, {"box2_kind", box2_kind(s)},
              {"box3_kind", box3_kind(s)}, {"gate1_alarm", gate1_alarm(s)}, {"gate2_alarm", gate2_alarm(s)},
              {"dac_mode", dac_mode(s)}, {"dac_curve_selected", dac_curve_selected(s)},
              {"bscan_mode", bscan_mode(s)}, {"bscan_direction", bscan_direction(s)},
              {"bscan_step_code", bscan_step_code(s)}, {"bscan_encoder", bscan_encoder(s)},
              {"bscan_rewrite", bscan_rewrite(s)}, {"bscan_save_ascan", bscan_save_ascan(s)},
              {"bscan_los", bscan_los(s)}, {"ref_gain_enabled", ref_gain_enabled(s)},
              {"rectification", rectification(s)}, {"units", units(s)}, {"resolution", resolution(s)},
              {"meas_mode", meas_mode(s)}, {"gate2_enabled", gate2_enabled(s)}, {"zoom", zoom(s)},
              {"peak_mode", peak_mode(s)}, {"gate1_peak", gate1_peak(s)}, {"gate2_peak", gate2_peak(s)},
              {"peak_pitch", peak_pitch(s)}, {"curve_correction", curve_correction(s)},
              {"floating_gate_level", floating_gate_level(s)}, {"energy", energy(s)}, {"dac_on", dac_on(s)},
              {"waveform_outline", waveform_outline(s)}, {"floating_gate1", floating_gate1(s)},
              {"floating_gate2", floating_gate2(s)}, {"gate_tracking", gate_tracking(s)},
              {"x_axis_legs", x_axis_legs(s)}, {"csc", csc(s)}, {"api_5ue", api_5ue(s)}}}};
}

json header_json(const Survey& survey, const Facts& facts) {
    const DlSession& s = session_of(survey);
    json dims = json::array();
    for (int d = 0; d < DIM_COUNT; ++d) {
        const IdDimension& dim = s.id_spec.dims[static_cast<std::size_t>(d)];
        dims.push_back({{"size", s.id_spec.cursor.dim_size[static_cast<std::size_t>(d)]},
                        {"start", utf8(dim.start_text)},
                        {"end", utf8(dim.end_text)},
                        {"step", dim.step},
                        {"label_count", s.dim_label_count[static_cast<std::size_t>(d)]}});
    }
    json notes = json::array();
    for (const auto& note : s.note_table) notes.push_back(utf8(note));
    json labels = json::array();
    if (is_manual_layout(s.file_type)) {
        for (int d = 0; d < DIM_COUNT; ++d) {
            json list = json::array();
            for (int j = 0; j < s.dim_label_count[static_cast<std::size_t>(d)] && j < DIM_LABEL_MAX; ++j) {
                list.push_back(utf8(s.dim_label_table[d][j]));
            }
            labels.push_back(list);
        }
    }
    return {{"file_version", s.file_version},
            {"file_type", s.file_type},
            {"file_type_name", facts.file_type_name},
            {"gage_type", s.gage_type},
            {"instrument", facts.instrument},
            {"model", utf8(facts.model.c_str())},
            {"prefix", utf8(s.id_spec.prefix)},
            {"id_count", s.id_count},
            {"current_index", s.current_index},
            {"setup_count", s.setup_count},
            {"description", utf8(s.description)},
            {"inspector_id", utf8(s.inspector_id)},
            {"location", utf8(s.location)},
            {"walk_pattern", s.walk_pattern},
            {"walk_pattern_name", facts.walk_pattern_name},
            {"increments", {s.first_inc, s.second_inc, s.third_inc, s.fourth_inc}},
            {"elevation_unit", s.elevation_unit},
            {"points", facts.points},
            {"first_id", utf8(facts.first_id.c_str())},
            {"last_id", utf8(facts.last_id.c_str())},
            {"dimensions", dims},
            {"notes", notes},
            {"manual_labels", labels},
            {"reserved", {{"r006", s.reserved_006}, {"r058", s.reserved_058}, {"r0e0", s.reserved_0e0},
                          {"r27e", s.reserved_27e}, {"r284", s.reserved_284}, {"r288", s.reserved_288}}}};
}

json point_json(const Point& p) {
    return {{"index", p.index}, {"id", utf8(p.id.c_str())}, {"text", utf8(p.text.c_str())},
            {"value", number_or_null(p.value)}, {"empty", p.empty}, {"lost", p.lost}, {"velocity", p.velocity},
            {"units", p.units}, {"notes", p.notes}, {"setup", p.setup}, {"alarm", p.alarm},
            {"low_alarm", number_or_null(p.low_alarm)}, {"ascan", p.ascan}, {"bscan", p.bscan}};
}

}  // namespace

int write_survey_json(Survey& survey, const std::function<void(std::string_view)>& out, std::string& why) {
    const Facts facts = survey_facts(survey);
    const DlSession& s = session_of(survey);
    out("{\"format\":\"ugf-survey\",\"format_version\":1,\"header\":");
    out(header_json(survey, facts).dump());
    out(",\"setups\":[");
    for (int i = 0; i < SETUP_COUNT; ++i) {
        const SetupRecord& setup = s.setups[static_cast<std::size_t>(i)];
        json entry = {{"index", i}};
        if (s.gage_type == GAGE_FLAW_DETECTOR) {
            entry["flaw"] = flaw_setup_json(setup.flaw);
        } else {
            entry["gauge"] = gauge_setup_json(setup.gauge);
        }
        out(i == 0 ? "" : ",");
        out(entry.dump());
    }
    out("],\"points\":[");
    bool first = true;
    if (for_each_point(survey, [&](const Point& p) {
            out(first ? "" : ",");
            first = false;
            out(point_json(p).dump());
            return 1;
        }, why) == 0) {
        return 0;
    }
    // A-scans in one walk, B-scans in another, each streamed as it is read.
    out("],\"ascans\":[");
    first = true;
    const auto skip_b = [](const Bscan&) { return 1; };
    const auto skip_a = [](const Ascan&) { return 1; };
    if (for_each_scan(
        survey,
        [&](const Ascan& a) {
            json marks = json::array();
            for (const auto& m : a.marks) marks.push_back({{"name", m.name}, {"position", m.position}, {"amplitude", m.amplitude}});
            json dac = json::array();
            for (const auto& [count, amplitude] : a.dac_points) dac.push_back({count, amplitude});
            const json j = {{"id", utf8(a.id.c_str())}, {"reading", utf8(a.reading.c_str())}, {"units", a.units},
                            {"max_samples", a.max_samples}, {"min_samples", a.min_samples},
                            {"peak_samples", a.peak_samples}, {"delay", a.delay}, {"range", a.range},
                            {"marks", marks}, {"gate1_alarm", a.gate1_alarm}, {"gate2_alarm", a.gate2_alarm},
                            {"dac_points", dac}};
            out(first ? "" : ",");
            first = false;
            out(j.dump());
            return 1;
        },
        skip_b, why) == 0) {
        return 0;
    }
    out("],\"bscans\":[");
    first = true;
    if (for_each_scan(
        survey, skip_a,
        [&](const Bscan& b) {
            json values = json::array();
            for (double v : b.values) values.push_back(number_or_null(v));
            const json j = {{"id", utf8(b.id.c_str())}, {"reading", utf8(b.reading.c_str())}, {"units", b.units},
                            {"texts", b.texts}, {"values", values}, {"alarms", b.alarms}};
            out(first ? "" : ",");
            first = false;
            out(j.dump());
            return 1;
        },
        why) == 0) {
        return 0;
    }
    out("]}\n");
    return 1;
}

std::string json_text(std::string_view bytes) { return utf8_text(bytes); }

}  // namespace ugf::kit
