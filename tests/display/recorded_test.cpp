#include "display/recorded.h"

#include <condition_variable>
#include <gmock/gmock.h>
#include <mutex>
#include <thread>

#include "core/storage/data_writer.h"
#include "display/axis_y.h"
#include "display/course.h"
#include "display/file_screens.h"
#include "display/overview.h"
#include "records/passport.h"
#include "tests/display/signal_source.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

using testing::ElementsAre;

constexpr char kDescription[] =
    "DriverName = \"Simulator\"\r\nDataFormat = 2 , 0 , 65535 , 16 , 0 , 0 , 0 , 1 \r\nFrequency = 1000.000000\r\n"
    "BackwardOrder = 1\r\nDataCountPerChannel = 3\r\nChannelNumber = 2\r\n"
    "ChannelsRange = 5.000000 , -5.000000 ,\\\r\n                1.000000 , -1.000000 \r\n";

std::string text(const std::vector<int16_t>& samples) {
    return {reinterpret_cast<const char*>(samples.data()), samples.size() * sizeof(int16_t)};
}

std::vector<int16_t> readAll(FrameSource& frames, uint64_t first, uint64_t count) {
    std::vector<int16_t> samples(count * frames.frameBytes() / 2);
    const uint64_t read = frames.read(first, count, reinterpret_cast<std::byte*>(samples.data()));
    samples.resize(read * frames.frameBytes() / 2);
    return samples;
}

TEST(RecordedFrames, PutsPiecesTogetherWhileTheyAreOfOneRecording) {
    const TemporaryFolder folder;
    std::string other = kDescription;
    other.replace(other.find("1000.0"), 6, "2000.0");
    folder.write("r.txt", kDescription);
    folder.write("r_1.txt", kDescription);
    folder.write("r_2.txt", kDescription);
    folder.write("r_3.txt", other);
    const std::string name = folder.write("r.dat", text({1, 2, 3, 4, 5}));
    folder.write("r_1.dat", "");
    folder.write("r_2.dat", text({6, 7, 8, 9}));
    folder.write("r_3.dat", text({10, 11}));
    folder.write("r_4.dat", text({12, 13}));
    OpenProblem problem;
    const auto recording = RecordedFrames::open(name, problem);
    ASSERT_NE(recording, nullptr) << problem.detail;
    EXPECT_EQ(recording->pieceCount(), 3U);
    EXPECT_EQ(recording->frameCount(), 4U);
    EXPECT_THAT(recording->cutFiles(), ElementsAre(name));
    EXPECT_THAT(readAll(*recording, 0, 10), ElementsAre(1, 2, 3, 4, 6, 7, 8, 9));
    EXPECT_THAT(readAll(*recording, 1, 2), ElementsAre(3, 4, 6, 7));
    EXPECT_THAT(readAll(*recording, 3, 1), ElementsAre(8, 9));
    EXPECT_THAT(readAll(*recording, 4, 1), ElementsAre());
    EXPECT_THAT(readAll(*recording, 400, 1), ElementsAre());
    // The channels of its frames come in reverse order.
    ASSERT_EQ(recording->format().channelCount(), 2U);
    EXPECT_EQ(recording->format().channels[0].listPosition, 1U);
    EXPECT_EQ(recording->format().channels[0].upper, 1.0);
    EXPECT_EQ(recording->format().channels[1].lower, -5.0);
    EXPECT_EQ(recording->format().minimumCode, -32768);
    EXPECT_EQ(recording->format().framesPerSecond, 1000.0);
}

TEST(RecordedFrames, TakeNamesAndUnitsFromThePassport) {
    const TemporaryFolder folder;
    folder.write("r.txt", kDescription);
    const std::string name = folder.write("r.dat", text({1, 2}));
    Passport passport;
    passport.channels.resize(2);
    passport.channels[0] = {5, "inlet", "bar", 1, 5.0, -5.0, 2.0, 1.0};
    passport.channels[1] = {9, "", "V", 1, 1.0, -1.0, 0.0, 0.0};
    passport.lines = {{0, "gate"}};
    passport.sample.backwardOrder = true;  // as the description says
    folder.write("r.json", passportText(passport));
    OpenProblem problem;
    const auto recording = RecordedFrames::open(name, problem);
    ASSERT_NE(recording, nullptr);
    EXPECT_EQ(recording->format().channels[1].label, (ChannelLabel{"inlet", "bar", 2.0, 1.0}));
    EXPECT_EQ(recording->format().channels[0].label, ChannelLabel()) << "a scale that is none is left out";
    EXPECT_THAT(recording->numbers(), ElementsAre(5, 9));
    EXPECT_THAT(recording->format().lineNames, ElementsAre("gate"));

    passport.channels.pop_back();
    folder.write("r.json", passportText(passport));
    EXPECT_THAT(RecordedFrames::open(name, problem)->numbers(), ElementsAre()) << "it is of other data";
}

TEST(RecordedFrames, RecordsAreToldByTheDescriptionToo) {
    const TemporaryFolder folder;
    const std::string description = std::string(kDescription) +
                                    "SynchroEnable = 1\r\nSynchroListPrehistory = 2 , 2 \r\n"
                                    "SynchroListHistory = 3 , 3 \r\n";
    folder.write("r.txt", description);
    folder.write("r_1.txt", description);
    const std::string data = text(std::vector<int16_t>(20));
    OpenProblem problem;
    const auto whole = RecordedFrames::open(folder.write("r.dat", data), problem);
    ASSERT_TRUE(whole && whole->records());
    EXPECT_EQ(whole->records()->frames, 5U);
    EXPECT_EQ(whole->records()->prehistory, 2U);
    const auto piece = RecordedFrames::open(folder.write("r_1.dat", data), problem);
    EXPECT_FALSE(piece->records()) << "it may begin in the middle of one";
}

TEST(RecordedFrames, SayWhyTheyCannotBeOpened) {
    const TemporaryFolder folder;
    const std::string name = folder.file("r.dat");
    OpenProblem problem;
    EXPECT_EQ(RecordedFrames::open(name, problem), nullptr);
    EXPECT_EQ(problem.kind, OpenProblem::DescriptionMissing);
    EXPECT_EQ(problem.detail, folder.file("r.txt"));
    ASSERT_TRUE(createDirectory(folder.file("r.txt")).ok());
    EXPECT_EQ(RecordedFrames::open(name, problem), nullptr);
    EXPECT_EQ(problem.kind, OpenProblem::DescriptionNotRead);
    EXPECT_NE(problem.detail, "");
    ASSERT_TRUE(removeDirectory(folder.file("r.txt")).ok());
    std::string damaged = kDescription;
    damaged.replace(damaged.find("ChannelNumber"), 13, "ChannelCount_");
    folder.write("r.txt", damaged);
    EXPECT_EQ(RecordedFrames::open(name, problem), nullptr);
    EXPECT_EQ(problem.kind, OpenProblem::DescriptionDamaged);
    EXPECT_EQ(problem.detail, "ChannelNumber");
    folder.write("r.txt", kDescription);
    EXPECT_EQ(RecordedFrames::open(name, problem), nullptr);
    EXPECT_EQ(problem.kind, OpenProblem::FileNotRead);
    EXPECT_NE(problem.detail, "");
    folder.write("r.dat", "");
    const auto empty = RecordedFrames::open(name, problem);
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(problem.kind, OpenProblem::None);
    EXPECT_EQ(empty->frameCount(), 0U);
}

std::string describedChannels(size_t count) {
    std::string ranges;
    for (size_t i = 0; i < count; ++i) {
        ranges += i == 0 ? "5.0 , -5.0" : " , 5.0 , -5.0";
    }
    return "DataFormat = 2 , 0 , 65535 , 16 , 0 , 0 , 0 , 1 \r\nFrequency = 1000.0\r\nDataCountPerChannel = 1\r\n"
           "ChannelNumber = " +
           std::to_string(count) + "\r\nChannelsRange = " + ranges + "\r\n";
}

TEST(RecordedFrames, HaveTheLimitsOfTheConversionToText) {
    const TemporaryFolder folder;
    std::string layout = kDescription;
    layout.replace(layout.find("2 , 0 , 65535"), 13, "2 , 1 , 65535");
    const struct {
        std::string description;
        const char* key;
    } cases[] = {{describedChannels(4096), ""}, {describedChannels(4097), "ChannelNumber"}, {layout, "DataFormat"}};
    for (const auto& [description, key] : cases) {
        SCOPED_TRACE(key);
        folder.write("r.txt", description);
        const std::string name = folder.write("r.dat", std::string(3 * 4096 * 2, '\1'));
        OpenProblem problem;
        const auto recording = RecordedFrames::open(name, problem);
        EXPECT_EQ(problem.detail, key);
        ASSERT_EQ(recording != nullptr, problem.kind == OpenProblem::None);
        if (recording) {
            // However little memory there is for it, there is an entry.
            Overview overview(*recording, recording->format(), {}, 1);
            EXPECT_EQ(overview.frameCount(), 3U);
        }
    }
}

TEST(RecordedFrames, FarPiecesAreOpenedWhenTheyAreRead) {
    const TemporaryFolder folder;
    constexpr int16_t kPieces = 70;
    std::vector<int16_t> samples;
    std::string first;
    for (int16_t i = 0; i < kPieces; ++i) {
        const std::string base = i == 0 ? "r" : "r_" + std::to_string(i);
        folder.write(base + ".txt", kDescription);
        const std::string name = folder.write(base + ".dat", text({i, i}));
        first = i == 0 ? name : first;
        samples.insert(samples.end(), {i, i});
    }
    OpenProblem problem;
    const auto recording = RecordedFrames::open(first, problem);
    ASSERT_NE(recording, nullptr);
    EXPECT_EQ(recording->pieceCount(), 70U);
    EXPECT_EQ(readAll(*recording, 0, kPieces), samples);
    ASSERT_TRUE(removeFile(folder.file("r_68.dat")).ok());
    EXPECT_THAT(readAll(*recording, 67, 3), ElementsAre(67, 67));
    EXPECT_THAT(readAll(*recording, 69, 1), ElementsAre(69, 69));
}

TEST(RecordedFormat, TellsWhereTheLinesLie) {
    RecordedFormat recorded;
    recorded.ranges = {{5.0, -5.0}};
    recorded.layout = {2, 4, 0xFFF0, 12, 0, 0x000F, 4, 0};
    EXPECT_EQ(signalFormatOf(recorded).word.digitalLines(), 4U);
    EXPECT_FALSE(signalFormatOf(recorded).word.codeBelowLines());
    EXPECT_EQ(signalFormatOf(recorded).maximumCode, 4095);
    recorded.layout = {2, 0, 0x3FFF, 14, 14, 0xC000, 2, 1};
    EXPECT_EQ(signalFormatOf(recorded).word.digitalLines(), 2U);
    EXPECT_TRUE(signalFormatOf(recorded).word.codeBelowLines());
    EXPECT_EQ(signalFormatOf(recorded).minimumCode, -8192);
    recorded.layout = {2, 0, 0xFFFF, 16, -1, -1, -1, 1};
    EXPECT_EQ(signalFormatOf(recorded).word.digitalLines(), 0U);
}

TEST(RunningFormat, HasTheRateOfTheFramesThatAreShown) {
    BoardFacts board;
    RecordingFacts facts;
    facts.totalFrequency = 1000.0;
    facts.ranges = {{5.0, -5.0, 5.0F}, {1.0, -1.0, 5.0F}};
    EXPECT_EQ(signalFormatOf(board, facts).framesPerSecond, 500.0);
    facts.packetMode = true;
    facts.packetFrequency = 40.0;
    EXPECT_EQ(signalFormatOf(board, facts).framesPerSecond, 40.0);
}

TEST(RunningFormat, VoltsFollowTheLimitsOfTheInput) {
    BoardFacts board;
    board.codeRangeKnown = true;
    board.codeRange = {-2048, 2047};
    RecordingFacts facts;
    facts.ranges = {{10.0, 0.0}, {5.0, -5.0, 5.0F}};
    const SignalFormat format = signalFormatOf(board, facts);
    const struct {
        size_t channel;
        int32_t code;
        double millivolts;
    } cases[] = {{0, -2048, 0.0}, {0, 2047, 10000.0}, {1, -2048, -5000.0}, {1, 2047, 5000.0}};
    for (const auto& c : cases) {
        EXPECT_NEAR(axisYScale(format, c.channel, AxisYUnit::Millivolts).of(c.code), c.millivolts, 1e-9) << c.channel;
    }
}

TEST(RunningRecording, ReadsOverItsPieces) {
    const TemporaryFolder folder;
    DataWriter writer;
    RecordDescription description;
    WriterSetup setup;
    setup.fileName = folder.file("r.dat");
    setup.channelCount = 2;
    setup.pieceBytes = 8;
    setup.facts.ranges.assign(2, {5.0, -5.0});
    ASSERT_EQ(writer.open(setup, description), 0);
    const std::vector<int16_t> samples{1, 2, 3, 4, 5, 6};
    ASSERT_EQ(writer.Write(bytesOf(samples).data(), 12, 4), 0);
    RunningRecording running(writer, 4);
    EXPECT_EQ(running.frameCount(), 3U);
    EXPECT_TRUE(writer.Close());
    EXPECT_THAT(readAll(running, 1, 10), ElementsAre(3, 4, 5, 6));
}

/// Waits for what the building thread says; it may be held back after so many frames.
class WatchedFrames final : public FrameSource {
public:
    explicit WatchedFrames(std::vector<int16_t> samples) : frames_(std::move(samples), 1) {}

    [[nodiscard]] size_t frameBytes() const override { return 2; }
    [[nodiscard]] uint64_t frameCount() const override { return frames_.frameCount(); }
    [[nodiscard]] uint64_t read(uint64_t firstFrame, uint64_t count, std::byte* out) override {
        std::unique_lock lock(mutex_);
        // Samples are short, blocks of the whole reading are long.
        changed_.wait(lock, [&] { return count < 20000 || firstFrame < limit_; });
        return count >= 20000 && failing_ ? 0 : frames_.read(firstFrame, count, out);
    }
    void allow(uint64_t frames) {
        const std::lock_guard lock(mutex_);
        limit_ = frames;
        changed_.notify_all();
    }
    void fail() {
        const std::lock_guard lock(mutex_);
        failing_ = true;
    }

private:
    MemoryFrames frames_;
    std::mutex mutex_;
    std::condition_variable changed_;
    uint64_t limit_ = 0;
    bool failing_ = false;
};

template <typename Done>
void waitFor(Done done) {
    while (!done()) {
        std::this_thread::yield();
    }
}

TEST(Overview, ShowsSamplesFirstAndEveryFrameInTheEnd) {
    std::vector<int16_t> samples(10000000, 3);
    samples[9876543] = 1234;
    WatchedFrames frames(samples);
    Overview overview(frames, format16(1), {}, size_t{1} << 20);
    waitFor([&] { return overview.usable(); });
    Screen screen;
    ASSERT_TRUE(overview.build(0, samples.size(), 500, screen));
    EXPECT_TRUE(screen.provisional);
    EXPECT_GE(screen.rows / 2, 330U);
    EXPECT_LE(screen.rows / 2, 501U);
    frames.allow(UINT64_MAX);
    waitFor([&] { return overview.complete(); });
    EXPECT_FALSE(overview.failed());
    EXPECT_EQ(overview.framesDone(), samples.size());
    // A spike of one sample among ten million is there at every scale.
    for (const uint64_t width : {uint64_t{10000000}, uint64_t{1000000}, uint64_t{20000}, uint64_t{300}}) {
        const uint64_t first = 9876543 - (width < 10000000 ? width / 2 : 9876543);
        ASSERT_TRUE(overview.build(first, first + width, 500, screen));
        EXPECT_FALSE(screen.provisional);
        EXPECT_THAT(wordsOf(screen), testing::Contains(1234).Times(1)) << width;
        EXPECT_EQ(screen.runs.size(), 1U);
    }
    EXPECT_FALSE(screen.pairs());
}

TEST(Overview, EndsWhenItIsClosedOrTheDiskFails) {
    WatchedFrames frames(std::vector<int16_t>(1000000));
    frames.allow(300000);
    {
        Overview closed(frames, format16(1));
        waitFor([&] { return closed.framesDone() > 0; });
        frames.allow(UINT64_MAX);
    }
    frames.fail();
    Overview failed(frames, format16(1));
    waitFor([&] { return failed.complete(); });
    EXPECT_TRUE(failed.failed());
    MemoryFrames nothing({}, 1);
    Overview empty(nothing, format16(1));
    waitFor([&] { return empty.complete(); });
    Screen screen;
    EXPECT_FALSE(empty.build(0, 100, 10, screen));
}

TEST(FileScreens, SampleWhatIsTooLongToRead) {
    /// An endless ramp.
    class Ramp final : public FrameSource {
    public:
        [[nodiscard]] size_t frameBytes() const override { return 2; }
        [[nodiscard]] uint64_t frameCount() const override { return uint64_t{1} << 36; }
        [[nodiscard]] uint64_t read(uint64_t firstFrame, uint64_t count, std::byte* out) override {
            read_ += count;
            for (uint64_t i = 0; i < count; ++i) {
                const auto sample = static_cast<int16_t>((firstFrame + i) >> 22);
                std::memcpy(out + i * 2, &sample, 2);
            }
            return count;
        }
        uint64_t read_ = 0;
    };
    Ramp ramp;
    FileScreens screens(ramp, format16(1));
    Screen screen;
    ASSERT_TRUE(screens.build(0, ramp.frameCount(), 64, screen));
    EXPECT_TRUE(screen.provisional);
    EXPECT_LE(ramp.read_, uint64_t{8} << 20);
    EXPECT_EQ(screen.rows, 128U);
    EXPECT_EQ(wordsOf(screen)[126], 63 << 8);
    ASSERT_TRUE(screens.build(1 << 22, 2 << 22, 64, screen));
    EXPECT_FALSE(screen.provisional);
}

TEST(Course, OneSampleOfAWholeRecordingIsSeenInItsColumn) {
    std::vector<int16_t> samples(200000, -5);
    samples[2 * 61500 + 1] = 900;
    MemoryFrames frames(samples, 2);
    FileScreens screens(frames, format16(2));
    Screen screen;
    ASSERT_TRUE(screens.build(0, 100000, 200, screen));
    const auto course = courseOf(screen, format16(2), 1, 100000, 100);
    ASSERT_EQ(course.size(), 100U);
    for (size_t i = 0; i < course.size(); ++i) {
        ASSERT_TRUE(course[i].known) << i;
        EXPECT_EQ(course[i].low, -5) << i;
        EXPECT_EQ(course[i].high, i == 61 ? 900 : -5) << i;
    }
    EXPECT_EQ(courseOf(screen, format16(2), 0, 100000, 100)[61].high, -5) << "of the other channel";
}

}  // namespace
}  // namespace tarno2::test
