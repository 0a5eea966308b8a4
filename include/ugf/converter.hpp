// The converter's run on a survey that the caller holds in memory: what
// `ugf2csv NAME FORM a` prints and writes, for programs that have no files
// (the page). The arguments follow the converter's rules: NAME must end in
// ".ugf" or ".UGF" and have fewer than 300 characters, FORM starts with d, D,
// g or G.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "ugf/convert.hpp"

namespace ugf::kit {

struct ConverterRun {
    int status = 1;            // the exit status: 0 or 1
    std::string console;       // every line the run printed
    bool wrote_output = false; // the output was created (and written to the sink)
    std::string output_name;   // its name, as the converter names it
};

// Runs the converter; the output's text goes to `output` in pieces. Returns
// the exit status (also in `run.status`).
int run_converter_on_bytes(const std::string& name, const std::uint8_t* bytes, std::size_t size, const std::string& form,
                           const Sink& output, ConverterRun& run);

}  // namespace ugf::kit
