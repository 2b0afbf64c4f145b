// Recordings that are killed at random moments, recovered, and checked sample by sample.

#include <algorithm>
#include <cctype>
#include <cstring>
#include <gmock/gmock.h>
#include <iostream>
#include <random>
#include <set>
#include <sstream>
#include <thread>

#include "drivers/simulator/counter_signal.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "records/mark_list.h"
#include "records/record_description.h"
#include "tests/apps/recording_rig.h"
#include "tests/core/bait_files.h"
#include "tests/support/bait.h"

namespace tarno2::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;

constexpr uint32_t kChannels = 2;
constexpr uint64_t kSecond = 1000000000;

// Records where channel 0 of the counter signal crosses zero upwards.
constexpr uint64_t kRecord = 30000;
constexpr uint64_t kPrehistory = 1000;
constexpr const char* kRecords =
    "SynchroAnalyzeMode = 2\r\nSynchroAnalogMode = 0\r\nSynchroAllSize = 30000\r\nSynchroPrehistorySize = 1000\r\n";

struct Note {
    uint64_t time = 0;     // ns
    uint64_t bytes = 0;    // given to the writer by then
    uint64_t samples = 0;  // taken by the board by then
};

std::vector<Note> notesOf(const std::string& path) {
    const std::string data = readFile(path);
    std::vector<Note> notes(data.size() / sizeof(Note));
    std::memcpy(notes.data(), data.data(), notes.size() * sizeof(Note));
    return notes;
}

uint16_t signalAt(uint64_t sample) {
    return static_cast<uint16_t>(drivers::counterWord(sample, 16));
}

/// The frame that triggers record after record.
class Triggers {
public:
    uint64_t next() {
        const auto negative = [](uint64_t frame) { return (signalAt(frame * kChannels) & 0x8000U) != 0; };
        while (!negative(frame_ - 1) || negative(frame_)) {
            ++frame_;
        }
        const uint64_t trigger = frame_;
        frame_ += kRecord + 1;  // to the end of its history, and another prehistory and a frame
        return trigger;
    }

private:
    uint64_t frame_ = kPrehistory + 1;
};

/// Checks every sample of the files; returns how many bytes they hold.
uint64_t checkSamples(const std::vector<std::string>& files, uint32_t channels, bool records) {
    constexpr uint64_t kRecordSamples = kRecord * kChannels;
    Triggers triggers;
    uint64_t place = 0;
    uint64_t offset = 0;  // from the place in the files to the sample of the signal
    for (const std::string& name : files) {
        const std::string data = readFile(name);
        EXPECT_EQ(data.size() % (channels * sizeof(uint16_t)), 0U) << name;
        for (size_t at = 0; at < data.size(); at += sizeof(uint16_t), ++place) {
            if (records && place % kRecordSamples == 0) {
                offset = (triggers.next() - kPrehistory) * kChannels - place;
            }
            uint16_t word = 0;
            std::memcpy(&word, data.data() + at, sizeof word);
            if (word != signalAt(place + offset)) {
                ADD_FAILURE() << name << ": wrong sample at " << at;
                return 0;
            }
        }
    }
    return place * sizeof(uint16_t);
}

/// The events of each file are those of its records.
void checkEvents(const std::vector<std::string>& files) {
    uint64_t number = 0;
    for (const std::string& name : files) {
        KeyValueFile file;
        ASSERT_TRUE(file.openForReading(RecordDescription::fileNameFor(name)));
        std::vector<int32_t> points(100000);
        uint32_t count = 0;
        file.readInt32Array("SynchroListPoint", points, count);
        const uint64_t recordBytes = kRecord * kChannels * sizeof(uint16_t);
        ASSERT_EQ(count, (readFile(name).size() + recordBytes - 1) / recordBytes) << name;
        for (uint32_t i = 0; i < count; ++i) {
            EXPECT_EQ(static_cast<uint64_t>(points[i]), kPrehistory * ++number) << name;
        }
    }
}

struct Way {
    double frequency;
    uint32_t cut;
    bool records;
    uint32_t killAfterMs;
    uint32_t channels = kChannels;
    uint32_t packets = 0;  // a second
};

/// The marks of which a program said that they were on the disk; the last line may be torn.
std::vector<RecordingMark> toldMarks(const std::string& output) {
    std::string lines;
    std::istringstream stream(output);
    for (std::string line; std::getline(stream, line);) {
        // On Windows the output has one more of these.
        line.resize(line.size() - (line.ends_with("\r\r") ? 1 : 0));
        const bool mark = line.ends_with('\r') && std::isdigit(static_cast<unsigned char>(line.front())) != 0;
        lines += mark ? line + '\n' : "";
    }
    const MarkList list = readMarks(marksHeader() + lines);
    EXPECT_EQ(list.problem, "") << lines.substr(0, 200);
    return list.marks;
}

/// Each of them is there, with its word, in a list that is whole.
void checkMarks(const RecordingRig& rig, const std::vector<RecordingMark>& told, bool recorded) {
    const FoundMarks found = findMarks(rig.file("run.marks.csv"));
    EXPECT_EQ(found.there, recorded && (found.there || !told.empty()));
    EXPECT_TRUE(!found.there || found.text == marksText(found.marks));
    for (const RecordingMark& mark : recorded ? told : std::vector<RecordingMark>()) {
        const auto kept = std::ranges::find(found.marks, mark.number, &RecordingMark::number);
        ASSERT_NE(kept, found.marks.end()) << mark.number;
        EXPECT_TRUE(*kept == mark || (mark.text.empty() && kept->frame == mark.frame)) << mark.number;
    }
}

/// Records, kills, recovers and checks. Returns the age of the oldest data that are missing, ns. `sources`: of the
/// marks that had to be there.
uint64_t crash(const Way& way, std::set<MarkSource>& sources) {
    const RecordingRig rig;
    layOwnFiles(rig.folder(), ".");
    const Bait bait(rig.path());
    Wish wish;
    wish.channels = way.channels;
    wish.frequency = way.frequency;
    wish.cut = way.cut;
    wish.more = way.records ? kRecords : "";
    if (way.packets > 0) {
        wish.more += "BoardMode = 4\r\nPacketFreq = " + std::to_string(way.packets) + "\r\n";
    }
    const std::string settings = rig.writeSettings(wish);
    const std::string notesFile = rig.file("notes.bin");
    {
        const ScopedEnvironment home("TARNO2_HOME", rig.path());
        const ScopedEnvironment simulator("TARNO2_SIMULATOR", "Signal=Counter;MarkEvery=5000");
        ChildProcess process(builtFile("crash_recorder", executableFolder()), {settings, notesFile},
                             rig.file("output.txt"));
        EXPECT_TRUE(waitUntil([&] { return rig.size("notes.bin") >= sizeof(Note); })) << rig.autoLog();
        std::this_thread::sleep_for(std::chrono::milliseconds(way.killAfterMs));
        process.kill();
    }
    const std::vector<RecordingMark> told = toldMarks(readFile(rig.file("output.txt")));
    const std::vector<Note> notes = notesOf(notesFile);
    const std::string printed = rig.run("tarno2-recover", {rig.path()});
    EXPECT_FALSE(rig.exists("run.tarno2-journal")) << printed;
    EXPECT_EQ(rig.run("tarno2-recover", {rig.path()}),
              "There are no unfinished recordings in \"" + rig.path() + "\".\n");
    const std::vector<std::string> files = rig.pieces();
    const uint64_t bytes = checkSamples(files, way.channels, way.records);
    checkDescriptions(files, {.channels = way.channels, .frequencyPerChannel = way.frequency / way.channels});
    if (way.records) {
        checkEvents(files);
    }
    EXPECT_EQ(bait.touched(), "");
    checkMarks(rig, told, !files.empty());
    for (const RecordingMark& mark : told) {
        sources.insert(mark.source);
    }
    // What came first and is not there had come by this note.
    const uint64_t frameBytes = way.channels * sizeof(uint16_t);
    for (const Note& note : notes) {
        const uint64_t came = way.records ? note.bytes : note.samples * sizeof(uint16_t) / frameBytes * frameBytes;
        if (came > bytes) {
            return notes.back().time - note.time;
        }
    }
    return 0;
}

/// A second until data are on their way to the disk, and what it takes them to come there.
constexpr uint64_t kMostLost = kSecond + kSecond / 10;

uint32_t killCount() {
    const auto wanted = environmentVariable("TARNO2_KILLS");
    return wanted ? static_cast<uint32_t>(std::stoul(*wanted)) : 20;
}

TEST(Crash, AtRandomMomentsCostsASecondAtMost) {
    std::mt19937 random(std::random_device{}());
    const double frequencies[] = {100.0, 20e3, 1e6, 5e6};
    const bool slow = environmentVariable("TARNO2_KILL_SLOW_BOARDS").has_value();
    uint64_t worst = 0;
    std::set<MarkSource> sources;
    for (uint32_t i = 0; i < killCount(); ++i) {
        Way way{frequencies[i % 4], i / 4 % 2, i / 8 % 2 == 1,
                std::uniform_int_distribution<uint32_t>(0, 2500)(random)};
        if (slow) {
            way = i % 2 == 0 ? Way{1.0, 0, false, 2 * way.killAfterMs, 1} : Way{1e6, 0, false, way.killAfterMs, 2, 10};
        }
        SCOPED_TRACE(testing::Message() << way.frequency << " Hz, packets " << way.packets << ", cut " << way.cut
                                        << ", records " << way.records << ", killed after " << way.killAfterMs
                                        << " ms");
        const uint64_t lost = crash(way, sources);
        EXPECT_LE(lost, kMostLost);
        worst = std::max(worst, lost);
    }
    EXPECT_TRUE(sources.contains(MarkSource::Operator) && (slow || sources.contains(MarkSource::Driver)));
    std::cout << killCount() << " kills, worst loss " << static_cast<double>(worst) / 1e6 << " ms\n";
}

TEST(Crash, TheNextStartRecoversTheFolder) {
    const RecordingRig rig;
    Wish wish;
    auto process = rig.start(wish, "Signal=Counter");
    ASSERT_TRUE(waitUntil([&] { return rig.size("run.dat") > 0; })) << rig.autoLog();
    process->kill();
    wish.fileName = "next.dat";
    wish.bytes = 4000;
    rig.record(wish);
    EXPECT_THAT(rig.autoLog(), HasSubstr("Recording \"" + rig.file("run.dat") + "\" was recovered. Frames: "));
    EXPECT_EQ(checkRecording(rig.pieces(), {}) * 2, rig.size("run.dat"));
    EXPECT_EQ(checkRecording({rig.file("next.dat")}, {}), 2000U);
    EXPECT_FALSE(rig.exists("run.tarno2-journal"));
}

TEST(TwoRecorders, TheSecondOfOneNameIsRefusedAndTheFirstGoesOn) {
    const RecordingRig rig;
    Wish wish;
    auto first = rig.start(wish, "Signal=Counter");
    ASSERT_TRUE(waitUntil([&] { return rig.size("run.dat") > 0; })) << rig.autoLog();
    const RecordingRig other;
    Wish same = wish;
    for (const char* name : {"run.dat", "run_3.dat", "run.bin"}) {
        same.fileName = rig.file(name);
        other.record(same, "Signal=Counter");
        EXPECT_THAT(other.autoLog(),
                    AllOf(HasSubstr("Attention: Error in file name"), HasSubstr("is in use by another program.")))
            << name;
    }
    EXPECT_THAT(rig.run("tarno2-recover", {rig.path()}, 1), HasSubstr("is still being written by another program."));
    if (!first->ask(ChildProcess::Request::Terminate)) {
        first->kill();
        rig.run("tarno2-recover", {rig.path()});
    }
    EXPECT_EQ(first->waitForEnd(kGuard).has_value(), true);
    EXPECT_EQ(checkRecording(rig.pieces(), {}) * 2, rig.size("run.dat"));
    EXPECT_FALSE(rig.exists("run_old1.dat"));
}

// Started at once with the same settings and no name: each finds a name of its own.
TEST(TwoRecorders, WithGeneratedNamesBothRecord) {
    const TemporaryFolder documents;
    const ScopedEnvironment folder("XDG_DOCUMENTS_DIR", documents.path());
    std::vector<RecordingRig> rigs(4);
    std::vector<std::unique_ptr<ChildProcess>> processes;
    processes.reserve(rigs.size());
    Wish wish;
    wish.fileName.clear();
    wish.bytes = 400000;
    for (const RecordingRig& rig : rigs) {
        processes.push_back(rig.start(wish, "Signal=Counter"));
    }
    for (const auto& process : processes) {
        EXPECT_EQ(process->waitForEnd(kGuard), 0);
    }
    std::vector<std::string> data;
    for (const RecordingRig& rig : rigs) {
        const std::string log = rig.autoLog();
        const std::string before = "Save to file \"";
        const size_t found = log.find(before);
        if (found == std::string::npos) {
            ADD_FAILURE() << log;
            continue;
        }
        const size_t begin = found + before.size();
        data.push_back(log.substr(begin, log.find('"', begin) - begin));
        EXPECT_EQ(checkRecording({data.back()}, {}), 200000U) << data.back();
        // On Windows they lie in the user's own documents.
        removeFile(data.back());
        removeFile(RecordDescription::fileNameFor(data.back()));
    }
    std::sort(data.begin(), data.end());
    EXPECT_EQ(std::unique(data.begin(), data.end()), data.end());
}

TEST(RecoverProgram, SaysWhatItDoesAndWhatIsWrong) {
    const RecordingRig rig;
    EXPECT_THAT(rig.run("tarno2-recover", {"--help"}), HasSubstr("FILE-OR-FOLDER"));
    EXPECT_THAT(rig.run("tarno2-recover", {}, 2), HasSubstr("required"));
    EXPECT_THAT(rig.run("tarno2-recover", {rig.file("none.dat")}, 2), HasSubstr("there is no such file or folder"));
    rig.folder().write("run.dat", "data");
    EXPECT_THAT(rig.run("tarno2-recover", {rig.file("run.dat")}), HasSubstr("no unfinished recording"));
    rig.folder().write("run.journal", "A diary\n");
    EXPECT_THAT(rig.run("tarno2-recover", {rig.file("run.dat")}), HasSubstr("no unfinished recording"));
    EXPECT_THAT(rig.run("tarno2-recover", {rig.path()}), HasSubstr("There are no unfinished recordings in"));
    rig.folder().write("run.tarno2-journal", "Tarno2 journal 1\n");
    EXPECT_THAT(rig.run("tarno2-recover", {rig.file("run.dat")}, 1),
                HasSubstr("is no journal that this version knows"));
    EXPECT_EQ(readFile(rig.file("run.dat")), "data");
    EXPECT_EQ(readFile(rig.file("run.tarno2-journal")), "Tarno2 journal 1\n");
}

}  // namespace
}  // namespace tarno2::test
