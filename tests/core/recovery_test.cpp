#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "config/files/recording_name.h"
#include "core/storage/data_writer.h"
#include "core/storage/recovery_thread.h"
#include "language/language_table.h"
#include "platform/event.h"
#include "platform/paths.h"
#include "tests/core/rig.h"

namespace tarno2::test {
namespace {

using Outcome = RecoveryReport::Outcome;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr uint64_t kFrame = 6;
constexpr uint64_t kRecord = 10 * kFrame;

WriterSetup setupFor(const std::string& name) {
    WriterSetup setup;
    setup.fileName = name;
    setup.channelCount = 3;
    setup.facts.driverName = "Board \xC0 of; \"quotes\"";
    setup.facts.totalFrequency = 1e6 / 3.0;
    setup.facts.packetMode = true;
    setup.facts.packetFrequency = 200.7;
    setup.facts.layout = {2, 2, 0xFFFC, 0, 0, 3, 0, 1};
    setup.facts.ranges.assign(3, {10.0 / 3.0, -0.1, 5.0F});
    return setup;
}

std::vector<SynchroEvent> eventsFrom(uint64_t number, size_t count) {
    std::vector<SynchroEvent> events(count, {0, 4, 6, 1, 1, 2, 0.1});
    for (SynchroEvent& event : events) {
        event.point = 4 * ++number;
    }
    return events;
}

/// Records so many bytes as the program does, with a known create time of the first piece.
void record(const WriterSetup& setup, uint64_t bytes, bool records) {
    RecordDescription description;
    DataWriter writer;
    ASSERT_EQ(writer.open(setup, description), 0) << writer.openError();
    writer.setCreateTime({2026, 2, 3, 4, 5, 6, 7, 8});
    const std::string data = streamBytes(0, bytes / 2, 2);
    const auto* from = reinterpret_cast<const std::byte*>(data.data());
    const auto events = eventsFrom(0, records ? (bytes + kRecord - 1) / kRecord : 0);
    ASSERT_EQ(writer.Write(from, bytes, records ? kRecord : kFrame, events), 0);
    ASSERT_TRUE(writer.Close());
}

/// What a program leaves that ends while it writes this piece.
void leaveJournal(const WriterSetup& setup, uint32_t piece, const LocalTime& time, bool records, uint64_t events = 0) {
    RecordingJournal journal;
    JournalState state = setup.journalState();
    ASSERT_TRUE(journal.create(RecordingName(setup.fileName).journal(), state).ok());
    state.piece.emplace().number = piece;
    state.piece->createTime = time;
    if (records) {
        state.piece->recordBytes = kRecord;
        state.piece->firstEvent = eventsFrom(events, 1).front();
    }
    ASSERT_TRUE(journal.save(state).ok());
}

void append(const std::string& name, const std::string& data) {
    File file;
    ASSERT_TRUE(file.open(name, FileMode::OpenAlways, FileAccess::Write, FileShare::ReadWrite).ok());
    uint64_t end = 0;
    size_t done = 0;
    ASSERT_TRUE(file.size(end).ok() && file.seek(end).ok() && file.write(data.data(), data.size(), done).ok());
}

TEST(Recovery, LeavesWhatARecordingThatEndedThereLeaves) {
    const struct {
        const char* what;
        uint64_t bytes;
        uint64_t pieceBytes;
        bool records;
        std::string torn;  // behind the last frame
        bool halfDescription;
    } cases[] = {
        {"whole frames", 60, 0, false, "", false},
        {"a torn frame", 60, 0, false, "12345", false},
        {"half a description", 60, 0, false, "", true},
        {"records", 4 * kRecord, 0, true, "1", false},
        {"the last record is torn", 3 * kRecord + kFrame, 0, true, "12", true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const TemporaryFolder folder;
        const WriterSetup setup = setupFor(folder.file("run.dat"));
        record(setup, c.bytes, c.records);
        const std::string data = readFile(setup.fileName);
        const std::string description = readFile(folder.file("run.txt"));
        ASSERT_EQ(listDirectory(folder.path()).size(), 2U) << "the journal is gone";

        append(setup.fileName, c.torn);
        removeFile(folder.file("run.txt"));
        if (c.halfDescription) {
            folder.write("run.txt", description.substr(0, 100));
        }
        leaveJournal(setup, 0, {2026, 2, 3, 4, 5, 6, 7, 8}, c.records);
        const auto reports = recoverFolder(folder.path());
        ASSERT_EQ(reports.size(), 1U);
        EXPECT_EQ(reports[0].outcome, Outcome::Recovered) << reports[0].problem;
        EXPECT_EQ(reports[0].frames, data.size() / kFrame);
        EXPECT_EQ(readFile(setup.fileName), data);
        EXPECT_EQ(readFile(folder.file("run.txt")), description);
        EXPECT_THAT(listDirectory(folder.path()), ElementsAre("run.dat", "run.txt"));
    }
}

TEST(Recovery, FinishesTheLastPieceAndKeepsTheOthers) {
    const TemporaryFolder folder;
    WriterSetup setup = setupFor(folder.file("run.dat"));
    setup.pieceBytes = 2 * kRecord;
    record(setup, 5 * kRecord, true);
    const std::string last = readFile(folder.file("run_2.txt"));
    const std::string first = readFile(folder.file("run.txt"));
    removeFile(folder.file("run_2.txt"));
    append(folder.file("run_2.dat"), "123");
    folder.write("run_3.dat", "");
    // The create time that the description of the last piece has told.
    LocalTime time;
    ASSERT_EQ(std::sscanf(last.c_str() + last.find(" = \"") + 4, "%*s %hu:%hu:%hu %*s %hu.%hu.%hu", &time.hour,
                          &time.minute, &time.second, &time.day, &time.month, &time.year),
              6);
    leaveJournal(setup, 2, time, true, 4);
    const auto report = recoverRecording(journalOfFile(folder.file("run_2.dat")));
    ASSERT_TRUE(report);
    EXPECT_EQ(report->outcome, Outcome::Recovered) << report->problem;
    EXPECT_EQ(report->name, setup.fileName);
    EXPECT_EQ(report->frames, 50U);
    EXPECT_EQ(readFile(folder.file("run_2.txt")), last);
    EXPECT_EQ(readFile(folder.file("run.txt")), first);
    EXPECT_THAT(listDirectory(folder.path()),
                ElementsAre("run.dat", "run.txt", "run_1.dat", "run_1.txt", "run_2.dat", "run_2.txt"));
}

TEST(Recovery, KeepsNoFileWithoutAFrame) {
    struct Case {
        const char* what;
        std::vector<std::pair<const char*, const char*>> files;
        int piece;  // -1: nothing has been recorded yet
        std::vector<std::string> left;
    };
    const Case cases[] = {
        {"less than a frame", {{"run.dat", "12345"}}, 0, {}},
        {"nothing", {{"run.dat", ""}}, 0, {}},
        {"not begun", {}, -1, {}},
        {"made, not begun", {{"run.dat", ""}}, -1, {}},
        {"two made, not begun", {{"run.dat", ""}, {"run_1.dat", ""}}, -1, {}},
        {"two made ahead",
         {{"run.dat", "123456"}, {"run_1.dat", ""}, {"run_2.dat", ""}, {"run_3.dat", ""}},
         0,
         {"run.dat", "run.txt", "run_3.dat"}},
        {"not begun beside a complete recording",
         {{"run.dat", "123456"}, {"run.txt", "its description"}, {"run_1.dat", ""}, {"run_1.txt", ""}},
         -1,
         {"run.dat", "run.txt", "run_1.dat", "run_1.txt"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const TemporaryFolder folder;
        for (const auto& [name, contents] : c.files) {
            folder.write(name, contents);
        }
        const WriterSetup setup = setupFor(folder.file("run.dat"));
        if (c.piece >= 0) {
            leaveJournal(setup, static_cast<uint32_t>(c.piece), {}, false);
        } else {
            RecordingJournal journal;
            ASSERT_TRUE(journal.create(RecordingName(setup.fileName).journal(), setup.journalState()).ok());
        }
        const auto reports = recoverFolder(folder.path());
        ASSERT_EQ(reports.size(), c.piece >= 0 ? 1U : 0U);
        EXPECT_TRUE(reports.empty() || reports[0].outcome == Outcome::Recovered) << reports[0].problem;
        EXPECT_EQ(listDirectory(folder.path()), c.left);
    }
}

// What was interrupted is gone on with: here the file was removed, the journal not yet.
TEST(Recovery, ComesToTheSameEndAfterItHasRemovedAFile) {
    const TemporaryFolder folder;
    const WriterSetup setup = setupFor(folder.write("run.dat", "123456"));
    folder.write("run_3.dat", "12345");
    leaveJournal(setup, 3, {}, false);
    const std::string name = RecordingName(setup.fileName).journal();
    {
        RecordingJournal journal;
        ASSERT_EQ(journal.takeExisting(name), JournalFound::Ours);
        EXPECT_EQ(recoverRecording(journal)->frames, 1U);
    }
    folder.write("run_4.dat", "");
    EXPECT_THAT(listDirectory(folder.path()), ElementsAre("run.dat", fileNameOf(name), "run_4.dat"));
    const auto reports = recoverFolder(folder.path());
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].outcome, Outcome::Recovered) << reports[0].problem;
    EXPECT_EQ(reports[0].frames, 1U);
    EXPECT_THAT(listDirectory(folder.path()), ElementsAre("run.dat"));
}

TEST(Recovery, LeavesEverythingWhenItCanNotBeSure) {
    const struct {
        const char* what;
        const char* problem;
        void (*change)(const TemporaryFolder&);
    } cases[] = {
        {"no data file", "is missing", [](const TemporaryFolder& f) { removeFile(f.file("run.dat")); }},
        {"a folder of its name", "is a link, or no file",
         [](const TemporaryFolder& f) {
             removeFile(f.file("run.dat"));
             ASSERT_TRUE(createDirectory(f.file("run.dat")).ok());
         }},
        {"a piece that the journal does not know", "does not tell",
         [](const TemporaryFolder& f) { f.write("run_1.dat", "123456"); }},
        {"no description can be made", "run.txt",
         [](const TemporaryFolder& f) { ASSERT_TRUE(createDirectory(f.file("run.txt")).ok()); }},
        {"somebody's text in the place of the description", "run.txt",
         [](const TemporaryFolder& f) { f.write("run.txt", "Pump 3, worn seals"); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const TemporaryFolder folder;
        const WriterSetup setup = setupFor(folder.write("run.dat", "123456123456"));
        leaveJournal(setup, 0, {}, false);
        c.change(folder);
        const std::vector<std::string> before = listDirectory(folder.path());
        const bool notes = isPlainFile(folder.file("run.txt"));
        const auto reports = recoverFolder(folder.path());
        ASSERT_EQ(reports.size(), 1U);
        EXPECT_EQ(reports[0].outcome, Outcome::Failed);
        EXPECT_THAT(reports[0].problem, HasSubstr(c.problem));
        EXPECT_EQ(listDirectory(folder.path()), before);
        EXPECT_TRUE(!isPlainFile(setup.fileName) || readFile(setup.fileName) == "123456123456");
        EXPECT_TRUE(!notes || readFile(folder.file("run.txt")) == "Pump 3, worn seals");
    }
}

TEST(Recovery, AChangedJournalSaysOneOfItsTwoStatesOrNothing) {
    const TemporaryFolder folder;
    const WriterSetup setup = setupFor(folder.file("run.dat"));
    leaveJournal(setup, 7, {2026, 2, 3, 4, 5, 6, 7, 8}, true);
    const std::string whole = readFile(folder.file("run.tarno2-journal"));
    const auto newest = readJournal(whole);
    ASSERT_TRUE(newest && newest->piece);
    EXPECT_EQ(newest->piece->number, 7U);
    EXPECT_EQ(newest->facts.driverName, setup.facts.driverName);
    EXPECT_EQ(newest->facts.totalFrequency, setup.facts.totalFrequency);
    size_t older = 0;
    for (size_t i = 0; i < whole.size(); ++i) {
        EXPECT_FALSE(readJournal(std::string_view(whole).substr(0, i)));
        if (whole[i] == '\n' && whole[(i + 1) % whole.size()] == '\n') {
            continue;  // padding
        }
        std::string changed = whole;
        changed[i] = static_cast<char>(changed[i] ^ 4);
        const auto state = readJournal(changed);
        // Without its first line it is nobody's journal.
        ASSERT_EQ(state.has_value(), i >= std::string_view("Tarno2 journal 1\n").size()) << i;
        if (!state) {
            continue;
        }
        const bool isNewest = state->sequence == newest->sequence && state->piece && state->piece->number == 7U;
        older += isNewest ? 0 : 1;
        EXPECT_TRUE(isNewest || (state->sequence + 1 == newest->sequence && !state->piece)) << i;
    }
    EXPECT_GT(older, 300U);
}

TEST(RecoveryThread, HoldsUpNoRecordingAndRefusesNone) {
    for (int i = 0; i < 20; ++i) {
        const TemporaryFolder folder;
        const WriterSetup setup = setupFor(folder.write("run.dat", "123456789"));
        leaveJournal(setup, 0, {}, false);
        RecordDescription description;
        RecordDescription otherDescription;
        Event begun;
        RecoveryThread recovery;
        // While this folder is not done the thread does not end: another recording starts all the same.
        const TemporaryFolder empty;
        ASSERT_TRUE(
            recovery.recover({empty.path()}, [&](const auto&) { static_cast<void>(begun.wait(kWaitForever)); }));
        ASSERT_TRUE(recovery.recover({folder.path()}, [](const auto&) {}));
        DataWriter other;
        EXPECT_EQ(other.open(setupFor(folder.file("other.dat")), otherDescription), 0);
        begun.set();
        // One of the same name comes before the recovery, after it, or waits for it.
        DataWriter writer;
        EXPECT_EQ(writer.open(setup, description), 0) << writer.openError();
        recovery.wait();
        EXPECT_EQ(readFile(folder.file("run_old1.dat")), "123456");
        EXPECT_TRUE(fileExists(folder.file("run_old1.txt")));
        EXPECT_TRUE(writer.Close() && other.Close());
        EXPECT_THAT(listDirectory(folder.path()), ElementsAre("run_old1.dat", "run_old1.txt"));
    }
}

TEST(TwoWriters, KeepOutOfEachOthersFiles) {
    languageTable().select(kLanguageEnglish);
    const struct {
        const char* first;
        const char* second;
        int32_t result;
    } cases[] = {{"run.dat", "run.dat", -6},    {"run.dat", "run.bin", -6},  {"run.dat", "run_12.dat", -6},
                 {"run_12.dat", "run.dat", -6}, {"run.dat", "run_x.dat", 0}, {"run.dat", "run2.dat", 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.first) + " and " + c.second);
        const TemporaryFolder folder;
        RecordDescription description;
        RecordDescription otherDescription;
        DataWriter writer;
        DataWriter other;
        ASSERT_EQ(writer.open(setupFor(folder.file(c.first)), description), 0);
        EXPECT_EQ(other.open(setupFor(folder.file(c.second)), otherDescription), c.result);
        if (c.result != 0) {
            EXPECT_THAT(other.openError(), HasSubstr("is in use by another program."));
        }
        const std::string data(60, 'x');
        EXPECT_EQ(writer.Write(reinterpret_cast<const std::byte*>(data.data()), data.size(), kFrame), 0);
        EXPECT_EQ(recoverRecording(journalOfFile(folder.file(c.first)))->outcome, Outcome::InProgress);
        EXPECT_THAT(recoverFolder(folder.path()), IsEmpty()) << "its own recordings need no line";
        other.Close();
        EXPECT_TRUE(writer.Close());
        EXPECT_EQ(readFile(folder.file(c.first)), data);
        EXPECT_EQ(listDirectory(folder.path()).size(), 2U);
        // Now the name is free again.
        DataWriter third;
        EXPECT_EQ(third.open(setupFor(folder.file(c.second)), otherDescription), 0);
    }
}

TEST(TwoWriters, TheNextOneOfTheNameKeepsWhatWasCutOff) {
    for (const bool finishable : {true, false}) {
        const TemporaryFolder folder;
        const WriterSetup setup = setupFor(folder.write("run.dat", "123456789"));
        leaveJournal(setup, 0, {}, false);
        if (!finishable) {
            folder.write("run_1.dat", "123456");
        }
        record(setup, 60, false);
        EXPECT_EQ(readFile(folder.file("run_old1.dat")), finishable ? "123456" : "123456789");
        EXPECT_EQ(fileExists(folder.file("run_old1.txt")), finishable);
        EXPECT_EQ(fileExists(folder.file("run_old1.tarno2-journal")), !finishable);
        EXPECT_FALSE(fileExists(folder.file("run.tarno2-journal")));
        EXPECT_EQ(readFile(folder.file("run.dat")).size(), 60U);
        if (!finishable) {
            // Once the file that was in the way is gone, it is recovered under its new name.
            removeFile(folder.file("run_old1_1.dat"));
            EXPECT_EQ(recoverFolder(folder.path()).at(0).name, folder.file("run_old1.dat"));
            EXPECT_EQ(readFile(folder.file("run_old1.dat")), "123456");
        }
    }
}

TEST(TwoWriters, ADeadNeighbourIsRecoveredFirst) {
    const struct {
        const char* dead;
        uint32_t piece;  // that it was writing
        const char* name;
        const char* recovered;
    } cases[] = {
        {"run.dat", 2, "run_2.dat", "run_2_old1"},
        {"run_2.dat", 0, "run.dat", "run_old1_2"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.dead) + " and " + c.name);
        const TemporaryFolder folder;
        leaveJournal(setupFor(folder.file(c.dead)), c.piece, {}, false);
        folder.write("run_2.dat", "123456789");
        record(setupFor(folder.file(c.name)), 60, false);
        EXPECT_EQ(readFile(folder.file(std::string(c.recovered) + ".dat")), "123456");
        EXPECT_THAT(readFile(folder.file(std::string(c.recovered) + ".txt")), HasSubstr("DataCountPerChannel = 1\r\n"));
        EXPECT_EQ(readFile(folder.file(c.name)).size(), 60U);
        EXPECT_THAT(listDirectory(folder.path()), testing::SizeIs(4)) << "no journal";
    }
}

// The journal of the recording that made room tells of the move.
TEST(TwoWriters, AMoveThatWasCutOffIsFinished) {
    for (const bool recorded : {true, false}) {
        const TemporaryFolder folder;
        const WriterSetup setup = setupFor(folder.file("run.dat"));
        for (const char* name : {"run_old1.dat", "run_old1_old1.dat", "run.txt", "run_2.dat"}) {
            folder.write(name, name);
        }
        {
            RecordingJournal journal;
            JournalState state = setup.journalState();
            state.aside = 1;
            ASSERT_TRUE(journal.create(RecordingName(setup.fileName).journal(), state).ok());
        }
        if (recorded) {
            record(setup, 60, false);
            EXPECT_EQ(readFile(folder.file("run.dat")).size(), 60U);
            removeFile(folder.file("run.dat"));
            removeFile(folder.file("run.txt"));
        } else {
            EXPECT_THAT(recoverFolder(folder.path()), IsEmpty());
        }
        EXPECT_THAT(listDirectory(folder.path()),
                    ElementsAre("run_old1.dat", "run_old1.txt", "run_old1_2.dat", "run_old1_old1.dat"));
        EXPECT_EQ(readFile(folder.file("run_old1.txt")), "run.txt");
    }
}

}  // namespace
}  // namespace tarno2::test
