// Recordings that take a minute or gigabytes; scripts/check-long.sh runs them.

#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>

#include "tests/apps/recording_rig.h"

namespace tarno2::test {
namespace {

/// Records all 160 channels in pieces of 16 MiB, checks every sample, and prints what there was.
void recordAndCheck(Wish wish, const std::string& simulator) {
    const RecordingRig rig;
    wish.channels = 160;
    wish.cut = 16;
    const auto begin = std::chrono::steady_clock::now();
    const auto process = rig.start(wish, simulator);
    ASSERT_EQ(process->waitForEnd(std::chrono::hours(1)), 0);
    const std::chrono::duration<double> recording = std::chrono::steady_clock::now() - begin;
    const std::vector<std::string> pieces = rig.pieces();
    const uint64_t samples = checkRecording(pieces, {.channels = 160, .frequencyPerChannel = wish.frequency / 160});
    uint64_t bytes = 0;
    for (const std::string& name : pieces) {
        bytes += std::filesystem::file_size(name);
    }
    EXPECT_EQ(samples * 2, bytes);
    EXPECT_GT(samples, 0U);
    std::printf("%s: %llu samples, %.1f MiB in %zu pieces, %.1f s, %.1f MiB/s\n%s", simulator.c_str(),
                static_cast<unsigned long long>(samples), static_cast<double>(bytes) / kMebibyte, pieces.size(),
                recording.count(), static_cast<double>(bytes) / kMebibyte / recording.count(), rig.autoLog().c_str());
}

TEST(DISABLED_Long, AMinuteInRealTime) {
    Wish wish;
    wish.frequency = 1e6;
    wish.seconds = 60;
    recordAndCheck(wish, "Signal=Counter");
}

TEST(DISABLED_Long, FourGibibytesAtFullSpeed) {
    Wish wish;
    wish.frequency = 40e6;
    wish.bytes = 4096 * kMebibyte / 320 * 320;  // whole frames
    recordAndCheck(wish, "RealTime=0;Signal=Counter");
}

}  // namespace
}  // namespace tarno2::test
