#include "display/live_history.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <random>

#include "display/running_screens.h"
#include "tests/display/signal_source.h"

namespace tarno2 {
namespace {

using test::bytesOf;
using test::format16;
using test::wordsOf;
using testing::ElementsAre;

std::vector<int16_t> noise(size_t samples) {
    std::mt19937 random(1);
    std::vector<int16_t> result(samples);
    std::generate(result.begin(), result.end(), [&random] { return static_cast<int16_t>(random()); });
    return result;
}

void feed(LiveHistory& history, const std::vector<int16_t>& samples, size_t channels, size_t blockFrames) {
    for (size_t frame = 0; frame * channels < samples.size(); frame += blockFrames) {
        const size_t end = std::min((frame + blockFrames) * channels, samples.size());
        history.append(frame, std::as_bytes(std::span(samples).subspan(frame * channels, end - frame * channels)));
    }
}

// What a screen has to hold, by looking at every frame.
void expectBuckets(const Screen& screen, const std::vector<int16_t>& samples, size_t channels, uint64_t end) {
    ASSERT_EQ(screen.runs.size(), 1U);
    const auto words = wordsOf(screen);
    for (size_t bucket = 0; bucket < screen.rows / 2; ++bucket) {
        const uint64_t first = screen.runs[0].firstFrame + bucket * screen.bucketFrames;
        const uint64_t last = std::min(first + screen.bucketFrames, end);
        for (size_t channel = 0; channel < channels; ++channel) {
            int16_t low = INT16_MAX;
            int16_t high = INT16_MIN;
            for (uint64_t frame = first; frame < last; ++frame) {
                low = std::min(low, samples[frame * channels + channel]);
                high = std::max(high, samples[frame * channels + channel]);
            }
            ASSERT_EQ(words[bucket * 2 * channels + channel], low) << "bucket " << bucket;
            ASSERT_EQ(words[(bucket * 2 + 1) * channels + channel], high) << "bucket " << bucket;
        }
    }
}

TEST(LiveHistory, GivesEveryFrameWhileTheyFit) {
    LiveHistory history(format16(2));
    history.append(0, bytesOf({1, 2, 3, 4, 5, 6}));
    Screen screen;
    ASSERT_TRUE(history.build(1, 10, 5, screen));
    EXPECT_FALSE(screen.pairs());
    EXPECT_EQ(screen.runs[0].firstFrame, 1U);
    EXPECT_THAT(wordsOf(screen), ElementsAre(3, 4, 5, 6));
    EXPECT_FALSE(history.build(3, 10, 5, screen));
    EXPECT_EQ(screen.rows, 0U);
}

TEST(LiveHistory, ShowsExtremesAtEveryScale) {
    for (const size_t channels : {size_t{1}, size_t{3}, size_t{70}}) {
        const size_t frames = 100000;
        const auto samples = noise(frames * channels);
        LiveHistory history(format16(channels));
        feed(history, samples, channels, 777);
        for (const auto& [first, end, buckets] : {std::tuple<uint64_t, uint64_t, size_t>{0, frames, 100},
                                                  {0, frames, 1000},
                                                  {0, 2 * frames, 1000},
                                                  {12345, 12345 + 5000, 700},
                                                  {50001, 99999, 3}}) {
            Screen screen;
            ASSERT_TRUE(history.build(first, end, buckets, screen));
            ASSERT_TRUE(screen.pairs());
            EXPECT_LE(screen.runs[0].firstFrame, first);
            EXPECT_EQ(screen.runs[0].firstFrame % screen.bucketFrames, 0U);
            EXPECT_LE(screen.rows / 2, buckets + 1);
            // The last bucket goes on where entries do.
            const uint64_t last = screen.runs[0].firstFrame + screen.rows / 2 * screen.bucketFrames;
            EXPECT_GE(last, std::min<uint64_t>(end, frames));
            screen.rows -= 2;
            expectBuckets(screen, samples, channels, frames);
        }
    }
}

TEST(LiveHistory, CoarsensWhatIsTooOldForItsMemory) {
    const size_t frames = 200000;
    const auto samples = noise(frames);
    // Raw frames for a third of it, fine entries for a part.
    LiveHistory history(format16(1), size_t{48} << 10);
    feed(history, samples, 1, 1000);
    EXPECT_EQ(history.firstRawFrame(), frames - (24 << 10));
    Screen screen;
    ASSERT_TRUE(history.build(0, 1000, 1000, screen));
    EXPECT_TRUE(screen.pairs());
    screen.rows -= 2;
    expectBuckets(screen, samples, 1, frames);
    ASSERT_TRUE(history.build(frames - 1000, frames, 1000, screen));
    EXPECT_EQ(wordsOf(screen), std::vector<int16_t>(samples.end() - 1000, samples.end()));
}

TEST(LiveHistory, LeavesGapsEmpty) {
    LiveHistory history(format16(1));
    history.append(100, bytesOf({1, 2, 3}));
    history.append(105, bytesOf({4, 5}));
    history.append(1000000, bytesOf({6}));
    EXPECT_EQ(history.frameCount(), 1000001U);
    Screen screen;
    ASSERT_TRUE(history.build(0, 200, 200, screen));
    ASSERT_EQ(screen.runs.size(), 2U);
    EXPECT_EQ(screen.runs[0].firstFrame, 100U);
    EXPECT_EQ(screen.runs[1].firstFrame, 105U);
    EXPECT_EQ(screen.runs[1].firstRow, 3U);
    EXPECT_THAT(wordsOf(screen), ElementsAre(1, 2, 3, 4, 5));
    ASSERT_TRUE(history.build(0, 1600000, 100, screen));
    EXPECT_THAT(wordsOf(screen), ElementsAre(1, 5, 6, 6));
    EXPECT_EQ(screen.runs.size(), 2U);
}

TEST(LiveHistory, KeepsLinesApartFromCodes) {
    // Code 1 with line 0, code 3 with both lines, code 2 with line 0: the first line was 1 all the time.
    LiveHistory history(format16(2, 2));
    history.append(0, bytesOf({1 << 2 | 1, -4, 3 << 2 | 3, -8, 2 << 2 | 1, 8}));
    Screen screen;
    ASSERT_TRUE(history.build(0, 3, 1, screen));
    ASSERT_EQ(screen.rows, 2U);
    const auto words = wordsOf(screen);
    EXPECT_EQ(words[0], 1 << 2 | 1);
    EXPECT_EQ(words[1] >> 2, -2);
    EXPECT_EQ(words[2], 3 << 2 | 3);
    EXPECT_EQ(words[3] >> 2, 2);
}

TEST(LiveHistory, ComparesUnsignedCodesAsSuch) {
    SignalFormat format = format16(1);
    format.word.signedCodes = false;
    LiveHistory history(format);
    history.append(0, bytesOf({1, -1, 2}));
    const auto values = history.values();
    ASSERT_EQ(values.size(), 1U);
    EXPECT_EQ(values[0].newest, 2);
    EXPECT_EQ(values[0].minimum, 1);
    EXPECT_EQ(values[0].maximum, 65535);
}

TEST(LiveHistory, TellsNewestValuesAndExtremesSinceTheReset) {
    LiveHistory history(format16(2, 1));
    EXPECT_TRUE(history.values().empty());
    history.append(0, bytesOf({2, 20, -8, 10}));
    history.append(2, bytesOf({4, 40}));
    auto values = history.values();
    EXPECT_EQ(values[0].newest, 2);
    EXPECT_EQ(values[0].minimum, -4);
    EXPECT_EQ(values[0].maximum, 2);
    EXPECT_EQ(values[1].minimum, 5);
    history.resetExtremes();
    EXPECT_EQ(history.values()[1].minimum, 20);
    history.append(3, bytesOf({6, 60}));
    values = history.values();
    EXPECT_EQ(values[1].minimum, 30);
    EXPECT_EQ(values[1].maximum, 30);
}

TEST(RunningScreens, ReadFromTheFileWhatTheHistoryHasNotFineEnough) {
    const size_t frames = 100000;
    const auto samples = noise(frames);
    LiveHistory history(format16(1), size_t{16} << 10);
    feed(history, samples, 1, 1000);
    test::MemoryFrames file(samples, 1);
    FileScreens fromFile(file, format16(1));
    RunningScreens screens(history, fromFile);
    Screen screen;
    ASSERT_TRUE(screens.build(10, 510, 500, screen));
    EXPECT_EQ(wordsOf(screen), std::vector<int16_t>(samples.begin() + 10, samples.begin() + 510));
    ASSERT_TRUE(screens.build(frames - 100, frames + 400, 500, screen));
    EXPECT_EQ(wordsOf(screen), std::vector<int16_t>(samples.end() - 100, samples.end()));
    ASSERT_TRUE(screens.build(0, frames, 300, screen));
    screen.rows -= 2;
    expectBuckets(screen, samples, 1, frames);
    EXPECT_FALSE(screen.provisional);
}

}  // namespace
}  // namespace tarno2
