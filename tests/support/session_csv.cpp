#include "support/session_csv.h"

#include <cstdio>

namespace ugf::test {

OpenedSurvey::OpenedSurvey(const ImageBuilder& image) {
    image.save(dir.file("survey.ugf"));
    session.dl_stream.console = standard_output_console();
    result = open_datalogger_session(session, dir.file("survey.ugf").c_str());
}

OpenedSurvey::~OpenedSurvey() {
    close_datalogger_session(session);
}

CsvText csv_written_by(const std::function<int(CsvSink&)>& write) {
    ScratchDir dir;
    const std::string path = dir.file("out.csv");
    CsvText out;
    std::FILE* file = std::fopen(path.c_str(), "w");
    if (file == nullptr) return out;
    CsvSink sink;
    sink.stream = file;
    out.result = write(sink);
    std::fclose(file);
    out.text = read_file(path).value_or("<missing>");
    return out;
}

}  // namespace ugf::test
