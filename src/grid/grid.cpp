#include "grid/grid.h"

#include "store/session_id.h"
#include "present/reading_value.h"
#include "present/scan_head.h"
#include "store/record.h"
#include "store/scan.h"

namespace ugf {

namespace {

// The low 32 bits of the dimension sizes, unsigned: a size that couldn't be
// measured (-1) runs on until a slot can't be read. Storage indexes of cells
// and titles are computed in the same 32 bits, as the slot offsets are.
struct GridSizes {
    std::uint32_t s0 = 0;
    std::uint32_t s1 = 0;
    std::uint32_t s2 = 0;
    std::uint32_t s3 = 0;
};

GridSizes sizes_of(const DlSession& session) {
    const auto& size = session.id_spec.cursor.dim_size;
    return {static_cast<std::uint32_t>(size[0]), static_cast<std::uint32_t>(size[1]),
            static_cast<std::uint32_t>(size[2]), static_cast<std::uint32_t>(size[3])};
}

// The storage index of positions x, y, k, m of dimensions 0 to 3.
std::uint32_t index_of(const GridSizes& g, std::uint32_t x, std::uint32_t y, std::uint32_t k = 0, std::uint32_t m = 0) {
    return grid_storage_index(g.s0, g.s1, g.s2, x, y, k, m);
}

// The title of a dimension at a storage index, with its comma in front
// (",%s", a column title) or behind it ("%s,", a row title).
int write_title(DlSession& session, CsvSink& sink, int dimension, std::uint32_t index, bool comma_first) {
    char text[ID_TEXT_SIZE] = {};
    session_dimension_text(session, index, text, dimension, 1);
    StoredCell cell;
    stored_cell(cell, text, sink);
    char piece[ID_TEXT_SIZE + 1 + QUOTED_EXTRA_MAX];
    format_text_bounded(piece, ID_TEXT_SIZE + 1 + cell.extra, comma_first ? ",%s" : "%s,", cell.text);
    return csv_write(piece, sink);
}

// The empty titles over the rest of a group of `width` columns. A group
// without columns has none.
int write_filler(CsvSink& sink, std::uint32_t width) {
    for (std::uint32_t i = 1; i < width; ++i) {
        if (csv_write(",", sink) == 0) return 0;
    }
    return 1;
}

// Number of titles of a row of groups: a product of sizes, at most
// UINT64_MAX.
std::uint64_t titles_of(std::uint64_t groups, std::uint64_t per_group) {
    std::uint64_t titles = 0;
    return __builtin_mul_overflow(groups, per_group, &titles) ? UINT64_MAX : titles;
}

// Titles read no slot, so a size that couldn't be measured (running on as
// 4294967295) or one far beyond the file would make a grid write titles for
// ever: the title rows, and the row titles of a grid whose rows hold no cell.
// Any grid may have up to MIN_TITLE_LIMIT titles in a row or column, and more
// only when the file has as many slots; past that, the grid fails at once on
// the first missing slot. A grid whose rows hold cells is bounded by its cells
// anyway: the first cell past the end of the file ends it.
constexpr std::uint64_t MIN_TITLE_LIMIT = 65536;

// The cells a grid may still read: one more than the file has slots (that
// one is past the end of a sound file and reports its read error). Slot
// offsets wrap at 2^32, so the huge indexes of a damaged survey alias slots
// near the start of the table and could be read again and again; a sound
// grid visits each slot once. Unlike a walk, a grid can't cycle through a
// few slots while its output stays bounded: the storage indexes of its cells
// differ from each other and lie below their count, so a slot is read twice
// only from some 2^28 cells on (where 16-byte slots behind the tables wrap),
// gigabytes of text and far beyond WALK_POINT_LIMIT. Any smaller grid reads
// every cell or fails on the first slot past the end of the file before its
// budget runs out.
struct CellBudget {
    std::uint64_t left = 0;
};

int write_budgeted_cell(DlSession& session, std::uint32_t storage_index, CsvSink& sink,
                        DigitLayout layout, CellBudget& budget) {
    if (budget.left == 0) return 0;
    --budget.left;
    return write_grid_cell(session, storage_index, sink, layout);
}

int titles_fit(DlSession& session, std::uint64_t columns, std::uint64_t rows) {
    const std::uint64_t capacity = slot_capacity(session);
    const std::uint64_t limit = capacity > MIN_TITLE_LIMIT ? capacity : MIN_TITLE_LIMIT;
    if (columns <= limit && (columns != 0 || rows <= limit)) return 1;
    ReadingRecord missing{};
    read_record_head(session, missing, reading_slot_offset(session, static_cast<std::int64_t>(capacity)));
    return 0;
}

}  // namespace

int read_grid_reading(DlSession& session, std::int64_t storage_index, GridReading& cell) {
    ReadingRecord& reading = cell.reading;
    const AscanRecord*& scan = cell.scan;
    int& velocity_cell = cell.velocity_cell;
    reading = ReadingRecord{};
    scan = nullptr;
    velocity_cell = 0;
    ScanStore& scan_store = *session.scan_store;
    if (read_reading(session, storage_index, reading, scan_store, 0) == 0) return 0;
    merge_grid_head(session, reading, scan_store, scan, velocity_cell);
    return 1;
}

int write_grid_cell(DlSession& session, std::int64_t storage_index, CsvSink& sink, DigitLayout layout) {
    GridReading cell;
    if (read_grid_reading(session, storage_index, cell) == 0) return 0;
    return print_reading_value(session, cell.reading, sink, 1, layout, 0, cell.scan,
                               cell.scan != nullptr ? session.scan_store : nullptr,
                               cell.velocity_cell);
}

int export_grid_1d(DlSession& session, CsvSink& sink) {
    const GridSizes g = sizes_of(session);
    const DigitLayout layout = digit_layout_of(session.gage_type);
    if (titles_fit(session, g.s0, g.s1) == 0) return 0;
    CellBudget budget{slot_capacity(session) + 1};
    for (std::uint32_t c = 0; c < g.s0; ++c) {
        if (write_title(session, sink, 0, index_of(g, c, 0), true) == 0) return 0;
    }
    if (csv_write(",\n", sink) == 0) return 0;
    for (std::uint32_t r = 0; r < g.s1; ++r) {
        if (write_title(session, sink, 1, index_of(g, 0, r), false) == 0) return 0;
        for (std::uint32_t c = 0; c < g.s0; ++c) {
            if (write_budgeted_cell(session, index_of(g, c, r), sink, layout, budget) == 0) return 0;
        }
        if (csv_write(",\n", sink) == 0) return 0;
    }
    return 1;
}

int export_grid_2d(DlSession& session, CsvSink& sink) {
    const GridSizes g = sizes_of(session);
    const DigitLayout layout = digit_layout_of(session.gage_type);
    if (titles_fit(session, g.s1, g.s0) == 0) return 0;
    CellBudget budget{slot_capacity(session) + 1};
    if (csv_write(",", sink) == 0) return 0;
    for (std::uint32_t r = 0; r < g.s1; ++r) {
        if (write_title(session, sink, 1, index_of(g, 0, r), false) == 0) return 0;
    }
    if (csv_write("\n", sink) == 0) return 0;
    for (std::uint32_t i = 0; i < g.s0; ++i) {
        if (write_title(session, sink, 0, index_of(g, i, 0), false) == 0) return 0;
        for (std::uint32_t j = 0; j < g.s1; ++j) {
            if (write_budgeted_cell(session, index_of(g, i, j), sink, layout, budget) == 0) return 0;
        }
        if (csv_write("\n", sink) == 0) return 0;
    }
    return 1;
}

int export_grid_3d(DlSession& session, CsvSink& sink) {
    const GridSizes g = sizes_of(session);
    const DigitLayout layout = digit_layout_of(session.gage_type);
    if (titles_fit(session, titles_of(g.s2, g.s0), g.s1) == 0) return 0;
    CellBudget budget{slot_capacity(session) + 1};
    for (std::uint32_t k = 0; k < g.s2; ++k) {
        if (write_title(session, sink, 2, index_of(g, 0, 0, k), true) == 0) return 0;
        if (write_filler(sink, g.s0) == 0) return 0;
    }
    if (csv_write(",\n", sink) == 0) return 0;
    for (std::uint32_t k = 0; k < g.s2; ++k) {
        for (std::uint32_t c = 0; c < g.s0; ++c) {
            if (write_title(session, sink, 0, index_of(g, c, 0), true) == 0) return 0;
        }
    }
    if (csv_write(",\n", sink) == 0) return 0;
    for (std::uint32_t r = 0; r < g.s1; ++r) {
        if (write_title(session, sink, 1, index_of(g, 0, r), false) == 0) return 0;
        for (std::uint32_t k = 0; k < g.s2; ++k) {
            for (std::uint32_t c = 0; c < g.s0; ++c) {
                if (write_budgeted_cell(session, index_of(g, c, r, k), sink, layout, budget) == 0) return 0;
            }
        }
        if (csv_write(",\n", sink) == 0) return 0;
    }
    return 1;
}

int export_grid_4d(DlSession& session, CsvSink& sink) {
    const GridSizes g = sizes_of(session);
    const DigitLayout layout = digit_layout_of(session.gage_type);
    if (titles_fit(session, titles_of(titles_of(g.s3, g.s2), g.s0), g.s1) == 0) return 0;
    CellBudget budget{slot_capacity(session) + 1};
    for (std::uint32_t m = 0; m < g.s3; ++m) {
        if (write_title(session, sink, 3, index_of(g, 0, 0, 0, m), true) == 0) return 0;
        if (write_filler(sink, g.s0 * g.s2) == 0) return 0;
    }
    if (csv_write(",\n", sink) == 0) return 0;
    for (std::uint32_t m = 0; m < g.s3; ++m) {
        for (std::uint32_t k = 0; k < g.s2; ++k) {
            if (write_title(session, sink, 2, index_of(g, 0, 0, k), true) == 0) return 0;
            if (write_filler(sink, g.s0) == 0) return 0;
        }
    }
    if (csv_write(",\n", sink) == 0) return 0;
    for (std::uint32_t m = 0; m < g.s3; ++m) {
        for (std::uint32_t k = 0; k < g.s2; ++k) {
            for (std::uint32_t c = 0; c < g.s0; ++c) {
                if (write_title(session, sink, 0, index_of(g, c, 0), true) == 0) return 0;
            }
        }
    }
    if (csv_write(",\n", sink) == 0) return 0;
    for (std::uint32_t r = 0; r < g.s1; ++r) {
        if (write_title(session, sink, 1, index_of(g, 0, r), false) == 0) return 0;
        for (std::uint32_t m = 0; m < g.s3; ++m) {
            for (std::uint32_t k = 0; k < g.s2; ++k) {
                for (std::uint32_t c = 0; c < g.s0; ++c) {
                    const std::uint32_t index = index_of(g, c, r, k, m);
                    if (write_budgeted_cell(session, index, sink, layout, budget) == 0) return 0;
                }
            }
        }
        if (csv_write(",\n", sink) == 0) return 0;
    }
    return 1;
}

}  // namespace ugf
