// The flaw detector's measurement boxes: each reading stores the values of
// three boxes, each of a kind the operator chose, and every kind has its own
// way of showing its value (a length, a float, an amplitude, a dB value...).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace ugf {

inline constexpr std::int32_t BOX_KIND_MAX = 40;          // kinds 0 to 40 have a rule

// The kinds that the rows name; the rule and the name of every kind are in
// meas_box.cpp.
inline constexpr std::uint32_t BOX_KIND_OFF = 0;
inline constexpr std::uint32_t BOX_KIND_ECHO_TO_ECHO = 28;  // a B-scan stores lost pairs as empty boxes
inline constexpr std::uint32_t BOX_KIND_OFF_TOO = 31;       // a second "OFF"
inline constexpr std::uint32_t BOX_KIND_GATE1_AMPLITUDE = 35;
inline constexpr std::uint32_t BOX_KIND_GATE2_AMPLITUDE = 36;
inline constexpr std::uint32_t BOX_KIND_COATING = 40;
inline constexpr std::size_t BOX_TEXT_SIZE = 8;            // at most 7 characters
inline constexpr std::uint32_t BOX_NO_READING = 536870911;  // 0x1FFFFFFF: the gate holds no reading

// One measurement box while it is rendered.
struct MeasBox {
    std::int32_t kind = 0;                    // box kind, 0 to 40
    std::array<char, BOX_TEXT_SIZE> text{};   // the rendered text, terminated
    // The stored value: a signed integer, an IEEE-754 single or, through its
    // upper 16 bits, a signed 16-bit integer, according to `kind`.
    std::uint32_t value = 0;
};

// Renders the box's value into its text by the rule of its kind, with the
// setup's `units`, `resolution` and `doubled` (1 for through-transmission).
// A text longer than 7 characters is cut to 7. Kinds 29, 30 and 37, and kinds
// outside 0 to 40, leave the text as it is.
void render_box_value(MeasBox& box, std::uint32_t units, std::uint32_t resolution,
                      std::uint32_t doubled);

// Whether a box of the kind shows its stored value: not the "OFF" kinds,
// nor kinds 29, 30 and 37, nor kinds outside 0 to 40.
bool box_kind_has_value(std::uint32_t kind);

// The name of a box kind, as the instrument's screen shows it: "OFF",
// "GATE 1 THICKNESS", ... "GATE 1 COATING" for 40. Kind 37 and kinds outside
// 0 to 40 have no name (the empty text).
const char* box_kind_name(std::int32_t kind);

}  // namespace ugf
