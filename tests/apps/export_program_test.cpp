// tarno2-export on recordings of the simulated board and on invalid input.

#include <filesystem>
#include <gmock/gmock.h>

#include "records/conversion_inputs.h"
#include "records/record_description.h"
#include "tests/apps/recording_rig.h"

namespace tarno2::test {
namespace {

using testing::HasSubstr;

class ExportProgram : public testing::Test {
protected:
    /// Runs the program on run.dat or another file of the rig; returns what it said.
    std::string convert(std::vector<std::string> arguments, int expectedStatus = 0,
                        const std::string& data = "run.dat") {
        arguments.insert(arguments.begin(), rig.file(data));
        return rig.run("tarno2-export", arguments, expectedStatus);
    }
    void recordFrames(uint64_t bytes) {
        Wish wish;
        wish.bytes = bytes;
        rig.record(wish);
    }
    /// Changes the description of run.dat.
    void describe(const std::string& from, const std::string& to) {
        std::string text = readFile(rig.file("run.txt"));
        const size_t at = text.find(from);
        ASSERT_NE(at, std::string::npos) << text;
        text.replace(at, from.size(), to);
        rig.folder().write("run.txt", text);
    }

    RecordingRig rig;
};

TEST_F(ExportProgram, GivesTheRecordedNumbers) {
    recordFrames(4000);
    EXPECT_EQ(convert({"--first-column", "samples", "--voltage-precision", "0", "--divider", ";"}), "");
    const std::string text = readFile(rig.file("run.csv"));
    const std::string data = readFile(rig.file("run.dat"));
    const ConversionInputs inputs = conversionInputs(readRecordedKeys(rig.file("run.txt")), {});
    std::string expected;
    for (size_t i = 0; i + 3 < data.size(); i += 4) {
        expected += std::to_string(i / 4);
        for (size_t sample : {i, i + 2}) {
            const auto word =
                static_cast<uint32_t>(static_cast<uint8_t>(data[sample]) | static_cast<uint8_t>(data[sample + 1]) << 8);
            expected += ';' + std::to_string(inputs.code(word));
        }
        expected += "\r\n";
    }
    EXPECT_EQ(text, expected);

    EXPECT_EQ(convert({"-o", rig.file("volts.txt"), "--first-column=clock", "--data=volts", "--decimal", "comma",
                       "--divider-count", "2", "--max-lines", "5"}),
              "");
    EXPECT_EQ(readFile(rig.file("volts_9.txt")).substr(0, 16), "0:0:0:1,800000\t\t");
    EXPECT_FALSE(rig.exists("volts_10.txt"));
}

TEST_F(ExportProgram, TakesOptionsForWhatTheDescriptionLacks) {
    rig.folder().write("run.dat", std::string("\x00\x80\xFF\x7F\x00\x00\x00", 7));

    EXPECT_THAT(convert({}, 2), HasSubstr("run.txt: no description; DataFormat can be given with --width"));
    EXPECT_THAT(convert({"--width", "2"}, 2), HasSubstr("ChannelNumber can be given with --channel-count"));
    EXPECT_THAT(convert({"--width", "2", "--channels", "1", "--data", "volts"}, 2),
                HasSubstr("ChannelsRange can be given with --range"));
    EXPECT_THAT(convert({"--width", "2", "--channels", "1", "--first-column", "seconds"}, 2),
                HasSubstr("Frequency can be given with --frequency"));
    EXPECT_FALSE(rig.exists("run.csv"));
    EXPECT_EQ(convert({"--width", "2", "--channels", "1", "--data", "volts", "--range", "5:-5", "--voltage-precision",
                       "3", "--quiet"}),
              "");
    EXPECT_EQ(readFile(rig.file("run.csv")), "\t-5.000\r\n\t5.000\r\n\t0.000\r\n");
    EXPECT_THAT(convert({"--width", "2", "--channels", "1", "--unsigned", "--voltage-precision", "0"}),
                HasSubstr("1 bytes after the last whole frame were left out"));
    EXPECT_EQ(readFile(rig.file("run.csv")), "\t32768\r\n\t32767\r\n\t0\r\n");
}

TEST_F(ExportProgram, PutsMarksIntoTheLinesOfTheirPiece) {
    Wish wish;
    wish.bytes = kMebibyte + 4000;
    wish.cut = 1;
    rig.record(wish, "RealTime=0;Signal=Counter;MarkEvery=262000");
    EXPECT_EQ(convert({"--marks", "--first-column=samples", "--voltage-precision=0"}, 0, "run.dat"), "");
    EXPECT_THAT(readFile(rig.file("run.csv")), HasSubstr("\tMark 1\r\n262001\t"));
    // The first piece has 262144 frames.
    std::string text = readFile(rig.file("run.marks.csv"));
    rig.folder().write("run.marks.csv", text +
                                            "2,262146,2026-01-01T00:00:00.000000Z,line,\r\n3,262146,"
                                            "2026-01-01T00:00:00.000000Z,operator,valve\r\n");
    EXPECT_EQ(convert({"--marks", "--first-column=samples", "--voltage-precision=0"}, 0, "run_1.dat"), "");
    EXPECT_THAT(readFile(rig.file("run_1.csv")), HasSubstr("\t2; valve\r\n3\t"));
    std::filesystem::remove(rig.file("run.marks.csv"));
    EXPECT_THAT(convert({"--marks"}, 0, "run_1.dat"), HasSubstr("warning: "));
}

TEST_F(ExportProgram, TakesNamesAndUnitsFromThePassportOfAnyPiece) {
    Wish wish;
    wish.bytes = kMebibyte + 4000;
    wish.cut = 1;
    wish.more = "ChannelsName = \"inlet\"\r\nChannelsUnit = \";bar\"\r\nChannelsFactor = 1, 0\r\n";
    rig.record(wish);
    EXPECT_THAT(rig.autoLog(), HasSubstr("Value ChannelsFactor invalid... Program aborted"));
    EXPECT_FALSE(rig.exists("run.dat"));
    wish.more = "ChannelsName = \"inlet\"\r\nChannelsUnit = \";bar\"\r\nChannelsFactor = 1, -1000\r\n";
    rig.record(wish);
    const std::vector<std::string> units = {"--data=units", "--header", "--voltage-precision=1", "--divider=;"};
    EXPECT_EQ(convert(units, 0, "run_1.dat"), "");
    const std::string text = readFile(rig.file("run_1.csv"));
    EXPECT_THAT(text, testing::StartsWith(";inlet [V];Channel 1 [bar]"));
    EXPECT_EQ(convert({"--data=volts", "--voltage-precision=4", "--divider=;"}, 0, "run_1.dat"), "");
    const std::string volts = readFile(rig.file("run_1.csv"));
    const auto last = [](const std::string& line, size_t column) {
        size_t at = 0;
        for (size_t i = 0; i <= column; ++i) {
            at = line.find(';', at) + 1;
        }
        return std::stod(line.substr(at));
    };
    EXPECT_NEAR(last(text.substr(text.find('\n')), 1), -1000.0 * last(volts, 1), 0.11);

    rig.folder().write("run.json", "no passport");
    EXPECT_THAT(convert(units),
                AllOf(HasSubstr("warning: "), HasSubstr("run.json: "), HasSubstr("; the values are volts")));
    EXPECT_THAT(readFile(rig.file("run.csv")), testing::StartsWith(";Channel 0 [V];Channel 1 [V]"));
    std::filesystem::remove(rig.file("run.json"));
    EXPECT_THAT(convert(units), HasSubstr("run.json: there is no passport; the values are volts"));
}

TEST_F(ExportProgram, NamesTheKeyThatIsDamagedAndWarnsOfWhatIsOdd) {
    recordFrames(4000);
    describe("DataFormat = 2 ", "DataFormat = 3 ");
    EXPECT_THAT(convert({}, 2), HasSubstr("run.txt: DataFormat is missing or does not fit"));
    describe("DataFormat = 3 ", "DataFormat = 4 ");
    EXPECT_THAT(convert({}), HasSubstr("run.dat holds 500 frames, but its description counts 1000"));
    describe("DataFormat = 4 ", "DataFormat = 2 ");
    describe("PacketMode = 0", "PacketMode = 1");
    EXPECT_EQ(convert({}), "");
    EXPECT_THAT(convert({"--first-column", "seconds"}), HasSubstr("without --packet-frequency"));
    EXPECT_EQ(convert({"--first-column", "seconds", "--packet-frequency", "10", "--time-precision", "2"}), "");
    EXPECT_THAT(readFile(rig.file("run.csv")), HasSubstr("\r\n0.10\t"));
    describe("SynchroEnable = 0", "SynchroEnable = 1");
    EXPECT_EQ(convert({"--first-column", "samples"}), "");
    EXPECT_THAT(convert({"--first-column", "clock", "--packet-frequency", "10"}),
                HasSubstr("runs on without the gaps"));
    describe("Frequency = ", "Frequenzy = ");
    EXPECT_EQ(convert({"--first-column", "samples"}), "");
    EXPECT_THAT(convert({"--first-column", "clock"}, 2), HasSubstr("Frequency is missing"));
}

TEST_F(ExportProgram, TellsWhyADescriptionCanNotBeRead) {
    rig.folder().write("run.dat", std::string(4, '\0'));
    std::filesystem::create_directory(rig.file("run.txt"));
    EXPECT_THAT(convert({}, 2),
                AllOf(HasSubstr("run.txt: cannot be read: "), HasSubstr("; DataFormat can be given with "),
                      Not(HasSubstr("cannot be read: ;"))));
}

TEST_F(ExportProgram, NamesTheFileThatTheDiskHasNoRoomForAndKeepsTheOnesBefore) {
    if (!std::filesystem::exists("/dev/full")) {
        GTEST_SKIP() << "no device here that is always full";
    }
    rig.folder().write("run.dat", std::string(600, '\0'));
    std::filesystem::create_symlink("/dev/full", rig.file("run_2.csv"));
    const std::string said = convert({"--width", "2", "--channels", "1", "--max-lines", "100"}, 2);
    EXPECT_THAT(said, HasSubstr("run_2.csv: cannot be written: "));
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
    EXPECT_EQ(readFile(rig.file("run_1.csv")).size(), size_t{100} * 11);
}

TEST_F(ExportProgram, RefusesBadUseInOneLine) {
    recordFrames(400);
    const std::string data = readFile(rig.file("run.dat"));
    const std::vector<std::vector<std::string>> cases = {
        {"--first-column", "years"},
        {"--data", "amperes"},
        {"--time-precision", "10"},
        {"--divider", "ab"},
        {"--divider-count", "0"},
        {"--divider-count", "100"},
        {"--max-lines", "-1"},
        {"--width", "3"},
        {"--range", "5"},
        {"--channels", "-2"},
        {"--code-shift", "x"},
        {"--digital-lines", "-1"},
        {"--no-such-option"},
        {"--signed", "--unsigned"},
        {"second.dat"},
        {"--format", "mp3"},
        {"--bits", "24"},
        {"--format", "wav", "--header"},
        {"--format", "edf", "--data", "volts"},
        {"--from", "x"},
        {"--every", "0"},
        {"--from", "9", "--to", "9"},
        {"--channels", "nobody"},
        {"-", "--max-lines", "200"},
        {"-", "-o", "x.csv"},
        {"--from", "100000"},
    };
    for (const auto& arguments : cases) {
        const std::string said = convert(arguments, 2);
        EXPECT_THAT(said, testing::StartsWith("tarno2-export: ")) << arguments.front();
        EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
        EXPECT_LT(said.size(), 160U) << said;
    }
    EXPECT_FALSE(rig.exists("run.csv"));
    EXPECT_THAT(rig.run("tarno2-export", {}, 2), HasSubstr("RECORDING is required"));
    EXPECT_THAT(rig.run("tarno2-export", {"--help"}), HasSubstr("--packet-frequency"));

    EXPECT_THAT(convert({"-o", rig.file("run.dat")}, 2), HasSubstr("would replace the recording"));
    EXPECT_EQ(readFile(rig.file("run.dat")), data);
    EXPECT_THAT(convert({"-o", rig.file("run.dat/x.csv")}, 2), HasSubstr("x.csv: cannot be created"));
    EXPECT_THAT(convert({"--width", "2", "--channels", "2"}, 2, "none.dat"), HasSubstr("none.dat: cannot be read"));
}

TEST_F(ExportProgram, LeavesWholeLinesWhenItIsAskedToEnd) {
    rig.folder().write("run.dat", std::string(size_t{256} << 20, '\0'));
    ChildProcess process(
        builtFile("tarno2-export"),
        {rig.file("run.dat"), "--width", "2", "--channels", "1", "--first-column", "samples", "--divider-count", "20"},
        rig.file("said"));
    ASSERT_TRUE(waitUntil([&] { return rig.size("run.csv") > 0; }));
    if (!process.ask(ChildProcess::Request::Interrupt)) {
        GTEST_SKIP() << "no signal can be sent to another program here";
    }
    EXPECT_EQ(process.waitForEnd(kGuard), 1);
    const std::string text = readFile(rig.file("run.csv"));
    const auto lines = std::count(text.begin(), text.end(), '\n');
    EXPECT_EQ(text.substr(text.size() - 2), "\r\n");
    EXPECT_EQ(text.substr(text.rfind('\n', text.size() - 2) + 1),
              std::to_string(lines - 1) + std::string(20, '\t') + "0.000000\r\n");
}

}  // namespace
}  // namespace tarno2::test
