// The history arithmetic against figures worked by hand. Readings are 4 or 8
// years apart on 1 January (1461 or 2922 days: 4.0 or 8.0 years of 365.25
// days), so the rates are plain divisions; an interval of 10 years is 3652.5
// days, counted down to 3652.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "ugf/history.hpp"

namespace ugf::kit {
namespace {

constexpr double NONE = HistoryRow::NONE;

Point pt(const char* id, double value, double low_alarm = NONE, const char* units = "MM", int decimals = 2) {
    Point p;
    p.id = id;
    p.value = value;
    p.decimals = decimals;
    p.units = units;
    p.low_alarm = low_alarm;
    return p;
}

Point lost(const char* id) { return {.id = id, .lost = true, .units = "MM"}; }

std::int32_t day(const char* text) {
    std::int32_t d = NO_DATE;
    EXPECT_EQ(parse_date(text, d), 1) << text;
    return d;
}

DatedSurvey survey(std::int64_t id, const char* date, std::vector<Point> points) {
    return {id, day(date), "survey " + std::to_string(id), std::move(points)};
}

// The CSV rows below the header.
std::string rows(const std::vector<DatedSurvey>& surveys, HistoryOptions options) {
    History h;
    std::string why;
    EXPECT_EQ(make_history("TANK4", surveys, options, h, why), 1) << why;
    const std::string csv = history_csv(h);
    return csv.substr(csv.find('\n') + 1);
}

TEST(History, RowsWorkedByHand) {
    const std::int32_t y2025 = day("2025-01-01");
    struct Case {
        const char* name;
        std::vector<DatedSurvey> surveys;
        HistoryOptions options;
        const char* row;
    } cases[] = {
        // 0.80 / 8 = 0.1 a year; life 3.20 / 0.1 = 32 years (11688 days:
        // 2056-01-01); next min(16, 10) years = 3652 days.
        {"two readings", {survey(1, "2016-01-01", {pt("A", 10.0, 6.0)}), survey(2, "2024-01-01", {pt("A", 9.2, 6.0)})},
         {.as_of = y2025},
         "A,ok,2,2016-01-01,10.00,2016-01-01,10.00,2024-01-01,9.20,MM,0.100,0.100,,0.100,6.00,low alarm,32.0,2056-01-01,"
         "2033-12-31,\n"},
        // Long term 1.00 / 12, short term 0.50 / 4 = 0.125; least squares over
        // x = 0 4 8 12, y = 10 9.7 9.5 9: Sxy = -6.4, Sxx = 80, rate 0.08.
        // Life 2.00 / 0.125 = 16 years, next after 8 (2922 days): due that day.
        {"four readings",
         {survey(1, "2016-01-01", {pt("A", 9.7)}), survey(2, "2012-01-01", {pt("A", 10.0)}),
          survey(3, "2024-01-01", {pt("A", 9.0, 6.0)}), survey(4, "2020-01-01", {pt("A", 9.5)})},
         {.minimum = 7.0, .as_of = day("2032-01-01")},
         "A,due,4,2012-01-01,10.00,2020-01-01,9.50,2024-01-01,9.00,MM,0.083,0.125,0.080,0.125,7.00,--minimum,16.0,"
         "2040-01-01,2032-01-01,\n"},
        {"thickness grows: no life, the maximum interval",
         {survey(1, "2016-01-01", {pt("A", 9.0)}), survey(2, "2024-01-01", {pt("A", 9.4, 6.0)})},
         {.as_of = y2025},
         "A,ok,2,2016-01-01,9.00,2016-01-01,9.00,2024-01-01,9.40,MM,-0.050,-0.050,,-0.050,6.00,low alarm,,,2033-12-31,\n"},
        // 0.01 / 8 = 0.00125; life 9.99 / 0.00125 = 7992 years: the year 10016.
        {"retirement past the calendar", {survey(1, "2016-01-01", {pt("A", 10.0)}), survey(2, "2024-01-01", {pt("A", 9.99)})},
         {.minimum = 0.0, .as_of = y2025},
         "A,ok,2,2016-01-01,10.00,2016-01-01,10.00,2024-01-01,9.99,MM,0.001,0.001,,0.001,0.00,--minimum,7992.0,,2033-12-31,\n"},
        {"no loss at all", {survey(1, "2016-01-01", {pt("A", 9.0)}), survey(2, "2024-01-01", {pt("A", 9.0, 6.0)})},
         {.max_interval = 4, .as_of = y2025},
         "A,ok,2,2016-01-01,9.00,2016-01-01,9.00,2024-01-01,9.00,MM,0.000,0.000,,0.000,6.00,low alarm,,,2028-01-01,\n"},
        // 2.40 / 8 = 0.3; (5.60 - 6.00) / 0.3 is below 0: life 0, due now.
        {"below minimum", {survey(1, "2016-01-01", {pt("A", 8.0)}), survey(2, "2024-01-01", {pt("A", 5.6, 6.0)})},
         {.as_of = y2025},
         "A,below minimum,2,2016-01-01,8.00,2016-01-01,8.00,2024-01-01,5.60,MM,0.300,0.300,,0.300,6.00,low alarm,0.0,"
         "2024-01-01,2024-01-01,\n"},
        {"one reading below minimum", {survey(1, "2024-01-01", {pt("A", 9.0, 9.5)})}, {.as_of = y2025},
         "A,below minimum,1,2024-01-01,9.00,,,2024-01-01,9.00,MM,,,,,9.50,low alarm,,,2024-01-01,\n"},
        // 12.70 mm = 0.500 in; 0.020 / 8 = 0.0025; 5.08 mm = 0.200 in; life
        // 0.280 / 0.0025 = 112 years = 40908 days, one more than the calendar
        // has to 2136-01-01 (2100 is no leap year).
        {"millimetres then inches",
         {survey(1, "2016-01-01", {pt("A", 12.7)}), survey(2, "2024-01-01", {pt("A", 0.48, NONE, "IN", 3)})},
         {.minimums = {{"A", {5.08, "MM"}}}, .as_of = y2025},
         "A,ok,2,2016-01-01,0.500,2016-01-01,0.500,2024-01-01,0.480,IN,0.0025,0.0025,,0.0025,0.200,minimums,112.0,"
         "2136-01-02,2033-12-31,\n"},
        // The latest's walk (B A E), then D of 2020, then C of 2016. A's
        // latest is lost: 0.40 / 4 = 0.1, life 3.60 / 0.1 = 36 years from
        // 2020. B: 0.80 / 8, 0.60 / 4 = 0.15, least squares -3.2 / 32; life
        // 1.20 / 0.15 = 8 years, next after 4.
        {"lost latest, identifiers of older surveys",
         {survey(3, "2024-01-01", {pt("B", 7.2), lost("A"), pt("E", NONE)}),
          survey(1, "2016-01-01", {pt("A", 10.0), pt("B", 8.0), lost("C"), pt("D", 7.0)}),
          survey(2, "2020-01-01", {pt("A", 9.6), pt("D", 6.8), pt("B", 7.8)})},
         {.minimum = 6.0, .as_of = y2025},
         "B,ok,3,2016-01-01,8.00,2020-01-01,7.80,2024-01-01,7.20,MM,0.100,0.150,0.100,0.150,6.00,--minimum,8.0,"
         "2032-01-01,2028-01-01,\n"
         "A,ok,2,2016-01-01,10.00,2016-01-01,10.00,2020-01-01,9.60,MM,0.100,0.100,,0.100,6.00,--minimum,36.0,2056-01-01,"
         "2029-12-31,no thickness in the latest survey (2024-01-01): the reading of 2020-01-01 is used\n"
         "E,no thickness,0,,,,,,,MM,,,,,,,,,,\n"
         "D,ok,2,2016-01-01,7.00,2016-01-01,7.00,2020-01-01,6.80,MM,0.050,0.050,,0.050,6.00,--minimum,16.0,2036-01-01,"
         "2028-01-01,not in the latest survey (2024-01-01): the reading of 2020-01-01 is used\n"
         "C,no thickness,0,,,,,,,MM,,,,,,,,,,\n"},
        // Of one date the later stored thickness counts (9.00 of survey 7;
        // survey 9 has a velocity check for A); a comma in an identifier is quoted.
        {"surveys of one date",
         {survey(7, "2024-01-01", {pt("A,1", 9.0)}),
          survey(9, "2024-01-01", {{.id = "A,1", .value = 5920, .velocity = true, .units = "MM"}}),
          survey(5, "2024-01-01", {pt("A,1", 9.1)}), survey(1, "2016-01-01", {pt("A,1", 10.0)})},
         {.as_of = y2025},
         "\"A,1\",ok,2,2016-01-01,10.00,2016-01-01,10.00,2024-01-01,9.00,MM,0.125,0.125,,0.125,,,,,2033-12-31,\n"},
    };
    for (const Case& c : cases) EXPECT_EQ(rows(c.surveys, c.options), c.row) << c.name;
}

TEST(History, RequiredThicknessComesFromTheFirstSourceThatHasOne) {
    // The earlier reading's alarm (5.00) is not the latest's (6.00).
    const std::vector<DatedSurvey> surveys = {survey(1, "2016-01-01", {pt("A", 10.0, 5.0)}),
                                              survey(2, "2024-01-01", {pt("A", 9.2, 6.0), pt("B", 9.0)})};
    struct Case {
        HistoryOptions options;
        double required;
        const char* from;
        const char* b_from;  // B has no low alarm
    } cases[] = {
        {{.minimum = 7.0, .minimums = {{"A", {0.3, "IN"}}}}, 7.0, "--minimum", "--minimum"},
        {{.minimums = {{"A", {0.3, "IN"}}}}, 7.62, "minimums", ""},
        {{.minimums = {{"A", {5.5, ""}}}}, 5.5, "minimums", ""},
        {{.minimums = {{"B", {5.5, ""}}}}, 6.0, "low alarm", "minimums"},
    };
    for (const Case& c : cases) {
        History h;
        std::string why;
        ASSERT_EQ(make_history("P", surveys, c.options, h, why), 1) << why;
        EXPECT_NEAR(h.rows[0].required, c.required, 1e-12) << c.from;
        EXPECT_EQ(h.rows[0].required_from, c.from);
        EXPECT_EQ(h.rows[1].required_from, c.b_from);
    }
}

TEST(History, RefusesWhatItCannotFigure) {
    const std::vector<DatedSurvey> part = {survey(1, "2024-01-01", {pt("A", 9.0)})};
    struct Case {
        std::vector<DatedSurvey> surveys;
        HistoryOptions options;
        const char* why;
    } cases[] = {
        {{}, {}, "no survey of P"},
        {part, {.max_interval = 0}, "the maximum interval must be above 0 and at most 1000 years"},
        {part, {.max_interval = 1000.5}, "the maximum interval must be above 0 and at most 1000 years"},
        {part, {.minimum = NONE}, "a minimum is not a number"},
        {part, {.minimums = {{"X", {NONE, ""}}}}, "a minimum is not a number"},
        {part, {.minimums = {{"A", {0.2, "US"}}}}, "the minimum of A is in US, which does not convert to MM"},
        {{{3, LAST_DATE + 1, "far", {}}}, {}, "survey 3 (far): its date is outside the years 0001 to 9999"},
    };
    for (const Case& c : cases) {
        History h;
        std::string why;
        EXPECT_EQ(make_history("P", c.surveys, c.options, h, why), 0) << c.why;
        EXPECT_EQ(why, c.why);
    }
}

TEST(History, JsonHoldsNumbersAndNulls) {
    History h;
    std::string why;
    // As many readings in inches as in millimetres: the first units by name.
    const std::vector<Point> points = {pt("A", 0.372, NONE, "IN", 3), pt("B", 0.37, NONE, "IN", 2), pt("C", 9.25),
                                       pt("D", 9.5)};
    ASSERT_EQ(make_history("P", {survey(4, "2024-02-29", points)}, {.as_of = 0}, h, why), 1);
    const auto j = history_json(h);
    EXPECT_EQ(j["units"], "IN");
    EXPECT_EQ(j["decimals"], 3);
    EXPECT_EQ(j["as_of"], "1970-01-01");
    EXPECT_EQ(j["surveys"][0]["date"], "2024-02-29");
    const auto& row = j["rows"][0];
    EXPECT_EQ(row["status"], "one reading only");
    EXPECT_EQ(row["latest"], 0.372);
    EXPECT_EQ(row["readings"][0]["survey"], 4);
    EXPECT_TRUE(row["long_term_rate"].is_null() && row["required_from"].is_null() && row["next_inspection"].is_null());
}

TEST(Dates, ParsedAndWritten) {
    struct Case {
        const char* text;
        std::int32_t days;  // NO_DATE: refused
    } cases[] = {
        {"1970-01-01", 0}, {"1969-12-31", -1}, {"2000-03-01", 11017}, {"20000229", 11016}, {"2024-02-29", 19782},
        {"0001-01-01", FIRST_DATE}, {"9999-12-31", LAST_DATE}, {"2023-02-29", NO_DATE}, {"1900-02-29", NO_DATE},
        {"2024-04-31", NO_DATE}, {"2024-13-01", NO_DATE}, {"2024-00-10", NO_DATE}, {"0000-01-01", NO_DATE},
        {"2024-4-01", NO_DATE}, {"2024/04/01", NO_DATE}, {"2024-04-1x", NO_DATE}, {"202404011", NO_DATE}, {"", NO_DATE},
    };
    for (const Case& c : cases) {
        std::int32_t days = NO_DATE;
        EXPECT_EQ(parse_date(c.text, days), c.days != NO_DATE) << c.text;
        EXPECT_EQ(days, c.days) << c.text;
        if (c.days != NO_DATE && c.text[4] == '-') {
            EXPECT_EQ(date_text(days), c.text);
        }
    }
    EXPECT_EQ(date_text(NO_DATE), "");
}

TEST(Dates, InPaths) {
    struct Case {
        const char* path;
        const char* date;  // "" for none
    } cases[] = {
        {"plant/2023-05-01/tank4_20240315.ugf", "2024-03-15"}, {"plant/2023-05-01/tank4.ugf", "2023-05-01"},
        {"2019-01-01/x/20200202b/tank.ugf", "2020-02-02"},     {"tank4_20230101_2024-02-29.ugf", "2024-02-29"},
        {"tank4_20230101_20231301.ugf", "2023-01-01"},         {"C:\\surveys\\2024-03-15\\t.ugf", "2024-03-15"},
        {"tank4-120240315.ugf", ""}, {"tank4_202403150.ugf", ""}, {"12024-03-15/a.ugf", ""}, {"", ""},
    };
    for (const Case& c : cases) {
        std::int32_t days = NO_DATE;
        EXPECT_EQ(date_in_path(c.path, days) != 0 ? date_text(days) : "", c.date) << c.path;
    }
}

}  // namespace
}  // namespace ugf::kit
