// `ugf report`: a self-contained HTML page for each survey, beside it or in
// an output folder, on several threads.
#include <cstdio>
#include <optional>

#include "cli/commands.h"
#include "ugf/report.hpp"

namespace ugf::kit {

namespace {

struct ReportCommand {
    std::vector<std::string> paths;
    ReportOptions options;
    std::string out_dir;
    unsigned jobs = default_jobs();
};

int run_report(const ReportCommand& c) {
    return run_surveys({c.paths, c.jobs, true, REPORT_ENDING, c.out_dir, "reported"},
                       [&](Survey& survey, std::size_t, const std::string& target) {
                           std::string why, page;
                           if (survey_report(survey, c.options, page, why) == 0) return why;
                           return write_file_atomically(target, page, false, why) != 0 ? "" : why;
                       });
}

}  // namespace

Run add_report(CLI::App& app) {
    auto c = std::make_shared<ReportCommand>();
    CLI::App* cmd = app.add_subcommand("report", "An HTML page of each survey: facts, statistics, thickness map, thin spots, scans");
    cmd->add_option("PATH", c->paths, "Survey files, or folders searched for .ugf files")->required();
    cmd->add_option("--minimum", c->options.minimum, "Minimum thickness, in the survey's units (default: the setups' low alarms)");
    cmd->add_option("--nominal", c->options.nominal, "Nominal thickness: the colour scale is centred on it");
    cmd->add_option("--out-dir", c->out_dir, "Write the pages here (keeping the folders below a given folder)");
    cmd->add_option("--jobs", c->jobs, "Threads (default: the number of processors)")->check(CLI::Range(1u, 1024u));
    return [c] { return run_report(*c); };
}

}  // namespace ugf::kit
