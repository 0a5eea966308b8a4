// Conversion of an open survey into its CSV: exactly the converter's bytes,
// or with `quote` the same rows with stored texts quoted (RFC 4180).
#pragma once

#include <string>

#include "core/survey.h"

namespace ugf::kit {

struct ConvertOptions {
    int form = OUTPUT_DETAILED;  // or OUTPUT_GRID
    bool quote = false;
    bool xlsx = false;  // a workbook of the same rows and cells instead of the CSV
};

// "_detailed_output.csv" or "_grid_output.csv" ("...xlsx" for a workbook).
std::string output_ending(const ConvertOptions& options);

// Converts into `target` through a temporary file; a failure leaves no file
// and any older target as it was. 0 with `why`.
int convert_to_file(Survey& survey, const ConvertOptions& options, const std::string& target, std::string& why);

// Converts into memory (a workbook's bytes with `xlsx`). 0 with `why`.
int convert_to_text(Survey& survey, const ConvertOptions& options, std::string& text, std::string& why);

// Writes the workbook of the survey on `file` (binary, open for writing),
// its sheet named `sheet`. 0 with `why`.
int write_workbook(Survey& survey, int form, std::FILE* file, const std::string& sheet, std::string& why);

}  // namespace ugf::kit
