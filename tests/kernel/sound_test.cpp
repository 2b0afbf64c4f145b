// Recordings from the loopback sound card: what is played into its one device comes out of the other.
#include <cstring>
#include <gmock/gmock.h>

#include "drivers/simulator/counter_signal.h"
#include "tests/apps/recording_rig.h"
#include "tests/kernel/machine.h"

namespace tarno2::test {
namespace {

using testing::HasSubstr;

constexpr uint32_t kChannels = 2;
constexpr uint32_t kRate = 48'000;
constexpr uint32_t kBits = 16;
constexpr uint64_t kPlayed = uint64_t{60} * kRate * kChannels;  // samples: longer than any test records
constexpr uint32_t kBlocks = kPlayed >> kBits;

class Loopback : public testing::Test {
protected:
    Loopback() : device_("TARNO2_SOUND", "Device=hw:Loopback,1;Bits=16") {}
    /// Plays the counter and waits until it can be heard.
    void SetUp() override {
        std::vector<uint16_t> counter(kPlayed);
        for (uint64_t i = 0; i < kPlayed; ++i) {
            counter[i] = static_cast<uint16_t>(drivers::counterWord(i, kBits));
        }
        const std::string file =
            rig_.folder().write("counter", {reinterpret_cast<const char*>(counter.data()), kPlayed * sizeof(uint16_t)});
        player_ = std::make_unique<ChildProcess>("/usr/bin/aplay",
                                                 std::vector<std::string>{"-D", "hw:Loopback,0", "-t", "raw", "-f",
                                                                          "S16_LE", "-c", "2", "-r", "48000", file},
                                                 rig_.file("player.txt"));
        ASSERT_TRUE(waitUntil([] {
            return std::system("busybox grep -q RUNNING /proc/asound/Loopback/pcm0p/sub0/status") == 0;
        })) << readFile(rig_.file("player.txt"));
    }
    static Wish wish() {
        Wish wish;
        wish.driver = "Sound";
        wish.board = 1;
        wish.channels = kChannels;
        wish.frequency = kRate;
        return wish;
    }
    /// Checks that the recording is one stretch of what is played, after the silence with which the card may begin.
    /// Returns how many samples it has.
    size_t checkFile() {
        Expected expected;
        expected.driver = "Sound";
        expected.frequencyPerChannel = kRate;
        checkDescriptions({rig_.file("run.dat")}, expected);
        const std::string bytes = readFile(rig_.file("run.dat"));
        std::vector<uint16_t> samples(bytes.size() / sizeof(uint16_t));
        std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(uint16_t));
        size_t first = 0;
        while (first + kChannels < samples.size() && samples[first] == 0 && samples[first + 1] == 0) {
            first += kChannels;
        }
        EXPECT_LT(first, samples.size() / 2) << "silence";
        // The same word comes once in each block of the counter; what follows tells which block it is.
        bool found = false;
        for (uint64_t block = 0; block <= kBlocks && !found; ++block) {
            for (uint64_t word = 0; word < (uint64_t{1} << kBits) && !found; ++word) {
                found = isCounterFrom((block << kBits) + word, samples, first);
            }
        }
        EXPECT_TRUE(found) << "samples are missing, repeated or wrong";
        return samples.size();
    }

    RecordingRig rig_;

private:
    static bool isCounterFrom(uint64_t position, const std::vector<uint16_t>& samples, size_t first) {
        for (size_t i = first; i < samples.size(); ++i) {
            if (samples[i] != static_cast<uint16_t>(drivers::counterWord(position + i - first, kBits))) {
                return false;
            }
        }
        return true;
    }
    ScopedEnvironment device_;
    std::unique_ptr<ChildProcess> player_;
};

TEST_F(Loopback, IsRecordedSampleBySample) {
    Wish wish = this->wish();
    wish.bytes = uint64_t{10} * kRate * kChannels * sizeof(uint16_t);
    rig_.record(wish);
    EXPECT_EQ(checkFile(), 10U * kRate * kChannels) << rig_.autoLog();
    EXPECT_FALSE(rig_.exists("run.log"));
}

// The last one: the card does not come back.
TEST_F(Loopback, KeepsEveryFrameWhenTheCardIsTakenAway) {
    const auto console = rig_.start(wish(), "");
    ASSERT_TRUE(waitUntil([this] { return rig_.size("run.dat") > kRate * kChannels * sizeof(uint16_t); }))
        << rig_.autoLog();
    run("sh -c 'echo snd_aloop.0 >/sys/bus/platform/drivers/snd_aloop/unbind'");
    ASSERT_EQ(console->waitForEnd(kGuard), 0);
    EXPECT_GT(checkFile(), kRate * kChannels);
    EXPECT_THAT(rig_.autoLog(), HasSubstr("Stop - By device unplug"));
}

}  // namespace
}  // namespace tarno2::test
