// The instrument's number texts: lengths and times from fixed-point integers,
// encoder steps, scan scales, gains, frequencies, velocities, temperatures.
//
// Every text is built in the caller's buffer of `size` bytes, always
// terminated and never longer than size - 1 characters. NUMBER_TEXT_SIZE holds
// any text of this file whole. Lengths are never printed as floating-point
// numbers: digits are cut out of a zero-filled decimal text and a point is put
// between them, so the only rounding is one integer addition before printing.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "base/text_builder.h"

namespace ugf {

// A buffer of this size holds any text made here.
inline constexpr std::size_t NUMBER_TEXT_SIZE = 16;

// The digit table of an instrument: the corrosion gauge, the precision gauge
// and the flaw detector print lengths with different widths and decimals.
enum DigitLayout : std::int32_t {
    LAYOUT_STANDARD = 0,
    LAYOUT_PRECISION = 1,
    LAYOUT_FLAW = 2,
};

// Measurement mode whose lengths count 0.01 mil or 0.01 micron ("CP").
inline constexpr std::uint32_t MEAS_MODE_CP = 5;

// Distance of one encoder count in 0.0000001 inch, by encoder number. Entry 3
// (the custom encoder) is never used: its users take the setup's own
// resolution instead.
inline constexpr std::array<std::uint32_t, 4> ENCODER_STEP = {141243, 30680, 28000, 5000};

// Truncates toward zero to a signed 32-bit integer. NaN and values outside
// the 32-bit range give -2147483648, as the instrument's processor does.
std::int32_t truncate_to_i32(double x);

// Low 32 bits of x truncated toward zero to a 64-bit integer (0 for NaN or
// a value beyond 64 bits). For unsigned 32-bit factors computed in double.
std::uint32_t truncate_to_u32_low(double x);

// Length or time text of a signed count of 0.0001 inch, millimetre or
// microsecond (0.01 mil or micron in measurement mode 5 of the precision
// gauge). `units` 0 inch, 1 millimetre, 2 microsecond (3 takes the rows of 1
// and 2); `doubled` 1 doubles the magnitude except for microseconds. The
// positive text keeps one leading position for the sign: " 1.235", "-1.235".
// Returns the length of the text.
std::size_t format_thickness(char* out, std::size_t size, std::int32_t value, std::uint32_t units,
                             std::uint32_t resolution, DigitLayout layout, std::uint32_t doubled,
                             std::uint32_t meas_mode);

// The same text made the general way, field first and then cut: what
// format_thickness gives for the rows it can't make in one word, and its
// measure in the tests.
std::size_t format_thickness_general(char* out, std::size_t size, std::int32_t value, std::uint32_t units,
                                     std::uint32_t resolution, DigitLayout layout, std::uint32_t doubled,
                                     std::uint32_t meas_mode);

// The digit field of a length: `a` as printf's "%*.*lu" (after one blank
// when `blank`) prints it into DIGIT_FIELD_SIZE bytes, from which the
// digits of the text are cut. Widths and precisions from 0 to 12. Returns
// the length.
inline constexpr std::size_t DIGIT_FIELD_SIZE = 7;
std::size_t digit_field(char* out, std::uint32_t a, int width, int precision, bool blank);

// Distance of `step_code` encoder counts with its unit: "0.8898 IN",
// "22.602 MM". Index 3 uses custom_res x 100 as its step. An index above 3
// gives the empty text.
void format_encoder_step(char* out, std::size_t size, std::uint32_t encoder_index,
                         std::uint32_t step_code, std::uint32_t units, std::uint32_t custom_res);

// Distance of `step_code` + 1 encoder counts in inch or millimetre with seven
// decimals ("%.7f", at most 13 characters). Index 3 uses custom_res x
// custom_multiplier (100 for the corrosion gauge, 1000 for the precision
// gauge). An index above 3 gives the empty text.
void format_encoder_distance(char* out, std::size_t size, std::uint32_t encoder_index,
                             std::uint32_t step_code, std::uint32_t units,
                             std::uint32_t custom_res, std::uint32_t custom_multiplier);

// Delay or range text of a stored scan, with its leading blanks: " 1.000".
// In measurement mode 5 the callers pass the stored value x 1000.
void format_scan_scale(char* out, std::size_t size, std::int32_t value, std::uint32_t units,
                       std::uint32_t meas_mode);

// Time text of a count of 0.0001 microsecond, digits cut, not rounded:
// 12345 gives "1.23 US", -500 gives "-0.05 US".
void format_time_us(char* out, std::size_t size, std::int32_t value);

// Frequency of a count of 0.1 MHz: 50 gives "5.0 MHZ", 5 gives ".5 MHZ".
// Only the first three digits are used.
void format_frequency_mhz(char* out, std::size_t size, std::uint16_t tenths_mhz);

// Pulser voltage of its 2-bit code: "30 V", "60 V", "90 V", "120 V".
const char* format_pulser_voltage(std::uint32_t code);

// Tenths with one decimal from the first three digits: 5 gives "00.5", 123
// gives "12.3". Needs 5 bytes.
void format_tenths(char* out, std::size_t size, std::uint16_t value);

// Gain of the corrosion gauge. Mode 4 (manual) prints the dB value: "40DB",
// "0 DB MIN", "94DB MAX"; any other mode its name in four characters:
// "LOW ", "STD ", "HIGH", "AGC ".
void format_gain_setting(char* out, std::size_t size, std::uint16_t mode, std::uint16_t db);

// Velocity digits: inch units as "0.%05lu" (0.00001 in/us), other units as
// "%5lu" (m/s). A 16-bit velocity prints the same through this function.
void format_velocity(char* out, std::size_t size, std::uint32_t value, std::uint32_t units);

// Temperature of whole degrees Fahrenheit: "  68 F", or with `metric` not 0
// the Celsius value computed in single precision: " 20.4 C". At most 9
// characters.
void format_temperature(char* out, std::size_t size, std::int32_t fahrenheit, std::uint32_t metric);

// printf's "% 4.1f" of a single-precision value, at the end of `o`.
void put_one_decimal(TextBuilder& o, float value);

// Temperature coefficient of a count of 0.00001, computed in single
// precision: -1500 gives "-0.01500". At most 9 characters.
void format_temp_coefficient(char* out, std::size_t size, std::int32_t value);

// Replaces every "0" of the text by a blank, in place; blanks and the point
// stay, so an empty value shows as "  .   ".
void blank_zeros(char* text);

}  // namespace ugf
