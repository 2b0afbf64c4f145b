// What the programs take from the settings file and from the user's locale.

#include <filesystem>
#include <gmock/gmock.h>

#include "platform/paths.h"
#include "tests/apps/recording_rig.h"

namespace tarno2::test {
namespace {

using testing::HasSubstr;

TEST(ProgramLanguage, IsThatOfTheLocale) {
    if (kPathSeparator != '/') {
        GTEST_SKIP() << "the locale of a Windows program is not told by its environment";
    }
    const RecordingRig rig;
    const std::pair<const char*, const char*> cases[] = {{"ru_RU.UTF-8", "Использование программы: \n"},
                                                         {"en_GB.UTF-8", "Usage program: \n"},
                                                         {"de_DE.UTF-8", "Usage program: \n"}};
    for (const auto& [locale, usage] : cases) {
        const ScopedEnvironment environment("LC_ALL", locale);
        EXPECT_THAT(rig.run("Tarno2", {"/?"}), HasSubstr(usage));
    }
    const ScopedEnvironment russian("LC_ALL", "ru_RU.UTF-8");
    Wish wish;
    wish.bytes = 4000;
    wish.frequency = 1000.5;
    rig.record(wish);
    EXPECT_THAT(rig.autoLog(), HasSubstr("Frequency = 1000.500000\r\n")) << "what the log itself says stays";
    EXPECT_EQ(rig.size("run.dat"), 4000U);
}

TEST(SavedName, GivesTheFolderOfGeneratedNames) {
    const RecordingRig rig;
    const std::string last = joinPath(joinPath(rig.path(), "last"), "old.dat");
    rig.folder().write("Tarno2.cfg", "MyFileName = x\r\n//File name\r\nFileName = " + last + "\r\n");
    Wish wish;
    wish.fileName.clear();
    wish.bytes = 4000;
    rig.record(wish);
    size_t recordings = 0;
    for (const auto& entry : std::filesystem::directory_iterator(rig.file("last"))) {
        recordings += entry.path().extension() == ".dat" ? 1 : 0;
    }
    EXPECT_EQ(recordings, 1U) << rig.autoLog();
    EXPECT_THAT(readFile(rig.file("Tarno2.cfg")), HasSubstr("MyFileName")) << "console mode never writes it";
}

}  // namespace
}  // namespace tarno2::test
