// The batch runner of the subcommands: inputs, threads, progress, failures.
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <map>
#include <mutex>
#include <thread>

#include "cli/commands.h"

#if defined(_WIN32)
#include <io.h>
#define isatty _isatty
#define fileno _fileno
#else
#include <unistd.h>
#endif

namespace ugf::kit {

void complain(const std::string& message) { std::fprintf(stderr, "ugf: %s\n", message.c_str()); }

unsigned default_jobs() {
    const unsigned n = std::thread::hardware_concurrency();
    return n == 0 ? 1 : n;
}

std::vector<Input> gather_inputs(const std::vector<std::string>& paths, int& failed) {
    std::vector<Input> inputs;
    for (const std::string& path : paths) {
        std::string why;
        if (find_surveys(path, inputs, why) == 0) {
            complain(path + ": " + why);
            ++failed;
        }
    }
    return inputs;
}

Outputs plan_outputs(const std::vector<Input>& inputs, const std::string& ending, const std::string& out_dir) {
    Outputs out;
    std::map<std::string, std::size_t> first_of_target;
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        out.targets.push_back(output_path(inputs[i], ending, out_dir));
        const auto [first, added] = first_of_target.emplace(out.targets.back(), i);
        out.clashes.push_back(added ? "" : "its output " + out.targets.back() + " is also the output of " +
                                               inputs[first->second].path);
    }
    return out;
}

namespace {

// A bar on standard error, redrawn in place: "[#####     ] 12/120".
struct Progress {
    bool shown = false;
    std::size_t total = 0;

    void draw(std::size_t done) const {
        if (!shown) return;
        constexpr std::size_t WIDTH = 30;
        const std::size_t filled = total == 0 ? WIDTH : done * WIDTH / total;
        std::fprintf(stderr, "\r[%s%s] %zu/%zu", std::string(filled, '#').c_str(),
                     std::string(WIDTH - filled, ' ').c_str(), done, total);
        std::fflush(stderr);
    }
    void clear() const {
        if (shown) std::fprintf(stderr, "\r%s\r", std::string(50, ' ').c_str());
    }
};

}  // namespace

std::size_t run_jobs(const std::vector<Input>& inputs, unsigned jobs, bool progress,
                     const std::function<std::string(const Input&, Survey&)>& work) {
    std::vector<std::string> results(inputs.size());
    std::vector<char> finished(inputs.size(), 0);
    std::atomic<std::size_t> next{0};
    std::mutex report;
    std::size_t reported = 0;
    std::size_t done = 0;
    std::size_t failed = 0;
    Progress bar{progress && inputs.size() > 1 && isatty(fileno(stderr)) != 0, inputs.size()};
    bar.draw(0);

    auto worker = [&] {
        Survey survey;
        for (std::size_t i = next++; i < inputs.size(); i = next++) {
            std::string why = work(inputs[i], survey);
            close_survey(survey);
            std::lock_guard<std::mutex> lock(report);
            results[i] = std::move(why);
            finished[i] = 1;
            ++done;
            // Failures are told in the order of the inputs, whatever the
            // order in which the threads finish them.
            while (reported < inputs.size() && finished[reported] != 0) {
                if (!results[reported].empty()) {
                    bar.clear();
                    complain(inputs[reported].path + ": " + results[reported]);
                    ++failed;
                }
                ++reported;
            }
            bar.draw(done);
        }
    };
    const unsigned threads = std::max(1u, std::min<unsigned>(jobs, static_cast<unsigned>(inputs.size())));
    std::vector<std::thread> pool;
    for (unsigned t = 1; t < threads; ++t) pool.emplace_back(worker);
    worker();
    for (std::thread& t : pool) t.join();
    bar.clear();
    return failed;
}

int run_surveys(const SurveyWork& what,
                const std::function<std::string(Survey&, std::size_t index, const std::string& target)>& work) {
    int failed = 0;
    const std::vector<Input> inputs = gather_inputs(what.paths, failed);
    const Outputs outputs = plan_outputs(inputs, what.ending, what.out_dir);
    const std::size_t failures = run_jobs(inputs, what.jobs, what.progress, [&](const Input& input, Survey& survey) -> std::string {
        const std::size_t i = static_cast<std::size_t>(&input - inputs.data());
        if (!what.ending.empty() && !outputs.clashes[i].empty()) return outputs.clashes[i];
        if (!has_survey_extension(input.path)) return "not a .ugf file";
        std::string why;
        if (open_survey(survey, input.path, why) == 0) return why;
        return work(survey, i, outputs.targets[i]);
    });
    if (!what.verb.empty()) {
        const std::size_t total = inputs.size() + static_cast<std::size_t>(failed);
        std::fprintf(stderr, "%s %zu of %zu surveys\n", what.verb.c_str(), inputs.size() - failures, total);
    }
    return failures == 0 && failed == 0 ? 0 : 1;
}

}  // namespace ugf::kit
