// Reading records: the record of a test point's slot and what its 16 bytes
// mean. Where the slot lies is the file map's (file/file_map.h).
//
// The top three bits of the first word say what the slot holds. A reading
// (1) holds its values; a link (2, 4) holds the file offset of an A-scan or a
// B-scan block, whose head is a record of type 3 or 5. Gage types 5 and 6 use
// the measurement layout behind the first word (u16 thick_lo, u16 note_mask,
// u32 word2, u32 word3); gage type 7 stores three u32, the values of its
// measurement boxes.
#pragma once

#include <cstdint>

#include "file/field.h"
#include "file/session.h"

namespace ugf {

inline constexpr std::uint32_t RECORD_EMPTY = 0;
inline constexpr std::uint32_t RECORD_READING = 1;
inline constexpr std::uint32_t RECORD_ASCAN_LINK = 2;
inline constexpr std::uint32_t RECORD_ASCAN_BLOCK = 3;
inline constexpr std::uint32_t RECORD_BSCAN_LINK = 4;
inline constexpr std::uint32_t RECORD_BSCAN_BLOCK = 5;

// A raw thickness of this value marks a sound velocity reading.
inline constexpr std::uint32_t THICKNESS_IS_VELOCITY = 0xFFFFA;

// File offset of the slot of a storage index (the map's slot_offset).
inline std::uint64_t reading_slot_offset(const DlSession& session, std::int64_t storage_index) {
    return slot_offset(session.map, storage_index);
}
// Number of slots that begin before the end of the file.
std::uint64_t slot_capacity(DlSession& session);

// The fields of a record head from a run of reads (FieldRun on the file, or
// HeadBytes on bytes already read), by the record type and the instrument.
template <typename Run>
[[gnu::always_inline]] inline int fill_record_head(const DlSession& session, ReadingRecord& record, Run& f) {
    record.word0 = f.u32(0);
    if (f.ok == 0) return 0;
    const std::uint32_t type = record.word0 >> 29;  // record_type
    if (type == RECORD_ASCAN_LINK || type == RECORD_BSCAN_LINK) {
        record.word1 = f.u32(4);
        return f.ok;
    }
    if (session.gage_type == GAGE_FLAW_DETECTOR) {
        if (type == RECORD_READING || type == RECORD_BSCAN_BLOCK) {
            record.word1 = f.u32(4);
            record.word2 = f.u32(8);
            record.word3 = f.u32(12);
        }
        return f.ok;
    }
    if (type == RECORD_READING || type == RECORD_ASCAN_BLOCK || type == RECORD_BSCAN_BLOCK) {
        const std::uint32_t thickness_low = f.u16(4);
        const std::uint32_t notes = f.u16(6);
        record.word1 = (notes << 16) | thickness_low;
        record.word2 = f.u32(8);
        record.word3 = f.u32(12);
    }
    return f.ok;
}

// The big-endian fields of a whole record head that lies in one page, read
// where the page holds them.
struct HeadBytes {
    const std::uint8_t* bytes;
    int ok = 1;

    std::uint16_t u16(std::size_t at) const {
        return static_cast<std::uint16_t>((bytes[at] << 8) | bytes[at + 1]);
    }
    std::uint32_t u32(std::size_t at) const {
        return (static_cast<std::uint32_t>(bytes[at]) << 24) | (static_cast<std::uint32_t>(bytes[at + 1]) << 16) |
               (static_cast<std::uint32_t>(bytes[at + 2]) << 8) | bytes[at + 3];
    }
};

// The record field by field (across a page boundary, past the end of the
// file), with the error lines and the stop at the first failed field.
int read_record_fields(DlSession& session, ReadingRecord& record, std::uint64_t offset);

// Reads the record at `offset` into `record`, as far as its type and the
// session's gage type ask. Fields it doesn't read are left as they are (the
// callers zero the record first). 1, or 0 when a field can't be read. The
// usual record lies inside the page of the last read: all its fields at
// once, inline.
inline int read_record_head(DlSession& session, ReadingRecord& record, std::uint64_t offset) {
    if (const std::uint8_t* bytes = bytes_in_page(session.dl_stream, offset, RECORD_SIZE)) {
        HeadBytes head{bytes};
        return fill_record_head(session, record, head);
    }
    return read_record_fields(session, record, offset);
}

// Renders a velocity reading (0.00001 inch per microsecond) for `units`
// into the session's velocity_text: inches per microsecond with four
// decimals, or metres per second, at most 6 characters.
void make_velocity_text(DlSession& session, std::uint32_t velocity, std::uint32_t units);
// The same text into `out` of VELOCITY_TEXT_SIZE bytes.
void format_velocity_reading(char* out, std::uint32_t velocity, std::uint32_t units);

inline std::uint32_t record_type(std::uint32_t word0) { return word0 >> 29; }
inline std::uint32_t record_type(const ReadingRecord& r) { return record_type(r.word0); }

// Link records: the absolute file offset of the block.
inline std::uint32_t link(const ReadingRecord& r) { return r.word1; }

// word0 of gage types 5 and 6.
inline std::uint32_t los(const ReadingRecord& r) { return word_bits(r.word0, 28, 1); }
inline std::uint32_t units(const ReadingRecord& r) { return word_bits(r.word0, 26, 2); }
inline std::uint32_t alarm_state(const ReadingRecord& r) { return word_bits(r.word0, 23, 3); }
inline std::uint32_t fast_mode(const ReadingRecord& r) { return word_bits(r.word0, 21, 2); }
inline std::uint32_t bscan_mode(const ReadingRecord& r) { return word_bits(r.word0, 19, 2); }
inline std::uint32_t setup_number(const ReadingRecord& r) { return word_bits(r.word0, 11, 5); }
inline std::uint32_t resolution(const ReadingRecord& r) { return word_bits(r.word0, 9, 2); }
inline std::uint32_t thick_hi(const ReadingRecord& r) { return word_bits(r.word0, 5, 4); }
inline std::uint32_t echo_to_echo(const ReadingRecord& r) { return word_bits(r.word0, 4, 1); }

// The measurement layout of gage types 5 and 6.
inline std::uint32_t thick_lo(const ReadingRecord& r) { return r.word1 & 0xFFFFu; }
inline std::uint32_t note_mask(const ReadingRecord& r) { return r.word1 >> 16; }
inline std::uint32_t first_lo(const ReadingRecord& r) { return r.word2 >> 16; }
inline std::uint32_t min_lo(const ReadingRecord& r) { return r.word2 & 0xFFFFu; }
inline std::uint32_t max_lo(const ReadingRecord& r) { return r.word3 >> 16; }
inline std::uint32_t value_tags(const ReadingRecord& r) { return r.word3 & 0xFFFFu; }

// value_tags: which extra values a reading holds, and their bits 16 to 19.
// second_kind: 0 none, 1 minimum and maximum, 2 difference, 3 max-min;
// first_kind: 0 none, 1 coating, 2 oxide, 3 temperature.
inline std::uint32_t second_kind(const ReadingRecord& r) { return word_bits(r.word3, 0, 2); }
inline std::uint32_t first_kind(const ReadingRecord& r) { return word_bits(r.word3, 2, 2); }
inline std::uint32_t max_hi(const ReadingRecord& r) { return word_bits(r.word3, 4, 4); }
inline std::uint32_t min_hi(const ReadingRecord& r) { return word_bits(r.word3, 8, 4); }
inline std::uint32_t first_hi(const ReadingRecord& r) { return word_bits(r.word3, 12, 4); }

// The 20-bit values.
inline std::uint32_t raw_thickness(const ReadingRecord& r) { return (thick_hi(r) << 16) | thick_lo(r); }
inline std::uint32_t first_value(const ReadingRecord& r) { return (first_hi(r) << 16) | first_lo(r); }
inline std::uint32_t min_value(const ReadingRecord& r) { return (min_hi(r) << 16) | min_lo(r); }
inline std::uint32_t max_value(const ReadingRecord& r) { return (max_hi(r) << 16) | max_lo(r); }

// The thickness in the length scale (0.0001 inch or millimetre): the raw
// value counts 0.0001 inch or 0.001 millimetre.
inline std::int32_t thickness_length(const ReadingRecord& r) {
    const std::uint32_t raw = raw_thickness(r);
    return static_cast<std::int32_t>(units(r) == 0 ? raw : raw * 10u);
}

// A velocity reading: bits 16 to 19 come from word3 (the low bits of max_lo),
// not from min_hi.
inline bool is_velocity_reading(const ReadingRecord& r) {
    return raw_thickness(r) == THICKNESS_IS_VELOCITY;
}
inline std::uint32_t velocity_value(const ReadingRecord& r) {
    return (r.word3 & 0xF0000u) | min_lo(r);
}

// word0 of gage type 7 (readings and links).
inline std::uint32_t flaw_setup_number(const ReadingRecord& r) { return word_bits(r.word0, 24, 5); }
inline std::uint32_t gate1_alarm(const ReadingRecord& r) { return word_bits(r.word0, 21, 3); }
inline std::uint32_t ascan_mark(const ReadingRecord& r) { return word_bits(r.word0, 20, 1); }
inline std::uint32_t bscan_mark(const ReadingRecord& r) { return word_bits(r.word0, 19, 1); }
inline std::uint32_t flaw_note_mask(const ReadingRecord& r) { return word_bits(r.word0, 0, 16); }

}  // namespace ugf
