// Scan payloads: the A-scan and B-scan blocks behind link records, the store
// that receives them, and read_reading, the one read of a test point.
//
// Every block begins with a 16-byte record head (type 3 for an A-scan, 5 for
// a B-scan) and has its fields at fixed offsets from its start.
//
// A-scan block, gage types 5 and 6: head (measurement layout), min samples
// (u16) from 16, max samples (u16) from 652, the fixed fields from 1288 to
// 1314. Room for 318 trace positions.
//
// A-scan block, gage type 7: word0, scan_flags at 16, three box values at
// 18, sample_count at 30, bracket_2 at 32, byte pairs (max, min) from 34, DAC
// points and peak data at 670 and 720 as the flags say, and from file version
// 9 on the four gate fields from 1038 to 1044.
//
// B-scan block, all gage types: head, point_count at 20, ascan_follows at
// 34, store_full at 38, an A-scan block at 76 when ascan_follows is 1, and
// from 3164 the points: two 16-bit words each, least significant byte first.
#pragma once

#include <cstddef>
#include <cstdint>

#include "file/records.h"
#include "file/session.h"
#include "store/record.h"

namespace ugf {

inline constexpr std::uint16_t FLAW_GATES_VERSION = 9;  // first version with the gate fields

// One stored B-scan point, its two words as the file's little-endian bytes give them.
struct BscanPoint {
    std::uint16_t first = 0;
    std::uint16_t second = 0;  // point_lo
};

// Reads the slot of a storage index, and the block behind a link: an A-scan
// always, a B-scan's points only when load_bscan_points is 1 (else its head
// alone, whatever its type). A slot holding a block head (3 or 5), or a link
// to a head of the wrong type, fails with no message. 1 or 0.
// The slot's record is read inline; a link or a block head goes on out of
// line (read_reading_scan).
int read_reading_scan(DlSession& session, ReadingRecord& reading, ScanStore& store, int load_bscan_points);
inline int read_reading(DlSession& session, std::int64_t storage_index, ReadingRecord& reading,
                        ScanStore& store, int load_bscan_points) {
    reading = ReadingRecord{};
    if (read_record_head(session, reading, reading_slot_offset(session, storage_index)) == 0) return 0;
    const std::uint32_t type = record_type(reading);
    if (type >= RECORD_ASCAN_LINK && type <= RECORD_BSCAN_BLOCK) {
        return read_reading_scan(session, reading, store, load_bscan_points);
    }
    return 1;
}

// The block readers; a sample_count above 318 or a point_count above 10000
// fails once the fixed fields are read, with no message of its own.
int read_ascan_thickness(DlSession& session, std::uint64_t offset, ScanStore& store);
int read_ascan_flaw(DlSession& session, std::uint64_t offset, ScanStore& store);
int read_bscan(DlSession& session, std::uint64_t offset, ScanStore& store);

// Zeroes the 25 entries, then reads them all: u16 dac_count, u16 dac_amplitude.
int read_dac_points(DlStream& stream, std::uint64_t offset, DacPointStore& points);
// Pairs of bytes (b0, b1) stored as b1, b0 in entries k and k + 1, for k = 0,
// 2, 4 ... below byte_count; an odd count reads one byte more. A count that
// doesn't fit the store fails before any read.
int read_byte_pairs(DlStream& stream, std::uint64_t offset, SampleStore& samples,
                    std::uint16_t byte_count);

// Point i of the store (i below 10000).
inline BscanPoint bscan_point(const ScanStore& store, std::size_t i) {
    if (i >= BSCAN_POINTS_MAX) return {};
    const std::uint8_t* p = store.bscan_points.data() + i * BSCAN_POINT_SIZE;
    return {static_cast<std::uint16_t>(p[0] | (p[1] << 8)), static_cast<std::uint16_t>(p[2] | (p[3] << 8))};
}

// display_flags of a thickness gauge A-scan.
inline std::uint32_t rect_index(const AscanRecord& a) { return word_bits(a.display_flags, 14, 2); }
inline std::uint32_t zoom_bits(const AscanRecord& a) { return word_bits(a.display_flags, 12, 2); }
inline std::uint32_t freeze(const AscanRecord& a) { return word_bits(a.display_flags, 11, 1); }
inline std::uint32_t outline(const AscanRecord& a) { return word_bits(a.display_flags, 10, 1); }
// The third number of the dump's title of a thickness gauge A-scan.
inline std::uint32_t display_bracket_3(const AscanRecord& a) { return word_bits(a.display_flags, 8, 2); }
inline std::uint32_t delay_negative(const AscanRecord& a) { return word_bits(a.display_flags, 7, 1); }

// scan_flags of a flaw detector A-scan; scan_bracket_3 is the third number
// of the dump's title.
inline std::uint32_t scan_bracket_3(const AscanRecord& a) { return word_bits(a.scan_flags, 13, 3); }
inline std::uint32_t bracket_4(const AscanRecord& a) { return word_bits(a.scan_flags, 10, 3); }
inline std::uint32_t dac_stored(const AscanRecord& a) { return word_bits(a.scan_flags, 9, 1); }
inline std::uint32_t peak_stored(const AscanRecord& a) { return word_bits(a.scan_flags, 3, 1); }

// word0 of a flaw detector A-scan (its notes: flaw_note_mask(a.head)).
inline std::uint32_t gate_alarm(const AscanRecord& a) { return word_bits(a.head.word0, 23, 3); }
inline std::uint32_t dac_shown(const AscanRecord& a) { return word_bits(a.head.word0, 22, 1); }
inline std::uint32_t block_setup_number(const AscanRecord& a) { return word_bits(a.head.word0, 17, 5); }
inline std::uint32_t peak_shown(const AscanRecord& a) { return word_bits(a.head.word0, 16, 1); }

// B-scan points.
inline std::uint32_t point_lost(const BscanPoint& p) { return word_bits(p.first, 15, 1); }
inline std::uint32_t point_alarm(const BscanPoint& p) { return word_bits(p.first, 12, 3); }
inline std::uint32_t point_min(const BscanPoint& p) { return word_bits(p.first, 11, 1); }
inline std::uint32_t point_max(const BscanPoint& p) { return word_bits(p.first, 10, 1); }
inline std::uint32_t point_hi(const BscanPoint& p) { return word_bits(p.first, 6, 4); }
inline std::uint32_t point_negative(const BscanPoint& p) { return word_bits(p.first, 4, 1); }
inline std::uint32_t point_lo(const BscanPoint& p) { return p.second; }
// The 20-bit magnitude.
inline std::uint32_t point_magnitude(const BscanPoint& p) { return (point_hi(p) << 16) | point_lo(p); }

}  // namespace ugf
