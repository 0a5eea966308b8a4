// The setup listing at the end of a detailed output: every setup that exists,
// from entry 0 to 31. The two thickness gauges list their setups as a table,
// one title row and one row a setup; the flaw detector writes a block of label
// and value lines for each setup instead (present/flaw_setup_block.h).
#pragma once

#include <cstdint>

#include "file/session.h"
#include "file/setup.h"
#include "base/console.h"

namespace ugf {

// Writes the listing of the session's setups: the title row (not for the
// flaw detector), then one row or block for each setup whose setup_present
// isn't 0. 1, or 0 when a write fails or the gage type is none of 5, 6, 7.
int write_setup_listing(DlSession& session, CsvSink& sink);

// The title row of the thickness gauge table: the precision gauge's titles
// for gage type 6, the corrosion gauge's for any other type. Files below
// version 20 have one title more at the end. 1 or 0.
int write_setup_titles(const DlSession& session, CsvSink& sink);

// "OFF", "ABSOLUTE", "PERCENT" for the differential types 0 to 2; the empty
// text above. The setup rows and the reading rows show the same words.
const char* diff_type_text(std::uint32_t diff_type);

// One table row of a setup; `velocity_mode` is 1 when the setup measures
// velocity (measurement_type 1). 1 or 0.
int write_setup_row_corrosion(const GaugeSetup& setup, int setup_number, CsvSink& sink,
                              std::uint32_t velocity_mode);
int write_setup_row_precision(const GaugeSetup& setup, int setup_number, CsvSink& sink,
                              std::uint32_t velocity_mode);

}  // namespace ugf
