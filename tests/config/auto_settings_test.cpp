#include "config/settings/auto_settings.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <map>
#include <optional>

#include "config/logs/console_log.h"
#include "config/logs/debug_log.h"
#include "platform/paths.h"
#include "records/key_value_file.h"
#include "tests/config/masked.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

using Lines = std::vector<std::string>;
using Keys = std::map<std::string, std::string>;

const Keys kGoodKeys = {{"DriverName", "\"Simulator\""}, {"BaseNumber", "1"},       {"FileName", "\"run.dat\""},
                        {"ChannelCount", "2"},           {"ChannelsNumber", "7,3"}, {"ChannelsGain", "1, 10"},
                        {"Frequency", "1000.5"},         {"MeasureFileMode", "0"},  {"BoardMode", "0"}};
constexpr const char* kAbsent = nullptr;

/// The good settings with some keys changed, or left out where the value is null.
std::string settingsText(const std::map<std::string, const char*>& changes) {
    Keys keys = kGoodKeys;
    for (const auto& [key, value] : changes) {
        keys.erase(key);
        if (value != kAbsent) {
            keys[key] = value;
        }
    }
    std::string text;
    for (const auto& [key, value] : keys) {
        text.append(key).append(" = ").append(value).append("\r\n");
    }
    return text;
}

Lines splitLines(const std::string& text) {
    Lines lines;
    for (size_t at = 0; at < text.size();) {
        const size_t end = text.find("\r\n", at);
        EXPECT_NE(end, std::string::npos) << "a line without its end";
        lines.push_back(text.substr(at, end - at));
        at = end == std::string::npos ? text.size() : end + 2;
    }
    return lines;
}

/// One load in a folder of its own, with what AutoLog.txt holds after it.
class Load {
public:
    void withText(std::string_view text) { withPath(folder_.write("auto.cfg", text)); }
    void withPath(const std::optional<std::string>& path) {
        settings = LoadAutoSettings(path, folder_.path());
        consoleLog().close();
        debugLog().close();
        allLines = splitLines(readFile(folder_.file("AutoLog.txt")));
        findings.assign(allLines.begin() + 2, allLines.end());
        if (const auto summary = std::find(findings.begin(), findings.end(), "Config read OK...");
            summary != findings.end()) {
            findings.erase(summary, findings.end());
        }
    }
    [[nodiscard]] const TemporaryFolder& folder() const { return folder_; }

    std::optional<RecordingWish> settings;
    Lines allLines;
    Lines findings;  ///< what stands between the start and the summary

private:
    TemporaryFolder folder_;
};

TEST(AutoSettings, GoodFileIsReadWithoutFindings) {
    Load load;
    load.withText(settingsText({{"BaseNumber", "10"},
                                {"BoardMode", "0x6"},
                                {"PacketFreq", "20000"},
                                {"CutMode", "16"},
                                {"Decimation", "4"},
                                {"DriverSettings", "\"File=C:\\\\run.wav;Divider=;;\""}}));
    ASSERT_TRUE(load.settings);
    const RecordingWish& settings = *load.settings;
    EXPECT_EQ(settings.driver, "Simulator");
    EXPECT_EQ(settings.base, 16U);
    EXPECT_EQ(settings.fileName, "run.dat");
    EXPECT_THAT(settings.channels, ElementsAre(7, 3));
    EXPECT_THAT(settings.gains, ElementsAre(1, 10));
    EXPECT_EQ(settings.frequency, 1000.5);
    EXPECT_TRUE(settings.cut);
    EXPECT_EQ(settings.cutMegabytes, 16);
    EXPECT_EQ(settings.boardMode, kBoardDifferential | kBoardPacketMode);
    EXPECT_EQ(settings.packetFrequency, 20000.0);
    EXPECT_EQ(settings.decimation, 4);
    EXPECT_EQ(settings.driverSettings, "File=C:\\run.wav;Divider=;;");

    ASSERT_EQ(load.allLines.size(), 9U);
    EXPECT_EQ(load.allLines[0], std::string(65, '*'));
    EXPECT_EQ(masked(load.allLines[1]), "Console start at: ##:##:##  ##.##.####");
    EXPECT_THAT(Lines(load.allLines.begin() + 2, load.allLines.end()),
                ElementsAre("Config read OK...", "Driver = \"Simulator\"", "Base number = 0x10", "Channel count = 2",
                            "Frequency = 1000.500000", "Board mode = 0x6", "Packet frequency = 20000.000000"));
    EXPECT_FALSE(std::ifstream(load.folder().file("AutoLog.dbg")).is_open());
}

struct LoadCase {
    std::map<std::string, const char*> changes;
    Lines findings;
};

TEST(AutoSettings, EndsWithTheReason) {
    const LoadCase cases[] = {
        {{{"DriverName", kAbsent}}, {"Required parameters \"DriverName\" is absent... Program aborted"}},
        {{{"DriverName", "Simulator"}}, {"Required parameters \"DriverName\" is absent... Program aborted"}},
        {{{"ChannelCount", kAbsent}}, {"Required parameters \"ChannelCount\" is absent... Program aborted"}},
        {{{"DriverSettings", "\"File=run.wav;Loop\""}}, {"Value DriverSettings invalid... Program aborted"}},
        {{{"DriverSettings", "File=run.wav"}}, {"Value DriverSettings invalid... Program aborted"}},
        {{{"ChannelCount", "two"}}, {"Required parameters \"ChannelCount\" is absent... Program aborted"}},
        {{{"ChannelCount", "0"}}, {"Parameters \"ChannelCount\" <= 0 (ChannelCount = 0)... Program aborted"}},
        {{{"ChannelCount", "-3"}}, {"Parameters \"ChannelCount\" <= 0 (ChannelCount = -3)... Program aborted"}},
        {{{"ChannelCount", "161"}}, {"Parameters \"ChannelCount\" > 160 (ChannelCount = 161)... Program aborted"}},
        {{{"ChannelCount", "2000000000"}},
         {"Parameters \"ChannelCount\" > 160 (ChannelCount = 2000000000)... Program aborted"}},
        {{{"ChannelsNumber", kAbsent}}, {"Required parameters \"ChannelsNumber\" is absent... Program aborted"}},
        {{{"ChannelCount", "3"}}, {"ChannelsNumber elements count != ChannelCount... Program aborted"}},
        {{{"ChannelCount", "1"}}, {"ChannelsNumber elements count != ChannelCount... Program aborted"}},
        {{{"ChannelsNumber", "1, two"}}, {"ChannelsNumber elements count != ChannelCount... Program aborted"}},
        {{{"ChannelsGain", "1"}}, {"ChannelsGain elements count != ChannelCount... Program aborted"}},
        {{{"ChannelsGain", "1,1,1"}}, {"ChannelsGain elements count != ChannelCount... Program aborted"}},
        {{{"ChannelsName", "\"a;b;c\""}}, {"ChannelsName elements count > ChannelCount... Program aborted"}},
        {{{"ChannelsName", "a"}}, {"Value ChannelsName invalid... Program aborted"}},
        {{{"ChannelsUnit", "\"a;\x01\""}}, {"Value ChannelsUnit invalid... Program aborted"}},
        {{{"ChannelsFactor", "1"}}, {"ChannelsFactor elements count != ChannelCount... Program aborted"}},
        {{{"ChannelsFactor", "1e999, 1"}}, {"ChannelsFactor elements count != ChannelCount... Program aborted"}},
        {{{"ChannelsFactor", "1, x, 2"}}, {"Value ChannelsFactor invalid... Program aborted"}},
        {{{"ChannelsFactor", "1, 0"}}, {"Value ChannelsFactor invalid... Program aborted"}},
        {{{"ChannelsFactor", "nan, 1"}}, {"Value ChannelsFactor invalid... Program aborted"}},
        {{{"ChannelsOffset", "1, -inf"}}, {"Value ChannelsOffset invalid... Program aborted"}},
        {{{"LinesName", "\";;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;x\""}}, {"Value LinesName invalid... Program aborted"}},
        {{{"Frequency", kAbsent}}, {"Required parameters \"Frequency\" is absent... Program aborted"}},
        {{{"Frequency", "nan"}}, {"Required parameters \"Frequency\" is absent... Program aborted"}},
        {{{"Frequency", "1e999"}}, {"Required parameters \"Frequency\" is absent... Program aborted"}},
        {{{"MeasureFileMode", "1"}},
         {"Choose time mode, but required parameters \"TimeNeed\" is absent... Program aborted"}},
        {{{"MeasureFileMode", "1"}, {"TimeNeed", "1e308"}, {"TimeMode", "2"}},
         {"Value TimeNeed invalid... Program aborted"}},
        {{{"MeasureFileMode", "2"}, {"SizeNeedHight", "0"}},
         {"Choose size mode, but required parameters \"SizeNeedLow\" is absent... Program aborted"}},
        {{{"MeasureFileMode", "2"}, {"SizeNeedHight", "4294967295"}, {"SizeNeedLow", "0"}, {"SizeMode", "1"}},
         {"Size is too large (SizeNeedHight = 4294967295, SizeNeedLow = 0, SizeMode = 1)... Program aborted"}},
        {{{"BoardMode", "4"}},
         {"Choose packet mode but required parameter \"PacketFreq\" is absent... Program aborted"}},
        {{{"BoardMode", "4"}, {"PacketFreq", "inf"}},
         {"Choose packet mode but required parameter \"PacketFreq\" is absent... Program aborted"}},
    };
    for (const LoadCase& c : cases) {
        SCOPED_TRACE(settingsText(c.changes));
        Load load;
        load.withText(settingsText(c.changes));
        EXPECT_FALSE(load.settings);
        EXPECT_THAT(load.findings, ElementsAreArray(c.findings));
    }
}

TEST(AutoSettings, TellsEveryDefaultItTakes) {
    const LoadCase cases[] = {
        {{{"BaseNumber", kAbsent}}, {"Parameters \"BaseNumber\" absent - Use 1"}},
        {{{"BaseNumber", "first"}}, {}},  // "f" is a hexadecimal digit
        {{{"BaseNumber", "nine"}}, {"Parameters \"BaseNumber\" absent - Use 1"}},
        {{{"FileName", kAbsent}}, {"Parameters \"FileName\" absent - Generated default"}},
        {{{"FileName", "\"\""}}, {"Parameters \"FileName\" absent - Generated default"}},
        {{{"ChannelsGain", kAbsent}}, {"Parameters \"ChannelsGain\" is absent... Use gain 1 to all channels"}},
        {{{"CutMode", "-1"}}, {"Cut mode <0... Cut mode disable"}},
        {{{"MeasureFileMode", kAbsent}}, {"Parameter \"MeasureFileMode\" is absent - Set to 0(Manual mode)"}},
        {{{"MeasureFileMode", "3"}}, {"Invalid value for \"MeasureFileMode\" ... MeasureFileMode = 0(Manual mode)"}},
        {{{"MeasureFileMode", "-1"}}, {"Invalid value for \"MeasureFileMode\" ... MeasureFileMode = 0(Manual mode)"}},
        {{{"MeasureFileMode", "1"}, {"TimeNeed", "5"}}, {"Parameter \"TimeMode\" is absent - Set to 0(Second)"}},
        {{{"MeasureFileMode", "1"}, {"TimeNeed", "5"}, {"TimeMode", "3"}}, {"Value TimeMode invalid... Use 0(Second)"}},
        {{{"MeasureFileMode", "2"}, {"SizeNeedLow", "5"}, {"SizeMode", "3"}},
         {"Parameter \"SizeNeedHight\" is absent - Use only SizeNeedLow", "Value SizeMode invalid... Use 0(Byte)"}},
        {{{"BoardMode", kAbsent}}, {"Parameter \"BoardMode\" is absent - Set to 0(Free mode)"}},
        {{{"Decimation", "0"}}, {"Decimation <1... Decimation disable"}},
        {{{"WriteBuffer", "0"}, {"WriteAge", "9"}},
         {"Value WriteBuffer invalid... Use 256", "Value WriteAge invalid... Use 1000"}},
        {{{"WriteBuffer", "65537"}, {"WriteAge", "600001"}},
         {"Value WriteBuffer invalid... Use 256", "Value WriteAge invalid... Use 1000"}},
        {{{"MarkLine", "32"}, {"MarkEdge", "3"}, {"Passport", "2"}, {"Checksums", "-1"}},
         {"Value Passport invalid... Use 1", "Value Checksums invalid... Use 1", "Value MarkLine invalid... Use -1",
          "Value MarkEdge invalid... Use 0"}},
        {{{"BaseNumber", kAbsent},
          {"FileName", kAbsent},
          {"ChannelsGain", kAbsent},
          {"MeasureFileMode", kAbsent},
          {"BoardMode", kAbsent}},
         {"Parameters \"BaseNumber\" absent - Use 1", "Parameters \"FileName\" absent - Generated default",
          "Parameters \"ChannelsGain\" is absent... Use gain 1 to all channels",
          "Parameter \"MeasureFileMode\" is absent - Set to 0(Manual mode)",
          "Parameter \"BoardMode\" is absent - Set to 0(Free mode)"}},
    };
    for (const LoadCase& c : cases) {
        SCOPED_TRACE(settingsText(c.changes));
        Load load;
        load.withText(settingsText(c.changes));
        ASSERT_TRUE(load.settings);
        EXPECT_THAT(load.findings, ElementsAreArray(c.findings));
        EXPECT_FALSE(load.settings->cut);
        EXPECT_EQ(load.settings->decimation, 1);
        EXPECT_EQ(load.settings->gains.size(), 2U);
        EXPECT_EQ(load.settings->writeBufferMegabytes, 256);
        EXPECT_EQ(load.settings->longestWriteWaitMs, 1000);
        EXPECT_EQ(load.settings->markLine, -1);
        EXPECT_EQ(load.settings->markEdge, 0);
        EXPECT_TRUE(load.settings->passport && load.settings->checksums);
    }
}

TEST(AutoSettings, ChannelsAndLinesHaveLabels) {
    // Letters of the code page become UTF-8.
    const auto wish = readAutoSettings(settingsText({{"ChannelsName", "\"inlet;out, let\""},
                                                     {"ChannelsUnit", "\"\xEC\xE1\xE0\xF0 \""},
                                                     {"ChannelsFactor", "-2.5, 1e-9"},
                                                     {"ChannelsOffset", "0, 0.125"},
                                                     {"LinesName", "\";gate\""}}));
    ASSERT_TRUE(wish);
    EXPECT_THAT(wish->labels, ElementsAre(ChannelLabel{"inlet", "\xD0\xBC\xD0\xB1\xD0\xB0\xD1\x80", -2.5, 0.0},
                                          ChannelLabel{"out, let", "", 1e-9, 0.125}));
    EXPECT_THAT(wish->lineNames, ElementsAre("", "gate"));
    EXPECT_THAT(readAutoSettings(settingsText({}))->labels, ElementsAre(ChannelLabel(), ChannelLabel()));
}

TEST(AutoSettings, StopRulesAreHeldInSecondsAndBytes) {
    struct {
        std::map<std::string, const char*> changes;
        StopRule rule;
        double seconds;
        uint64_t bytes;
    } const cases[] = {
        {{{"MeasureFileMode", "1"}, {"TimeNeed", "1.5"}, {"TimeMode", "0"}}, StopRule::Time, 1.5, 0},
        {{{"MeasureFileMode", "1"}, {"TimeNeed", "1.5"}, {"TimeMode", "1"}}, StopRule::Time, 90.0, 0},
        {{{"MeasureFileMode", "1"}, {"TimeNeed", "1.5"}, {"TimeMode", "2"}}, StopRule::Time, 5400.0, 0},
        {{{"MeasureFileMode", "2"}, {"SizeNeedLow", "10"}, {"SizeMode", "2"}}, StopRule::Size, 0.0, 10485760},
        {{{"MeasureFileMode", "2"}, {"SizeNeedLow", "4000000000"}}, StopRule::Size, 0.0, 4000000000},
        {{{"MeasureFileMode", "2"}, {"SizeNeedHight", "3"}, {"SizeNeedLow", "5"}, {"SizeMode", "1"}},
         StopRule::Size,
         0.0,
         (3ULL * 4294967296ULL + 5) * 1024},
        {{{"TimeNeed", "9"}, {"SizeNeedLow", "9"}}, StopRule::Manual, 0.0, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(settingsText(c.changes));
        Load load;
        load.withText(settingsText(c.changes));
        ASSERT_TRUE(load.settings);
        EXPECT_EQ(load.settings->stopRule, c.rule);
        EXPECT_EQ(load.settings->stopSeconds, c.seconds);
        EXPECT_EQ(load.settings->stopBytes, c.bytes);
    }
}

TEST(AutoSettings, UnusableFilesEndTheLoad) {
    const TemporaryFolder elsewhere;
    const std::string missing = elsewhere.file("missing.cfg");
    const std::string quoted = "\"" + elsewhere.write("there.cfg", settingsText({})) + "\"";
    const std::string large = elsewhere.write("large.cfg", std::string(KeyValueFile::kMaximumSize + 1, ' '));
    const std::string empty = elsewhere.write("empty.cfg", "");
    std::string bytes = settingsText({});
    for (size_t i = 0; i < 70000; ++i) {
        bytes.insert(bytes.begin(), static_cast<char>(i * 7919 % 251));
    }
    const std::string binary = elsewhere.write("binary.cfg", bytes.substr(0, 70000));
    const std::string oneLine = elsewhere.write("one_line.cfg", "ChannelCount = 1 DriverName = \"Simulator\"");
    const std::string noDriver = "Required parameters \"DriverName\" is absent... Program aborted";
    struct {
        std::optional<std::string> path;
        std::string finding;
    } const cases[] = {
        {std::nullopt, "Invalid file name for autosettings: Path = NULL... Program aborted"},
        {"", "Invalid file name for autosettings: Path[0] = 0... Program aborted"},
        {missing, "Config file \"" + missing + "\" not founded... Program aborted"},
        {quoted, "Config file \"" + quoted + "\" not founded... Program aborted"},
        {elsewhere.path(), "Config file \"" + elsewhere.path() + "\" not founded... Program aborted"},
        {large, "Config file \"" + large + "\" is too large... Program aborted"},
        {empty, noDriver},
        {binary, noDriver},
        {oneLine, noDriver},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.finding);
        Load load;
        load.withPath(c.path);
        EXPECT_FALSE(load.settings);
        EXPECT_THAT(load.findings, ElementsAre(c.finding));
    }
}

TEST(AutoSettings, BackslashesInFileNameAreExplained) {
    const TemporaryFolder data;
    // Names the folder with a backslash: its own separator on Windows, a character of its name elsewhere.
    const std::string folderName = kPathSeparator == '\\' ? data.path() : data.file("a\\b");
    if (kPathSeparator != '\\') {
        std::filesystem::create_directory(folderName);
    }
    const std::string typed = folderName + kPathSeparator + "run.dat";
    std::string doubled;
    for (const char c : typed) {
        doubled.append(c == '\\' ? 2 : 1, c);
    }
    Load wrong;
    wrong.withText(settingsText({{"FileName", ("\"" + typed + "\"").c_str()}}));
    ASSERT_TRUE(wrong.settings);
    EXPECT_THAT(wrong.findings, ElementsAre("Folder of \"FileName\" not founded: a backslash takes the next character. "
                                            "Write FileName = \"" +
                                            doubled + "\""));
    Load right;
    right.withText(settingsText({{"FileName", ("\"" + doubled + "\"").c_str()}}));
    ASSERT_TRUE(right.settings);
    EXPECT_EQ(right.settings->fileName, typed);
    EXPECT_THAT(right.findings, IsEmpty());
}

TEST(AutoSettings, DebugModeOpensALogBesideTheConsoleLog) {
    Load load;
    load.withText(settingsText({{"DebugMode", "1"}}));
    EXPECT_THAT(readFile(load.folder().file("AutoLog.dbg")), testing::HasSubstr("Debug start Tarno2 version = "));
}

TEST(AutoSettings, KeysThatAreNoneAreNamed) {
    Load load;
    load.withText("Freqency = 5\r\n; Comment = 1\r\na line of words\r\nboardmode=1\r\n My key = \"Frequency = 1\"\r\n" +
                  settingsText({{"SynchroAnalogValue", "1"},
                                {"AnalyzePortStopBit", "2"},
                                {"UseDigitalPort", "1"},
                                {"SizeNeedHight", "1"},
                                {"WriteAge", "100"}}));
    ASSERT_TRUE(load.settings);
    EXPECT_THAT(load.findings,
                ElementsAre("Unknown parameter \"Freqency\" ignored", "Unknown parameter \"boardmode\" ignored",
                            "Unknown parameter \"My key\" ignored"));
}

TEST(AutoSettings, AByteOrderMarkIsNoPartOfTheFirstKey) {
    Load load;
    load.withText("\xEF\xBB\xBF" + settingsText({}));
    ASSERT_TRUE(load.settings);
    EXPECT_THAT(load.findings, IsEmpty());
}

TEST(ConsoleLog, ALogThatAnotherRunHoldsGetsANeighbour) {
    const TemporaryFolder folder;
    ConsoleLog first;
    ConsoleLog second;
    ConsoleLog third;
    ASSERT_TRUE(first.open(folder.path()).ok());
    ASSERT_TRUE(second.open(folder.path()).ok());
    ASSERT_TRUE(third.open(folder.path()).ok());
    second.log("of the second");
    second.close();
    EXPECT_EQ(readFile(folder.file("AutoLog_2.txt")), "of the second\r\n");
    EXPECT_EQ(fileNameOf(third.path()), "AutoLog_3.txt");
    first.close();
    EXPECT_EQ(readFile(folder.file("AutoLog.txt")), "");
    ASSERT_TRUE(second.open(folder.path()).ok());
    EXPECT_EQ(fileNameOf(second.path()), "AutoLog.txt");
}

TEST(AutoSettings, LogsGrowFromRunToRunAndAreNotNeeded) {
    Load load;
    load.withText(settingsText({}));
    const Lines first = load.allLines;
    load.withText(settingsText({}));
    EXPECT_EQ(load.allLines.size(), 2 * first.size());
    EXPECT_THAT(Lines(load.allLines.begin(), load.allLines.begin() + static_cast<ptrdiff_t>(first.size())),
                ElementsAreArray(first));

    const std::string path = load.folder().write("auto.cfg", settingsText({{"DebugMode", "1"}}));
    const std::string noFolder = joinPath(path, "below a file");
    testing::internal::CaptureStderr();
    EXPECT_TRUE(LoadAutoSettings(path, noFolder));
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_EQ(told.rfind("The log \"" + joinPath(noFolder, "AutoLog.txt") + "\" can not be opened: ", 0), 0U) << told;
    EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 1);
    EXPECT_FALSE(consoleLog().isOpen());
    EXPECT_FALSE(debugLog().isOpen());
}

}  // namespace
}  // namespace tarno2::test
