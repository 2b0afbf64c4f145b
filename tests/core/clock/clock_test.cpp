// Recordings of boards whose clocks run too fast and too slow, laid over each other by what their passports noted.

#include <algorithm>
#include <gtest/gtest.h>
#include <thread>

#include <tarno2/IADCDevice.h>

#include "core/devices/driver.h"
#include "core/recording/board.h"
#include "records/passport.h"
#include "tests/core/clock/stepping_clock.h"
#include "tests/core/rig.h"
#include "tests/support/temporary_folder.h"

// The simulator is a part of this program, so that it has this program's clock.
TARNO2_EXPORT void* TARNO2_CALL StaticFactory(const char* interfaceName, uint32_t flags);

namespace tarno2::test {
namespace {

constexpr double kHertz = 10000.0;
constexpr uint32_t kMinute = 600;  // steps, and a little more

template <typename Condition>
void waitUntil(Condition condition) {
    while (!condition()) {
        std::this_thread::yield();
    }
}

/// What a recording of the simulator notes of its clock, which is wrong by so many millionths.
std::vector<ClockPair> noted(double millionths, uint32_t steps, int64_t setBy = 0) {
    const ScopedEnvironment settings("TARNO2_SIMULATOR", "ClockError=" + std::to_string(millionths));
    const TemporaryFolder folder;
    const auto fault = [](const std::string& text) { ADD_FAILURE() << text; };
    T_DRIVER driver(fault);
    std::string why;
    auto* const simulator = static_cast<IADCDevice*>(StaticFactory(TARNO2_DEVICE_INTERFACE, 0));
    EXPECT_TRUE(driver.attach(simulator, "Simulator", folder.path(), why)) << why;
    EXPECT_TRUE(driver.selectBoard(4, why)) << why;
    T_BOARD board(driver, 1, fault);
    board.settings.channels = {0};
    board.settings.gains = {1};
    board.settings.frequency = kHertz;
    NotificationLog notes;
    EXPECT_TRUE(board.StartThread(&notes, {}));
    WriterSetup setup = fakeSetup(folder.file("run.dat"), 1);
    setup.passport.emplace();
    RecordDescription description;
    EXPECT_EQ(board.writer().open(setup, description), 0) << board.writer().openError();

    SteppingClock& clock = steppingClock();
    // The board of this recording has a thread of its own.
    std::ranges::for_each(clock.looksOfThreads, [](auto& count) { count.store(0); });
    const uint64_t looks = clock.looks.load();
    board.Begin();
    waitUntil([&] { return clock.looks.load() > looks; });
    clock.steps.store(steps);
    waitUntil([&] { return clock.steps.load() <= steps / 2; });
    clock.setBy.store(setBy);
    waitUntil([&] { return clock.steps.load() == 0; });
    board.requestStop();
    EXPECT_TRUE(notes.nextEnd());
    board.endThread();
    clock.setBy.store(0);

    std::string problem;
    const auto passport = readPassport(readFile(folder.file("run.json")), problem);
    EXPECT_TRUE(passport) << problem;
    return passport ? passport->end.clock : std::vector<ClockPair>();
}

TEST(Clock, LaysRecordingsOverEachOtherToWithinAFrame) {
    const std::vector<ClockPair> fast = noted(50.0, kMinute);
    const std::vector<ClockPair> slow = noted(-50.0, kMinute);
    const auto a = ClockLine::through(fast);
    const auto b = ClockLine::through(slow);
    ASSERT_TRUE(a && b);
    EXPECT_GE(fast.back().monotonic - fast.front().monotonic, 60'000'000'000U);
    EXPECT_NEAR(a->frequency(), kHertz * (1.0 + 50e-6), 0.02);
    EXPECT_NEAR(b->frequency(), kHertz * (1.0 - 50e-6), 0.02);
    // Both began at the moment of their first pairs, but not at the same; a minute later they are 60 frames apart.
    for (const double second : {0.0, 30.0, 60.0}) {
        const double inFast = static_cast<double>(fast.front().frame) + second * kHertz * (1.0 + 50e-6);
        const double inSlow = static_cast<double>(slow.front().frame) + second * kHertz * (1.0 - 50e-6);
        const int64_t apart = slow.front().utc - fast.front().utc;
        EXPECT_NEAR(b->frameAt(a->utcOf(inFast) + apart), inSlow, 1.0) << second;
    }
}

TEST(Clock, ShowsThatTheSystemsClockWasSet) {
    constexpr int64_t kHour = 3'600'000'000;
    const std::vector<ClockPair> pairs = noted(0.0, kMinute / 10, kHour);
    ASSERT_GT(pairs.size(), 2U);
    size_t jumps = 0;
    for (size_t i = 1; i < pairs.size(); ++i) {
        const auto byMonotonic = static_cast<int64_t>((pairs[i].monotonic - pairs[i - 1].monotonic) / 1000);
        const int64_t apart = pairs[i].utc - pairs[i - 1].utc - byMonotonic;
        EXPECT_TRUE(apart == 0 || apart == kHour) << apart;
        jumps += apart == kHour ? 1 : 0;
    }
    EXPECT_EQ(jumps, 1U);
    EXPECT_NEAR(ClockLine::through(pairs)->frequency(), kHertz, 0.02);
}

}  // namespace
}  // namespace tarno2::test
