// The box of up to four dimensions that a survey lays out, the bijection
// between a position and a storage index, and the four walk patterns.
// Dimension 0 moves fastest in storage and stands last in an identifier.
#pragma once

#include <array>
#include <cstdint>

#include "base/file_types.h"

namespace ugf {

struct IdCursor {
    std::array<std::int64_t, 4> dim_size{};      // 0: dimension not in use
    std::array<std::int64_t, 4> dim_position{};  // 0 .. dim_size - 1
};

enum WalkPattern : std::int32_t {
    WALK_STANDARD = 0,
    WALK_REVERSE = 1,
    WALK_ZIGZAG = 2,
    WALK_REVERSE_ZIGZAG = 3,
};

// ((p3 x s2 + p2) x s1 + p1) x s0 + p0; the sizes may be anything a damaged
// header gives, the arithmetic wraps instead of overflowing.
std::int64_t cursor_flat_index(const IdCursor& cursor);

// Sets the positions from a storage index (positions of unused dimensions
// stay as they are).
void cursor_seek(IdCursor& cursor, std::int64_t index);

// Moves dimension number - 1 by delta; 1 when it wrapped, else 0.
int cursor_step_dimension(IdCursor& cursor, int number, std::int16_t delta);

// Increment fields count dimensions from 1; 0 (or above 4) is an empty place.
void cursor_walk_linear(IdCursor& cursor, std::uint8_t first_inc, std::uint8_t second_inc,
                        std::uint8_t third_inc, std::int16_t delta, std::int32_t file_type,
                        std::uint8_t fourth_inc);
void cursor_walk_zigzag_four(IdCursor& cursor, std::uint8_t first_inc, std::uint8_t second_inc,
                             std::uint8_t third_inc, std::uint8_t fourth_inc);
void cursor_walk_reverse_zigzag_three(IdCursor& cursor, std::uint8_t first_inc,
                                      std::uint8_t second_inc, std::uint8_t third_inc);
void cursor_walk_reverse_zigzag_four(IdCursor& cursor, std::uint8_t first_inc,
                                     std::uint8_t second_inc, std::uint8_t third_inc,
                                     std::uint8_t fourth_inc);

// One step of the walk in the given pattern; a pattern above 3 moves nothing.
void cursor_walk(IdCursor& cursor, std::uint8_t first_inc, std::uint8_t second_inc,
                 std::uint8_t third_inc, std::int32_t walk_pattern, std::int32_t file_type,
                 std::uint8_t fourth_inc);

// The step of cursor_walk made ready for a whole walk: the same moves, with
// the dimensions that the increment fields name worked out once instead of
// at every step.
struct CursorStepper {
    std::int32_t kind = 0;    // 0 moves nothing, 1 an odometer, 2 a zigzag
    std::int16_t delta = 1;   // of the odometer
    bool backward = false;    // of the zigzag
    int count = 0;
    int number[4] = {};       // dimensions, counted from 1, in the order of the fields
    bool first_alone = true;  // of the zigzag: the first dimension of the order comes only once
};

CursorStepper cursor_stepper(std::uint8_t first_inc, std::uint8_t second_inc, std::uint8_t third_inc,
                             std::int32_t walk_pattern, std::int32_t file_type, std::uint8_t fourth_inc);
// The step cursor_walk takes with the fields the stepper was made from.
void cursor_stepper_step(IdCursor& cursor, const CursorStepper& stepper);

// The way the first dimension of a zigzag moves, a function of the
// positions of the dimensions after it in the order (their sum's parity),
// kept with those positions: while they stay, as they do for all but one
// step of each run of the first dimension, the step needs only its move.
struct ZigzagMemo {
    bool valid = false;
    std::int64_t above[3] = {};  // positions of the order's dimensions 2 to 4
    std::int64_t delta = 0;      // the first dimension's move
};
// The same step, with the caller's memo (which any cursor may use: it is
// checked against the positions at every step, unless `holds` says that the
// positions above are still those of the memo). True when the step moved
// the first dimension of the order inside its size and nothing else (the
// odometer's first place without a wrap; the memo's move of a zigzag whose
// first dimension stands only once in its order): the memo then holds for
// the next step if the caller moves the cursor in no other way.
bool cursor_stepper_step(IdCursor& cursor, const CursorStepper& stepper, ZigzagMemo& memo, bool holds = false);

// Whether a seek to `index` would leave the positions as they are: the box
// is regular (regular_box) and the positions lie inside it and make `index`.
// Unused dimensions must stand at 0. Cheaper than the seek's divisions.
bool regular_box(const IdCursor& cursor);
bool cursor_at_index(const IdCursor& cursor, std::int64_t index);

// Number of test points: the product of the sizes from dimension 0 upward,
// ending at the first size of 0; the low 32 bits.
std::uint32_t point_total_of(const IdCursor& cursor);

}  // namespace ugf
