// Where a program that was installed keeps its settings and logs.

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

}  // namespace
}  // namespace tarno2::test
