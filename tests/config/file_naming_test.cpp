#include "config/files/file_naming.h"

#include <gmock/gmock.h>

#include "config/files/documents_folder.h"
#include "config/files/file_name_check.h"
#include "config/files/move_aside.h"
#include "config/files/recording_name.h"
#include "config/logs/debug_log.h"
#include "platform/c_locale.h"
#include "platform/clock.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The running number of a name generated today; -1 when the name is not one.
int numberOf(const std::string& name) {
    const LocalTime today = localTime();
    const std::string prefix = formatText("file_%d_%d_%d_n", today.year, today.month, today.day);
    const std::string file = fileNameOf(name);
    if (!file.starts_with(prefix) || !file.ends_with(".dat")) {
        return -1;
    }
    return std::stoi(file.substr(prefix.size()));
}

TEST(FileNaming, AtStartAChosenNameComesBackUntilItIsUsed) {
    const TemporaryFolder folder;
    FileNaming naming;
    EXPECT_EQ(naming.NameAtStart(folder.file("engine.dat")), folder.file("engine.dat"));
    folder.write("engine.dat", "recorded");
    EXPECT_GE(numberOf(naming.NameAtStart(folder.file("engine.dat"))), 0);
    // A generated name bears its day: a new day gets a new name.
    EXPECT_GE(numberOf(naming.NameAtStart(folder.file("file_2001_1_1_n0.dat"))), 0);
    EXPECT_EQ(naming.NameAtStart(folder.file("file_motor.dat")), folder.file("file_motor.dat"));
}

TEST(FileNaming, NewNamesMeetNoLeftovers) {
    const TemporaryFolder folder;
    FileNaming naming;
    const std::string first = naming.GenerateFileName(folder.file("chosen.dat"), {});
    EXPECT_EQ(parentFolder(first), folder.path());
    const int start = numberOf(first);
    ASSERT_GE(start, 0) << first;

    folder.write(fileNameOf(first), "recorded");
    EXPECT_TRUE(naming.isNewest(first));
    const std::string second = naming.GenerateFileName(first, {});
    EXPECT_FALSE(naming.isNewest(first));
    EXPECT_EQ(numberOf(second), start + 1);
    folder.write(fileNameOf(second).replace(fileNameOf(second).size() - 3, 3, "txt"), "a description alone");
    EXPECT_EQ(numberOf(naming.GenerateFileName(first, {})), start + 2);

    debugLog().open(folder.file("naming.cfg"), 1);
    const std::string third = naming.GenerateFileName(first, {});
    debugLog().close();
    EXPECT_THAT(readFile(folder.file("naming.dbg")), testing::HasSubstr("--- New file = \"" + third + "\"\r\n"));
}

TEST(FileNaming, FolderComesFromTheFirstNameThatHasOne) {
    const TemporaryFolder field;
    const TemporaryFolder saved;
    const TemporaryFolder documents;
    const ScopedEnvironment noRegistry("TARNO2_REGISTRY", documents.path());
    const ScopedEnvironment own("XDG_DOCUMENTS_DIR", documents.path());
    FileNaming naming;
    const auto folderOf = [&](const std::string& current, const std::string& savedName) {
        return parentFolder(naming.GenerateFileName(current, savedName));
    };
    EXPECT_EQ(folderOf(field.file("a.dat"), saved.file("b.dat")), field.path());
    EXPECT_EQ(folderOf("a.dat", saved.file("b.dat")), saved.path());
    EXPECT_EQ(folderOf("", ""), joinPath(documentsFolder(), "Data"));
    if (kPathSeparator == '/') {  // Windows has a registry of its own
        EXPECT_EQ(documentsFolder(), documents.path());
        documents.write("personal.reg",
                        "REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\"
                        "Shell Folders]\r\n\"Personal\"=\"/home/of/documents\"\r\n");
        EXPECT_EQ(documentsFolder(), "/home/of/documents");
    }
}

// A desktop tells programs by a file alone where documents are, by their name in the user's language.
TEST(FileNaming, DocumentsAreWhereTheDesktopKeepsThem) {
    if (kPathSeparator != '/') {
        GTEST_SKIP() << "Windows has a registry";
    }
    const TemporaryFolder home;
    const ScopedEnvironment noRegistry("TARNO2_REGISTRY", home.path());
    const ScopedEnvironment unset("XDG_DOCUMENTS_DIR", "");
    const ScopedEnvironment user("HOME", home.path());
    const ScopedEnvironment settings("XDG_CONFIG_HOME", home.path());
    EXPECT_EQ(documentsFolder(), home.file("Documents"));
    const auto withLines = [&](const std::string& lines) {
        home.write("user-dirs.dirs", lines);
        return documentsFolder();
    };
    EXPECT_EQ(withLines("# a note\nXDG_MUSIC_DIR=\"$HOME/Music\"\nXDG_DOCUMENTS_DIR=\"$HOME/Документы\"\n"),
              home.file("Документы"));
    EXPECT_EQ(withLines("XDG_DOCUMENTS_DIR=\"/data/of \\\"lab\\\"\""), "/data/of \"lab\"");
    EXPECT_EQ(withLines(" XDG_DOCUMENTS_DIR=\"$HOME/\"\n"), home.file("Documents")) << "the desktop has none";
    EXPECT_EQ(withLines("#XDG_DOCUMENTS_DIR=\"/data\"\nXDG_DOCUMENTS_DIR=\"data\"\n"), home.file("Documents"));
}

TEST(FileNaming, NamesThatCannotBeRecordedAreRefused) {
    const TemporaryFolder folder;
    ASSERT_TRUE(createDirectory(folder.file("sub")).ok());
    ASSERT_TRUE(createDirectory(folder.file("sub.dat")).ok());
    const struct {
        std::string name;
        NameProblem problem;
    } cases[] = {
        {"", NameProblem::Empty},
        {std::string("run\0.dat", 8), NameProblem::Impossible},
        {"run\nRecorded.dat", NameProblem::Impossible},
        {"run\t.dat", NameProblem::Impossible},
        {"run\x7F", NameProblem::Impossible},
        {"sub\r/run.dat", NameProblem::Impossible},
        {"run.txt", NameProblem::EqualsDescription},
        {"run.TXT", NameProblem::EqualsDescription},
        {"run.Log", NameProblem::EqualsDescription},
        {"run.journal", NameProblem::EqualsDescription},
        {"run.json", NameProblem::EqualsDescription},
        {"run.Sha256", NameProblem::EqualsDescription},
        {"run.MARKS.csv", NameProblem::EqualsDescription},
        {"run.csv", NameProblem::None},
        {"a.Tarno2-Journal", NameProblem::EqualsDescription},
        {folder.path(), NameProblem::IsFolder},
        {folder.file("new") + kPathSeparator, NameProblem::IsFolder},
        {folder.file("sub.dat"), NameProblem::IsFolder},
        {folder.file("sub"), NameProblem::IsFolder},
        {folder.file("other.x"), NameProblem::IsFolder},
        {".", NameProblem::IsFolder},
        {"..", NameProblem::IsFolder},
        {folder.file("not yet/."), NameProblem::IsFolder},
        {folder.file("not yet/.."), NameProblem::IsFolder},
        {folder.file("run"), NameProblem::None},
        {folder.file("run.txt.dat"), NameProblem::None},
        {folder.file("not yet/run.dat"), NameProblem::None},
    };
    ASSERT_TRUE(createDirectory(folder.file("other.x")).ok());
    for (const auto& c : cases) {
        EXPECT_EQ(checkDataFileName(c.name), c.problem) << c.name;
    }
}

TEST(MoveAside, AllFilesOfTheRecordingAndNoOthers) {
    const TemporaryFolder folder;
    // Every file holds its first name, so that a lost or replaced one shows.
    for (const char* name : {"run.dat", "run.txt", "run_1.dat", "run_1.txt", "run_12.txt", "run_01.dat", "run_x.dat",
                             "run_0.dat", "runner_1.dat", "run_3.csv", "run_old1_4.dat", "run_old2.txt"}) {
        folder.write(name, name);
    }
    const RecordingName run(folder.file("run.dat"));
    ASSERT_EQ(freeOldNumber(run), 3U);
    const MovedAside moved = moveAside(run, 3);
    EXPECT_TRUE(moved.error.ok());
    EXPECT_THAT(moved.names,
                ElementsAre(folder.file("run_old3.dat"), folder.file("run_old3.txt"), folder.file("run_old3_1.dat"),
                            folder.file("run_old3_1.txt"), folder.file("run_old3_12.txt")));
    EXPECT_THAT(listDirectory(folder.path()),
                ElementsAre("run_0.dat", "run_01.dat", "run_3.csv", "run_old1_4.dat", "run_old2.txt", "run_old3.dat",
                            "run_old3.txt", "run_old3_1.dat", "run_old3_1.txt", "run_old3_12.txt", "run_x.dat",
                            "runner_1.dat"));
    EXPECT_EQ(readFile(folder.file("run_old3.dat")), "run.dat");
    EXPECT_EQ(readFile(folder.file("run_old3_12.txt")), "run_12.txt");
    EXPECT_EQ(readFile(folder.file("run_old2.txt")), "run_old2.txt");

    EXPECT_EQ(freeOldNumber(run), 4U);
    EXPECT_THAT(moveAside(run, 4).names, IsEmpty());
    EXPECT_THAT(moveAside(RecordingName(folder.file("no folder/run.dat")), 1).names, IsEmpty());
}

// What stands in the way has come since the number was chosen; `n` files were moved by then.
TEST(MoveAside, IsAllOrNothingAndGoesOnWhereItWasCutOff) {
    for (const char* inTheWay : {"run_old1.dat", "run_old1_2.txt", "run_old1.log"}) {
        const TemporaryFolder folder;
        for (const char* name : {"run.dat", "run.txt", "run_2.dat", "run_2.txt", "run.log", inTheWay}) {
            folder.write(name, name);
        }
        const RecordingName run(folder.file("run.dat"));
        const MovedAside moved = moveAside(run, 1);
        const std::string from = fileNameOf(inTheWay).erase(3, 5);
        EXPECT_TRUE(moved.error.alreadyExists());
        EXPECT_EQ(moved.file, folder.file(from));
        EXPECT_THAT(moved.names, IsEmpty());
        for (const char* name : {"run.dat", "run.txt", "run_2.dat", "run_2.txt", "run.log", inTheWay}) {
            EXPECT_EQ(readFile(folder.file(name)), name);
        }
        EXPECT_EQ(listDirectory(folder.path()).size(), 6U);

        removeFile(folder.file(inTheWay));
        ASSERT_TRUE(renameFile(folder.file("run.dat"), folder.file("run_old1.dat")).ok()) << "as far as it came";
        EXPECT_EQ(moveAside(run, 1).names.size(), 4U);
        EXPECT_THAT(listDirectory(folder.path()),
                    ElementsAre("run_old1.dat", "run_old1.log", "run_old1.txt", "run_old1_2.dat", "run_old1_2.txt"));
    }
}

TEST(MoveAside, OtherCaseCountsWhereTheDiskDoesNotTell) {
    const TemporaryFolder folder;
    folder.write("RUN_5.DAT", "five");
    const bool oneName = fileExists(folder.file("run_5.dat"));
    const MovedAside moved = moveAside(RecordingName(folder.file("run.dat")), 1);
    EXPECT_EQ(moved.names.size(), oneName ? 1U : 0U);
    EXPECT_EQ(readFile(folder.file(oneName ? "run_old1_5.dat" : "RUN_5.DAT")), "five");
}

}  // namespace
}  // namespace tarno2::test
