#include "config/settings/settings_table.h"

#include <algorithm>
#include <iterator>

#include "config/settings/setting_places.h"
#include "language/language_table.h"

namespace tarno2 {

namespace {

using namespace places;

bool endsByTime(const RecordingWish& wish) {
    return wish.stopRule == StopRule::Time;
}

bool endsBySize(const RecordingWish& wish) {
    return wish.stopRule == StopRule::Size;
}

bool inPackets(const RecordingWish& wish) {
    return wish.hasMode(kBoardPacketMode);
}

constexpr const char* kRequired = "Required parameters \"{key}\" is absent... Program aborted";
constexpr const char* kUseStart = "Value {key} invalid... Use {start}";
constexpr const char* kInvalid = "Value {key} invalid... Program aborted";

constexpr AutoRule kDriverRule = {.turn = AutoTurn::Board, .key = "DriverName", .absent = kRequired};
constexpr AutoRule kBaseRule = {.turn = AutoTurn::Board,
                                .key = "BaseNumber",
                                .absent = "Parameters \"BaseNumber\" absent - Use 1",
                                .number = AutoNumber::Hexadecimal};
constexpr AutoRule kFileRule = {.turn = AutoTurn::Board,
                                .absent = "Parameters \"FileName\" absent - Generated default"};
constexpr AutoRule kFrequencyRule = {.turn = AutoTurn::Rates, .absent = kRequired};
constexpr AutoRule kPacketRule = {
    .turn = AutoTurn::Others,
    .key = "PacketFreq",
    .absent = "Choose packet mode but required parameter \"PacketFreq\" is absent... Program aborted",
    .asked = inPackets};
constexpr AutoRule kStopRule = {.turn = AutoTurn::StopRule,
                                .key = "MeasureFileMode",
                                .absent = "Parameter \"MeasureFileMode\" is absent - Set to 0(Manual mode)",
                                .odd = "Invalid value for \"MeasureFileMode\" ... MeasureFileMode = 0(Manual mode)"};
constexpr AutoRule kDecimationRule = {.turn = AutoTurn::Others, .odd = "Decimation <1... Decimation disable"};
constexpr AutoRule kBoundedRule = {.turn = AutoTurn::Others, .odd = kUseStart};
constexpr const char* kTooManyNames = "{key} elements count > ChannelCount... Program aborted";
constexpr const char* kOtherCount = "{key} elements count != ChannelCount... Program aborted";
constexpr AutoRule kNamesRule = {.turn = AutoTurn::Channels, .odd = kTooManyNames, .tooLow = kInvalid};
constexpr AutoRule kScaleRule = {.turn = AutoTurn::Channels, .odd = kOtherCount, .tooLow = kInvalid};
constexpr AutoRule kSynchro = {.turn = AutoTurn::SynchroNumbers, .odd = kInvalid, .strict = true};
constexpr AutoRule kSynchroChannel = {
    .turn = AutoTurn::SynchroNumbers, .odd = kInvalid, .strict = true, .anyFromZero = true};
constexpr AutoRule kSynchroValue = {.turn = AutoTurn::SynchroValues, .odd = kInvalid, .strict = true};
constexpr AutoRule kSynchroRest = {.turn = AutoTurn::SynchroRest, .odd = kInvalid, .strict = true};
constexpr AutoRule kSynchroSize = {.turn = AutoTurn::SynchroRest, .odd = kInvalid, .strict = true, .anyFromZero = true};

// An entry of the settings file that is added one day stands after the last one, and its key is no tail of an earlier
// key. What only an autosettings file has follows after them.
constexpr SettingRow kTable[] = {
    {TextId::CommentLanguage, nullptr, integer<&Settings::language>(0, 1)},
    {TextId::CommentDriver, nullptr, text<&Settings::wish, &Wish::driver>(), kDriverRule},
    {TextId::CommentBase, nullptr, integer<&Settings::wish, &Wish::base>(0, kMost), kBaseRule},
    {TextId::CommentDrqNumber, nullptr, integer<&Settings::drqNumber>(0, kMost)},
    {TextId::CommentFrequency, nullptr, real<&Settings::wish, &Wish::frequency>(0.0), kFrequencyRule},
    {TextId::CommentDiffMode, nullptr, boardModeFlag<kBoardDifferential>()},
    {TextId::CommentExtStartMode, nullptr, boardModeFlag<kBoardExternalStart>()},
    {TextId::CommentHDDTestSpeed, nullptr, flag<&Settings::checkDiskSpeed>()},
    {TextId::CommentPacketMode, nullptr, boardModeFlag<kBoardPacketMode>()},
    {TextId::CommentExtFreqMode, nullptr, boardModeFlag<kBoardExternalClock>()},
    {TextId::CommentPacketFrequency, nullptr, real<&Settings::wish, &Wish::packetFrequency>(0.0), kPacketRule},
    {TextId::CommentFileName, nullptr, text<&Settings::wish, &Wish::fileName>(), kFileRule},
    {TextId::CommentStopMode, nullptr, integer<&Settings::wish, &Wish::stopRule>(0, 2), kStopRule},
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
    {TextId::CommentAxisYMode, nullptr, integer<&Settings::axisYMode>(-1, 4)},
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
    {TextId::CommentSynchroAnalyzeMode, nullptr, synchro<&Synchro::SynchroAnalyzeMode>(0, 2), kSynchro},
    {TextId::CommentAnalyzeMode, nullptr, source<&Synchro::analysisOnAnalog, &Synchro::analysisOnPort>(), kSynchroRest},
    {TextId::CommentAnalyzeAnalogStartMode, nullptr,
     condition<&Synchro::AnalyzeAnalogStartMode, &Synchro::startAnalogEnabled>(), kSynchro},
    {TextId::CommentAnalyzeAnalogWriteMode, nullptr,
     condition<&Synchro::AnalyzeAnalogWriteMode, &Synchro::writeAnalogEnabled>(), kSynchro},
    {TextId::CommentAnalyzeAnalogStopMode, nullptr,
     condition<&Synchro::AnalyzeAnalogStopMode, &Synchro::stopAnalogEnabled>(), kSynchro},
    {TextId::CommentAnalyzeAnalogStartChannel, nullptr, synchro<&Synchro::AnalyzeAnalogStartChannel>(0, kLastChannel),
     kSynchroChannel},
    {TextId::CommentAnalyzeAnalogWriteChannel, nullptr, synchro<&Synchro::AnalyzeAnalogWriteChannel>(0, kLastChannel),
     kSynchroChannel},
    {TextId::CommentAnalyzeAnalogStopChannel, nullptr, synchro<&Synchro::AnalyzeAnalogStopChannel>(0, kLastChannel),
     kSynchroChannel},
    {TextId::CommentAnalyzeAnalogStartValue, nullptr, synchroValue<&Synchro::AnalyzeAnalogStartValue>(), kSynchroValue},
    {TextId::CommentAnalyzeAnalogWriteValue, nullptr, synchroValue<&Synchro::AnalyzeAnalogWriteValue>(), kSynchroValue},
    {TextId::CommentAnalyzeAnalogStopValue, nullptr, synchroValue<&Synchro::AnalyzeAnalogStopValue>(), kSynchroValue},
    {TextId::CommentAnalyzeAnalogStartUnit, nullptr, synchro<&Synchro::AnalyzeAnalogStartUnit>(0, 2), kSynchro},
    {TextId::CommentAnalyzeAnalogWriteUnit, nullptr, synchro<&Synchro::AnalyzeAnalogWriteUnit>(0, 2), kSynchro},
    {TextId::CommentAnalyzeAnalogStopUnit, nullptr, synchro<&Synchro::AnalyzeAnalogStopUnit>(0, 2), kSynchro},
    {TextId::CommentAnalyzePortStartMode, nullptr,
     condition<&Synchro::AnalyzePortStartMode, &Synchro::portStartEnabled>(), kSynchro},
    {TextId::CommentAnalyzePortWriteMode, nullptr,
     condition<&Synchro::AnalyzePortWriteMode, &Synchro::portWriteEnabled>(), kSynchro},
    {TextId::CommentAnalyzePortStopMode, nullptr, condition<&Synchro::AnalyzePortStopMode, &Synchro::portStopEnabled>(),
     kSynchro},
    {TextId::CommentAnalyzePortStartBit, nullptr, synchro<&Synchro::AnalyzePortStartBit>(0, kLastPortBit), kSynchro},
    {TextId::CommentAnalyzePortWriteBit, nullptr, synchro<&Synchro::AnalyzePortWriteBit>(0, kLastPortBit), kSynchro},
    {TextId::CommentAnalyzePortStopBit, nullptr, synchro<&Synchro::AnalyzePortStopBit>(0, kLastPortBit), kSynchro},
    {TextId::CommentSynchroMode, nullptr, source<&Synchro::synchroOnAnalog, &Synchro::synchroOnPort>(), kSynchroRest},
    {TextId::CommentSynchroAnalogMode, nullptr, synchro<&Synchro::SynchroAnalogMode>(0, 2), kSynchro},
    {TextId::CommentSynchroAnalogChannelNumber, nullptr, synchro<&Synchro::SynchroAnalogChannelNumber>(0, kLastChannel),
     kSynchroChannel},
    {TextId::CommentSynchroAnalogValue, nullptr, synchroValue<&Synchro::SynchroAnalogValue>(), kSynchroValue},
    {TextId::CommentSynchroAnalogUnit, nullptr, synchro<&Synchro::SynchroAnalogUnit>(0, 2), kSynchro},
    {TextId::CommentSynchroPortMode, nullptr, synchro<&Synchro::SynchroPortMode>(0, 2), kSynchro},
    {TextId::CommentSynchroPortBit, nullptr, synchro<&Synchro::SynchroPortBit>(0, kLastPortBit), kSynchro},
    {TextId::CommentSynchroAllSize, nullptr, synchroAllSize(), kSynchroSize},
    {TextId::CommentSynchroPrehistorySize, nullptr, synchroPrehistorySize(), kSynchroSize},
    {TextId::CommentStopAfterTrigged, nullptr, flag<&Settings::wish, &Wish::synchro, &Synchro::StopAfterTrigged>(),
     kSynchroRest},
    {TextId::CommentUseDigitalPort, nullptr, flag<&Settings::wish, &Wish::useDigitalPort>(), kSynchroRest},
    {TextId::CommentHardwareAverage, nullptr, flag<&Settings::wish, &Wish::hardwareAverage>()},
    {TextId::CommentPixelsMode, nullptr, flag<&Settings::pixelsMode>()},
    {TextId::CommentShowSignalMode, nullptr, integer<&Settings::showSignalMode>(0, 2)},
    {TextId::CommentDigitalZeroLevel, nullptr, digitalColumn<&DigitalLineSettings::zeroLevel>(-1000, 1000)},
    {TextId::CommentDigitalAmplLevel, nullptr, digitalColumn<&DigitalLineSettings::amplitude>(0, 1000)},
    {TextId::CommentDigitalColor, nullptr, digitalColumn<&DigitalLineSettings::color>(0, kLargestColor)},
    {TextId::CommentTextFirstColumnMode, nullptr,
     integer<&Settings::textExport, &TextExportSettings::firstColumnMode>(0, 3)},
    {TextId::CommentTextDataColumnMode, nullptr,
     integer<&Settings::textExport, &TextExportSettings::dataColumnMode>(0, 2)},
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
    {TextId::DecimationHint, "Decimation", rareInteger<&Settings::wish, &Wish::decimation>(1, kMost), kDecimationRule},
    {TextId::WriteBufferComment, "WriteBuffer",
     integer<&Settings::wish, &Wish::writeBufferMegabytes>(kLeastWriteBufferMegabytes, kMostWriteBufferMegabytes),
     kBoundedRule},
    {TextId::WriteAgeComment, "WriteAge",
     integer<&Settings::wish, &Wish::longestWriteWaitMs>(kLeastWriteWaitMs, kMostWriteWaitMs), kBoundedRule},
    {TextId::CommentAxisYLimit, "AxisYLower", rareReal<&Settings::axisYLower>()},
    {TextId::CommentAxisYLimit, "AxisYUpper", rareReal<&Settings::axisYUpper>()},
    {TextId::CommentPartShown, "ViewLegend", rareInteger<&Settings::viewLegend>(0, 1)},
    {TextId::CommentPartShown, "ViewCursors", rareInteger<&Settings::viewCursors>(0, 1)},
    {TextId::CommentViewLanes, "ViewLanes", rareInteger<&Settings::viewLanes>(-1, 1)},
    {TextId::CommentViewCommonScale, "ViewCommonScale", rareInteger<&Settings::viewCommonScale>(0, 1)},
    {TextId::CommentChannelsShown, "ChannelsShown", rareOffColumn<&ChannelSettings::shown>()},
    {TextId::CommentPartHidden, "HidePanels", rareInteger<&Settings::hidePanels>(0, 1)},
    {TextId::CommentPartSize, "PanelsWidth", rareInteger<&Settings::panelsWidth>(0, kFarthestPixel)},
    {TextId::CommentPartSize, "MessagesHeight", rareInteger<&Settings::messagesHeight>(0, kFarthestPixel)},
    {TextId::CommentDriverSettings, "DriverSettings", rareText<&Settings::driverSettings>()},
    {TextId::CommentPassport, "Passport", rareOff<&Settings::wish, &Wish::passport>(), kBoundedRule},
    {TextId::CommentComment, "Comment", rareText<&Settings::wish, &Wish::comment>(), {.turn = AutoTurn::Others}},
    {TextId::CommentChecksums, "Checksums", rareOff<&Settings::wish, &Wish::checksums>(), kBoundedRule},
    {TextId::CommentChannelsName, "ChannelsName", labelColumn<&ChannelLabel::name>()},
    {TextId::CommentChannelsUnit, "ChannelsUnit", labelColumn<&ChannelLabel::unit>()},
    {TextId::CommentChannelsFactor, "ChannelsFactor", scaleColumn<&ChannelLabel::factor>(1.0, isFactor)},
    {TextId::CommentChannelsOffset, "ChannelsOffset", scaleColumn<&ChannelLabel::offset>(0.0, isOffset)},
    {TextId::CommentLinesName, "LinesName", lineNames(), {.turn = AutoTurn::Others, .odd = kInvalid}},
    {TextId::CommentTextHeader, "TextHeader", rareInteger<&Settings::textExport, &TextExportSettings::header>(0, 1)},
    {TextId::CommentTextMarks, "TextMarks", rareInteger<&Settings::textExport, &TextExportSettings::marks>(0, 1)},
    {TextId::CommentMarkLine, "MarkLine", rareInteger<&Settings::wish, &Wish::markLine>(-1, kLastLine), kBoundedRule},
    {TextId::CommentMarkEdge, "MarkEdge", rareInteger<&Settings::wish, &Wish::markEdge>(0, 2), kBoundedRule},
    {TextId::CommentCursorsOnSignal, "CursorsOnSignal", rareInteger<&Settings::cursorsOnSignal>(0, 1)},
    {TextId::CommentPartHidden, "HideMeasurements", rareInteger<&Settings::hideMeasurements>(0, 1)},
    {TextId::CommentPartShown, "ViewSpectrum", rareInteger<&Settings::viewSpectrum>(0, 1)},
    {TextId::CommentSpectrumWindow, "SpectrumWindow", rareInteger<&Settings::spectrumWindow>(0, 3)},
    {TextId::CommentSpectrumScale, "SpectrumScale", rareInteger<&Settings::spectrumScale>(0, 3)},
    {TextId::CommentSpectrumLength, "SpectrumLength", rareInteger<&Settings::spectrumLength>(0, 6)},
    {TextId::CommentSpectrumSingle, "SpectrumSingle", rareInteger<&Settings::spectrumSingle>(0, 1)},
    {TextId::CommentSpectrumLogarithmic, "SpectrumLogarithmic", rareInteger<&Settings::spectrumLogarithmic>(0, 1)},
    {TextId::CommentSpectrumWhole, "SpectrumWhole", rareInteger<&Settings::spectrumWhole>(0, 1)},
    {TextId::CommentViewRecords, "ViewRecords", rareInteger<&Settings::viewRecords>(0, 100)},
    {TextId::CommentRecent, "RecentRecordings", rareText<&Settings::recentRecordings>()},
    {TextId::CommentPalette, "Palette", rareInteger<&Settings::palette>(0, 1)},
    {TextId::CommentViewClock, "ViewClock", rareInteger<&Settings::viewClock>(0, 1)},
    {TextId::CommentPartSize, "SpectrumHeight", rareInteger<&Settings::spectrumHeight>(0, kFarthestPixel)},
    {TextId::CommentPanelsOpen, "PanelsOpen", rareInteger<&Settings::panelsOpen>(0, 31)},
    {TextId::CommentFoldOnStart, "FoldOnStart", rareInteger<&Settings::foldOnStart>(0, 1)},
    {TextId::CommentPartShownOfWindow, "ShowMessages", rareInteger<&Settings::showMessages>(0, 1)},
    {TextId::CommentPartHidden, "HideTable", rareInteger<&Settings::hideTable>(0, 1)},
    {TextId::CommentPartShownOfWindow, "ShowMoreFigures", rareInteger<&Settings::showMoreFigures>(0, 1)},
    {TextId::CommentColorScheme, "ColorScheme", rareInteger<&Settings::colorScheme>(0, 2)},
    {TextId::CommentPartSize, "TableWidth", rareInteger<&Settings::tableWidth>(0, kFarthestPixel)},
    {kAutoOnly,
     "DriverSettings",
     text<&Settings::wish, &Wish::driverSettings>(),
     {.turn = AutoTurn::Board, .odd = kInvalid, .strict = true}},
    {kAutoOnly,
     "ChannelCount",
     channelCountOfList(),
     {.turn = AutoTurn::Channels,
      .absent = kRequired,
      .odd = "Parameters \"{key}\" > {highest} (ChannelCount = {value})... Program aborted",
      .tooLow = "Parameters \"{key}\" <= 0 (ChannelCount = {value})... Program aborted"}},
    {kAutoOnly,
     "ChannelsNumber",
     listOfChannels<&Wish::channels>(),
     {.turn = AutoTurn::Channels,
      .absent = kRequired,
      .odd = "ChannelsNumber elements count != ChannelCount... Program aborted"}},
    {kAutoOnly,
     "ChannelsGain",
     listOfChannels<&Wish::gains>(),
     {.turn = AutoTurn::Channels,
      .absent = "Parameters \"ChannelsGain\" is absent... Use gain 1 to all channels",
      .odd = "ChannelsGain elements count != ChannelCount... Program aborted"}},
    {kAutoOnly, "ChannelsName", labelsOfChannels<&ChannelLabel::name>(), kNamesRule},
    {kAutoOnly, "ChannelsUnit", labelsOfChannels<&ChannelLabel::unit>(), kNamesRule},
    {kAutoOnly, "ChannelsFactor", scalesOfChannels<&ChannelLabel::factor>(1.0, isFactor), kScaleRule},
    {kAutoOnly, "ChannelsOffset", scalesOfChannels<&ChannelLabel::offset>(0.0, isOffset), kScaleRule},
    {kAutoOnly, "HardwareAverage", rareInteger<&Settings::wish, &Wish::hardwareAverage>(0, 1), kBoundedRule},
    {kAutoOnly, "DrqNumber", rareInteger<&Settings::wish, &Wish::drqNumber>(-1, kMost), kBoundedRule},
    {kAutoOnly, "CutMode", cutMode(), {.turn = AutoTurn::Rates, .odd = "Cut mode <0... Cut mode disable"}},
    {kAutoOnly,
     "TimeNeed",
     real<&Settings::stopValue>(kAnyReal),
     {.turn = AutoTurn::StopValue,
      .absent = "Choose time mode, but required parameters \"TimeNeed\" is absent... Program aborted",
      .asked = endsByTime}},
    {kAutoOnly,
     "TimeMode",
     integer<&Settings::stopPower>(0, 2),
     {.turn = AutoTurn::StopValue,
      .absent = "Parameter \"TimeMode\" is absent - Set to 0(Second)",
      .odd = "Value TimeMode invalid... Use 0(Second)",
      .asked = endsByTime}},
    {kAutoOnly,
     "SizeNeedHight",
     sizeHalf<32>(),
     {.turn = AutoTurn::StopValue,
      .absent = "Parameter \"SizeNeedHight\" is absent - Use only SizeNeedLow",
      .number = AutoNumber::Unsigned,
      .asked = endsBySize}},
    {kAutoOnly,
     "SizeNeedLow",
     sizeHalf<0>(),
     {.turn = AutoTurn::StopValue,
      .absent = "Choose size mode, but required parameters \"SizeNeedLow\" is absent... Program aborted",
      .number = AutoNumber::Unsigned,
      .asked = endsBySize}},
    {kAutoOnly,
     "SizeMode",
     integer<&Settings::stopPower>(0, 2),
     {.turn = AutoTurn::StopValue, .odd = "Value SizeMode invalid... Use 0(Byte)", .asked = endsBySize}},
    {kAutoOnly,
     "BoardMode",
     integer<&Settings::wish, &Wish::boardMode>(kLeast, kMost),
     {.turn = AutoTurn::BoardMode,
      .absent = "Parameter \"BoardMode\" is absent - Set to 0(Free mode)",
      .number = AutoNumber::Hexadecimal}},
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
    const auto* const end = std::ranges::find(kTable, kAutoOnly, &SettingRow::comment);
    return {std::begin(kTable), end};
}

std::vector<const SettingRow*> autoSettingsRows() {
    std::vector<const SettingRow*> rows;
    for (const SettingRow& row : kTable) {
        if (row.rule.turn != AutoTurn::Never) {
            rows.push_back(&row);
        }
    }
    std::ranges::stable_sort(rows, {}, [](const SettingRow* row) { return row->rule.turn; });
    return rows;
}

}  // namespace tarno2
