// The detailed form's walk over a survey's points (PointWalk), which carries
// its cursor, storage index and identifier texts from one point to the next,
// against the plain step of the walk pattern from the general composition's
// cursor: every visit must name the same storage index and the identifier
// that the general composition gives for it.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "file/session.h"
#include "ident/cursor.h"
#include "store/session_id.h"
#include "support/survey_image.h"

namespace ugf {
namespace {

// A dimension of `size` texts from a start of letters or digits.
test::DimRange dimension(int size, bool letters, std::uint64_t step) {
    if (letters) {
        return {std::string(1, 'A'), std::string(1, static_cast<char>('A' + (size - 1) * static_cast<int>(step))), step};
    }
    const int last = 1 + (size - 1) * static_cast<int>(step);
    std::string end = std::to_string(last);
    return {std::string(end.size() - 1, '0') + "1", end, step};
}

TEST(PointWalk, IndexesAndIdentifiersLikeThePlainWalk) {
    std::uint64_t seed = 11;
    auto next = [&seed](int n) {
        seed = seed * 6364136223846793005ull + 1442695040888963407ull;
        return static_cast<int>((seed >> 33) % static_cast<std::uint64_t>(n));
    };
    int walked = 0;
    for (int round = 0; round < 600; ++round) {
        test::SurveyHeader h;
        const bool three = next(2) == 1;
        h.file_type = three ? FILE_TYPE_3D : FILE_TYPE_2D;
        h.gage_type = 6;
        h.setup_count = 1;
        h.walk_pattern = static_cast<std::uint32_t>(next(4));
        h.first_inc = static_cast<std::uint32_t>(next(4));
        h.second_inc = static_cast<std::uint32_t>(next(4));
        h.third_inc = static_cast<std::uint32_t>(next(4));
        h.prefix = next(3) == 0 ? "P-" : "";
        std::vector<test::DimRange> dims;
        for (int d = 0; d < (three ? 3 : 2); ++d) {
            dims.push_back(dimension(1 + next(d == 0 ? 30 : 6), next(2) == 1, next(4) == 0 ? 2 : 1));
        }
        test::set_ranges(h, dims);
        h.id_count = 1;
        const test::ImageBuilder image = test::survey_image(h);

        DlSession session, reference;
        ASSERT_EQ(open_datalogger_memory(session, image.bytes.data(), image.bytes.size()), 1) << round;
        ASSERT_EQ(open_datalogger_memory(reference, image.bytes.data(), image.bytes.size()), 1) << round;
        // The general way: the cursor goes to the index that the step made
        // (session_point_id seeks it there, as the converter's walk does)
        // and steps from there.
        IdCursor& plain = reference.id_spec.cursor;
        plain = reference.opened_cursor;
        const CursorStepper stepper = cursor_stepper(session.first_inc, session.second_inc, session.third_inc,
                                                     session.walk_pattern, session.file_type, session.fourth_inc);
        PointWalk walk = point_walk_begin(session);
        for (std::uint32_t visit = 0; visit < walk.total && visit < 400; ++visit) {
            const auto index = static_cast<std::uint32_t>(static_cast<std::uint64_t>(cursor_flat_index(plain)));
            ASSERT_EQ(walk.storage_index, index) << round << " visit " << visit;
            char made[ID_COMPOSE_ROOM];
            const std::size_t n = point_walk_id(session, walk, made);
            char expected[ID_COMPOSE_ROOM] = {};
            session_point_id(reference, index, expected, 1);
            ASSERT_EQ(std::string(made, n), expected) << round << " visit " << visit;
            point_walk_advance(session, walk);
            cursor_stepper_step(plain, stepper);
            ++walked;
        }
    }
    EXPECT_GT(walked, 20000);
}

}  // namespace
}  // namespace ugf
