#include "present/setup_listing.h"

#include <array>
#include <cstddef>

#include "present/flaw_setup_block.h"
#include "present/number_format.h"
#include "base/labels.h"
#include "base/text_table.h"

namespace ugf {

namespace {

// A row goes out in pieces; each piece keeps at most 99 characters, and a
// bounded cell at most 9.
constexpr std::size_t PIECE_SIZE = 100;
constexpr std::size_t CELL_SIZE = 10;

constexpr std::uint32_t MEASUREMENT_VELOCITY = 1;
constexpr std::uint16_t FIRST_VERSION_WITHOUT_DIRECTION = 20;

constexpr char ALARM_TYPE[][15] = {"OFF", "HIGH", "LOW", "HIGH-LOW", "FILE COMPARE", "PHASE REVERSAL"};
constexpr char MEASUREMENT_TYPE[][13] = {"THICKNESS", "VELOCITY", "EXTERNAL THK"};
// LabelText rows of the precision gauge's modes; "C5" was added after "CP".
constexpr std::array<std::int64_t, 6> MEAS_MODE_ROW = {76, 77, 78, 79, 175, 80};

// The titles; "ALARM %%" comes out with one percent sign.
constexpr const char* CORROSION_TITLES =
    "\nSETUP #,UNITS,VELOCITY,COATING VELOCITY,DIFF TYPE,DIFF REF,ALARM TYPE,LOW ALARM,HIGH ALARM,"
    "ALARM %%,BS RANGE,GAIN,TRANSDUCER,MB_BLANK,IF_BLANK,BS RESOLUTION,";
constexpr const char* CORROSION_TITLES_END =
    "TEMPERATURE COMPENSATION,TEMPERATURE COEFFICIENT,TEMPERATURE CALIBRATION,COATING THICKNESS,"
    "MEASUREMENT TYPE\n";
constexpr const char* CORROSION_TITLES_END_OLD =
    "TEMPERATURE COMPENSATION,TEMPERATURE COEFFICIENT,TEMPERATURE CALIBRATION,COATING THICKNESS,"
    "MEASUREMENT TYPE,BSCAN DIRECTION\n";
constexpr const char* PRECISION_TITLES =
    "\nSETUP #,NAME,MEAS MODE,UNITS,VELOCITY,ZERO,DIFF TYPE,DIFF REF,ALARM TYPE,LOW ALARM,"
    "HIGH ALARM,ALARM %%,BS RANGE,INITIAL GAIN,FINAL GAIN,";
constexpr const char* PRECISION_TITLES_MIDDLE =
    "SLOPE,TRANSDUCER,TRANSDUCER FREQUENCY,MB_BLANK,IF_BLANK,C3_BLANK,ECHO WINDOW,"
    "ECHO 1 DETECTION,ECHO 2 DETECTION,PULSER POWER,BS RESOLUTION,";
constexpr const char* PRECISION_TITLES_END =
    "TEMPERATURE COMPENSATION,TEMPERATURE COEFFICIENT,TEMPERATURE CALIBRATION,AUTO PHASE DETECT\n";
constexpr const char* PRECISION_TITLES_END_OLD =
    "TEMPERATURE COMPENSATION,TEMPERATURE COEFFICIENT,TEMPERATURE CALIBRATION,AUTO PHASE DETECT,"
    "BSCAN DIRECTION\n";

const char* on_off(std::uint32_t flag) { return flag != 0 ? "ON" : "OFF"; }

// How the lengths of one setup are printed, and the custom encoder's
// multiplier of its scan resolution.
struct LengthStyle {
    std::uint32_t units;
    std::uint32_t resolution;
    DigitLayout layout;
    std::uint32_t meas_mode;
    std::uint32_t encoder_multiplier;
};

void length_text(char* out, std::size_t size, std::uint32_t value, const LengthStyle& style) {
    format_thickness(out, size, static_cast<std::int32_t>(value), style.units, style.resolution,
                     style.layout, 0, style.meas_mode);
}

// The cells that both gauges show.
struct SharedCells {
    char velocity[NUMBER_TEXT_SIZE];
    const char* diff_type;
    char diff_ref[NUMBER_TEXT_SIZE];
    const char* alarm_type;
    char low_alarm[NUMBER_TEXT_SIZE];
    char high_alarm[NUMBER_TEXT_SIZE];
    char bs_range[NUMBER_TEXT_SIZE];
    char bs_resolution[NUMBER_TEXT_SIZE];
    const char* temp_compensation;
    char temp_coefficient[NUMBER_TEXT_SIZE];
    char temp_calibration[NUMBER_TEXT_SIZE];
};

void fill_shared_cells(SharedCells& c, const GaugeSetup& s, const LengthStyle& style) {
    format_velocity(c.velocity, sizeof c.velocity, s.velocity, style.units);
    c.diff_type = diff_type_text(diff_type(s));
    c.diff_ref[0] = '\0';
    if (diff_ref_blank(s) == 0) length_text(c.diff_ref, sizeof c.diff_ref, s.diff_reference, style);
    c.alarm_type = code_text(ALARM_TYPE, alarm_type(s));
    length_text(c.low_alarm, sizeof c.low_alarm, s.low_alarm, style);
    length_text(c.high_alarm, sizeof c.high_alarm, s.high_alarm, style);
    length_text(c.bs_range, sizeof c.bs_range, s.bs_range, style);
    if (bs_res_mode(s) == 2) {
        format_encoder_distance(c.bs_resolution, sizeof c.bs_resolution, bs_encoder(s), bs_step_code(s),
                                style.units, s.custom_encoder_res, style.encoder_multiplier);
    } else {
        // No encoder: a zero length, in the plain unit whatever the mode.
        LengthStyle plain = style;
        plain.meas_mode = 0;
        length_text(c.bs_resolution, sizeof c.bs_resolution, 0, plain);
    }
    c.temp_compensation = on_off(temp_compensation(s));
    format_temp_coefficient(c.temp_coefficient, sizeof c.temp_coefficient, s.temp_coefficient);
    format_temperature(c.temp_calibration, sizeof c.temp_calibration, s.temp_calibration, style.units == 1);
}

}  // namespace

const char* diff_type_text(std::uint32_t diff_type) {
    static constexpr char TEXTS[][9] = {"OFF", "ABSOLUTE", "PERCENT"};
    return code_text(TEXTS, diff_type);
}

int write_setup_titles(const DlSession& session, CsvSink& sink) {
    const bool old = session.file_version < FIRST_VERSION_WITHOUT_DIRECTION;
    std::array<const char*, 3> pieces{};
    if (session.gage_type == GAGE_PRECISION) {
        pieces = {PRECISION_TITLES, PRECISION_TITLES_MIDDLE,
                  old ? PRECISION_TITLES_END_OLD : PRECISION_TITLES_END};
    } else {
        pieces = {CORROSION_TITLES, old ? CORROSION_TITLES_END_OLD : CORROSION_TITLES_END, nullptr};
    }
    for (const char* piece : pieces) {
        if (piece != nullptr && csv_write(piece, sink) == 0) return 0;
    }
    return 1;
}

int write_setup_row_corrosion(const GaugeSetup& setup, int setup_number, CsvSink& sink,
                              std::uint32_t velocity_mode) {
    const std::uint32_t u = units(setup);
    // Velocity is measured to the full resolution.
    const LengthStyle style{u, velocity_mode != 0 ? 1u : resolution(setup), LAYOUT_STANDARD, 0, 100};
    SharedCells c;
    fill_shared_cells(c, setup, style);
    char coating_velocity[NUMBER_TEXT_SIZE];
    format_velocity(coating_velocity, sizeof coating_velocity, setup.coating_velocity, u);
    char gain[NUMBER_TEXT_SIZE];
    format_gain_setting(gain, sizeof gain, setup.gain_mode, setup.gain_db);
    const char* transducer = label_text(static_cast<std::int64_t>(setup.transducer) + 1);
    char mb_blank[CELL_SIZE] = "AUTO MB";
    if (auto_mb(setup) == 0) {
        format_text_bounded(mb_blank, sizeof mb_blank, "%d", static_cast<int>(setup.mb_blank));
    }

    char piece[PIECE_SIZE];
    format_text_bounded(piece, sizeof piece, "%d,%s,%s,%s,%s,%s,%s,%s,%s,%d,%s,%s,%s,%s,%d,%s,", setup_number,
                        ui_text((velocity_mode != 0 ? UI_VELOCITY_UNITS : UI_UNITS) + u), c.velocity,
                        coating_velocity, c.diff_type, c.diff_ref, c.alarm_type, c.low_alarm, c.high_alarm,
                        static_cast<int>(setup.alarm_percent), c.bs_range, gain, transducer, mb_blank,
                        static_cast<int>(setup.if_blank), c.bs_resolution);
    if (csv_write(piece, sink) == 0) return 0;
    format_text_bounded(piece, sizeof piece, "%s,%s,%s,%s,", c.temp_compensation, c.temp_coefficient,
                        c.temp_calibration, on_off(coating_thickness(setup)));
    if (csv_write(piece, sink) == 0) return 0;
    // Type 3 has no word of its own and shows the transducer's.
    format_text_bounded(piece, sizeof piece, "%s\n",
                        code_text(MEASUREMENT_TYPE, measurement_type(setup), transducer));
    return csv_write(piece, sink);
}

int write_setup_row_precision(const GaugeSetup& setup, int setup_number, CsvSink& sink,
                              std::uint32_t velocity_mode) {
    const std::uint32_t u = units(setup);
    const std::uint32_t mode = meas_mode(setup);
    const LengthStyle style{u, resolution(setup), LAYOUT_PRECISION, mode, 1000};
    SharedCells c;
    fill_shared_cells(c, setup, style);

    const char* meas_mode_text =
        mode < MEAS_MODE_ROW.size() ? label_text(MEAS_MODE_ROW[mode]) : ui_text(UI_BLANKS);
    std::int64_t units_row = UI_UNITS;
    if (velocity_mode != 0) {
        units_row = UI_VELOCITY_UNITS;
    } else if (mode == MEAS_MODE_CP) {
        units_row = UI_CP_UNITS;
    }
    char zero[NUMBER_TEXT_SIZE];
    format_text_bounded(zero, sizeof zero, "%ld", static_cast<long>(setup.zero));
    // The name is terminated within its field; the precision only guards it.
    char name[SETUP_NAME_SIZE];
    format_text_bounded(name, sizeof name, "%.*s", SETUP_NAME_SIZE - 1, setup.setup_name);
    StoredCell cell;
    stored_cell(cell, name, sink);
    char piece[PIECE_SIZE + QUOTED_EXTRA_MAX];
    format_text_bounded(piece, PIECE_SIZE + cell.extra, "%d,%s,%s,%s,%s,%s,", setup_number, cell.text,
                        meas_mode_text, ui_text(units_row + u), c.velocity, zero);
    if (csv_write(piece, sink) == 0) return 0;

    format_text_bounded(piece, sizeof piece, "%s,%s,%s,%s,%s,%d,%s,", c.diff_type, c.diff_ref, c.alarm_type,
                        c.low_alarm, c.high_alarm, static_cast<int>(setup.alarm_percent), c.bs_range);
    if (csv_write(piece, sink) == 0) return 0;

    char initial_gain[CELL_SIZE], final_gain[CELL_SIZE], slope[CELL_SIZE], frequency[CELL_SIZE];
    format_tenths(initial_gain, sizeof initial_gain, setup.gain_mode);
    format_tenths(final_gain, sizeof final_gain, setup.gain_db);
    format_tenths(slope, sizeof slope, setup.slope);
    format_frequency_mhz(frequency, sizeof frequency, setup.transducer_frequency);
    format_text_bounded(piece, sizeof piece, "%s,%s,%s,%s,%s,", initial_gain, final_gain, slope,
                        label_text(setup.transducer), frequency);
    if (csv_write(piece, sink) == 0) return 0;

    // Blanks and the echo window count 0.0125 microsecond; the time texts
    // count 0.0001.
    std::array<std::array<char, CELL_SIZE>, 4> times{};
    const std::array<std::int32_t, 4> counts = {setup.mb_blank, setup.if_blank, setup.c3_blank,
                                                static_cast<std::int32_t>(setup.echo_window)};
    for (std::size_t i = 0; i < times.size(); ++i) {
        format_time_us(times[i].data(), CELL_SIZE, counts[i] * 125);
    }
    format_text_bounded(piece, sizeof piece, "%s,%s,%s,%s,", times[0].data(), times[1].data(),
                        times[2].data(), times[3].data());
    if (csv_write(piece, sink) == 0) return 0;

    char pulser[CELL_SIZE];
    format_text_bounded(pulser, sizeof pulser, "%s", format_pulser_voltage(pulser_power(setup)));
    format_text_bounded(piece, sizeof piece, "%s,%s,%s,%s,", echo1_negative(setup) != 0 ? "-" : "+",
                        echo2_negative(setup) != 0 ? "-" : "+", pulser, c.bs_resolution);
    if (csv_write(piece, sink) == 0) return 0;

    format_text_bounded(piece, sizeof piece, "%s,%s,%s,", c.temp_compensation, c.temp_coefficient,
                        c.temp_calibration);
    if (csv_write(piece, sink) == 0) return 0;
    format_text_bounded(piece, sizeof piece, "%s\n", on_off(auto_phase_detect(setup)));
    return csv_write(piece, sink);
}

int write_setup_listing(DlSession& session, CsvSink& sink) {
    const std::int32_t gage = session.gage_type;
    if (gage != GAGE_FLAW_DETECTOR && write_setup_titles(session, sink) == 0) return 0;
    for (int i = 0; i < SETUP_COUNT; ++i) {
        const SetupRecord& record = session.setups[static_cast<std::size_t>(i)];
        const std::uint32_t present =
            gage == GAGE_FLAW_DETECTOR ? record.flaw.setup_present : record.gauge.setup_present;
        if (present == 0) continue;
        const std::uint32_t velocity_mode = measurement_type(record.gauge) == MEASUREMENT_VELOCITY ? 1 : 0;
        int written = 0;
        if (gage == GAGE_CORROSION) {
            written = write_setup_row_corrosion(record.gauge, i, sink, velocity_mode);
        } else if (gage == GAGE_PRECISION) {
            written = write_setup_row_precision(record.gauge, i, sink, velocity_mode);
        } else if (gage == GAGE_FLAW_DETECTOR) {
            written = write_setup_block(record.flaw, i, sink);
        }
        if (written == 0) return 0;
    }
    return 1;
}

}  // namespace ugf
