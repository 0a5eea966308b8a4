#include "store/record.h"

#include <array>
#include <cmath>

#include "base/console.h"
#include "base/text_builder.h"

namespace ugf {

namespace {

// Truncation toward zero into a signed 32-bit integer; a value outside that
// range (or not a number) gives the lowest value, as x86 conversions do.
std::int32_t truncate_to_i32(double value) {
    if (!(value > -2147483649.0 && value < 2147483648.0)) return INT32_MIN;
    return static_cast<std::int32_t>(value);
}

}  // namespace

std::uint64_t slot_capacity(DlSession& session) {
    return slot_count(session.map, dl_file_size(session.dl_stream));
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

}  // namespace

namespace {

// Field by field, out of line: the usual record's way keeps no registers
// for it.
[[gnu::noinline]] int read_record_fields(DlSession& session, ReadingRecord& record, std::uint64_t offset) {
    FieldRun f{session.dl_stream, offset};
    return fill_record_head(session, record, f);
}

}  // namespace

int read_record_head(DlSession& session, ReadingRecord& record, std::uint64_t offset) {
    // The usual record lies inside one page that the file fills: all its
    // fields at once. Anything else reads field by field, with the error
    // lines and the stop at the first failed field of such reads.
    if (const std::uint8_t* bytes = bytes_in_page(session.dl_stream, offset, RECORD_SIZE)) {
        HeadBytes head{bytes};
        return fill_record_head(session, record, head);
    }
    return read_record_fields(session, record, offset);
}

void format_velocity_reading(char* out, std::uint32_t velocity, std::uint32_t units) {
    const float value = static_cast<float>(velocity);
    // What "%.4f" or "%5ld" and then "%.6s" print: at most six characters.
    TextBuilder text(out, VELOCITY_TEXT_SIZE);
    if (units == 0) {
        // "%.4f": ten-thousandths rounded from the exact binary value, a tie
        // to the even one. A float's 24 bits times 10^4 are exact in a
        // double, and so is the fraction that floor leaves.
        const float inch_per_us = value / 100000.0f;
        const double scaled = static_cast<double>(inch_per_us) * 10000.0;
        const double whole = std::floor(scaled);
        const double fraction = scaled - whole;
        auto q = static_cast<std::uint64_t>(whole);
        if (fraction > 0.5 || (fraction == 0.5 && (q & 1u) != 0)) ++q;
        text.put_int(static_cast<std::int64_t>(q / 10000));
        text.put('.');
        text.put_int(static_cast<std::int64_t>(q % 10000), 4, 4);
    } else {
        text.put_int(truncate_to_i32(static_cast<double>(value) * 0.254), 5);
    }
}

void make_velocity_text(DlSession& session, std::uint32_t velocity, std::uint32_t units) {
    static_assert(sizeof session.velocity_text == VELOCITY_TEXT_SIZE);
    format_velocity_reading(session.velocity_text, velocity, units);
}

}  // namespace ugf
