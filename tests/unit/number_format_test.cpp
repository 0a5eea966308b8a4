#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

#include "present/number_format.h"

namespace ugf {
namespace {

struct ThicknessCase {
    std::int32_t value;
    std::uint32_t units;
    std::uint32_t resolution;
    DigitLayout layout;
    std::uint32_t doubled;
    std::uint32_t meas_mode;
    const char* expected;
};

std::string thickness(const ThicknessCase& c) {
    char out[NUMBER_TEXT_SIZE];
    format_thickness(out, sizeof out, c.value, c.units, c.resolution, c.layout, c.doubled, c.meas_mode);
    return out;
}

void check_all(const ThicknessCase* cases, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const ThicknessCase& c = cases[i];
        EXPECT_EQ(thickness(c), c.expected) << "value " << c.value << " units " << c.units << " resolution "
                                            << c.resolution << " layout " << c.layout << " doubled "
                                            << c.doubled << " mode " << c.meas_mode;
    }
}

constexpr DigitLayout STD = LAYOUT_STANDARD;
constexpr DigitLayout PREC = LAYOUT_PRECISION;
constexpr DigitLayout FLAW = LAYOUT_FLAW;

TEST(FormatThickness, StandardAndFlawInches) {
    const ThicknessCase cases[] = {
        {12345, 0, 1, STD, 0, 0, " 1.235"}, {12345, 0, 0, STD, 0, 0, " 1.23"},
        {12345, 0, 2, STD, 0, 0, " 1.23"},  // only resolution 1 is fine
        {123456, 0, 1, STD, 0, 0, "12.346"}, {0, 0, 1, STD, 0, 0, " 0.000"}, {5, 0, 1, STD, 0, 0, " 0.001"},
        {4, 0, 1, STD, 0, 0, " 0.000"}, {-12345, 0, 1, STD, 0, 0, "-1.235"}, {-99999, 0, 1, STD, 0, 0, "-10.000"},
        // Rounding carries the last row below 100 inches into a digit the
        // six scratch characters no longer hold.
        {999999, 0, 1, STD, 0, 0, "10.000"}, {999999, 0, 0, STD, 0, 0, "10.00"},
        // From 100 inches on the addend no longer matches the kept digits.
        {1000000, 0, 1, STD, 0, 0, "100.00"}, {1000000, 0, 0, STD, 0, 0, "100.0"},
        {1234567, 0, 1, STD, 0, 0, "123.45"},
        // The carry threshold T: below it the sign takes the free position,
        // from it on the text grows by one character.
        {-99994, 0, 1, STD, 0, 0, "-9.999"}, {-99995, 0, 1, STD, 0, 0, "-10.000"}, {-99949, 0, 0, STD, 0, 0, "-9.99"},
        {-99950, 0, 0, STD, 0, 0, "-10.00"}, {-999999, 0, 1, STD, 0, 0, "-10.000"},
        {-1000000, 0, 1, STD, 0, 0, "-100.00"},
        // The measurement mode has no effect outside the precision layout.
        {1234, 0, 1, STD, 0, 5, " 0.123"},
    };
    check_all(cases, std::size(cases));
}

TEST(FormatThickness, StandardAndFlawMillimetresAndMicroseconds) {
    const ThicknessCase cases[] = {
        {123450, 1, 1, STD, 0, 0, " 12.35"}, {123450, 1, 0, STD, 0, 0, " 12.3"}, {1234560, 1, 1, STD, 0, 0, "123.46"},
        {-999949, 1, 1, STD, 0, 0, "-99.99"}, {-999950, 1, 1, STD, 0, 0, "-100.00"},
        // Ten metres: only the flaw layout has rows of its own, for mm only.
        {9999999, 1, 1, FLAW, 0, 0, "100.00"}, {10000000, 1, 1, FLAW, 0, 0, "1000.0"},
        {10000000, 1, 0, FLAW, 0, 0, "1000"}, {12345678, 1, 1, FLAW, 0, 0, "1234.6"},
        {12345678, 1, 0, FLAW, 0, 0, "1235"}, {10000000, 1, 1, STD, 0, 0, "100.00"},
        {12345678, 2, 1, FLAW, 0, 0, "123.45"},
        {12345678, 3, 1, FLAW, 0, 0, "123.45"},  // units 3 takes the common rows
        {6050, 2, 1, FLAW, 0, 0, "  0.61"},
    };
    check_all(cases, std::size(cases));
}

TEST(FormatThickness, PrecisionModeFiveInMilsAndMicrons) {
    const ThicknessCase cases[] = {
        {1234, 0, 1, PREC, 0, 5, " 12.34"}, {123, 0, 0, PREC, 0, 5, "   1.2"}, {0, 0, 1, PREC, 0, 5, "  0.00"},
        {12345, 0, 1, PREC, 0, 5, " 12.34"},   // four digits kept, point after two
        {99999, 0, 1, PREC, 0, 5, " 99.99"}, {100000, 0, 1, PREC, 0, 5, " 100.0"},
        {-1234, 0, 1, PREC, 0, 5, "- 12.34"},  // the literal blank stays behind the sign
        {1234, 1, 1, PREC, 0, 5, "  12.3"}, {1234, 1, 0, PREC, 0, 5, "   12"}, {999999, 1, 1, PREC, 0, 5, " 100.0"},
        {1000000, 1, 1, PREC, 0, 5, " 1000"}, {-99995, 1, 1, PREC, 0, 5, "- 100.0"},
    };
    check_all(cases, std::size(cases));
}

TEST(FormatThickness, DoubledAndWraparound) {
    const ThicknessCase cases[] = {
        {6000, 0, 1, STD, 1, 0, " 1.200"}, {6000, 0, 1, STD, 0, 0, " 0.600"},
        {6000, 0, 1, STD, 2, 0, " 0.600"},  // only 1 doubles
        {6000, 2, 1, FLAW, 1, 0, "  0.60"},  // microseconds never double
        {6000, 3, 1, FLAW, 1, 0, "  1.20"}, {-6000, 1, 1, FLAW, 1, 0, "- 1.20"},
        {std::numeric_limits<std::int32_t>::min(), 0, 1, STD, 0, 0, "-214.74"},
        // 2^31 doubled wraps to 0.
        {std::numeric_limits<std::int32_t>::min(), 0, 1, STD, 1, 0, "-0.000"},
        // 4294967294 plus the addend 500 wraps to 498.
        {-2147483647, 1, 0, STD, 1, 0, "- 0.0"},
    };
    check_all(cases, std::size(cases));
}

std::string encoder_step(std::uint32_t index, std::uint32_t code, std::uint32_t units, std::uint32_t custom) {
    char out[NUMBER_TEXT_SIZE];
    format_encoder_step(out, sizeof out, index, code, units, custom);
    return out;
}

TEST(FormatEncoderStep, TableAndCustomEncodersAtTheRowBoundaries) {
    struct Case {
        std::uint32_t index, code, units, custom;
        const char* expected;
    } cases[] = {
        {0, 63, 0, 0, "0.8898 IN"}, {0, 63, 1, 0, "22.602 MM"},
        {0, 63, 2, 0, "0.8898 IN"},  // every unit but mm is inches
        {1, 10, 0, 0, "0.0306 IN"}, {2, 0, 0, 0, "0.0000 IN"},
        {3, 10, 0, 100, "0.0100 IN"},        // custom: resolution x 100
        {3, 1, 0, 999990, "9.9999 IN"},      // S = 99999
        {3, 50, 0, 20000, "10.000 IN"},      // S = 100000
        {3, 1, 1, 393000, "99.822 MM"},      // S = 998219
        {3, 1, 1, 393700, "10.000 MM"},      // S = 999997: the addend carries past the scratch
        {3, 1, 1, 393702, "100.00 MM"},      // S = 1000005
        {3, 63, 0, 0xFFFFFF, "26.172 IN"},   // the product wraps at 2^32
        {4, 63, 0, 100, ""}, {0xFFFFFFFF, 1, 1, 100, ""},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(encoder_step(c.index, c.code, c.units, c.custom), c.expected)
            << c.index << " " << c.code << " " << c.units << " " << c.custom;
    }
}

TEST(FormatEncoderDistance, SevenDecimalsOfASinglePrecisionDistance) {
    struct Case {
        std::uint32_t index, code, units, custom, multiplier;
        const char* expected;
    } cases[] = {
        {0, 0, 0, 0, 100, "0.0141243"}, {0, 63, 0, 0, 100, "0.9039552"}, {0, 0, 1, 0, 100, "0.3587572"},
        {3, 1, 0, 5, 1000, "0.0010000"}, {3, 1, 0, 5, 100, "0.0001000"},
        // 16777217 has no single-precision form: it becomes 16777216.
        {3, 0, 0, 16777217, 1, "1.6777216"},
        // The custom factor wraps at 2^32: 3892313112, single 3892313088.
        {3, 0, 0, 0xFFFFFF, 1000, "389.2313088"}, {4, 0, 0, 5, 100, ""},
    };
    for (const Case& c : cases) {
        char out[NUMBER_TEXT_SIZE];
        format_encoder_distance(out, sizeof out, c.index, c.code, c.units, c.custom, c.multiplier);
        EXPECT_STREQ(out, c.expected) << c.index << " " << c.code << " " << c.units;
    }
}

TEST(FormatScanScale, CutDigitsWithoutRounding) {
    struct Case {
        std::int32_t value;
        std::uint32_t units, meas_mode;
        const char* expected;
    } cases[] = {
        {1000, 0, 0, " 1.000"}, {0, 0, 0, " 0.000"}, {12345, 0, 0, "12.345"},
        {123456, 0, 0, "12.345"},  // only five scratch characters
        {-1, 0, 0, "42.949"},      // printed unsigned
        {1000, 1, 0, " 10.00"}, {5, 1, 0, "  0.05"}, {0, 0, 5, "  0.00"}, {1234000, 0, 5, "123.40"},
        {500, 0, 5, "   .50"}, {0, 1, 5, "   0.0"}, {5000, 1, 5, "  50.0"}, {-5000, 1, 5, " -50.0"},
    };
    for (const Case& c : cases) {
        char out[NUMBER_TEXT_SIZE];
        format_scan_scale(out, sizeof out, c.value, c.units, c.meas_mode);
        EXPECT_STREQ(out, c.expected) << c.value << " " << c.units << " " << c.meas_mode;
    }
}

TEST(FormatSmallTexts, TimeFrequencyTenthsVoltage) {
    struct Case {
        std::int32_t value;
        const char* expected;
    };
    const Case times[] = {
        {500, "0.05 US"}, {-500, "-0.05 US"}, {99, "0.00 US"}, {1234567, "123.45 US"},
        {std::numeric_limits<std::int32_t>::min(), "-214748.36 US"},
    };
    for (const Case& c : times) {
        char out[NUMBER_TEXT_SIZE];
        format_time_us(out, sizeof out, c.value);
        EXPECT_STREQ(out, c.expected) << c.value;
    }
    const Case frequencies[] = {
        {50, "5.0 MHZ"}, {5, ".5 MHZ"}, {0, ".0 MHZ"}, {123, "12.3 MHZ"}, {65535, "65.5 MHZ"},
    };
    for (const Case& c : frequencies) {
        char out[NUMBER_TEXT_SIZE];
        format_frequency_mhz(out, sizeof out, static_cast<std::uint16_t>(c.value));
        EXPECT_STREQ(out, c.expected) << c.value;
    }
    const Case tenths[] = {{5, "00.5"}, {123, "12.3"}, {0, "00.0"}, {1234, "12.3"}, {65535, "65.5"}};
    for (const Case& c : tenths) {
        char out[5];
        format_tenths(out, sizeof out, static_cast<std::uint16_t>(c.value));
        EXPECT_STREQ(out, c.expected) << c.value;
    }
    const Case voltages[] = {{0, "30 V"}, {1, "60 V"}, {2, "90 V"}, {3, "120 V"}, {4, "30 V"}};
    for (const Case& c : voltages) {
        EXPECT_STREQ(format_pulser_voltage(static_cast<std::uint32_t>(c.value)), c.expected) << c.value;
    }
}

TEST(FormatGainSetting, ManualDecibelsAndModeNames) {
    struct Case {
        std::uint16_t mode, db;
        const char* expected;
    } cases[] = {
        {4, 0, "0 DB MIN"}, {4, 94, "94DB MAX"}, {4, 40, "40DB"},  {4, 5, "5 DB"},
        {4, 65535, "65535DB"}, {0, 40, "LOW "},  {1, 40, "STD "},  {2, 0, "HIGH"},
        {3, 0, "AGC "},     {10, 0, "MANU"},     {5, 0, "    "},   {65535, 0, "    "},
    };
    for (const Case& c : cases) {
        char out[NUMBER_TEXT_SIZE];
        format_gain_setting(out, sizeof out, c.mode, c.db);
        EXPECT_STREQ(out, c.expected) << c.mode << " " << c.db;
    }
}

// Fahrenheit as stored, Celsius from it in single precision; a 32-bit degree
// value keeps 9 characters.
TEST(FormatTemperature, FahrenheitCelsiusAndTheBound) {
    const struct {
        std::int32_t value;
        std::uint32_t metric;
        const char* expected;
    } cases[] = {
        {32, 1, " 0.4 C"}, {-40, 0, " -40 F"}, {-40, 1, "-39.6 C"}, {212, 1, " 100.4 C"},
        {std::numeric_limits<std::int32_t>::min(), 0, "-21474836"},
        // F - 32 rounds to 2^31 in single precision; C is 1193046528.
        {std::numeric_limits<std::int32_t>::max(), 1, " 11930465"},
    };
    char out[NUMBER_TEXT_SIZE];
    for (const auto& c : cases) {
        format_temperature(out, sizeof out, c.value, c.metric);
        EXPECT_STREQ(out, c.expected) << c.value << " " << c.metric;
    }
}

// The rows' way to the temperature text against format_temperature (which
// the test above and the one-decimal test hold to printf), for every whole
// degree a reading stores (20 bits), negative ones, and both units.
TEST(FormatTemperature, RowTextLikeTheBoundedText) {
    for (std::int32_t f = -20000; f <= 0xFFFFF; ++f) {
        for (std::uint32_t metric : {0u, 1u}) {
            char expected[NUMBER_TEXT_SIZE];
            char made[NUMBER_TEXT_SIZE];
            format_temperature(expected, sizeof expected, f, metric);
            const std::size_t n = temperature_text(made, f, metric);
            ASSERT_EQ(std::string(made, n), expected) << f << " " << metric;
            ASSERT_EQ(made[n], '\0') << f << " " << metric;
        }
    }
}

// The percentage of the DIFF cell against printf's "%3d%%", around the fast
// range and at the limits of the type.
TEST(PercentText, LikeSnprintf) {
    std::vector<std::int32_t> values;
    for (std::int32_t v = -30000; v <= 30000; ++v) values.push_back(v);
    for (std::int32_t v : {std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max(), -99999, 99999}) {
        values.push_back(v);
    }
    for (std::int32_t v : values) {
        char expected[NUMBER_TEXT_SIZE];
        std::snprintf(expected, sizeof expected, "%3d%%", v);
        char made[NUMBER_TEXT_SIZE];
        const std::size_t n = percent_text(made, v);
        ASSERT_EQ(std::string(made, n), expected) << v;
        ASSERT_EQ(made[n], '\0') << v;
    }
}

TEST(TruncateToI32, TowardZeroAndTheProcessorValueOutOfRange) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    struct Case {
        double x;
        std::int32_t expected;
    } cases[] = {
        {1.9, 1}, {-1.9, -1}, {-0.0, 0}, {2147483647.9, 2147483647}, {2147483648.0, INT32_MIN},
        {-2147483648.9, INT32_MIN}, {-2147483649.0, INT32_MIN}, {nan, INT32_MIN}, {inf, INT32_MIN}, {-inf, INT32_MIN},
    };
    for (const Case& c : cases) EXPECT_EQ(truncate_to_i32(c.x), c.expected) << c.x;
    EXPECT_EQ(truncate_to_u32_low(4294967296.0 + 7.5), 7u);
    EXPECT_EQ(truncate_to_u32_low(-1.0), 0xFFFFFFFFu);
    EXPECT_EQ(truncate_to_u32_low(nan), 0u);
}

}  // namespace
}  // namespace ugf
