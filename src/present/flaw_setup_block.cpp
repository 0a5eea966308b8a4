#include "present/flaw_setup_block.h"

#include <cstring>
#include <iterator>

#include "present/dac_curve.h"
#include "present/number_format.h"
#include "base/labels.h"
#include "base/text_table.h"

namespace ugf {

namespace {

// A dB text keeps at most 7 characters; a signed one puts its sign in front.
constexpr std::size_t DB_TEXT_SIZE = 8;


constexpr char ENERGY[][5] = {"30 V", "60 V", "90 V", "120V"};
constexpr char PEAK_MODE[][5] = {"OFF", "ON", "HOLD"};
constexpr char BSCAN_MODE[][8] = {"OFF", "MANUAL", "ENCODED"};
constexpr char ENCODER_MODEL[][9] = {"ROLLEN-4", "ROLLEN-5", "ROLLEN-6", "CUSTOM"};
constexpr char SAVE_ASCAN[][6] = {"NEVER", "MIN", "ALARM"};
constexpr char DAC_MODE[][7] = {"ASME", "ASME 3", "JIS", "CUSTOM"};
constexpr char DAC_RECTIFICATION[][5] = {"RF", "FULL", "HW+ ", "HW- "};

// The curves of each DAC family by the selected curve number, named by their
// offset or their letters as the gate alarm texts name them. A family above 3
// has no curves ("NONE" for every number).
constexpr char CURVE_NAME[4][4][6] = {
    {"0DB", "0DB", "0DB", "0DB"},
    {"0DB", "-6DB", "-14DB", ""},
    {"6DB", "0DB", "-6DB", "-12DB"},
    {"RL", "SL", "EL", ""},
};

const char* curve_name(std::uint32_t dac_mode, std::uint32_t curve) {
    if (dac_mode >= std::size(CURVE_NAME)) return "NONE";
    // ASME has one curve, whatever the number.
    return code_text(CURVE_NAME[dac_mode], curve, dac_mode == 0 ? "0DB" : "");
}

// Distance of one display step: "0.01 " and "0.001 " in inches, "0.1 " and
// "0.01 " in millimetres and microseconds; units 3 has no step.
const char* resolution_step(std::uint32_t units, std::uint32_t resolution) {
    if (units == 0) return resolution == 1 ? "0.001 " : "0.01 ";
    if (units == 1 || units == 2) return resolution == 1 ? "0.01 " : "0.1 ";
    return "";
}

// Hundredths of a MHz with a point before the last two of at most four
// digits: 500 gives "5.00 MHZ", 5 gives ".05 MHZ".
void frequency_text(char* out, std::size_t size, std::uint16_t hundredths) {
    char digits[5] = {};
    format_text_bounded(digits, sizeof digits, "%d", static_cast<int>(hundredths));
    if (std::strlen(digits) == 1) {
        digits[1] = digits[0];
        digits[0] = '0';
        digits[2] = '\0';
    }
    const int head = static_cast<int>(std::strlen(digits)) - 2;
    format_text_bounded(out, size, "%.*s.%s MHZ", head, digits, digits + head);
}

// Velocity with its unit: metres per second from the stored value x 0.254
// (single precision widened), or the inch value as stored.
void velocity_text(char* out, std::size_t size, std::uint32_t velocity, std::uint32_t units) {
    char digits[NUMBER_TEXT_SIZE];
    if (units == 1) {
        const double metric = static_cast<double>(static_cast<float>(velocity)) * 0.254;
        format_velocity(digits, sizeof digits, static_cast<std::uint32_t>(truncate_to_i32(metric)), 1);
        format_text_bounded(out, size, "%s M/S", digits);
    } else {
        format_velocity(digits, sizeof digits, velocity, 0);
        format_text_bounded(out, size, "%s IN/US", digits);
    }
}

// Gate level in percent of full screen height. Under RF rectification the
// screen's zero line is in the middle, so the level is centred first.
void gate_level_text(char* out, std::size_t size, std::uint16_t level, std::uint32_t rectification) {
    std::int16_t s = static_cast<std::int16_t>(level);
    if (rectification == 0) {
        s = static_cast<std::int16_t>(static_cast<std::uint16_t>(2u * level - 1000u));
    }
    format_text_bounded(out, size, "% 03i%%%%", s / 10);
}

// Tenths of a dB: "12.3 DB", "00.5 DB".
void db_text(char* out, std::uint32_t tenths) {
    format_text_bounded(out, DB_TEXT_SIZE, "%02d.%0d DB", static_cast<int>(tenths / 10),
                        static_cast<int>(tenths % 10));
}

// The lines of one block, written one by one; once a write fails nothing
// more is written and `ok` stays 0.
struct BlockLines {
    CsvSink& sink;
    const FlawSetup& setup;
    const char* unit;  // U
    std::uint32_t doubled;
    int ok = 1;

    void put(const char* line) {
        if (ok != 0) ok = csv_write(line, sink) != 0 ? 1 : 0;
    }
    void text(const char* label, const char* value) {
        char line[SETUP_LINE_SIZE];
        format_text_bounded(line, sizeof line, "%s,%s\n", label, value);
        put(line);
    }
    void flag(const char* label, std::uint32_t set) { text(label, ui_text(UI_OFF_ON + (set != 0 ? 1 : 0))); }
    void length(const char* label, std::uint32_t value) {
        char digits[NUMBER_TEXT_SIZE];
        format_thickness(digits, sizeof digits, static_cast<std::int32_t>(value), units(setup),
                         resolution(setup), LAYOUT_FLAW, doubled, 0);
        char line[SETUP_LINE_SIZE];
        format_text_bounded(line, sizeof line, "%s,%s %s\n", label, digits, unit);
        put(line);
    }
    void db(const char* label, std::uint16_t tenths) {
        char value[DB_TEXT_SIZE];
        db_text(value, tenths);
        text(label, value);
    }
    void signed_db(const char* label, std::int16_t tenths) {
        const std::int32_t wide = tenths;
        char magnitude[DB_TEXT_SIZE];
        db_text(magnitude, static_cast<std::uint32_t>(wide < 0 ? -wide : wide));
        char value[DB_TEXT_SIZE + 1];
        format_text_bounded(value, sizeof value, "%s%s", wide < 0 ? "-" : "+", magnitude);
        text(label, value);
    }
};

}  // namespace

int write_setup_block(const FlawSetup& setup, int setup_number, CsvSink& sink) {
    const std::uint32_t u = units(setup);
    BlockLines out{sink, setup, ui_text(UI_UNITS + u), meas_mode(setup) == FLAW_MEAS_MODE_THRU ? 1u : 0u};
    char line[SETUP_LINE_SIZE];
    char value[SETUP_LINE_SIZE];

    format_text_bounded(line, sizeof line, "\n%s,%i\n", "SETUP", setup_number);
    out.put(line);
    out.text("UNITS", out.unit);
    format_text_bounded(value, sizeof value, "%s%s", resolution_step(u, resolution(setup)), out.unit);
    out.text("RESOLUTION", value);
    velocity_text(value, sizeof value, setup.velocity, u);
    out.text("VELOCITY", value);
    out.length("DELAY", setup.delay);
    out.length("RANGE", setup.range);
    out.length("ZERO", static_cast<std::uint32_t>(setup.zero));
    out.flag("ZOOM", zoom(setup));
    frequency_text(value, sizeof value, setup.frequency);
    out.text("FREQUENCY", value);
    out.text("ENERGY", code_text(ENERGY, energy(setup)));
    format_text_bounded(line, sizeof line, "%s,%i\n", "ANGLE", static_cast<int>(setup.angle));
    out.put(line);

    out.length("GATE 1 START", setup.gate1_start);
    out.length("GATE 1 WIDTH", setup.gate1_width);
    gate_level_text(value, sizeof value, setup.gate1_level, rectification(setup));
    out.text("GATE 1 LEVEL", value);
    out.length("GATE 1 ALARM MIN DEPTH", setup.gate1_min_depth);
    out.text("GATE 1 DETECTION", gate1_peak(setup) != 0 ? "PEAK" : "EDGE");
    out.text("GATE 1 ALARM", alarm_kind_text(gate1_alarm(setup)));
    out.length("GATE 2 START", setup.gate2_start);
    out.length("GATE 2 WIDTH", setup.gate2_width);
    gate_level_text(value, sizeof value, setup.gate2_level, rectification(setup));
    out.text("GATE 2 LEVEL", value);
    out.length("GATE 2 ALARM MIN DEPTH", setup.gate2_min_depth);
    out.text("GATE 2 DETECTION", gate2_peak(setup) != 0 ? "PEAK" : "EDGE");
    out.text("GATE 2 ALARM", alarm_kind_text(gate2_alarm(setup)));

    out.db("GAIN", setup.gain);
    out.length("X VALUE", setup.x_value);
    out.text("RECTIFICATION", ui_text(UI_RECTIFICATION + rectification(setup)));
    out.text("MEAS MODE", ui_text(UI_FLAW_MEAS_MODE + meas_mode(setup)));
    format_text_bounded(value, sizeof value, " %02i%%%%", static_cast<int>(reject_value(setup) / 10));
    out.text("REJECT", value);
    out.flag("ENABLE GATE 2", gate2_enabled(setup));
    out.text("PEAK", code_text(PEAK_MODE, peak_mode(setup)));

    out.length("BSCAN MAX THICK", setup.bscan_max_thickness);
    out.text("B-SCAN MODE", code_text(BSCAN_MODE, bscan_mode(setup)));
    out.text("BSCAN DIRECTION", bscan_direction(setup) != 0 ? "RIGHT TO LEFT" : "LEFT TO RIGHT");
    format_encoder_step(value, sizeof value, bscan_encoder(setup), bscan_step_code(setup), u,
                        setup.custom_encoder_res);
    out.text("BSCAN ENC. RES", value);
    out.text("BSCAN ENC. MODEL", code_text(ENCODER_MODEL, bscan_encoder(setup), "INVALID MODEL"));
    out.text("BSCAN REWRITE ON", bscan_rewrite(setup) != 0 ? "FIRST VALID THK." : "LOWER VALUE");
    out.text("BSCAN SAVE ASCAN", code_text(SAVE_ASCAN, bscan_save_ascan(setup)));
    out.text("BSCAN LOS", bscan_los(setup) != 0 ? "CONTINUE" : "PAUSE");

    out.flag("CURVE CORRECTION", curve_correction(setup));
    out.flag("REF. GAIN ENABLED", ref_gain_enabled(setup));
    out.signed_db("REFERENCE GAIN", setup.reference_gain);
    out.db("REF GAIN STEP", setup.ref_gain_step);
    out.length("ANGLE BEAM THK.", setup.angle_beam_thickness);
    out.flag("PEAK PITCH", peak_pitch(setup));
    out.flag("DAC", dac_on(setup));
    out.text("DAC MODE", code_text(DAC_MODE, dac_mode(setup)));
    out.text("DAC CURVE SELECTED", curve_name(dac_mode(setup), dac_curve_selected(setup)));
    out.signed_db("DAC GAIN", setup.dac_gain);
    out.db("DAC GAIN STEP", setup.dac_gain_step);
    out.signed_db("RL GAIN", setup.rl_gain);
    out.signed_db("SL GAIN", setup.sl_gain);
    out.signed_db("EL GAIN", setup.el_gain);
    out.text("DAC RECT", code_text(DAC_RECTIFICATION, setup.dac_rectification));

    out.flag("FLOATING GATE 1", floating_gate1(setup));
    out.flag("FLOATING GATE 2", floating_gate2(setup));
    format_text_bounded(value, sizeof value, "-%iDB", static_cast<int>(floating_gate_level(setup)));
    out.text("FLOATING GATE LEVEL", value);
    out.flag("GATE TRACKING", gate_tracking(setup));
    out.text("WAVEFORM", waveform_outline(setup) != 0 ? "OUTLINE" : "FILLED");
    out.text("X-AXIS GRID MODE", x_axis_legs(setup) != 0 ? "LEGS" : "STANDARD");
    out.flag("CSC", csc(setup));
    out.length("PIPE DIAMETER", setup.pipe_diameter);
    out.flag("API 5UE", api_5ue(setup));
    format_text_bounded(line, sizeof line, "%s,%6.4f\n", "API K FACTOR", setup.api_k_factor);
    out.put(line);
    return out.ok;
}

}  // namespace ugf
