// The body of a detailed file: the reading table in the instrument's walk
// order with its scan dumps, and the setup listing; for LINEAR and MANUAL
// files the whole file in both forms.
#pragma once

#include "file/session.h"
#include "run/console.h"

namespace ugf {

// The whole output of a LINEAR or MANUAL file in the given form. 1 or 0.
int export_linear_file(DlSession& session, int output_form, CsvSink& sink);

// Everything of a detailed file behind the identity rows. 1 or 0.
int export_detailed_body(DlSession& session, CsvSink& sink);

}  // namespace ugf
