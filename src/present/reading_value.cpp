#include "present/reading_value.h"

#include <array>
#include <cstring>

#include "present/flaw_row.h"
#include "present/number_format.h"
#include "base/text_builder.h"

namespace ugf {

namespace {

// Room for the longest note (30 characters) or for the letters of all 16
// notes with their separators, and the trailing comma.
constexpr std::size_t NOTE_CELL_SIZE = 40;

// The text that stands for a lost thickness in a grid: the note of the
// highest set bit of the mask, or, with several notes, their letters ("A"
// for bit 0) joined by ":". False when the reading has no note.
bool note_cell_text(const DlSession& session, std::uint32_t mask, char* out, std::size_t size) {
    int count = 0;
    int highest = 0;
    for (int b = 0; b < NOTE_COUNT; ++b) {
        if ((mask >> b) & 1u) {
            ++count;
            highest = b;
        }
    }
    if (count == 0) return false;
    if (count == 1) {
        format_text_bounded(out, size, "%s", session.note_table[highest]);
        return true;
    }
    std::size_t n = 0;
    for (int b = 0; b < NOTE_COUNT && n + 2 < size; ++b) {
        if (((mask >> b) & 1u) == 0) continue;
        if (n != 0) out[n++] = ':';
        out[n++] = static_cast<char>('A' + b);
    }
    out[n] = '\0';
    return true;
}

}  // namespace

std::size_t thickness_text(char* out, const ReadingRecord& reading, int layout, std::uint32_t meas_mode,
                           const char* velocity_cell) {
    return thickness_text_form(
        out, reading, length_form(units(reading), resolution(reading), static_cast<DigitLayout>(layout), 0, meas_mode),
        velocity_cell);
}

std::size_t thickness_text_other(char* out, const ReadingRecord& reading, const LengthForm& form,
                                 const char* velocity_cell) {
    out[0] = '\0';
    if (record_type(reading) == RECORD_EMPTY) return 0;
    // The value as "%s" would print it into NUMBER_TEXT_SIZE bytes.
    if (los(reading) != 0) {
        TextBuilder text(out, NUMBER_TEXT_SIZE);
        text.put(form.layout == LAYOUT_PRECISION ? std::string_view("-.---") : std::string_view("--.---"));
        return text.len;
    }
    if (velocity_cell != nullptr) {
        TextBuilder text(out, NUMBER_TEXT_SIZE);
        text.put(velocity_cell);
        return text.len;
    }
    return format_length(out, thickness_length(reading), form);
}

void thickness_cell_text(ThicknessCell& cell, const ReadingRecord& reading, int comma, int layout,
                         std::uint32_t meas_mode, const char* velocity_cell) {
    if (record_type(reading) == RECORD_EMPTY) {
        cell[0] = comma == 1 ? ',' : '\0';
        cell[1] = '\0';
        return;
    }
    // The comma takes the cell's last byte.
    const std::size_t n = thickness_text(cell.data(), reading, layout, meas_mode, velocity_cell);
    if (comma == 1) {
        cell[n] = ',';
        cell[n + 1] = '\0';
    }
}

int print_thickness_cell(const ReadingRecord& reading, CsvSink& sink, int comma, int layout,
                         std::uint32_t meas_mode, const char* velocity_cell) {
    if (record_type(reading) == RECORD_EMPTY) return comma == 1 ? csv_write(",", sink) : 1;
    ThicknessCell cell{};
    thickness_cell_text(cell, reading, comma, layout, meas_mode, velocity_cell);
    return csv_write(cell.data(), sink);
}

int print_reading_value(const DlSession& session, const ReadingRecord& reading, CsvSink& sink,
                        int comma, int layout, int full, const AscanRecord* scan,
                        const ScanStore* store, int velocity_cell) {
    if (session.gage_type == GAGE_FLAW_DETECTOR) {
        return print_flaw_reading(session, reading, sink, full, scan, store);
    }
    const std::uint32_t mode = meas_mode(session.setups[setup_number(reading)].gauge);
    if (los(reading) != 0 && full == 0) {
        std::array<char, NOTE_CELL_SIZE> notes{};
        if (note_cell_text(session, note_mask(reading), notes.data(), notes.size() - 1)) {
            // The letters of several notes never need quotes; a note's own text may.
            StoredCell cell;
            stored_cell(cell, notes.data(), sink);
            std::array<char, NOTE_CELL_SIZE + QUOTED_EXTRA_MAX> text{};
            std::memcpy(text.data(), cell.text, std::strlen(cell.text));
            if (comma == 1) std::strcat(text.data(), ",");
            return csv_write(text.data(), sink);
        }
    }
    return print_thickness_cell(reading, sink, comma, layout, mode,
                                velocity_cell == 1 ? session.velocity_text : nullptr);
}

}  // namespace ugf
