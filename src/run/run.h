// The converter's run: argument rules, session open, output naming, export,
// and the exit status. The only place that decides a status.
#pragma once

namespace ugf {

inline constexpr int INPUT_PATH_SIZE = 300;  // at most 299 characters

// Runs one conversion for the command line; returns the exit status (0 or 1).
int run_converter(int argc, const char* const* argv);

}  // namespace ugf
