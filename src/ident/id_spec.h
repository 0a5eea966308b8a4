// Identifier assembly: from a prefix, start and end texts, steps (or manual
// label counts) and the cursor, the text of each dimension and of a whole
// test point.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "ident/cursor.h"
#include "ident/id_text.h"

namespace ugf {

// A dimension text worked out before, with everything it depends on: the
// manual flag, the start and end texts and the offset.
struct KnownText {
    bool valid = false;
    bool manual = false;
    std::int64_t offset = 0;
    char start_text[ID_TEXT_SIZE] = {};
    char end_text[ID_TEXT_SIZE] = {};
    char result[ID_TEXT_SIZE] = {};
};

struct IdDimension {
    char start_text[ID_TEXT_SIZE] = {};
    char end_text[ID_TEXT_SIZE] = {};
    char current_text[ID_TEXT_SIZE] = {};
    std::int32_t step = 0;  // 0: the dimension is not in use
    // The last text that id_dimension_refresh worked out. A walk refreshes
    // every dimension at every point while most of them stay where they
    // were, and the identifier arithmetic is the dearest step of a row; the
    // memo lets an unchanged dimension copy its text instead. Keyed by
    // everything the text depends on, so a changed start, end or offset
    // always computes afresh.
    KnownText memo{};
    // The template of the dimension's offsets, which only the start and end
    // texts decide (their difference), with the texts it came from. Every
    // point of a walk needs it, and the subtraction behind it is the same
    // each time.
    struct SpanMemo {
        bool valid = false;
        bool subtracts = false;  // false: end less start has no value
        char start_text[ID_TEXT_SIZE] = {};
        char end_text[ID_TEXT_SIZE] = {};
        char offset_template[ID_TEXT_SIZE] = {};
    } span{};
};

// Dimension texts worked out before. A walk comes back to the same offsets
// of its fastest dimension row after row; a table with room for a few
// thousand of them lets it copy the texts instead of working them out
// again. Direct-mapped: a new text replaces the slot's old one.
inline constexpr std::size_t RECENT_TEXT_SLOTS = 4096;

struct RecentTexts {
    std::array<KnownText, RECENT_TEXT_SLOTS> slots{};
};

struct IdSpec {
    char prefix[ID_TEXT_SIZE] = {};
    std::array<IdDimension, 4> dims{};
    IdCursor cursor{};
    // The table of recent dimension texts that refreshes use, owned by the
    // caller (the session); nullptr: none.
    RecentTexts* recent_texts = nullptr;
};

// The identifiers of a walk, made from parts that change less often than the
// identifier. A walk moves dimension 0 at almost every point and the others
// rarely, but composing the whole text anew refreshes every dimension and
// copies every part for each point. Here the prefix with the texts of
// dimensions 2 and 1 is kept while their positions stay, and the texts of
// dimension 0 are kept by position, since each row of the walk comes back to
// the same ones. Only for identifiers whose texts depend on nothing but their
// offsets (id_spec_walk_ready); the caller owns it.
struct WalkTexts {
    static constexpr std::size_t POSITIONS = 1024;  // of dimension 0 kept
    // Texts are kept in slots of this size, zero behind the text, so that
    // the identifier is put together from two fixed-size copies.
    static constexpr std::size_t SLOT = 32;
    static_assert(SLOT >= ID_TEXT_SIZE);
    bool head_valid = false;
    std::int64_t head_position[2] = {};  // of dimensions 1 and 2
    std::size_t head_length = 0;
    char head[SLOT] = {};
    // The texts of dimensions 0 and 1 by position.
    std::array<std::array<std::uint8_t, POSITIONS>, 2> known{};  // 1 + the length of a kept text, 0: none
    char kept[2][POSITIONS][SLOT] = {};
};
// The room id_spec_walk_compose writes in: the longest identifier's place
// for its head and a whole slot behind it.
inline constexpr std::size_t ID_COMPOSE_ROOM = ID_TEXT_MAX + WalkTexts::SLOT;

// A label operation: the text of a position of a dimension (custom point
// labels, manual labels). The text stays valid until the next label call.
struct LabelOp {
    const char* (*label)(void* context, std::uint16_t position, int dimension) = nullptr;
    void* context = nullptr;
};

// Ranged dimensions 0, 1, 2 from start and end texts and steps.
void id_spec_init_ranges(IdSpec& id_spec, const char* prefix, const char* const start[3],
                         const char* const end[3], const std::int32_t step[3]);

// Manual dimensions: sizes are the label counts, texts "S1".."S4", "E1".."E4".
void id_spec_init_manual(IdSpec& id_spec, const std::int64_t size[4], const std::int32_t step[4],
                         std::int32_t file_type);

// Works out the dimension's current_text at `offset`, with the table of
// recent texts when `recent_texts` is not nullptr.
void id_dimension_refresh(IdDimension& dim, std::int32_t file_type, std::int64_t offset,
                          RecentTexts* recent_texts);
void id_spec_refresh(IdSpec& id_spec, std::int32_t file_type);

// Joins the dimension texts (from the highest used one down) into out, which
// holds ID_TEXT_SIZE bytes; longer results are cut to ID_TEXT_MAX characters.
// label and suffix may be nullptr.
void id_spec_compose(const IdSpec& id_spec, char* out, int with_prefix, const LabelOp* label,
                     const char* suffix, int suffix_dimension, std::int32_t file_type);

// current_text of the dimension into out (ID_TEXT_SIZE bytes).
void id_spec_dimension_text(const IdSpec& id_spec, char* out, int dimension, std::int32_t file_type);

// Whether WalkTexts can compose the identifiers of id_spec: a layout of
// ranges (no manual labels) whose dimensions in use all have a start and an
// end text that subtract, so that every dimension's text is a function of
// its offset alone (a pair that doesn't subtract keeps the text it had).
bool id_spec_walk_ready(const IdSpec& id_spec, std::int32_t file_type);

// Forgets what `texts` kept.
void walk_texts_reset(WalkTexts& texts);

// For an IdSpec that is walk-ready: the identifier with the prefix at the
// cursor's positions, the same text that id_spec_refresh and then
// id_spec_compose (with the prefix, no label, no suffix) make, into out
// (ID_COMPOSE_ROOM bytes, of which those behind the text's terminator may
// change); returns its length. Dimension 0's current text is left as a
// refresh leaves it.
std::size_t id_spec_walk_compose(IdSpec& id_spec, WalkTexts& texts, std::int32_t file_type,
                                 char* out);
// The same when the texts already keep every part of the identifier (the
// usual step of a walk): made from the kept head and the kept text of
// dimension 0, two fixed-size copies. WALK_NOT_KEPT, having changed
// nothing, when a part isn't kept.
inline constexpr std::size_t WALK_NOT_KEPT = ~std::size_t{0};
inline std::size_t id_spec_walk_compose_kept(IdSpec& id_spec, WalkTexts& texts, char* out) {
    const auto& p = id_spec.cursor.dim_position;
    if (!texts.head_valid || texts.head_position[0] != p[1] || texts.head_position[1] != p[2] ||
        static_cast<std::uint64_t>(p[0]) >= WalkTexts::POSITIONS) {
        return WALK_NOT_KEPT;
    }
    const auto k = static_cast<std::size_t>(p[0]);
    if (texts.known[0][k] == 0) return WALK_NOT_KEPT;
    const char* kept = texts.kept[0][k];
    std::memcpy(id_spec.dims[0].current_text, kept, ID_TEXT_SIZE);
    const std::size_t n = texts.head_length;
    std::memcpy(out, texts.head, WalkTexts::SLOT);
    std::memcpy(out + n, kept, WalkTexts::SLOT);
    const std::size_t length = texts.known[0][k] - 1u;
    const std::size_t end = n + (length < ID_TEXT_MAX - n ? length : ID_TEXT_MAX - n);
    out[end] = '\0';
    return end;
}

// "", "IN", "FT", "MM", "M" for 0 to 4; "" above.
const char* elevation_unit_text(std::int64_t elevation_unit);

// One step of the walk with the texts refreshed; the new storage index.
std::int64_t id_spec_advance(IdSpec& id_spec, std::uint8_t first_inc, std::uint8_t second_inc,
                             std::uint8_t third_inc, std::int32_t walk_pattern,
                             std::int32_t file_type, std::uint8_t fourth_inc);

}  // namespace ugf
