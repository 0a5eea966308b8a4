#include "store/scan.h"

#include <array>
#include <tuple>

namespace ugf {

namespace {

// Where an A-scan reader puts what it reads: the reading's own stores or the
// scratch ones of an A-scan embedded in a B-scan.
struct AscanTarget {
    AscanRecord& ascan;
    SampleStore& max_samples;
    SampleStore& min_samples;
    SampleStore& peak_samples;
    DacPointStore* dac_points;  // nullptr: stored DAC points are not read
};

AscanTarget reading_target(ScanStore& store) {
    return {store.ascan, store.max_samples, store.min_samples, store.peak_samples,
            &store.dac_points};
}

AscanTarget scratch_target(ScanStore& store) {
    AscanScratch& s = store.scratch;
    return {s.ascan, s.max_samples, s.min_samples, s.peak_samples, nullptr};
}

int read_ascan_thickness_into(DlSession& session, std::uint64_t offset, const AscanTarget& t) {
    if (read_record_head(session, t.ascan.head, offset) == 0) return 0;
    FieldRun f{session.dl_stream, offset};
    AscanRecord& a = t.ascan;
    a.sample_count = f.u16(1288);
    a.delay = f.u16(1290);
    const std::uint32_t range_lo = f.u16(1292);
    a.display_flags = f.u16(1294);
    a.echo_window = f.i16(1296);
    a.marker1 = f.i16(1298);
    a.marker2 = f.i16(1300);
    a.marker3 = f.i16(1302);
    a.mb_blank = f.i16(1304);
    a.if_blank_raw = f.i16(1306);
    a.c3_blank = f.i16(1308);
    (void)f.u16(1310);  // read, but plays no part
    a.bracket_2 = f.u16(1312);
    const std::uint32_t range_hi = f.u16(1314);
    a.range = (range_hi << 16) | range_lo;
    // A block holds 318 trace positions; a larger count is a damaged block.
    if (f.ok == 0 || a.sample_count > SCAN_SAMPLES_MAX) return 0;
    for (std::size_t i = 0; i < a.sample_count && f.ok != 0; ++i) {
        t.min_samples[i] = f.u16(16 + 2 * i);
    }
    for (std::size_t i = 0; i < a.sample_count && f.ok != 0; ++i) {
        t.max_samples[i] = f.u16(652 + 2 * i);
    }
    return f.ok;
}

int read_ascan_flaw_into(DlSession& session, std::uint64_t offset, const AscanTarget& t) {
    if (read_record_head(session, t.ascan.head, offset) == 0) return 0;
    FieldRun f{session.dl_stream, offset};
    AscanRecord& a = t.ascan;
    a.scan_flags = f.u16(16);
    a.box_value[0] = f.u32(18);
    a.box_value[1] = f.u32(22);
    a.box_value[2] = f.u32(26);
    a.sample_count = f.u16(30);
    a.bracket_2 = f.u16(32);
    if (f.ok == 0 || a.sample_count > SCAN_SAMPLES_MAX) return 0;
    // The waveform at once when one cached page holds it (as read_byte_pairs).
    std::array<std::uint8_t, 2 * SCAN_SAMPLES_MAX> wave;
    const bool whole =
        read_in_page(session.dl_stream, offset + 34, wave.data(), 2 * std::size_t{a.sample_count}) == 1;
    for (std::size_t i = 0; whole && i < a.sample_count; ++i) {
        t.max_samples[i] = wave[2 * i];
        t.min_samples[i] = wave[2 * i + 1];
    }
    for (std::size_t i = 0; !whole && i < a.sample_count && f.ok != 0; ++i) {
        const std::uint8_t b0 = f.u8(34 + 2 * i);
        const std::uint8_t b1 = f.u8(35 + 2 * i);
        if (f.ok == 0) break;
        t.max_samples[i] = b0;
        t.min_samples[i] = b1;
    }
    if (f.ok == 0) return 0;

    // With both flags the 100 bytes of DAC points at 670 and the peak data at
    // 720 overlap.
    const bool dac = dac_stored(a) != 0;
    const bool peak = peak_stored(a) != 0;
    if (dac && t.dac_points != nullptr) {
        if (read_dac_points(session.dl_stream, offset + FLAW_DAC_POINTS_OFFSET, *t.dac_points) == 0) return 0;
    }
    if (peak) {
        if (read_byte_pairs(session.dl_stream,
                            offset + (dac ? FLAW_PEAK_AFTER_DAC_OFFSET : FLAW_PEAK_OFFSET),
                            t.peak_samples,
                            a.sample_count) == 0) {
            return 0;
        }
    }

    if (session.file_version < FLAW_GATES_VERSION) {
        a.gate1_amplitude = 0;
        a.gate1_mti = 0;
        a.gate2_amplitude = 0;
        a.gate2_mti = 0;
        return 1;
    }
    a.gate1_amplitude = f.u16(1038);
    a.gate1_mti = f.u16(1040);
    a.gate2_amplitude = f.u16(1042);
    a.gate2_mti = f.u16(1044);
    return f.ok;
}

int read_ascan_of_gage(DlSession& session, std::uint64_t offset, const AscanTarget& t) {
    if (session.gage_type == GAGE_FLAW_DETECTOR) return read_ascan_flaw_into(session, offset, t);
    return read_ascan_thickness_into(session, offset, t);
}

}  // namespace

int read_ascan_thickness(DlSession& session, std::uint64_t offset, ScanStore& store) {
    return read_ascan_thickness_into(session, offset, reading_target(store));
}

int read_ascan_flaw(DlSession& session, std::uint64_t offset, ScanStore& store) {
    return read_ascan_flaw_into(session, offset, reading_target(store));
}

int read_dac_points(DlStream& stream, std::uint64_t offset, DacPointStore& points) {
    points.fill(DacPoint{});
    FieldRun f{stream, offset};
    for (std::size_t i = 0; i < points.size() && f.ok != 0; ++i) {
        points[i].dac_count = f.u16(4 * i);
        points[i].dac_amplitude = f.u16(4 * i + 2);
    }
    return f.ok;
}

int read_byte_pairs(DlStream& stream, std::uint64_t offset, SampleStore& samples,
                    std::uint16_t byte_count) {
    // An odd count fills one entry more than it names.
    if (byte_count > samples.size()) return 0;
    // The pairs inside one cached page that the file fills are taken at
    // once; any others byte by byte, so that a failed read keeps its place.
    std::array<std::uint8_t, std::tuple_size_v<SampleStore> + 1> bytes;
    const std::size_t whole = (std::size_t{byte_count} + 1) & ~std::size_t{1};
    if (whole <= bytes.size() && read_in_page(stream, offset, bytes.data(), whole) == 1) {
        for (std::size_t k = 0; k < byte_count; k += 2) {
            samples[k] = bytes[k + 1];
            samples[k + 1] = bytes[k];
        }
        return 1;
    }
    FieldRun f{stream, offset};
    for (std::size_t k = 0; k < byte_count; k += 2) {
        const std::uint8_t b0 = f.u8(k);
        const std::uint8_t b1 = f.u8(k + 1);
        if (f.ok == 0) return 0;
        samples[k] = b1;
        samples[k + 1] = b0;
    }
    return 1;
}

int read_bscan(DlSession& session, std::uint64_t offset, ScanStore& store) {
    BscanRecord& b = store.bscan;
    if (read_record_head(session, b.head, offset) == 0) return 0;
    FieldRun f{session.dl_stream, offset};
    b.point_count = f.u16(20);
    b.ascan_follows = f.u16(34);
    b.store_full = f.u16(38);
    if (f.ok == 0 || b.point_count > BSCAN_POINTS_MAX) return 0;

    // The embedded A-scan is read (a damaged one fails the reading) but its
    // content is not used.
    if (b.ascan_follows == 1) {
        store.scratch.ascan = AscanRecord{};
        if (read_ascan_of_gage(session, offset + BSCAN_ASCAN_OFFSET, scratch_target(store)) == 0) {
            return 0;
        }
    }

    // The one bulk read of the file; a short read fails with no message.
    const std::size_t bytes =
        b.store_full == 0 ? std::size_t{b.point_count} * BSCAN_POINT_SIZE : BSCAN_STORE_BYTES;
    const std::size_t got =
        read_block(session.dl_stream, offset + BSCAN_POINTS_OFFSET, store.bscan_points.data(), bytes);
    return got == bytes ? 1 : 0;
}

int read_reading_scan(DlSession& session, ReadingRecord& reading, ScanStore& store, int load_bscan_points) {
    switch (record_type(reading)) {
        case RECORD_ASCAN_LINK: {
            store.ascan = AscanRecord{};
            if (read_record_head(session, store.ascan.head, link(reading)) == 0) return 0;
            if (record_type(store.ascan.head) != RECORD_ASCAN_BLOCK) return 0;
            if (session.gage_type == GAGE_FLAW_DETECTOR) {
                return read_ascan_flaw(session, link(reading), store);
            }
            return read_ascan_thickness(session, link(reading), store);
        }
        case RECORD_BSCAN_LINK: {
            store.bscan = BscanRecord{};
            if (read_record_head(session, store.bscan.head, link(reading)) == 0) return 0;
            // Without the points only the head is wanted, whatever its type.
            if (load_bscan_points != 1) return 1;
            if (record_type(store.bscan.head) != RECORD_BSCAN_BLOCK) return 0;
            return read_bscan(session, link(reading), store);
        }
        case RECORD_ASCAN_BLOCK:
        case RECORD_BSCAN_BLOCK:
            // Block heads belong behind links, never in a slot.
            return 0;
        default:
            return 1;
    }
}

}  // namespace ugf
