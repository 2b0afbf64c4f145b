#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "config/files/disk_info.h"
#include "config/files/disk_speed.h"
#include "config/files/file_name_check.h"
#include "config/logs/debug_log.h"
#include "language/language_table.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "platform/volume.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A clock that shows these times one after the other, then the last one.
class ScriptedClock {
public:
    explicit ScriptedClock(std::vector<uint64_t> times) : times_(std::move(times)) {}
    [[nodiscard]] std::function<uint64_t()> read() {
        return [this] { return times_[std::min(asked_++, times_.size() - 1)]; };
    }
    [[nodiscard]] size_t asked() const { return asked_; }

private:
    std::vector<uint64_t> times_;
    size_t asked_ = 0;
};

TEST(DiskSpeed, MeasuresAFolderOnceAndLeavesNothingBehind) {
    const TemporaryFolder folder;
    ScriptedClock clock({1000, 1200});
    DiskSpeedTester tester(clock.read());
    const std::string file = joinPath(joinPath(folder.file("new"), "deep"), "run.dat");
    EXPECT_TRUE(tester.wouldWrite(file.c_str()));
    double speed = 0.0;
    EXPECT_EQ(tester.Measure(file.c_str(), speed), 0);
    EXPECT_DOUBLE_EQ(speed, 131.072) << "25 MiB in 200 ms";
    EXPECT_THAT(listDirectory(folder.path()), IsEmpty());

    EXPECT_FALSE(tester.wouldWrite(file.c_str()));
    speed = 0.0;
    const std::string other = joinPath(parentFolder(file), "other.dat");
    EXPECT_EQ(tester.Measure(other.c_str(), speed), 0);
    EXPECT_DOUBLE_EQ(speed, 131.072);
    EXPECT_EQ(clock.asked(), 2U) << "nothing is measured the second time";
}

// A disk faster than the clock writes more, but its speed is told from the first round's size.
TEST(DiskSpeed, AClockThatStandsStillTakesAnotherRound) {
    const TemporaryFolder folder;
    ScriptedClock clock({5, 5, 5, 15});
    DiskSpeedTester tester(clock.read());
    double speed = 0.0;
    EXPECT_EQ(tester.Measure(folder.file("run.dat").c_str(), speed), 0);
    EXPECT_DOUBLE_EQ(speed, 2621.44);
    EXPECT_THAT(listDirectory(folder.path()), IsEmpty());
}

TEST(DiskSpeed, RefusalsHaveTheirCodes) {
    const TemporaryFolder folder;
    const std::string belowFile = joinPath(folder.write("file", "x"), "run.dat");
    DiskSpeedTester tester;
    double speed = 7.0;
    EXPECT_EQ(tester.Measure("run.dat", speed), -1);
    EXPECT_EQ(tester.Measure("", speed), -1);
    EXPECT_EQ(tester.Measure(belowFile.c_str(), speed), -2);
    EXPECT_EQ(tester.Measure(nullptr, speed), -3);
    tester.SetEnabled(false);
    EXPECT_EQ(tester.Measure(nullptr, speed), -6);
    EXPECT_EQ(speed, 7.0);
    EXPECT_THAT(listDirectory(folder.path()), ElementsAre("file"));
}

TEST(DiskSpeed, AFullDiskIsAnErrorAndLeavesNoFile) {
    const TemporaryFolder folder;
    const std::string path = folder.path();
    if (kPathSeparator != '/' || std::system(("mount -t tmpfs -o size=8m tmpfs " + path + " 2>&1").c_str()) != 0) {
        GTEST_SKIP() << "needs the right to mount a small tmpfs";
    }
    DiskSpeedTester tester;
    double speed = 0.0;
    EXPECT_EQ(tester.Measure(folder.file("run.dat").c_str(), speed), -5);
    EXPECT_THAT(listDirectory(path), IsEmpty());
    EXPECT_EQ(std::system(("umount " + path).c_str()), 0);
}

TEST(FileNameEditChange, LogsTheNameAndTheSpeedOfItsDisk) {
    const TemporaryFolder folder;
    const TemporaryFolder logFolder;
    ScriptedClock clock({0, 100});
    DiskSpeedTester tester(clock.read());
    int measured = 0;
    const auto count = [&measured] { ++measured; };
    const std::string name = folder.file("run.dat");

    debugLog().open(logFolder.file("name.cfg"), 1);
    const FileNameFindings good = FileNameEditChange(name, tester, count);
    const FileNameFindings again = FileNameEditChange(name, tester, count);
    tester.SetEnabled(false);
    const FileNameFindings off = FileNameEditChange(name, tester, count);
    const FileNameFindings empty = FileNameEditChange("", tester, count);
    const FileNameFindings description = FileNameEditChange(folder.file("run.txt"), tester, count);
    const FileNameFindings isFolder = FileNameEditChange(folder.path(), tester, count);
    debugLog().close();

    EXPECT_EQ(measured, 1);
    EXPECT_TRUE(good.speedKnown());
    EXPECT_DOUBLE_EQ(again.speed, 262.144);
    EXPECT_GT(good.disk.freeBytes, 0U);
    EXPECT_TRUE(off.diskKnown());
    EXPECT_FALSE(off.speedKnown());
    EXPECT_EQ(empty.problem, TextId::FileNameEmpty);
    EXPECT_EQ(description.problem, TextId::FileNameEqualsDescription);
    EXPECT_EQ(isFolder.problem, TextId::FileNameIsFolder);
    EXPECT_FALSE(isFolder.diskKnown());

    const auto line = [](const std::string& file, int code) {
        return "FileNameEditChange: File = \"" + file + "\" RezultCode = " + std::to_string(code);
    };
    const std::string log = readFile(logFolder.file("name.dbg"));
    std::string::size_type at = 0;
    for (const std::string& part :
         {line(name, 0), std::string("HDD speed: 262.144000"), line(name, 0), std::string("HDD speed: 262.144000"),
          line(name, 0), std::string("HDD speed: Check OFF"), line("", -5), line(folder.file("run.txt"), -6),
          line(folder.path(), -7)}) {
        at = log.find(part, at);
        ASSERT_NE(at, std::string::npos) << part << "\n" << log;
        at += part.size();
    }
}

TEST(DiskInfo, DescribesTheVolumeOfAFileThatIsNotThereYet) {
    const TemporaryFolder folder;
    DiskFacts facts;
    const int32_t type = DiskInfo(joinPath(folder.file("new"), "run.dat"), facts);
    EXPECT_EQ(type, facts.type);
    EXPECT_TRUE(type > 0 || (kPathSeparator == '\\' && type == -4)) << type;
    EXPECT_FALSE(facts.fileSystem.empty());
    EXPECT_GT(facts.freeBytes, 0U);
    EXPECT_EQ(facts.maximumFileSize > 0, type > 0);

    EXPECT_EQ(DiskInfo("", facts), -1);
    EXPECT_EQ(facts.maximumFileSize, 0U);
}

TEST(DiskInfo, NativeFileSystemsAreKnown) {
    VolumeInfo volume;
    if (queryVolume("/dev/shm/run.dat", volume) != VolumeStatus::Ok || volume.root != "/dev/shm/") {
        GTEST_SKIP() << "no Linux with a file system in memory at /dev/shm";
    }
    DiskFacts facts;
    EXPECT_EQ(DiskInfo("/dev/shm/run.dat", facts), 10);
    EXPECT_EQ(facts.fileSystem, "tmpfs");
    EXPECT_EQ(facts.maximumFileSize, 0x7FFFFFFFFFFFFFFFU);
    EXPECT_EQ(DiskInfo("/proc/run.dat", facts), 100) << "no name that we know";
    EXPECT_EQ(facts.fileSystem, "proc");
    EXPECT_EQ(facts.maximumFileSize, 0x7FFFFFFFFFFFFFFFU);
}

TEST(DiskInfo, FreeSpaceIsReadable) {
    languageTable().select(kLanguageEnglish);
    constexpr uint64_t kGib = 1ULL << 30U;
    struct {
        uint64_t bytes;
        const char* text;
    } const cases[] = {
        {0, "0 b"},
        {1024, "1024 b"},
        {1025, "1.0 Kb"},
        {1536, "1.5 Kb"},
        {1024 * 1024, "1024.0 Kb"},
        {3 * 1024 * 1024, "3.0 Mb"},
        {kGib + kGib / 4, "1.2 Gb"},
        {5000 * kGib, "5000.0 Gb"},
        {UINT64_MAX, "17179869184.0 Gb"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(formatFreeSpace(c.bytes), c.text);
    }
}

}  // namespace
}  // namespace tarno2::test
