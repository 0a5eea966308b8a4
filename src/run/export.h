// The choice of export by file type and output form (OUTPUT_DETAILED or
// OUTPUT_GRID, base/console.h).
#pragma once

#include "file/session.h"
#include "base/console.h"

namespace ugf {

// Writes the whole CSV of the session in the given form. 1 or 0.
int export_datalogger_file(DlSession& session, int output_form, CsvSink& sink);

}  // namespace ugf
