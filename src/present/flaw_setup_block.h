// The setup listing of the flaw detector: a block of label and value lines for
// each setup, since its settings are too many for a table row.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "file/setup.h"
#include "base/console.h"

namespace ugf {

// Every line of a block is built in a buffer of this size.
inline constexpr std::size_t SETUP_LINE_SIZE = 50;

// Writes the block of one flaw detector setup: a blank line, the "SETUP" line
// with its number, and the 62 lines of its settings in the instrument's
// order. 1, or 0 when a write fails.
int write_setup_block(const FlawSetup& setup, int setup_number, CsvSink& sink);

}  // namespace ugf
