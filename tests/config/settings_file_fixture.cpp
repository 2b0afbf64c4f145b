#include "tests/config/settings_file_fixture.h"

#include <variant>

#include "config/logs/debug_log.h"
#include "config/settings/settings_table.h"
#include "language/language_table.h"
#include "platform/c_locale.h"
#include "platform/paths.h"

namespace tarno2::test {

std::string goldenFile(InterfaceLanguage language) {
    return joinPath(TARNO2_GOLDEN, language == InterfaceLanguage::Russian ? "russian.cfg" : "english.cfg");
}

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
    s.wish.useDigitalPort = s.wish.hardwareAverage = s.pixelsMode = true;
    s.showSignalMode = 1;
    for (size_t i = 0; i < s.digitalLines.size(); ++i) {
        const auto line = static_cast<int32_t>(i);
        s.digitalLines[i] = {-1000 + 50 * line, 10 * line, 1000 * line};
    }
    s.textExport = {3, 1, 4, 5, 1, 1, ',', 2, 65536};
    return s;
}

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

SettingsFile::~SettingsFile() {
    debugLog().close();
    languageTable().select(before_);
}

ProgramSettings SettingsFile::loaded(const std::string& text, ProgramSettings settings) {
    folder_.write("Tarno2.cfg", text);
    EXPECT_TRUE(LoadConfig(folder_.path(), settings).ok());
    return settings;
}

std::string SettingsFile::saved(const ProgramSettings& settings) const {
    EXPECT_TRUE(WriteConfig(folder_.path(), settings));
    EXPECT_THAT(listDirectory(folder_.path()), testing::ElementsAre("Tarno2.cfg"));
    return readFile(folder_.file("Tarno2.cfg"));
}

}  // namespace tarno2::test
