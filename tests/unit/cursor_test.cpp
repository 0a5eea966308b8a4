#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "ident/cursor.h"

namespace ugf {
namespace {

constexpr std::int32_t TYPE_3D = 4;
constexpr std::int32_t TYPE_3D_MANUAL = 11;
constexpr std::int32_t TYPE_4D_MANUAL = 12;

IdCursor box(std::int64_t s0, std::int64_t s1 = 0, std::int64_t s2 = 0, std::int64_t s3 = 0) {
    IdCursor c;
    c.dim_size = {s0, s1, s2, s3};
    return c;
}

// Positions of the used dimensions, dimension 0 first, one digit each.
std::string cell(const IdCursor& c, int dims) {
    std::string s;
    for (int d = 0; d < dims; ++d) s += static_cast<char>('0' + c.dim_position[d]);
    return s;
}

TEST(CursorIndex, DamagedSizesWrapAndNeverDivideByZero) {
    // Three sizes of 2^28 multiply to 2^84, which wraps to 0: that divisor
    // divides nothing and its position stays.
    const std::int64_t big = std::int64_t{1} << 28;
    IdCursor cursor = box(big, big, big, 1);
    cursor.dim_position[3] = 9;
    cursor_seek(cursor, 5 + 3 * big + (std::int64_t{2} << 56));
    EXPECT_EQ(cursor.dim_position, (std::array<std::int64_t, 4>{5, 3, 2, 9}));

    // A size of -1 divides by -1; the lowest index negates onto itself.
    IdCursor negative = box(-1, -1);
    cursor_seek(negative, INT64_MIN);
    EXPECT_EQ(negative.dim_position[1], INT64_MIN);
    EXPECT_EQ(negative.dim_position[0], 0);

    // The last cell of a box of 2^32 in each dimension is 2^128 - 1, whose
    // low 64 bits are all ones.
    const std::int64_t huge = std::int64_t{1} << 32;
    IdCursor wide = box(huge, huge, huge, huge);
    wide.dim_position = {huge - 1, huge - 1, huge - 1, huge - 1};
    EXPECT_EQ(cursor_flat_index(wide), -1);
}

TEST(CursorStep, WrapsAtBothEnds) {
    struct Case {
        std::int64_t position;
        int number;
        std::int16_t delta;
        int wrapped;
        std::int64_t after;
    } cases[] = {
        {0, 2, 1, 0, 1}, {2, 2, 1, 1, 0}, {0, 2, -1, 1, 2}, {2, 2, -1, 0, 1},
        {1, 0, 1, 0, 1}, {1, 5, 1, 0, 1},  // no such dimension: nothing moves
    };
    for (const Case& c : cases) {
        IdCursor cursor = box(5, 3);
        cursor.dim_position[1] = c.position;
        cursor.dim_position[0] = c.position;
        EXPECT_EQ(cursor_step_dimension(cursor, c.number, c.delta), c.wrapped) << c.number;
        EXPECT_EQ(cursor.dim_position[c.number == 2 ? 1 : 0], c.after) << c.number;
        EXPECT_EQ(cursor.dim_position[c.number == 2 ? 0 : 1], c.position) << "the other dimension";
    }
}

struct WalkCase {
    const char* name;
    IdCursor cursor;
    std::uint8_t first, second, third, fourth;
    std::int32_t pattern;
    std::int32_t file_type;
    const char* cells;    // visited from the all-zero cell; the next step closes the cycle
    const char* indices;  // storage indices of those cells, or nullptr
};

std::vector<std::string> words(const char* text) {
    std::vector<std::string> out;
    std::istringstream in(text);
    for (std::string w; in >> w;) out.push_back(w);
    return out;
}

// Cells visited from the all-zero cell, in every pattern, order and number of
// dimensions, with odd fields.
TEST(CursorWalk, WalkTables) {
    const WalkCase cases[] = {
        {"2D 2,1 standard", box(3, 2), 2, 1, 0, 0, WALK_STANDARD, TYPE_3D, "00 01 10 11 20 21", "0 3 1 4 2 5"},
        {"2D 2,1 reverse", box(3, 2), 2, 1, 0, 0, WALK_REVERSE, TYPE_3D, "00 21 20 11 10 01", "0 5 2 4 1 3"},
        {"2D 2,1 zigzag", box(3, 2), 2, 1, 0, 0, WALK_ZIGZAG, TYPE_3D,
         "00 01 11 10 20 21", "0 3 4 1 2 5"},
        {"2D 2,1 reverse zigzag", box(3, 2), 2, 1, 0, 0, WALK_REVERSE_ZIGZAG, TYPE_3D,
         "00 21 20 10 11 01", "0 5 2 1 4 3"},
        {"3D zigzag", box(3, 2, 2), 1, 2, 3, 0, WALK_ZIGZAG, TYPE_3D,
         "000 100 200 210 110 010 011 111 211 201 101 001", nullptr},
        {"3D reverse zigzag", box(3, 2, 2), 1, 2, 3, 0, WALK_REVERSE_ZIGZAG, TYPE_3D,
         "000 001 101 201 211 111 011 010 110 210 200 100", nullptr},
        {"3D zigzag 3,1,2", box(2, 3, 2), 3, 1, 2, 0, WALK_ZIGZAG, TYPE_3D,
         "000 001 101 100 110 111 011 010 020 021 121 120", "0 6 7 1 3 9 8 2 4 10 11 5"},
        {"4D zigzag", box(2, 2, 2, 2), 1, 2, 3, 4, WALK_ZIGZAG, TYPE_4D_MANUAL,
         "0000 1000 1100 0100 0110 1110 1010 0010 0011 1011 1111 0111 0101 1101 1001 0001",
         nullptr},
        {"4D reverse zigzag", box(2, 2, 2, 2), 1, 2, 3, 4, WALK_REVERSE_ZIGZAG, TYPE_4D_MANUAL,
         "0000 0001 1001 1101 0101 0111 1111 1011 0011 0010 1010 1110 0110 0100 1100 1000",
         nullptr},
        {"4D standard", box(2, 1, 1, 2), 1, 2, 3, 4, WALK_STANDARD, TYPE_4D_MANUAL,
         "0000 1000 0001 1001", "0 1 2 3"},
        {"1D zigzag walks as standard", box(3), 1, 0, 0, 0, WALK_ZIGZAG, 0, "0 1 2", nullptr},
        {"1D reverse zigzag walks as reverse", box(3), 1, 0, 0, 0, WALK_REVERSE_ZIGZAG, 0,
         "0 2 1", nullptr},
        {"gap in the order", box(3, 2), 0, 2, 1, 0, WALK_ZIGZAG, TYPE_3D,
         "00 01 11 10 20 21", nullptr},
        {"field above 4 is a gap", box(3, 2), 7, 1, 2, 0, WALK_REVERSE_ZIGZAG, TYPE_3D,
         "00 01 11 21 20 10", nullptr},
        {"field above 4 in standard", box(3, 2), 1, 200, 2, 0, WALK_STANDARD, TYPE_3D,
         "00 10 20 01 11 21", nullptr},
        {"fourth field only in 4D-MANUAL", box(2, 2, 2, 0), 1, 2, 0, 3, WALK_ZIGZAG, TYPE_3D_MANUAL,
         "000 100 110 010", nullptr},
    };
    for (const WalkCase& c : cases) {
        std::vector<std::string> cells = words(c.cells);
        std::vector<std::string> indices;
        if (c.indices != nullptr) indices = words(c.indices);
        int dims = static_cast<int>(cells[0].size());
        IdCursor cursor = c.cursor;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            ASSERT_EQ(cell(cursor, dims), cells[i]) << c.name << ", step " << i;
            if (!indices.empty()) {
                EXPECT_EQ(std::to_string(cursor_flat_index(cursor)), indices[i])
                    << c.name << ", step " << i;
            }
            cursor_walk(cursor, c.first, c.second, c.third, c.pattern, c.file_type, c.fourth);
        }
        EXPECT_EQ(cell(cursor, dims), cells[0]) << c.name << ": the cycle closes";
    }
}

TEST(CursorWalk, NothingMovesWithoutPatternOrDimension) {
    struct Case {
        std::int32_t pattern;
        std::uint8_t first, second, third;
    } cases[] = {
        {4, 1, 2, 0}, {-1, 1, 2, 0}, {100, 1, 2, 0},
        {WALK_ZIGZAG, 0, 0, 0}, {WALK_REVERSE_ZIGZAG, 9, 0, 5}, {WALK_STANDARD, 0, 0, 0},
    };
    for (const Case& c : cases) {
        IdCursor cursor = box(3, 2);
        cursor.dim_position = {1, 1, 0, 0};
        cursor_walk(cursor, c.first, c.second, c.third, c.pattern, TYPE_3D, 0);
        EXPECT_EQ(cursor.dim_position, (std::array<std::int64_t, 4>{1, 1, 0, 0})) << c.pattern;
    }
}

// A field naming an unused dimension is walked as it stands: dimension 1 has
// no positions, so forward it never reaches its size, backward it wraps to
// size - 1 (-1) and carries at every step.
TEST(CursorWalk, AFieldNamingAnUnusedDimensionIsWalked) {
    using Steps = std::array<std::int64_t, 3>;
    for (const auto& [pattern, p0, p1] : {std::tuple{WALK_STANDARD, Steps{0, 0, 0}, Steps{1, 2, 3}},
                                          std::tuple{WALK_REVERSE, Steps{2, 1, 0}, Steps{-1, -1, -1}}}) {
        IdCursor cursor = box(3);
        for (std::size_t i = 0; i < 3; ++i) {
            cursor_walk(cursor, 2, 1, 0, pattern, TYPE_3D, 0);
            EXPECT_EQ(cursor.dim_position[0], p0[i]) << pattern << " step " << i;
            EXPECT_EQ(cursor.dim_position[1], p1[i]) << pattern << " step " << i;
        }
    }
}

TEST(CursorWalk, NamedZigzagFormsSkipEmptyFields) {
    // A three-by-two box walked over dimensions 1 and 2 whatever place the
    // empty fields take: 00 10 20 21 11 01 forward.
    IdCursor forward = box(3, 2);
    forward.dim_position = {2, 0, 0, 0};
    cursor_walk_zigzag_four(forward, 0, 1, 9, 2);
    EXPECT_EQ(cell(forward, 2), "21");
    IdCursor backward = box(3, 2);
    backward.dim_position = {2, 1, 0, 0};
    cursor_walk_reverse_zigzag_four(backward, 1, 0, 2, 0);
    EXPECT_EQ(cell(backward, 2), "20");
    cursor_walk_reverse_zigzag_three(backward, 0, 1, 2);
    EXPECT_EQ(cell(backward, 2), "10");
    cursor_walk_reverse_zigzag_three(backward, 0, 0, 0);
    EXPECT_EQ(cell(backward, 2), "10") << "no dimension: nothing moves";
}


// The memo of the first dimension's move changes no step: random boxes
// (sizes of 0 to 5, damaged ones of -1 and 0), every order of the fields
// in every pattern, and positions thrown anywhere now and then.
TEST(CursorWalk, ZigzagMemoStepsAsTheZigzag) {
    std::uint64_t seed = 7;
    auto next = [&seed](int n) {
        seed = seed * 6364136223846793005ull + 1442695040888963407ull;
        return static_cast<int>((seed >> 33) % static_cast<std::uint64_t>(n));
    };
    for (int round = 0; round < 3000; ++round) {
        IdCursor plain = box(next(7) - 1, next(7) - 1, next(7) - 1, next(7) - 1);
        const auto field = [&] { return static_cast<std::uint8_t>(next(6)); };
        const CursorStepper stepper = cursor_stepper(field(), field(), field(), next(4), TYPE_4D_MANUAL, field());
        ZigzagMemo memo, kept;
        IdCursor fast = plain, trusted = plain;
        bool holds = false;  // the memo unchecked after a move of the first dimension only
        for (int step = 0; step < 200; ++step) {
            if (next(40) == 0) {
                for (auto& p : plain.dim_position) p = next(8) - 1;
                fast.dim_position = trusted.dim_position = plain.dim_position;
                holds = false;
            }
            cursor_stepper_step(plain, stepper);
            cursor_stepper_step(fast, stepper, memo);
            holds = cursor_stepper_step(trusted, stepper, kept, holds);
            ASSERT_EQ(fast.dim_position, plain.dim_position) << round << " " << step;
            ASSERT_EQ(trusted.dim_position, plain.dim_position) << round << " " << step;
        }
    }
}

}  // namespace
}  // namespace ugf
