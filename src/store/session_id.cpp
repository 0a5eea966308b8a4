#include "store/session_id.h"

#include <cstring>

#include "store/record.h"

namespace ugf {

namespace {

// Copies at most ID_TEXT_MAX characters of src behind the text in out
// (ID_TEXT_SIZE bytes) and terminates it.
void append_cut(char* out, const char* src) {
    std::size_t n = std::strlen(out);
    for (std::size_t i = 0; n < ID_TEXT_MAX && src[i] != '\0'; ++i) out[n++] = src[i];
    out[n] = '\0';
}

bool has_custom_points(std::int32_t file_type) {
    return file_type == FILE_TYPE_LINEAR_CPT || file_type == FILE_TYPE_2D_CPT ||
           file_type == FILE_TYPE_BOILER;
}

bool keeps_stored_ids(std::int32_t file_type) {
    return file_type == FILE_TYPE_MANUAL || file_type == FILE_TYPE_INCREMENTAL;
}

void seek_and_refresh(DlSession& session, std::int64_t storage_index) {
    cursor_seek(session.id_spec.cursor, storage_index);
    id_spec_refresh(session.id_spec, session.file_type);
}

std::uint16_t position_of(const DlSession& session, int dimension) {
    return static_cast<std::uint16_t>(
        session.id_spec.cursor.dim_position[static_cast<std::size_t>(dimension)]);
}

}  // namespace

void session_stored_id(DlSession& session, std::int64_t storage_index, char* out) {
    const std::uint64_t slot = reading_slot_offset(session, storage_index);
    ReadingRecord record{};
    if (read_record_head(session, record, slot) == 0) {
        out[0] = '\0';
        return;
    }
    char text[STORED_ID_READ_MAX + 1] = {};
    if (read_text(session.dl_stream, stored_id_offset(slot), text, sizeof text, STORED_ID_READ_MAX) == 0) {
        return;
    }
    out[0] = '\0';
    append_cut(out, text);
}

void session_point_id(DlSession& session, std::int64_t storage_index, char* out, int with_prefix) {
    seek_and_refresh(session, storage_index);
    const std::int32_t type = session.file_type;
    if (keeps_stored_ids(type)) {
        session_stored_id(session, storage_index, out);
        return;
    }
    const char* suffix = type == FILE_TYPE_BOILER ? elevation_unit_text(session.elevation_unit) : nullptr;
    LabelOp label{};
    if (has_custom_points(type)) {
        label = custom_point_label_op(session);
    } else if (is_manual_layout(type)) {
        label = manual_label_op(session);
    }
    id_spec_compose(session.id_spec, out, with_prefix, label.label != nullptr ? &label : nullptr,
                    suffix, 1, type);
}

PointWalk point_walk_begin(DlSession& session) {
    session.id_spec.cursor = session.opened_cursor;
    PointWalk walk;
    walk.total = point_total_of(session.id_spec.cursor);
    const std::uint64_t slots = slot_capacity(session);
    const bool runaway = walk.total > slots && walk.total > WALK_POINT_LIMIT;
    walk.last_visit = runaway ? slots : walk.total;
    walk.dumps_left = slots > WALK_DUMP_LIMIT ? slots : WALK_DUMP_LIMIT;
    const std::int32_t type = session.file_type;
    walk.stored_ids = type == FILE_TYPE_MANUAL;
    walk.stepper = cursor_stepper(session.first_inc, session.second_inc, session.third_inc,
                                  session.walk_pattern, type, session.fourth_inc);
    walk.regular = regular_box(session.id_spec.cursor);
    if (walk.stepper.kind != 0 && walk.stepper.count > 0) {
        walk.first = walk.stepper.number[0] - 1;
        walk.first_stride = 1;
        for (int d = 0; d < walk.first; ++d) {
            walk.first_stride *= static_cast<std::uint64_t>(session.id_spec.cursor.dim_size[d]);
        }
    }
    // Stored identifiers and labels are read from the file and the suffix
    // of the boiler layout comes between the dimensions: those identifiers
    // are composed anew.
    if (!keeps_stored_ids(type) && !has_custom_points(type) && session.memos != nullptr &&
        id_spec_walk_ready(session.id_spec, type)) {
        walk.texts = &session.memos->walk_texts;
        walk_texts_reset(*walk.texts);
    }
    return walk;
}

std::size_t point_walk_id_other(DlSession& session, PointWalk& walk, char* out) {
    if (walk.texts != nullptr) {
        // The cursor goes to the storage index as in session_point_id; the
        // step that made the index has usually put it there already.
        if (!walk.at_index) {
            walk.at_index = walk.regular && cursor_at_index(session.id_spec.cursor, walk.storage_index);
            if (!walk.at_index) cursor_seek(session.id_spec.cursor, walk.storage_index);
        }
        return id_spec_walk_compose(session.id_spec, *walk.texts, session.file_type, out);
    }
    // A stored identifier that can't be read leaves the text empty.
    std::memset(out, 0, ID_TEXT_SIZE);
    if (walk.stored_ids) {
        session_stored_id(session, walk.storage_index, out);
    } else {
        session_point_id(session, walk.storage_index, out, 1);
    }
    return std::strlen(out);
}

void point_walk_advance(DlSession& session, PointWalk& walk) {
    ++walk.visit;
    if (walk.stored_ids) {
        ++walk.storage_index;
        return;
    }
    // The walk steps from the point whose identifier was just composed, with
    // cursor_walk's move made ready at the beginning (the stepper). The
    // texts of the next point are worked out when its identifier is
    // composed, from its storage index: refreshing them here would do it twice.
    // The memo holds when the last step moved only the first dimension and
    // the identifier found the cursor where that step put it (no seek).
    const bool holds = walk.first_only && walk.at_index;
    auto& p = session.id_spec.cursor.dim_position;
    if (holds) {
        // The usual step: the last one moved the first dimension alone
        // inside the box, so this one moves it the same way (the
        // odometer's first place, or the zigzag's kept move) unless it
        // leaves the dimension's size.
        const std::int64_t delta = walk.stepper.kind == 1 ? walk.stepper.delta : walk.zigzag.delta;
        const auto moved = static_cast<std::int64_t>(static_cast<std::uint64_t>(p[walk.first]) +
                                                     static_cast<std::uint64_t>(delta));
        if (moved >= 0 && moved < session.id_spec.cursor.dim_size[walk.first]) {
            p[walk.first] = moved;
            walk.storage_index = static_cast<std::uint32_t>(walk.storage_index +
                                                            static_cast<std::uint64_t>(delta) * walk.first_stride);
            return;
        }
    }
    const std::int64_t before = walk.first >= 0 ? p[walk.first] : 0;
    walk.first_only = cursor_stepper_step(session.id_spec.cursor, walk.stepper, walk.zigzag, holds);
    if (walk.at_index && walk.first_only) {
        // Inside the regular box the flat index moves with the first
        // dimension by its stride (cursor_flat_index less its products).
        const auto moved = static_cast<std::uint64_t>(p[walk.first] - before);
        walk.storage_index = static_cast<std::uint32_t>(walk.storage_index + moved * walk.first_stride);
        return;
    }
    walk.at_index = false;
    const std::int64_t next = cursor_flat_index(session.id_spec.cursor);
    walk.storage_index = static_cast<std::uint32_t>(static_cast<std::uint64_t>(next));
}

void session_dimension_text(DlSession& session, std::int64_t storage_index, char* out,
                            int dimension, int with_unit) {
    seek_and_refresh(session, storage_index);
    const std::int32_t type = session.file_type;
    out[0] = '\0';
    const bool in_box = dimension >= 0 && dimension < DIM_COUNT;
    if (has_custom_points(type) && dimension == 0) {
        append_cut(out, custom_point_label(&session, position_of(session, 0), 0));
    } else if (is_manual_layout(type)) {
        // A 2D-MANUAL file has no dimensions 2 and 3.
        const bool used = in_box && (type != FILE_TYPE_2D_MANUAL || dimension < 2);
        if (used) append_cut(out, manual_label(&session, position_of(session, dimension), dimension));
    } else {
        id_spec_dimension_text(session.id_spec, out, dimension, type);
    }
    if (type == FILE_TYPE_BOILER && dimension == 1 && with_unit == 1) {
        append_cut(out, elevation_unit_text(session.elevation_unit));
    }
}

}  // namespace ugf
