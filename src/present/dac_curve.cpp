#include "present/dac_curve.h"

#include <algorithm>
#include <cmath>

#include "present/number_format.h"

namespace ugf {

namespace {

constexpr std::uint32_t MODE_ASME_3 = 1;
constexpr std::uint32_t MODE_JIS = 2;
constexpr std::uint32_t MODE_CUSTOM = 3;

// Low 16 bits of a value truncated toward zero.
std::uint16_t low16(double x) {
    return static_cast<std::uint16_t>(static_cast<std::uint32_t>(truncate_to_i32(x)));
}

// The round-trip formula of the instrument in single precision, for a length
// or time x that single precision holds exactly or an int32; `rounded` adds
// half a count (5000) before the last division, as for the range.
std::uint16_t round_trip_counts(double x, std::uint32_t units, std::uint32_t velocity, bool rounded) {
    const float v = static_cast<float>(velocity);
    float f;
    float d;
    switch (units) {
        case 0:
            f = static_cast<float>(x);
            d = v / 80.0f;
            break;
        case 1:
            f = static_cast<float>(x / 25.4);
            d = v / 80.0f;
            break;
        case 2:
            f = static_cast<float>(x);
            d = 2500.0f;
            break;
        default:
            return 0;  // no conversion for units 3
    }
    // A velocity of 0 makes the quotient infinite or not a number, which
    // truncates to 0x80000000: low 16 bits 0.
    if (d == 0.0f) return 0;
    float r = (f / d) * 100000.0f + 0.0f;
    r = r + r;
    if (rounded) r = r + 5000.0f;
    r = r / 10000.0f;
    return low16(r);
}

// Curve offsets of each family, in 0.1 dB.
void set_curve_offsets(DacCurve& curve, const CurveSetup& setup) {
    switch (setup.dac_mode) {
        case MODE_ASME_3:
            curve.curve_offset = {0, -60, -140, 0};
            break;
        case MODE_JIS:
            curve.curve_offset = {60, 0, -60, -120};
            break;
        case MODE_CUSTOM:
            if (setup.dac_on == 1) curve.curve_offset = {setup.rl_gain, setup.sl_gain, setup.el_gain, 0};
            else curve.curve_offset = {0, -60, -140, 0};
            break;
        default:
            curve.curve_offset = {0, 0, 0, 0};
            break;
    }
}

// Takes the stored points in order up to the first amplitude of 0. The
// limits keep room for the end points that the build adds for the JIS and
// custom families; an amplitude of 511 or more (a lost signal) is no point.
void collect_points(DacCurve& curve, std::span<const DacPoint, DAC_POINT_COUNT> stored) {
    for (const DacPoint& p : stored) {
        if (p.dac_amplitude == 0) break;
        const std::uint16_t n = curve.point_count;
        if ((n >= 23 && curve.dac_mode == MODE_CUSTOM) || (n >= 24 && curve.dac_mode == MODE_JIS) ||
            n >= DAC_CURVE_POINTS || p.dac_amplitude >= 511) {
            continue;
        }
        std::size_t at = 0;
        while (at < n && curve.points[at].time < p.dac_count) ++at;
        if (at < n && curve.points[at].time == p.dac_count) {
            curve.points[at].amplitude = p.dac_amplitude;  // a later point of the same time wins
            continue;
        }
        for (std::size_t k = n; k > at; --k) curve.points[k] = curve.points[k - 1];
        curve.points[at] = {p.dac_count, p.dac_amplitude};
        curve.point_count = static_cast<std::uint16_t>(n + 1);
    }
}

}  // namespace

std::uint16_t length_to_counts(std::int32_t x, std::uint32_t units, std::uint32_t velocity) {
    return round_trip_counts(static_cast<double>(x), units, velocity, false);
}

std::uint32_t column_of(std::int16_t d, std::int16_t delay_counts, std::uint16_t column_count,
                        std::uint32_t counts_per_100_columns) {
    if (d < delay_counts || counts_per_100_columns == 0) return NO_COLUMN;
    if (d == delay_counts) return 0;
    const std::uint32_t span = static_cast<std::uint32_t>(d - delay_counts);
    const std::uint32_t c = (span * 100u) / counts_per_100_columns;
    return c > column_count ? static_cast<std::uint32_t>(column_count) + 1u : c;
}

void prepare_dac_curve(const CurveSetup& setup, std::uint16_t sample_count,
                       std::span<const DacPoint, DAC_POINT_COUNT> stored, DacCurve& curve,
                       CurveFrame& frame) {
    frame = CurveFrame{};
    frame.column_count = sample_count;

    // The displayed range is 10% longer than the setup's.
    const double range = static_cast<double>(setup.range) * 1.1;
    const float rt = static_cast<float>(truncate_to_i32(range));
    const float n = static_cast<float>(sample_count);
    const float v = static_cast<float>(setup.velocity);
    // No columns or no velocity would divide by 0; the quotient would be
    // infinite or not a number, whose low 16 bits are 0 all the same.
    float s = 0.0f;
    if (n != 0.0f) {
        if (setup.units == 2) {
            s = (rt * 80.0f / n) / 100.0f;
        } else if (setup.units == 0 && v != 0.0f) {
            s = ((160.0f / n) * 10000.0f * rt / v) / 10.0f;
        } else if (setup.units == 1 && v != 0.0f) {
            s = (((160.0f / n) / 25.4f) * 100000.0f * rt / v) / 100.0f;
        }
    }
    frame.counts_per_100_columns = low16(s);

    curve = DacCurve{};
    curve.first_column = NO_COLUMN;
    curve.gain_offset = setup.dac_gain;
    curve.dac_mode = setup.dac_mode;
    curve.dac_on = setup.dac_on;
    set_curve_offsets(curve, setup);
    collect_points(curve, stored);

    // A negative delay takes the negated counts of its magnitude; the
    // magnitude of -2^31 wraps to itself.
    const std::int32_t delay = static_cast<std::int32_t>(setup.delay);
    if (delay < 0) {
        const std::int32_t magnitude = static_cast<std::int32_t>(0u - setup.delay);
        const std::uint16_t counts = length_to_counts(magnitude, setup.units, setup.velocity);
        frame.delay_counts = static_cast<std::int16_t>(static_cast<std::uint16_t>(0u - counts));
    } else {
        frame.delay_counts = static_cast<std::int16_t>(length_to_counts(delay, setup.units, setup.velocity));
    }
    frame.zero_counts = length_to_counts(setup.zero, setup.units, setup.velocity);
    frame.range_counts = round_trip_counts(static_cast<double>(static_cast<float>(range)), setup.units,
                                           setup.velocity, true);

    build_dac_curve(curve, frame);
}

int build_dac_curve(DacCurve& curve, const CurveFrame& frame) {
    const std::uint16_t n_columns = frame.column_count;
    const std::uint32_t s = frame.counts_per_100_columns;
    const std::int16_t delay = frame.delay_counts;
    const std::uint16_t z = frame.zero_counts;
    auto& pts = curve.points;
    curve.point_count = std::min<std::uint16_t>(curve.point_count, DAC_CURVE_POINTS);

    if (n_columns == 0 || curve.point_count < 2) return 0;

    // The JIS and custom families start flat from time 0 at the first
    // point's amplitude; the custom family runs on flat to the end of the
    // time axis. The point limits of the preparation leave room for both.
    if ((curve.dac_mode == MODE_JIS || curve.dac_mode == MODE_CUSTOM) && pts[0].time != 0 &&
        curve.point_count < DAC_CURVE_POINTS) {
        for (std::size_t k = curve.point_count; k > 0; --k) pts[k] = pts[k - 1];
        pts[0] = {0, pts[1].amplitude};
        ++curve.point_count;
    }
    if (curve.dac_mode == MODE_CUSTOM && pts[curve.point_count - 1].time < DAC_TIME_END &&
        curve.point_count < DAC_CURVE_POINTS) {
        pts[curve.point_count] = {DAC_TIME_END, pts[curve.point_count - 1].amplitude};
        ++curve.point_count;
    }
    const std::size_t count = curve.point_count;

    // Exponential families: the decay rate of each segment.
    std::array<double, DAC_CURVE_POINTS> decay{};
    if (curve.dac_mode != MODE_JIS) {
        for (std::size_t i = 0; i + 1 < count; ++i) {
            decay[i] = std::log(static_cast<double>(pts[i].amplitude) / static_cast<double>(pts[i + 1].amplitude)) /
                       static_cast<double>(static_cast<int>(pts[i].time) - static_cast<int>(pts[i + 1].time));
        }
    }

    curve.step = static_cast<double>(frame.range_counts) / static_cast<double>(n_columns);
    if (s == 0 || curve.step == 0.0) return 0;

    // The first curve sample that falls on a display column.
    double t = static_cast<double>(pts[0].time);
    const std::uint16_t last_time = pts[count - 1].time;
    std::uint32_t c = NO_COLUMN;
    bool visible = false;
    while (t < 2147483648.0) {
        const std::uint32_t ti = static_cast<std::uint32_t>(truncate_to_i32(t));
        if (static_cast<std::uint16_t>(ti) >= last_time) break;
        const std::int16_t d = static_cast<std::int16_t>(static_cast<std::uint16_t>(ti - z - 2u));
        c = column_of(d, delay, n_columns, s);
        if (static_cast<std::uint16_t>(c) < n_columns) {
            visible = true;
            break;
        }
        t += curve.step;
    }
    if (!visible) return 0;
    curve.first_column = static_cast<std::uint16_t>(c);

    // One height per column, in column order, never past the table's end.
    const std::size_t k_limit = std::min<std::size_t>(n_columns, DAC_TABLE_SIZE);
    std::size_t k = 0;
    for (std::size_t i = 0; i + 1 < count; ++i) {
        double line_slope = 0.0;
        double intercept = 0.0;
        if (curve.dac_mode == MODE_JIS) {
            if (i != 0) {
                line_slope = static_cast<double>(static_cast<int>(pts[i + 1].amplitude) - static_cast<int>(pts[i].amplitude)) /
                             static_cast<double>(static_cast<int>(pts[i + 1].time) - static_cast<int>(pts[i].time));
            }
            intercept = static_cast<double>(pts[i].amplitude) - static_cast<double>(pts[i].time) * line_slope;
        }
        while (static_cast<double>(pts[i + 1].time) > t) {
            const std::uint32_t ti = static_cast<std::uint32_t>(truncate_to_i32(t));
            const bool before_zero = static_cast<std::int16_t>(static_cast<std::uint16_t>(ti - z)) < 0;
            if (!before_zero) {
                const double x = t - static_cast<double>(z) - 2.0;
                std::uint32_t column;
                if (truncate_to_i32(x) > delay) {
                    const double cd = ((x - static_cast<double>(delay)) * 100.0) / static_cast<double>(s);
                    column = cd > static_cast<double>(n_columns)
                                 ? static_cast<std::uint32_t>(n_columns) + 1u
                                 : static_cast<std::uint32_t>(truncate_to_i32(cd));
                } else {
                    column = static_cast<double>(delay) <= x ? 0u : NO_COLUMN;
                }
                if (column != NO_COLUMN) {
                    // The sample is on the display: from here on its column
                    // is the running count k.
                    if (k >= k_limit) break;
                    ++k;
                    const double height =
                        curve.dac_mode == MODE_JIS
                            ? line_slope * t + intercept
                            : std::exp((static_cast<double>(pts[i].time) - t) * decay[i] * -1.0) *
                                  static_cast<double>(pts[i].amplitude);
                    curve.table[k - 1] = low16(height);
                }
            }
            t += curve.step;
        }
    }

    for (std::size_t j = 0; j < curve.scale.size(); ++j) {
        const int tenths_db = static_cast<int>(curve.gain_offset) + static_cast<int>(curve.curve_offset[j]);
        curve.scale[j] = std::pow(10.0, (tenths_db / 10.0) / 20.0);
    }
    return 1;
}

namespace {

enum class AlarmTest { None, Level, NoSignal, Depth, Curve };

struct AlarmKind {
    char text[7];
    AlarmTest test;
    std::size_t curve;  // which of the four curves a curve test uses
};

constexpr std::array<AlarmKind, 16> ALARM_KINDS = {{
    {"OFF ", AlarmTest::None, 0},
    {"POS ", AlarmTest::Level, 0},
    {"NEG ", AlarmTest::NoSignal, 0},
    {"MIN ", AlarmTest::Depth, 0},
    {"ASME", AlarmTest::Curve, 0},
    {" 0 DB ", AlarmTest::Curve, 0},
    {"-6 DB ", AlarmTest::Curve, 1},
    {"-14 DB", AlarmTest::Curve, 2},
    {"+6 DB ", AlarmTest::Curve, 0},
    {" 0 DB ", AlarmTest::Curve, 1},
    {"-6 DB ", AlarmTest::Curve, 2},
    {"-12 DB", AlarmTest::Curve, 3},
    {" RL ", AlarmTest::Curve, 0},
    {" SL ", AlarmTest::Curve, 1},
    {" EL ", AlarmTest::Curve, 2},
    {" PR ", AlarmTest::None, 0},
}};

int curve_alarm(const AlarmInput& input, const DacCurve& curve, const CurveFrame& frame,
                std::size_t which) {
    if (input.peak_position >= PEAK_LOST || curve.first_column == NO_COLUMN) return ALARM_ARMED;
    const std::int16_t d = static_cast<std::int16_t>(
        static_cast<std::uint16_t>(static_cast<std::uint32_t>(input.peak_position) - frame.zero_counts - 2u));
    const std::uint32_t c = column_of(d, frame.delay_counts, frame.column_count, frame.counts_per_100_columns);
    if (c >= frame.column_count || c < curve.first_column || c >= DAC_TABLE_SIZE || c == NO_COLUMN) {
        return ALARM_ARMED;
    }
    std::uint32_t used = 0;
    if (curve.step != 0.0) {
        while (used < DAC_TABLE_SIZE && curve.table[used] != 0) ++used;
    }
    if (c > used + curve.first_column) return ALARM_ARMED;
    const double scaled = static_cast<double>(curve.table[c - curve.first_column]) * curve.scale[which];
    const std::uint16_t h = std::min<std::uint16_t>(low16(scaled), 511);
    return input.peak_amplitude > h ? ALARM_HIGH : ALARM_ARMED;
}

}  // namespace

int gate_alarm_state(const AlarmInput& input, const DacCurve& curve, const CurveFrame& frame,
                     int scan_valid) {
    const AlarmKind kind = input.alarm_kind < ALARM_KINDS.size() ? ALARM_KINDS[input.alarm_kind]
                                                                 : AlarmKind{"    ", AlarmTest::None, 0};
    if (scan_valid == 0) return kind.test == AlarmTest::None ? ALARM_OFF : ALARM_ARMED;
    switch (kind.test) {
        case AlarmTest::None:
            return ALARM_OFF;
        case AlarmTest::Level:
            return input.peak_amplitude > input.level && input.peak_amplitude != AMPLITUDE_LOST ? ALARM_HIGH
                                                                                                 : ALARM_ARMED;
        case AlarmTest::NoSignal:
            return input.peak_amplitude == AMPLITUDE_LOST ? ALARM_LOW : ALARM_ARMED;
        case AlarmTest::Depth: {
            // The sum does not wrap.
            const std::uint32_t depth = static_cast<std::uint32_t>(input.min_depth_counts) + frame.zero_counts;
            return input.peak_position < depth && input.peak_position < PEAK_LOST ? ALARM_LOW : ALARM_ARMED;
        }
        case AlarmTest::Curve:
            return curve_alarm(input, curve, frame, kind.curve);
    }
    return ALARM_OFF;
}

const char* alarm_kind_text(std::uint32_t alarm_kind) {
    return alarm_kind < ALARM_KINDS.size() ? ALARM_KINDS[alarm_kind].text : "    ";
}

}  // namespace ugf
