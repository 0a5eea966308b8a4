#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "ident/id_spec.h"

namespace ugf {
namespace {

constexpr std::int32_t TYPE_LINEAR = 0;
constexpr std::int32_t TYPE_2D = 2;
constexpr std::int32_t TYPE_3D = 4;
constexpr std::int32_t TYPE_BOILER = 5;
constexpr std::int32_t TYPE_2D_MANUAL = 10;
constexpr std::int32_t TYPE_3D_MANUAL = 11;
constexpr std::int32_t TYPE_4D_MANUAL = 12;

// A ranged id_spec; dimensions given from 0 upward, absent ones get no start.
IdSpec ranged(const char* prefix, std::vector<std::array<const char*, 2>> dims,
              std::vector<std::int32_t> steps) {
    const char* start[3] = {};
    const char* end[3] = {};
    std::int32_t step[3] = {};
    for (std::size_t d = 0; d < dims.size(); ++d) {
        start[d] = dims[d][0];
        end[d] = dims[d][1];
        step[d] = steps[d];
    }
    IdSpec id_spec;
    id_spec_init_ranges(id_spec, prefix, start, end, step);
    return id_spec;
}

std::string text_at(IdSpec& id_spec, int dimension, std::int64_t position) {
    id_spec.cursor.dim_position[dimension] = position;
    id_spec_refresh(id_spec, TYPE_LINEAR);
    return id_spec.dims[dimension].current_text;
}

TEST(IdSpecRanges, SizesAndTextsOfRanges) {
    struct Case {
        const char* start;
        const char* end;
        std::int32_t step;
        std::int64_t size;
        std::vector<std::pair<std::int64_t, const char*>> texts;
    } cases[] = {
        {"1", "9", 2, 5, {{1, "3"}, {4, "9"}}},
        {"A0", "Z9", 13, 20, {{0, "A0"}, {1, "B3"}, {2, "C6"}, {3, "D9"}, {4, "F2"}, {19, "Y7"}}},
        {"B07", "C02", 3, 32, {{0, "B07"}, {1, "B10"}, {2, "B13"}, {30, "B97"}, {31, "C00"}}},
        {"AY", "BC", 1, 5, {{0, "AY"}, {1, "AZ"}, {2, "BA"}, {3, "BB"}, {4, "BC"}}},
        {"AZ8", "BA2", 1, 5, {{0, "AZ8"}, {1, "AZ9"}, {2, "BA0"}, {4, "BA2"}}},
        {"A-1", "A-9", 2, 5, {{0, "A-1"}, {1, "A-3"}, {4, "A-9"}}},
        {"0995", "1005", 1, 11, {{0, "0995"}, {4, "0999"}, {5, "1000"}, {10, "1005"}}},
        {"100000000098", "100000000102", 1, 5,
         {{0, "100000000098"}, {1, "100000000099"}, {2, "100000000100"}, {4, "100000000102"}}},
        {"7", "7", 1, 1, {{0, "7"}}},
        {"1", "8", 3, 3, {{0, "1"}, {2, "7"}}},  // a range that ends short of its end text
    };
    for (const Case& c : cases) {
        IdSpec id_spec = ranged(nullptr, {{c.start, c.end}}, {c.step});
        EXPECT_EQ(id_spec.cursor.dim_size[0], c.size) << c.start << " to " << c.end;
        EXPECT_EQ(id_spec.cursor.dim_position[0], 0) << c.start << " to " << c.end;
        for (const auto& [position, text] : c.texts) {
            EXPECT_EQ(text_at(id_spec, 0, position), text)
                << c.start << " to " << c.end << " at " << position;
        }
    }
}

TEST(IdSpecRanges, UnusedAndBrokenDimensions) {
    IdSpec id_spec;
    id_spec.cursor.dim_size[3] = 7;  // dimension 3 is not touched
    const char* start[3] = {"A1", "", nullptr};
    const char* end[3] = {"11", "B", "C"};
    std::int32_t step[3] = {1, 1, 1};
    id_spec_init_ranges(id_spec, "ABCDEFGHIJKLMNOPQRSTUVWXYZ", start, end, step);
    EXPECT_STREQ(id_spec.prefix, "ABCDEFGHIJKLMNOPQRST") << "cut to 20";
    // Start and end of different shapes: a size that can't be measured. A
    // failed difference at a refresh keeps the text.
    id_spec.cursor.dim_position[0] = 3;
    id_spec_refresh(id_spec, TYPE_LINEAR);
    EXPECT_STREQ(id_spec.dims[0].current_text, "A1");
    EXPECT_EQ(id_spec.cursor.dim_size, (std::array<std::int64_t, 4>{-1, 0, 0, 7}));
    EXPECT_EQ(id_spec.dims[2].step, 0);

    // A step of 0 (refused by the instrument) leaves the dimension unused.
    IdSpec zero = ranged("P", {{"A1", "A9"}}, {0});
    id_spec_refresh(zero, TYPE_LINEAR);
    EXPECT_EQ(zero.cursor.dim_size[0], 0);
    EXPECT_STREQ(zero.dims[0].current_text, "");
}

TEST(IdSpecRanges, PositionsOutsideTheRangeGiveNoText) {
    struct Case {
        const char* start;
        const char* end;
        std::int32_t step;
        std::int64_t position;
        const char* text;
    } cases[] = {
        {"1", "9", 2, 5, ""},             // 10 doesn't fit one digit
        {"1", "9", 2, -1, ""},            // negative offset
        {"AY", "BC", 1, 676, ""},         // 26 x 26 doesn't fit two letters
        {"X-95", "X-99", 1, 5, "X-00"},   // the carry stops at the "-"
        {"0095", "0100", INT32_MAX, INT64_MAX, ""},  // a product that wraps
    };
    for (const Case& c : cases) {
        IdSpec id_spec = ranged(nullptr, {{c.start, c.end}}, {c.step});
        EXPECT_EQ(text_at(id_spec, 0, c.position), c.text) << c.start << " at " << c.position;
    }
}

TEST(IdSpecManual, LabelCountsAndPlaceholderTexts) {
    const std::int64_t size[4] = {3, 2, 4, 5};
    const std::int32_t step[4] = {1, 2, 3, 4};
    struct Case {
        std::int32_t file_type;
        int used;
    } cases[] = {{TYPE_2D_MANUAL, 2}, {TYPE_3D_MANUAL, 3}, {TYPE_4D_MANUAL, 4}, {TYPE_3D, 0}};
    for (const Case& c : cases) {
        IdSpec id_spec;
        std::strcpy(id_spec.prefix, "OLD");
        id_spec.cursor.dim_position = {1, 1, 1, 1};
        id_spec_init_manual(id_spec, size, step, c.file_type);
        EXPECT_STREQ(id_spec.prefix, "");
        const char* starts[4] = {"S1", "S2", "S3", "S4"};
        const char* ends[4] = {"E1", "E2", "E3", "E4"};
        for (int d = 0; d < 4; ++d) {
            EXPECT_STREQ(id_spec.dims[d].start_text, starts[d]);
            EXPECT_STREQ(id_spec.dims[d].end_text, ends[d]);
            EXPECT_EQ(id_spec.dims[d].step, d < c.used ? step[d] : 0) << c.file_type << " " << d;
            EXPECT_EQ(id_spec.cursor.dim_size[d], d < c.used ? size[d] : 0) << c.file_type << " " << d;
            EXPECT_EQ(id_spec.cursor.dim_position[d], 0);
        }
    }
    // The text of a manual dimension is its offset, only a mark of presence.
    IdSpec id_spec;
    id_spec_init_manual(id_spec, size, step, TYPE_3D_MANUAL);
    id_spec.cursor.dim_position = {2, 1, 3, 4};
    id_spec_refresh(id_spec, TYPE_3D_MANUAL);
    EXPECT_STREQ(id_spec.dims[0].current_text, "2");
    EXPECT_STREQ(id_spec.dims[1].current_text, "2");
    EXPECT_STREQ(id_spec.dims[2].current_text, "9");
    EXPECT_STREQ(id_spec.dims[3].current_text, "");
}

// Labels by dimension and position, recording what the compose asked for.
struct Labels {
    std::vector<std::vector<const char*>> table;
    std::vector<std::pair<int, int>> asked;  // dimension, position
};

const char* label_of(void* context, std::uint16_t position, int dimension) {
    auto* labels = static_cast<Labels*>(context);
    labels->asked.emplace_back(dimension, position);
    const auto& row = labels->table[static_cast<std::size_t>(dimension)];
    return position < row.size() ? row[position] : nullptr;
}

std::string compose(IdSpec& id_spec, std::int64_t index, std::int32_t file_type, int with_prefix,
                    const LabelOp* label = nullptr, const char* suffix = nullptr,
                    int suffix_dimension = 0) {
    cursor_seek(id_spec.cursor, index);
    id_spec_refresh(id_spec, file_type);
    char out[ID_TEXT_SIZE + 8];
    std::memset(out, '#', sizeof out);
    id_spec_compose(id_spec, out, with_prefix, label, suffix, suffix_dimension, file_type);
    for (std::size_t i = ID_TEXT_SIZE; i < sizeof out; ++i) {
        EXPECT_EQ(out[i], '#') << "written past the text";
    }
    return out;
}

TEST(IdSpecCompose, LabelOfDimensionZeroAndSuffix) {
    // A boiler: tube 01 to 04, elevation 10 to 30 by 10, custom points.
    IdSpec id_spec = ranged(nullptr, {{"1", "2"}, {"10", "30"}, {"01", "04"}}, {1, 10, 1});
    Labels labels{{{"NORTH", "SOUTH"}, {}, {}}, {}};
    LabelOp op{label_of, &labels};
    EXPECT_EQ(compose(id_spec, 9, TYPE_BOILER, 1, &op, elevation_unit_text(2), 1), "0220FTSOUTH");
    EXPECT_EQ(labels.asked, (std::vector<std::pair<int, int>>{{0, 1}}));
    EXPECT_EQ(compose(id_spec, 9, TYPE_BOILER, 1, &op, elevation_unit_text(0), 1), "0220SOUTH");
    EXPECT_EQ(compose(id_spec, 9, TYPE_BOILER, 1, &op, nullptr, 1), "0220SOUTH");
    EXPECT_EQ(compose(id_spec, 9, TYPE_BOILER, 1, nullptr, "FT", 1), "0220FT2");

    // An unused suffix dimension takes its suffix with it.
    IdSpec gap = ranged(nullptr, {{"1", "2"}, {"", ""}, {"01", "04"}}, {1, 1, 1});
    gap.cursor.dim_position = {1, 0, 2, 0};
    id_spec_refresh(gap, TYPE_BOILER);
    char out[ID_TEXT_SIZE];
    id_spec_compose(gap, out, 1, &op, "FT", 1, TYPE_BOILER);
    EXPECT_STREQ(out, "03SOUTH");

    // A label past its table gives no text; the position reaches the label
    // operation as its low 16 bits.
    id_spec.cursor.dim_position = {65536 + 1, 0, 0, 0};
    labels.asked.clear();
    id_spec_compose(id_spec, out, 1, &op, nullptr, 0, TYPE_BOILER);
    EXPECT_EQ(labels.asked, (std::vector<std::pair<int, int>>{{0, 1}}));
    id_spec.cursor.dim_position[0] = 7;
    id_spec_compose(id_spec, out, 1, &op, nullptr, 0, TYPE_BOILER);
    EXPECT_STREQ(out, "0220");
}

TEST(IdSpecCompose, ManualFilesShowLabelsOnly) {
    Labels labels{{{"1", "2", "3"}, {"E", "W"}, {"TOP", "BOT"}, {"TANK1", "TANK2"}}, {}};
    LabelOp op{label_of, &labels};
    const std::int64_t size[4] = {3, 2, 2, 2};
    const std::int32_t steps[4] = {1, 1, 1, 1};
    IdSpec id_spec;
    id_spec_init_manual(id_spec, size, steps, TYPE_4D_MANUAL);
    std::strcpy(id_spec.prefix, "P");  // never shown in a 4D-MANUAL file
    EXPECT_EQ(compose(id_spec, 23, TYPE_4D_MANUAL, 1, &op, "FT", 1), "TANK2BOTW3");
    EXPECT_EQ(compose(id_spec, 0, TYPE_4D_MANUAL, 1, &op), "TANK1TOPE1");
    EXPECT_EQ(compose(id_spec, 0, TYPE_4D_MANUAL, 1, nullptr), "") << "no labels, no text";

    // A manual dimension with a step of 0 drops out.
    const std::int32_t gap_steps[4] = {1, 0, 1, 0};
    IdSpec three;
    id_spec_init_manual(three, size, gap_steps, TYPE_3D_MANUAL);
    EXPECT_EQ(compose(three, 11, TYPE_3D_MANUAL, 1, &op), "BOT3");

    IdSpec two;
    id_spec_init_manual(two, size, steps, TYPE_2D_MANUAL);
    EXPECT_EQ(compose(two, 4, TYPE_2D_MANUAL, 0, &op), "W2");
}

TEST(IdSpecCompose, LongIdentifiersAreCutTo20) {
    IdSpec id_spec = ranged("ABCDEFGHIJKLMNOPQ-", {{"1", "2"}, {"01", "03"}, {"A", "C"}}, {1, 1, 1});
    EXPECT_EQ(compose(id_spec, 17, TYPE_3D, 1), "ABCDEFGHIJKLMNOPQ-C0");
    Labels labels{{{"A-VERY-LONG-CUSTOM-POINT-LABEL", "B"}, {}, {}}, {}};
    LabelOp op{label_of, &labels};
    EXPECT_EQ(compose(id_spec, 0, TYPE_3D, 0, &op, "SUFFIX", 0), "A01A-VERY-LONG-CUSTO");
}

TEST(IdSpecText, DimensionTextsAndUnits) {
    IdSpec id_spec = ranged(nullptr, {{"1", "2"}, {"10", "30"}}, {1, 10});
    cursor_seek(id_spec.cursor, 5);
    id_spec_refresh(id_spec, TYPE_2D);
    char out[ID_TEXT_SIZE] = "junk";
    id_spec_dimension_text(id_spec, out, 1, TYPE_2D);
    EXPECT_STREQ(out, "30");
    id_spec_dimension_text(id_spec, out, 0, TYPE_2D);
    EXPECT_STREQ(out, "2");
    id_spec_dimension_text(id_spec, out, 2, TYPE_2D);
    EXPECT_STREQ(out, "");
    std::strcpy(out, "junk");
    id_spec_dimension_text(id_spec, out, 4, TYPE_2D);
    EXPECT_STREQ(out, "");

    const char* units[] = {"", "IN", "FT", "MM", "M", "", ""};
    for (std::int64_t u = 0; u <= 6; ++u) EXPECT_STREQ(elevation_unit_text(u), units[u]) << u;
    EXPECT_STREQ(elevation_unit_text(-1), "");
}

// The walk's composition from kept parts against the whole composition, on
// random headers (prefixes, texts of letters, digits and "-", start and end of
// other shapes or in the wrong order, negative and zero steps), walked in
// every pattern with random increment fields and mixed with jumps to any
// position, inside the box or not.
TEST(IdSpecWalk, KeptPartsComposeAsTheWholeDoes) {
    std::mt19937_64 random(16);
    auto pick = [&random](std::uint64_t n) { return static_cast<std::int64_t>(random() % n); };
    auto text = [&](const std::string& shape) {
        std::string t;
        for (char c : shape) t += c == 'A' ? static_cast<char>('A' + pick(26)) : c == '0' ? static_cast<char>('0' + pick(10)) : c;
        return t;
    };
    int ready = 0;
    for (int round = 0; round < 6000; ++round) {
        std::string texts[6];
        for (int d = 0; d < 3; ++d) {
            std::string shape;
            for (std::int64_t n = 1 + pick(pick(4) == 0 ? 12 : 3); n > 0; --n) shape += "A0-A0"[pick(pick(3) == 0 ? 5 : 2)];
            texts[2 * d] = text(shape);
            texts[2 * d + 1] = pick(8) == 0 ? text(shape + "0") : text(shape);
        }
        const char* start[3] = {texts[0].c_str(), texts[2].c_str(), pick(2) ? texts[4].c_str() : ""};
        const char* end[3] = {texts[1].c_str(), texts[3].c_str(), texts[5].c_str()};
        const std::int32_t step[3] = {static_cast<std::int32_t>(pick(5)) - 1, static_cast<std::int32_t>(pick(4)), 1};
        const std::string prefix = text(std::string("A0-%").substr(0, 1 + pick(4)) + std::string(pick(21), '0'));
        IdSpec full;
        id_spec_init_ranges(full, prefix.c_str(), start, end, step);
        const std::int32_t type = std::array{TYPE_LINEAR, TYPE_2D, TYPE_3D}[pick(3)];
        if (!id_spec_walk_ready(full, type)) continue;
        ++ready;
        IdSpec fast = full;
        auto kept = std::make_unique<WalkTexts>();
        walk_texts_reset(*kept);
        const auto inc = [&] { return static_cast<std::uint8_t>(pick(6)); };
        const std::uint8_t incs[4] = {inc(), inc(), inc(), inc()};
        const std::int32_t pattern = static_cast<std::int32_t>(pick(5));
        for (int point = 0; point < 200; ++point) {
            if (pick(10) == 0) {
                for (int d = 0; d < 3; ++d) full.cursor.dim_position[d] = pick(3) == 0 ? pick(3000) - 3 : pick(40);
            } else {
                cursor_walk(full.cursor, incs[0], incs[1], incs[2], pattern, type, incs[3]);
            }
            fast.cursor = full.cursor;
            id_spec_refresh(full, type);
            char whole[ID_TEXT_SIZE];
            char parts[ID_COMPOSE_ROOM];
            id_spec_compose(full, whole, 1, nullptr, nullptr, 1, type);
            const std::size_t n = id_spec_walk_compose(fast, *kept, type, parts);
            ASSERT_STREQ(parts, whole) << prefix << " " << texts[0] << "-" << texts[1] << " at " << point;
            ASSERT_EQ(n, std::strlen(whole));
            ASSERT_STREQ(fast.dims[0].current_text, full.dims[0].current_text);
        }
    }
    EXPECT_GT(ready, 1000);
    // Manual layouts and a pair that doesn't subtract are never walk-ready.
    EXPECT_FALSE(id_spec_walk_ready(ranged("P", {{"1", "9"}}, {1}), TYPE_2D_MANUAL));
    EXPECT_FALSE(id_spec_walk_ready(ranged("P", {{"1", "9"}, {"B", "A"}}, {1, 1}), TYPE_2D));
    EXPECT_TRUE(id_spec_walk_ready(ranged("P", {{"1", "9"}, {"B", "A"}}, {1, 0}), TYPE_2D));
}

}  // namespace
}  // namespace ugf
