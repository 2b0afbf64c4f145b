// Files in a recording's folder that are called like its own and are not.

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>

#include "core/storage/data_writer.h"
#include "core/storage/recovery.h"
#include "language/language_table.h"
#include "platform/paths.h"
#include "records/file_extensions.h"
#include "tests/core/rig.h"

namespace tarno2::test {
namespace {

using Outcome = RecoveryReport::Outcome;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// Half a journal as version 0.1 has left it, to the byte.
constexpr const char* kEarlierHalf =
    "Tarno2 journal 1\nsequence 1\nextension .dat\nwidth 2\nchannels 4\ndriver Simulator\nfrequency 200000\n"
    "synchronous 1\npacket 0 0\nexternal 0\nbackward 0\nlayout 2 2 65532 14 0 3 2 1\nrange 5 -5\nrange 5 -5\n"
    "range 5 -5\nrange 5 -5\npiece 0\ncreated 2026 11 0 22 2 37 2 701\nchecksum 6592ea6e\n";
constexpr size_t kSize = 2 * kJournalHalf;

std::string padded(std::string text, size_t size = kJournalHalf) {
    text.resize(size, '\n');
    return text;
}

/// A whole journal with these lines behind the first one.
std::string journalWith(const std::string& lines) {
    const auto half = sealedJournalHalf("Tarno2 journal 1\nsequence 1\n" + lines);
    return *half + *half;
}

std::string journalOf(const std::string& extension, const std::string& piece) {
    return journalWith("extension " + extension + "\nwidth 2\nchannels 3\nrange 1 -1\nrange 1 -1\nrange 1 -1\n" +
                       piece);
}

/// All that a folder holds, with contents.
std::map<std::string, std::string> contentsOf(const std::string& folder) {
    std::map<std::string, std::string> contents;
    for (const std::string& name : listDirectory(folder)) {
        const std::string path = joinPath(folder, name);
        contents[name] = isDirectory(path) ? "a folder" : readFile(path);
    }
    return contents;
}

WriterSetup setupFor(const std::string& name) {
    WriterSetup setup;
    setup.fileName = name;
    setup.channelCount = 3;
    setup.facts.ranges.assign(3, {1.0, -1.0, 1.0F});
    return setup;
}

TEST(ForeignJournal, StaysAsItIsWhateverIsDoneInItsFolder) {
    languageTable().select(kLanguageEnglish);
    const std::string whole = journalOf(".dat", "piece 0\n");
    std::string wrong = whole;
    wrong[100] ^= 1;
    wrong[kJournalHalf + 100] ^= 1;
    std::string later = whole;
    later.replace(0, 17, "Tarno2 journal 2\n");
    const struct {
        const char* what;
        std::string contents;
    } cases[] = {
        {"a diary", "Dear journal,\n"},
        {"one byte short", whole.substr(1)},
        {"one byte long", whole + "\n"},
        {"half of one", whole.substr(0, kJournalHalf)},
        {"its size alone", std::string(kSize, '\0')},
        {"its first line alone", padded("Tarno2 journal 1\n", kSize)},
        {"a later version", later},
        {"both checksums wrong", wrong},
        {"the first line only in its second half", std::string(kJournalHalf, '\n') + whole.substr(kJournalHalf)},
        {"a line of a version to come", journalOf(".dat", "piece 0\ncompression 3\n")},
        {"large", std::string(8 << 20U, 'x')}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        for (const char* ending : {".journal", ".tarno2-journal"}) {
            const TemporaryFolder folder;
            folder.write(std::string("run") + ending, c.contents);
            folder.write(std::string("2026") + ending, c.contents);
            folder.write("run_1.dat", "");
            folder.write("2026.dat", "12345");
            const auto before = contentsOf(folder.path());
            const bool present = std::string_view(ending) == kJournalExtension;
            // A line for each that stands where one of ours would; nothing of what other programs may have left.
            EXPECT_EQ(recoverFolder(folder.path()).size(), present ? 2U : 0U);
            const auto report = recoverRecording(folder.file(std::string("run") + ending));
            ASSERT_TRUE(report);
            EXPECT_EQ(report->outcome, Outcome::LeftAlone);
            EXPECT_THAT(report->text(), HasSubstr("is no journal that this version knows. It was left alone."));
            EXPECT_EQ(contentsOf(folder.path()), before);

            RecordDescription description;
            DataWriter writer;
            EXPECT_EQ(writer.open(setupFor(folder.file("run.dat")), description), present ? -6 : 0);
            if (present) {
                EXPECT_THAT(writer.openError(), HasSubstr("is no journal that this version knows. While it is there"));
                EXPECT_EQ(contentsOf(folder.path()), before);
            }
            writer.Close();
            EXPECT_EQ(readFile(folder.file(std::string("run") + ending)), c.contents);
            EXPECT_EQ(readFile(folder.file(std::string("2026") + ending)), c.contents);
        }
    }
}

TEST(ForeignJournal, AnEmptyFileIsOneThatHadNotBegunOrSomebodys) {
    const TemporaryFolder folder;
    folder.write("todo.journal", "");
    folder.write("run.tarno2-journal", "");
    folder.write("run.dat", "123456");
    EXPECT_THAT(recoverFolder(folder.path()), IsEmpty());
    EXPECT_THAT(listDirectory(folder.path()), ElementsAre("run.dat", "todo.journal"));
    folder.write("run.tarno2-journal", "");
    RecordDescription description;
    DataWriter writer;
    EXPECT_EQ(writer.open(setupFor(folder.file("run.dat")), description), 0);
    writer.Close();
    EXPECT_THAT(listDirectory(folder.path()), ElementsAre("run_old1.dat", "todo.journal"));
}

TEST(ForeignJournal, FoldersAndLinksOfItsNameAreLeftAlone) {
    for (const char* kind : {"folder", "link", "dangling link"}) {
        SCOPED_TRACE(kind);
        const TemporaryFolder folder;
        const std::string name = folder.file("run.tarno2-journal");
        const std::string target = folder.write("elsewhere", journalOf(".dat", "piece 0\n"));
        folder.write("run.dat", "1234567");
        if (std::string(kind) == "folder") {
            ASSERT_TRUE(createDirectory(name).ok());
        } else {
            std::error_code error;
            std::filesystem::create_symlink(std::string(kind) == "link" ? "elsewhere" : "nowhere", name, error);
            if (error) {
                continue;  // this system or user makes no links
            }
        }
        const auto names = listDirectory(folder.path());
        EXPECT_EQ(recoverFolder(folder.path()).at(0).outcome, Outcome::LeftAlone);
        RecordDescription description;
        DataWriter writer;
        EXPECT_EQ(writer.open(setupFor(folder.file("run.dat")), description), -6);
        EXPECT_EQ(listDirectory(folder.path()), names);
        EXPECT_EQ(readFile(target).size(), kSize);
        EXPECT_EQ(readFile(folder.file("run.dat")), "1234567");
    }
}

TEST(EarlierJournal, IsRecoveredAndItsNameNeverWrittenAgain) {
    for (const bool byNextRecording : {false, true}) {
        const TemporaryFolder folder;
        folder.write("run.journal", padded(kEarlierHalf) + padded(kEarlierHalf));
        folder.write("run.dat", "1234567812345");
        if (byNextRecording) {
            RecordDescription description;
            DataWriter writer;
            ASSERT_EQ(writer.open(setupFor(folder.file("run.dat")), description), 0);
            EXPECT_TRUE(fileExists(folder.file("run.tarno2-journal")));
            EXPECT_FALSE(fileExists(folder.file("run.journal")));
            writer.Close();
        } else {
            EXPECT_EQ(journalOfFile(folder.file("run_3.dat")), folder.file("run.journal"));
            const auto reports = recoverFolder(folder.path());
            ASSERT_EQ(reports.size(), 1U);
            EXPECT_EQ(reports[0].frames, 1U) << reports[0].problem;
        }
        const std::string base = byNextRecording ? "run_old1" : "run";
        EXPECT_THAT(listDirectory(folder.path()), ElementsAre(base + ".dat", base + ".txt"));
        EXPECT_EQ(readFile(folder.file(base + ".dat")), "12345678");
        EXPECT_THAT(readFile(folder.file(base + ".txt")), HasSubstr("DriverName = \"Simulator\"\r\n"));
    }
}

TEST(PlantedJournal, ReachesNoFileOutsideAndNoneThatIsNotARecordings) {
    const TemporaryFolder folder;
    const std::string inside = folder.file("shared");
    const auto put = [&](const std::string& name, const std::string& contents) {
        return folder.write(joinPath("shared", name), contents);
    };
    ASSERT_TRUE(createDirectory(inside).ok());
    folder.write("thesis.odt", "1234567");
    put("notes.txt", "1234567");
    put("a.log", "1234567");
    put("a.journal", "1234567");
    put("a", "1234567");
    put("a.d-t", "1234567");
    const auto before = contentsOf(folder.path());
    for (const char* extension :
         {"/../../thesis.odt", ".dat/../../thesis.odt", "\\..\\..\\thesis.odt", ":stream", ".", "", ".txt", ".TXT",
          ".log", ".journal", ".tarno2-journal", ".d-t", ". dat", ".dat ", ".datdatdatdatdatda", "dat", ".da.t"}) {
        for (const char* piece : {"", "piece 0\n", "piece 1\n", "piece 0\ndropped\n"}) {
            for (const char* base : {"a", "notes"}) {
                put(std::string(base) + ".tarno2-journal", journalOf(extension, piece));
                const auto with = contentsOf(inside);
                EXPECT_EQ(recoverFolder(inside).at(0).outcome, Outcome::LeftAlone) << extension;
                EXPECT_EQ(contentsOf(inside), with) << extension;
                EXPECT_EQ(contentsOf(folder.path()), before) << extension;
                removeFile(joinPath(inside, std::string(base) + ".tarno2-journal"));
            }
        }
    }
}

TEST(PlantedJournal, LeavesFilesThatHaveASecondNameOrAreLinks) {
    for (const bool symbolic : {false, true}) {
        for (const char* contents : {"1234567", "12345", ""}) {
            const TemporaryFolder folder;
            const std::string victim = folder.write("thesis.odt", contents);
            std::error_code error;
            const std::string data = folder.file("run.dat");
            symbolic ? std::filesystem::create_symlink("thesis.odt", data, error)
                     : std::filesystem::create_hard_link(victim, data, error);
            if (error) {
                continue;  // this system or user makes no links
            }
            folder.write("run.tarno2-journal", journalOf(".dat", "piece 0\n"));
            EXPECT_EQ(recoverFolder(folder.path()).at(0).outcome, Outcome::Failed);
            folder.write("run.tarno2-journal", journalOf(".dat", ""));
            EXPECT_THAT(recoverFolder(folder.path()), IsEmpty());
            EXPECT_TRUE(fileExists(data));
            EXPECT_EQ(readFile(victim), contents);

            // A description is never written through a link.
            removeFile(data);
            folder.write("run.dat", "123456");
            std::filesystem::create_symlink("thesis.odt", folder.file("run.txt"), error);
            folder.write("run.tarno2-journal", journalOf(".dat", "piece 0\n"));
            EXPECT_EQ(recoverFolder(folder.path()).at(0).outcome, error ? Outcome::Recovered : Outcome::Failed);
            EXPECT_EQ(readFile(victim), contents);
        }
    }
}

TEST(PlantedJournal, CostsNoMoreThanWhatIsThere) {
    constexpr uint64_t kTerabytes = uint64_t{3} << 40U;
    const TemporaryFolder folder;
    const struct {
        const char* piece;
        const char* data;
        bool recovered;
        uint64_t frames;
    } cases[] = {{"piece 4294967295\n", "run_4294967295.dat", true, kTerabytes / 6 + 1},
                 {"piece 4294967295\n", "run_7.dat", false, 0},
                 {"piece 4294967296\n", "run.dat", false, 0},
                 {"piece 0\nrecord 6 0 1 0 0 0 0 1\n", "run.dat", true, kTerabytes / 6},
                 {"piece 0\nrecord 18446744073709551612 1 1 1 1 1 1 1e308\n", "run.dat", true, kTerabytes / 6}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.piece);
        folder.write("run.tarno2-journal", journalOf(".dat", c.piece));
        if (std::string_view(c.data) != "run.dat") {
            folder.write("run.dat", "123456");
        }
        {
            File sparse;
            const std::string name = folder.file(c.data);
            ASSERT_TRUE(sparse.open(name, FileMode::CreateAlways, FileAccess::ReadWrite, FileShare::None).ok());
            if (!sparse.truncate(kTerabytes).ok()) {
                GTEST_SKIP() << "this file system has no such files";
            }
        }
        const auto reports = recoverFolder(folder.path());
        ASSERT_EQ(reports.size(), 1U);
        EXPECT_EQ(reports[0].outcome == Outcome::Recovered, c.recovered) << reports[0].problem;
        EXPECT_EQ(reports[0].frames, c.frames);
        for (const std::string& name : listDirectory(folder.path())) {
            removeFile(folder.file(name));
        }
    }
}

TEST(PlantedJournal, AFileWithAJournalOfItsOwnBelongsToThat) {
    for (const char* ending : {".journal", ".tarno2-journal"}) {
        const TemporaryFolder folder;
        folder.write("run.tarno2-journal", journalOf(".dat", "piece 2\n"));
        folder.write("run_2.dat", "1234567");
        const std::string others = folder.write(std::string("run_2") + ending, journalOf(".dat", "piece 0\n"));
        const auto before = contentsOf(folder.path());
        const auto report = recoverRecording(folder.file("run.tarno2-journal"));
        EXPECT_EQ(report->outcome, Outcome::Failed);
        EXPECT_THAT(report->problem, HasSubstr("belongs to another recording"));
        EXPECT_EQ(contentsOf(folder.path()), before);
        folder.write("run_2.tarno2-journal", "damaged");
        EXPECT_EQ(recoverRecording(folder.file("run.tarno2-journal"))->outcome, Outcome::Failed);
        EXPECT_EQ(readFile(folder.file("run_2.dat")), "1234567");
        removeFile(folder.file("run_2.tarno2-journal"));
        // Nor one that is being written without any journal.
        removeFile(others);
        File writer;
        const std::string data = folder.file("run_2.dat");
        ASSERT_TRUE(writer.openPlain(data, FileMode::OpenExisting, FileAccess::Write, FileShare::Read).ok());
        EXPECT_THAT(recoverFolder(folder.path()).at(0).problem, HasSubstr("is in use by another program"));
        EXPECT_EQ(readFile(data), "1234567");
        writer.close();
        EXPECT_EQ(recoverFolder(folder.path()).at(0).outcome, Outcome::Recovered);
        EXPECT_EQ(readFile(data), "123456");
    }
}

TEST(RecoveryStop, EndsWithTheRecordingAtHand) {
    const TemporaryFolder folder;
    folder.write("run.tarno2-journal", journalOf(".dat", "piece 0\n"));
    folder.write("run.dat", "1234567");
    const std::atomic<bool> stop{true};
    EXPECT_THAT(recoverFolder(folder.path(), &stop), IsEmpty());
    EXPECT_EQ(readFile(folder.file("run.dat")), "1234567");
}

}  // namespace
}  // namespace tarno2::test
