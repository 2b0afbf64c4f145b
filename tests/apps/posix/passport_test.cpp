// The passport of recordings that end in every way there is, read by a program that knows the formats alone.

#include <gmock/gmock.h>

#include "platform/file.h"
#include "tests/apps/recording_rig.h"
#include "tests/apps/small_disk.h"

namespace tarno2::test {
namespace {

using Request = ChildProcess::Request;

/// Runs a Python program to its end; what it printed, empty when it has nothing to object to.
std::string objections(const RecordingRig& rig, const std::vector<std::string>& arguments) {
    ChildProcess python("/usr/bin/python3", arguments, rig.file("python.txt"));
    const std::optional<int> status = python.waitForEnd(kGuard);
    const std::string printed = readFile(rig.file("python.txt"));
    return status == 0 ? "" : "status " + std::to_string(status.value_or(-1)) + "\n" + printed;
}

/// Expects a passport that has its form, fits the files, and in which every lie is found.
void expectTrue(const RecordingRig& rig, const std::string& passport, std::vector<std::string> told,
                uint32_t counterBits) {
    ASSERT_TRUE(fileExists(passport)) << rig.autoLog();
    EXPECT_EQ(objections(rig, {"-m", "jsonschema", "-i", passport, PASSPORT_SCHEMA}), "") << readFile(passport);
    std::vector<std::string> arguments = {READ_PASSPORT, "--lies", "--counter", std::to_string(counterBits)};
    for (std::string& each : told) {
        arguments.insert(arguments.end(), {"--expect", std::move(each)});
    }
    arguments.push_back(passport);
    EXPECT_EQ(objections(rig, arguments), "") << readFile(passport);
    EXPECT_EQ(rig.run("tarno2-verify", {"--quiet", passport}), "");
}

Wish recordingOf(uint32_t board, double frequency, uint64_t bytes, std::string more = "") {
    Wish wish;
    wish.board = board;
    wish.frequency = frequency;
    wish.bytes = bytes;
    wish.more = std::move(more);
    return wish;
}

constexpr const char* kTriggeredRecords =
    "SynchroAnalyzeMode = 2\r\nSynchroAnalogMode = 0\r\nSynchroAllSize = 30000\r\nSynchroPrehistorySize = 1000\r\n";

TEST(Passport, TellsOfRecordingsThatEndByThemselves) {
    Wish timed = recordingOf(2, 20e3, 0, "Comment = \"probe 7, \xD0\xBB\xD0\xB5\xD0\xB4\"\r\n");
    timed.seconds = 2.5;
    Wish pieces = recordingOf(2, 1e6, 3 * kMebibyte);
    pieces.cut = 1;
    Wish recordsInPieces = recordingOf(2, 1e6, 2 * kMebibyte, std::string(kTriggeredRecords) + "Decimation = 2\r\n");
    recordsInPieces.cut = 1;
    const Wish endless = recordingOf(4, 100e3, 0);
    const struct {
        const char* what;
        Wish wish;
        const char* simulator;
        std::vector<std::string> told;
        uint32_t counterBits = 0;
    } cases[] = {
        {"time", timed, "", {"end.reason=time", "comment=probe 7, \xD0\xBB\xD0\xB5\xD0\xB4", "rate.asked=10000.0"}},
        {"size", recordingOf(2, 1e6, 40000), ";RealTime=0", {"end.reason=size", "frames=10000"}},
        {"size, 32 bits with lines",
         recordingOf(3, 800e3, 80000, "ChannelsGain = 4, 1\r\n"),
         ";RealTime=0",
         {"end.reason=size", "channels.0.gain=4", "channels.0.upper=0.625"}},
        {"labels",
         recordingOf(3, 800e3, 80000,
                     "ChannelsName = \"inlet\"\r\nChannelsUnit = \";bar\"\r\nChannelsFactor = 1, -2.5\r\n"
                     "ChannelsOffset = 0, 0.1\r\nLinesName = \";gate\"\r\n"),
         ";RealTime=0;ChannelNames=AI0|AI1;ChannelUnits=mA|kPa",
         {"channels.0.name=inlet", "channels.0.unit=mA", "channels.1.name=AI1", "channels.1.unit=bar",
          "channels.1.factor=-2.5", "channels.1.offset=0.1", "lines.1.name=gate", "lines.0.name="}},
        {"pieces", pieces, ";RealTime=0", {"end.reason=size", "pieces.2.file=run_2.dat"}},
        {"marks",
         recordingOf(3, 800e3, 800000, "MarkLine = 3\r\n"),
         ";RealTime=0;DigitalPeriod=500;MarkEvery=30000",
         {"marks.file=run.marks.csv"}},
        {"records", recordingOf(2, 1e6, 600000, kTriggeredRecords), ";RealTime=0", {"end.reason=size"}, 16},
        {"records in pieces", recordsInPieces, ";RealTime=0", {"end.reason=size", "rate.decimation=2"}, 16},
        {"one record",
         recordingOf(2, 1e6, 0, std::string(kTriggeredRecords) + "StopAfterTrigged = 1\r\n"),
         ";RealTime=0",
         {"end.reason=condition", "synchronisation.stopAfterRecord=True"},
         16},
        {"a level ends it",
         recordingOf(4, 100e3, 0,
                     "SynchroAnalyzeMode = 1\r\nAnalyzeMode = 0\r\nAnalyzeAnalogStopMode = 0\r\n"
                     "AnalyzeAnalogStopValue = 1.0\r\n"),
         ";RealTime=0;Signal=Sine",
         {"end.reason=condition", "synchronisation.conditions.0.role=stop"}},
        {"unplugged", endless, ";RealTime=0;UnplugAfter=1001", {"end.reason=unplugged", "frames=500"}},
        {"overflow",
         endless,
         ";RealTime=0;OverflowAfter=1000000",
         {"end.reason=overflow", "losses.0.cause=overwritten"}},
        {"broken transfer", endless, ";RealTime=0;FailGetDataAt=100000", {"end.reason=transfer error"}},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        const RecordingRig rig;
        rig.record(each.wish, std::string("Signal=Counter") + each.simulator);
        expectTrue(rig, rig.file("run.json"), each.told, each.counterBits);
    }
}

TEST(Passport, TellsOfRecordingsThatAreEndedFromOutside) {
    const struct {
        Request request;
        const char* reason;
    } cases[] = {{Request::Interrupt, "user"}, {Request::Terminate, "user"}};
    for (const auto& each : cases) {
        const RecordingRig rig;
        auto process = rig.start(recordingOf(2, 1e6, 0), "Signal=Counter");
        ASSERT_TRUE(waitUntil([&] { return rig.size("run.dat") > 0; })) << rig.autoLog();
        EXPECT_THAT(readFile(rig.file("run.json")), testing::HasSubstr("\"state\": \"recording\""));
        EXPECT_EQ(objections(rig, {"-m", "jsonschema", "-i", rig.file("run.json"), PASSPORT_SCHEMA}), "");
        ASSERT_TRUE(process->ask(each.request));
        EXPECT_EQ(process->waitForEnd(kGuard), 0);
        expectTrue(rig, rig.file("run.json"), {std::string("end.reason=") + each.reason}, 0);
    }
}

TEST(Passport, OfAKilledRecordingIsCompletedByItsRecovery) {
    for (const bool records : {false, true}) {
        SCOPED_TRACE(records);
        const RecordingRig rig;
        Wish wish =
            recordingOf(2, 4e6, 0, std::string("ChannelsName = \"a;b\"\r\n") + (records ? kTriggeredRecords : ""));
        wish.cut = 1;
        auto process = rig.start(wish, "Signal=Counter");
        ASSERT_TRUE(waitUntil([&] { return rig.size("run_1.dat") > 0; })) << rig.autoLog();
        process->kill();
        rig.run("tarno2-recover", {rig.file("run.dat")});
        expectTrue(rig, rig.file("run.json"), {"end.reason=cut off", "state=recovered", "channels.1.name=b"}, 0);
    }
}

TEST(Passport, TellsOfADiskThatBecameFull) {
    for (const bool filled : {false, true}) {
        SCOPED_TRACE(filled ? "by others" : "by the recording");
        const RecordingRig rig;
        const SmallDisk disk(rig.file("small"), 32 * kMebibyte);
        if (!disk.mounted()) {
            GTEST_SKIP() << "a small file system can be mounted on Linux by root alone";
        }
        Wish wish = recordingOf(2, 7e6, 0);
        wish.fileName = "small/run.dat";
        auto process = rig.start(wish, "Signal=Counter");
        ASSERT_TRUE(waitUntil([&] { return rig.size("small/run.dat") > kMebibyte; })) << rig.autoLog();
        if (filled) {
            disk.fill();
        }
        EXPECT_EQ(process->waitForEnd(kGuard), 0);
        expectTrue(rig, rig.file("small/run.json"),
                   {std::string("end.reason=") + (filled ? "write error" : "disk full")}, 0);
    }
}

TEST(Passport, IsNotMadeWhenItIsSwitchedOff) {
    const RecordingRig rig;
    rig.record(recordingOf(2, 1e6, 40000, "Passport = 0\r\n"));
    EXPECT_EQ(rig.size("run.dat"), 40000U);
    EXPECT_FALSE(rig.exists("run.json"));
}

}  // namespace
}  // namespace tarno2::test
