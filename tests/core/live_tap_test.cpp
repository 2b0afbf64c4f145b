#include "core/recording/live_tap.h"

#include <cstring>
#include <gmock/gmock.h>
#include <thread>

#include "tests/core/rig.h"

namespace tarno2::test {
namespace {

using testing::ElementsAre;
using testing::Pair;

/// Frames of two 64-bit words, each word being the frame's number.
constexpr size_t kFrameBytes = 16;

std::vector<uint64_t> numbered(uint64_t first, size_t frames) {
    std::vector<uint64_t> words(frames * 2);
    for (size_t i = 0; i < words.size(); ++i) {
        words[i] = first + i / 2;
    }
    return words;
}

void put(LiveTap& tap, uint64_t first, size_t frames) {
    const auto words = numbered(first, frames);
    tap.put(std::as_bytes(std::span(words)));
}

/// What the tap holds, as stretches of frame numbers; every word is checked.
std::vector<std::pair<uint64_t, uint64_t>> drain(LiveTap& tap) {
    std::vector<std::pair<uint64_t, uint64_t>> stretches;
    while (tap.take([&](uint64_t first, std::span<const std::byte> frames) {
        ASSERT_EQ(frames.size() % kFrameBytes, 0U);
        std::vector<uint64_t> words(frames.size() / sizeof(uint64_t));
        std::memcpy(words.data(), frames.data(), frames.size());
        ASSERT_EQ(words, numbered(first, words.size() / 2)) << "torn";
        if (stretches.empty() || stretches.back().second != first) {
            stretches.emplace_back(first, first);
        }
        stretches.back().second += words.size() / 2;
    })) {
    }
    return stretches;
}

TEST(LiveTap, HandsFramesOverInOrder) {
    LiveTap tap;
    tap.put({});
    ASSERT_TRUE(tap.prepare(kFrameBytes, 100 * kFrameBytes, 1e6));
    tap.setWatched(true);
    EXPECT_THAT(drain(tap), ElementsAre());
    put(tap, 0, 100);
    put(tap, 100, 250);  // larger than announced
    EXPECT_EQ(tap.frameCount(), 350U);
    EXPECT_THAT(drain(tap), ElementsAre(Pair(0, 350)));
    EXPECT_THAT(drain(tap), ElementsAre());
    put(tap, 350, 1);
    EXPECT_THAT(drain(tap), ElementsAre(Pair(350, 351)));
}

TEST(LiveTap, CountsFramesThatNobodyWatched) {
    LiveTap tap;
    ASSERT_TRUE(tap.prepare(kFrameBytes, 100 * kFrameBytes, 0));
    put(tap, 0, 100);
    EXPECT_THAT(drain(tap), ElementsAre());
    tap.setWatched(true);
    put(tap, 100, 10);
    EXPECT_THAT(drain(tap), ElementsAre(Pair(100, 110)));
    const uint32_t before = tap.recording();
    ASSERT_TRUE(tap.prepare(kFrameBytes, 100 * kFrameBytes, 0));
    EXPECT_NE(tap.recording(), before);
    EXPECT_THAT(drain(tap), ElementsAre());
    put(tap, 0, 10);
    EXPECT_THAT(drain(tap), ElementsAre(Pair(0, 10)));
}

TEST(LiveTap, KeepsTheNewestFramesForALateReader) {
    LiveTap tap;
    ASSERT_TRUE(tap.prepare(kFrameBytes, size_t{64} << 10, 0));
    tap.setWatched(true);
    constexpr size_t kBlock = (size_t{64} << 10) / kFrameBytes;
    for (uint64_t block = 0; block < 200; ++block) {
        put(tap, block * kBlock, kBlock);
    }
    // 4 MiB are kept for such a stream: the last 64 blocks.
    EXPECT_THAT(drain(tap), ElementsAre(Pair(136 * kBlock, 200 * kBlock)));
    // Of a block larger than all, its end is kept.
    put(tap, 200 * kBlock, 100 * kBlock);
    EXPECT_THAT(drain(tap), ElementsAre(Pair(237 * kBlock, 300 * kBlock)));
}

TEST(LiveTap, WritesPastWhatTheReaderHolds) {
    LiveTap tap;
    ASSERT_TRUE(tap.prepare(kFrameBytes, size_t{64} << 10, 0));
    tap.setWatched(true);
    constexpr size_t kBlock = (size_t{64} << 10) / kFrameBytes;
    put(tap, 0, kBlock);
    const bool taken = tap.take([&](uint64_t first, std::span<const std::byte> frames) {
        for (uint64_t block = 1; block <= 100; ++block) {
            put(tap, block * kBlock, kBlock);
        }
        EXPECT_EQ(std::memcmp(frames.data(), numbered(first, kBlock).data(), frames.size()), 0);
    });
    EXPECT_TRUE(taken);
    const auto stretches = drain(tap);
    EXPECT_EQ(stretches.back().second, 101 * kBlock);
    EXPECT_EQ(stretches.size(), 1U);
}

TEST(LiveTap, NeverTearsWhileBothSidesRun) {
    LiveTap tap;
    constexpr size_t kBlock = 40000;  // several slots
    ASSERT_TRUE(tap.prepare(kFrameBytes, kBlock * kFrameBytes, 0));
    tap.setWatched(true);
    constexpr uint64_t kBlocks = 300;
    std::thread writer([&] {
        for (uint64_t block = 0; block < kBlocks; ++block) {
            put(tap, block * kBlock, kBlock);
        }
    });
    uint64_t last = 0;
    while (last < kBlocks * kBlock) {
        for (const auto& [first, end] : drain(tap)) {
            EXPECT_GE(first, last) << "a frame came twice";
            EXPECT_LE(end, tap.frameCount()) << "a block was seen before it was whole";
            last = end;
        }
        if (HasFailure()) {
            break;
        }
    }
    writer.join();
}

/// Lets nothing into the file.
class Dropping final : public BlockEvaluator {
public:
    int32_t evaluate(std::span<const std::byte> /*block*/, EvaluatedBlock& /*out*/) override { return 0; }
};

TEST(LiveTap, ShowsTheBoardsFramesWhileNoneAreWritten) {
    for (const uint32_t decimation : {1U, 3U}) {
        FakeDevice device;
        device.quiet = true;
        device.ring = [](uint32_t, uint32_t) { return 60000U; };
        device.readerPaced = 600000;
        LiveTap tap;
        SessionRig rig(device);
        rig.board->decimation = decimation;
        rig.board->evaluator = std::make_unique<Dropping>();
        ASSERT_TRUE(rig.prepare(2, 1e6F));
        ASSERT_TRUE(tap.prepare(4, 30000 * 2 / decimation, 2e6));
        tap.setWatched(true);
        rig.board->liveTap = &tap;
        rig.board->Begin();
        std::string seen;
        const uint64_t frames = 300000 / decimation;
        while (tap.frameCount() < frames || tap.take([&](uint64_t first, std::span<const std::byte> block) {
            EXPECT_EQ(first, seen.size() / 4);
            seen.append(reinterpret_cast<const char*>(block.data()), block.size());
        })) {
        }
        EXPECT_EQ(rig.stop().code, StopCode::User);
        std::string expected;
        for (uint64_t frame = 0; frame < frames; ++frame) {
            expected += streamBytes(frame * decimation * 2, 2, 2);
        }
        EXPECT_TRUE(seen == expected) << decimation;
        EXPECT_EQ(rig.board->writer().totalBytes(), 0U);
    }
}

}  // namespace
}  // namespace tarno2::test
