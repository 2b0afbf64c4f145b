#include "config/settings/settings_table.h"

#include <algorithm>
#include <array>
#include <limits>
#include <type_traits>
#include <vector>

#include "language/language_table.h"

namespace tarno2 {

namespace {

using Settings = ProgramSettings;
using Wish = RecordingWish;

constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
constexpr double kAnyReal = std::numeric_limits<double>::lowest();
constexpr int32_t kLargestColor = 0xFFFFFF;
constexpr int32_t kLargestFont = 200;
constexpr int32_t kLastChannel = kMaximumChannelCount - 1;
constexpr int32_t kLastPortBit = 15;
constexpr int32_t kMostFrequencies = 1000;
constexpr int32_t kLargestBuffer = 0x500000;  // frames
constexpr int32_t kFarthestPixel = 100000;

/// The member that a path of members leads to: `member<&A::b, &B::c>(a)` is a.b.c.
template <auto... Path>
constexpr auto& member(Settings& settings) {
    return (settings.*....*Path);
}

template <auto... Path>
constexpr const auto& member(const Settings& settings) {
    return (settings.*....*Path);
}

template <auto... Path>
constexpr IntegerSetting integer(int32_t lowest, int32_t highest) {
    return {lowest, highest, false,
            [](const Settings& settings) { return static_cast<int32_t>(member<Path...>(settings)); },
            [](Settings& settings, int32_t value) {
                auto& place = member<Path...>(settings);
                place = static_cast<std::remove_reference_t<decltype(place)>>(value);
            }};
}

template <auto... Path>
constexpr IntegerSetting byte(int32_t lowest, int32_t highest) {
    IntegerSetting setting = integer<Path...>(lowest, highest);
    setting.byte = true;
    return setting;
}

/// An integer that few operators change; it starts with its lowest value.
template <auto... Path>
constexpr IntegerSetting rareInteger(int32_t lowest, int32_t highest) {
    IntegerSetting setting = integer<Path...>(lowest, highest);
    setting.rare = true;
    return setting;
}

template <auto... Path>
constexpr IntegerSetting flag() {
    return byte<Path...>(0, 1);
}

template <auto... Path>
constexpr RealSetting real(double lowest) {
    return {lowest, [](Settings& settings) -> double& { return member<Path...>(settings); }};
}

/// A flag for one of the board's modes.
template <BoardModeBits Mode>
constexpr IntegerSetting boardMode() {
    return {0, 1, true, [](const Settings& settings) { return settings.wish.hasMode(Mode) ? 1 : 0; },
            [](Settings& settings, int32_t value) { settings.wish.setMode(Mode, value != 0); }};
}

/// A real that is 0 for most operators.
template <auto... Path>
constexpr RealSetting rareReal() {
    RealSetting setting = real<Path...>(kAnyReal);
    setting.rare = true;
    return setting;
}

template <auto... Path>
constexpr TextSetting text() {
    return {[](Settings& settings) -> std::string& { return member<Path...>(settings); }};
}

template <auto... Path>
constexpr RealListSetting realList() {
    return {[](Settings& settings) -> std::vector<double>& { return member<Path...>(settings); }};
}

/// The mode of a condition; 2 switches it off.
template <auto Mode, auto Enabled>
constexpr IntegerSetting condition() {
    return {0, 2, false, [](const Settings& settings) { return settings.wish.synchro.*Mode; },
            [](Settings& settings, int32_t value) {
                settings.wish.synchro.*Mode = value;
                settings.wish.synchro.*Enabled = value != 2;
            }};
}

/// The source of conditions: 0 an analog channel, 1 the port.
template <auto OnAnalog, auto OnPort>
constexpr IntegerSetting source() {
    return {0, 1, false, [](const Settings& settings) { return settings.wish.synchro.*OnPort ? 1 : 0; },
            [](Settings& settings, int32_t value) {
                settings.wish.synchro.*OnAnalog = value == 0;
                settings.wish.synchro.*OnPort = value == 1;
            }};
}

void divideBuffer(SynchroSizes& sizes, int32_t all, int32_t prehistory) {
    sizes.prehistory = std::min(prehistory, all);
    sizes.history = all - sizes.prehistory;
}

int32_t bufferSize(const Settings& settings) {
    return settings.wish.synchroSizes.prehistory + settings.wish.synchroSizes.history;
}

constexpr IntegerSetting synchroAllSize() {
    return {1, kLargestBuffer, false, bufferSize, [](Settings& settings, int32_t value) {
                divideBuffer(settings.wish.synchroSizes, value, settings.wish.synchroSizes.prehistory);
            }};
}

constexpr IntegerSetting synchroPrehistorySize() {
    return {0, kLargestBuffer, false, [](const Settings& settings) { return settings.wish.synchroSizes.prehistory; },
            [](Settings& settings, int32_t value) {
                const int32_t all = bufferSize(settings);
                if (value <= all) {
                    divideBuffer(settings.wish.synchroSizes, all, value);
                }
            }};
}

/// Makes room for the frequencies that the next entry gives.
constexpr IntegerSetting frequencyListCount() {
    return {0, kMostFrequencies, false,
            [](const Settings& settings) { return static_cast<int32_t>(settings.frequencyList.size()); },
            [](Settings& settings, int32_t value) { settings.frequencyList.resize(static_cast<size_t>(value)); }};
}

constexpr std::array kSides = {&WindowPlace::left, &WindowPlace::top, &WindowPlace::width, &WindowPlace::height};

template <auto Place>
constexpr IntegerListSetting place() {
    return {-kFarthestPixel,
            kFarthestPixel,
            false,
            false,
            [](const Settings&) { return kSides.size(); },
            [](const Settings& settings, size_t i) { return settings.*Place.*kSides[i]; },
            [](Settings& settings, size_t i, int32_t value) { settings.*Place.*kSides[i] = value; }};
}

size_t channelCount(const Settings& settings) {
    return static_cast<size_t>(std::clamp(settings.channelCount, 0, kMaximumChannelCount));
}

template <auto Column>
constexpr IntegerListSetting channelColumn(int32_t lowest, int32_t highest, bool byte, bool hex) {
    return {lowest,
            highest,
            byte,
            hex,
            channelCount,
            [](const Settings& settings, size_t i) { return static_cast<int32_t>(settings.channels[i].*Column); },
            [](Settings& settings, size_t i, int32_t value) {
                auto& cell = settings.channels[i].*Column;
                cell = static_cast<std::remove_reference_t<decltype(cell)>>(value);
            }};
}

template <auto Column>
constexpr IntegerListSetting digitalColumn(int32_t lowest, int32_t highest) {
    return {lowest,
            highest,
            false,
            false,
            [](const Settings& settings) { return settings.digitalLines.size(); },
            [](const Settings& settings, size_t i) { return settings.digitalLines[i].*Column; },
            [](Settings& settings, size_t i, int32_t value) { settings.digitalLines[i].*Column = value; }};
}

// An entry added one day stands after the last one, and its key is no tail of an earlier key.
constexpr SettingRow kTable[] = {
    {TextId::CommentLanguage, nullptr, integer<&Settings::language>(0, 1)},
    {TextId::CommentDriver, nullptr, text<&Settings::wish, &Wish::driver>()},
    {TextId::CommentBase, nullptr, integer<&Settings::wish, &Wish::base>(0, kMost)},
    {TextId::CommentDrqNumber, nullptr, integer<&Settings::drqNumber>(0, kMost)},
    {TextId::CommentFrequency, nullptr, real<&Settings::wish, &Wish::frequency>(0.0)},
    {TextId::CommentDiffMode, nullptr, boardMode<kBoardDifferential>()},
    {TextId::CommentExtStartMode, nullptr, boardMode<kBoardExternalStart>()},
    {TextId::CommentHDDTestSpeed, nullptr, flag<&Settings::checkDiskSpeed>()},
    {TextId::CommentPacketMode, nullptr, boardMode<kBoardPacketMode>()},
    {TextId::CommentExtFreqMode, nullptr, boardMode<kBoardExternalClock>()},
    {TextId::CommentPacketFrequency, nullptr, real<&Settings::wish, &Wish::packetFrequency>(0.0)},
    {TextId::CommentFileName, nullptr, text<&Settings::wish, &Wish::fileName>()},
    {TextId::CommentStopMode, nullptr, integer<&Settings::wish, &Wish::stopRule>(0, 2)},
    {TextId::CommentCycleStart, nullptr, flag<&Settings::wish, &Wish::cycleStart>()},
    {TextId::CommentAutoStartOnRun, nullptr, flag<&Settings::autoStartOnRun>()},
    {TextId::CommentAxisFontName, "AxisFontName", text<&Settings::axisFontName>()},
    {TextId::CommentAxisFontSize, "AxisFontSize", integer<&Settings::axisFontSize>(1, kLargestFont)},
    {TextId::CommentStopValue, nullptr, real<&Settings::stopValue>(0.0)},
    {TextId::CommentStopPower, nullptr, integer<&Settings::stopPower>(0, 2)},
    {TextId::CommentStayOnTop, nullptr, flag<&Settings::stayOnTop>()},
    {TextId::CommentFollowToData, nullptr, integer<&Settings::followToData>(0, 2)},
    {TextId::CommentAxisXValue, nullptr, real<&Settings::axisXValue>(kAnyReal)},
    {TextId::CommentAxisXUnit, nullptr, integer<&Settings::axisXUnit>(0, 5)},
    {TextId::CommentAxisYValue, nullptr, real<&Settings::axisYValue>(kAnyReal)},
    {TextId::CommentAxisYMode, nullptr, integer<&Settings::axisYMode>(-1, 3)},
    {TextId::CommentAxisYAutoMode, nullptr, flag<&Settings::axisYAutoMode>()},
    {TextId::CommentCutModeActive, nullptr, flag<&Settings::wish, &Wish::cut>()},
    {TextId::CommentAutoModeCut, nullptr, flag<&Settings::wish, &Wish::automaticCut>()},
    {TextId::CommentCutModeValue, nullptr, integer<&Settings::wish, &Wish::cutMegabytes>(1, kMost)},
    {TextId::CommentShowSettingMember, nullptr, integer<&Settings::showSettingMember>(-1, 4)},
    {TextId::CommentExtendedChannelMode, nullptr, flag<&Settings::extendedChannelMode>()},
    {TextId::CommentMainFormPos, nullptr, place<&Settings::mainFormPos>()},
    {TextId::CommentFormVisible, nullptr, integer<&Settings::formVisible>(0, 2)},
    {TextId::CommentShowFormPos, nullptr, place<&Settings::showFormPos>()},
    {TextId::CommentShowFormVisible, nullptr, flag<&Settings::showFormVisible>()},
    {TextId::CommentChannelColor, nullptr, channelColumn<&ChannelSettings::color>(0, kLargestColor, false, true)},
    {TextId::CommentActiveChannel, nullptr, channelColumn<&ChannelSettings::active>(0, 1, true, false)},
    {TextId::CommentChannelsGain, nullptr, channelColumn<&ChannelSettings::gain>(1, kMost, false, false)},
    {TextId::CommentFrequencyListCount, nullptr, frequencyListCount()},
    {TextId::CommentFrequencyList, nullptr, realList<&Settings::frequencyList>()},
    {TextId::CommentSynchroAnalyzeMode, nullptr,
     integer<&Settings::wish, &Wish::synchro, &SynchroSettings::SynchroAnalyzeMode>(0, 2)},
    {TextId::CommentAnalyzeMode, nullptr,
     source<&SynchroSettings::analysisOnAnalog, &SynchroSettings::analysisOnPort>()},
    {TextId::CommentAnalyzeAnalogStartMode, nullptr,
     condition<&SynchroSettings::AnalyzeAnalogStartMode, &SynchroSettings::startAnalogEnabled>()},
    {TextId::CommentAnalyzeAnalogWriteMode, nullptr,
     condition<&SynchroSettings::AnalyzeAnalogWriteMode, &SynchroSettings::writeAnalogEnabled>()},
    {TextId::CommentAnalyzeAnalogStopMode, nullptr,
     condition<&SynchroSettings::AnalyzeAnalogStopMode, &SynchroSettings::stopAnalogEnabled>()},
    {TextId::CommentAnalyzeAnalogStartChannel, nullptr,
     integer<&Settings::wish, &Wish::synchro, &SynchroSettings::AnalyzeAnalogStartChannel>(0, kLastChannel)},
    {TextId::CommentAnalyzeAnalogWriteChannel, nullptr,
     integer<&Settings::wish, &Wish::synchro, &SynchroSettings::AnalyzeAnalogWriteChannel>(0, kLastChannel)},
    {TextId::CommentAnalyzeAnalogStopChannel, nullptr,
     integer<&Settings::wish, &Wish::synchro, &SynchroSettings::AnalyzeAnalogStopChannel>(0, kLastChannel)},
    {TextId::CommentAnalyzeAnalogStartValue, nullptr,
     real<&Settings::wish, &Wish::synchro, &SynchroSettings::AnalyzeAnalogStartValue>(kAnyReal)},
    {TextId::CommentAnalyzeAnalogWriteValue, nullptr,
     real<&Settings::wish, &Wish::synchro, &SynchroSettings::AnalyzeAnalogWriteValue>(kAnyReal)},
    {TextId::CommentAnalyzeAnalogStopValue, nullptr,
     real<&Settings::wish, &Wish::synchro, &SynchroSettings::AnalyzeAnalogStopValue>(kAnyReal)},
    {TextId::CommentAnalyzeAnalogStartUnit, nullptr,
     integer<&Settings::wish, &Wish::synchro, &SynchroSettings::AnalyzeAnalogStartUnit>(0, 2)},
    {TextId::CommentAnalyzeAnalogWriteUnit, nullptr,
     integer<&Settings::wish, &Wish::synchro, &SynchroSettings::AnalyzeAnalogWriteUnit>(0, 2)},
    {TextId::CommentAnalyzeAnalogStopUnit, nullptr,
     integer<&Settings::wish, &Wish::synchro, &SynchroSettings::AnalyzeAnalogStopUnit>(0, 2)},
    {TextId::CommentAnalyzePortStartMode, nullptr,
     condition<&SynchroSettings::AnalyzePortStartMode, &SynchroSettings::portStartEnabled>()},
    {TextId::CommentAnalyzePortWriteMode, nullptr,
     condition<&SynchroSettings::AnalyzePortWriteMode, &SynchroSettings::portWriteEnabled>()},
    {TextId::CommentAnalyzePortStopMode, nullptr,
     condition<&SynchroSettings::AnalyzePortStopMode, &SynchroSettings::portStopEnabled>()},
    {TextId::CommentAnalyzePortStartBit, nullptr,
     integer<&Settings::wish, &Wish::synchro, &SynchroSettings::AnalyzePortStartBit>(0, kLastPortBit)},
    {TextId::CommentAnalyzePortWriteBit, nullptr,
     integer<&Settings::wish, &Wish::synchro, &SynchroSettings::AnalyzePortWriteBit>(0, kLastPortBit)},
    {TextId::CommentAnalyzePortStopBit, nullptr,
     integer<&Settings::wish, &Wish::synchro, &SynchroSettings::AnalyzePortStopBit>(0, kLastPortBit)},
    {TextId::CommentSynchroMode, nullptr, source<&SynchroSettings::synchroOnAnalog, &SynchroSettings::synchroOnPort>()},
    {TextId::CommentSynchroAnalogMode, nullptr,
     integer<&Settings::wish, &Wish::synchro, &SynchroSettings::SynchroAnalogMode>(0, 2)},
    {TextId::CommentSynchroAnalogChannelNumber, nullptr,
     integer<&Settings::wish, &Wish::synchro, &SynchroSettings::SynchroAnalogChannelNumber>(0, kLastChannel)},
    {TextId::CommentSynchroAnalogValue, nullptr,
     real<&Settings::wish, &Wish::synchro, &SynchroSettings::SynchroAnalogValue>(kAnyReal)},
    {TextId::CommentSynchroAnalogUnit, nullptr,
     integer<&Settings::wish, &Wish::synchro, &SynchroSettings::SynchroAnalogUnit>(0, 2)},
    {TextId::CommentSynchroPortMode, nullptr,
     integer<&Settings::wish, &Wish::synchro, &SynchroSettings::SynchroPortMode>(0, 2)},
    {TextId::CommentSynchroPortBit, nullptr,
     integer<&Settings::wish, &Wish::synchro, &SynchroSettings::SynchroPortBit>(0, kLastPortBit)},
    {TextId::CommentSynchroAllSize, nullptr, synchroAllSize()},
    {TextId::CommentSynchroPrehistorySize, nullptr, synchroPrehistorySize()},
    {TextId::CommentStopAfterTrigged, nullptr,
     flag<&Settings::wish, &Wish::synchro, &SynchroSettings::StopAfterTrigged>()},
    {TextId::CommentUseDigitalPort, nullptr, flag<&Settings::wish, &Wish::useDigitalPort>()},
    {TextId::CommentHardwareAverage, nullptr, flag<&Settings::hardwareAverage>()},
    {TextId::CommentPixelsMode, nullptr, flag<&Settings::pixelsMode>()},
    {TextId::CommentShowSignalMode, nullptr, integer<&Settings::showSignalMode>(0, 2)},
    {TextId::CommentDigitalZeroLevel, nullptr, digitalColumn<&DigitalLineSettings::zeroLevel>(-1000, 1000)},
    {TextId::CommentDigitalAmplLevel, nullptr, digitalColumn<&DigitalLineSettings::amplitude>(0, 1000)},
    {TextId::CommentDigitalColor, nullptr, digitalColumn<&DigitalLineSettings::color>(0, kLargestColor)},
    {TextId::CommentTextFirstColumnMode, nullptr,
     integer<&Settings::textExport, &TextExportSettings::firstColumnMode>(0, 3)},
    {TextId::CommentTextDataColumnMode, nullptr,
     integer<&Settings::textExport, &TextExportSettings::dataColumnMode>(0, 1)},
    {TextId::CommentTextTimePrecision, nullptr,
     integer<&Settings::textExport, &TextExportSettings::timePrecision>(0, kMost)},
    {TextId::CommentTextVoltagePrecision, nullptr,
     integer<&Settings::textExport, &TextExportSettings::voltagePrecision>(0, kMost)},
    {TextId::CommentTextFractionalDivider, nullptr,
     integer<&Settings::textExport, &TextExportSettings::fractionalDivider>(0, 1)},
    {TextId::CommentTextColumnDividerMode, nullptr,
     integer<&Settings::textExport, &TextExportSettings::columnDividerMode>(0, 1)},
    {TextId::CommentTextColumnDivider, nullptr,
     byte<&Settings::textExport, &TextExportSettings::columnDivider>(1, 255)},
    {TextId::CommentTextColumnDividerCount, nullptr,
     byte<&Settings::textExport, &TextExportSettings::columnDividerCount>(1, 255)},
    {TextId::CommentTextMaxLineCount, nullptr,
     integer<&Settings::textExport, &TextExportSettings::maxLineCount>(0, kMost)},
    {TextId::DecimationHint, "Decimation", rareInteger<&Settings::wish, &Wish::decimation>(1, kMost)},
    {TextId::WriteBufferComment, "WriteBuffer",
     integer<&Settings::wish, &Wish::writeBufferMegabytes>(kLeastWriteBufferMegabytes, kMostWriteBufferMegabytes)},
    {TextId::WriteAgeComment, "WriteAge",
     integer<&Settings::wish, &Wish::longestWriteWaitMs>(kLeastWriteWaitMs, kMostWriteWaitMs)},
    {TextId::CommentAxisYLimit, "AxisYLower", rareReal<&Settings::axisYLower>()},
    {TextId::CommentAxisYLimit, "AxisYUpper", rareReal<&Settings::axisYUpper>()},
    {TextId::CommentPartShown, "ViewLegend", rareInteger<&Settings::viewLegend>(0, 1)},
    {TextId::CommentPartShown, "ViewCursors", rareInteger<&Settings::viewCursors>(0, 1)},
    {TextId::CommentPartShown, "ViewSettings", rareInteger<&Settings::viewSettings>(0, 1)},
    {TextId::CommentPartHidden, "HidePanels", rareInteger<&Settings::hidePanels>(0, 1)},
    {TextId::CommentPartHidden, "HideMessages", rareInteger<&Settings::hideMessages>(0, 1)},
    {TextId::CommentPartSize, "PanelsWidth", rareInteger<&Settings::panelsWidth>(0, kFarthestPixel)},
    {TextId::CommentPartSize, "MessagesHeight", rareInteger<&Settings::messagesHeight>(0, kFarthestPixel)},
    {TextId::CommentPartSize, "SignalHeight", rareInteger<&Settings::signalHeight>(0, kFarthestPixel)},
    {TextId::CommentPartSize, "ViewSettingsWidth", rareInteger<&Settings::viewSettingsWidth>(0, kFarthestPixel)},
};

/// Keys are the same in every language.
LanguageTable keyTexts() {
    LanguageTable table;
    table.select(kLanguageEnglish);
    return table;
}

}  // namespace

std::string SettingRow::key() const {
    return literalKey != nullptr ? literalKey : keyTexts().load(static_cast<int32_t>(comment) - 1);
}

std::span<const SettingRow> settingsTable() {
    return kTable;
}

}  // namespace tarno2
