#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "present/meas_box.h"

namespace ugf {
namespace {

std::uint32_t bits(float f) { return std::bit_cast<std::uint32_t>(f); }
// A signed 16-bit value in the upper half of the box value; the lower half
// holds unrelated bits.
std::uint32_t upper(std::int16_t s) { return (static_cast<std::uint32_t>(static_cast<std::uint16_t>(s)) << 16) | 0x1234u; }

const std::uint32_t EMPTY = 0x1FFFFFFF;
const float INF = std::numeric_limits<float>::infinity();
const float NAN_F = std::numeric_limits<float>::quiet_NaN();

struct BoxCase {
    std::int32_t kind;
    std::uint32_t value;
    const char* expected;
};

std::string render(std::int32_t kind, std::uint32_t value, std::uint32_t units = 0,
                   std::uint32_t resolution = 1, std::uint32_t doubled = 0) {
    MeasBox box;
    box.kind = kind;
    box.value = value;
    box.text = {'p', 'r', 'e', 'v', '\0'};
    render_box_value(box, units, resolution, doubled);
    return box.text.data();
}

// Inches, resolution 1, not doubled: "  .   " is the empty value, a blanked
// " 0.000".
TEST(RenderBoxValue, EveryKindWithAValueAndItsEmptyMarker) {
    const BoxCase cases[] = {
        {0, 12345, "      "},
        {1, 12345, " 1.235"}, {1, 0, "  .   "}, {1, EMPTY, "  .   "}, {1, static_cast<std::uint32_t>(-12345), "-1.235"},
        {2, 12345, " 1.235"}, {2, EMPTY, "  .   "},
        {3, bits(12345.7f), " 1.235"}, {3, bits(0.0f), "  .   "}, {3, bits(-0.0f), "  .   "},
        {3, bits(-12345.9f), "-1.235"},
        {3, bits(NAN_F), "-214.74"},  // not a number truncates to -2^31
        {4, bits(12345.0f), " 1.235"}, {4, bits(0.0f), "  .   "},
        {5, bits(-12345.0f), "-1.235"}, {5, bits(536870912.0f), "  .   "},
        {5, bits(0.0f), " 0.000"},  // only the marker is empty here
        {6, 3, "3"}, {6, 0, "      "}, {6, static_cast<std::uint32_t>(-5), "-5"},
        {6, 123456789, "1234567"}, {6, static_cast<std::uint32_t>(-123456789), "-123456"},
        {7, bits(12.34f), " 12.3"}, {7, bits(0.0f), "      "}, {7, bits(-2.3f), "-2.3"},
        {7, bits(1234.5f), " 1234."},  // at most six characters
        {7, bits(INF), " inf"}, {7, bits(-INF), "-inf"}, {7, bits(NAN_F), " nan"}, {7, bits(std::copysign(NAN_F, -1.0f)), "-nan"},
        {8, 12345, " 1.235"}, {8, 0, "  .   "}, {8, 200000000, "  .   "}, {8, 199999999, "200.00"},
        {8, static_cast<std::uint32_t>(-12345), "-1.235"}, {9, 12345, " 1.235"}, {9, 0, "  .   "},
        {10, 80, "80"}, {10, 0, "      "}, {10, 512, "      "}, {10, 513, "513"},
        {10, static_cast<std::uint32_t>(-1), "-1"}, {11, 511, "511"}, {11, 512, "      "},
        {12, upper(80), "80"}, {12, upper(512), "      "}, {12, upper(513), "513"}, {12, upper(-1), "-1"},
        {13, upper(80), "    80"}, {13, upper(-5), "    -5"}, {13, upper(511), "   511"},
        {13, upper(512), "      "}, {13, upper(600), "      "},
        {14, upper(8), " +2.00"}, {14, upper(-8), " -2.00"}, {14, upper(0), " +0.00"}, {14, upper(1), " +0.25"},
        {14, upper(-400), "-100.0"}, {14, upper(512), "      "}, {15, 12345, " 1.235"}, {15, EMPTY, "  .   "},
        {16, 12345, " 1.235"}, {16, 0, "  .   "}, {17, bits(12345.0f), " 1.235"}, {17, bits(0.0f), "  .   "},
        {18, bits(12345.0f), " 1.235"}, {18, bits(0.0f), "  .   "},
        {19, bits(12345.0f), " 1.235"}, {19, bits(536870912.0f), "  .   "}, {20, 42, "42"}, {20, 0, "      "},
        {21, 12345, " 1.235"}, {21, 250000000, "  .   "}, {22, 12345, " 1.235"}, {22, 0, "  .   "},
        {23, 100, "100"}, {23, 512, "      "}, {24, 1, "1"}, {24, 0, "      "},
        {25, upper(300), "300"}, {25, upper(512), "      "}, {26, upper(-300), "  -300"}, {26, upper(1000), "      "},
        {27, upper(-2), " -0.50"}, {27, upper(512), "      "},
        {28, 12345, " 1.235"}, {28, EMPTY, "  .   "}, {28, 0, " 0.000"},  // a zero pair is shown
        {29, 12345, "prev"}, {30, 12345, "prev"}, {31, 12345, "      "},
        {32, 12345, " 1.235"}, {32, EMPTY, "  .   "}, {32, static_cast<std::uint32_t>(-6500000), "  .   "},
        {33, static_cast<std::uint32_t>(-12345), "-1.235"}, {33, static_cast<std::uint32_t>(-6500000), "  .   "},
        {34, 12345, " 1.235"}, {34, 0, "  .   "}, {35, 12345, " 1.235"}, {35, EMPTY, "  .   "},
        {36, 12345, " 1.235"}, {36, 0, "  .   "}, {37, 12345, "prev"},
        {38, upper(123), " 12.3 "}, {38, upper(5), " 0.5 "}, {38, upper(0), " 0.0 "},
        {38, upper(-15), "-1.-5 "},  // quotient and remainder each keep the sign
        {38, upper(12345), " 1234."},
        {39, bits(12.34f), " 12.3"}, {39, bits(0.0f), "  .   "}, {39, bits(INF), " inf"},
        {40, 12345, " 1.235"}, {40, EMPTY, "  .   "}, {41, 12345, "prev"}, {255, 12345, "prev"}, {-1, 12345, "prev"},
    };
    for (const BoxCase& c : cases) {
        EXPECT_EQ(render(c.kind, c.value), c.expected) << "kind " << c.kind << " value " << c.value;
    }
}

TEST(BoxKindName, NamesOfTheKindTable) {
    const char* const names[] = {
        "OFF", "GATE 1 THICKNESS", "GATE 1 SOUNDPATH", "GATE 1 DEPTH TO REFLECTOR", "GATE 1 SURFACE DISTANCE",
        "GATE 1 SURFACE DISTANCE (-X)", "GATE 1 REFLECTOR LEG", "AWS D1", "GATE 1 MIN DEPTH", "GATE 1 MAX DEPTH",
        "GATE 1 MAX AMPLITUDE", "GATE 1 MIN AMPLITUDE", "GATE 1 CURRENT AMPLITUDE", "GATE 1 AMPLITUDE TO CURVE",
        "GATE 1 DB TO CURVE", "GATE 2 THICKNESS", "GATE 2 SOUNDPATH", "GATE 2 DEPTH TO REFLECTOR",
        "GATE 2 SURFACE DISTANCE", "GATE 2 SURFACE DISTANCE (-X)", "GATE 2 REFLECTOR LEG", "GATE 2 MIN DEPTH",
        "GATE 2 MAX DEPTH", "GATE 2 MAX AMPLITUDE", "GATE 2 MIN AMPLITUDE", "GATE 2 CURRENT AMPLITUDE",
        "GATE 2 AMPLITUDE TO CURVE", "GATE 2 DB TO CURVE", "ECHO TO ECHO", "FLAT BOTTOM HOLE SIZE", "DATA OVER SHOT",
        "OFF", "ECHO TO ECHO MIN", "ECHO TO ECHO MAX", "API DC", "GATE 1 SOUNDPATH AMPLITUDE",
        "GATE 2 SOUNDPATH AMPLITUDE", "", "AWS A VALUE", "AWS C VALUE", "GATE 1 COATING",
    };
    static_assert(std::size(names) == BOX_KIND_MAX + 1);
    for (std::int32_t kind = 0; kind <= BOX_KIND_MAX; ++kind) {
        EXPECT_STREQ(box_kind_name(kind), names[kind]) << kind;
    }
    EXPECT_STREQ(box_kind_name(41), "");
    EXPECT_STREQ(box_kind_name(-1), "");
    EXPECT_STREQ(box_kind_name(std::numeric_limits<std::int32_t>::min()), "");
}

}  // namespace
}  // namespace ugf
