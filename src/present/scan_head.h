// The head of a scan block merged into the reading of the slot that links
// to it. A slot that holds a link keeps only the link; the reading it stands
// for is the head of the block behind it. The two output forms merge it
// differently: the detailed (list) form shows what the block says as the
// instrument lists it, the grid form what the instrument's table cell shows.
// Both merges live here, side by side.
#pragma once

#include "file/session.h"
#include "store/record.h"
#include "store/scan.h"

namespace ugf {

// What the merge of a scan head tells the walk about one reading.
struct ReadingScan {
    int velocity_flag = 0;                // a velocity reading; its text is the session's velocity_text
    const AscanRecord* ascan_ref = nullptr;  // the reading's A-scan, when it has one
    int has_ascan = 0;
    int has_bscan = 0;
};

// The list form's merge: brings the head of the block behind a link into the
// reading, so that the row shows what the block says, and reports what the
// reading carries. The thickness gauges take the head as it stands (and test
// it for a velocity reading); the flaw detector keeps the slot's own type
// bits and merges the setup number, the notes, the scan marks and the box
// values.
ReadingScan merge_scan_head(DlSession& session, ReadingRecord& reading, const ScanStore& store);

// The grid form's merge, for a cell: an A-scan link takes the block's head
// (the flaw detector with the block's box values), a B-scan link the head's
// words (the flaw detector keeps the slot's first word). The velocity test
// comes behind the merge, so it covers a block head too; a flaw detector
// reading is never a velocity check. Sets `scan` to the cell's A-scan and
// `velocity` to 1 when the cell's text is the session's velocity_text
// (both as the caller cleared them otherwise). Inline: the grid reads every
// cell through it.
inline void merge_grid_head(DlSession& session, ReadingRecord& reading, ScanStore& store, const AscanRecord*& scan,
                            int& velocity) {
    const bool flaw = session.gage_type == GAGE_FLAW_DETECTOR;
    if (record_type(reading) == RECORD_ASCAN_LINK) {
        reading = store.ascan.head;
        if (flaw) {
            reading.word1 = store.ascan.box_value[0];
            reading.word2 = store.ascan.box_value[1];
            reading.word3 = store.ascan.box_value[2];
        }
        scan = &store.ascan;
    }
    if (record_type(reading) == RECORD_BSCAN_LINK) {
        const ReadingRecord& head = store.bscan.head;
        if (flaw) {
            // The flaw detector keeps the slot's first word for a B-scan.
            reading.word1 = head.word1;
            reading.word2 = head.word2;
            reading.word3 = head.word3;
        } else {
            reading = head;
        }
    }
    if (!flaw && record_type(reading) != RECORD_BSCAN_LINK && is_velocity_reading(reading)) {
        velocity = 1;
        make_velocity_text(session, velocity_value(reading), units(reading));
    }
}

}  // namespace ugf
