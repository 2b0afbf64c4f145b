// tarno2-drivers, and drivers that do not load.

#include <filesystem>
#include <gmock/gmock.h>

#include "platform/paths.h"
#include "tests/apps/recording_rig.h"

namespace tarno2::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

/// A path of the build as the system writes it.
std::string native(const std::string& path) {
    return std::filesystem::absolute(path).make_preferred().string();
}

/// A registry of the test's own where there can be one: additions go to a folder of the rig.
class DriversProgram : public testing::Test {
protected:
    void TearDown() override {
        // What a test that failed left in a registry that outlives it.
        ChildProcess remove(builtFile("tarno2-drivers"), {"remove", "TestDriver"}, rig.file("output.txt"));
        remove.waitForEnd(kGuard);
    }

    RecordingRig rig;
    ScopedEnvironment registry{"TARNO2_REGISTRY", rig.file("registry") + ":" + joinPath(TARNO2_BIN, "registry.d")};
    ScopedEnvironment settings{"TARNO2_SIMULATOR", ""};
};

TEST_F(DriversProgram, ListsEveryDriverWithItsPathAndBoards) {
    const ScopedEnvironment noFile("TARNO2_REPLAY_FILE", "");
    const std::string list = rig.run("tarno2-drivers", {"list"});
    EXPECT_THAT(list, HasSubstr("Simulator\n    path: "));
    EXPECT_THAT(list, HasSubstr("Replay\n    path: "));
    EXPECT_THAT(list, HasSubstr("    loads, boards: 4\n        001 SIM14 "));
    EXPECT_THAT(list, HasSubstr("        004 SIM12U "));
}

TEST_F(DriversProgram, SaysWhyADriverDoesNotLoadAndSoDoesARecording) {
    for (const std::string& library :
         {rig.file("no-such-library.so"), rig.folder().write("text.so", "this is no library"), rig.path()}) {
        SCOPED_TRACE(library);
        const std::string added = rig.run("tarno2-drivers", {"add", "TestDriver", library}, 1);
        EXPECT_THAT(added, AllOf(HasSubstr("Listed in "), HasSubstr("    path: " + library + "\n"),
                                 HasSubstr("    does not load: ")));
        const std::string list = rig.run("tarno2-drivers", {"list"}, 1);
        EXPECT_THAT(list, AllOf(HasSubstr("TestDriver\n"), HasSubstr("Simulator\n"), HasSubstr("does not load: ")));

        Wish wish;
        wish.driver = "TestDriver";
        wish.bytes = 4000;
        std::filesystem::remove(rig.file("AutoLog.txt"));
        rig.record(wish);
        EXPECT_THAT(rig.autoLog(), AllOf(HasSubstr("Set error code = -3: Driver . Program aborted."),
                                         HasSubstr("\r\nProgram exit at ")));
        EXPECT_FALSE(rig.exists("run.dat"));

        EXPECT_THAT(rig.run("tarno2-drivers", {"remove", "TestDriver"}), HasSubstr("Removed from "));
        EXPECT_THAT(rig.run("tarno2-drivers", {"list"}), Not(HasSubstr("TestDriver")));
    }
}

TEST_F(DriversProgram, AddsADriverThatThenRecords) {
    const std::string library = native(joinPath(TARNO2_BIN, kPathSeparator == '\\' ? "simulator.dll" : "simulator.so"));
    EXPECT_THAT(rig.run("tarno2-drivers", {"add", "TestDriver", library}), HasSubstr("    loads, boards: 4\n"));
    Wish wish;
    wish.driver = "TestDriver";
    wish.bytes = 4000;
    rig.record(wish);
    EXPECT_EQ(checkRecording(rig.pieces(), {.driver = "TestDriver"}), 2000U) << rig.autoLog();
    rig.run("tarno2-drivers", {"remove", "TestDriver"});
}

TEST_F(DriversProgram, ChecksADriverLikeARecording) {
    const struct {
        const char* simulator;
        int status;
        const char* finding;
    } cases[] = {{"", 0, " 0 wrong\n"},
                 {"AnswerCount=0", 0, "missing kADCGetSamplesWritten: "},
                 {"ChannelNames=in|out", 0, "ok      kADCGetChannelName"},
                 {"ChannelUnits=a\tb", 1, "wrong   kADCGetChannelUnit: the text of channel 0 "},
                 {"AnswerFacts=0", 1, "wrong   kADCGetSampleFormat: has no answer"},
                 {"RingMisfit=1", 1, "wrong   the ring: "},
                 {"RefuseStart=1", 1, "wrong   Start: The start was refused"},
                 {"AbiVersion=2", 1, "wrong   kADCGetAbiVersion: answers 2"}};
    for (const auto& each : cases) {
        const ScopedEnvironment simulator("TARNO2_SIMULATOR", each.simulator);
        EXPECT_THAT(rig.run("tarno2-drivers", {"check", "Simulator"}, each.status), HasSubstr(each.finding));
    }
    EXPECT_THAT(rig.run("tarno2-drivers", {"check", "Simulator", "9"}, 1), HasSubstr("There is no board 9"));
}

TEST_F(DriversProgram, ShowsWhatADriverCanBeTold) {
    rig.run("tarno2-drivers", {"add", "TestDriver", native(SETTINGS_DRIVER)});
    EXPECT_THAT(rig.run("tarno2-drivers", {"settings", "TestDriver"}),
                AllOf(HasSubstr("KEY       TYPE     TAKES "), HasSubstr("Label     text     "),
                      HasSubstr("\nChannels  integer  1 to 16 "), HasSubstr("\nRate      real  "),
                      HasSubstr("  1000.5        Sample rate of a channel, Hz\n"),
                      HasSubstr("\nFormat    choice   u8, s16le, f32le                  s16le "),
                      HasSubstr("\nPort      choice   /dev/ttyS0, /dev/ttyUSB0, others "), HasSubstr("*.wav, *.dat "),
                      HasSubstr("lab           Host (fixed by the environment or the driver)\n")));
    rig.run("tarno2-drivers", {"remove", "TestDriver"});
    rig.run("tarno2-drivers", {"settings", "TestDriver"}, 1);
}

TEST_F(DriversProgram, RefusesBadUse) {
    EXPECT_THAT(rig.run("tarno2-drivers", {}, 2), HasSubstr("subcommand"));
    rig.run("tarno2-drivers", {"add", "OnlyAName"}, 2);
    rig.run("tarno2-drivers", {"frobnicate"}, 2);
    EXPECT_THAT(rig.run("tarno2-drivers", {"--help"}), HasSubstr("Exit status: "));
    EXPECT_THAT(rig.run("tarno2-drivers", {"remove", "NeverAdded"}, 1), HasSubstr("NeverAdded"));
}

}  // namespace
}  // namespace tarno2::test
