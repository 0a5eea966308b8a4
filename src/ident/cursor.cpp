#include "ident/cursor.h"

namespace ugf {
namespace {

// Sizes come from the file and may be anything a damaged header gives (-1,
// or several hundred million per dimension), so products of sizes and
// positions are done in unsigned 64-bit arithmetic, which wraps by
// definition, and converted back.
std::uint64_t bits(std::int64_t v) { return static_cast<std::uint64_t>(v); }
std::int64_t from_bits(std::uint64_t v) { return static_cast<std::int64_t>(v); }

// An increment field counts dimensions from 1; 0 and anything above 4 name
// no dimension.
int dimension_number(std::uint8_t field) { return field <= 4 ? field : 0; }

// The dimensions of a zigzag walk: the fields that name a dimension, in the
// order first, second, third, fourth, with empty places skipped.
struct WalkOrder {
    int number[4] = {};  // dimension numbers, counted from 1
    int count = 0;
};

WalkOrder walk_order(std::uint8_t first, std::uint8_t second, std::uint8_t third,
                     std::uint8_t fourth) {
    WalkOrder order;
    for (std::uint8_t field : {first, second, third, fourth}) {
        int n = dimension_number(field);
        if (n != 0) order.number[order.count++] = n;
    }
    return order;
}

// Truncating 64-bit division of index by the (wrapped) divisor; index keeps
// the remainder. A divisor of 0 divides nothing and reports 0; -1 takes the
// wrapped negation, so no input traps.
int divide_index(std::int64_t& index, std::uint64_t divisor, std::int64_t& quotient) {
    if (divisor == 0) return 0;
    std::int64_t d = from_bits(divisor);
    quotient = d == -1 ? from_bits(0 - bits(index)) : index / d;
    index = from_bits(bits(index) - bits(quotient) * divisor);
    return 1;
}

// One reflected step over the dimensions of the order. The direction of
// each dimension is +1 when the positions of the dimensions above it in the
// order sum to an even number, else -1; the highest always goes +1.
// Forward ("ZIGZAG") moves each by its direction, backward ("REVERSE
// ZIGZAG") against it; the first one that stays inside the box takes the
// step. When none does, the cycle closes: forward to the all-zero cell,
// backward to the last cell of the forward walk.
void zigzag_step(IdCursor& cursor, const WalkOrder& order, bool backward) {
    int direction[4] = {1, 1, 1, 1};
    std::uint64_t above = 0;
    for (int i = order.count - 1; i >= 0; --i) {
        direction[i] = (above & 1u) != 0 ? -1 : 1;
        above += bits(cursor.dim_position[order.number[i] - 1]);
    }
    for (int i = 0; i < order.count; ++i) {
        int d = order.number[i] - 1;
        std::int64_t delta = backward ? -direction[i] : direction[i];
        std::int64_t moved = from_bits(bits(cursor.dim_position[d]) + bits(delta));
        if (moved >= 0 && moved < cursor.dim_size[d]) {
            cursor.dim_position[d] = moved;
            return;
        }
    }
    // The last cell of the forward walk: the highest dimension at its end,
    // and below it each dimension at its end exactly when every dimension
    // above it has an odd size (an even count of reversals leaves it there).
    bool all_odd = true;
    for (int i = order.count - 1; i >= 0; --i) {
        int d = order.number[i] - 1;
        std::int64_t size = cursor.dim_size[d];
        cursor.dim_position[d] = backward && all_odd ? from_bits(bits(size) - 1) : 0;
        all_odd = all_odd && (bits(size) & 1u) != 0;
    }
}

// A zigzag with fewer than two dimensions has nothing to turn at: one
// dimension walks as "STANDARD" ("ZIGZAG") or "REVERSE" ("REVERSE ZIGZAG"),
// none moves nothing.
void zigzag_walk(IdCursor& cursor, const WalkOrder& order, bool backward) {
    if (order.count == 0) return;
    if (order.count == 1) {
        std::int16_t delta = backward ? -1 : 1;
        cursor_step_dimension(cursor, order.number[0], delta);
        return;
    }
    zigzag_step(cursor, order, backward);
}

}  // namespace

std::int64_t cursor_flat_index(const IdCursor& cursor) {
    const auto& p = cursor.dim_position;
    const auto& s = cursor.dim_size;
    std::uint64_t index = bits(p[3]) * bits(s[2]) + bits(p[2]);
    index = index * bits(s[1]) + bits(p[1]);
    index = index * bits(s[0]) + bits(p[0]);
    return from_bits(index);
}

void cursor_seek(IdCursor& cursor, std::int64_t index) {
    const auto& s = cursor.dim_size;
    auto& p = cursor.dim_position;
    // A divisor that wraps to 0 (sizes whose product is a multiple of 2^64)
    // leaves its position as it is, like a size of 0.
    std::int64_t q = 0;
    if (s[3] != 0 && divide_index(index, bits(s[0]) * bits(s[1]) * bits(s[2]), q)) p[3] = q;
    if (s[2] != 0 && divide_index(index, bits(s[0]) * bits(s[1]), q)) p[2] = q;
    if (s[1] != 0 && divide_index(index, bits(s[0]), q)) p[1] = q;
    p[0] = index;
}

int cursor_step_dimension(IdCursor& cursor, int number, std::int16_t delta) {
    if (number < 1 || number > 4) return 0;
    int d = number - 1;
    std::int64_t moved = from_bits(bits(cursor.dim_position[d]) + bits(delta));
    if (moved < 0) {
        cursor.dim_position[d] = from_bits(bits(cursor.dim_size[d]) - 1);
        return 1;
    }
    if (moved == cursor.dim_size[d]) {
        cursor.dim_position[d] = 0;
        return 1;
    }
    cursor.dim_position[d] = moved;
    return 0;
}

void cursor_walk_linear(IdCursor& cursor, std::uint8_t first_inc, std::uint8_t second_inc,
                        std::uint8_t third_inc, std::int16_t delta, std::int32_t file_type,
                        std::uint8_t fourth_inc) {
    // An odometer: a place moves when every place before it has wrapped; an
    // empty place passes on at once. Only "4D-MANUAL" has a fourth place.
    std::uint8_t places[4] = {first_inc, second_inc, third_inc, fourth_inc};
    int place_count = file_type == FILE_TYPE_4D_MANUAL ? 4 : 3;
    for (int i = 0; i < place_count; ++i) {
        int n = dimension_number(places[i]);
        if (n == 0) continue;
        if (cursor_step_dimension(cursor, n, delta) == 0) return;
    }
}

void cursor_walk_zigzag_four(IdCursor& cursor, std::uint8_t first_inc, std::uint8_t second_inc,
                             std::uint8_t third_inc, std::uint8_t fourth_inc) {
    zigzag_walk(cursor, walk_order(first_inc, second_inc, third_inc, fourth_inc), false);
}

void cursor_walk_reverse_zigzag_three(IdCursor& cursor, std::uint8_t first_inc,
                                      std::uint8_t second_inc, std::uint8_t third_inc) {
    zigzag_walk(cursor, walk_order(first_inc, second_inc, third_inc, 0), true);
}

void cursor_walk_reverse_zigzag_four(IdCursor& cursor, std::uint8_t first_inc,
                                     std::uint8_t second_inc, std::uint8_t third_inc,
                                     std::uint8_t fourth_inc) {
    zigzag_walk(cursor, walk_order(first_inc, second_inc, third_inc, fourth_inc), true);
}

void cursor_walk(IdCursor& cursor, std::uint8_t first_inc, std::uint8_t second_inc,
                 std::uint8_t third_inc, std::int32_t walk_pattern, std::int32_t file_type,
                 std::uint8_t fourth_inc) {
    switch (walk_pattern) {
        case WALK_STANDARD:
            cursor_walk_linear(cursor, first_inc, second_inc, third_inc, 1, file_type, fourth_inc);
            return;
        case WALK_REVERSE:
            cursor_walk_linear(cursor, first_inc, second_inc, third_inc, -1, file_type, fourth_inc);
            return;
        case WALK_ZIGZAG:
        case WALK_REVERSE_ZIGZAG:
            break;
        default:
            return;  // no such pattern: nothing moves
    }
    // The fourth field means something only in "4D-MANUAL"; elsewhere its
    // byte belongs to other data.
    if (file_type != FILE_TYPE_4D_MANUAL) fourth_inc = 0;
    WalkOrder order = walk_order(first_inc, second_inc, third_inc, fourth_inc);
    auto n = [&order](int i) { return static_cast<std::uint8_t>(order.number[i]); };
    bool backward = walk_pattern == WALK_REVERSE_ZIGZAG;
    if (order.count == 4) {
        if (backward) {
            cursor_walk_reverse_zigzag_four(cursor, n(0), n(1), n(2), n(3));
        } else {
            cursor_walk_zigzag_four(cursor, n(0), n(1), n(2), n(3));
        }
    } else if (order.count == 3 && backward) {
        cursor_walk_reverse_zigzag_three(cursor, n(0), n(1), n(2));
    } else {
        zigzag_walk(cursor, order, backward);
    }
}

CursorStepper cursor_stepper(std::uint8_t first_inc, std::uint8_t second_inc, std::uint8_t third_inc,
                             std::int32_t walk_pattern, std::int32_t file_type, std::uint8_t fourth_inc) {
    CursorStepper stepper;
    if (walk_pattern == WALK_STANDARD || walk_pattern == WALK_REVERSE) {
        // cursor_walk_linear's places, empty ones left out.
        stepper.kind = 1;
        stepper.delta = walk_pattern == WALK_STANDARD ? 1 : -1;
        const std::uint8_t places[4] = {first_inc, second_inc, third_inc, fourth_inc};
        const int place_count = file_type == FILE_TYPE_4D_MANUAL ? 4 : 3;
        for (int i = 0; i < place_count; ++i) {
            const int n = dimension_number(places[i]);
            if (n != 0) stepper.number[stepper.count++] = n;
        }
    } else if (walk_pattern == WALK_ZIGZAG || walk_pattern == WALK_REVERSE_ZIGZAG) {
        // Every zigzag of cursor_walk comes down to zigzag_walk over the
        // order of the fields (the fourth only in "4D-MANUAL").
        stepper.kind = 2;
        stepper.backward = walk_pattern == WALK_REVERSE_ZIGZAG;
        const WalkOrder order = walk_order(first_inc, second_inc, third_inc,
                                           file_type == FILE_TYPE_4D_MANUAL ? fourth_inc : 0);
        stepper.count = order.count;
        for (int i = 0; i < 4; ++i) stepper.number[i] = order.number[i];
        for (int i = 1; i < order.count; ++i) stepper.first_alone = stepper.first_alone && order.number[i] != order.number[0];
    }
    return stepper;
}

void cursor_stepper_step(IdCursor& cursor, const CursorStepper& stepper) {
    if (stepper.kind == 1) {
        for (int i = 0; i < stepper.count; ++i) {
            if (cursor_step_dimension(cursor, stepper.number[i], stepper.delta) == 0) return;
        }
    } else if (stepper.kind == 2) {
        WalkOrder order;
        order.count = stepper.count;
        for (int i = 0; i < 4; ++i) order.number[i] = stepper.number[i];
        zigzag_walk(cursor, order, stepper.backward);
    }
}

bool cursor_stepper_step(IdCursor& cursor, const CursorStepper& stepper, ZigzagMemo& memo, bool holds) {
    if (stepper.kind == 1 && stepper.count > 0) {
        // The odometer's first place, when it doesn't wrap, is the whole step.
        const int d = stepper.number[0] - 1;
        const std::int64_t moved = from_bits(bits(cursor.dim_position[d]) + bits(stepper.delta));
        if (moved >= 0 && moved < cursor.dim_size[d]) {
            cursor.dim_position[d] = moved;
            return true;
        }
        cursor_stepper_step(cursor, stepper);
        return false;
    }
    if (stepper.kind != 2 || stepper.count < 2) {
        cursor_stepper_step(cursor, stepper);
        return false;
    }
    // zigzag_step's direction of the first dimension, and its first try.
    const int rest = stepper.count - 1;
    bool same = memo.valid;
    if (!(holds && same)) {
        for (int i = 0; i < rest; ++i) same = same && memo.above[i] == cursor.dim_position[stepper.number[i + 1] - 1];
    }
    if (!same) {
        std::uint64_t above = 0;
        for (int i = 0; i < rest; ++i) {
            memo.above[i] = cursor.dim_position[stepper.number[i + 1] - 1];
            above += bits(memo.above[i]);
        }
        const std::int64_t direction = (above & 1u) != 0 ? -1 : 1;
        memo.delta = stepper.backward ? -direction : direction;
        memo.valid = true;
    }
    const int d = stepper.number[0] - 1;
    const std::int64_t moved = from_bits(bits(cursor.dim_position[d]) + bits(memo.delta));
    if (moved >= 0 && moved < cursor.dim_size[d]) {
        cursor.dim_position[d] = moved;
        return stepper.first_alone;
    }
    cursor_stepper_step(cursor, stepper);
    return false;
}

// The dimensions in use come first, each of at least one position, and the
// box has fewer than 2^32 points: each storage index below that names one
// point, the mixed-radix digits that the seek's divisions take out.
bool regular_box(const IdCursor& cursor) {
    std::uint64_t points = 1;
    bool ended = false;
    for (std::int64_t size : cursor.dim_size) {
        if (size == 0) {
            ended = true;
            continue;
        }
        if (ended || size < 0 || size > 0xFFFFFFFF) return false;
        points *= static_cast<std::uint64_t>(size);
        if (points > 0xFFFFFFFF) return false;
    }
    return cursor.dim_size[0] != 0;
}

bool cursor_at_index(const IdCursor& cursor, std::int64_t index) {
    // As unsigned numbers a negative position is never below a size; an
    // unused dimension (size 0) must stand at 0, below 1. Tested together:
    // the walk's positions are in the box almost always.
    const auto& p = cursor.dim_position;
    const auto& s = cursor.dim_size;
    const auto below = [&](int d) -> unsigned { return bits(p[d]) < (s[d] == 0 ? 1u : bits(s[d])) ? 1u : 0u; };
    return (below(0) & below(1) & below(2) & below(3)) != 0 && cursor_flat_index(cursor) == index;
}

std::uint32_t point_total_of(const IdCursor& cursor) {
    const auto& s = cursor.dim_size;
    std::uint64_t total = bits(s[0]);
    if (s[1] != 0) {
        total *= bits(s[1]);
        if (s[2] != 0) {
            total *= bits(s[2]);
            if (s[3] != 0) total *= bits(s[3]);
        }
    }
    return static_cast<std::uint32_t>(total);
}

}  // namespace ugf
