// What is marked while a recording runs, from the hand-over to the file, and after a crash.

#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

#include "config/files/recording_name.h"
#include "core/storage/data_writer.h"
#include "core/storage/recovery.h"
#include "platform/paths.h"
#include "tests/core/rig.h"

namespace tarno2::test {
namespace {

using testing::ElementsAre;

const std::string kHead = "mark,frame,utc,source,text\r\n";
const std::string kOne = "1,10,1970-01-01T00:00:00.000007Z,operator,\r\n";
const std::string kNamed = "1,10,1970-01-01T00:00:00.000007Z,operator,\"valve, open\"\r\n";
const std::string kTwo = "2,20,1970-01-01T00:00:00.000008Z,line,\r\n";

void waitUntil(const std::function<bool()>& done) {
    while (!done()) {
        std::this_thread::yield();
    }
}

void waitForWritten(const MarkWriter& marks, size_t lines) {
    waitUntil([&] { return marks.written() >= lines; });
}

/// Writes a recording of so many frames of two channels, with what marks it.
void record(const std::string& name, MarkWriter& marks, uint64_t frames, const std::function<void()>& mark) {
    WriterSetup setup = fakeSetup(name, 2);
    setup.marks = &marks;
    RecordDescription description;
    DataWriter writer;
    ASSERT_EQ(writer.open(setup, description), 0) << writer.openError();
    ASSERT_TRUE(marks.open(name));
    mark();
    const std::string data(frames * 4, 'x');
    if (frames > 0) {
        ASSERT_EQ(writer.Write(reinterpret_cast<const std::byte*>(data.data()), data.size(), 4), 0);
    }
    ASSERT_TRUE(writer.Close());
}

TEST(Marks, AreOnTheDiskAtOnceAndInOrderAtTheEnd) {
    const TemporaryFolder folder;
    MarkWriter marks;
    const std::string file = folder.file("run.marks.csv");
    record(folder.file("run.dat"), marks, 100, [&] {
        EXPECT_FALSE(fileExists(file));
        auto mark = marks.add(10, 7);
        ASSERT_TRUE(mark);
        waitForWritten(marks, 1);
        EXPECT_EQ(readFile(file), kHead + kOne);
        marks.note(MarkSource::Line, 20, 8, {});
        marks.wake();
        waitForWritten(marks, 2);
        mark->text = " valve, open\n";
        marks.setText(*mark);
        waitForWritten(marks, 3);
        EXPECT_EQ(readFile(file), kHead + kOne + kTwo + kNamed);
        // A text that was still being typed when the recording ended.
        mark = marks.add(30, 9);
        mark->text = "hal";
        marks.setDraft(*mark);
    });
    EXPECT_EQ(readFile(file), kHead + kNamed + kTwo + "3,30,1970-01-01T00:00:00.000009Z,operator,hal\r\n");
    EXPECT_FALSE(marks.add(40, 10)) << "the recording is over";
    EXPECT_EQ(marks.finish(true), 3U);
    size_t seen = 0;
    std::vector<RecordingMark> told;
    marks.read(seen, told);
    EXPECT_EQ(told.size(), 5U);
}

TEST(Marks, LeaveNoFileWithoutASample) {
    const TemporaryFolder folder;
    MarkWriter marked;
    record(folder.file("run.dat"), marked, 0, [&] {
        static_cast<void>(marked.add(0, 1));
        waitForWritten(marked, 1);
    });
    MarkWriter unmarked;
    record(folder.file("other.dat"), unmarked, 5, [] {});
    EXPECT_THAT(listDirectory(folder.path()), ElementsAre("other.dat", "other.txt"));
}

TEST(Marks, ThatDoNotFitAreCounted) {
    const TemporaryFolder folder;
    MarkWriter marks;
    uint64_t tried = 0;
    record(folder.file("run.dat"), marks, 5, [&] {
        for (; marks.lost() < 100; ++tried) {
            marks.note(MarkSource::Driver, tried, 0, "x");
        }
        marks.wake();
    });
    const MarkList list = readMarks(readFile(folder.file("run.marks.csv")));
    ASSERT_EQ(list.marks.size(), tried - marks.lost());
    EXPECT_EQ(list.marks.back().number, list.marks.size()) << "no number is left out";
}

TEST(Marks, GoOnWhenSomebodyHasTheirNameOrTakesTheirFile) {
    const TemporaryFolder folder;
    MarkWriter marks;
    const std::string file = folder.file("run.marks.csv");
    std::string problem;
    record(folder.file("run.dat"), marks, 5, [&] {
        folder.write("run.marks.csv", "somebody's");
        static_cast<void>(marks.add(10, 7));
        waitUntil([&] { return !(problem = marks.takeProblem()).empty(); });
        EXPECT_EQ(readFile(file), "somebody's");
        ASSERT_TRUE(removeFile(file).ok());
        static_cast<void>(marks.add(11, 8));
        waitForWritten(marks, 2);
        // On Windows it goes with what is written to it later.
        ASSERT_TRUE(kPathSeparator != '/' || removeFile(file).ok());
        marks.note(MarkSource::Line, 12, 9, {});
        marks.wake();
        waitForWritten(marks, 3);
    });
    EXPECT_EQ(readMarks(readFile(file)).marks.size(), 3U);
}

TEST(Marks, MakeWayWithTheRecording) {
    const TemporaryFolder folder;
    for (int i = 0; i < 2; ++i) {
        MarkWriter marks;
        record(folder.file("run.dat"), marks, 5, [&] { static_cast<void>(marks.add(10, 7)); });
    }
    EXPECT_THAT(listDirectory(folder.path()), ElementsAre("run.dat", "run.marks.csv", "run.txt", "run_old1.dat",
                                                          "run_old1.marks.csv", "run_old1.txt"));
}

TEST(Marks, AreMadeWholeByTheRecovery) {
    const struct {
        const char* what;
        std::string left;
        uint64_t frames;
        std::string made;  // empty: the file is gone
    } cases[] = {
        {"in order", kHead + kOne + kTwo, 3, kHead + kOne + kTwo},
        {"a word, and a torn line", kHead + kOne + kTwo + kNamed + "3,30,19", 3, kHead + kNamed + kTwo},
        {"nothing but a torn line", kHead + "1,1", 3, ""},
        {"no sample", kHead + kOne, 0, ""},
        {"somebody's own text", "a list of mine\r\n", 3, "a list of mine\r\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const TemporaryFolder folder;
        const WriterSetup setup = fakeSetup(folder.file("run.dat"), 2);
        folder.write("run.dat", std::string(c.frames * 4, 'x'));
        folder.write("run.marks.csv", c.left);
        {
            RecordingJournal journal;
            JournalState state = setup.journalState();
            ASSERT_TRUE(journal.create(folder.file("run.tarno2-journal"), state).ok());
            state.piece.emplace();
            ASSERT_TRUE(journal.save(state).ok());
        }
        ASSERT_EQ(recoverFolder(folder.path()).size(), 1U);
        EXPECT_EQ(fileExists(folder.file("run.marks.csv")), !c.made.empty());
        if (!c.made.empty()) {
            EXPECT_EQ(readFile(folder.file("run.marks.csv")), c.made);
        }
    }
}

}  // namespace
}  // namespace tarno2::test
