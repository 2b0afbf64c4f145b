#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "config/logs/console_log.h"
#include "config/settings/auto_settings.h"
#include "config/settings/settings_file.h"
#include "config/settings/settings_table.h"
#include "platform/paths.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

/// What these keys ask beside the ones that every file needs; `log` gets what the console log holds after it.
std::optional<RecordingWish> read(const std::string& keys, std::string& log) {
    const TemporaryFolder folder;
    consoleLog().open(folder.path());
    auto wish = readAutoSettings(
        "DriverName = \"Simulator\"\r\nBaseNumber = 1\r\nFileName = \"run.dat\"\r\nChannelCount = 1\r\n"
        "ChannelsNumber = 0\r\nChannelsGain = 1\r\nFrequency = 1000\r\nMeasureFileMode = 0\r\nBoardMode = 0\r\n" +
        keys);
    consoleLog().close();
    log = readFile(folder.file("AutoLog.txt"));
    return wish;
}

TEST(AutoSynchro, IsOffWhenTheFileSaysNothing) {
    std::string log;
    const auto wish = read("", log);
    ASSERT_TRUE(wish);
    EXPECT_EQ(log, "");
    EXPECT_EQ(wish->synchro.SynchroAnalyzeMode, 0);
    EXPECT_EQ(wish->synchro.AnalyzeAnalogStartMode, 2);
    EXPECT_EQ(wish->synchro.SynchroAnalogMode, 2);
    EXPECT_EQ(wish->synchro.SynchroPortMode, 2);
    EXPECT_FALSE(wish->synchro.startAnalogEnabled || wish->synchro.portStopEnabled);
    EXPECT_EQ(wish->synchroSizes.prehistory + wish->synchroSizes.history, 0);
    EXPECT_FALSE(wish->useDigitalPort);
}

TEST(AutoSynchro, TakesEveryKeyAsTheSettingsFileHasIt) {
    LineConfigReader file;
    ASSERT_TRUE(file.Open(joinPath(TARNO2_GOLDEN, "english.cfg"), false));
    ProgramSettings expected;
    readSettings(file, expected);
    std::vector<const SettingRow*> rows = autoSettingsRows();
    std::erase_if(rows, [](const SettingRow* row) { return row->rule.turn < AutoTurn::SynchroNumbers; });
    EXPECT_EQ(rows.size(), 31U);
    std::string keys;
    for (const SettingRow* row : rows) {
        std::string value;
        EXPECT_TRUE(file.GetStringCopy(row->key().c_str(), value)) << row->key();
        keys += row->key() + " = " + value + "\r\n";
    }
    std::string log;
    const auto wish = read(keys, log);
    ASSERT_TRUE(wish) << log;
    ProgramSettings got;
    got.wish = *wish;
    for (const SettingRow* row : rows) {
        if (const auto* integer = std::get_if<IntegerSetting>(&row->place)) {
            EXPECT_EQ(integer->get(got), integer->get(expected)) << row->key();
        } else {
            EXPECT_EQ(std::get<RealSetting>(row->place).at(got), std::get<RealSetting>(row->place).at(expected));
        }
    }
}

TEST(AutoSynchro, WrongValuesEndTheLoad) {
    for (const std::string line :
         {"SynchroAnalyzeMode = 3", "AnalyzeMode = 2", "AnalyzeAnalogStartMode = -1", "AnalyzeAnalogStopUnit = 3",
          "AnalyzeAnalogWriteChannel = -1", "AnalyzeAnalogStartValue = nan", "SynchroAnalogValue = 1e999",
          "AnalyzePortStopBit = 16", "SynchroPortMode = x", "SynchroPortBit =", "SynchroAllSize = -5",
          "SynchroPrehistorySize = 1", "SynchroMode = 99999999999", "StopAfterTrigged = 2", "UseDigitalPort = yes"}) {
        std::string log;
        EXPECT_FALSE(read(line + "\r\n", log)) << line;
        EXPECT_EQ(log, "Value " + line.substr(0, line.find(' ')) + " invalid... Program aborted\r\n");
    }
}

}  // namespace
}  // namespace tarno2::test
