// Conversion of an open survey into its CSV: exactly the converter's bytes,
// or with `quote` the same rows with stored texts quoted (RFC 4180).
#pragma once

#include <string>

#include "core/survey.h"

namespace ugf::kit {

struct ConvertOptions {
    int form = OUTPUT_DETAILED;  // or OUTPUT_GRID
    bool quote = false;
};

// "_detailed_output.csv" or "_grid_output.csv".
const char* output_ending(int form);

// Converts into `target` through a temporary file; a failure leaves no file
// and any older target as it was. 0 with `why`.
int convert_to_file(Survey& survey, const ConvertOptions& options, const std::string& target, std::string& why);

// Converts into memory. 0 with `why`.
int convert_to_text(Survey& survey, const ConvertOptions& options, std::string& text, std::string& why);

}  // namespace ugf::kit
