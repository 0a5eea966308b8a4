// Sessions share nothing: two surveys converted side by side, taking turns
// row by row or running on two threads at once, give exactly the bytes that
// each gives when converted alone.
#include <gtest/gtest.h>

#include <condition_variable>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "file/session.h"
#include "run/export.h"

namespace ugf {
namespace {

std::vector<std::uint8_t> sample(const char* name) {
    std::ifstream in(std::string(UGF_EXAMPLES_DIR) + "/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// One conversion into memory. `after_row` runs whenever a line end was
// written, so that a test can hand the turn to another conversion.
struct Conversion {
    std::vector<std::uint8_t> bytes;
    std::unique_ptr<DlSession> session = std::make_unique<DlSession>();
    std::string text;
    std::function<void()> after_row = [] {};

    static void write(void* context, const char* data, std::size_t n) {
        auto& c = *static_cast<Conversion*>(context);
        c.text.append(data, n);
        if (n != 0 && data[n - 1] == '\n') c.after_row();
    }
    int run(int form) {
        if (open_datalogger_memory(*session, bytes.data(), bytes.size()) == 0) return 0;
        CsvSink sink;
        sink.write = write;
        sink.context = this;
        return export_datalogger_file(*session, form, sink);
    }
};

std::string alone(const char* name, int form) {
    Conversion c{sample(name)};
    EXPECT_EQ(c.run(form), 1) << name;
    return c.text;
}

struct Pair {
    const char* first;
    const char* second;
    int form;
};

constexpr Pair PAIRS[] = {
    {"corrosion_2d.ugf", "flaw_welds.ugf", OUTPUT_DETAILED},
    {"precision_3d.ugf", "drain_linear.ugf", OUTPUT_DETAILED},
    {"manual_4d.ugf", "boiler.ugf", OUTPUT_GRID},
    {"valves_manual.ugf", "exchanger_3d_manual.ugf", OUTPUT_DETAILED},
};

TEST(Reentrant, TwoSurveysTakingTurnsEveryFewRows) {
    for (const Pair& p : PAIRS) {
        Conversion a{sample(p.first)}, b{sample(p.second)};
        // The two run on threads, but only the one holding the turn runs: a
        // conversion hands the turn over after three rows and waits for it.
        std::mutex m;
        std::condition_variable cv;
        int turn = 0;
        bool done[2] = {false, false};
        auto hand_over = [&](int me, int& rows) {
            if (++rows % 3 != 0) return;
            std::unique_lock<std::mutex> lock(m);
            turn = 1 - me;
            cv.notify_all();
            cv.wait(lock, [&] { return turn == me || done[1 - me]; });
        };
        int rows_a = 0, rows_b = 0;
        a.after_row = [&] { hand_over(0, rows_a); };
        b.after_row = [&] { hand_over(1, rows_b); };
        auto run = [&](Conversion& c, int me) {
            {
                std::unique_lock<std::mutex> lock(m);
                cv.wait(lock, [&] { return turn == me; });
            }
            EXPECT_EQ(c.run(p.form), 1);
            std::lock_guard<std::mutex> lock(m);
            done[me] = true;
            turn = 1 - me;
            cv.notify_all();
        };
        std::thread ta(run, std::ref(a), 0), tb(run, std::ref(b), 1);
        ta.join();
        tb.join();
        EXPECT_GT(rows_a, 6) << p.first;
        EXPECT_GT(rows_b, 6) << p.second;
        EXPECT_EQ(a.text, alone(p.first, p.form)) << p.first;
        EXPECT_EQ(b.text, alone(p.second, p.form)) << p.second;
    }
}

TEST(Reentrant, TwoSurveysOnTwoThreadsAtOnce) {
    for (const Pair& p : PAIRS) {
        Conversion a{sample(p.first)}, b{sample(p.second)};
        for (int round = 0; round < 3; ++round) {
            a.text.clear();
            b.text.clear();
            std::thread ta([&] { EXPECT_EQ(a.run(p.form), 1); });
            std::thread tb([&] { EXPECT_EQ(b.run(p.form), 1); });
            ta.join();
            tb.join();
            EXPECT_EQ(a.text, alone(p.first, p.form)) << p.first;
            EXPECT_EQ(b.text, alone(p.second, p.form)) << p.second;
        }
    }
}

}  // namespace
}  // namespace ugf
