// Files that others remove, rename or stand in the way of while they are recorded.

#include <algorithm>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

#include "config/files/recording_name.h"
#include "core/storage/data_writer.h"
#include "core/storage/recovery.h"
#include "language/language_table.h"
#include "platform/clock.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "tests/core/rig.h"

namespace tarno2::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr uint64_t kTouchedFrame = 6;
constexpr uint64_t kTouchedRecord = 5 * kTouchedFrame;

/// A recording of 3 channels that brings everything to the disk at once, fed with the stream of test samples.
struct TouchedRig {
    TouchedRig() {
        setup.longestWaitMs = 5;
        setup.flushPeriodMs = 1;
    }
    [[nodiscard]] int32_t open() { return writer.open(setup, description); }
    void feed(uint64_t bytes, uint64_t unit = kTouchedFrame) {
        const std::string data = streamBytes(position / 2, bytes / 2, 2);
        std::vector<SynchroEvent> events(unit == kTouchedRecord ? bytes / kTouchedRecord : 0, {0, 2, 3, 0, 0, 1, 0.5});
        for (size_t i = 0; i < events.size(); ++i) {
            events[i].point = 2 * (position / kTouchedRecord + i + 1);
        }
        EXPECT_EQ(writer.Write(reinterpret_cast<const std::byte*>(data.data()), bytes, unit, events), 0);
        position += bytes;
    }
    [[nodiscard]] std::vector<std::string> files() const { return listDirectory(folder.path()); }
    [[nodiscard]] uint64_t frames(const char* name) const { return describedFrames(folder.file(name)); }

    ScopedDebugLog log;
    TemporaryFolder folder;
    WriterSetup setup = fakeSetup(folder.file("run.dat"), 3);
    RecordDescription description;
    DataWriter writer;
    uint64_t position = 0;
};

/// Waits for what the disk thread does. False after 30 s.
bool waitFor(const std::function<bool()>& happened) {
    const uint64_t guard = tickCount() + 30000;
    while (!happened()) {
        if (tickCount() > guard) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

TEST(TouchedFiles, RecordingGoesOnInTheNextFile) {
    if (kPathSeparator == '\\') {
        GTEST_SKIP() << "an open file keeps its name on Windows, or has none until it is closed";
    }
    const struct {
        const char* what;
        bool renamed;
        uint64_t unit;
        uint64_t pieceBytes;
        const char* next;
    } cases[] = {
        {"removed", false, kTouchedFrame, 0, "run_1.dat"},
        {"renamed", true, kTouchedFrame, 0, "run_1.dat"},
        {"renamed, with records", true, kTouchedRecord, 0, "run_1.dat"},
        {"renamed, the next file being made already", true, kTouchedFrame, 2000000 * kTouchedFrame, "run_1.dat"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        TouchedRig rig;
        rig.setup.pieceBytes = c.pieceBytes;
        ASSERT_EQ(rig.open(), 0);
        rig.feed(10 * kTouchedRecord, c.unit);
        ASSERT_TRUE(waitFor([&] { return rig.writer.waitingBytes() == 0; }));
        const std::string data = rig.folder.file("run.dat");
        ASSERT_TRUE(c.renamed ? renameFile(data, rig.folder.file("mine.bin")).ok() : removeFile(data).ok());
        // Until it is noticed data still go into the file, whatever it is called.
        ASSERT_TRUE(waitFor([&] {
            rig.feed(kTouchedRecord, c.unit);
            return rig.writer.fileCount() > 1;
        }));
        rig.feed(kTouchedRecord, c.unit);
        ASSERT_TRUE(rig.writer.Close());
        const std::string rest = readFile(rig.folder.file(c.next));
        const uint64_t kept = rig.position - rest.size();
        EXPECT_EQ(kept % c.unit, 0U);
        EXPECT_TRUE(rest == streamBytes(kept / 2, rest.size() / 2, 2));
        EXPECT_EQ(rig.frames(c.next), rest.size() / kTouchedFrame);
        EXPECT_EQ(rig.writer.savedBytes(), rest.size());
        EXPECT_EQ(rig.writer.savedFiles(), 1U);
        EXPECT_EQ(rig.writer.writtenBytes(), rig.position);
        if (c.renamed) {
            EXPECT_TRUE(readFile(rig.folder.file("mine.bin")) == streamBytes(0, kept / 2, 2));
        }
        if (c.unit == kTouchedRecord) {
            const std::string text = readFile(rig.folder.file("run_1.txt"));
            EXPECT_THAT(text, HasSubstr("SynchroListCount = " + std::to_string(rest.size() / kTouchedRecord) + "\r\n"));
            EXPECT_THAT(text, HasSubstr("SynchroListPoint = " + std::to_string(2 * (kept / kTouchedRecord + 1)) + " "));
        }
        EXPECT_EQ(rig.files().size(), c.renamed ? 3U : 2U) << "no journal, no description of what is gone";
        EXPECT_THAT(rig.writer.notice(), HasSubstr("run.dat\" was removed or renamed while it was recorded"));
        EXPECT_EQ(firstMissing(rig.log.finish(), {"run.dat\" was removed or renamed", "Recording goes on in \""}), "");
    }
}

TEST(TouchedFiles, OneThatIsGoneAtTheEndIsNotCounted) {
    if (kPathSeparator == '\\') {
        GTEST_SKIP() << "an open file keeps its name on Windows, or has none until it is closed";
    }
    TouchedRig rig;
    rig.setup.flushPeriodMs = 600000;
    ASSERT_EQ(rig.open(), 0);
    rig.feed(10 * kTouchedFrame);
    ASSERT_TRUE(removeFile(rig.folder.file("run.dat")).ok());
    EXPECT_TRUE(rig.writer.Close());
    EXPECT_EQ(rig.writer.savedFiles(), 0U);
    EXPECT_EQ(rig.writer.savedBytes(), 0U);
    EXPECT_THAT(rig.files(), IsEmpty());
}

TEST(TouchedFiles, AJournalIsMadeAnewAndDataFilesStayLockedWithoutOne) {
    TouchedRig rig;
    ASSERT_EQ(rig.open(), 0);
    rig.feed(kTouchedFrame);
    ASSERT_TRUE(waitFor([&] { return rig.writer.waitingBytes() == 0; }));
    const std::string journal = RecordingName(rig.setup.fileName).journal();
    if (!removeFile(journal).ok()) {
        GTEST_SKIP() << "the system keeps the journal";
    }
    ASSERT_TRUE(waitFor([&] {
        rig.feed(kTouchedFrame);
        File file;
        uint64_t size = 0;
        return file.open(journal, FileMode::OpenExisting, FileAccess::Read, FileShare::ReadWrite).ok() &&
               file.size(size).ok() && size == 2 * kJournalHalf;
    }));
    EXPECT_EQ(recoverRecording(journal)->outcome, RecoveryReport::Outcome::InProgress);
    EXPECT_TRUE(rig.writer.Close());
    EXPECT_EQ(rig.frames("run.dat"), rig.position / kTouchedFrame);
    EXPECT_THAT(rig.files(), ElementsAre("run.dat", "run.txt"));

    languageTable().select(kLanguageEnglish);
    TouchedRig second;
    second.setup.flushPeriodMs = 600000;
    ASSERT_EQ(second.open(), 0);
    ASSERT_TRUE(removeFile(RecordingName(second.setup.fileName).journal()).ok());
    DataWriter other;
    RecordDescription description;
    EXPECT_EQ(other.open(second.setup, description), -6);
    EXPECT_THAT(other.openError(), HasSubstr("run.dat\" is in use by another program."));
    EXPECT_THAT(second.files(), ElementsAre("run.dat"));
    EXPECT_TRUE(second.writer.Close());
}

TEST(TouchedFiles, ADescriptionIsTriedAgain) {
    for (const bool late : {true, false}) {
        TouchedRig rig;
        rig.setup.pieceBytes = 10 * kTouchedFrame;
        ASSERT_EQ(rig.open(), 0);
        const std::vector<std::string> inTheWay = {rig.folder.file("run.txt"), rig.folder.file("run_1.txt")};
        for (const std::string& folder : inTheWay) {
            ASSERT_TRUE(createDirectory(folder).ok());
        }
        const auto makeRoom = [&inTheWay] {
            return std::all_of(inTheWay.begin(), inTheWay.end(),
                               [](const std::string& folder) { return removeDirectory(folder).ok(); });
        };
        rig.feed(25 * kTouchedFrame);
        ASSERT_TRUE(waitFor([&] { return rig.writer.waitingBytes() == 0; }));
        if (late) {
            ASSERT_TRUE(makeRoom());
            EXPECT_TRUE(waitFor([&] { return fileExists(inTheWay.back()); }));
        }
        EXPECT_EQ(rig.writer.Close(), late) << rig.writer.writeError();
        EXPECT_EQ(rig.writer.savedBytes(), 25 * kTouchedFrame);
        EXPECT_EQ(rig.writer.savedFiles(), 3U);
        EXPECT_EQ(rig.frames("run_2.dat"), 5U);
        if (!late) {
            EXPECT_THAT(rig.writer.writeError(), HasSubstr("run.txt\" could not be written: "));
            ASSERT_TRUE(makeRoom());
            EXPECT_EQ(recoverFolder(rig.folder.path()).size(), 1U) << "the journal tells of them";
        }
        EXPECT_EQ(rig.frames("run.dat"), 10U);
        EXPECT_EQ(rig.frames("run_1.dat"), 10U);
        EXPECT_THAT(rig.files(), ElementsAre("run.dat", "run.txt", "run_1.dat", "run_1.txt", "run_2.dat", "run_2.txt"));
    }
}

}  // namespace
}  // namespace tarno2::test
