#include <gtest/gtest.h>

#include "ident/id_text.h"

namespace ugf {
namespace {

TEST(IdTextValue, LettersCountInTwentySixDigitsInTenAndTheLimitHolds) {
    struct Case {
        const char* text;
        std::int64_t value;
    } cases[] = {
        {"", 0}, {"9", 9}, {"Z", 25}, {"AA", 0}, {"B3", 13}, {"3B", 79}, {"1A9", 269}, {"ZZZZZZ", 308915775},
        {"ZZZZZZZ", -1}, {"500000000", 500000000}, {"500000001", -1}, {"999999999", -1},
        // Weights far beyond 64 bits: zero characters there add nothing, any
        // other character is over the limit.
        {"AAAAAAAAAAAAAAAAAAAB", 1}, {"00000000000000000007", 7}, {"BAAAAAAAAAAAAAAAAAAA", -1}, {"100000000000", -1},
        // Only "A"-"Z" and "0"-"9" count.
        {"b", -1}, {"1a", -1}, {"A-1", -1}, {"1 2", -1},
    };
    for (const Case& c : cases) EXPECT_EQ(id_text_value(c.text), c.value) << '"' << c.text << '"';
    EXPECT_EQ(id_text_value(nullptr), -1);
}

TEST(IdTextsMatch, SameLengthSameClassesSameSeparators) {
    struct Case {
        const char* a;
        const char* b;
        int match;
    } cases[] = {
        {"A-1", "B-2", 1},   {"B07", "C02", 1},   {"-A", "-Z", 1},   {"A-B-1", "Z-9-0", 0},
        {"A-B-1", "C-D-2", 1}, {"1A", "11", 0},   {"A-1", "A1", 0},  {"A-1", "1-A", 0},
        {"12-", "12-", 0},   {"", "", 0},         {"AB", "ABC", 0},  {"ab", "ab", 0},
        {"Ab", "AB", 0},     {"A 1", "A 1", 0},   {"A_1", "A_1", 0},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(id_texts_match(c.a, c.b), c.match) << '"' << c.a << "\" \"" << c.b << '"';
    }
    EXPECT_EQ(id_texts_match(nullptr, "A"), 0);
    EXPECT_EQ(id_texts_match("A", nullptr), 0);
}

TEST(IdTextAdd, SumsCarriesAndFailures) {
    struct Case {
        const char* first;
        const char* second;
        int ok;
        std::int64_t value;
        std::int32_t carry;
        const char* result;
    } cases[] = {
        {"Z9", "A1", 1, 0, 1, "A0"}, {"99", "01", 1, 0, 1, "00"}, {"AZ", "AB", 1, 26, 0, "BA"},
        {"ZZ", "AB", 1, 0, 1, "AA"}, {"B07", "A93", 1, 200, 0, "C00"}, {"12-34", "99-09", 1, 43, 0, "12-43"},
        {"00-99", "00-01", 1, 0, 1, "00-00"},
        {"00000000000000000001", "00000000000000000001", 1, 2, 0, "00000000000000000002"},
        {"000000000000000000001", "000000000000000000001", 0, 0, 0, ""}, {"400000000", "100000001", 0, 0, 0, ""},
        {"1A", "11", 0, 0, 0, ""}, {"a1", "a1", 0, 0, 0, ""}, {"", "", 0, 0, 0, ""},
    };
    for (const Case& c : cases) {
        std::int64_t value = 77;
        std::int32_t carry = 77;
        char result[ID_TEXT_SIZE] = "?";
        EXPECT_EQ(id_text_add(c.first, c.second, &value, &carry, result), c.ok)
            << c.first << " + " << c.second;
        EXPECT_EQ(value, c.value) << c.first << " + " << c.second;
        EXPECT_EQ(carry, c.carry) << c.first << " + " << c.second;
        if (c.ok) {
            EXPECT_STREQ(result, c.result) << c.first << " + " << c.second;
        }
    }
}

TEST(IdTextAdd, ResultTextAfterFailures) {
    std::int64_t value = 0;
    std::int32_t carry = 0;
    char result[ID_TEXT_SIZE] = {};
    ASSERT_EQ(id_text_add("A1", "A2", &value, &carry, result), 1);
    EXPECT_EQ(id_text_add("A1", "11", &value, &carry, result), 0);
    EXPECT_STREQ(result, "A3") << "a shape failure comes before the text is cleared";
    EXPECT_EQ(id_text_add("0000000000000000000001", "1", &value, &carry, result), 0);
    EXPECT_STREQ(result, "A3") << "so does a length failure";
    EXPECT_EQ(id_text_add("900000000", "100000001", &value, &carry, result), 1)
        << "a sum past the last position is no failure: it keeps nine positions";
    EXPECT_STREQ(result, "000000001");
    EXPECT_EQ(carry, 1);
    EXPECT_EQ(id_text_add("400000000", "100000001", &value, &carry, result), 0);
    EXPECT_STREQ(result, "") << "a sum over the limit leaves the text cleared";

    value = 5;
    carry = 5;
    EXPECT_EQ(id_text_add(nullptr, "1", &value, &carry, result), 0);
    EXPECT_EQ(id_text_add("1", "1", nullptr, &carry, result), 0);
    EXPECT_EQ(id_text_add("1", "1", &value, nullptr, result), 0);
    EXPECT_EQ(id_text_add("1", "1", &value, &carry, nullptr), 0);
    EXPECT_EQ(value, 5) << "an absent argument touches nothing";
    EXPECT_EQ(carry, 5);
}

TEST(IdTextSubtract, DifferencesBorrowsAndFailures) {
    struct Case {
        const char* minuend;
        const char* subtrahend;
        int ok;
        std::int64_t value;
        const char* result;
    } cases[] = {
        {"B7", "A9", 1, 8, "A8"}, {"B00", "A01", 1, 99, "A99"}, {"AB-C5", "AB-A2", 1, 23, "AB-C3"},
        {"0010", "0010", 1, 0, "0000"}, {"BA", "AB", 1, 25, "AZ"}, {"C02", "B07", 1, 95, "A95"},
        {"1005", "0995", 1, 10, "0010"},
        {"X-5", "Y-2", 1, 3, "Y-3"},  // the head is the subtrahend's
        {"100", "101", 0, 0, ""},     // nothing left to borrow from
        {"1-00", "1-01", 0, 0, ""},   // a borrow never crosses the "-"
        {"A1", "B0", 0, 0, ""}, {"ZZZZZZZ", "AAAAAAA", 0, 0, ""},
        {"00000000000000000009", "00000000000000000001", 1, 8, "00000000000000000008"},
        {"000000000000000000009", "000000000000000000001", 0, 0, ""}, {"11", "1A", 0, 0, ""}, {"1-", "1-", 0, 0, ""},
        {"b1", "a1", 0, 0, ""}, {"B1", "a1", 0, 0, ""}, {"1b", "1A", 0, 0, ""},  // lower case never subtracts
    };
    for (const Case& c : cases) {
        std::int64_t value = 77;
        char result[ID_TEXT_SIZE] = "?";
        EXPECT_EQ(id_text_subtract(c.minuend, c.subtrahend, &value, result), c.ok)
            << c.minuend << " - " << c.subtrahend;
        EXPECT_EQ(value, c.value) << c.minuend << " - " << c.subtrahend;
        if (c.ok) {
            EXPECT_STREQ(result, c.result) << c.minuend << " - " << c.subtrahend;
        }
    }
}

TEST(IdTextSubtract, OperandsStayAndFailuresKeepTheLastResult) {
    char minuend[] = "B00";
    char subtrahend[] = "A01";
    std::int64_t value = 0;
    char result[ID_TEXT_SIZE] = {};
    ASSERT_EQ(id_text_subtract(minuend, subtrahend, &value, result), 1);
    EXPECT_STREQ(minuend, "B00");
    EXPECT_STREQ(subtrahend, "A01");
    EXPECT_EQ(id_text_subtract("A1", "B0", &value, result), 0);
    EXPECT_STREQ(result, "A99");
    EXPECT_EQ(id_text_subtract("ZZZZZZZ", "AAAAAAA", &value, result), 0);
    EXPECT_STREQ(result, "A99");
    value = 5;
    EXPECT_EQ(id_text_subtract(nullptr, "1", &value, result), 0);
    EXPECT_EQ(id_text_subtract("1", "1", &value, nullptr), 0);
    EXPECT_EQ(value, 5);
}

}  // namespace
}  // namespace ugf
