// Recordings that are ended from outside: killed, asked to end, or stopped by a full disk.

#include <gmock/gmock.h>

#include "platform/file.h"
#include "platform/paths.h"
#include "tests/apps/recording_rig.h"
#include "tests/apps/small_disk.h"

namespace tarno2::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;

Wish endlessRecording() {
    Wish wish;
    wish.channels = 16;
    wish.frequency = 4e6;
    return wish;
}

const Expected kEndless{.channels = 16, .frequencyPerChannel = 250e3};

TEST(Killed, ARecordingIsKeptByTheNextOne) {
    const struct {
        const char* moment;
        uint32_t cut;
        std::function<bool(const RecordingRig&)> come;
    } moments[] = {
        {"the file is there", 0, [](const RecordingRig& rig) { return rig.exists("run.dat"); }},
        {"the file has data", 0, [](const RecordingRig& rig) { return rig.size("run.dat") > 0; }},
        {"a piece is complete", 1, [](const RecordingRig& rig) { return rig.size("run_1.dat") > 0; }},
        {"three pieces are there", 1, [](const RecordingRig& rig) { return rig.exists("run_2.dat"); }},
    };
    for (const auto& each : moments) {
        SCOPED_TRACE(each.moment);
        const RecordingRig rig;
        Wish wish = endlessRecording();
        wish.cut = each.cut;
        auto process = rig.start(wish, "Signal=Counter");
        ASSERT_TRUE(waitUntil([&] { return each.come(rig); })) << rig.autoLog();
        process->kill();
        // A file without a frame does not stay.
        std::vector<std::string> killed = rig.pieces();
        while (!killed.empty() && rig.size(fileNameOf(killed.back())) < 32) {
            killed.pop_back();
        }
        std::vector<std::string> contents;
        contents.reserve(killed.size());
        for (const std::string& name : killed) {
            contents.push_back(readFile(name));
        }

        wish.cut = 0;
        wish.bytes = 32000;
        rig.record(wish);
        EXPECT_EQ(checkRecording({rig.file("run.dat")}, kEndless), 16000U) << rig.autoLog();
        EXPECT_EQ(rig.pieces().size(), 1U);
        if (!killed.empty()) {
            EXPECT_THAT(rig.autoLog(), HasSubstr("Earlier recording of this name was renamed to"));
        }
        const std::vector<std::string> old = rig.pieces("run_old1.dat");
        ASSERT_EQ(old.size(), killed.size());
        uint64_t bytes = 0;
        for (size_t i = 0; i < old.size(); ++i) {
            const uint64_t frameBytes = 32;
            contents[i].resize(contents[i].size() / frameBytes * frameBytes);
            const std::string now = readFile(old[i]);
            EXPECT_TRUE(ChildProcess::killEndsWrites() ? now == contents[i] : now.starts_with(contents[i])) << old[i];
            bytes += now.size();
        }
        EXPECT_EQ(checkRecording(old, kEndless) * 2, bytes);
    }
}

TEST(AskedToEnd, ARecordingEndsWithWholeFiles) {
    using Request = ChildProcess::Request;
    // The one program has a window, which needs no screen.
    const ScopedEnvironment screen("QT_QPA_PLATFORM", "offscreen");
    for (const char* program : {"tarno2-console", "Tarno2"}) {
        for (const auto request : {Request::Interrupt, Request::Terminate, Request::HangUp}) {
            SCOPED_TRACE(testing::Message() << program << ", request " << static_cast<int>(request));
            const RecordingRig rig;
            auto process = rig.start(endlessRecording(), "Signal=Counter", program);
            ASSERT_TRUE(waitUntil([&] { return rig.size("run.dat") > 0; })) << rig.autoLog();
            if (!process->ask(request)) {
                GTEST_SKIP() << "no signal can be sent to another program here";
            }
            EXPECT_EQ(process->waitForEnd(kGuard), 0);
            EXPECT_THAT(rig.autoLog(), AllOf(HasSubstr("\r\nStop - By user\r\n"), HasSubstr("\r\nProgram exit at ")));
            EXPECT_EQ(checkRecording(rig.pieces(), kEndless) * 2, rig.size("run.dat"));
            EXPECT_FALSE(rig.exists("run.tarno2-journal"));
        }
    }
}

TEST(FullDisk, IsNotFilledByARecording) {
    for (const uint32_t cut : {0U, 3U}) {
        SCOPED_TRACE("pieces of " + std::to_string(cut) + " MiB");
        const RecordingRig rig;
        const SmallDisk disk(rig.file("small"), 16 * kMebibyte);
        if (!disk.mounted()) {
            GTEST_SKIP() << "a small file system can be mounted on Linux by root alone";
        }
        Wish wish;
        wish.channels = 7;
        wish.frequency = 7e6;
        wish.fileName = "small/run.dat";
        wish.cut = cut;
        rig.record(wish, "Signal=Counter");
        EXPECT_THAT(rig.autoLog(), AllOf(HasSubstr("\r\nStop - By stop measuring\r\n"),
                                         HasSubstr("Attention: Recording ended: the disk is almost full.")));
        const uint64_t samples =
            checkRecording(rig.pieces("small/run.dat"), {.channels = 7, .frequencyPerChannel = 1e6});
        EXPECT_GT(samples * 2, 6 * kMebibyte);
        EXPECT_LT(samples * 2, 15 * kMebibyte);
    }
}

TEST(FullDisk, EndsARecordingThatKeepsWhatFitted) {
    for (const uint32_t cut : {0U, 2U}) {
        SCOPED_TRACE("pieces of " + std::to_string(cut) + " MiB");
        const RecordingRig rig;
        const SmallDisk disk(rig.file("small"), 32 * kMebibyte + 4096);
        if (!disk.mounted()) {
            GTEST_SKIP() << "a small file system can be mounted on Linux by root alone";
        }
        Wish wish;
        wish.channels = 7;
        wish.frequency = 700e3;
        wish.fileName = "small/run.dat";
        wish.bytes = 64 * kMebibyte;
        wish.cut = cut;
        auto process = rig.start(wish, "Signal=Counter");
        ASSERT_TRUE(waitUntil([&] { return rig.size("small/run.dat") > kMebibyte; })) << rig.autoLog();
        disk.fill();
        EXPECT_EQ(process->waitForEnd(kGuard), 0);
        EXPECT_THAT(rig.autoLog(),
                    AllOf(HasSubstr("\r\nStop - By error\r\nAttention: Error in writing the data file\r\n"),
                          HasSubstr("Attention: Free space on disk is less than the recording will take.")));
        EXPECT_THAT(rig.debugLog(), HasSubstr("!!!!! Write error in "));
        const uint64_t samples =
            checkRecording(rig.pieces("small/run.dat"), {.channels = 7, .frequencyPerChannel = 100e3});
        EXPECT_GT(samples * 2, kMebibyte);
        EXPECT_EQ(samples % 7, 0U);
    }
}

TEST(SizeLimitOfTheSystem, EndsARecordingAsAFullDiskDoes) {
    if (kPathSeparator == '\\') {
        GTEST_SKIP() << "there is no such limit on Windows";
    }
    const ScopedEnvironment screen("QT_QPA_PLATFORM", "offscreen");
    for (const char* program : {"tarno2-console", "Tarno2"}) {
        SCOPED_TRACE(program);
        const RecordingRig rig;
        Wish wish;
        wish.channels = 7;
        wish.frequency = 7e6;
        wish.bytes = 64 * kMebibyte;
        // Blocks of 512 bytes, of 1024 in some shells.
        auto process = rig.startAfter("ulimit -f 4096", wish, "Signal=Counter", program);
        EXPECT_EQ(process->waitForEnd(kGuard), 0) << readFile(rig.file("output.txt"));
        EXPECT_THAT(rig.autoLog(), AllOf(HasSubstr("\r\nStop - By error\r\n"), HasSubstr("\r\nProgram exit at ")));
        const uint64_t samples = checkRecording(rig.pieces(), {.channels = 7, .frequencyPerChannel = 1e6});
        EXPECT_GT(samples * 2, 2 * kMebibyte - 14);
        EXPECT_EQ(samples % 7, 0U);
    }
}

TEST(DisplayThatGoesAway, EndsTheWindowAndNotTheRecording) {
    if (kPathSeparator == '\\' || !fileExists("/usr/bin/Xvfb")) {
        GTEST_SKIP() << "there is no X server without a screen here";
    }
    const RecordingRig rig;
    ChildProcess server("/usr/bin/Xvfb",
                        {"-displayfd", "1", "-screen", "0", "640x480x24", "-nolisten", "tcp", "-noreset"},
                        rig.file("display.txt"));
    const auto number = [&rig] { return readFile(rig.file("display.txt")); };
    ASSERT_TRUE(waitUntil([&] { return number().ends_with('\n'); }));
    const ScopedEnvironment display("DISPLAY", ':' + number().substr(0, number().find('\n')));
    const ScopedEnvironment platform("QT_QPA_PLATFORM", "xcb");
    Wish wish = endlessRecording();
    wish.seconds = 3.0;
    auto process = rig.start(wish, "Signal=Counter", "Tarno2");
    ASSERT_TRUE(waitUntil([&] { return rig.size("run.dat") > 0; })) << rig.autoLog();
    server.kill();
    EXPECT_EQ(process->waitForEnd(kGuard), 0) << readFile(rig.file("output.txt"));
    const std::string output = readFile(rig.file("output.txt"));
    EXPECT_THAT(rig.autoLog(), AllOf(HasSubstr("\r\nStop - By user\r\n"), HasSubstr("\r\nProgram exit at "))) << output;
    // The toolkit may notice it only after the end. AddressSanitizer's strict checks refuse what a system library does
    // with the keyboard's map, so with them there is no window from the start.
    if (output.find("connection broke") != std::string::npos) {
        EXPECT_THAT(rig.autoLog(), HasSubstr("\r\nAttention: The display is gone."));
    }
    EXPECT_GE(checkRecording(rig.pieces(), kEndless), 11'000'000U);
}

}  // namespace
}  // namespace tarno2::test
