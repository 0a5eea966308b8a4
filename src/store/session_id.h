// Identifier services of the open session: from a storage index to the
// finished text of a test point, or of one of its dimensions, by the rules of
// the file type. Row and column titles, the file rows' first and last points
// and the detailed rows all take their texts from here.
#pragma once

#include <cstddef>
#include <cstdint>

#include "file/session.h"

namespace ugf {

// The identifier that types 8 and 9 keep in the slot behind the record (a
// text of 21 bytes at slot offset 16), into out (ID_TEXT_SIZE bytes). A
// record that can't be read empties out; a text that can't be read leaves
// out as it was.
void session_stored_id(DlSession& session, std::int64_t storage_index, char* out);

// The whole identifier of the test point at the storage index, into out
// (ID_TEXT_SIZE bytes), with the prefix when with_prefix is 1. Moves the
// cursor to that index.
void session_point_id(DlSession& session, std::int64_t storage_index, char* out, int with_prefix);

// The text of one dimension at the storage index, into out (ID_TEXT_SIZE
// bytes): a counted text, a custom point label or a manual label; in BOILER
// files with_unit 1 puts the elevation unit behind dimension 1. Moves the
// cursor to that index.
void session_dimension_text(DlSession& session, std::int64_t storage_index, char* out,
                            int dimension, int with_unit);

// The walk of the detailed form over a survey's test points: storage index 0
// first, then the instrument's walk pattern, or the slots in order in
// "MANUAL" files (which keep each point's identifier in its slot).
struct PointWalk {
    std::uint32_t visit = 0;
    std::uint32_t total = 0;  // the points of the box
    // The last visit the walk may make, and the readings whose scans it may
    // still dump (see point_walk_begin).
    std::uint64_t last_visit = 0;
    std::uint64_t dumps_left = 0;
    std::uint32_t storage_index = 0;
    bool stored_ids = false;
    // The step of the walk pattern, made once.
    CursorStepper stepper{};
    // The first dimension of the step's order (-1: none) and how far the
    // storage index moves when it moves by one inside the regular box.
    int first = -1;
    std::uint64_t first_stride = 0;
    ZigzagMemo zigzag{};
    // Whether a seek within the box gives back the positions it came from
    // (regular_box): then a cursor that stands at the storage index needs none.
    bool regular = false;
    // The cursor stands at storage_index inside the regular box (as
    // cursor_at_index says): set where it is tested, and kept by a step
    // that moves only the first dimension inside its size, as such a step
    // keeps every position in the box and makes the index that follows.
    // Between the calls below nothing but the walk moves the cursor.
    bool at_index = false;
    // The last step moved only the first dimension (the zigzag memo holds
    // while the cursor stays where it put it).
    bool first_only = false;
    // The parts of the identifiers, for surveys whose identifiers they
    // can compose (else nullptr: each is composed anew).
    WalkTexts* texts = nullptr;
};

// A walk that visits each point once has read a slot past the end of the
// file (and reported it) by its visit number slots + 1, and has dumped the
// scans of at most one reading a slot. Only a damaged walk gets further:
// increment fields that are all 0, or that name unused dimensions, leave it
// standing or cycling through part of the box, reading the same slots again
// while the point count asks for more rows. Such a walk is written to its
// point count like any other, unless that count is above both the file's
// slots and WALK_POINT_LIMIT (up to 4294967295 for a range that couldn't be
// measured): that walk would write for ever, and it runs off, with failure,
// at its visit slots + 1. The rows of a walk are thus bounded by the larger
// of the slots and WALK_POINT_LIMIT, and the readings whose scans it dumps
// (a B-scan of 10000 points writes some 300 KB) by the larger of the slots
// and WALK_DUMP_LIMIT: past those, a damaged file would write gigabytes.
inline constexpr std::uint32_t WALK_POINT_LIMIT = 1u << 21;
inline constexpr std::uint64_t WALK_DUMP_LIMIT = 1u << 10;

PointWalk point_walk_begin(DlSession& session);
inline bool point_walk_more(const PointWalk& walk) { return walk.visit < walk.total; }
inline bool point_walk_runs_off(const PointWalk& walk) { return walk.visit > walk.last_visit; }
// Whether the walk may dump the scans of one more reading (and counts it).
inline bool point_walk_may_dump(PointWalk& walk) {
    if (walk.dumps_left == 0) return false;
    --walk.dumps_left;
    return true;
}
// The identifier of the current point as the detailed form writes it, into
// out (ID_COMPOSE_ROOM bytes, whatever they held; those behind the text's
// terminator may change); returns its length.
// The usual step, one of the first dimension within its kept texts, is
// taken inline; everything else out of line.
std::size_t point_walk_id_other(DlSession& session, PointWalk& walk, char* out);
inline std::size_t point_walk_id(DlSession& session, PointWalk& walk, char* out) {
    if (walk.texts != nullptr && walk.at_index) {
        const std::size_t n = id_spec_walk_compose_kept(session.id_spec, *walk.texts, out);
        if (n != WALK_NOT_KEPT) return n;
    }
    return point_walk_id_other(session, walk, out);
}
// On to the next point.
void point_walk_advance(DlSession& session, PointWalk& walk);

}  // namespace ugf
