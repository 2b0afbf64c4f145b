#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "config/logs/debug_log.h"
#include "config/settings/config_work.h"
#include "config/settings/language_choice.h"
#include "config/settings/settings_table.h"
#include "platform/paths.h"
#include "tests/config/settings_file_fixture.h"

namespace tarno2::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr InterfaceLanguage kLanguages[] = {InterfaceLanguage::English, InterfaceLanguage::Russian};

TEST_F(SettingsFile, MatchesTheFilesMadeByHand) {
    for (const auto language : kLanguages) {
        selectLanguage(language);
        EXPECT_EQ(saved(goldenSettings()), readFile(goldenFile(language)));
    }
}

TEST_F(SettingsFile, LanguagesDifferInCommentsAlone) {
    ProgramSettings start;
    start.channelCount = 10;
    for (const auto language : kLanguages) {
        const auto other = kLanguages[language == InterfaceLanguage::English ? 1 : 0];
        selectLanguage(other);
        const ProgramSettings settings = loaded(readFile(goldenFile(language)), start);
        EXPECT_EQ(valuesOf(settings), valuesOf(goldenSettings()));
        EXPECT_THAT(settings.frequencyList, ElementsAre(1000.0, 44100.5));
        EXPECT_TRUE(settings.wish.synchro.startAnalogEnabled && settings.wish.synchro.writeAnalogEnabled &&
                    !settings.wish.synchro.stopAnalogEnabled && settings.wish.synchro.portStartEnabled &&
                    !settings.wish.synchro.portWriteEnabled && settings.wish.synchro.portStopEnabled);
        EXPECT_EQ(settings.wish.synchroSizes.history, 3500);
        EXPECT_EQ(saved(settings), readFile(goldenFile(other)));
    }
}

TEST_F(SettingsFile, KeysAndCommentsAreNeighboursInBothLanguages) {
    std::set<std::string> keys;
    for (const SettingRow& row : settingsTable()) {
        EXPECT_TRUE(keys.insert(row.key()).second) << row.key();
        for (const auto language : kLanguages) {
            selectLanguage(language);
            EXPECT_NE(text(row.comment), "") << row.key();
            if (row.literalKey == nullptr) {
                EXPECT_EQ(languageTable().load(static_cast<int32_t>(row.comment) - 1), row.key());
            }
        }
    }
}

TEST_F(SettingsFile, StartValuesSurviveARoundTrip) {
    selectLanguage(InterfaceLanguage::English);
    const std::string text = saved({});
    EXPECT_EQ(valuesOf(loaded(text)), valuesOf({}));
    EXPECT_THAT(text, Not(HasSubstr("\nFrequencyList = "))) << "a list without elements leaves no entry";
    ProgramSettings third;
    third.frequencyList = {100000.0 / 3.0};
    EXPECT_THAT(saved(third), HasSubstr("\r\nFrequencyList = 33333.333333 \r\n"));
    EXPECT_THAT(loaded(saved(third)).frequencyList, ElementsAre(double{100000.0F / 3.0F})) << "in single precision";
}

// Each value is invalid for its key: it leaves the start value, and what follows is read all the same.
TEST_F(SettingsFile, BadValuesLeaveTheStartValue) {
    const char* const lines[] = {"Language = 2",
                                 "Language = -1",
                                 "Base = 99999999999",
                                 "DrqNumber = -1",
                                 "Frequency = nan",
                                 "Frequency = -5",
                                 "Frequency = 1e999",
                                 "Frequency = inf",
                                 "DiffMode = 256",
                                 "DiffMode = yes",
                                 "StopMode = 3",
                                 "AxisXValue = -inf",
                                 "AxisYMode = -2",
                                 "CutModeValue = 99999999999",
                                 "CutModeValue = 0",
                                 "MainFormPos = 2000000000 x -999999",
                                 "ChannelColor = 0x1000000 -1",
                                 "ActiveChannel = 2",
                                 "ChannelsGain = 0 -1",
                                 "FrequencyListCount = -1",
                                 "FrequencyListCount = 1001",
                                 "FrequencyListCount = 3\r\nFrequencyList = 0 nan -1",
                                 "AnalyzeMode = 2",
                                 "AnalyzeAnalogStartMode = 3",
                                 "AnalyzeAnalogStartChannel = 160",
                                 "AnalyzePortStartBit = 16",
                                 "SynchroAllSize = 0",
                                 "SynchroPrehistorySize = 1001",
                                 "DigitalZeroLevel = 1001",
                                 "TextFirstColumnMode = 4",
                                 "TextColumnDivider = 0",
                                 "TextColumnDividerCount = 256"};
    std::vector<std::string> expected = valuesOf({});
    *std::find(expected.begin(), expected.end(), "TextMaxLineCount = 0") = "TextMaxLineCount = 5";
    for (const char* const line : lines) {
        EXPECT_EQ(valuesOf(loaded(std::string(line) + "\r\n\r\nTextMaxLineCount = 5\r\n")), expected) << line;
    }
}

TEST_F(SettingsFile, KeysCountAtTheStartOfALineOnly) {
    const ProgramSettings s = loaded(
        "SynchroAnalyzeMode = 2\r\nMyBase = 9\r\n//Base = 8\r\nFileName = x Frequency = 7\r\nAnalyzeMode = 1\r\n"
        "Base = 3\r\n");
    EXPECT_EQ(s.wish.synchro.SynchroAnalyzeMode, 2);
    EXPECT_TRUE(s.wish.synchro.analysisOnPort);
    EXPECT_EQ(s.wish.base, 3U);
    EXPECT_EQ(s.wish.frequency, ProgramSettings().wish.frequency);
}

TEST_F(SettingsFile, ListsAreAsLongAsTheBoardHasChannels) {
    ProgramSettings start;
    start.channelCount = 3;
    start.channels[1].color = 5;
    start.channels[2].gain = 7;
    const ProgramSettings s =
        loaded("ChannelColor = 0x10\r\nChannelsGain = 2 2 2 2\r\nActiveChannel = 0 1 x\r\nBase = 4\r\n", start);
    EXPECT_EQ(s.channels[0].color, 0x10);
    EXPECT_EQ(s.channels[1].color, 5) << "the list is shorter";
    EXPECT_EQ(s.channels[2].gain, 2);
    EXPECT_EQ(s.channels[3].gain, 1) << "the board lacks this channel";
    EXPECT_FALSE(s.channels[0].active);
    EXPECT_TRUE(s.channels[1].active);
    EXPECT_EQ(s.wish.base, 4);
}

TEST_F(SettingsFile, BuffersAreDividedWhateverTheOrder) {
    struct Case {
        const char* text;
        int32_t prehistory;
        int32_t history;
    };
    const Case cases[] = {{"SynchroAllSize = 100\r\nSynchroPrehistorySize = 30\r\n", 30, 70},
                          {"SynchroAllSize = 100\r\nSynchroPrehistorySize = 100\r\n", 100, 0},
                          {"SynchroAllSize = 100\r\nSynchroPrehistorySize = 101\r\n", 40, 60},
                          {"SynchroPrehistorySize = 10\r\n", 10, 90},
                          {"SynchroAllSize = 20\r\n", 20, 0}};
    for (const auto& [text, prehistory, history] : cases) {
        ProgramSettings start;
        start.wish.synchroSizes = {40, 60};
        const SynchroSizes sizes = loaded(text, start).wish.synchroSizes;
        EXPECT_EQ(sizes.prehistory, prehistory) << text;
        EXPECT_EQ(sizes.history, history) << text;
    }
}

TEST_F(SettingsFile, ATextThatNoLineHoldsIsLeftOut) {
    ProgramSettings settings;
    settings.wish.driver = "good";
    settings.wish.fileName = "a\r\nDriver = bad";
    const ProgramSettings back = loaded(saved(settings));
    EXPECT_EQ(back.wish.driver, "good");
    EXPECT_EQ(back.wish.fileName, "");
}

TEST_F(SettingsFile, WhatDriversAreToldIsKeptWhole) {
    ProgramSettings settings;
    settings.driverSettings =
        "Network/Address=tcp://127.0.0.1:5000;Gone/Divider=;;;Replay/File=" + std::string(20000, 'x') +
        ";Serial/Divider= ;";
    const std::string text = saved(settings);
    EXPECT_THAT(text, testing::EndsWith("\r\nDriverSettings = " + settings.driverSettings + "\r\n\r\n"));
    EXPECT_EQ(loaded(text).driverSettings, settings.driverSettings);
}

TEST_F(SettingsFile, LabelsOfChannelsAreKeptToTheLastLetterAndDigit) {
    ProgramSettings settings;
    settings.channelCount = 12;
    settings.channels[1].label = {"inlet // \xD0\xB2\xD1\x85\xD0\xBE\xD0\xB4 1",
                                  "\xC2\xB0"
                                  "C",
                                  -1.0 / 3.0, 1e-7};
    settings.channels[11].label = {"last", "", 5e-324, -1.7976931348623157e308};
    settings.wish.lineNames = {"", "", "gate = open"};
    ProgramSettings read = loaded(saved(settings));
    EXPECT_EQ(valuesOf(read)[0], valuesOf(settings)[0]);
    for (size_t i = 0; i < read.channels.size(); ++i) {
        EXPECT_EQ(read.channels[i].label, settings.channels[i].label) << i;
    }
    EXPECT_EQ(read.wish.lineNames, settings.wish.lineNames);

    // What can't be a label leaves the start value; what nearly is one becomes it. A file by hand may be of the page.
    read = loaded(
        "ChannelsName =  a;\xE2\xF5\xEE\xE4 ;\x01 c\x02 \nChannelsFactor = 0 2 nan 1e999 x 1e400 -4\n"
        "ChannelsOffset = inf -0.5\nLinesName = ;;\n");
    EXPECT_EQ(read.channels[0].label, (ChannelLabel{"a", "", 1.0, 0.0}));
    EXPECT_EQ(read.channels[1].label, (ChannelLabel{"\xD0\xB2\xD1\x85\xD0\xBE\xD0\xB4", "", 2.0, -0.5}));
    EXPECT_EQ(read.channels[2].label, (ChannelLabel{"c", "", 1.0, 0.0}));
    EXPECT_EQ(read.channels[6].label.factor, -4.0);
    EXPECT_THAT(saved(ProgramSettings()),
                Not(AnyOf(HasSubstr("ChannelsName"), HasSubstr("ChannelsFactor"), HasSubstr("LinesName"))));
}

TEST_F(SettingsFile, DebugModeSwitchesTheLogOn) {
    const ScopedEnvironment home("TARNO2_HOME", folder_.path());
    folder_.write("Tarno2.cfg", "DebugMode = 0\r\n");
    ProgramSettings settings;
    EXPECT_TRUE(LoadConfig(programDirectory(), settings).ok());
    EXPECT_FALSE(fileExists(folder_.file("Tarno2.dbg")));
    folder_.write("Tarno2.cfg", "Driver = My board\r\nLanguage = 0\r\nDebugMode = 1\r\n");
    EXPECT_TRUE(LoadConfig(programDirectory(), settings).ok());
    selectLanguage(settings.language);
    EXPECT_EQ(languageTable().selected(), kLanguageRussian);
    switchLanguage(InterfaceLanguage::English);
    EXPECT_EQ(languageTable().selected(), kLanguageEnglish);
    switchLanguage(InterfaceLanguage::Russian);
    EXPECT_TRUE(WriteConfig(programDirectory(), settings));
    debugLog().close();

    std::vector<std::string> messages;
    const std::string log = readFile(folder_.file("Tarno2.dbg"));
    for (size_t at = log.find(" --- "); at != std::string::npos; at = log.find(" --- ", at + 1)) {
        messages.push_back(log.substr(at + 5, log.find("\r\n", at) - at - 5));
    }
    EXPECT_THAT(messages,
                ElementsAre(HasSubstr("Debug start Tarno2"), "Config language = 0", "Config driver = My board",
                            "English", "Russian", "WriteConfig not console", "Debug stop..."));
    EXPECT_THAT(readFile(folder_.file("Tarno2.cfg")), Not(HasSubstr("DebugMode"))) << "it is never written";
}

}  // namespace
}  // namespace tarno2::test
