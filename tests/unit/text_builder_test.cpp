// The formatting paths that stand in for snprintf, each compared with
// snprintf itself: a dense sweep of the values and every boundary (powers of
// ten and their neighbours, the limits of the integer types, zero), with
// every width, precision and buffer size that matters.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

#include "base/labels.h"
#include "base/text_builder.h"
#include "present/number_format.h"
#include "store/record.h"

namespace ugf {
namespace {

struct IntForm {
    int width, precision;
    bool left;
    std::size_t size;
};

std::vector<IntForm> int_forms() {
    std::vector<IntForm> forms;
    // Texts longer than the buffer's room are cut part by part.
    for (int width : {-40, -8, -7, -6, -5, -4, -3, -2, -1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 31, 32, 40})
        for (int precision : {-1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 25, 31, 40})
            for (bool left : {false, true})
                for (std::size_t size : {1u, 2u, 4u, 6u, 7u, 16u, 64u}) forms.push_back({width, precision, left, size});
    return forms;
}

std::vector<std::int64_t> int_boundaries() {
    std::vector<std::int64_t> values = {0, INT32_MIN, INT32_MAX, UINT32_MAX, std::int64_t{UINT32_MAX} + 1,
                                        INT64_MIN, INT64_MAX, INT64_MIN + 1, INT64_MAX - 1};
    for (std::int64_t p = 1; p <= INT64_MAX / 10; p *= 10) {
        for (std::int64_t v : {p - 1, p, p + 1, 10 * p - 1}) {
            values.push_back(v);
            values.push_back(-v);
        }
    }
    return values;
}

// Empty when the builder made what snprintf makes, else both texts.
std::string compare_int(std::int64_t value, const IntForm& f) {
    char expected[80];
    std::snprintf(expected, f.size, f.left ? "%-*.*lld" : "%*.*lld", f.width, f.precision,
                  static_cast<long long>(value));
    char made[80];
    TextBuilder b(made, f.size);
    b.put_int(value, f.width, f.precision, f.left);
    if (std::string(made) == expected && b.len == std::string(expected).size()) return "";
    return std::to_string(value) + " w" + std::to_string(f.width) + " p" + std::to_string(f.precision) +
           (f.left ? " left" : "") + " size " + std::to_string(f.size) + ": \"" + made + "\" for \"" +
           expected + "\"";
}

TEST(TextBuilder, IntegerLikeSnprintfAtEveryBoundary) {
    for (std::int64_t value : int_boundaries())
        for (const IntForm& f : int_forms()) ASSERT_EQ(compare_int(value, f), "");
}

TEST(TextBuilder, IntegerLikeSnprintfOverADenseSweep) {
    const std::vector<IntForm> forms = int_forms();
    std::size_t k = 0;
    for (std::int64_t value = -120000; value <= 1200000; ++value) {
        ASSERT_EQ(compare_int(value, forms[k++ % forms.size()]), "");
        ASSERT_EQ(compare_int(value, forms[(k * 7919) % forms.size()]), "");
    }
}

// The digit field of a length against " %*.*lu" and "%*.*lu" in seven bytes.
std::string compare_field(std::uint32_t a, int combo) {
    const int width = combo % 13, precision = combo / 13 % 13;
    const bool blank = combo / 169 != 0;
    char expected[DIGIT_FIELD_SIZE];
    std::snprintf(expected, sizeof expected, blank ? " %*.*lu" : "%*.*lu", width, precision,
                  static_cast<unsigned long>(a));
    char made[DIGIT_FIELD_SIZE];
    const std::size_t length = digit_field(made, a, width, precision, blank);
    if (std::string(made) == expected && length == std::string(expected).size()) return "";
    return std::to_string(a) + " combo " + std::to_string(combo) + ": \"" + made + "\" for \"" + expected + "\"";
}

TEST(DigitField, LikeSnprintfAtEveryBoundaryAndOverADenseSweep) {
    for (std::int64_t value : int_boundaries()) {
        if (value < 0 || value > UINT32_MAX) continue;
        for (int combo = 0; combo < 338; ++combo) ASSERT_EQ(compare_field(static_cast<std::uint32_t>(value), combo), "");
    }
    for (std::uint32_t a = 0; a <= 1200000; ++a) {
        ASSERT_EQ(compare_field(a, static_cast<int>(a % 338)), "");
        ASSERT_EQ(compare_field(a, static_cast<int>(a * 7919u % 338)), "");
    }
}

// Lengths made in one word against the general way (whose digit field is
// compared with snprintf above), for every row of the digit tables: every
// units code, resolution, layout, doubling and measurement mode.
TEST(Thickness, OneWordLikeTheGeneralWay) {
    auto compare = [](std::int32_t value, int combo) {
        const auto u = static_cast<std::uint32_t>(combo % 4), r = static_cast<std::uint32_t>(combo / 4 % 4);
        const auto layout = static_cast<DigitLayout>(combo / 16 % 3);
        const auto doubled = static_cast<std::uint32_t>(combo / 48 % 2), mode = std::array{0u, 5u, 2u}[combo / 96 % 3];
        char fast[NUMBER_TEXT_SIZE], general[NUMBER_TEXT_SIZE];
        const std::size_t n = format_thickness(fast, sizeof fast, value, u, r, layout, doubled, mode);
        const std::size_t m = format_thickness_general(general, sizeof general, value, u, r, layout, doubled, mode);
        return std::string(fast) == general && n == m ? "" : std::to_string(value) + " combo " + std::to_string(combo) + ": \"" + fast + "\" for \"" + general + "\"";
    };
    std::vector<std::int64_t> values = int_boundaries();
    for (std::int64_t power = 1; power <= 1000000000; power *= 10)
        for (std::int64_t v : {power, power / 2}) for (std::int64_t d = -60; d <= 60; ++d) values.push_back(v + d), values.push_back(-v - d);
    for (std::int64_t value : values) {
        if (value < INT32_MIN || value > INT32_MAX) continue;
        for (int combo = 0; combo < 288; ++combo) ASSERT_EQ(compare(static_cast<std::int32_t>(value), combo), "");
    }
    for (std::int32_t value = -2000000; value <= 12000000; ++value) ASSERT_EQ(compare(value, static_cast<int>(static_cast<std::uint32_t>(value) % 288)), "");
    for (std::int64_t value = INT32_MIN; value <= INT32_MAX; value += 9973) ASSERT_EQ(compare(static_cast<std::int32_t>(value), static_cast<int>(static_cast<std::uint64_t>(value) % 288)), "");
}

// "% 4.1f" of a float against snprintf, in a buffer of `size` bytes.
std::string compare_one_decimal(float value, std::size_t size = 64) {
    char expected[64];
    std::snprintf(expected, size, "% 4.1f", static_cast<double>(value));
    char made[64];
    TextBuilder b(made, size);
    put_one_decimal(b, value);
    if (std::string(made) == expected) return "";
    return std::to_string(value) + ": \"" + made + "\" for \"" + expected + "\"";
}

TEST(OneDecimal, LikeSnprintfForEveryTemperatureAndTie) {
    // The Celsius values of the temperatures (whole degrees Fahrenheit).
    for (std::int32_t f = -1100000; f <= 1100000; ++f) {
        const float fahrenheit = static_cast<float>(f);
        ASSERT_EQ(compare_one_decimal(((fahrenheit - 32.0f) * 5.0f + 4.0f) / 9.0f), "");
    }
    // Exact ties between two tenths, quarters, and the edges of the fast path.
    for (std::int32_t k = -40001; k <= 40001; k += 2) ASSERT_EQ(compare_one_decimal(static_cast<float>(k) / 4.0f), "");
    for (float v : {0.0f, -0.0f, 0.04f, -0.04f, 0.05f, 0.95f, 9.95f, 99999999.0f, 1e8f, -1e8f, 3e38f,
                    std::numeric_limits<float>::infinity(), -std::numeric_limits<float>::infinity(),
                    std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::denorm_min()}) {
        for (std::size_t size : {1u, 3u, 5u, 64u}) ASSERT_EQ(compare_one_decimal(v, size), "");
    }
}

// The velocity text against the snprintf formats it replaced, for every
// stored velocity (20 bits) in both kinds of units.
TEST(VelocityText, LikeSnprintfForEveryVelocity) {
    for (std::uint32_t v = 0; v <= 0xFFFFF; ++v) {
        char wide[32], expected[VELOCITY_TEXT_SIZE], made[VELOCITY_TEXT_SIZE];
        std::snprintf(wide, sizeof wide, "%.4f", static_cast<double>(static_cast<float>(v) / 100000.0f));
        std::snprintf(expected, sizeof expected, "%.6s", wide);
        format_velocity_reading(made, v, 0);
        ASSERT_STREQ(made, expected) << v;
        std::snprintf(wide, sizeof wide, "%5ld", static_cast<long>(static_cast<double>(static_cast<float>(v)) * 0.254));
        std::snprintf(expected, sizeof expected, "%.6s", wide);
        format_velocity_reading(made, v, 1 + v % 3);
        ASSERT_STREQ(made, expected) << v;
    }
}

TEST(TextBuilder, TextsOfEveryLengthAreCutLikeSnprintf) {
    const std::string text = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    for (std::size_t n = 0; n <= text.size(); ++n) {
        for (std::size_t size : {1u, 2u, 5u, 9u, 20u, 64u}) {
            char expected[64];
            const std::string cell = text.substr(0, n);
            std::snprintf(expected, size, "%c%s%s,%s,%s", ',', cell.c_str(), cell.c_str(), cell.c_str(), "A");
            char made[64];
            TextBuilder b(made, size);
            b.put(',');
            b.put(std::string_view(text.data(), n));
            b.put(cell.c_str());
            b.put_cells({cell, "A"});
            ASSERT_STREQ(made, expected) << n << " in " << size;
            ASSERT_EQ(b.len, std::string(expected).size());
        }
    }
}

// The gain setting: "%-4.4s" of the mode's name, or in mode 4 "%-2dDB"
// with its marks, for every mode and every dB value.
TEST(GainSetting, LikeSnprintfForEveryModeAndLevel) {
    for (std::uint32_t v = 0; v <= 0xFFFF; ++v) {
        const auto value = static_cast<std::uint16_t>(v);
        char expected[NUMBER_TEXT_SIZE];
        char made[NUMBER_TEXT_SIZE];
        std::snprintf(expected, sizeof expected, "%-4.4s", ui_text(UI_GAIN_MODE + value));
        format_gain_setting(made, sizeof made, value, 0);
        if (value != 4) {
            ASSERT_STREQ(made, expected) << v;
        }
        std::snprintf(expected, sizeof expected, "%-2dDB%s", static_cast<int>(v), v == 0 ? " MIN" : v == 94 ? " MAX" : "");
        format_gain_setting(made, sizeof made, 4, value);
        ASSERT_STREQ(made, expected) << v;
    }
}

}  // namespace
}  // namespace ugf
