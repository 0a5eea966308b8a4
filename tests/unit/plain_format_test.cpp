// The direct reading of plain formats must give what vsnprintf gives, text and
// length, for every value, every width and precision and every buffer size.
#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <cstring>
#include <string>

#include "run/console.h"

namespace ugf {
namespace {

// Both readings into buffers of `size`; the bytes past the text stay as set.
template <typename... Args>
void expect_same(std::size_t size, const char* format, Args... args) {
    char mine[64];
    char libc[64];
    std::memset(mine, '#', sizeof mine);
    std::memset(libc, '#', sizeof libc);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat"
    const int expected = std::snprintf(libc, size, format, args...);
    const int got = format_text_plain(mine, size, format, args...);
#pragma GCC diagnostic pop
    ASSERT_EQ(got, expected) << format << " size " << size;
    EXPECT_EQ(std::string(mine, sizeof mine), std::string(libc, sizeof libc)) << format << " size " << size;
}

const long long SIGNED_VALUES[] = {0, 1, -1, 9, 10, -10, 99, 100, 12345, -12345, 99999, 100000,
                                   999999, 1000000, INT_MAX, INT_MIN, INT_MAX - 1, INT_MIN + 1};
const std::size_t SIZES[] = {0, 1, 2, 5, 7, 8, 40};

TEST(PlainFormat, IntegersMatchTheLibraryForEveryFlagWidthAndPrecision) {
    const char* int_formats[] = {"%d", "%i", "%5d", "%-5d", "%05d", "%-05d", "%.0d", "%.3d",
                                 "%6.3d", "%-6.3d", "%06.3d", "%-2dDB", "%3d%%%%", "%03i", "%.d",
                                 "<%d|%d>"};
    for (const char* f : int_formats) {
        for (long long v : SIGNED_VALUES) {
            for (std::size_t size : SIZES) expect_same(size, f, static_cast<int>(v), static_cast<int>(-v));
        }
    }
    const char* unsigned_formats[] = {"%u", "%lu", "%*.5lu", "%5lu", "0.%05lu", "%llu", "%-8.2lu",
                                      "%.0lu", "%*.*lu"};
    const unsigned long long unsigned_values[] = {0, 1, 9, 99999, 100000, 999995, 1000000,
                                                  4294967295ull, ULONG_MAX, ULLONG_MAX};
    for (unsigned long long v : unsigned_values) {
        for (std::size_t size : SIZES) {
            for (int width : {-7, 0, 5, 6, 7, 12}) {
                expect_same(size, "%*.5lu", width, static_cast<unsigned long>(v));
                expect_same(size, "%*.*lu", width, width - 2, static_cast<unsigned long>(v));
            }
            expect_same(size, unsigned_formats[0], static_cast<unsigned>(v));
            expect_same(size, unsigned_formats[1], static_cast<unsigned long>(v));
            expect_same(size, unsigned_formats[3], static_cast<unsigned long>(v));
            expect_same(size, unsigned_formats[4], static_cast<unsigned long>(v));
            expect_same(size, unsigned_formats[5], v);
            expect_same(size, unsigned_formats[6], static_cast<unsigned long>(v));
            expect_same(size, unsigned_formats[7], static_cast<unsigned long>(v));
        }
    }
    for (long long v : {0ll, -1ll, LLONG_MIN, LLONG_MAX, 500000000ll}) {
        for (std::size_t size : SIZES) {
            expect_same(size, "%lld", v);
            expect_same(size, "%ld", static_cast<long>(v));
            expect_same(size, "%-12li|", static_cast<long>(v));
        }
    }
}

TEST(PlainFormat, TextsMatchTheLibraryWithWidthPrecisionAndCut) {
    const char* texts[] = {"", "A", "LOW", "HIGH", "AGC ", "WARNING HIGH", "50%%", "a % b"};
    const char* formats[] = {"%s", "%s,", ",%s,%s", "%-4.4s", "%4s", "%.2s", "%-6s|", "%*s", "%.*s",
                             "%%s%s%%", ",%s,%s,%s,%s,%s,%s,%d,%s,%s,%s"};
    for (const char* t : texts) {
        for (std::size_t size : SIZES) {
            expect_same(size, formats[0], t);
            expect_same(size, formats[1], t);
            expect_same(size, formats[2], t, t);
            expect_same(size, formats[3], t);
            expect_same(size, formats[4], t);
            expect_same(size, formats[5], t);
            expect_same(size, formats[6], t);
            expect_same(size, formats[7], -6, t);
            expect_same(size, formats[8], 2, t);
            expect_same(size, formats[8], -1, t);
            expect_same(size, formats[9], t);
            expect_same(size, formats[10], t, t, t, t, t, t, -3, t, t, t);
        }
    }
    expect_same(40, "no conversion at all");
    expect_same(40, "");
}

TEST(PlainFormat, LeavesEveryOtherFormatToTheLibrary) {
    char out[32];
    EXPECT_EQ(format_text_plain(out, sizeof out, "%.4f", 1.5), -2);
    EXPECT_EQ(format_text_plain(out, sizeof out, "% 4.1f C", 1.5), -2);
    EXPECT_EQ(format_text_plain(out, sizeof out, "% 03i", 5), -2);
    EXPECT_EQ(format_text_plain(out, sizeof out, "%+d", 5), -2);
    EXPECT_EQ(format_text_plain(out, sizeof out, "%x", 5u), -2);
    EXPECT_EQ(format_text_plain(out, sizeof out, "%s", static_cast<const char*>(nullptr)), -2);
    // The library's own reading still serves them through the public calls.
    EXPECT_EQ(format_text_bounded(out, sizeof out, "% 03i%%%%", 5), std::snprintf(nullptr, 0, "% 03i%%%%", 5));
    EXPECT_STREQ(out, " 05%%");
}

}  // namespace
}  // namespace ugf
