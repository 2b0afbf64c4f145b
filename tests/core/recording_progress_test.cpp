#include "core/recording/recording_progress.h"

#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <thread>

#include "core/recording/start_questions.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

TEST(RecordingProgress, ASteadyStreamHasASteadyRateHoweverLongItsBlocksAre) {
    for (const uint64_t period : {40U, 333U, 1250U, 10000U}) {
        RecordingProgress progress;
        progress.begin(StopRule::Manual, 0.0, 0, 1000);
        uint64_t bytes = 0;
        std::optional<double> rate;
        // The board took its time before it began.
        for (uint64_t now = 1700, next = 1700; now < 61700; now += 100) {
            for (; next <= now; next += period) {
                progress.block(bytes += period * 80, next + next % 3);
            }
            rate = progress.update(bytes, now).bytesPerSecond;
            EXPECT_EQ(rate.has_value(), next >= 1700 + period + std::max<uint64_t>(period, 500)) << now;
            EXPECT_NEAR(rate.value_or(80000.0), 80000.0, 800.0) << period << " at " << now;
        }
        rate = progress.update(bytes, 200000).bytesPerSecond;
        ASSERT_TRUE(rate);
        EXPECT_LT(*rate, 60000.0) << "nothing comes any more";
    }
}

TEST(DiskWatch, TellsOnceUntilTheDiskHasCaughtUp) {
    DiskWatch watch;
    const struct {
        uint64_t waiting;
        bool told;
    } steps[] = {{0, false}, {50, false}, {51, true}, {100, false}, {30, false}, {60, false}, {24, false}, {51, true}};
    for (const auto& [waiting, told] : steps) {
        EXPECT_EQ(watch.fallsBehind(waiting, 100), told) << waiting;
    }
}

TEST(NewestBlock, GivesMarksThatBelongTogether) {
    NewestBlock newest;
    std::atomic<bool> done{false};
    std::thread writer([&] {
        for (uint32_t i = 1; i <= 200000; ++i) {
            newest.put({i, uint64_t{i} * 3, uint64_t{i} * 5});
        }
        done = true;
    });
    while (!done) {
        if (const auto mark = newest.get()) {
            ASSERT_EQ(mark->bytes, uint64_t{mark->session} * 3);
            ASSERT_EQ(mark->time, uint64_t{mark->session} * 5);
        }
    }
    writer.join();
    EXPECT_EQ(newest.get()->session, 200000U);
}

TEST(RecordingProgress, TimeRuleGoesByTheClock) {
    RecordingProgress progress;
    progress.begin(StopRule::Time, 10.0, 0, 1000);
    const struct {
        uint64_t now;
        int percent;
        uint64_t left;
    } cases[] = {{1000, 0, 10}, {3500, 25, 8}, {11000, 100, 0}, {20000, 100, 0}};
    for (const auto& c : cases) {
        const RecordingFigures figures = progress.update(0, c.now);
        EXPECT_EQ(figures.percent, c.percent) << c.now;
        EXPECT_EQ(figures.remainingSeconds, c.left) << c.now;
    }
}

TEST(RecordingProgress, SizeRuleGoesByWhatIsWrittenLately) {
    RecordingProgress progress;
    progress.begin(StopRule::Size, 0.0, 100000, 0);
    EXPECT_FALSE(progress.update(0, 10).remainingSeconds) << "nothing is known yet";
    // Slow for ten seconds, then ten times as fast: after a few seconds the old pace is forgotten.
    uint64_t bytes = 0;
    uint64_t now = 0;
    for (; now < 10000; now += 250) {
        progress.block(bytes += 250, now);
    }
    for (; now < 14000; now += 250) {
        progress.block(bytes += 2500, now);
    }
    const RecordingFigures figures = progress.update(bytes, now - 250);
    EXPECT_NEAR(figures.bytesPerSecond.value_or(0.0), 10000.0, 1.0);
    EXPECT_EQ(bytes, 50000U);
    EXPECT_EQ(figures.remainingSeconds, 5U);
    EXPECT_EQ(figures.percent, 50);
    EXPECT_EQ(progress.update(120000, now).percent, 100);
}

TEST(StartQuestions, AskForAnExistingFileAndASmallDisk) {
    const TemporaryFolder folder;
    folder.write("old.dat", "x");
    folder.write("noted.txt", "x");
    const struct {
        const char* name;
        double need;
        bool exists;
        bool small;
    } cases[] = {{"old.dat", 0.0, true, false},  {"old", 0.0, true, false},        {"new.dat", 0.0, false, false},
                 {"new.dat", 1e18, false, true}, {"noted.txt", 0.0, false, false}, {"old.dat", 1e25, true, true}};
    for (const auto& c : cases) {
        const StartQuestions questions = startQuestions(folder.file(c.name), c.need);
        EXPECT_EQ(questions.existingFile, c.exists ? folder.file("old.dat") : "") << c.name;
        EXPECT_EQ(questions.diskTooSmall, c.small) << c.name;
    }
    EXPECT_FALSE(startQuestions("", 1e18).diskTooSmall) << "the start refuses it";
}

}  // namespace
}  // namespace tarno2::test
