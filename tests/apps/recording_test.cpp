// What a recording leaves on the disk when all goes well.

#include <cstring>
#include <filesystem>
#include <gmock/gmock.h>
#include <numeric>
#include <thread>

#include "platform/file.h"
#include "platform/paths.h"
#include "platform/socket.h"
#include "tests/apps/recording_rig.h"

namespace tarno2::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

TEST(Recording, OfTheUsualSignalsIsDescribed) {
    const RecordingRig rig;
    Wish wish;
    wish.board = 1;
    wish.channels = 3;
    wish.frequency = 30000;
    wish.bytes = 60000;
    wish.more = "ChannelsGain = 1, 2, 10\r\n";
    rig.record(wish, "RealTime=0");
    EXPECT_THAT(rig.autoLog(), AllOf(HasSubstr("\r\nConfig read OK...\r\n"), HasSubstr("\r\nConsole mode ENABLED "),
                                     HasSubstr("\r\nSave to file \""), HasSubstr("\r\nStop - By stop measuring\r\n"),
                                     Not(HasSubstr("Attention"))));
    ASSERT_EQ(rig.size("run.dat"), 60000U);
    checkDescriptions({rig.file("run.dat")}, {.channels = 3, .frequencyPerChannel = 10000});
    const std::string description = readFile(rig.file("run.txt"));
    EXPECT_THAT(description, HasSubstr("\r\nDataFormat = 2 , 2 , 65532 , 14 , 0 , 3 , 2 , 1 \r\n"));
    EXPECT_THAT(description, HasSubstr("ChannelsRange = 5.000000 , -5.000000 ,\\\r\n"));
    EXPECT_THAT(description, HasSubstr("0.500000 , -0.500000 \r\n"));

    // The channels carry signals: none of them stands still.
    const std::string data = readFile(rig.file("run.dat"));
    for (size_t channel = 0; channel < 3; ++channel) {
        int16_t lowest = 32767;
        int16_t highest = -32768;
        for (size_t at = channel * 2; at + 1 < data.size(); at += 6) {
            int16_t word = 0;
            std::memcpy(&word, data.data() + at, sizeof word);
            lowest = std::min(lowest, word);
            highest = std::max(highest, word);
        }
        EXPECT_GT(highest - lowest, 1000) << "channel " << channel;
    }
}

TEST(Recording, KeepsEverySampleOfEveryBoard) {
    const struct {
        uint32_t board;
        uint32_t channels;
        double frequency;
        uint32_t bytesPerSample;
        uint32_t bits;
        const char* settings;
    } cases[] = {
        {1, 16, 1.6e6, 2, 16, ""},
        {1, 1, 1000, 2, 16, ""},
        {2, 7, 7e6, 2, 16, ";RingTakesWish=1"},
        {3, 5, 400e3, 4, 32, ""},
        {4, 3, 150e3, 2, 12, ""},
        {2, 2, 1e6, 2, 16, ";AnswerCount=0"},
        {2, 2, 1e6, 2, 16, ";AnswerMaxBuffer=0"},
        {2, 3, 3e6, 2, 16, ";AnswerMaxBuffer=0;AnswerMaxBufferOld=0"},
        {2, 3, 3e6, 2, 16, ";MaxBuffer=100"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE("board " + std::to_string(each.board) + each.settings);
        const RecordingRig rig;
        Wish wish;
        wish.board = each.board;
        wish.channels = each.channels;
        wish.frequency = each.frequency;
        wish.bytes = 2520 * uint64_t{each.channels} * each.bytesPerSample;
        rig.record(wish, std::string("RealTime=0;Signal=Counter") + each.settings);
        const Expected expected{.channels = each.channels,
                                .frequencyPerChannel = each.frequency / each.channels,
                                .bytesPerSample = each.bytesPerSample,
                                .counterBits = each.bits};
        EXPECT_EQ(checkRecording(rig.pieces(), expected), 2520 * each.channels) << rig.autoLog();
    }
}

TEST(Recording, OfAllChannelsIsWholeAcrossItsPieces) {
    const RecordingRig rig;
    Wish wish;
    wish.channels = 160;
    wish.frequency = 16e6;
    wish.cut = 16;
    wish.bytes = 256 * kMebibyte / 320 * 320;
    rig.record(wish);
    const std::vector<std::string> pieces = rig.pieces();
    const Expected expected{.channels = 160, .frequencyPerChannel = 100e3};
    const uint64_t samples = checkRecording(pieces, expected);
    // The last block is left out when it would not fit the limit; a block is at most half a ring.
    EXPECT_LE(samples * 2, wish.bytes);
    EXPECT_GT(samples * 2, wish.bytes - 2 * 2 * numberAfter(rig.debugLog(), "Max Buffer Size = "));
    ASSERT_GE(pieces.size(), 16U);
    for (size_t i = 0; i + 1 < pieces.size(); ++i) {
        EXPECT_EQ(std::filesystem::file_size(pieces[i]), 16 * kMebibyte / 320 * 320) << pieces[i];
    }
}

TEST(Recording, KeepsTheFirstFrameOfSoMany) {
    const RecordingRig rig;
    Wish wish;
    wish.bytes = 4000;
    wish.more = "Decimation = 3\r\n";
    rig.record(wish);
    checkDescriptions(rig.pieces(), {.frequencyPerChannel = 5e5 / 3});
    const std::string data = readFile(rig.file("run.dat"));
    ASSERT_EQ(data.size(), 4000U);
    for (size_t i = 0; i < 2000; ++i) {
        uint16_t word = 0;
        std::memcpy(&word, data.data() + i * 2, sizeof word);
        ASSERT_EQ(word, i / 2 * 6 + i % 2) << i;
    }
}

TEST(Recording, OfSpeechThatIsPlayedIsTheSpeechItself) {
    const std::string folder = "/usr/share/sounds/alsa";
    if (!isDirectory(folder)) {
        GTEST_SKIP() << "no speech here: " << folder << " comes with alsa-utils";
    }
    for (const char* name : {"Front_Center.wav", "Rear_Left.wav", "Side_Right.wav"}) {
        SCOPED_TRACE(name);
        const RecordingRig rig;
        const std::string wav = readFile(folder + "/" + name);
        const std::string samples = wav.substr(wav.find("data") + 8);
        uint32_t rate = 0;
        uint16_t channels = 0;
        std::memcpy(&channels, wav.data() + 22, sizeof channels);
        std::memcpy(&rate, wav.data() + 24, sizeof rate);
        ASSERT_GT(samples.size(), 10000U);
        const ScopedEnvironment file("TARNO2_REPLAY_FILE", folder + "/" + name);
        const ScopedEnvironment settings("TARNO2_REPLAY", "RealTime=0");
        Wish wish;
        wish.driver = "Replay";
        wish.board = 1;
        wish.channels = channels;
        wish.frequency = rate * channels;
        wish.bytes = samples.size();
        rig.record(wish);
        EXPECT_TRUE(readFile(rig.file("run.dat")) == samples) << rig.autoLog();
        checkDescriptions(rig.pieces(),
                          {.driver = "Replay", .channels = channels, .frequencyPerChannel = static_cast<double>(rate)});
        EXPECT_THAT(readFile(rig.file("run.txt")), HasSubstr("DataFormat = 2 , 0 , 65535 , 16 , 0 , 0 , 0 , 1 "));
    }
}

TEST(Recording, RunsFollowEachOtherInTheLogAndKeepTheFilesBefore) {
    const RecordingRig rig;
    Wish wish;
    wish.fileName = "run";  // the extension is added
    for (const uint64_t bytes : std::initializer_list<uint64_t>{4000, 8000, 12000}) {
        wish.bytes = bytes;
        rig.record(wish);
    }
    const std::string log = rig.autoLog();
    size_t starts = 0;
    for (size_t at = log.find("Console start at: "); at != std::string::npos;
         at = log.find("Console start at: ", at + 1)) {
        ++starts;
    }
    EXPECT_EQ(starts, 3U);
    EXPECT_THAT(log, HasSubstr("Attention: Earlier recording of this name was renamed to \""));
    const struct {
        const char* name;
        uint64_t samples;
    } files[] = {{"run.dat", 6000}, {"run_old2.dat", 4000}, {"run_old1.dat", 2000}};
    for (const auto& each : files) {
        EXPECT_EQ(checkRecording({rig.file(each.name)}, {}), each.samples) << each.name;
    }
}

TEST(Recording, WithoutANameGetsOneInTheDocuments) {
    if (kPathSeparator == '\\') {
        GTEST_SKIP() << "the system's own documents folder would be written to";
    }
    const RecordingRig rig;
    const ScopedEnvironment home("HOME", rig.path());
    const ScopedEnvironment documents("XDG_DOCUMENTS_DIR", rig.file("papers"));
    const ScopedEnvironment registry("TARNO2_REGISTRY", joinPath(TARNO2_BIN, "registry.d"));
    Wish wish;
    wish.fileName = "";
    wish.bytes = 4000;
    rig.record(wish);
    rig.record(wish);
    size_t recordings = 0;
    for (const auto& entry : std::filesystem::directory_iterator(rig.file("papers/Data"))) {
        if (entry.path().extension() == ".dat") {
            EXPECT_THAT(entry.path().filename().string(), testing::MatchesRegex("file_20.*_n[0-9]+\\.dat"));
            EXPECT_EQ(checkRecording({entry.path().string()}, {}), 2000U);
            ++recordings;
        }
    }
    EXPECT_EQ(recordings, 2U);
    EXPECT_THAT(rig.autoLog(), HasSubstr("Parameters \"FileName\" absent - Generated default"));
}

/// Records with a driver that was built elsewhere: a copy of the program, and beside it a folder with nothing but the
/// driver and its registry text. The program's exit status.
int recordWithExample(const RecordingRig& rig, const std::string& folder, const std::string& name, const Wish& wish) {
    const std::string program = rig.file(fileNameOf(builtFile("tarno2-console")));
    std::filesystem::copy_file(builtFile("tarno2-console"), program);
    std::filesystem::create_directory(rig.file("registry.d"));
    for (const std::string& file : {name + (kPathSeparator == '\\' ? ".dll" : ".so"), name + ".reg"}) {
        std::filesystem::copy_file(joinPath(folder, file), rig.file("registry.d/" + file));
    }
    return ChildProcess(program, {"/c", rig.writeSettings(wish)}, rig.file("output.txt"))
        .waitForEnd(kGuard)
        .value_or(-1);
}

TEST(Recording, OfADriverThatWasBuiltElsewhereAndDroppedIn) {
    const std::string folder = EXAMPLES "/example";
    if (!fileExists(joinPath(folder, "ExampleDriver.reg"))) {
        GTEST_SKIP() << "ctest builds it before this test: " << folder;
    }
    const RecordingRig rig;
    Wish wish;
    wish.driver = "Example";
    wish.board = 1;
    wish.channels = 3;
    wish.frequency = 300000;
    wish.bytes = 180000;
    ASSERT_EQ(recordWithExample(rig, folder, "ExampleDriver", wish), 0);
    ASSERT_EQ(rig.size("run.dat"), 180000U) << rig.autoLog();
    checkDescriptions(rig.pieces(), {.driver = "Example", .channels = 3, .frequencyPerChannel = 100e3});
    const std::string data = readFile(rig.file("run.dat"));
    for (size_t i = 0; i < 90000; ++i) {
        uint16_t word = 0;
        std::memcpy(&word, data.data() + i * 2, sizeof word);
        ASSERT_EQ(word, i / 3 % 1000 + i % 3 * 1000) << i;
    }
}

TEST(Recording, OfAnInstrumentThatClosesItsConnectionOrNeverAnswers) {
    const std::string folder = EXAMPLES "/example-tcp";
    if (!fileExists(joinPath(folder, "TcpDriver.reg"))) {
        GTEST_SKIP() << "ctest builds it before this test: " << folder;
    }
    TcpListener listener;
    ASSERT_TRUE(listener.open({"127.0.0.1", 0}).ok());
    const std::string port = std::to_string(listener.localPort());
    Wish wish;
    wish.driver = "ExampleTcp";
    wish.board = 1;
    wish.frequency = 1000;
    wish.bytes = 100000;
    wish.more = "DriverSettings = \"Port=" + port + "\"";
    std::vector<int16_t> sent(2 * 777);
    std::iota(sent.begin(), sent.end(), int16_t{-300});
    std::thread instrument([&] {
        TcpStream stream;
        EXPECT_EQ(listener.accept(stream, 60000).end, ReadEnd::Data);
        EXPECT_TRUE(stream.write(sent.data(), sent.size() * 2, 60000).ok());
    });
    const RecordingRig rig;
    EXPECT_EQ(recordWithExample(rig, folder, "TcpDriver", wish), 0);
    instrument.join();
    EXPECT_THAT(rig.autoLog(), HasSubstr("Stop - By end of source"));
    EXPECT_EQ(readFile(rig.file("run.dat")), std::string(reinterpret_cast<const char*>(sent.data()), sent.size() * 2));

    TcpStream callers[4];  // whom nobody answers, so that the next one waits
    for (TcpStream& caller : callers) {
        static_cast<void>(caller.connect({"127.0.0.1", listener.localPort()}, 100));
    }
    const RecordingRig silent;
    recordWithExample(silent, folder, "TcpDriver", wish);
    EXPECT_THAT(silent.autoLog(), HasSubstr("127.0.0.1 does not answer on port " + port + " within 3 s."));
}

TEST(Recording, HasTheSignalViewBesideTheProgramWhateverTheRegistryLists) {
    if (kPathSeparator == '\\' || !fileExists(joinPath(TARNO2_BIN, "scopera.so"))) {
        GTEST_SKIP() << "no registry of the test's own, or a program without windows";
    }
    const RecordingRig rig;
    std::filesystem::create_directory(rig.file("registry.d"));
    rig.folder().write("registry.d/simulator.reg",
                       "REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Kestrel Lines LTD\\Drivers\\1.0\\Simulator]\r\n"
                       "\"path\"=\"" TARNO2_BIN "/simulator.so\"\r\n");
    const ScopedEnvironment registry("TARNO2_REGISTRY", rig.file("registry.d"));
    const ScopedEnvironment simulator("TARNO2_SIMULATOR", "RealTime=0");
    const ScopedEnvironment screen("QT_QPA_PLATFORM", "offscreen");
    Wish wish;
    wish.bytes = 4000;
    wish.more = "DebugMode = 1";
    rig.run("Tarno2", {"/c", rig.writeSettings(wish)});
    EXPECT_THAT(rig.debugLog(), HasSubstr("Scoper load ok"));
}

TEST(ProgramLanguage, IsThatOfTheLocale) {
    if (kPathSeparator != '/') {
        GTEST_SKIP() << "the locale of a Windows program is not told by its environment";
    }
    const RecordingRig rig;
    const std::pair<const char*, const char*> cases[] = {{"ru_RU.UTF-8", "Использование программы: \n"},
                                                         {"en_GB.UTF-8", "Usage program: \n"},
                                                         {"de_DE.UTF-8", "Usage program: \n"}};
    for (const auto& [locale, usage] : cases) {
        const ScopedEnvironment environment("LC_ALL", locale);
        EXPECT_THAT(rig.run("Tarno2", {"/?"}), HasSubstr(usage));
    }
    const ScopedEnvironment russian("LC_ALL", "ru_RU.UTF-8");
    Wish wish;
    wish.bytes = 4000;
    wish.frequency = 1000.5;
    rig.record(wish);
    EXPECT_THAT(rig.autoLog(), HasSubstr("Frequency = 1000.500000\r\n")) << "what the log itself says stays";
    EXPECT_EQ(rig.size("run.dat"), 4000U);
}

}  // namespace
}  // namespace tarno2::test
