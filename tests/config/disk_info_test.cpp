#include "config/files/disk_info.h"

#include <gtest/gtest.h>

#include "language/language_table.h"
#include "platform/paths.h"
#include "platform/volume.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

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
