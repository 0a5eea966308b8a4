// The argument rules, run on the real binary: console text, status, files.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/image_builder.h"
#include "support/scratch.h"

namespace ugf {
namespace {

using test::run_converter_binary;
using test::ScratchDir;

const std::string USAGE =
    "INFO: Enter two arguments\n" "INFO: 1. \"Drive:\\file_path\\file_name.ugf\"\n"
    "INFO: 2. d (or D) for detailed output; g (or G) for grid output\n"
    "INFO: 3. v (or V) for verbose output whole file on console; a (or A) for abbreviated\n";
const std::string OPEN_FAILED =
    "STATUS: Opening Datalogger Session...\n"
    "ERROR: Operation failed!\n";
const std::string NOT_UGF = "ERROR: input file name error <not .ugf>!\n";
const std::string TOO_LONG = "ERROR: File name too long!\n";

struct ArgCase {
    const char* name;
    std::vector<std::string> args;
    std::string console;
};

TEST(Arguments, CountsLettersAndNamesGiveTheirLinesAndStatusOne) {
    const ArgCase cases[] = {
        {"no arguments", {}, USAGE}, {"two arguments", {"missing.ugf", "d"}, USAGE},
        {"four arguments", {"missing.ugf", "d", "a", "x"}, USAGE},
        {"unknown form letter", {"missing.ugf", "x", "a"}, USAGE},
        {"dash before the letter", {"missing.ugf", "-d", "a"}, USAGE},
        {"empty form", {"missing.ugf", "", "a"}, USAGE}, {"unknown echo letter", {"missing.ugf", "d", "q"}, USAGE},
        {"letters are checked before the name", {"plant7.txt", "d", "x"}, USAGE},
        {"whole words: first letter counts", {"missing.ugf", "dog", "victor"}, OPEN_FAILED},
        {"upper-case letters", {"missing.UGF", "G", "A"}, OPEN_FAILED},
        {"mixed-case extension", {"plant7.Ugf", "d", "a"}, NOT_UGF},
        {"extension not last", {"plant7.ugf.bak", "g", "v"}, NOT_UGF},
        {"name shorter than an extension", {"ugf", "d", "a"}, NOT_UGF}, {"empty name", {"", "d", "a"}, NOT_UGF},
        {"extension alone", {".ugf", "d", "a"}, OPEN_FAILED},
        {"dot elsewhere in the path", {"./a.b/plant.7.ugf", "d", "a"}, OPEN_FAILED},
        {"299 characters", {std::string(295, 'n') + ".ugf", "d", "a"}, OPEN_FAILED},
        {"300 characters", {std::string(296, 'n') + ".ugf", "d", "a"}, TOO_LONG},
        {"too long is checked before the extension", {std::string(300, 'n'), "d", "a"}, TOO_LONG},
    };
    for (const ArgCase& c : cases) {
        ScratchDir dir;
        test::RunResult run = run_converter_binary(c.args, dir.path);
        EXPECT_EQ(run.console, c.console) << c.name;
        EXPECT_EQ(run.errors, "") << c.name;
        EXPECT_EQ(run.status, 1) << c.name;
        EXPECT_TRUE(std::filesystem::is_empty(dir.path)) << c.name << ": nothing is left behind";
    }
}

}  // namespace
}  // namespace ugf
