// The converter's run: argument rules, session open, output naming, export,
// and the exit status. The only place that decides a status.
#pragma once

#include "base/console.h"
#include "file/session.h"

namespace ugf {

inline constexpr int INPUT_PATH_SIZE = 300;  // at most 299 characters

// What a run reaches outside itself: the console of its status and error
// lines, the input, and the output. The command line's entry point gives
// standard output and files; another program (the web page) gives its own.
struct RunIo {
    Console console{};
    // Opens the survey of `path` into the session. 1 or 0.
    int (*open_input)(void* context, DlSession& session, const char* path) = nullptr;
    // Creates the output of `path` and points the sink at it. 1 or 0.
    int (*create_output)(void* context, const char* path, CsvSink& sink) = nullptr;
    // Completes the output once the export succeeded. 1, or 0 when it could
    // not be completed.
    int (*finish_output)(void* context, CsvSink& sink) = nullptr;
    void* context = nullptr;
};

// Runs one conversion for the command line; returns the exit status (0 or 1).
// When the export fails, the output stays as written so far and is not
// finished.
int run_converter(int argc, const char* const* argv, DlSession& session, const RunIo& io);

}  // namespace ugf
