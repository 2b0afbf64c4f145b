#include "core/recording_progress.h"

#include <gtest/gtest.h>

#include "core/start_questions.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

TEST(RecordingProgress, WithoutAnEndHasNeitherPercentNorRemainder) {
    RecordingProgress progress;
    progress.begin(StopRule::Manual, 0.0, 0, 5000);
    const RecordingFigures figures = progress.update(1000, 7500);
    EXPECT_EQ(figures.elapsedSeconds, 2U);
    EXPECT_FALSE(figures.percent);
    EXPECT_FALSE(figures.remainingSeconds);
    EXPECT_DOUBLE_EQ(figures.bytesPerSecond, 400.0);
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
        static_cast<void>(progress.update(bytes += 250, now));
    }
    for (; now < 14000; now += 250) {
        static_cast<void>(progress.update(bytes += 2500, now));
    }
    const RecordingFigures figures = progress.update(bytes, now - 250);
    EXPECT_NEAR(figures.bytesPerSecond, 10000.0, 1.0);
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
