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

// Field by field, out of line: the usual record's way keeps no registers
// for it.
[[gnu::noinline]] int read_record_fields(DlSession& session, ReadingRecord& record, std::uint64_t offset) {
    FieldRun f{session.dl_stream, offset};
    return fill_record_head(session, record, f);
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
