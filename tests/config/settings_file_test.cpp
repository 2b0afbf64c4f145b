#include "config/settings/settings_file.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <gmock/gmock.h>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "config/logs/debug_log.h"
#include "config/settings/config_work.h"
#include "config/settings/language_choice.h"
#include "config/settings/settings_table.h"
#include "language/language_table.h"
#include "platform/c_locale.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "tests/config/masked.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr InterfaceLanguage kLanguages[] = {InterfaceLanguage::English, InterfaceLanguage::Russian};

std::string goldenFile(InterfaceLanguage language) {
    return joinPath(TARNO2_GOLDEN, language == InterfaceLanguage::Russian ? "russian.cfg" : "english.cfg");
}

/// What the golden files hold.
ProgramSettings goldenSettings() {
    ProgramSettings s;
    s.language = InterfaceLanguage::Russian;
    s.wish.driver = "Simulator";
    s.wish.base = 2;
    s.drqNumber = 5;
    s.wish.frequency = 48000.5;
    s.wish.boardMode = kBoardDifferential | kBoardPacketMode;
    s.checkDiskSpeed = false;
    s.wish.packetFrequency = 250.25;
    s.wish.fileName = "C:\\Data of today\\run.dat";
    s.wish.stopRule = StopRule::Time;
    s.wish.cycleStart = true;
    s.axisFontName = "Courier New";
    s.axisFontSize = 11;
    s.stopValue = 12.5;
    s.stopPower = 2;
    s.stayOnTop = true;
    s.followToData = 2;
    s.axisXValue = 0.5;
    s.axisXUnit = 4;
    s.axisYValue = -1.25;
    s.axisYMode = 2;
    s.axisYAutoMode = false;
    s.wish.writeBufferMegabytes = 128;
    s.wish.longestWriteWaitMs = 500;
    s.wish.cut = true;
    s.wish.cutMegabytes = 512;
    s.showSettingMember = 3;
    s.extendedChannelMode = true;
    s.mainFormPos = {-8, 10, 1024, 768};
    s.formVisible = 2;
    s.showFormPos = {5, 6, 7, 8};
    s.showFormVisible = false;
    s.channelCount = 10;
    const int32_t colors[] = {0, 1, 0xff, 0xff00, 0xff0000, 0xffffff, 0x123456, 7, 8, 0xabcdef};
    const int32_t gains[] = {1, 2, 5, 10, 1, 2, 5, 10, 100, 1000};
    for (size_t i = 0; i < 10; ++i) {
        s.channels[i] = {colors[i], i % 2 == 0 || i == 9, gains[i], {}};
    }
    s.frequencyList = {1000.0, 44100.5};
    SynchroSettings& synchro = s.wish.synchro;
    synchro.SynchroAnalyzeMode = 2;
    synchro.analysisOnAnalog = false;
    synchro.analysisOnPort = true;
    synchro.AnalyzeAnalogStartMode = 0;
    synchro.AnalyzeAnalogWriteMode = 1;
    synchro.AnalyzeAnalogStopMode = 2;
    synchro.AnalyzeAnalogStartChannel = 1;
    synchro.AnalyzeAnalogWriteChannel = 2;
    synchro.AnalyzeAnalogStopChannel = 3;
    synchro.AnalyzeAnalogStartValue = 0.25;
    synchro.AnalyzeAnalogWriteValue = -100.0;
    synchro.AnalyzeAnalogStopValue = 2500.0;
    synchro.AnalyzeAnalogWriteUnit = 1;
    synchro.AnalyzeAnalogStopUnit = 2;
    synchro.AnalyzePortStartMode = 0;
    synchro.AnalyzePortStopMode = 1;
    synchro.AnalyzePortStartBit = 15;
    synchro.AnalyzePortWriteBit = 7;
    synchro.AnalyzePortStopBit = 8;
    synchro.synchroOnAnalog = false;
    synchro.synchroOnPort = true;
    synchro.SynchroAnalogMode = 1;
    synchro.SynchroAnalogChannelNumber = 4;
    synchro.SynchroAnalogValue = 0.125;
    synchro.SynchroAnalogUnit = 1;
    synchro.SynchroPortMode = 2;
    synchro.SynchroPortBit = 3;
    synchro.StopAfterTrigged = true;
    s.wish.synchroSizes = {1500, 3500};
    s.wish.useDigitalPort = s.hardwareAverage = s.pixelsMode = true;
    s.showSignalMode = 1;
    for (size_t i = 0; i < s.digitalLines.size(); ++i) {
        const auto line = static_cast<int32_t>(i);
        s.digitalLines[i] = {-1000 + 50 * line, 10 * line, 1000 * line};
    }
    s.textExport = {3, 1, 4, 5, 1, 1, ',', 2, 65536};
    return s;
}

/// Every value of the settings, a list's elements one by one.
std::vector<std::string> valuesOf(ProgramSettings settings) {
    struct Lister {
        void operator()(const IntegerSetting& setting) { add(std::to_string(setting.get(settings))); }
        void operator()(const RealSetting& setting) { add(formatText("%.17g", setting.at(settings))); }
        void operator()(const TextSetting& setting) { add(setting.at(settings)); }
        void operator()(const IntegerListSetting& setting) {
            for (size_t i = 0; i < setting.count(settings); ++i) {
                add(std::to_string(setting.get(settings, i)));
            }
        }
        void operator()(const ExactListSetting& setting) {
            for (size_t i = 0; i < setting.count(settings); ++i) {
                add(formatText("%.17g", setting.at(settings, i)));
            }
        }
        void operator()(const NameListSetting& setting) {
            for (size_t i = 0; i < setting.most(settings); ++i) {
                add(setting.get(settings, i));
            }
        }
        void operator()(const RealListSetting& /*setting*/) {}  // its length may change; see FrequencyListCount
        void add(const std::string& value) { values.push_back(key + " = " + value); }

        ProgramSettings& settings;
        std::string key;
        std::vector<std::string> values;
    };
    std::vector<std::string> values;
    for (const SettingRow& row : settingsTable()) {
        Lister lister{settings, row.key(), {}};
        std::visit(lister, row.place);
        values.insert(values.end(), lister.values.begin(), lister.values.end());
    }
    return values;
}

class SettingsFile : public testing::Test {
protected:
    ~SettingsFile() override {
        debugLog().close();
        languageTable().select(before_);
    }
    ProgramSettings loaded(const std::string& text, ProgramSettings settings = {}) {
        folder_.write("Tarno2.cfg", text);
        EXPECT_TRUE(LoadConfig(folder_.path(), settings).ok());
        return settings;
    }
    [[nodiscard]] std::string saved(const ProgramSettings& settings) const {
        EXPECT_TRUE(WriteConfig(folder_.path(), settings));
        EXPECT_THAT(listDirectory(folder_.path()), ElementsAre("Tarno2.cfg"));
        return readFile(folder_.file("Tarno2.cfg"));
    }
    TemporaryFolder folder_;

private:
    uint16_t before_ = languageTable().selected();
};

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
    EXPECT_EQ(loaded(files[3] + last).wish.driver.size(), CConfigWork::kTextRoom - 1);
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

    std::filesystem::resize_file(path, CConfigWork::kMaximumSize + 1);
    EXPECT_EQ(LoadConfig(folder_.path(), settings).code(), OsError::tooLarge().code());
    ASSERT_TRUE(removeFile(path).ok());
    EXPECT_TRUE(WriteConfig(folder_.path(), {}, true)) << "what is gone need not be kept";
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
