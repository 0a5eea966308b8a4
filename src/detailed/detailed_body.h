// The body of the detailed output: the readings of a survey in the order in
// which the instrument walks it, each row followed by the dump of its scan,
// with the blocks that stand around the readings. "LINEAR" and "MANUAL"
// files are written here whole, in both output forms: their grid form is one
// plain row a reading.
#pragma once

#include <cstdint>

#include "file/session.h"
#include "base/console.h"
#include "store/record.h"
#include "store/scan.h"

namespace ugf {

// The whole output of a "LINEAR" or "MANUAL" file. With output_form 1 the
// detailed file (its head, the notes, the reading table and the setups); with
// output_form 0 one row of identifier and value for each reading. 1 or 0.
int export_linear_file(DlSession& session, int output_form, CsvSink& sink);

// What a detailed output of the types 1 to 5 and 10 to 12 has behind its
// head: the custom point list (types 1, 3, 5), the notes, the reading table
// and the setups. 1 or 0.
int export_detailed_body(DlSession& session, CsvSink& sink);

// What the merge of a scan head tells the walk about one reading.
struct ReadingScan {
    int velocity_flag = 0;                // a velocity reading; its text is the session's velocity_text
    const AscanRecord* ascan_ref = nullptr;  // the reading's A-scan, when it has one
    int has_ascan = 0;
    int has_bscan = 0;
};

// Brings the head of the block behind a link into the reading, so that the
// row shows what the block says, and reports what the reading carries. The
// thickness gauges take the head as it stands (and test it for a velocity
// reading); the flaw detector keeps the slot's own type bits and merges the
// setup number, the notes, the scan marks and the box values.
ReadingScan merge_scan_head(DlSession& session, ReadingRecord& reading, const ScanStore& store);

// The 20 custom point labels of the header under their title, one row each,
// empty ones included. 1, or 0 when a label can't be read.
int write_custom_point_list(DlSession& session, CsvSink& sink);

}  // namespace ugf
