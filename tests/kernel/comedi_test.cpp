// Recordings from the test board of Comedi, whose samples tell when they were taken.
#include <comedilib.h>
#include <cstring>
#include <gmock/gmock.h>
#include <optional>

#include "records/record_description.h"
#include "tests/apps/recording_rig.h"
#include "tests/kernel/machine.h"

namespace tarno2::test {
namespace {

using testing::HasSubstr;

constexpr uint32_t kPeriod = 65'521;   // of the waveform, microseconds, as scripts/kernel/run.sh sets it; a prime
constexpr uint32_t kHighest = 65'535;  // code
constexpr uint32_t kSampleBytes = 2;

/// The codes of the board in one of its ranges: channel 0 has a saw tooth, 1 a square wave, the others the middle.
class Waveform {
public:
    /// Range 1 goes from -10 to 10 V, range 2 from -5 to 5 V; the wave always from -10 to 10 V.
    explicit Waveform(int gain) : amplitude_(uint64_t{kHighest} * (gain == 1 ? 1 : 2) / 2) {}
    [[nodiscard]] uint32_t code(uint32_t channel, uint64_t microseconds) const {
        const uint64_t time = microseconds % kPeriod;
        const uint64_t middle = kHighest / 2;
        if (channel == 0) {
            const uint64_t value = time * amplitude_ * 2 / kPeriod + middle;
            return limited(value, amplitude_);
        }
        if (channel == 1) {
            return time < kPeriod / 2 ? limited(middle, amplitude_) : limited(middle + amplitude_, 0);
        }
        return middle;
    }

private:
    static uint32_t limited(uint64_t value, uint64_t less) {
        return value < less ? 0 : static_cast<uint32_t>(std::min<uint64_t>(value - less, kHighest));
    }
    uint64_t amplitude_;
};

/// A recording of the first channels, each sample so many microseconds after the one before.
struct Shape {
    uint32_t channels = 4;
    uint64_t step = 25;
    std::vector<int> gains{1, 1, 1, 1};
};

/// The first sample that is not the one of the wave, when the first of them was taken at that time.
size_t firstWrong(const std::vector<uint16_t>& samples, const Shape& shape, uint64_t time, size_t end) {
    std::vector<Waveform> waves(shape.gains.begin(), shape.gains.end());
    for (size_t i = 0; i < end; ++i) {
        const auto channel = static_cast<uint32_t>(i % shape.channels);
        if (samples[i] != waves[channel].code(channel, time + i * shape.step)) {
            return i;
        }
    }
    return end;
}

/// Checks a recording from its first sample to its last; returns how many samples it has.
size_t checkWave(const std::string& file, const Shape& shape) {
    const std::string bytes = readFile(file);
    std::vector<uint16_t> samples(bytes.size() / kSampleBytes);
    std::memcpy(samples.data(), bytes.data(), samples.size() * kSampleBytes);
    EXPECT_EQ(bytes.size() % (shape.channels * kSampleBytes), 0U) << "a frame is cut";
    // Where in the wave the board began is told by the first frames, a second of which is unlike any other.
    const size_t some = std::min<size_t>(samples.size(), 8000);
    std::optional<uint64_t> begin;
    for (uint64_t time = 0; time < kPeriod && !begin; ++time) {
        if (firstWrong(samples, shape, time, some) == some) {
            begin = time;
        }
    }
    EXPECT_TRUE(begin.has_value()) << file << " does not begin with the wave";
    if (begin) {
        EXPECT_EQ(firstWrong(samples, shape, *begin, samples.size()), samples.size()) << file << ": wrong sample";
    }
    return samples.size();
}

/// The state of the board as the kernel has it.
bool boardRuns() {
    comedi_t* const device = comedi_open("/dev/comedi0");
    if (device == nullptr) {
        return false;
    }
    const int flags = comedi_get_subdevice_flags(device, 0);
    comedi_close(device);
    return flags >= 0 && (flags & SDF_RUNNING) != 0;
}

Wish wishOf(const Shape& shape) {
    Wish wish;
    wish.driver = "Comedi";
    wish.board = 1;
    wish.channels = shape.channels;
    wish.frequency = 1e6 / static_cast<double>(shape.step);
    wish.more = "ChannelsGain = ";
    for (const int gain : shape.gains) {
        wish.more += (wish.more.back() == ' ' ? "" : ", ") + std::to_string(gain);
    }
    wish.more += "\r\n";
    return wish;
}

Expected expectedOf(const Shape& shape) {
    Expected expected;
    expected.driver = "Comedi";
    expected.channels = shape.channels;
    expected.frequencyPerChannel = 1e6 / static_cast<double>(shape.step * shape.channels);
    expected.bytesPerSample = kSampleBytes;
    return expected;
}

class Comedi : public testing::Test {
protected:
    /// Begins a recording that has no end of its own, and waits until there is a second of it.
    std::unique_ptr<ChildProcess> startEndless() {
        auto console = rig_.start(wishOf(shape_), "");
        const uint64_t second = 1'000'000 / shape_.step * kSampleBytes;
        EXPECT_TRUE(waitUntil([&] { return rig_.size("run.dat") > second; })) << rig_.autoLog();
        return console;
    }
    size_t checkFile() {
        checkDescriptions({rig_.file("run.dat")}, expectedOf(shape_));
        return checkWave(rig_.file("run.dat"), shape_);
    }
    RecordingRig rig_;
    Shape shape_;
};

TEST_F(Comedi, RecordsEverySampleForTenSeconds) {
    Wish wish = wishOf(shape_);
    wish.bytes = 10 * 40'000 * kSampleBytes;
    rig_.record(wish);
    EXPECT_EQ(checkFile(), 10U * 40'000U) << rig_.autoLog();
    EXPECT_FALSE(rig_.exists("run.log"));
    EXPECT_FALSE(boardRuns());
}

TEST_F(Comedi, TellsTheRateAndTheRangesThatItTook) {
    shape_ = {3, 48, {1, 2, 2}};  // the board counts whole microseconds
    Wish wish = wishOf(shape_);
    wish.frequency = 21'000.0;
    wish.bytes = 120'000;
    rig_.record(wish);
    EXPECT_EQ(checkFile(), 60'000U) << rig_.autoLog();
    EXPECT_THAT(rig_.autoLog(), HasSubstr("Asked for 21000.000000 Hz, the board takes 20833.33"));
    RecordedFormat format;
    std::string missing;
    ASSERT_TRUE(readRecordedFormat(RecordDescription::fileNameFor(rig_.file("run.dat")), format, missing));
    ASSERT_EQ(format.ranges.size(), 3U);
    EXPECT_EQ(format.ranges[0], std::make_pair(10.0, -10.0));
    EXPECT_EQ(format.ranges[1], std::make_pair(5.0, -5.0));
    EXPECT_EQ(format.layout.analogSigned, 0);
}

TEST_F(Comedi, EndsWhereAReaderThatIsTooSlowLostSamples) {
    const auto console = startEndless();
    signalRecorder("STOP");
    ASSERT_TRUE(waitUntil([] { return !boardRuns(); })) << "the kernel's buffer never ran over";
    signalRecorder("CONT");
    ASSERT_EQ(console->waitForEnd(kGuard), 0) << rig_.autoLog();
    const size_t samples = checkFile();
    EXPECT_EQ(readFile(rig_.file("run.log")), "sample = " + std::to_string(samples) + ", count = 0, cause = board\r\n")
        << rig_.autoLog();
}

TEST_F(Comedi, EndsAsUnpluggedWhenTheBoardIsTakenAway) {
    const auto console = startEndless();
    run("rmmod -f comedi_test");
    ASSERT_EQ(console->waitForEnd(kGuard), 0);
    EXPECT_GT(checkFile(), 0U);
    EXPECT_THAT(rig_.autoLog(), HasSubstr("Stop - By device unplug"));
}

}  // namespace
}  // namespace tarno2::test
