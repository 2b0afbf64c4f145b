// Boards that refuse, break or fall silent: what the logs say, and what is kept.

#include <algorithm>
#include <gmock/gmock.h>

#include "platform/file.h"
#include "platform/paths.h"
#include "tests/apps/recording_rig.h"
#include "tests/config/masked.h"

namespace tarno2::test {
namespace {

using testing::HasSubstr;

TEST(Faults, ThatRefuseAStartLeaveTheReasonAndNoFile) {
    const struct {
        const char* fault;
        const char* autoLog;
        const char* debugLog;
    } cases[] = {
        {"RefuseBoard=1", "Set error code = -1: Error . Program aborted.", "(RefuseBoard)"},
        {"RefuseCheck=1", "Attention: Init error", "Init error"},
        {"RefuseInit=1", "Attention: Init error", "Init error"},
        {"RefuseStart=1", "Attention: Start error", "Stop - By start error"},
        {"RefuseStart=1", "Stop - By start error", "The start was refused (RefuseStart)."},
        {"AnswerRing=0", "Attention: Dynamic library is not compatible with this application! Update drivers.", ""},
        {"RingMisfit=1", "Attention: Dynamic library is not compatible with this application! Update drivers.", ""},
        {"RingDiffers=1", "Attention: Dynamic library is not compatible with this application! Update drivers.", ""},
        {"MaxBuffer=3", "Attention: Init error", ""},
        {"AnswerFacts=0", "Attention: ", ""},
        {"AbiVersion=77", "Set error code = -3: Driver . Program aborted.", "version 77"},
        {"Boards=0", "Set error code = -1: Error . Program aborted.", ""},
        {"Boards=1", "Set error code = -1: Error . Program aborted.", "Base number Error"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.fault);
        const RecordingRig rig;
        Wish wish;
        wish.bytes = 100000;
        rig.record(wish, std::string("RealTime=0;Signal=Counter;") + each.fault);
        EXPECT_THAT(rig.autoLog(), HasSubstr(each.autoLog));
        EXPECT_THAT(rig.autoLog(), HasSubstr("\r\nProgram exit at "));
        EXPECT_THAT(rig.debugLog(), HasSubstr(each.debugLog));
        EXPECT_FALSE(rig.exists("run.dat"));
        EXPECT_FALSE(rig.exists("run.txt"));
    }
}

struct Broken {
    const char* settings;
    std::vector<std::string> autoLog;
    const char* position;  ///< text before the number of samples in the debug log; empty: `samples` tells
    uint64_t samples;
};

/// The recording that the boards below break off.
Wish longRecording() {
    Wish wish;
    wish.board = 4;
    wish.frequency = 100e3;
    wish.seconds = 1e6;
    return wish;
}

void checkBroken(const RecordingRig& rig, const Broken& broken) {
    SCOPED_TRACE(broken.settings);
    for (const std::string& line : broken.autoLog) {
        EXPECT_THAT(rig.autoLog(), HasSubstr("\r\n" + line));
    }
    EXPECT_THAT(rig.autoLog(), HasSubstr("\r\nProgram exit at "));
    const uint64_t samples = broken.position[0] == '\0' ? broken.samples : numberAfter(rig.debugLog(), broken.position);
    const Expected expected{.frequencyPerChannel = 50e3, .counterBits = 12};
    EXPECT_EQ(checkRecording(rig.pieces(), expected), samples);
    EXPECT_GT(samples, 0U);
}

TEST(Faults, ThatEndARecordingKeepWhatWasDelivered) {
    const Broken cases[] = {
        {"OverflowAfter=1000000", {"Attention: FIFO overflow"}, "!!!!! First lost sample = ", 0},
        {"FailGetDataAt=1000000",
         {"Stop - By get error", "Attention: Error in metod GET", "GetData mode:"},
         "!!!!! GetData error at sample ",
         0},
        {"UnplugAfter=1000001", {"Stop - By device unplug"}, "", 1000000},
        {"UnplugAfter=10", {"Stop - By device unplug"}, "", 10},
    };
    for (const Broken& each : cases) {
        const RecordingRig rig;
        rig.record(longRecording(), std::string("RealTime=0;Signal=Counter;") + each.settings);
        checkBroken(rig, each);
    }
}

TEST(BothShells, LogTheSame) {
    const ScopedEnvironment display("QT_QPA_PLATFORM", "offscreen");
    const struct {
        const char* simulator;
        const char* settings;
        const char* line;
    } cases[] = {
        {";UnplugAfter=1000", "", "Attention: The board was unplugged\r\n"},
        {";RefuseInit=1", "", "(RefuseInit)"},
        {";RefuseStart=1", "", "(RefuseStart)"},
        {";SilentAfter=1000;UnplugAfter=1000", "Signal = Counter\r\n", "\r\nDriver settings: The name of the signal"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.line);
        std::string logs[2];
        for (const bool window : {false, true}) {
            const RecordingRig rig;
            rig.folder().write("Simulator.cfg", each.settings);
            auto process = rig.start(longRecording(), std::string("RealTime=0") + each.simulator,
                                     window ? "Tarno2" : "tarno2-console");
            EXPECT_EQ(process->waitForEnd(kGuard), 0);
            std::string log = masked(rig.autoLog());
            for (const std::string path = masked(rig.path()); log.find(path) != std::string::npos;) {
                log.replace(log.find(path), path.size(), "folder");
            }
            EXPECT_THAT(rig.autoLog(), HasSubstr(each.line));
            logs[window ? 1 : 0] = log;
        }
        EXPECT_EQ(logs[0], logs[1]);
    }
}

TEST(ExitStatus, TellsAScriptWhatCameOfARecording) {
    Wish sized;
    sized.board = 4;
    sized.frequency = 100e3;
    sized.bytes = 4000;
    Wish endless = longRecording();
    Wish refused = sized;
    refused.more = "BoardMode = 4\r\nPacketFreq = 10\r\n";
    const struct {
        const char* what;
        Wish wish;
        const char* simulator;
        int status;
        std::string line;
    } cases[] = {
        {"whole", sized, "", 0, "Recorded as asked: 4000 bytes in 1 files.\n"},
        {"unplugged", endless, ";UnplugAfter=1000", 1,
         "The recording ended early (Stop - By device unplug): 2000 bytes in 1 files. See \""},
        {"refused", refused, "", 2, "Nothing was recorded. See \""},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        const RecordingRig rig;
        const ScopedEnvironment settings("TARNO2_SIMULATOR", std::string("RealTime=0;Signal=Counter") + each.simulator);
        const std::string file = rig.writeSettings(each.wish);
        const std::string told = rig.run("tarno2-console", {"--status", "/c", file}, each.status);
        EXPECT_EQ(told.substr(0, each.line.size()), each.line);
        EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 1) << told;
        EXPECT_EQ(rig.run("tarno2-console", {"/c", file}), "");
        EXPECT_THAT(rig.run("Tarno2", {"--status", "/c", file}, each.status), HasSubstr(each.line));
    }
    const RecordingRig rig;
    rig.run("tarno2-console", {"--status", "/c", rig.file("missing.txt")}, 2);
}

// A board that signals nothing is given ten seconds, so these wait together.
TEST(Faults, OfASilentBoardEndWithWhatItHadCounted) {
    const std::vector<std::string> noData{"Stop - By non data",
                                          "Attention: Data did not act for a settlement time interval"};
    const Broken cases[] = {
        {"SilentAfter=1000000", noData, "", 1000000},
        {"SilentAfter=7", noData, "", 6},
        {"RealTime=1;SilentAfter=40000;NoDataEvent=1", noData, "", 40000},
    };
    RecordingRig rigs[std::size(cases) + 1];
    std::vector<std::unique_ptr<ChildProcess>> processes;
    for (size_t i = 0; i < std::size(cases); ++i) {
        processes.push_back(
            rigs[i].start(longRecording(), cases[i].settings + std::string(";RealTime=0;Signal=Counter")));
    }
    const RecordingRig& empty = rigs[std::size(cases)];
    processes.push_back(empty.start(longRecording(), "SilentAfter=0"));
    for (const auto& process : processes) {
        EXPECT_EQ(process->waitForEnd(kGuard), 0);
    }
    for (size_t i = 0; i < std::size(cases); ++i) {
        checkBroken(rigs[i], cases[i]);
    }
    EXPECT_THAT(empty.autoLog(), HasSubstr("\r\nStop - By non data\r\n"));
    EXPECT_THAT(listDirectory(empty.path()),
                testing::UnorderedElementsAre("AutoLog.dbg", "AutoLog.txt", "auto.txt", "output.txt"));
}

}  // namespace
}  // namespace tarno2::test
