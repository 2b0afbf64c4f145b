#include "records/clock_pairs.h"

#include <gtest/gtest.h>

namespace tarno2 {
namespace {

constexpr uint64_t kSecond = 1'000'000'000;
constexpr int64_t kStart = 1'760'000'000'000'000;  // microseconds since 1970

/// A stream of so many seconds with so many blocks in each, whose clock is off by so many millionths.
ClockPairs recorded(double hertz, double millionths, uint64_t seconds, uint64_t blocks) {
    ClockPairs clock;
    for (uint64_t block = 0; block <= seconds * blocks; ++block) {
        const uint64_t now = block * kSecond / blocks;
        const double frames = static_cast<double>(now) * 1e-9 * hertz * (1.0 + millionths * 1e-6);
        if (clock.isDue(500 + now)) {
            clock.add({static_cast<uint64_t>(frames), 500 + now, kStart + static_cast<int64_t>(now / 1000)});
        }
    }
    return clock;
}

TEST(ClockPairs, LayRecordingsOfTwoComputersOverEachOther) {
    const ClockPairs fast = recorded(10000.0, 50.0, 60, 25);
    const ClockPairs slow = recorded(10000.0, -50.0, 60, 25);
    const auto a = ClockLine::through(fast.pairs());
    const auto b = ClockLine::through(slow.pairs());
    ASSERT_TRUE(a && b);
    EXPECT_NEAR(a->frequency(), 10000.5, 0.05);
    EXPECT_NEAR(b->frequency(), 9999.5, 0.05);
    // After 60 s the streams are 60 frames apart; the same moment is found in both to within one.
    for (const double second : {0.0, 17.25, 60.0}) {
        const double inFast = second * 10000.5;
        EXPECT_NEAR(b->frameAt(a->utcOf(inFast)), second * 9999.5, 1.0) << second;
    }
}

TEST(ClockPairs, ThinOutEvenlyOverADay) {
    const ClockPairs clock = recorded(100.0, 0.0, 86400, 4);
    const auto pairs = clock.pairs();
    ASSERT_LE(pairs.size(), 1024U);
    EXPECT_GT(pairs.size(), ClockPairs::kMostPairs / 2);
    EXPECT_EQ(pairs.front().frame, 0U);
    for (size_t i = 2; i < pairs.size(); ++i) {
        EXPECT_EQ(pairs[i].monotonic - pairs[i - 1].monotonic, pairs[1].monotonic - pairs[0].monotonic);
    }
}

TEST(ClockPairs, NeedTimeBetweenThemAndNeverGoBack) {
    ClockPairs clock;
    clock.add({10, 1000, kStart});
    EXPECT_FALSE(ClockLine::through(clock.pairs()));
    clock.add({9, 2000, kStart});
    clock.add({11, 1000, kStart});
    EXPECT_EQ(clock.pairs().size(), 1U);
    clock.add({10, 3000, kStart});
    EXPECT_FALSE(ClockLine::through(clock.pairs())) << "a board that stands still";
}

}  // namespace
}  // namespace tarno2
