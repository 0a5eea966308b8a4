// `ugf convert`: every survey into the file that the converter would write,
// or a quoted CSV, on several threads.
#include <cstdio>

#include "cli/commands.h"
#include "ugf/convert.hpp"

namespace ugf::kit {

namespace {

struct ConvertCommand {
    std::vector<std::string> paths;
    bool grid = false;
    bool quote = false;
    bool xlsx = false;
    std::string out_dir;
    unsigned jobs = default_jobs();
};

int run_convert(const ConvertCommand& c) {
    const ConvertOptions options{c.grid ? FORM_GRID : FORM_DETAILED, c.quote, c.xlsx};
    return run_surveys({c.paths, c.jobs, true, output_ending(options), c.out_dir, "converted"},
                       [&](Survey& survey, std::size_t, const std::string& target) {
                           std::string why;
                           return convert_to_file(survey, options, target, why) != 0 ? "" : why;
                       });
}

}  // namespace

Run add_convert(CLI::App& app) {
    auto c = std::make_shared<ConvertCommand>();
    CLI::App* cmd = app.add_subcommand("convert", "Convert surveys to CSV, as ugf2csv does, into the name it gives");
    cmd->add_option("PATH", c->paths, "Survey files, or folders searched for .ugf files")->required();
    cmd->add_flag("--grid", c->grid, "The grid form (default: the detailed form)");
    cmd->add_option("--out-dir", c->out_dir, "Write the outputs here (keeping the folders below a given folder)");
    cmd->add_flag("--quote", c->quote, "Quote cells whose stored text holds a comma, a quote or a line end (RFC 4180)");
    cmd->add_flag("--xlsx", c->xlsx, "A workbook (NAME_detailed_output.xlsx) of the same rows and cells instead of the CSV")
        ->excludes("--quote");
    cmd->add_option("--jobs", c->jobs, "Threads (default: the number of processors)")->check(CLI::Range(1u, 1024u));
    return [c] { return run_convert(*c); };
}

}  // namespace ugf::kit
