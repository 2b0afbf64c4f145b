#include <cmath>
#include <gtest/gtest.h>

#include "platform/codepage1251.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "platform/utf.h"
#include "tests/core/control_rig.h"

namespace tarno2::test {
namespace {

struct Told {
    const char* what;
    const char* message;
    bool driverTouched;
    std::vector<std::string> lines;  // of the debug log, in order
};
struct Refusal : Told {
    void (*change)(ControlRig&);
};

const Refusal kRefusals[] = {
    {{"a name below a file", "Error in file name", true, {"No Error", "!!!!! Error in create files. Code = -5"}},
     [](ControlRig& r) { r.shell.name = joinPath(r.folder.write("file", "x"), "run.dat"); }},
    {{"no name", "File name is empty", false, {"Check file", "File error \"\" code = "}},
     [](ControlRig& r) { r.shell.name.clear(); }},
    {{"the description's name", "File name is the name of its own description", false, {"Check file", "File error"}},
     [](ControlRig& r) { r.shell.name = r.folder.file("run.txt"); }},
    {{"a folder's name, without an extension", "File name is the name of a folder", false, {"Check file", "code = -7"}},
     [](ControlRig& r) { r.shell.name = r.folder.path(); }},
    {{"packets of one channel",
      "Enabled packet mode, but channels count = 1.",
      false,
      {"Check file", "Save to file", "Active channel = 3, gain = 1", "!!! Packet mode, but channel's count = 1"}},
     [](ControlRig& r) {
         r.shell.wanted.channels = {3};
         r.shell.wanted.boardMode = kBoardPacketMode;
         r.shell.wanted.packetFrequency = 5;
     }},
    {{"an unknown format", "Undefined format", false, {"Save to file", "BoardMode = 0"}},
     [](ControlRig& r) { r.device.format.m_nBytes = 3; }},
    {{"no channel", "Start faild because channel count = 0.", false, {"BoardMode = 0", "Channel count = 0"}},
     [](ControlRig& r) {
         r.shell.wanted.channels.clear();
         r.shell.wanted.frequency = 0;
     }},
    {{"no frequency", "Start faild because freq value incorrect.", false, {"Frequency = 0.000000"}},
     [](ControlRig& r) { r.shell.wanted.frequency = 0; }},
    {{"an infinite frequency", "Start faild because freq value incorrect.", false, {"Frequency = "}},
     [](ControlRig& r) { r.shell.wanted.frequency = HUGE_VAL; }},
    {{"a negative frequency", "Start faild because freq value incorrect.", false, {"Frequency = -1000.000000"}},
     [](ControlRig& r) { r.shell.wanted.frequency = -1000; }},
    {{"a mode that the board lacks",
      "The board does not offer this mode.",
      false,
      {"Frequency = ", "!!!!! Board mode 0x8 is not offered by the board: external clock"}},
     [](ControlRig& r) {
         r.device.numbers[kADCGetBoardModes] = kADCModeExternalStart;
         r.shell.wanted.boardMode = kBoardExternalStart | kBoardExternalClock;
     }},
    {{"differential inputs that the board can't be told",
      "The board does not offer this mode.",
      false,
      {"!!!!! Board mode 0x2 is not offered by the board: differential inputs"}},
     [](ControlRig& r) {
         r.device.numbers[kADCGetBoardModes] = 0xF;
         r.device.numbers[kADCGetExtendedBlock] = 0;
         r.shell.wanted.boardMode = kBoardDifferential;
     }},
    {{"a mode that nobody knows",
      "The board does not offer this mode.",
      false,
      {"!!!!! Board mode 0x14 is not offered by the board: packet mode, unknown mode"}},
     [](ControlRig& r) {
         r.shell.wanted.packetFrequency = 5;
         r.shell.wanted.boardMode = 0x14;
     }},
    {{"a channel behind the last", "The board has no such channel.", false, {"Channel 160 is none of the board's 160"}},
     [](ControlRig& r) {
         r.shell.wanted.channels = {0, 160};
     }},
    {{"a channel below 0", "The board has no such channel.", false, {"Channel -1 is none of the board's 160"}},
     [](ControlRig& r) { r.shell.wanted.channels = {-1}; }},
    {{"a gain of 0", "A gain has to be above 0.", false, {"Gain 0 is not above 0"}},
     [](ControlRig& r) {
         r.shell.wanted.gains = {1, 0};
     }},
    {{"a size of nothing", "Start faild because stop value incorrect.", false, {"Frequency = 1000000.000000"}},
     [](ControlRig& r) { r.shell.wanted.stopRule = StopRule::Size; }},
    {{"the board is refused",
      "Init error",
      true,
      {"CreateThread", "Uninitialize", "!!!!!  Error status != 0", "Init error"}},
     [](ControlRig& r) { r.device.setupAnswers[0][0] = 0; }},
    {{"a ring without whole frames",
      "Dynamic library is not compatible with this application! Update drivers.",
      true,
      {"CreateThread", "!!!!!  Error status != 0"}},
     [](ControlRig& r) { r.device.ring = [](uint32_t, uint32_t) { return 1001U; }; }},
    {{"no code range",
      "Mistake in calculation of statistical parameters",
      true,
      {"No Error", "CutMode disable", "Set parameters: ", "!!!!! Error on calculate static parameters"}},
     [](ControlRig& r) { r.device.codeRangeKnown = false; }},
    {{"no input range",
      "Mistake in calculation of statistical parameters",
      true,
      {"!!!!! Error on calculate static parameters"}},
     [](ControlRig& r) { r.device.inputRange = 0.0F; }}};

TEST(RecordingControl, RefusalsLeaveNothingBehind) {
    for (const Refusal& c : kRefusals) {
        for (const bool console : {false, true}) {
            SCOPED_TRACE(std::string(c.what) + (console ? ", console" : ""));
            ScopedDebugLog log;
            {
                ControlRig rig;
                rig.shell.console = console;
                c.change(rig);
                rig.attach();
                const auto before = rig.files();
                EXPECT_FALSE(rig.control.StartButtonClick());
                EXPECT_FALSE(rig.control.running());
                EXPECT_EQ(rig.driver.blockCount(), 0) << "the session is freed, its thread ended";
                EXPECT_EQ(rig.files(), before);
                EXPECT_EQ(rig.device.countCalls("Start"), 0U);
                EXPECT_EQ(rig.device.countCalls("Setup") > 0, c.driverTouched);
                const int starts = c.driverTouched ? 2 : 1;
                if (c.driverTouched) {
                    EXPECT_FALSE(rig.control.StartButtonClick());
                    rig.pump();  // what the threads told at their end is no further refusal
                }
                ASSERT_EQ(rig.shell.shown.size(), static_cast<size_t>(starts));
                EXPECT_EQ(rig.shell.shown[0].rfind(std::string("Attention: ") + c.message, 0), 0U)
                    << rig.shell.shown[0];
                if (std::string_view(c.message) == "Error in file name") {
                    ASSERT_FALSE(rig.shell.details.empty());
                    EXPECT_EQ(rig.shell.details[0].find('"' + rig.shell.name + "\": "), 0U) << rig.shell.details[0];
                }
                EXPECT_EQ(rig.shell.quits, console ? starts : 0);
                EXPECT_EQ(rig.faults, std::vector<std::string>{});
            }
            std::vector<std::string> lines{"StartButtonClick", "Connect"};
            lines.insert(lines.end(), c.lines.begin(), c.lines.end());
            EXPECT_EQ(firstMissing(log.finish(), lines), "");
        }
    }
}

struct Ending {
    const char* what;
    StopCode code;
    const char* status;  // in the debug log
    bool data;
    void (*script)(ControlRig&);
};

const Ending kEndings[] = {
    {"size", StopCode::StopMeasuring, "Stop - By stop measuring", true,
     [](ControlRig& r) { r.shell.wanted.stopRule = StopRule::Size, r.shell.wanted.stopBytes = 1000; }},
    {"pulled out", StopCode::Unplug, "Stop - By device unplug", true,
     [](ControlRig& r) {
         r.device.numbers[kADCGetHotPlug] = 1;
         r.device.numbers[kADCGetHotPlugPresence] = 1;
         r.device.afterRead = [&r](uint32_t read) { r.device.numbers[kADCGetHotPlugPresence] = read == 0 ? 1 : 0; };
     }},
    {"no data", StopCode::NoData, "Stop - By non data", false, [](ControlRig& r) { r.device.readerPaced = 0; }},
    {"transfer", StopCode::TransferError, "Stop - By get error", true, [](ControlRig& r) { r.device.failingRead = 2; }},
    {"an error of the board", StopCode::TransferError, "Stop - By get error", true,
     [](ControlRig& r) {
         r.device.streamEnd = {kADCEndError, 0, 100000, 0};
     }},
    {"the end of the source", StopCode::SourceEnd, "Stop - By end of source", true,
     [](ControlRig& r) {
         r.device.streamEnd = {kADCEndOfSource, 0, 100000, 0};
     }},
    {"another ring at the start", StopCode::Incompatible, "", false,
     [](ControlRig& r) { r.device.ringRefusedFrom = 1; }},
    {"overflow", StopCode::Error, "", true,
     [](ControlRig& r) { r.device.afterRead = [&r](uint32_t read) { r.device.produce(read == 1 ? 5000 : 0); }; }},
    {"start refused", StopCode::Error, "Stop - By start error", false,
     [](ControlRig& r) { r.device.startAnswer = 0; }}};

TEST(RecordingControl, EveryEndRunsTheStopRoutine) {
    for (const Ending& c : kEndings) {
        SCOPED_TRACE(c.what);
        ScopedDebugLog log;
        {
            ControlRig rig;
            rig.shell.console = true;
            rig.device.readerPaced = 100000;
            c.script(rig);
            rig.attach();
            const std::string first = rig.shell.name;
            ASSERT_TRUE(rig.control.StartButtonClick());
            EXPECT_EQ(rig.pump().result.code, c.code);
            EXPECT_FALSE(rig.control.running());
            EXPECT_EQ(rig.driver.blockCount(), 0);
            EXPECT_EQ(fileExists(first), c.data);
            EXPECT_EQ(fileExists(rig.folder.file("run.txt")), c.data);
            EXPECT_NE(rig.shell.name, first) << "a new name is proposed";
            EXPECT_FALSE(fileExists(rig.shell.name));
            EXPECT_EQ(rig.shell.quits, 1);
            EXPECT_EQ(rig.shell.hasShown("Attention: "),
                      c.code != StopCode::StopMeasuring && c.code != StopCode::SourceEnd);
            EXPECT_EQ(rig.shell.hasShown("box: GetData mode:\n     Mode = 1\n"), rig.device.failingRead == 2);
            EXPECT_EQ(rig.shell.hasShown("box: "), rig.device.failingRead == 2);
            rig.control.StopButtonClick();
            EXPECT_EQ(rig.shell.quits, 1) << "the program ends once";
        }
        const std::string text = log.finish();
        EXPECT_EQ(firstMissing(text, {"Resume start", "StopButtonClick", "KillTimer", "Stoping", "Stoping by User",
                                      "Generate new file name", "New file = "}),
                  "");
        EXPECT_EQ(firstMissing(text, {c.status}), "");
    }
}

TEST(RecordingControl, StopByUser) {
    ScopedDebugLog log;
    {
        ControlRig rig;
        rig.attach();
        rig.control.setDataWait(60000);
        ASSERT_TRUE(rig.control.StartButtonClick());
        rig.control.StopButtonClick();
        EXPECT_FALSE(rig.control.running());
        const std::string next = rig.shell.name;
        // The notification comes when the session is gone, and meets the next recording.
        ASSERT_TRUE(rig.control.StartButtonClick());
        EXPECT_EQ(rig.pump().result.code, StopCode::User);
        EXPECT_TRUE(rig.control.running()) << "it is not the next recording's";
        EXPECT_TRUE(rig.shell.hasShown("status: Stop - By user"));
        EXPECT_FALSE(rig.shell.hasShown("Attention"));
        EXPECT_EQ(rig.shell.quits, 0);
        // Starting again ends the one that runs.
        EXPECT_TRUE(rig.control.StartButtonClick());
        EXPECT_TRUE(rig.control.running());
        rig.control.StopButtonClick();
        EXPECT_EQ(rig.driver.blockCount(), 0);
    }
    EXPECT_EQ(
        firstMissing(log.finish(), {"Stop - By user", "StartButtonClick", "Already run", "StopButtonClick", "Stop ok"}),
        "");
}

TEST(RecordingControl, SaysWhereAnEarlierRecordingWent) {
    const std::string base = utf16ToSystem(u"опыт");
    if (base.find('?') != std::string::npos) {
        GTEST_SKIP() << "the code page here has no Cyrillic letters";
    }
    ControlRig rig;
    rig.attach();
    rig.shell.name = rig.folder.write(base + ".dat", "earlier");
    ASSERT_TRUE(rig.control.StartButtonClick());
    rig.control.StopButtonClick();
    EXPECT_TRUE(rig.shell.hasShown(utf8ToCp1251("опыт_old1.dat").value())) << "in the encoding of messages";
    EXPECT_EQ(readFile(rig.folder.file(base + "_old1.dat")), "earlier");
}

// Several programs may choose the same free name at once: the last one finds the recording of the first.
TEST(RecordingControl, AGeneratedNameGivesWayToARecordingThatCameMeanwhile) {
    ControlRig rig;
    rig.attach();
    rig.device.readerPaced = 100000;
    rig.shell.wanted.stopRule = StopRule::Size;
    rig.shell.wanted.stopBytes = 4000;
    rig.control.GenerateFileName();
    const std::string chosen = rig.shell.name;
    const std::string other = fileNameOf(chosen);
    rig.folder.write(other, "another program's");
    ASSERT_TRUE(rig.control.StartButtonClick());
    const std::string recorded = rig.shell.name;
    EXPECT_NE(recorded, chosen);
    EXPECT_EQ(rig.pump().result.bytes, 4000U);
    EXPECT_EQ(readFile(chosen), "another program's");
    EXPECT_TRUE(readFile(recorded) == streamBytes(0, 2000, 2));

    // What a recording without a frame has left keeps no name from being used.
    rig.folder.write(fileNameOf(rig.shell.name.substr(0, rig.shell.name.size() - 4) + ".log"), "lost");
    const std::string next = rig.shell.name;
    ASSERT_TRUE(rig.control.StartButtonClick());
    EXPECT_EQ(rig.shell.name, next);
    EXPECT_EQ(rig.pump().result.bytes, 4000U);

    // Who types the name means it.
    rig.shell.name = chosen;
    ASSERT_TRUE(rig.control.StartButtonClick());
    EXPECT_EQ(rig.pump().result.bytes, 4000U);
    EXPECT_EQ(plainFileSize(chosen), 4000U);
    EXPECT_EQ(readFile(chosen.substr(0, chosen.size() - 4) + "_old1.dat"), "another program's");
}

TEST(RecordingControl, TellsWhatTheBoardTakesInPlaceOfTheWishes) {
    ControlRig rig;
    rig.device.numbers[kADCGetBoardModes] = kADCModePacket;
    rig.device.correctDma = [](int32_t apply, ADCParametersDMA& block) {
        block.m_fFreqStart = apply == 0 ? 500.0F : 400.0F;
        block.m_fFreqPack = 75.0F;
    };
    rig.device.correctEx = [](int32_t apply, ADCParametersDMAEX& block) {
        if (apply == 1) {
            std::swap(block.m_pnChannels[0], block.m_pnChannels[1]);
            block.m_pnGains[0] = 2;
        }
    };
    rig.attach();
    rig.control.setDataWait(60000);
    rig.shell.wanted.frequency = 1000;
    rig.shell.wanted.boardMode = kBoardPacketMode;
    rig.shell.wanted.packetFrequency = 100.0;
    rig.shell.wanted.decimation = 3;
    ASSERT_TRUE(rig.control.StartButtonClick());
    EXPECT_EQ(rig.shell.details, (std::vector<std::string>{
                                     "Asked for 1000.000000 Hz, the board takes 400.000000 Hz",
                                     "Asked for packets of 100.000000 Hz, the board takes 75.000000 Hz",
                                     "Asked for the channels 0, 1, the board takes 1, 0",
                                     "Asked for the gains 1, 1, the board takes 2, 1",
                                 }));
    EXPECT_EQ(rig.control.facts().packetFrequency, 25.0) << "of the frames that are kept";
    rig.control.StopButtonClick();
}

TEST(RecordingControl, TellsOfASlowDiskAndOfTheEndOfTheSystem) {
    ControlRig rig;
    rig.device.readerPaced = 1000;
    rig.attach();
    rig.control.setDataWait(60000);
    ASSERT_TRUE(rig.control.StartButtonClick());
    Notification notification{rig.control.session()->number(), {}};
    rig.control.OnNotification(notification);
    EXPECT_FALSE(rig.shell.hasShown("Attention"));
    notification.result.waitingBytes = 7 << 20;
    EXPECT_TRUE(notification.result.isNews());
    rig.control.OnNotification(notification);
    EXPECT_TRUE(rig.shell.hasShown("Attention: The disk falls behind: 7.0 Mb wait to be written."));
    ASSERT_TRUE(rig.device.waitForReads(1000));
    rig.control.endForShutdown();
    EXPECT_FALSE(rig.control.running());
    EXPECT_EQ(rig.shell.details, std::vector<std::string>{"Recording ended: the system is shutting down."});
    rig.pump();
    EXPECT_EQ(rig.control.outcome(), RecordingOutcome::EndedEarly);
    EXPECT_EQ(rig.control.lastResult().bytes, 2000U);
}

TEST(RecordingControl, TellsOfMarksThatCanNotBeWrittenAndRecordsOn) {
    ControlRig rig;
    rig.shell.wanted.markLine = 9;  // the board has two
    rig.attach();
    rig.control.setDataWait(60000);
    ASSERT_TRUE(rig.control.StartButtonClick());
    EXPECT_TRUE(rig.shell.hasShown("Attention: The board has no digital line 9"));
    rig.folder.write("run.marks.csv", "somebody's");
    ASSERT_TRUE(rig.control.session()->mark());
    ASSERT_TRUE(rig.device.waitForCall("Start"));
    rig.device.produce(500);
    ASSERT_TRUE(rig.device.waitForReads(500));
    rig.control.StopButtonClick();
    rig.pump();
    EXPECT_TRUE(rig.shell.hasShown("Attention: The marks can't be written"));
    EXPECT_EQ(readFile(rig.folder.file("run.marks.csv")), "somebody's");
    EXPECT_EQ(rig.shell.ended.code, StopCode::User);
    EXPECT_EQ(readFile(rig.folder.file("run.dat")).size(), 1000U);
}

}  // namespace
}  // namespace tarno2::test
