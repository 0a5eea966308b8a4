#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <initializer_list>

#include "present/dac_curve.h"

namespace ugf {
namespace {

using Stored = std::array<DacPoint, DAC_POINT_COUNT>;

Stored stored(std::initializer_list<DacPoint> points) {
    Stored s{};
    std::size_t i = 0;
    for (const DacPoint& p : points) s[i++] = p;
    return s;
}

// A microsecond setup: its counts don't depend on the velocity. The range
// 11364 is shown as 12500.4 (x 1.1): S is exactly 100 counts per 100
// columns and the range counts are 100, so with 100 columns one curve sample
// falls on each column, one count apart. With delay and zero 0 the column of
// a count d is d - 2, and the peak at position p looks up the curve at time p.
CurveSetup microsecond_setup(std::uint8_t dac_mode) {
    CurveSetup s;
    s.range = 11364;
    s.units = 2;
    s.dac_mode = dac_mode;
    return s;
}

const Stored TWO_POINTS = stored({{10, 400}, {50, 100}});

struct Prepared {
    DacCurve curve;
    CurveFrame frame;
};

Prepared prepare(const CurveSetup& setup, const Stored& points, std::uint16_t sample_count = 100) {
    Prepared p;
    prepare_dac_curve(setup, sample_count, points, p.curve, p.frame);
    return p;
}

struct AlarmCase {
    std::uint32_t kind;
    std::uint16_t position;
    std::uint16_t amplitude;
    int expected;
};

void check_alarms(const Prepared& p, std::initializer_list<AlarmCase> cases) {
    for (const AlarmCase& c : cases) {
        AlarmInput input;
        input.alarm_kind = c.kind;
        input.peak_position = c.position;
        input.peak_amplitude = c.amplitude;
        EXPECT_EQ(gate_alarm_state(input, p.curve, p.frame, 1), c.expected)
            << "kind " << c.kind << " position " << c.position << " amplitude " << c.amplitude;
    }
}

TEST(ColumnOf, ColumnsFromTheDelayOn) {
    struct Case {
        std::int16_t d, delay;
        std::uint16_t n;
        std::uint32_t s, expected;
    } cases[] = {
        {1000, 200, 300, 500, 160},
        {300, 0, 300, 100, 300},       // the last column is N
        {301, 0, 300, 100, 301},       // past it: N + 1
        {1000, 0, 300, 100, 301}, {200, 200, 300, 500, 0},
        {199, 200, 300, 500, 0xFFFF},  // ahead of the display
        {-5, -10, 300, 100, 5}, {32767, -32768, 300, 1, 301},
        {1000, 200, 300, 0, 0xFFFF},   // no scale: no column
    };
    for (const Case& c : cases) {
        EXPECT_EQ(column_of(c.d, c.delay, c.n, c.s), c.expected) << c.d << " " << c.delay;
    }
}

TEST(PrepareDacCurve, DisplayScaleDelayAndZeroCounts) {
    Prepared p = prepare(microsecond_setup(0), TWO_POINTS);
    EXPECT_EQ(p.frame.column_count, 100);
    EXPECT_EQ(p.frame.counts_per_100_columns, 100u);
    EXPECT_EQ(p.frame.range_counts, 100);
    EXPECT_EQ(p.frame.delay_counts, 0);
    EXPECT_EQ(p.frame.zero_counts, 0);

    // The range counts round half up: 12573 is 100.58 counts.
    CurveSetup s = microsecond_setup(0);
    s.range = 11430;
    p = prepare(s, TWO_POINTS);
    EXPECT_EQ(p.frame.range_counts, 101);
    EXPECT_EQ(p.frame.counts_per_100_columns, 100u);  // S is truncated

    s = microsecond_setup(0);
    s.delay = 10000;
    s.zero = 10000;
    p = prepare(s, TWO_POINTS);
    EXPECT_EQ(p.frame.delay_counts, 80);
    EXPECT_EQ(p.frame.zero_counts, 80);
    s.delay = static_cast<std::uint32_t>(-10000);  // a negative delay
    p = prepare(s, TWO_POINTS);
    EXPECT_EQ(p.frame.delay_counts, -80);

    s = microsecond_setup(0);
    s.units = 0;
    s.velocity = 23300;
    s.delay = static_cast<std::uint32_t>(-10000);
    p = prepare(s, TWO_POINTS);
    EXPECT_EQ(p.frame.counts_per_100_columns, 858u);  // 2e8 / 23300 / 10
    EXPECT_EQ(p.frame.delay_counts, -686);

    s.units = 1;
    s.velocity = 5920;
    p = prepare(s, TWO_POINTS);
    EXPECT_EQ(p.frame.counts_per_100_columns, 133u);

    s.units = 3;
    p = prepare(s, TWO_POINTS);
    EXPECT_EQ(p.frame.counts_per_100_columns, 0u);
    EXPECT_EQ(p.curve.first_column, NO_COLUMN);

    p = prepare(microsecond_setup(0), TWO_POINTS, 0);
    EXPECT_EQ(p.frame.counts_per_100_columns, 0u);
    EXPECT_EQ(p.curve.first_column, NO_COLUMN);

    // A range of 2^32 - 1 shown 10% longer passes 2^31: Rt is -2^31, and S
    // is -2^31 x 80 / 100 / 100 in single precision, -17179870, whose low 16
    // bits are 56098.
    s = microsecond_setup(0);
    s.range = 0xFFFFFFFFu;
    EXPECT_EQ(prepare(s, TWO_POINTS).frame.counts_per_100_columns, 56098u);
}

// With no columns the build stops at once, so the collected points show.
TEST(PrepareDacCurve, PointsAreSortedMergedAndLimited) {
    Prepared p = prepare(microsecond_setup(0),
                         stored({{50, 100}, {10, 300}, {30, 511}, {40, 512}, {50, 200}, {20, 510}, {70, 0}, {60, 100}}),
                         0);
    ASSERT_EQ(p.curve.point_count, 3);
    EXPECT_EQ(p.curve.points[0].time, 10);
    EXPECT_EQ(p.curve.points[0].amplitude, 300);
    EXPECT_EQ(p.curve.points[1].time, 20);
    EXPECT_EQ(p.curve.points[1].amplitude, 510);
    EXPECT_EQ(p.curve.points[2].time, 50);
    EXPECT_EQ(p.curve.points[2].amplitude, 200);  // the later amplitude of the same time

    Stored full{};
    for (std::size_t i = 0; i < full.size(); ++i) {
        full[i] = {static_cast<std::uint16_t>(100 * (i + 1)), 100};
    }
    const struct {
        std::uint8_t mode;
        std::uint16_t count;
    } limits[] = {{0, 25}, {1, 25}, {2, 24}, {3, 23}, {7, 25}};
    for (const auto& l : limits) {
        EXPECT_EQ(prepare(microsecond_setup(l.mode), full, 0).curve.point_count, l.count) << int{l.mode};
    }

    // Once the custom family is full even a point of a known time is skipped.
    Stored repeat = full;
    repeat[23] = {100, 300};
    p = prepare(microsecond_setup(3), repeat, 0);
    EXPECT_EQ(p.curve.point_count, 23);
    EXPECT_EQ(p.curve.points[0].amplitude, 100);
}

TEST(PrepareDacCurve, CurveOffsetsOfEachFamily) {
    CurveSetup s = microsecond_setup(0);
    s.dac_gain = -25;
    s.rl_gain = 11;
    s.sl_gain = 22;
    s.el_gain = 33;
    const struct {
        std::uint8_t mode, dac_on;
        std::array<std::int16_t, 4> offsets;
    } cases[] = {
        {0, 0, {0, 0, 0, 0}},      {1, 0, {0, -60, -140, 0}}, {2, 1, {60, 0, -60, -120}},
        {3, 0, {0, -60, -140, 0}}, {3, 1, {11, 22, 33, 0}},   {9, 1, {0, 0, 0, 0}},
    };
    for (const auto& c : cases) {
        s.dac_mode = c.mode;
        s.dac_on = c.dac_on;
        Prepared p = prepare(s, TWO_POINTS, 0);
        EXPECT_EQ(p.curve.curve_offset, c.offsets) << int{c.mode} << " " << int{c.dac_on};
        EXPECT_EQ(p.curve.gain_offset, -25);
        EXPECT_EQ(p.curve.dac_mode, c.mode);
        EXPECT_EQ(p.curve.dac_on, c.dac_on);
        EXPECT_EQ(p.curve.first_column, NO_COLUMN);
    }
}

// ASME: the curve decays from 400 at time 10 to 100 at time 50 by a factor
// 4^(1/40) per count: 282.84 at time 20, 103.53 at 49. No flat start.
TEST(DacCurveAlarm, AsmeExponentialCurve) {
    Prepared p = prepare(microsecond_setup(0), TWO_POINTS);
    EXPECT_EQ(p.curve.point_count, 2);
    EXPECT_EQ(p.curve.first_column, 8);  // time 10 is column 8
    EXPECT_EQ(p.curve.table[0], 400);
    EXPECT_EQ(p.curve.table[10], 282);
    EXPECT_EQ(p.curve.table[39], 103);
    EXPECT_EQ(p.curve.table[40], 0);  // the curve stops at the last point
    EXPECT_EQ(p.curve.scale, (std::array<double, 4>{1.0, 1.0, 1.0, 1.0}));
    check_alarms(p, {
                        {4, 20, 283, ALARM_HIGH}, {4, 20, 282, ALARM_ARMED},
                        {4, 9, 511, ALARM_ARMED},   // ahead of the curve's first column
                        {4, 50, 1, ALARM_HIGH},     // the end of the table has height 0
                        {4, 51, 511, ALARM_ARMED},  // past the end of the table
                        {4, PEAK_LOST, 511, ALARM_ARMED},
                    });

    CurveSetup gained = microsecond_setup(0);
    gained.dac_gain = -60;  // every curve 6 dB lower: x 0.501187
    check_alarms(prepare(gained, TWO_POINTS), {{4, 20, 142, ALARM_HIGH}, {4, 20, 141, ALARM_ARMED}});
}

// JIS: straight lines, a flat start from time 0 at the first amplitude, and
// nothing past the last point. From time 10 to 50 the line is 475 - 7.5 t.
TEST(DacCurveAlarm, JisLinearCurveWithAFlatStart) {
    Prepared p = prepare(microsecond_setup(2), TWO_POINTS);
    ASSERT_EQ(p.curve.point_count, 3);
    EXPECT_EQ(p.curve.points[0].time, 0);
    EXPECT_EQ(p.curve.points[0].amplitude, 400);
    EXPECT_EQ(p.curve.first_column, 0);  // time 2 is column 0
    EXPECT_EQ(p.curve.table[0], 400);
    EXPECT_EQ(p.curve.table[18], 325);
    EXPECT_EQ(p.curve.table[47], 107);  // time 49: 107.5
    EXPECT_EQ(p.curve.table[48], 0);
    check_alarms(p, {
                        {9, 20, 326, ALARM_HIGH}, {9, 20, 325, ALARM_ARMED},
                        {9, 5, 401, ALARM_HIGH},  // on the flat start
                        {9, 5, 400, ALARM_ARMED},
                        {8, 20, 512, ALARM_HIGH},  // +6 dB: 648 is capped at 511
                        {8, 20, 511, ALARM_ARMED},
                        {10, 20, 163, ALARM_HIGH},  // -6 dB: 162.89
                        {10, 20, 162, ALARM_ARMED},
                        {11, 20, 82, ALARM_HIGH},  // -12 dB: 81.64
                        {11, 20, 81, ALARM_ARMED},
                        {9, 60, 511, ALARM_ARMED},  // past the last point
                    });
}

TEST(DacCurveAlarm, NoCurveLeavesEveryCurveTestArmed) {
    const struct {
        CurveSetup setup;
        Stored points;
    } cases[] = {
        {microsecond_setup(0), stored({{10, 400}})},  // one point
        {microsecond_setup(2), stored({})},
        {[] {
             CurveSetup s = microsecond_setup(0);
             s.units = 3;  // S of 0
             return s;
         }(),
         TWO_POINTS},
        {[] {
             CurveSetup s = microsecond_setup(0);
             s.delay = 1000000;  // 8000 counts: every sample lies ahead of the display
             return s;
         }(),
         TWO_POINTS},
    };
    for (const auto& c : cases) {
        Prepared p = prepare(c.setup, c.points);
        EXPECT_EQ(p.curve.first_column, NO_COLUMN);
        check_alarms(p, {{4, 20, 511, ALARM_ARMED}, {9, 20, 511, ALARM_ARMED}});
    }
}

CurveFrame hand_frame(std::uint16_t n, std::uint16_t range_counts, std::int16_t delay, std::uint16_t zero) {
    CurveFrame f;
    f.column_count = n;
    f.counts_per_100_columns = 100;
    f.range_counts = range_counts;
    f.delay_counts = delay;
    f.zero_counts = zero;
    return f;
}

DacCurve two_point_curve(std::uint32_t mode) {
    DacCurve c;
    c.dac_mode = mode;
    c.points[0] = {10, 400};
    c.points[1] = {50, 100};
    c.point_count = 2;
    return c;
}

TEST(BuildDacCurve, DelayAndZeroShiftTheColumns) {
    // Zero counts of 8: time 10 is column 0, and the peak position still
    // looks up the curve at its own time.
    Prepared p{two_point_curve(0), hand_frame(100, 100, 0, 8)};
    EXPECT_EQ(build_dac_curve(p.curve, p.frame), 1);
    EXPECT_EQ(p.curve.first_column, 0);
    EXPECT_EQ(p.curve.table[10], 282);
    check_alarms(p, {{4, 20, 283, ALARM_HIGH}, {4, 20, 282, ALARM_ARMED}});

    // A delay of -80 counts: time 10 is column 88, time 20 column 98.
    p = {two_point_curve(0), hand_frame(100, 100, -80, 0)};
    EXPECT_EQ(build_dac_curve(p.curve, p.frame), 1);
    EXPECT_EQ(p.curve.first_column, 88);
    check_alarms(p, {{4, 20, 283, ALARM_HIGH}, {4, 20, 282, ALARM_ARMED}, {4, 22, 511, ALARM_ARMED}});

    // Range counts of 0: a step of 0 builds nothing.
    p = {two_point_curve(0), hand_frame(100, 0, 0, 0)};
    EXPECT_EQ(build_dac_curve(p.curve, p.frame), 0);
    EXPECT_EQ(p.curve.first_column, NO_COLUMN);
}

TEST(BuildDacCurve, TableAndPointsNeverOverflow) {
    // 400 columns ask for more heights than the table holds.
    Prepared p{two_point_curve(3), hand_frame(400, 400, 0, 0)};
    EXPECT_EQ(build_dac_curve(p.curve, p.frame), 1);
    EXPECT_EQ(p.curve.table[DAC_TABLE_SIZE - 1], 100);
    check_alarms(p, {{12, 300, 101, ALARM_HIGH}, {12, 330, 511, ALARM_ARMED}});

    // A full curve gets no end points.
    DacCurve full = two_point_curve(3);
    for (std::size_t i = 0; i < DAC_CURVE_POINTS; ++i) {
        full.points[i] = {static_cast<std::uint16_t>(10 * (i + 1)), 200};
    }
    full.point_count = DAC_CURVE_POINTS;
    EXPECT_EQ(build_dac_curve(full, hand_frame(100, 100, 0, 0)), 1);
    EXPECT_EQ(full.point_count, DAC_CURVE_POINTS);
    EXPECT_EQ(full.points[0].time, 10);
}

TEST(GateAlarmState, TestsWithoutACurve) {
    Prepared p{DacCurve{}, hand_frame(100, 100, 0, 50)};
    AlarmInput in;
    auto state = [&](std::uint32_t kind, std::uint16_t position, std::uint16_t amplitude, int valid) {
        in.alarm_kind = kind;
        in.peak_position = position;
        in.peak_amplitude = amplitude;
        return gate_alarm_state(in, p.curve, p.frame, valid);
    };
    in.level = 100;
    in.min_depth_counts = 100;  // with the zero counts: below 150 is too shallow
    EXPECT_EQ(state(1, 0, 101, 1), ALARM_HIGH);
    EXPECT_EQ(state(1, 0, 100, 1), ALARM_ARMED);
    EXPECT_EQ(state(1, 0, 512, 1), ALARM_ARMED);  // a lost signal is not above the level
    EXPECT_EQ(state(2, 0, 512, 1), ALARM_LOW);
    EXPECT_EQ(state(2, 0, 511, 1), ALARM_ARMED);
    EXPECT_EQ(state(3, 149, 0, 1), ALARM_LOW);
    EXPECT_EQ(state(3, 150, 0, 1), ALARM_ARMED);
    in.min_depth_counts = 65535;  // the sum doesn't wrap
    EXPECT_EQ(state(3, PEAK_LOST - 1, 0, 1), ALARM_LOW);
    EXPECT_EQ(state(3, PEAK_LOST, 0, 1), ALARM_ARMED);
    EXPECT_EQ(state(0, 0, 511, 1), ALARM_OFF);
    EXPECT_EQ(state(15, 0, 511, 1), ALARM_OFF);  // " PR " has no test
    EXPECT_EQ(state(16, 0, 511, 1), ALARM_OFF);
    EXPECT_EQ(state(31, 0, 511, 1), ALARM_OFF);
    // Without a scan nothing is known of the signal.
    for (std::uint32_t kind = 0; kind < 32; ++kind) {
        const int expected = kind >= 1 && kind <= 14 ? ALARM_ARMED : ALARM_OFF;
        EXPECT_EQ(state(kind, 0, 512, 0), expected) << kind;
    }
}

// A height of 257 x 256 = 65792 keeps its low 16 bits, 256; a height beyond
// 32 bits truncates to -2^31, whose low 16 bits are 0.
TEST(GateAlarmState, CurveHeightKeepsItsLowSixteenBits) {
    Prepared p{DacCurve{}, hand_frame(100, 100, 0, 0)};
    p.curve.first_column = 0;
    p.curve.step = 1.0;
    p.curve.scale = {256.0, 1e10, 1.0, 1.0};
    for (std::size_t i = 0; i < 10; ++i) p.curve.table[i] = 257;
    check_alarms(p, {{4, 3, 257, ALARM_HIGH}, {4, 3, 256, ALARM_ARMED}, {6, 3, 1, ALARM_HIGH}, {6, 3, 0, ALARM_ARMED}});
}

// Curve samples 65534 counts apart from time 10 have even low 16 bits: they
// never reach the odd count of the delay (32767) nor the last point's time
// (65535). The search stops once the time reaches 2^31: no curve.
TEST(BuildDacCurve, CurveSearchGivesUpAtTwoToThe31) {
    Prepared p{two_point_curve(0), hand_frame(1, 65534, 32767, 0)};
    p.curve.points[1] = {65535, 100};
    EXPECT_EQ(build_dac_curve(p.curve, p.frame), 0);
    EXPECT_EQ(p.curve.first_column, NO_COLUMN);
}

TEST(GateAlarmState, AStepOfZeroLeavesNoUsedEntries) {
    Prepared p{DacCurve{}, hand_frame(100, 100, 0, 0)};
    p.curve.first_column = 0;
    p.curve.scale = {1.0, 1.0, 1.0, 1.0};
    for (std::size_t i = 0; i < 10; ++i) p.curve.table[i] = 100;
    check_alarms(p, {{4, 2, 101, ALARM_HIGH}, {4, 3, 511, ALARM_ARMED}});
    p.curve.step = 1.0;
    check_alarms(p, {{4, 3, 101, ALARM_HIGH}, {4, 3, 100, ALARM_ARMED}});
}

}  // namespace
}  // namespace ugf
