// `ugf stats`: the figures of each survey's readings, as a table or JSON.
#include <cstdio>
#include <optional>

#include "cli/commands.h"
#include "core/stats.h"

namespace ugf::kit {

namespace {

struct StatsCommand {
    std::vector<std::string> paths;
    bool json = false;
    std::optional<double> minimum;
};

int run_stats(const StatsCommand& c) {
    int failed = 0;
    const std::vector<Input> inputs = gather_inputs(c.paths, failed);
    std::vector<Stats> results(inputs.size());
    std::vector<char> ok(inputs.size(), 0);
    const std::size_t failures = run_jobs(inputs, default_jobs(), false, [&](const Input& input, Survey& survey) -> std::string {
        const std::size_t i = static_cast<std::size_t>(&input - inputs.data());
        std::string why;
        if (open_survey(survey, input.path, why) == 0) return why;
        if (survey_stats(survey, c.minimum, results[i], why) == 0) return why;
        ok[i] = 1;
        return "";
    });
    // JSON Lines: one object a survey, each on a line of its own.
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        if (ok[i] == 0) continue;
        const std::string text = c.json ? stats_json(results[i]).dump() + "\n" : stats_text(results[i]);
        std::fputs(text.c_str(), stdout);
    }
    return failures == 0 && failed == 0 ? 0 : 1;
}

}  // namespace

Run add_stats(CLI::App& app) {
    auto c = std::make_shared<StatsCommand>();
    CLI::App* cmd = app.add_subcommand("stats", "Statistics of the readings of each survey");
    cmd->add_option("PATH", c->paths, "Survey files, or folders searched for .ugf files")->required();
    cmd->add_flag("--json", c->json, "One JSON object per survey, one per line");
    cmd->add_option("--minimum", c->minimum, "Count the readings below this thickness (default: the setups' low alarms)");
    return [c] { return run_stats(*c); };
}

}  // namespace ugf::kit
