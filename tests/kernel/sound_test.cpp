// Recordings from the loopback sound card: what is played into its one device comes out of the other.
#include <algorithm>
#include <gmock/gmock.h>

#include "tests/apps/recording_rig.h"
#include "tests/kernel/machine.h"
#include "tests/support/counter_bytes.h"

namespace tarno2::test {
namespace {

using testing::HasSubstr;

constexpr uint32_t kChannels = 2;
constexpr uint32_t kRate = 48'000;
constexpr uint32_t kBits = 16;
constexpr uint64_t kPlayed = uint64_t{60} * kRate * kChannels;  // samples: longer than any test records
constexpr size_t kFrame = kChannels * kBits / 8;

class Loopback : public testing::Test {
protected:
    Loopback() : device_("TARNO2_SOUND", "Device=hw:Loopback,1;Bits=16") {}
    /// Plays the counter and waits until it can be heard.
    void SetUp() override {
        const std::string file = rig_.folder().write("counter", counterBytes(0, kPlayed, kBits / 8));
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
        const size_t first = std::min(bytes.find_first_not_of('\0'), bytes.size()) / kFrame * kFrame;
        EXPECT_LT(first, bytes.size() / 2) << "silence";
        const size_t found = counterBytes(0, kPlayed, kBits / 8).find(bytes.substr(first));
        EXPECT_TRUE(found != std::string::npos && found % kFrame == 0) << "samples are missing, repeated or wrong";
        return bytes.size() * kChannels / kFrame;
    }

    RecordingRig rig_;

private:
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
