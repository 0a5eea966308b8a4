#include "present/scan_head.h"

#include "present/meas_box.h"

namespace ugf {

namespace {

// The velocity test of a thickness gauge record: a raw thickness of
// THICKNESS_IS_VELOCITY holds a sound velocity, whose text is made here.
void test_velocity(DlSession& session, const ReadingRecord& record, ReadingScan& scan) {
    if (is_velocity_reading(record)) {
        scan.velocity_flag = 1;
        make_velocity_text(session, velocity_value(record), units(record));
    }
}

// word1 of a flaw detector B-scan head: the instrument stores a box without a
// reading in several ways, which the row shows as the empty marker, or as 0
// where only an echo-to-echo box knows the marker.
std::uint32_t map_bscan_box1(std::uint32_t stored, const FlawSetup& setup) {
    if (stored == 0x7FFFFFFDu || stored == 0xFFFFFFFFu) return BOX_NO_READING;
    if (stored == 0x7FFFFFFEu || stored == 0x000FFFFFu) {
        return box1_kind(setup) == BOX_KIND_ECHO_TO_ECHO ? BOX_NO_READING : 0u;
    }
    return stored;
}

void merge_flaw_head(const DlSession& session, ReadingRecord& reading, const ScanStore& store,
                     ReadingScan& scan) {
    std::uint32_t lo = reading.word0 & 0xFFFFu;
    std::uint32_t hi = reading.word0 >> 16;
    const std::uint32_t type = record_type(reading);
    if (type == RECORD_ASCAN_LINK) {
        const std::uint32_t ahi = store.ascan.head.word0 >> 16;
        lo = store.ascan.head.word0 & 0xFFFFu;  // the notes of the block
        // The block's setup number moves into the reading's; the A-scan mark
        // replaces the B-scan mark.
        hi = ((ahi & 0x3Eu) << 7) | (hi & 0xE0F7u) | 0x10u;
        reading.word0 = (hi << 16) | lo;
        reading.word1 = store.ascan.box_value[0];
        reading.word2 = store.ascan.box_value[1];
        reading.word3 = store.ascan.box_value[2];
        scan.has_ascan = 1;
        scan.ascan_ref = &store.ascan;
    } else if (type == RECORD_BSCAN_LINK) {
        const std::uint32_t bhi = store.bscan.head.word0 >> 16;
        // The setup number of the block, the B-scan mark for the A-scan mark,
        // and no notes.
        hi = (hi & 0xE0EFu) | (bhi & 0x1F00u) | 0x8u;
        reading.word0 = hi << 16;
        reading.word2 = store.bscan.head.word2;
        reading.word3 = store.bscan.head.word3;
        const FlawSetup& setup = session.setups[flaw_setup_number(reading)].flaw;
        reading.word1 = map_bscan_box1(store.bscan.head.word1, setup);
        scan.has_bscan = 1;
    }
}

}  // namespace

ReadingScan merge_scan_head(DlSession& session, ReadingRecord& reading, const ScanStore& store) {
    ReadingScan scan;
    if (session.gage_type == GAGE_FLAW_DETECTOR) {
        merge_flaw_head(session, reading, store, scan);
        return scan;
    }
    // The slot is tested as read, a link included (its link stands where the
    // low thickness bits are).
    test_velocity(session, reading, scan);
    const std::uint32_t type = record_type(reading);
    if (type == RECORD_ASCAN_LINK) {
        reading = store.ascan.head;
        test_velocity(session, reading, scan);
        scan.has_ascan = 1;
        scan.ascan_ref = &store.ascan;
    } else if (type == RECORD_BSCAN_LINK) {
        reading = store.bscan.head;
        scan.has_bscan = 1;
    }
    return scan;
}

}  // namespace ugf
