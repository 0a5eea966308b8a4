// Conversion of an open survey into its CSV: exactly the converter's bytes,
// or with `quote` the same rows with stored texts quoted (RFC 4180), or a
// workbook of the same rows and cells. Into a file, into memory or into any
// sink the caller gives.
#pragma once

#include <cstddef>
#include <cstdio>
#include <functional>
#include <string>

#include "ugf/survey.hpp"

namespace ugf::kit {

struct ConvertOptions {
    int form = FORM_DETAILED;  // or FORM_GRID
    bool quote = false;
    bool xlsx = false;  // a workbook of the same rows and cells instead of the CSV
};

// "_detailed_output.csv" or "_grid_output.csv" ("...xlsx" for a workbook).
std::string output_ending(const ConvertOptions& options);
// The name of the output of the survey file `name`: the name without its
// extension and with its ending, as the converter names it
// ("plant7.ugf" gives "plant7_detailed_output.csv").
std::string output_name(const std::string& name, const ConvertOptions& options);

// Receives the output in pieces, in order; returns 1 to go on or 0 when it
// can take no more (a full disk, a full buffer): the conversion then fails
// with ERROR_OUTPUT and `why` "the output was refused".
using Sink = std::function<int(const char* data, std::size_t size)>;

// Converts into the sink. 0 with `why`.
int convert_to_sink(Survey& survey, const ConvertOptions& options, const Sink& sink, std::string& why);

// Converts into `target` through a temporary file; a failure leaves no file
// and any older target as it was. 0 with `why`.
int convert_to_file(Survey& survey, const ConvertOptions& options, const std::string& target, std::string& why);

// Converts into memory (a workbook's bytes with `xlsx`). 0 with `why`.
int convert_to_text(Survey& survey, const ConvertOptions& options, std::string& text, std::string& why);

// Writes the workbook of the survey on `file` (binary, open for writing),
// its sheet named `sheet`. 0 with `why`.
int write_workbook(Survey& survey, int form, std::FILE* file, const std::string& sheet, std::string& why);

}  // namespace ugf::kit
