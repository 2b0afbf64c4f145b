// What desktops ask of installed programs: where they keep settings and logs, and pictures of recordings.

#include <filesystem>
#include <gtest/gtest.h>

#include "platform/paths.h"
#include "tests/apps/recording_rig.h"

namespace tarno2::test {
namespace {

// As root too, who may write to the folder of every program.
TEST(Installed, ProgramKeepsNothingInItsOwnFolder) {
    const RecordingRig rig;
    std::filesystem::create_directory(rig.file("bin"));
    std::filesystem::copy_file(builtFile("tarno2-console"), rig.file("bin/tarno2-console"));
    const ScopedEnvironment none("TARNO2_HOME", "");
    const ScopedEnvironment config("XDG_CONFIG_HOME", rig.file("config"));
    const auto run = [&rig] {
        ChildProcess program(rig.file("bin/tarno2-console"), {"/c", "missing.txt"}, rig.file("output.txt"));
        EXPECT_EQ(program.waitForEnd(kGuard), 0);
    };
    rig.folder().write(std::string("bin/") + kInstalledMark, "");
    run();
    EXPECT_TRUE(rig.exists("config/tarno2/AutoLog.txt"));
    EXPECT_FALSE(rig.exists("bin/AutoLog.txt"));
    std::filesystem::remove(rig.file(std::string("bin/") + kInstalledMark));
    run();
    EXPECT_TRUE(rig.exists("bin/AutoLog.txt"));
}

// Neither a display nor the whole file is needed, whichever of the two files is named.
TEST(Thumbnail, IsDrawnOfAShortAndOfAVeryLongRecording) {
    if (!std::filesystem::exists(builtFile("tarno2-thumbnail"))) {
        GTEST_SKIP() << "built without the library of the windows";
    }
    const RecordingRig rig;
    Wish wish;
    wish.bytes = 40000;
    rig.record(wish);
    const ScopedEnvironment display("DISPLAY", "");
    rig.run("tarno2-thumbnail", {"--size", "64", rig.file("run.txt"), rig.file("short")});
    std::filesystem::resize_file(rig.file("run.dat"), uint64_t{4} << 30U);
    rig.run("tarno2-thumbnail", {rig.file("run.dat"), rig.file("long")});
    const std::string small = readFile(rig.file("short"));
    ASSERT_GT(small.size(), 100U);
    EXPECT_EQ(small.substr(1, 3), "PNG");
    EXPECT_EQ(small.substr(16, 8), std::string("\0\0\0\x40\0\0\0\x30", 8)) << "64 x 48";
    EXPECT_NE(readFile(rig.file("long")), "");
    const std::string said = rig.run("tarno2-thumbnail", {rig.file("none.dat"), rig.file("none")}, 1);
    EXPECT_NE(said.find("none.txt: no description"), std::string::npos) << said;
    EXPECT_FALSE(rig.exists("none"));
}

}  // namespace
}  // namespace tarno2::test
