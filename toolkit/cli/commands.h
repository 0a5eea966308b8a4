// The subcommands of `ugf`: each adds its options to the command line and
// runs once it is parsed. Exit statuses: 0 when everything succeeded, 1
// when some input failed, 2 for a usage error.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "ugf/files.hpp"
#include "ugf/survey.hpp"

namespace ugf::kit {

using Run = std::function<int()>;

Run add_convert(CLI::App& app);
Run add_stats(CLI::App& app);
Run add_export(CLI::App& app);
Run add_report(CLI::App& app);
Run add_compare(CLI::App& app);
#if UGF_WITH_ARCHIVE
Run add_archive(CLI::App& app);  // where the archive is built
#endif

// Prints "ugf: " and the message on standard error.
void complain(const std::string& message);

// The surveys named by the command line's paths (files, and the surveys in
// folders). A path that can't be used is reported and counted in `failed`.
std::vector<Input> gather_inputs(const std::vector<std::string>& paths, int& failed);

// The output of each input (named as `output_path` names it) and, for an
// input whose output an earlier input already has, the failure to report
// instead of writing it, so that no output depends on which thread finishes
// last ("" for the others).
struct Outputs {
    std::vector<std::string> targets;
    std::vector<std::string> clashes;
};
Outputs plan_outputs(const std::vector<Input>& inputs, const std::string& ending, const std::string& out_dir);

// Runs `work` on every input on `jobs` threads, each with a survey of its
// own; `work` returns "" on success or what went wrong. Failures are
// reported in the order of the inputs, each on one line, and a progress bar
// is drawn on standard error when it is a terminal and `progress` is set.
// Returns the number of inputs that failed.
std::size_t run_jobs(const std::vector<Input>& inputs, unsigned jobs, bool progress,
                     const std::function<std::string(const Input&, Survey&)>& work);

// What a subcommand does to each survey that its paths name.
struct SurveyWork {
    std::vector<std::string> paths;
    unsigned jobs = 1;
    bool progress = false;
    // Outputs named NAME + ending beside each survey or in out_dir; no
    // outputs when `ending` is empty.
    std::string ending;
    std::string out_dir;
    // The summary's verb ("converted" N of M surveys); none when empty.
    std::string verb;
};

// Opens each survey (a name must end in ".ugf") and runs `work` on it with
// its output's name; `work` returns "" or what went wrong, which is told on
// standard error. Returns the exit status: 0 when every path and survey was
// done, else 1.
int run_surveys(const SurveyWork& what,
                const std::function<std::string(Survey&, std::size_t index, const std::string& target)>& work);

// The default number of threads: the number of processors.
unsigned default_jobs();

}  // namespace ugf::kit
