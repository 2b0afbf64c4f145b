// The command lines that the programs take, and autosettings that are invalid.

#include <filesystem>
#include <gmock/gmock.h>
#include <regex>
#include <set>
#include <sstream>

#include "config/logs/program_version.h"
#include "platform/paths.h"
#include "tests/apps/recording_rig.h"

namespace tarno2::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;

TEST(CommandLine, ThatIsWrongSaysHowToUseTheProgram) {
    for (const std::string program : {"tarno2-console", "Tarno2"}) {
        if (kPathSeparator == '\\' && program == "Tarno2") {
            continue;  // it shows the text in a box there, and waits for a click
        }
        const RecordingRig rig;
        const std::vector<std::vector<std::string>> lines = {
            {}, {"/?"}, {"/c"}, {"/cauto.txt"}, {"-c", "auto.txt"}, {"auto.txt"}};
        for (const auto& line : lines) {
            const std::string said = rig.run(program, line);
            EXPECT_THAT(said, HasSubstr("Usage program: \n1:    Tarno2.exe /? - This screen.\n"));
            EXPECT_EQ(said.starts_with("Tarno2 can not open a display"), line.empty() && program == "Tarno2") << said;
        }
        EXPECT_FALSE(rig.exists("AutoLog.txt"));
    }
}

TEST(CommandLine, TellsTheVersion) {
    const RecordingRig rig;
    for (const std::string program :
         {"tarno2-export", "tarno2-drivers", "tarno2-recover", "tarno2-verify", "tarno2-console", "Tarno2"}) {
        const std::string name = program == "tarno2-console" ? "Tarno2" : program;
        EXPECT_EQ(rig.run(program, {"--version"}), name + ' ' + versionText() + '\n');
    }
}

/// The second field of each line of the list: names of options, and words in capitals for arguments.
std::set<std::string> optionNames(const std::string& list) {
    std::set<std::string> names;
    std::istringstream lines(list);
    for (std::string line; std::getline(lines, line);) {
        const size_t name = line.find('\t') + 1;
        names.insert(line.substr(name, line.find('\t', name) - name));
    }
    return names;
}

// What a program takes is in its manual page, and the page promises no option that the program lacks.
TEST(CommandLine, HasAManualPageThatTellsAllOptions) {
    const RecordingRig rig;
    for (const std::string program :
         {"tarno2-export", "tarno2-drivers", "tarno2-recover", "tarno2-verify", "tarno2-thumbnail", "Tarno2"}) {
        if (program == "tarno2-thumbnail" && kPathSeparator == '\\') {
            continue;  // desktops of Linux call it
        }
        SCOPED_TRACE(program);
        const std::set<std::string> options = optionNames(rig.run(program, {"--list-options"}));
        std::string page = readFile(std::string(MANUAL_PAGES) + '/' + program + ".1");
        page = std::regex_replace(page, std::regex(R"(\\-)"), "-");
        page = std::regex_replace(page, std::regex(R"(\\f[A-Z])"), "");
        EXPECT_GE(options.size(), 4U);
        for (const std::string& option : options) {
            const std::string whole =
                "(^|[^-/A-Za-z])" + std::regex_replace(option, std::regex("[?]"), "\\?") + "($|[^-A-Za-z])";
            EXPECT_TRUE(std::regex_search(page, std::regex(whole))) << option;
        }
        const std::regex told("(^|[^-A-Za-z0-9])(--[a-z][-a-z]*)");
        for (std::sregex_iterator found(page.begin(), page.end(), told), end; found != end; ++found) {
            EXPECT_TRUE(options.contains((*found)[2])) << (*found)[2];
        }
    }
    EXPECT_EQ(optionNames(rig.run("tarno2-console", {"--list-options"})),
              (std::set<std::string>{"/c", "/?", "--status", "--version"}));
}

TEST(CommandLine, TakesThePathAsItStands) {
    const RecordingRig rig;
    Wish wish;
    wish.bytes = 4000;
    const ScopedEnvironment settings("TARNO2_SIMULATOR", "RealTime=0;Signal=Counter");
    std::filesystem::rename(rig.writeSettings(wish), rig.file("my settings.txt"));
    const std::string path = rig.file("my settings.txt");
    const size_t blank = path.find(' ');
    rig.run("Tarno2", {"/c", path});
    rig.run("Tarno2", {"/C", path.substr(0, blank), path.substr(blank + 1)});
    EXPECT_EQ(checkRecording({rig.file("run.dat")}, {}), 2000U) << rig.autoLog();
    EXPECT_EQ(checkRecording({rig.file("run_old1.dat")}, {}), 2000U) << rig.autoLog();
}

// With a window, minimised, where a display is available; a stale one counts as none.
TEST(CommandLine, RecordsWithOrWithoutAWindow) {
    const std::pair<const char*, const char*> surroundings[] = {{"DISPLAY", ":9999"},
                                                                {"DISPLAY", "no.such.host:0"},
                                                                {"QT_QPA_PLATFORM", "offscreen"},
                                                                {"QT_QPA_PLATFORM", "x"}};
    for (const auto& [name, value] : surroundings) {
        SCOPED_TRACE(std::string(name) + '=' + value);
        if (kPathSeparator == '\\' && std::string(value) == "x") {
            continue;  // there the toolkit says so in a box, before the program can do without it
        }
        const ScopedEnvironment surrounding(name, value);
        const RecordingRig rig;
        Wish wish;
        wish.bytes = 4000;
        const ScopedEnvironment settings("TARNO2_SIMULATOR", "RealTime=0;Signal=Counter");
        rig.run("Tarno2", {"/c", rig.writeSettings(wish)});
        EXPECT_EQ(checkRecording({rig.file("run.dat")}, {}), 2000U) << rig.autoLog();
        EXPECT_THAT(rig.autoLog(), HasSubstr("Stop - By stop measuring\r\n"));
        EXPECT_FALSE(rig.exists("Tarno2.cfg"));
    }
}

TEST(AutoSettings, ThatCanNotBeUsedEndTheProgramWithTheReason) {
    const std::string good =
        "DriverName = \"Simulator\"\r\nChannelCount = 2\r\nChannelsNumber = 0, 1\r\nFrequency = 1000\r\n";
    const struct {
        const char* what;
        std::string text;
        const char* line;
    } cases[] = {
        {"empty", "", "Required parameters \"DriverName\" is absent... Program aborted"},
        {"no driver", "DriverName = \"None such\"\r\n" + good, "Driver not founded"},
        {"no board", "BaseNumber = 10\r\n" + good, "Set error code = -1: Error . Program aborted."},
        {"size 0", good + "MeasureFileMode = 2\r\nSizeNeedLow = 0\r\n",
         "Attention: Start faild because stop value incorrect."},
        {"frequency", "Frequency = -5\r\n" + good, "Attention: Start faild because freq value incorrect."},
        {"one packet", "ChannelCount = 1\r\nChannelsNumber = 1\r\nBoardMode = 4\r\nPacketFreq = 10\r\n" + good,
         "Attention: Enabled packet mode, but channels count = 1."},
        {"channel", "ChannelsNumber = 0, 160\r\n" + good, "Attention: The board has no such channel."},
        {"mode", "BoardMode = 10\r\n" + good, "Board mode 0x10 is not offered by the board: unknown mode"},
        {"gain", good + "ChannelsGain = 1, 3\r\n", "Attention: Init error"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        const RecordingRig rig;
        const std::string file = rig.folder().write("auto.txt", each.text);
        const ScopedEnvironment documents("XDG_DOCUMENTS_DIR", rig.path());
        rig.run("tarno2-console", {"/c", file});
        EXPECT_THAT(rig.autoLog(), AllOf(HasSubstr(each.line), HasSubstr("\r\nProgram exit at ")));
        size_t entries = 0;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(rig.path())) {
            entries += entry.is_regular_file() ? 1 : 0;
        }
        EXPECT_EQ(entries, 3U) << "settings, AutoLog.txt, and what was printed";
    }
}

TEST(AutoSettings, ThatCanNotBeOpenedAreNamed) {
    const RecordingRig rig;
    std::filesystem::create_directory(rig.file("folder"));
    for (const std::string& name : {rig.file("missing.txt"), rig.file("folder"), rig.file("AutoLog.txt/below"),
                                    '"' + rig.writeSettings({}) + '"'}) {
        rig.run("tarno2-console", {"/c", name});
        EXPECT_THAT(rig.autoLog(), HasSubstr("\r\nConfig file \"" + name + "\" not founded... Program aborted\r\n"));
    }
}

}  // namespace
}  // namespace tarno2::test
