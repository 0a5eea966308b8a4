#include "store/record.h"

#include <array>

#include "run/console.h"

namespace ugf {

namespace {

std::array<char, VELOCITY_TEXT_SIZE> velocity_text_buffer{};

// Truncation toward zero into a signed 32-bit integer; a value outside that
// range (or not a number) gives the lowest value, as x86 conversions do.
std::int32_t truncate_to_i32(double value) {
    if (!(value > -2147483649.0 && value < 2147483648.0)) return INT32_MIN;
    return static_cast<std::int32_t>(value);
}

}  // namespace

std::uint32_t slot_table_offset(std::int32_t file_type) {
    return record_table_offset(file_type);
}

std::uint32_t slot_size(std::int32_t file_type) {
    if (file_type == FILE_TYPE_MANUAL || file_type == FILE_TYPE_INCREMENTAL) return STORED_ID_SLOT_SIZE;
    return RECORD_SIZE;
}

std::uint64_t reading_slot_offset(const DlSession& session, std::int64_t storage_index) {
    const std::uint32_t index = static_cast<std::uint32_t>(storage_index);
    return static_cast<std::uint32_t>(slot_table_offset(session.file_type) +
                                      index * slot_size(session.file_type));
}

std::uint64_t slot_capacity(DlSession& session) {
    const std::uint64_t size = dl_file_size(session.stream);
    const std::uint64_t first = slot_table_offset(session.file_type);
    const std::uint64_t slot = slot_size(session.file_type);
    return size > first ? (size - first + slot - 1) / slot : 0;
}

namespace {

// The fields of a record head from a run of reads (FieldRun on the file, or
// HeadBytes on bytes already read), by the record type and the instrument.
template <typename Run>
int fill_record_head(const DlSession& session, ReadingRecord& record, Run& f) {
    record.word0 = f.u32(0);
    if (f.ok == 0) return 0;
    const std::uint32_t type = record_type(record);
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

// The big-endian fields of a whole record head that lay in one page.
struct HeadBytes {
    std::array<std::uint8_t, RECORD_SIZE> bytes{};
    int ok = 1;

    std::uint16_t u16(std::size_t at) const {
        return static_cast<std::uint16_t>((bytes[at] << 8) | bytes[at + 1]);
    }
    std::uint32_t u32(std::size_t at) const {
        return (static_cast<std::uint32_t>(u16(at)) << 16) | u16(at + 2);
    }
};

}  // namespace

int read_record_head(DlSession& session, ReadingRecord& record, std::uint64_t offset) {
    // The usual record lies inside one page that the file fills: all its
    // fields at once. Anything else reads field by field, with the error
    // lines and the stop at the first failed field of such reads.
    HeadBytes head;
    if (read_in_page(session.stream, offset, head.bytes.data(), head.bytes.size()) == 1) {
        return fill_record_head(session, record, head);
    }
    FieldRun f{session.stream, offset};
    return fill_record_head(session, record, f);
}

void make_velocity_text(std::uint32_t velocity, std::uint32_t units) {
    const float value = static_cast<float>(velocity);
    char text[32];
    if (units == 0) {
        const float inch_per_us = value / 100000.0f;
        format_text(text, sizeof text, "%.4f", static_cast<double>(inch_per_us));
    } else {
        const long metres_per_second = truncate_to_i32(static_cast<double>(value) * 0.254);
        format_text(text, sizeof text, "%5ld", metres_per_second);
    }
    format_text(velocity_text_buffer.data(), velocity_text_buffer.size(), "%.6s", text);
}

const char* velocity_text() { return velocity_text_buffer.data(); }

}  // namespace ugf
