#include "present/meas_box.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "present/number_format.h"
#include "base/bits.h"
#include "base/console.h"
#include "base/labels.h"

namespace ugf {

namespace {

// How a kind shows its value.
enum class BoxRule {
    Blank,           // six blanks
    None,            // the text stays as it is
    Length,          // integer length, empty marker 0x1FFFFFFF, 0 blanked
    FloatLength,     // single-precision length, 0.0 blanked
    SignedDistance,  // single-precision length, 536870912.0 is empty
    Leg,             // integer, 0 is blank
    FloatText,       // "% 4.1f", 0.0 is blank
    Depth,           // integer length, 0 and 200000000 up are empty
    Percent,         // integer amplitude, 0 and 512 are blank
    Current,         // signed 16-bit amplitude, 512 is blank
    ToCurve,         // signed 16-bit amplitude to the curve
    DbToCurve,       // signed 16-bit count of 0.25 dB to the curve
    Pair,            // echo-to-echo length
    PairRange,       // echo-to-echo minimum or maximum
    Tenths,          // signed 16-bit count of 0.1
    FloatOrZero,     // "% 4.1f", 0.0 is an empty length
};

struct BoxKind {
    BoxRule rule;
    std::int64_t name_row;  // row of the screen texts; 0 is the empty text
};

constexpr std::array<BoxKind, BOX_KIND_MAX + 1> BOX_KINDS = {{
    {BoxRule::Blank, UI_OFF_ON},      // 0 "OFF"
    {BoxRule::Length, 908},           // 1 gate 1 thickness
    {BoxRule::Length, 910},           // 2 gate 1 soundpath
    {BoxRule::FloatLength, 911},      // 3 gate 1 depth to reflector
    {BoxRule::FloatLength, 912},      // 4 gate 1 surface distance
    {BoxRule::SignedDistance, 913},   // 5 gate 1 surface distance (-x)
    {BoxRule::Leg, 914},              // 6 gate 1 reflector leg
    {BoxRule::FloatText, 915},        // 7 AWS D1
    {BoxRule::Depth, 916},            // 8 gate 1 min depth
    {BoxRule::Depth, 917},            // 9 gate 1 max depth
    {BoxRule::Percent, 918},          // 10 gate 1 max amplitude
    {BoxRule::Percent, 919},          // 11 gate 1 min amplitude
    {BoxRule::Current, 920},          // 12 gate 1 current amplitude
    {BoxRule::ToCurve, 921},          // 13 gate 1 amplitude to curve
    {BoxRule::DbToCurve, 922},        // 14 gate 1 dB to curve
    {BoxRule::Length, 923},           // 15 gate 2 thickness
    {BoxRule::Length, 924},           // 16 gate 2 soundpath
    {BoxRule::FloatLength, 925},      // 17 gate 2 depth to reflector
    {BoxRule::FloatLength, 926},      // 18 gate 2 surface distance
    {BoxRule::SignedDistance, 927},   // 19 gate 2 surface distance (-x)
    {BoxRule::Leg, 928},              // 20 gate 2 reflector leg
    {BoxRule::Depth, 929},            // 21 gate 2 min depth
    {BoxRule::Depth, 930},            // 22 gate 2 max depth
    {BoxRule::Percent, 931},          // 23 gate 2 max amplitude
    {BoxRule::Percent, 932},          // 24 gate 2 min amplitude
    {BoxRule::Current, 933},          // 25 gate 2 current amplitude
    {BoxRule::ToCurve, 934},          // 26 gate 2 amplitude to curve
    {BoxRule::DbToCurve, 935},        // 27 gate 2 dB to curve
    {BoxRule::Pair, 936},             // 28 echo to echo
    {BoxRule::None, 937},             // 29 flat bottom hole size
    {BoxRule::None, 938},             // 30 data over shot
    {BoxRule::Blank, UI_OFF_ON},      // 31 "OFF"
    {BoxRule::PairRange, 940},        // 32 echo to echo min
    {BoxRule::PairRange, 941},        // 33 echo to echo max
    {BoxRule::Depth, 1548},           // 34 API DC
    {BoxRule::Length, 1580},          // 35 gate 1 soundpath amplitude
    {BoxRule::Length, 1581},          // 36 gate 2 soundpath amplitude
    {BoxRule::None, 0},               // 37 no name
    {BoxRule::Tenths, 1063},          // 38 AWS A value
    {BoxRule::FloatOrZero, 1064},     // 39 AWS C value
    {BoxRule::Length, 909},           // 40 gate 1 coating
}};

constexpr std::int32_t DEPTH_LIMIT = 200000000;      // depths from here on are no reading
constexpr std::int32_t PAIR_RANGE_EMPTY = -6500000;  // echo-to-echo extreme not yet found
constexpr float DISTANCE_EMPTY = 536870912.0f;        // surface distance with no reading
constexpr std::int32_t NO_SIGNAL = 512;              // amplitude of a gate without a signal

const char* const SIX_BLANKS = "      ";

// "% 4.1f" of a single, with the texts of infinity and NaN made here so that
// they are the same on every platform: " inf", "-inf", " nan", "-nan".
void format_float_tenth(char* out, std::size_t size, float f) {
    if (std::isfinite(f)) {
        format_text_bounded(out, size, "% 4.1f", static_cast<double>(f));
        return;
    }
    char word[5];
    word[0] = std::signbit(f) ? '-' : ' ';
    std::memcpy(word + 1, std::isnan(f) ? "nan" : "inf", 4);
    format_text_bounded(out, size, "%4s", word);
}

// "% +6.2f" of a count of 0.25 dB; the " " flag of the instrument's format
// gives way to "+".
void format_db_to_curve(char* out, std::size_t size, std::int16_t quarter_db) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat"
    format_text_bounded(out, size, "% +6.2f", static_cast<double>(quarter_db) * 0.25);
#pragma GCC diagnostic pop
}

}  // namespace

void render_box_value(MeasBox& box, std::uint32_t units, std::uint32_t resolution,
                      std::uint32_t doubled) {
    if (box.kind < 0 || box.kind > BOX_KIND_MAX) return;
    const BoxRule rule = BOX_KINDS[static_cast<std::size_t>(box.kind)].rule;
    if (rule == BoxRule::None) return;

    const std::int32_t v = static_cast<std::int32_t>(box.value);
    const float f = float_from_bits(box.value);
    const std::int16_t s = static_cast<std::int16_t>(static_cast<std::uint16_t>(box.value >> 16));

    char t[NUMBER_TEXT_SIZE];
    std::size_t limit = BOX_TEXT_SIZE - 1;
    // A length of the flaw detector's digit table.
    auto length = [&](std::int32_t value, std::uint32_t with_doubled) {
        format_thickness(t, sizeof t, value, units, resolution, LAYOUT_FLAW, with_doubled, 0);
    };
    // A zero length with its zeros blanked: the instrument's empty value,
    // blanks around a point.
    auto empty_length = [&](std::uint32_t with_doubled) {
        length(0, with_doubled);
        blank_zeros(t);
    };
    auto blanks = [&]() { format_text_bounded(t, sizeof t, "%s", SIX_BLANKS); };

    switch (rule) {
        case BoxRule::Blank:
            blanks();
            break;
        case BoxRule::Length:
            if (box.value == BOX_NO_READING) {
                empty_length(0);
            } else {
                length(v, doubled);
                if (v == 0) blank_zeros(t);
            }
            break;
        case BoxRule::FloatLength:
            length(truncate_to_i32(f), 0);
            if (f == 0.0f) blank_zeros(t);
            break;
        case BoxRule::SignedDistance:
            if (f == DISTANCE_EMPTY) empty_length(doubled);
            else length(truncate_to_i32(f), doubled);
            break;
        case BoxRule::Leg:
            if (v == 0) blanks();
            else format_text_bounded(t, sizeof t, "%d", static_cast<int>(v));
            break;
        case BoxRule::FloatText:
            limit = 6;
            if (f == 0.0f) blanks();
            else format_float_tenth(t, sizeof t, f);
            break;
        case BoxRule::Depth:
            if (v >= DEPTH_LIMIT || v == 0) empty_length(doubled);
            else length(v, doubled);
            break;
        case BoxRule::Percent:
            if (v == NO_SIGNAL || v == 0) blanks();
            else format_text_bounded(t, sizeof t, "%d", static_cast<int>(v));
            break;
        case BoxRule::Current:
            if (s == NO_SIGNAL) blanks();
            else format_text_bounded(t, sizeof t, "%d", static_cast<int>(s));
            break;
        case BoxRule::ToCurve:
            if (s >= NO_SIGNAL) blanks();
            else format_text_bounded(t, sizeof t, "%6i", static_cast<int>(s));
            break;
        case BoxRule::DbToCurve:
            limit = 6;
            if (s >= NO_SIGNAL) blanks();
            else format_db_to_curve(t, sizeof t, s);
            break;
        case BoxRule::Pair:
            if (box.value == BOX_NO_READING) empty_length(0);
            else length(v, doubled);
            break;
        case BoxRule::PairRange:
            if (box.value == BOX_NO_READING || v == PAIR_RANGE_EMPTY) empty_length(0);
            else length(v, doubled);
            break;
        case BoxRule::Tenths:
            limit = 6;
            format_text_bounded(t, sizeof t, "% 2d.%0d ", static_cast<int>(s / 10), static_cast<int>(s % 10));
            break;
        case BoxRule::FloatOrZero:
            limit = 6;
            if (f == 0.0f) empty_length(0);
            else format_float_tenth(t, sizeof t, f);
            break;
        case BoxRule::None:
            return;
    }

    const std::size_t n = std::min(std::strlen(t), limit);
    std::memcpy(box.text.data(), t, n);
    box.text[n] = '\0';
}

bool box_kind_has_value(std::uint32_t kind) {
    if (kind > static_cast<std::uint32_t>(BOX_KIND_MAX)) return false;
    const BoxRule rule = BOX_KINDS[kind].rule;
    return rule != BoxRule::Blank && rule != BoxRule::None;
}

const char* box_kind_name(std::int32_t kind) {
    if (kind < 0 || kind > BOX_KIND_MAX) return "";
    return ui_text(BOX_KINDS[static_cast<std::size_t>(kind)].name_row);
}

}  // namespace ugf
