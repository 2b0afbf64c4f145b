#include "config/settings/setup_file.h"

#include <gtest/gtest.h>

#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

TEST(SetupFile, LeavesOtherDriversAndTheKeptFrequenciesAsTheyAre) {
    const TemporaryFolder folder;
    const std::string path = setupPath(folder.path(), "one");
    ProgramSettings saved;
    saved.wish.driver = "A";
    saved.driverSettings = "A/Loop=1;B/File=theirs.wav";
    saved.frequencyList = {5.0};
    ASSERT_TRUE(writeSetup(path, saved));
    EXPECT_EQ(readFile(path).find("theirs"), std::string::npos);

    ProgramSettings here;
    here.wish.driver = "B";
    here.driverSettings = "B/File=mine.wav;A/Speed=2";
    here.frequencyList = {7.0, 8.0};
    OsError why;
    ASSERT_EQ(readSetup(path, here, why), SetupRead::Done);
    EXPECT_EQ(here.wish.driver, "A");
    EXPECT_EQ(here.driverSettings, "B/File=mine.wav;A/Loop=1");
    EXPECT_EQ(here.frequencyList, (std::vector<double>{7.0, 8.0}));
}

TEST(SetupFile, TakesOnlyNamesThatEverySystemTakes) {
    for (const char* name : {"a", "Pressure 2.5 bar", "console", "com", "com0", "lpt10"}) {
        EXPECT_TRUE(isSetupName(name)) << name;
    }
    for (const char* name : {"", ".a", "a/b", "a\n", "a.", "a ", "con", "Nul", "COM1", "lpt9.old", "aux .x"}) {
        EXPECT_FALSE(isSetupName(name)) << name;
    }
}

}  // namespace
}  // namespace tarno2::test
