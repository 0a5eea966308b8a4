// The in-memory form of the file's records: the 16-byte record of a slot,
// the scan blocks behind link records, and the store that receives a
// reading's scan. The readers and the meaning of the bits are in store/.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace ugf {

struct ReadingRecord {
    std::uint32_t word0 = 0;
    // Bytes 4 to 7: a link, the value of box 1 (gage type 7), or in the
    // measurement layout note_mask << 16 | thick_lo (read as two u16).
    std::uint32_t word1 = 0;
    std::uint32_t word2 = 0;  // bytes 8 to 11
    std::uint32_t word3 = 0;  // bytes 12 to 15
};

// One stored point of a distance-amplitude curve of the flaw detector.
inline constexpr int DAC_POINT_COUNT = 25;

struct DacPoint {
    std::uint16_t dac_count = 0;      // clock counts (80 to the microsecond)
    std::uint16_t dac_amplitude = 0;  // 0 to 511; 0 ends the list
};

inline constexpr std::uint16_t SCAN_SAMPLES_MAX = 318;  // trace positions a block has room for
inline constexpr std::size_t SCAN_SAMPLE_STORE = 320;
inline constexpr std::uint16_t BSCAN_POINTS_MAX = 10000;
inline constexpr std::size_t BSCAN_POINT_SIZE = 4;
inline constexpr std::size_t BSCAN_STORE_BYTES = BSCAN_POINTS_MAX * BSCAN_POINT_SIZE;  // 40000

using SampleStore = std::array<std::uint16_t, SCAN_SAMPLE_STORE>;
using DacPointStore = std::array<DacPoint, DAC_POINT_COUNT>;

struct AscanRecord {
    ReadingRecord head{};
    std::uint16_t sample_count = 0;
    std::uint16_t bracket_2 = 0;
    // Gage types 5 and 6.
    std::uint16_t delay = 0;
    std::uint32_t range = 0;  // range_hi << 16 | range_lo
    std::uint16_t display_flags = 0;
    std::int16_t echo_window = 0;
    std::int16_t marker1 = 0;
    std::int16_t marker2 = 0;
    std::int16_t marker3 = 0;
    std::int16_t mb_blank = 0;
    std::int16_t if_blank_raw = 0;  // "IF BLANK" shows this less marker1
    std::int16_t c3_blank = 0;
    // Gage type 7.
    std::uint16_t scan_flags = 0;
    std::uint16_t gate1_amplitude = 0;
    std::uint16_t gate1_mti = 0;
    std::uint16_t gate2_amplitude = 0;
    std::uint16_t gate2_mti = 0;
    std::array<std::uint32_t, 3> box_value{};
};

struct BscanRecord {
    ReadingRecord head{};
    std::uint16_t point_count = 0;
    std::uint16_t ascan_follows = 0;  // 1: an A-scan block stands at offset 76
    std::uint16_t store_full = 0;     // not 0: the whole point store is read
};

// An A-scan record with its own stores: the A-scan embedded in a B-scan
// block is read into one of these, so that it leaves the reading's alone.
struct AscanScratch {
    AscanRecord ascan{};
    SampleStore max_samples{};
    SampleStore min_samples{};
    SampleStore peak_samples{};
    DacPointStore dac_points{};
};

// The object that receives a reading's scan. Each read overwrites what the
// last one left only as far as it goes: samples beyond a new sample_count,
// and the peak data and DAC points of an A-scan that has none, keep what an
// earlier block stored.
struct ScanStore {
    AscanRecord ascan{};
    SampleStore max_samples{};
    SampleStore min_samples{};
    SampleStore peak_samples{};
    DacPointStore dac_points{};
    BscanRecord bscan{};
    std::array<std::uint8_t, BSCAN_STORE_BYTES> bscan_points{};  // as stored, 4 bytes a point
    AscanScratch scratch{};
};

}  // namespace ugf
