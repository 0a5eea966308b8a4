// The flaw detector's distance-amplitude curve and gate alarm. The instrument
// stores the gate 1 alarm with a reading but not the gate 2 alarm; this
// redraws the curve over the display columns from the DAC points stored with
// an A-scan, as the instrument's screen does, and compares the gate's peak
// with the curve's height at the peak's column.
//
// Times are clock counts, 80 to the microsecond; amplitudes count 0 to 511
// with 512 for a gate that saw no signal.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "file/records.h"

namespace ugf {

inline constexpr std::size_t DAC_CURVE_POINTS = 25;   // pairs of a curve
inline constexpr std::size_t DAC_TABLE_SIZE = 318;    // display columns of a curve
inline constexpr std::uint16_t NO_COLUMN = 0xFFFF;    // no column / no curve
inline constexpr std::uint16_t DAC_TIME_END = 16383;  // 0x3FFF: end of the time axis
inline constexpr std::uint16_t PEAK_LOST = 16351;     // 0x3FDF: first position of no peak
inline constexpr std::uint16_t AMPLITUDE_LOST = 512;  // a gate without a signal

// Alarm test results; they index the alarm texts of a reading row.
inline constexpr int ALARM_OFF = 0;
inline constexpr int ALARM_HIGH = 1;
inline constexpr int ALARM_LOW = 2;
inline constexpr int ALARM_ARMED = 5;

struct DacCurvePoint {
    std::uint16_t time = 0;       // clock counts
    std::uint16_t amplitude = 0;
};

// The curve of one reading, built afresh for each reading with an A-scan.
struct DacCurve {
    std::array<DacCurvePoint, DAC_CURVE_POINTS> points{};  // ascending time
    std::array<std::uint16_t, DAC_TABLE_SIZE> table{};      // height per column from first_column; 0 ends it
    std::uint16_t point_count = 0;
    std::uint32_t dac_on = 0;
    std::uint32_t dac_mode = 0;      // 0 ASME, 1 ASME 3, 2 JIS, 3 CUSTOM
    double step = 0.0;               // clock counts from one curve sample to the next
    std::uint16_t first_column = NO_COLUMN;
    std::int16_t gain_offset = 0;    // 0.1 dB
    std::array<double, 4> scale{};   // height factor of each of the four curves
    std::array<std::int16_t, 4> curve_offset{};  // 0.1 dB
};

// The setup values a curve needs, at the widths of the flaw detector's setup.
struct CurveSetup {
    std::uint32_t range = 0;      // length (0.0001 inch, mm or microsecond)
    std::uint32_t delay = 0;      // length; negative when read as signed
    std::int32_t zero = 0;        // length
    std::uint32_t velocity = 0;
    std::uint8_t units = 0;       // 0 inch, 1 millimetre, 2 microsecond
    std::uint8_t dac_mode = 0;
    std::uint8_t dac_on = 0;
    std::int16_t dac_gain = 0;    // 0.1 dB
    std::int16_t rl_gain = 0;
    std::int16_t sl_gain = 0;
    std::int16_t el_gain = 0;
};

// How the display of one A-scan maps clock counts to columns.
struct CurveFrame {
    std::uint16_t column_count = 0;           // N: the A-scan's sample count
    std::uint32_t counts_per_100_columns = 0; // S: clock counts of 100 columns (low 16 bits)
    std::int16_t delay_counts = 0;            // D
    std::uint16_t zero_counts = 0;            // Z
    std::uint16_t range_counts = 0;           // clock counts of the displayed range
};

// What the alarm test of one gate looks at.
struct AlarmInput {
    std::uint32_t alarm_kind = 0;        // the gate's alarm setting (5 bits)
    std::uint16_t level = 0;
    std::uint16_t min_depth_counts = 0;
    std::uint16_t peak_position = 0;     // clock count of the gate's peak
    std::uint16_t peak_amplitude = 0;
};

// Round-trip clock counts of a length (0.0001 inch or mm) or a time (0.0001
// microsecond), computed in single precision; low 16 bits. Units 3 gives 0.
std::uint16_t length_to_counts(std::int32_t x, std::uint32_t units, std::uint32_t velocity);

// Display column of clock count d: 0 at the delay D, 0xFFFF before it, and
// N + 1 past the last column. S of 0 gives 0xFFFF.
std::uint32_t column_of(std::int16_t d, std::int16_t delay_counts, std::uint16_t column_count,
                        std::uint32_t counts_per_100_columns);

// Prepares the curve of one reading: computes the frame (S, D, Z, range
// counts, N = sample_count), fills the curve from the setup and the stored
// points (at most 25, up to the first amplitude of 0), and builds it.
void prepare_dac_curve(const CurveSetup& setup, std::uint16_t sample_count,
                       std::span<const DacPoint, DAC_POINT_COUNT> stored, DacCurve& curve,
                       CurveFrame& frame);

// Draws the curve over the columns of `frame`: adds the end points of the
// JIS and custom families, fills `table` from `first_column` on and the four
// `scale` factors. 1 when a curve exists, 0 when none does (first_column
// stays 0xFFFF): fewer than two points, no columns, S of 0, a step of 0, or
// no sample on the display. Callers go by `first_column`.
int build_dac_curve(DacCurve& curve, const CurveFrame& frame);

// Alarm state of a gate: 0 off, 1 high, 2 low, 5 armed. With scan_valid 0
// nothing is known of the signal: 0 for kinds with no test, else 5, and the
// curve and frame are not read (default ones will do). The level, signal and
// depth tests need only the frame's zero counts; the curve tests need the
// curve that prepare_dac_curve made with this frame.
int gate_alarm_state(const AlarmInput& input, const DacCurve& curve, const CurveFrame& frame,
                     int scan_valid);

// The alarm setting as the setup listing shows it, at least four characters:
// "OFF ", "POS ", " 0 DB ", " RL ", ...; four blanks above 15.
const char* alarm_kind_text(std::uint32_t alarm_kind);

}  // namespace ugf
