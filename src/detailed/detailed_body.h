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


// The 20 custom point labels of the header under their title, one row each,
// empty ones included. 1, or 0 when a label can't be read.
int write_custom_point_list(DlSession& session, CsvSink& sink);

}  // namespace ugf
