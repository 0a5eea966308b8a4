// `ugf`: batch conversion and examination of datalogger surveys, one
// subcommand each, over the same library as the converter.
#include <cstdio>
#include <string>
#include <vector>

#include "cli/commands.h"


namespace {

int run(int argc, const char* const* argv) {
    CLI::App app{"Converts, examines and compares the datalogger surveys (.ugf) of ultrasonic\n"
                 "thickness gauges and flaw detectors.",
                 "ugf"};
    app.set_version_flag("--version", std::string("ugf ") + UGF_VERSION);
    app.require_subcommand(1, 1);
    // A path such as /data/tank4.ugf is a path, on Windows too.
    app.allow_windows_style_options(false);
    std::vector<std::pair<CLI::App*, ugf::kit::Run>> commands;
    for (auto add : {ugf::kit::add_convert, ugf::kit::add_stats, ugf::kit::add_report, ugf::kit::add_compare,
                     ugf::kit::add_export,
#if UGF_WITH_ARCHIVE
                     ugf::kit::add_archive,
#endif
                    }) {
        ugf::kit::Run run = add(app);
        commands.emplace_back(app.get_subcommands({}).back(), run);
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForVersion& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        app.exit(e);
        return 2;
    }
    for (auto& [command, run] : commands) {
        if (command->parsed()) return run();
    }
    return 2;
}

}  // namespace

#if defined(_WIN32)
// The wide-character entry gets names in any script; they go on as UTF-8.
int wmain(int argc, wchar_t** argv) {
    const ugf::kit::Arguments args = ugf::kit::utf8_arguments(argc, argv);
    return run(argc, args.argv.data());
}
#else
int main(int argc, char** argv) { return run(argc, argv); }
#endif
