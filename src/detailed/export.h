// The choice of export by file type and output form.
#pragma once

#include "file/session.h"
#include "run/console.h"

namespace ugf {

inline constexpr int OUTPUT_GRID = 0;
inline constexpr int OUTPUT_DETAILED = 1;

// Writes the whole CSV of the session in the given form. 1 or 0.
int export_datalogger_file(DlSession& session, int output_form, CsvSink& sink);

}  // namespace ugf
