#include "ident/id_spec.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "base/console.h"
#include "base/text_builder.h"

namespace ugf {
namespace {

bool is_letter(char c) { return c >= 'A' && c <= 'Z'; }
bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Copies at most ID_TEXT_MAX characters of src (absent: empty) into dst,
// which holds ID_TEXT_SIZE bytes, and terminates it.
void copy_text(char* dst, const char* src) {
    std::size_t n = 0;
    if (src != nullptr) {
        while (n < ID_TEXT_MAX && src[n] != '\0') {
            dst[n] = src[n];
            ++n;
        }
    }
    dst[n] = '\0';
}

// Appends src behind the first n characters of dst (ID_TEXT_SIZE bytes),
// cutting the whole at ID_TEXT_MAX characters; returns the new length.
std::size_t append_at(char* dst, std::size_t n, const char* src) {
    if (src != nullptr) {
        for (std::size_t i = 0; n < ID_TEXT_MAX && src[i] != '\0'; ++i) dst[n++] = src[i];
    }
    dst[n] = '\0';
    return n;
}

void clear_dimension(IdDimension& dim) {
    dim.start_text[0] = '\0';
    dim.end_text[0] = '\0';
    dim.current_text[0] = '\0';
    dim.step = 0;
}

// Writes offset in the radices of the template (26 for a letter position,
// 10 otherwise), as long as the template, into out. 0 when the offset
// doesn't fit: negative, or a position would need a count beyond its radix
// (only positions outside the range get there); such a text has no
// identifier characters, so it can't be added.
int write_offset_text(const char* templ, std::size_t length, std::int64_t offset, char* out) {
    if (offset < 0 || length == 0 || length > ID_TEXT_MAX) return 0;
    std::uint64_t rest = static_cast<std::uint64_t>(offset);
    for (std::size_t i = 0; i < length; ++i) {
        bool letter = is_letter(templ[i]);
        std::uint64_t radix = letter ? 26 : 10;
        std::uint64_t count = rest;
        if (i + 1 < length) {
            // Weight of the position; once it passes any possible offset it
            // stops growing, so the product can't wrap.
            std::uint64_t weight = 1;
            for (std::size_t j = i + 1; j < length && weight <= rest; ++j) {
                if (weight > UINT64_MAX / 26) {
                    weight = UINT64_MAX;  // above any offset: the count is 0
                    break;
                }
                weight *= is_letter(templ[j]) ? 26 : 10;
            }
            count = rest / weight;
            rest -= count * weight;
        }
        if (count >= radix) return 0;
        out[i] = static_cast<char>((letter ? 'A' : '0') + static_cast<int>(count));
    }
    out[length] = '\0';
    return 1;
}

// A carry out of the added positions runs on to the left inside the tail:
// "9" becomes "0" and "Z" becomes "A" and pass it on, anything else takes it.
// It stops at the last "-"; out of the first position it goes nowhere.
void run_carry(char* text, std::size_t end) {
    for (std::size_t i = end; i > 0; --i) {
        char& c = text[i - 1];
        if (c == '9') {
            c = '0';
        } else if (c == 'Z') {
            c = 'A';
        } else {
            if (is_letter(c) || is_digit(c)) ++c;
            return;
        }
    }
}

}  // namespace

void id_spec_init_ranges(IdSpec& id_spec, const char* prefix, const char* const start[3],
                         const char* const end[3], const std::int32_t step[3]) {
    copy_text(id_spec.prefix, prefix);
    for (int d = 0; d < 3; ++d) {
        IdDimension& dim = id_spec.dims[d];
        const char* start_text = start != nullptr ? start[d] : nullptr;
        const char* end_text = end != nullptr ? end[d] : nullptr;
        std::int32_t dim_step = step != nullptr ? step[d] : 0;
        // No start text, or a step of 0 (which the instrument refuses, so
        // only a damaged file holds it): the dimension is not in use.
        if (start_text == nullptr || start_text[0] == '\0' || dim_step == 0) {
            clear_dimension(dim);
            id_spec.cursor.dim_size[d] = 0;
            id_spec.cursor.dim_position[d] = 0;
            continue;
        }
        dim.step = dim_step;
        copy_text(dim.start_text, start_text);
        copy_text(dim.end_text, end_text);
        std::int64_t difference = 0;
        char result[ID_TEXT_SIZE];
        // The size counts whole steps; the quotient of two values of at most
        // ID_VALUE_MAX by a non-zero 32-bit step can't overflow.
        id_spec.cursor.dim_size[d] = id_text_subtract(dim.end_text, dim.start_text, &difference, result)
                                      ? difference / dim_step + 1
                                      : -1;
        copy_text(dim.current_text, dim.start_text);
        id_spec.cursor.dim_position[d] =
            id_text_subtract(dim.current_text, dim.start_text, &difference, result)
                ? difference / dim_step
                : -1;
    }
}

void id_spec_init_manual(IdSpec& id_spec, const std::int64_t size[4], const std::int32_t step[4],
                         std::int32_t file_type) {
    static constexpr char START[4][3] = {"S1", "S2", "S3", "S4"};
    static constexpr char END[4][3] = {"E1", "E2", "E3", "E4"};
    int used = file_type == FILE_TYPE_2D_MANUAL   ? 2
               : file_type == FILE_TYPE_3D_MANUAL ? 3
               : file_type == FILE_TYPE_4D_MANUAL ? 4
                                                  : 0;
    id_spec.prefix[0] = '\0';
    for (int d = 0; d < 4; ++d) {
        IdDimension& dim = id_spec.dims[d];
        copy_text(dim.start_text, START[d]);
        copy_text(dim.end_text, END[d]);
        dim.current_text[0] = '\0';
        bool takes = d < used;
        dim.step = takes && step != nullptr ? step[d] : 0;
        id_spec.cursor.dim_size[d] = takes && size != nullptr ? size[d] : 0;
        id_spec.cursor.dim_position[d] = 0;
    }
}

namespace {

// The template of a dimension's offsets: the counted part of end less start
// without its leading zero characters, but with one of them kept in front as
// a spare position (an all-zero difference leaves one zero character).
// nullptr when the texts don't subtract. Remembered with the texts.
const char* offset_template(IdDimension& dim) {
    IdDimension::SpanMemo& span = dim.span;
    if (span.valid && std::memcmp(span.start_text, dim.start_text, ID_TEXT_SIZE) == 0 &&
        std::memcmp(span.end_text, dim.end_text, ID_TEXT_SIZE) == 0) {
        return span.subtracts ? span.offset_template : nullptr;
    }
    std::int64_t difference = 0;
    char result[ID_TEXT_SIZE];
    span.subtracts = id_text_subtract(dim.end_text, dim.start_text, &difference, result) != 0;
    if (span.subtracts) {
        const char* tail = std::strrchr(result, '-');
        tail = tail != nullptr ? tail + 1 : result;
        const char* templ = tail;
        while (*templ == 'A' || *templ == '0') ++templ;
        if (templ != tail) --templ;
        copy_text(span.offset_template, templ);
    }
    std::memcpy(span.start_text, dim.start_text, ID_TEXT_SIZE);
    std::memcpy(span.end_text, dim.end_text, ID_TEXT_SIZE);
    span.valid = true;
    return span.subtracts ? span.offset_template : nullptr;
}

// The work of id_dimension_refresh for a dimension in use. Returns 0 when the
// start and end texts don't subtract: current_text is then left as it was, so
// that outcome depends on more than the inputs and is never remembered.
int compute_dimension_text(IdDimension& dim, std::int32_t file_type, std::int64_t offset) {
    if (is_manual_layout(file_type)) {
        format_text(dim.current_text, ID_TEXT_SIZE, "%lld", static_cast<long long>(offset));
        return 1;
    }
    const char* templ = offset_template(dim);
    if (templ == nullptr) return 0;
    std::size_t width = std::strlen(templ);

    char offset_text[ID_TEXT_SIZE] = {};
    int fits = write_offset_text(templ, width, offset, offset_text);
    dim.current_text[0] = '\0';
    std::size_t length = std::strlen(dim.start_text);
    if (fits == 0 || width > length) return 1;

    // Only the last `width` positions of the start pass through the
    // arithmetic, so a long start (12 digits, say) works although its whole
    // value lies far above the limit.
    std::size_t kept = length - width;
    std::int64_t value = 0;
    std::int32_t carry = 0;
    char sum[ID_TEXT_SIZE];
    if (id_text_add(dim.start_text + kept, offset_text, &value, &carry, sum) == 0) return 1;
    char current[ID_TEXT_SIZE] = {};
    std::memcpy(current, dim.start_text, kept);
    copy_text(current + kept, sum);
    if (carry != 0) run_carry(current, kept);
    copy_text(dim.current_text, current);
    return 1;
}

}  // namespace

namespace {

KnownText& recent_slot(RecentTexts& recent_texts, const IdDimension& dim, std::int64_t offset) {
    std::uint64_t start_head = 0;
    std::uint64_t end_head = 0;
    std::memcpy(&start_head, dim.start_text, sizeof start_head);
    std::memcpy(&end_head, dim.end_text, sizeof end_head);
    // The dimension's texts choose where its run of slots begins, and the
    // offset goes on from there: the texts of nearby offsets share pages
    // of the table, each of which costs a fault the first time it is used.
    std::uint64_t h = (start_head * 0xBF58476D1CE4E5B9ull) ^ (end_head * 0x94D049BB133111EBull);
    h ^= h >> 29;
    h += static_cast<std::uint64_t>(offset);
    return recent_texts.slots[static_cast<std::size_t>(h) & (RECENT_TEXT_SLOTS - 1)];
}

bool same_texts(const char* a, const char* b) { return std::memcmp(a, b, ID_TEXT_SIZE) == 0; }

// Whether `known` holds the text of the dimension at `offset`.
bool holds(const KnownText& known, const IdDimension& dim, bool manual, std::int64_t offset) {
    return known.valid && known.manual == manual && known.offset == offset &&
           same_texts(known.start_text, dim.start_text) && same_texts(known.end_text, dim.end_text);
}

// Keeps the dimension's current text in `known` as its text at `offset`.
void remember(KnownText& known, const IdDimension& dim, bool manual, std::int64_t offset) {
    known.valid = true;
    known.manual = manual;
    known.offset = offset;
    std::memcpy(known.start_text, dim.start_text, ID_TEXT_SIZE);
    std::memcpy(known.end_text, dim.end_text, ID_TEXT_SIZE);
    std::memcpy(known.result, dim.current_text, ID_TEXT_SIZE);
}

}  // namespace

void id_dimension_refresh(IdDimension& dim, std::int32_t file_type, std::int64_t offset,
                          RecentTexts* recent_texts) {
    if (dim.step == 0) {
        dim.current_text[0] = '\0';
        return;
    }
    const bool manual = is_manual_layout(file_type);
    if (holds(dim.memo, dim, manual, offset)) {
        std::memcpy(dim.current_text, dim.memo.result, ID_TEXT_SIZE);
        return;
    }
    KnownText* recent = recent_texts != nullptr ? &recent_slot(*recent_texts, dim, offset) : nullptr;
    if (recent != nullptr && holds(*recent, dim, manual, offset)) {
        std::memcpy(dim.current_text, recent->result, ID_TEXT_SIZE);
    } else {
        // A dimension whose texts don't subtract keeps its text, which is
        // then more than its inputs decide: it is never remembered.
        dim.memo.valid = compute_dimension_text(dim, file_type, offset) == 1;
        if (!dim.memo.valid) return;
        if (recent != nullptr) remember(*recent, dim, manual, offset);
    }
    remember(dim.memo, dim, manual, offset);
}

void id_spec_refresh(IdSpec& id_spec, std::int32_t file_type) {
    for (int d = 0; d < 4; ++d) {
        // step x position wraps in 64 bits; only damaged positions get there.
        auto step = static_cast<std::uint64_t>(static_cast<std::int64_t>(id_spec.dims[d].step));
        std::uint64_t offset = step * static_cast<std::uint64_t>(id_spec.cursor.dim_position[d]);
        id_dimension_refresh(id_spec.dims[d], file_type, static_cast<std::int64_t>(offset),
                             id_spec.recent_texts);
    }
}

void id_spec_compose(const IdSpec& id_spec, char* out, int with_prefix, const LabelOp* label,
                     const char* suffix, int suffix_dimension, std::int32_t file_type) {
    if (out == nullptr) return;
    out[0] = '\0';
    bool manual = is_manual_layout(file_type);
    bool has_label = label != nullptr && label->label != nullptr;
    if (file_type == FILE_TYPE_4D_MANUAL) suffix = nullptr;
    std::size_t n = 0;  // the length of out
    int highest = 2;
    if (file_type == FILE_TYPE_4D_MANUAL) {
        highest = 3;
    } else if (with_prefix == 1 && id_spec.prefix[0] != '\0') {
        n = append_at(out, n, id_spec.prefix);
    }
    for (int d = highest; d >= 0; --d) {
        const IdDimension& dim = id_spec.dims[d];
        if (dim.current_text[0] == '\0') continue;  // not in use, suffix included
        auto position = static_cast<std::uint16_t>(id_spec.cursor.dim_position[d]);
        const char* text = dim.current_text;
        if (manual) {
            // The counted text of a manual dimension is never shown; without
            // a label operation the dimension shows nothing.
            text = has_label ? label->label(label->context, position, d) : "";
        } else if (d == 0 && has_label) {
            text = label->label(label->context, position, 0);
        }
        n = append_at(out, n, text);
        if (suffix != nullptr && d == suffix_dimension) n = append_at(out, n, suffix);
    }
}

void id_spec_dimension_text(const IdSpec& id_spec, char* out, int dimension, std::int32_t file_type) {
    (void)file_type;
    if (out == nullptr) return;
    if (dimension < 0 || dimension > 3) {
        out[0] = '\0';
        return;
    }
    copy_text(out, id_spec.dims[dimension].current_text);
}

namespace {

// step x position, wrapping in 64 bits as id_spec_refresh computes it.
std::int64_t dimension_offset(const IdSpec& id_spec, int d) {
    auto step = static_cast<std::uint64_t>(static_cast<std::int64_t>(id_spec.dims[d].step));
    return static_cast<std::int64_t>(step * static_cast<std::uint64_t>(id_spec.cursor.dim_position[d]));
}

}  // namespace

bool id_spec_walk_ready(const IdSpec& id_spec, std::int32_t file_type) {
    if (is_manual_layout(file_type)) return false;
    for (const IdDimension& dim : id_spec.dims) {
        if (dim.step == 0) continue;  // always the empty text
        std::int64_t difference = 0;
        char result[ID_TEXT_SIZE];
        if (id_text_subtract(dim.end_text, dim.start_text, &difference, result) == 0) return false;
    }
    return true;
}

void walk_texts_reset(WalkTexts& texts) {
    texts.head_valid = false;
    for (auto& known : texts.known) known.fill(0);
}

namespace {

// The text of dimension d (0 or 1) at its position, from the walk's kept
// texts (WalkTexts::SLOT bytes) or made and kept; the dimension's current
// text is left as a refresh leaves it. Sets the text's length. A position
// past the kept ones is refreshed, its text the current text.
const char* kept_text(IdSpec& id_spec, WalkTexts& texts, int d, std::int32_t file_type, std::size_t& length) {
    IdDimension& dim = id_spec.dims[d];
    const std::int64_t position = id_spec.cursor.dim_position[d];
    if (position < 0 || position >= static_cast<std::int64_t>(WalkTexts::POSITIONS)) {
        id_dimension_refresh(dim, file_type, dimension_offset(id_spec, d), id_spec.recent_texts);
        length = std::strlen(dim.current_text);
        return dim.current_text;
    }
    const auto k = static_cast<std::size_t>(position);
    char* kept = texts.kept[d][k];
    std::uint8_t& known = texts.known[d][k];
    if (known == 0) {
        // The kept texts are the walk's own memo: the table of recent texts
        // would only be written (and its pages touched) for texts the walk
        // keeps anyway.
        id_dimension_refresh(dim, file_type, dimension_offset(id_spec, d), nullptr);
        std::memcpy(kept, dim.current_text, ID_TEXT_SIZE);
        known = static_cast<std::uint8_t>(std::strlen(kept) + 1);
    } else {
        std::memcpy(dim.current_text, kept, ID_TEXT_SIZE);
    }
    length = known - 1u;
    return kept;
}

}  // namespace

std::size_t id_spec_walk_compose(IdSpec& id_spec, WalkTexts& texts, std::int32_t file_type,
                                 char* out) {
    const auto& p = id_spec.cursor.dim_position;
    if (!texts.head_valid || texts.head_position[0] != p[1] || texts.head_position[1] != p[2]) {
        // The layouts of ranges show the prefix and dimensions 2, 1 and 0.
        // Dimension 2 changes least often: its own memo keeps its text.
        std::size_t n = append_at(texts.head, 0, id_spec.prefix);
        id_dimension_refresh(id_spec.dims[2], file_type, dimension_offset(id_spec, 2), nullptr);
        n = append_at(texts.head, n, id_spec.dims[2].current_text);
        std::size_t second_length = 0;
        n = append_at(texts.head, n, kept_text(id_spec, texts, 1, file_type, second_length));
        texts.head_length = n;
        texts.head_position[0] = p[1];
        texts.head_position[1] = p[2];
        texts.head_valid = true;
    }
    const std::size_t n = texts.head_length;
    std::memcpy(out, texts.head, WalkTexts::SLOT);
    std::size_t length = 0;
    const char* text = kept_text(id_spec, texts, 0, file_type, length);
    // A kept text fills its slot; a current text only its ID_TEXT_SIZE bytes.
    if (text != id_spec.dims[0].current_text) {
        std::memcpy(out + n, text, WalkTexts::SLOT);
    } else {
        copy_bytes(out + n, text, length + 1);
    }
    const std::size_t take = std::min(length, ID_TEXT_MAX - n);
    out[n + take] = '\0';
    return n + take;
}

const char* elevation_unit_text(std::int64_t elevation_unit) {
    switch (elevation_unit) {
        case 1: return "IN";
        case 2: return "FT";
        case 3: return "MM";
        case 4: return "M";
        default: return "";
    }
}

std::int64_t id_spec_advance(IdSpec& id_spec, std::uint8_t first_inc, std::uint8_t second_inc,
                             std::uint8_t third_inc, std::int32_t walk_pattern,
                             std::int32_t file_type, std::uint8_t fourth_inc) {
    cursor_walk(id_spec.cursor, first_inc, second_inc, third_inc, walk_pattern, file_type, fourth_inc);
    id_spec_refresh(id_spec, file_type);
    return cursor_flat_index(id_spec.cursor);
}

}  // namespace ugf
