// `ugf compare`: two surveys of one part, point by point: a CSV of every
// identifier and a page with the loss map, beside the latest survey or in an
// output folder.
#include <cstdio>
#include <optional>

#include "cli/commands.h"
#include "ugf/compare.hpp"

namespace ugf::kit {

namespace {

struct CompareCommand {
    std::string baseline, latest;
    CompareOptions options;
    std::string out_dir;
};

int run_compare(const CompareCommand& c) {
    Survey baseline, latest;
    std::string why;
    // Both surveys are read before anything is written: a failure leaves no output.
    for (auto [survey, path] : {std::pair{&baseline, &c.baseline}, std::pair{&latest, &c.latest}}) {
        if (open_survey(*survey, *path, why) == 0) {
            complain(*path + ": " + why);
            return 1;
        }
    }
    Comparison comparison;
    std::string page;
    if (compare_surveys(baseline, latest, c.options, comparison, why) == 0 ||
        compare_page(comparison, latest, page, why) == 0) {
        complain(c.baseline + " and " + c.latest + ": " + why);
        return 1;
    }
    const Input input{c.latest, ""};
    const std::string csv_target = output_path(input, COMPARE_CSV_ENDING, c.out_dir);
    const std::string page_target = output_path(input, COMPARE_PAGE_ENDING, c.out_dir);
    if (write_file_atomically(csv_target, compare_csv(comparison), true, why) == 0 ||
        write_file_atomically(page_target, page, false, why) == 0) {
        complain(why);
        return 1;
    }
    std::fprintf(stderr, "compared %zu points (%zu matched, %zu baseline only, %zu latest only)\n",
                 comparison.rows.size(), comparison.both, comparison.baseline_only, comparison.latest_only);
    return 0;
}

}  // namespace

Run add_compare(CLI::App& app) {
    auto c = std::make_shared<CompareCommand>();
    CLI::App* cmd = app.add_subcommand("compare", "Compare two surveys of one part: loss, corrosion rate, remaining life");
    cmd->add_option("BASELINE", c->baseline, "The earlier survey")->required();
    cmd->add_option("LATEST", c->latest, "The later survey; numbers are in its units")->required();
    cmd->add_option("--years", c->options.years, "Years between the surveys: gives the corrosion rate")
        ->check(CLI::PositiveNumber);
    cmd->add_option("--minimum", c->options.minimum, "Minimum thickness, in the latest's units (default: its setups' low alarms)");
    cmd->add_option("--out-dir", c->out_dir, "Write LATEST_compare.csv and LATEST_compare.html here");
    return [c] { return run_compare(*c); };
}

}  // namespace ugf::kit
