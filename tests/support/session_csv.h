// Writers tested on real sessions: a built image opened as a session, and
// the CSV text that a writer puts through a sink, read back from its file.
#pragma once

#include <functional>
#include <string>

#include "file/session.h"
#include "base/console.h"
#include "support/image_builder.h"
#include "support/scratch.h"

namespace ugf::test {

// The image saved in a scratch folder and opened; `result` is the open's.
struct OpenedSurvey {
    ScratchDir dir;
    DlSession session;
    int result = 0;
    explicit OpenedSurvey(const ImageBuilder& image);
    ~OpenedSurvey();
    OpenedSurvey(const OpenedSurvey&) = delete;
    OpenedSurvey& operator=(const OpenedSurvey&) = delete;
};

struct CsvText {
    int result = -1;   // what the writer returned
    std::string text;  // what reached the output file
};

// Runs `write` on a sink whose stream is a fresh scratch file (no echo).
CsvText csv_written_by(const std::function<int(CsvSink&)>& write);

}  // namespace ugf::test
