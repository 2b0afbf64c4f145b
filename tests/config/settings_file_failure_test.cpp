#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <random>

#include "config/settings/config_work.h"
#include "config/settings/language_choice.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "tests/config/settings_file_fixture.h"

namespace tarno2::test {
namespace {

using testing::ElementsAre;

TEST_F(SettingsFile, AFileCutAnywhereGivesItsValuesOrTheStartValues) {
    const std::string whole = readFile(goldenFile(InterfaceLanguage::English));
    ProgramSettings start;
    start.channelCount = 10;
    const auto startValues = valuesOf(start);
    const auto goldenValues = valuesOf(goldenSettings());
    for (size_t length = 0; length <= whole.size(); ++length) {
        ProgramSettings settings = start;
        LineConfigReader file;
        file.loadText(std::string_view(whole).substr(0, length));
        readSettings(file, settings);
        const auto values = valuesOf(settings);
        for (size_t i = 0; i < values.size(); ++i) {
            const bool derived =
                values[i].starts_with("SynchroPrehistorySize") || values[i].starts_with("FrequencyList");
            ASSERT_TRUE(derived || values[i] == startValues[i] || values[i] == goldenValues[i])
                << values[i] << " at " << length;
        }
        ASSERT_LE(settings.frequencyList.size(), 2U);
    }
}

TEST_F(SettingsFile, HugeAndHostileFiles) {
    const std::string last = "\r\nTextMaxLineCount = 5\r\n";
    std::string noise(size_t{21} << 20U, '\0');
    std::mt19937 random(7);
    std::generate(noise.begin(), noise.end(), [&random] { return static_cast<char>(random()); });
    std::string oneKey;
    while (oneKey.size() < (size_t{2} << 20U)) {
        oneKey += "Base = 6\r\n";
    }
    std::string tokens = "ChannelsGain = ";
    for (int i = 0; i < 1000000; ++i) {
        tokens += i % 8 == 7 ? "2\r\n\\ " : "2 ";
    }
    const std::string longLine(1 << 20, 'a');
    const std::string files[] = {noise,
                                 oneKey,
                                 tokens,
                                 "Driver = " + longLine,
                                 longLine + " = 1",
                                 "Frequency = " + std::string(1 << 20, '9'),
                                 "//" + longLine,
                                 std::string(1 << 20, '\\'),
                                 std::string("Base = \0 1", 10)};
    for (const std::string& file : files) {
        const ProgramSettings settings = loaded(file + last);
        EXPECT_EQ(settings.textExport.maxLineCount, 5);
        EXPECT_EQ(settings.wish.frequency, ProgramSettings().wish.frequency);
    }
    EXPECT_EQ(loaded(oneKey).wish.base, 6U);
    EXPECT_EQ(loaded(tokens + "\r\n").channels[159].gain, 2);
    EXPECT_EQ(loaded(files[3] + last).wish.driver.size(), 3999U);
    for (const std::string key : {"DriverSettings", "Comment", "RecentRecordings"}) {
        std::string text = key;
        text.append(" = ").append(longLine).append(longLine).append(last);
        const ProgramSettings settings = loaded(text);
        EXPECT_EQ(settings.driverSettings.size() + settings.wish.comment.size() + settings.recentRecordings.size(),
                  2 * longLine.size())
            << key;
    }
}

TEST_F(SettingsFile, WithoutAFileNothingChanges) {
    ProgramSettings settings = goldenSettings();
    EXPECT_TRUE(LoadConfig(folder_.path(), settings).notFound());
    EXPECT_TRUE(LoadConfig(folder_.file("none"), settings).notFound());
    EXPECT_EQ(valuesOf(settings), valuesOf(goldenSettings()));
    EXPECT_EQ(savedFileName(folder_.path()), "");
    folder_.write("Tarno2.cfg", "OldFileName = a\r\nFileName = /data/run 1.dat\r\n");
    EXPECT_EQ(savedFileName(folder_.path()), "/data/run 1.dat");
}

TEST_F(SettingsFile, OnesThatCouldNotBeReadAreKept) {
    const std::string path = folder_.write("Tarno2.cfg", "Frequency = 5\r\n");
    ProgramSettings settings;
    File holder;
    ASSERT_TRUE(holder.open(path, FileMode::OpenExisting, FileAccess::Read, FileShare::None).ok());
    EXPECT_TRUE(LoadConfig(folder_.path(), settings).inUse());
    EXPECT_TRUE(holder.close().ok());
    EXPECT_EQ(settings.wish.frequency, ProgramSettings().wish.frequency);
    folder_.write("Tarno2_old1.cfg", "earlier");
    EXPECT_TRUE(WriteConfig(folder_.path(), {}, true));
    EXPECT_THAT(listDirectory(folder_.path()), ElementsAre("Tarno2.cfg", "Tarno2_old1.cfg", "Tarno2_old2.cfg"));
    EXPECT_EQ(readFile(folder_.file("Tarno2_old1.cfg")), "earlier");
    EXPECT_EQ(readFile(folder_.file("Tarno2_old2.cfg")), "Frequency = 5\r\n");
    EXPECT_TRUE(LoadConfig(folder_.path(), settings).ok());

    std::filesystem::resize_file(path, (uint64_t{64} << 20U) + 1);
    EXPECT_EQ(LoadConfig(folder_.path(), settings).code(), OsError::tooLarge().code());
    ASSERT_TRUE(removeFile(path).ok());
    EXPECT_TRUE(WriteConfig(folder_.path(), {}, true)) << "what is gone need not be kept";
}

TEST_F(SettingsFile, AFailedSaveLeavesWhatWasThere) {
    EXPECT_FALSE(WriteConfig(folder_.file("none"), {}));
    ASSERT_TRUE(createDirectory(folder_.file("Tarno2.cfg")).ok());
    folder_.write("Tarno2.cfg/inside", "kept");
    EXPECT_FALSE(WriteConfig(folder_.path(), {}));
    EXPECT_THAT(listDirectory(folder_.path()), ElementsAre("Tarno2.cfg"));
    EXPECT_EQ(readFile(folder_.file("Tarno2.cfg/inside")), "kept");
}

TEST_F(SettingsFile, AFullDiskLeavesTheOldFile) {
    const std::string folder = folder_.path();
    if (kPathSeparator != '/' || std::system(("mount -t tmpfs -o size=8k tmpfs " + folder + " 2>&1").c_str()) != 0) {
        GTEST_SKIP() << "needs the right to mount a small tmpfs";
    }
    const std::string old(4096, 'x');
    folder_.write("Tarno2.cfg", old);
    selectLanguage(InterfaceLanguage::English);
    EXPECT_FALSE(WriteConfig(folder, goldenSettings()));
    EXPECT_TRUE(readFile(folder_.file("Tarno2.cfg")) == old);
    EXPECT_THAT(listDirectory(folder), ElementsAre("Tarno2.cfg"));
    EXPECT_EQ(std::system(("umount " + folder).c_str()), 0);
}

}  // namespace
}  // namespace tarno2::test
