// `ugf export --json`: every field of each survey as JSON, in NAME_survey.json.
#include <cstdio>

#include "cli/commands.h"
#include "ugf/json.hpp"

namespace ugf::kit {

namespace {

struct ExportCommand {
    std::vector<std::string> paths;
    bool json = false;
    std::string out_dir;
    unsigned jobs = default_jobs();
};

int run_export(const ExportCommand& c) {
    return run_surveys({c.paths, c.jobs, true, JSON_ENDING, c.out_dir, ""},
                       [&](Survey& survey, std::size_t, const std::string& target) -> std::string {
        std::string why;
        AtomicFile out;
        if (atomic_open(out, target, false, why) == 0) return why;
        const int ok = write_survey_json(survey, [&](std::string_view text) {
            std::fwrite(text.data(), 1, text.size(), out.file);
        }, why);
        if (ok == 0) {
            atomic_abandon(out);
            return why;
        }
        return atomic_commit(out, why) != 0 ? "" : why;
    });
}

}  // namespace

Run add_export(CLI::App& app) {
    auto c = std::make_shared<ExportCommand>();
    CLI::App* cmd = app.add_subcommand("export", "Every field of each survey as open data (NAME_survey.json)");
    cmd->add_option("PATH", c->paths, "Survey files, or folders searched for .ugf files")->required();
    cmd->add_flag("--json", c->json, "JSON, as docs/survey.schema.json describes it")->required();
    cmd->add_option("--out-dir", c->out_dir, "Write the outputs here (keeping the folders below a given folder)");
    cmd->add_option("--jobs", c->jobs, "Threads (default: the number of processors)")->check(CLI::Range(1u, 1024u));
    return [c] { return run_export(*c); };
}

}  // namespace ugf::kit
