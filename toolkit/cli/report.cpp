// `ugf report`: a self-contained HTML page for each survey, beside it or in
// an output folder, on several threads.
#include <cstdio>
#include <optional>

#include "cli/commands.h"
#include "core/report.h"

namespace ugf::kit {

namespace {

struct ReportCommand {
    std::vector<std::string> paths;
    ReportOptions options;
    std::string out_dir;
    unsigned jobs = default_jobs();
};

int run_report(const ReportCommand& c) {
    int failed = 0;
    const std::vector<Input> inputs = gather_inputs(c.paths, failed);
    const Outputs outputs = plan_outputs(inputs, "_report.html", c.out_dir);
    const std::size_t failures = run_jobs(inputs, c.jobs, true, [&](const Input& input, Survey& survey) -> std::string {
        const std::size_t i = static_cast<std::size_t>(&input - inputs.data());
        if (!outputs.clashes[i].empty()) return outputs.clashes[i];
        if (!has_survey_extension(input.path)) return "not a .ugf file";
        std::string why, page;
        if (open_survey(survey, input.path, why) == 0) return why;
        if (survey_report(survey, c.options, page, why) == 0) return why;
        if (write_file_atomically(outputs.targets[i], page, false, why) == 0) return why;
        return "";
    });
    const std::size_t total = inputs.size() + static_cast<std::size_t>(failed);
    std::fprintf(stderr, "reported %zu of %zu surveys\n", inputs.size() - failures, total);
    return failures == 0 && failed == 0 ? 0 : 1;
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
