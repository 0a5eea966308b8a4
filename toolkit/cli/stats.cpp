// `ugf stats`: the figures of each survey's readings, as a table or JSON.
#include <cstdio>
#include <map>
#include <mutex>
#include <optional>

#include "cli/commands.h"
#include "ugf/stats.hpp"

namespace ugf::kit {

namespace {

struct StatsCommand {
    std::vector<std::string> paths;
    bool json = false;
    std::optional<double> minimum;
};

int run_stats(const StatsCommand& c) {
    // The figures are printed in the order of the surveys, whatever the
    // order in which the threads finish them.
    std::map<std::size_t, std::string> texts;
    std::mutex lock;
    const int status = run_surveys({c.paths, default_jobs(), false, "", "", ""},
                                   [&](Survey& survey, std::size_t i, const std::string&) {
                                       Stats stats;
                                       std::string why;
                                       if (survey_stats(survey, c.minimum, stats, why) == 0) return why;
                                       // JSON Lines: one object a survey, each on a line of its own.
                                       std::string text = c.json ? stats_json(stats).dump() + "\n" : stats_text(stats);
                                       std::lock_guard<std::mutex> guard(lock);
                                       texts[i] = std::move(text);
                                       return std::string();
                                   });
    for (const auto& [i, text] : texts) std::fputs(text.c_str(), stdout);
    return status;
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
