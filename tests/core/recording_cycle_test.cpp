#include <gtest/gtest.h>
#include <thread>

#include "tests/core/control_rig.h"

// The stop timer, recordings one after the other, and pieces.

namespace tarno2::test {
namespace {

TEST(RecordingCycle, StopTimer) {
    struct Case {
        const char* what;
        double seconds;
        int ticks;
    };
    for (const Case& c : {Case{"a second and a half", 1.5, 2}, Case{"whole seconds", 3.0, 3}, Case{"a bit", 0.01, 1}}) {
        SCOPED_TRACE(c.what);
        ScopedDebugLog log;
        {
            ControlRig rig;
            rig.attach();
            rig.control.setDataWait(60000);
            rig.shell.wanted.stopRule = StopRule::Time;
            rig.shell.wanted.stopSeconds = c.seconds;
            ASSERT_TRUE(rig.control.StartButtonClick());
            EXPECT_EQ(rig.shell.timer, 1000U);
            for (int tick = 1; tick <= c.ticks; ++tick) {
                EXPECT_TRUE(rig.control.running()) << "before tick " << tick;
                EXPECT_EQ(rig.control.StopTimerTick(), tick == c.ticks);
            }
            EXPECT_FALSE(rig.control.running());
            EXPECT_EQ(rig.shell.timer, 0U);
            EXPECT_FALSE(rig.control.StopTimerTick()) << "one that was due already";
        }
        EXPECT_EQ(firstMissing(log.finish(), {"Create timer for stop: TimeStopValue = ", "Timer stop - Work"}), "");
    }
}

TEST(RecordingCycle, StopTimerCountsFromTheFirstDataOfAnExternalStart) {
    for (const bool seenByTick : {false, true}) {
        SCOPED_TRACE(seenByTick);
        ControlRig rig;
        rig.device.numbers[kADCGetBoardModes] = kADCModeExternalStart;
        rig.attach();
        rig.shell.wanted.boardMode = kBoardExternalStart;
        rig.shell.wanted.stopRule = StopRule::Time;
        rig.shell.wanted.stopSeconds = 2;
        ASSERT_TRUE(rig.control.StartButtonClick());
        ASSERT_TRUE(rig.device.waitForCall("Start"));
        rig.shell.timer = 0;
        const Notification progress{rig.control.session()->number(), {}};
        for (int tick = 0; tick < 10; ++tick) {
            rig.control.StopTimerTick();
            rig.control.OnNotification(progress);
        }
        ASSERT_TRUE(rig.control.running()) << "the board has not begun";
        ASSERT_EQ(rig.shell.timer, 0U);
        rig.device.produce(500);
        ASSERT_TRUE(rig.device.waitForReads(500));
        while (rig.control.session()->samplesRead() == 0) {
            std::this_thread::yield();
        }
        seenByTick ? static_cast<void>(rig.control.StopTimerTick()) : rig.control.OnNotification(progress);
        EXPECT_EQ(rig.shell.timer, 1000U) << "the first second begins with the data";
        rig.control.StopTimerTick();
        rig.control.OnNotification(progress);
        EXPECT_TRUE(rig.control.running());
        rig.control.StopTimerTick();
        EXPECT_FALSE(rig.control.running());
    }
}

TEST(RecordingCycle, CycleStartsTheNextRecordingUnderANewName) {
    ControlRig rig;
    rig.device.readerPaced = 100000;
    rig.shell.wanted.stopRule = StopRule::Size;
    rig.shell.wanted.stopBytes = 400;
    rig.shell.wanted.cycleStart = true;
    rig.attach();
    ASSERT_TRUE(rig.control.StartButtonClick());
    const std::string first = rig.shell.name;
    rig.pump();
    EXPECT_TRUE(rig.control.running());
    const std::string second = rig.shell.name;
    EXPECT_NE(second, first);
    rig.shell.wanted.cycleStart = false;
    rig.pump();
    EXPECT_FALSE(rig.control.running()) << "the operator has let the toggle go";
    EXPECT_TRUE(readFile(first) == streamBytes(0, 200, 2));
    EXPECT_TRUE(readFile(second) == streamBytes(0, 200, 2));
}

TEST(RecordingCycle, CycleGoesOnAfterTimeButNotForTheStopButtonNorUnattended) {
    for (const bool console : {false, true}) {
        ControlRig rig;
        rig.shell.console = console;
        rig.attach();
        rig.control.setDataWait(60000);
        rig.shell.wanted.stopRule = StopRule::Time;
        rig.shell.wanted.stopSeconds = 1.0;
        rig.shell.wanted.cycleStart = true;
        ASSERT_TRUE(rig.control.StartButtonClick());
        rig.control.StopTimerTick();
        EXPECT_EQ(rig.control.running(), !console);
        rig.control.StopButtonClick();
        EXPECT_FALSE(rig.control.running());
    }
}

TEST(RecordingCycle, ANearlyFullDiskEndsTheCycle) {
    ControlRig rig;
    rig.shell.wanted.cycleStart = true;
    rig.attach();
    ASSERT_TRUE(rig.control.StartButtonClick());
    Notification notification{rig.control.session()->number(), {}};
    notification.result.code = StopCode::StopMeasuring;
    notification.result.bytes = 1000;
    notification.result.diskNearlyFull = true;
    rig.control.OnNotification(notification);
    EXPECT_FALSE(rig.control.running());
    EXPECT_TRUE(rig.shell.hasShown("Stop - By stop measuring"));
    EXPECT_TRUE(rig.shell.hasShown("Attention: Recording ended: the disk is almost full."));
}

TEST(RecordingCycle, CutNumber) {
    struct Case {
        int32_t megabytes;
        bool accessible;
        size_t pieces;
        std::vector<std::string> lines;
    };
    for (const Case& c : {Case{1, true, 2, {"CutNumber = 1", "CutMode enabled", "CutFlag = 1"}},
                          Case{1, false, 1, {"CutMode disable", "CutFlag = 0"}},
                          Case{0, true, 1, {"!!!! CutNumber catching= 0", "CutMode disable"}}}) {
        SCOPED_TRACE(c.megabytes);
        ScopedDebugLog log;
        {
            ControlRig rig;
            rig.device.quiet = true;
            rig.device.readerPaced = 1000000;
            rig.device.numbers[kADCGetCutMode] = c.accessible ? 1 : 0;
            rig.shell.wanted.stopRule = StopRule::Size;
            rig.shell.wanted.stopBytes = 1536 * 1024;
            rig.shell.wanted.cut = true;
            rig.shell.wanted.cutMegabytes = c.megabytes;
            rig.attach();
            ASSERT_TRUE(rig.control.StartButtonClick());
            EXPECT_EQ(rig.pump().result.code, StopCode::StopMeasuring);
            EXPECT_EQ(rig.files().size(), 2 * c.pieces + 1) << "a data file and a description each, one passport";
            EXPECT_EQ(rig.shell.ended.bytes, 1572864U);
            EXPECT_EQ(rig.shell.ended.files, c.pieces);
        }
        EXPECT_EQ(firstMissing(log.finish(), c.lines), "");
    }
}

}  // namespace
}  // namespace tarno2::test
