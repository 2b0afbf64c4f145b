// A board that is looked at first and recorded from then on, without a gap.

#include <functional>
#include <gtest/gtest.h>

#include "platform/event.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "records/passport.h"
#include "tests/core/control_rig.h"

namespace tarno2::test {
namespace {

constexpr uint32_t kHalf = 500;  // samples, of the fake board's ring

/// A board of two channels that is monitored and has given so many samples.
class MonitorRig : public ControlRig {
public:
    explicit MonitorRig(uint32_t halves, const std::function<void(ControlRig&)>& script = {}) {
        if (script) {
            script(*this);
        }
        attach();
        control.setDataWait(60000);
        control.setLiveTap(&tap);
        tap.setWatched(true);
        EXPECT_TRUE(control.MonitorButtonClick());
        if (halves > 0) {
            EXPECT_TRUE(device.waitForCall("Start"));
            give(halves);
        }
    }

    void give(uint32_t halves) {
        for (; halves > 0; --halves) {
            given_ += kHalf;
            device.produce(kHalf);
            ASSERT_TRUE(device.waitForReads(given_));
        }
    }
    /// Gives so much more as the reader takes it.
    void giveOn(uint32_t halves) {
        device.readerPaced = given_ + uint64_t{halves} * kHalf;
        device.produce(kHalf);
    }
    /// The frames, as they are numbered, that the view can take.
    std::vector<uint64_t> shownFrames() {
        std::vector<uint64_t> frames;
        while (tap.take([&](uint64_t first, std::span<const std::byte> block) {
            for (uint64_t i = 0; i < block.size() / 4; ++i) {
                frames.push_back(first + i);
            }
        })) {
        }
        return frames;
    }
    [[nodiscard]] Passport passport() const {
        std::string problem;
        const auto read = readPassport(readFile(folder.file("run.json")), problem);
        EXPECT_TRUE(read) << problem;
        return read.value_or(Passport());
    }

    LiveTap tap;

private:
    uint64_t given_ = 0;
};

TEST(Monitor, ShowsTheSignalAndMakesNoFile) {
    MonitorRig rig(4);
    const std::string name = rig.shell.name;
    EXPECT_TRUE(rig.control.monitoring());
    EXPECT_EQ(rig.shownFrames().size(), 2 * kHalf);
    EXPECT_FALSE(rig.control.session()->mark()) << "there is nothing to mark";
    EXPECT_FALSE(rig.control.MonitorButtonClick()) << "a second time ends it";
    EXPECT_FALSE(rig.control.running());
    EXPECT_TRUE(rig.pump().result.monitored);
    EXPECT_EQ(rig.files(), std::vector<std::string>{});
    EXPECT_EQ(rig.shell.name, name) << "no name is used up";
    EXPECT_EQ(rig.control.outcome(), RecordingOutcome::NothingRecorded);
    EXPECT_FALSE(rig.shell.hasShown("Attention"));
    rig.shell.console = true;
    EXPECT_FALSE(rig.control.MonitorButtonClick()) << "nobody looks at it";
}

TEST(Monitor, RecordsFromTheRunningSignalWithoutAGap) {
    // With 4 the hand-over falls into what the decimation has begun to gather.
    for (const int32_t decimation : {1, 3, 4}) {
        SCOPED_TRACE(decimation);
        MonitorRig rig(3, [decimation](ControlRig& r) { r.shell.wanted.decimation = decimation; });
        rig.shell.wanted.stopRule = StopRule::Size;
        rig.shell.wanted.stopBytes = 4000;
        rig.shell.wanted.frequency = 5;  // the board runs as it does
        ASSERT_TRUE(rig.control.StartButtonClick());
        EXPECT_TRUE(rig.control.running() && !rig.control.monitoring());
        rig.give(2);
        EXPECT_EQ(rig.shownFrames()[0], 0U) << "the view begins with the recording";
        ASSERT_TRUE(rig.control.session()->mark());
        rig.giveOn(20);
        const RecordingResult result = rig.pump().result;
        EXPECT_EQ(result.code, StopCode::StopMeasuring);
        const uint64_t first = 3 * kHalf / 2 / static_cast<uint64_t>(decimation);
        EXPECT_EQ(result.monitoredFrames, first);
        std::string expected;
        for (uint64_t frame = first; frame < first + 1000; ++frame) {
            expected += streamBytes(frame * static_cast<uint64_t>(decimation) * 2, 2, 2);
        }
        EXPECT_TRUE(readFile(rig.folder.file("run.dat")) == expected);
        ASSERT_EQ(rig.shell.details.size(), 1U);
        EXPECT_EQ(rig.shell.details[0],
                  "The recording begins with frame " + std::to_string(first) + " of the signal that was monitored.");
        const Passport passport = rig.passport();
        EXPECT_EQ(passport.end.monitoredFrames, first);
        EXPECT_EQ(passport.frames(), 1000U);
        EXPECT_EQ(passport.rate.asked, 1e6 / 2) << "as the monitor asked for it";
        ASSERT_FALSE(passport.end.clock.empty());
        EXPECT_EQ(passport.end.clock[0].frame, 4 * kHalf / 2 / static_cast<uint64_t>(decimation) - first)
            << "that had come by then";
        EXPECT_EQ(passport.marks->count, 1U);
        EXPECT_NE(readFile(rig.folder.file("run.marks.csv"))
                      .find(std::to_string(2 * kHalf / 2 / static_cast<uint32_t>(decimation))),
                  std::string::npos)
            << "counted from the recording's first frame";
    }
}

// A board may take its time to start, and the operator doesn't.
TEST(Monitor, TakesAStartThatComesBeforeTheBoardRuns) {
    Event pressed;
    MonitorRig rig(0, [&pressed](ControlRig& r) {
        r.device.whileStarting = [&pressed] { ASSERT_EQ(pressed.wait(30000), WaitResult::Signalled); };
    });
    ASSERT_TRUE(rig.control.StartButtonClick());
    pressed.set();
    ASSERT_TRUE(rig.device.waitForCall("Start"));
    rig.give(2);
    EXPECT_EQ(rig.shownFrames().size(), kHalf);
    EXPECT_TRUE(rig.control.session()->mark());
    rig.control.StopButtonClick();
    const RecordingResult result = rig.pump().result;
    EXPECT_EQ(result.monitoredFrames, 0U);
    EXPECT_TRUE(readFile(rig.folder.file("run.dat")) == streamBytes(0, 2 * kHalf, 2));
}

TEST(Monitor, GoesOnAfterARefusal) {
    MonitorRig rig(1);
    const std::string name = rig.shell.name;
    const auto refused = [&rig](const char* why) {
        EXPECT_FALSE(rig.control.StartButtonClick());
        EXPECT_TRUE(rig.control.monitoring());
        EXPECT_TRUE(rig.shell.hasShown(why)) << why;
        rig.shell.shown.clear();
        rig.give(1);
    };
    rig.shell.name.clear();
    refused("File name is empty");
    rig.folder.write("file", "x");
    rig.shell.name = joinPath(rig.folder.file("file"), "run.dat");
    refused("Error in file name");
    rig.shell.name = name;
    rig.shell.wanted.stopRule = StopRule::Size;
    refused("stop value incorrect");
    rig.shell.wanted.stopRule = StopRule::Manual;
    EXPECT_EQ(rig.files(), std::vector<std::string>{"file"});
    ASSERT_TRUE(rig.control.StartButtonClick()) << "what was wrong is put right";
    rig.give(1);
    rig.control.StopButtonClick();
    EXPECT_EQ(rig.pump().result.code, StopCode::User);
    EXPECT_TRUE(readFile(name) == streamBytes(4 * kHalf, kHalf, 2));
    EXPECT_EQ(rig.driver.blockCount(), 0);
}

TEST(Monitor, TellsOfALossInItsOwnCountAndInThatOfTheRecording) {
    for (const bool recorded : {false, true}) {
        MonitorRig rig(1);
        if (recorded) {
            ASSERT_TRUE(rig.control.StartButtonClick());
        }
        rig.give(1);
        rig.device.produce(uint64_t{kHalf} * 9);
        const RecordingResult result = rig.pump().result;
        EXPECT_EQ(result.code, StopCode::Error);
        EXPECT_EQ(result.detail, ErrorDetail::Overflow);
        EXPECT_EQ(result.monitored, !recorded);
        // Until the reader has asked the board once more, what it has read last may have been overwritten meanwhile.
        const uint64_t read = recorded ? kHalf : 2 * kHalf;
        EXPECT_TRUE(result.overflowPosition == read || result.overflowPosition == read - kHalf)
            << result.overflowPosition;
        ASSERT_EQ(result.losses.size(), 1U);
        EXPECT_EQ(result.losses[0].sample, result.overflowPosition);
        EXPECT_TRUE(rig.shell.hasShown("Attention"));
        EXPECT_FALSE(rig.control.running());
        EXPECT_EQ(rig.files().empty(), !recorded);
    }
}

// The board goes away, or the operator stops, just when the files are handed over: there is a whole recording or none.
TEST(Monitor, HandsOverWholeOrNotAtAll) {
    uint64_t kept = 0;
    for (uint32_t i = 0; i < 40; ++i) {
        SCOPED_TRACE(i);
        const bool ends = i % 2 == 1;
        const bool whole = i % 4 == 2;
        MonitorRig rig(0, [i, ends, whole](ControlRig& r) {
            r.shell.wanted.stopRule = whole ? StopRule::Size : StopRule::Manual;
            r.shell.wanted.stopBytes = 4000;
            r.device.readerPaced = uint64_t{1} << 40;
            r.device.failingRead = ends ? 1 + i * i % 1000 : FakeDevice::kNever;
        });
        const bool started = rig.control.StartButtonClick();
        if (!ends && !whole) {
            rig.control.StopButtonClick();
        }
        const RecordingResult result = rig.pump().result;
        EXPECT_FALSE(rig.control.running());
        EXPECT_EQ(result.monitored, !started);
        EXPECT_TRUE(!whole || result.bytes == 4000) << result.bytes;
        const std::string data = rig.folder.file("run.dat");
        EXPECT_EQ(fileExists(data), result.bytes > 0);
        if (result.bytes == 0) {
            const bool lost = started && !result.losses.empty();
            EXPECT_EQ(rig.files(), lost ? std::vector<std::string>{"run.log"} : std::vector<std::string>{});
        } else {
            ASSERT_TRUE(result.monitoredFrames);
            EXPECT_TRUE(readFile(data) == streamBytes(*result.monitoredFrames * 2, result.bytes / 2, 2));
            ++kept;
        }
        EXPECT_EQ(rig.driver.blockCount(), 0);
    }
    EXPECT_GT(kept, 0U);
}

}  // namespace
}  // namespace tarno2::test
