#include "platform/file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/paths.h"
#include "tests/support/temporary_folder.h"

namespace tarno2 {
namespace {

using test::TemporaryFolder;
using testing::ElementsAre;

size_t put(File& file, std::string_view text) {
    size_t done = 0;
    EXPECT_TRUE(file.write(text.data(), text.size(), done).ok());
    return done;
}

TEST(File, ModesDecideAboutEarlierContents) {
    const TemporaryFolder folder;
    struct Case {
        FileMode mode;
        bool opensExisting;
        bool opensMissing;
        const char* left;  // of "earlier", after "new" is written over its start
    };
    const Case cases[] = {{FileMode::CreateAlways, true, true, "new"},
                          {FileMode::CreateNew, false, true, "earlier"},
                          {FileMode::OpenExisting, true, false, "newlier"},
                          {FileMode::OpenAlways, true, true, "newlier"}};
    for (const auto& [mode, opensExisting, opensMissing, left] : cases) {
        for (const auto share : {FileShare::None, FileShare::ReadWrite}) {
            SCOPED_TRACE(static_cast<int>(mode));
            const std::string there = folder.write("there", "earlier");
            File file;
            const OsError taken = file.open(there, mode, FileAccess::Write, share);
            EXPECT_EQ(taken.ok(), opensExisting) << taken.text();
            EXPECT_EQ(taken.alreadyExists(), !opensExisting);
            if (file.isOpen()) {
                EXPECT_EQ(put(file, "new"), 3U);
                EXPECT_TRUE(file.close().ok());
            }
            EXPECT_EQ(test::readFile(there), left);
            const std::string missing = folder.file("missing");
            const OsError made = file.open(missing, mode, FileAccess::ReadWrite, share);
            EXPECT_EQ(made.ok(), opensMissing) << made.text();
            EXPECT_EQ(made.notFound(), !opensMissing);
            file.close();
            EXPECT_EQ(removeFile(missing).ok(), opensMissing);
        }
    }
}

TEST(File, ExclusiveUseKeepsOthersOutAndContentsWhole) {
    const TemporaryFolder folder;
    const std::string path = folder.write("log", "kept");
    File holder;
    ASSERT_TRUE(holder.open(path, FileMode::OpenExisting, FileAccess::Read, FileShare::None).ok());
    for (const auto mode : {FileMode::CreateAlways, FileMode::OpenExisting, FileMode::OpenAlways}) {
        File other;
        const OsError error = other.open(path, mode, FileAccess::Write, FileShare::None);
        EXPECT_FALSE(error.ok());
        EXPECT_FALSE(error.text().empty());
        EXPECT_FALSE(other.isOpen());
    }
    uint64_t size = 0;
    EXPECT_TRUE(holder.size(size).ok());
    EXPECT_EQ(size, 4U) << "a refused create-always must not have emptied the file";
    File moved = std::move(holder);
    EXPECT_TRUE(moved.close().ok());
    EXPECT_TRUE(holder.open(path, FileMode::OpenAlways, FileAccess::Write, FileShare::None).ok());
}

TEST(File, OneWritesWhileOthersRead) {
    const TemporaryFolder folder;
    const std::string path = folder.file("data");
    File writer;
    ASSERT_TRUE(writer.openPlain(path, FileMode::CreateNew, FileAccess::Write, FileShare::Read).ok());
    put(writer, "samples");
    for (const auto share : {FileShare::Read, FileShare::None}) {
        File other;
        EXPECT_TRUE(other.openPlain(path, FileMode::OpenExisting, FileAccess::ReadWrite, share).inUse());
    }
    std::string contents;
    EXPECT_TRUE(readWholeFile(path, 100, FileShare::ReadWrite, contents).ok());
    EXPECT_EQ(contents, "samples");
    EXPECT_TRUE(writer.confirmLock().ok());
    EXPECT_FALSE(writer.hasOtherNames());
    EXPECT_TRUE(writer.isOfThisUser());
}

TEST(File, RemovesANameOnlyWhileItLeadsToTheFile) {
    const TemporaryFolder folder;
    const std::string path = folder.write("data", "mine");
    File file;
    ASSERT_TRUE(file.openPlain(path, FileMode::OpenExisting, FileAccess::ReadWriteRemove, FileShare::Read).ok());
    EXPECT_TRUE(renameFile(path, folder.file("elsewhere")).ok());
    EXPECT_EQ(file.named(path), Named::No);
    EXPECT_TRUE(file.removeNamed(path).notFound());
    folder.write("data", "somebody's");
    EXPECT_EQ(file.named(path), Named::No);
    EXPECT_TRUE(file.removeNamed(path).notFound());
    EXPECT_EQ(test::readFile(path), "somebody's");
    EXPECT_TRUE(file.close().ok());
    const std::string moved = folder.file("elsewhere");
    ASSERT_TRUE(file.openPlain(moved, FileMode::OpenExisting, FileAccess::ReadWriteRemove, FileShare::Read).ok());
    EXPECT_TRUE(file.removeNamed(moved).ok());
    EXPECT_TRUE(file.close().ok());
    EXPECT_THAT(listDirectory(folder.path()), ElementsAre("data"));
}

TEST(File, AWholeFileIsThereOrNone) {
    const TemporaryFolder folder;
    const std::string path = folder.file("journal");
    File file;
    ASSERT_TRUE(file.createWhole(path, "contents").ok());
    EXPECT_EQ(file.named(path), Named::Yes);
    File other;
    EXPECT_TRUE(other.openPlain(path, FileMode::OpenExisting, FileAccess::ReadWrite, FileShare::None).inUse());
    EXPECT_TRUE(other.createWhole(path, "others").alreadyExists());
    EXPECT_FALSE(other.createWhole(joinPath(folder.file("none"), "x"), "others").ok());
    EXPECT_FALSE(other.isOpen());
    char begin[3] = {};
    size_t done = 0;
    EXPECT_TRUE(file.seek(0).ok() && file.read(begin, sizeof begin, done).ok());
    EXPECT_EQ(std::string_view(begin, done), "con");
    EXPECT_TRUE(file.removeNamed(path).ok());
    EXPECT_TRUE(file.close().ok());
    EXPECT_TRUE(listDirectory(folder.path()).empty());
}

TEST(File, PositionsSizesAndCuts) {
    const TemporaryFolder folder;
    File file;
    ASSERT_TRUE(file.open(folder.file("x"), FileMode::CreateNew, FileAccess::ReadWrite, FileShare::None).ok());
    put(file, "0123456789");
    char buffer[16] = {};
    size_t done = 0;
    EXPECT_TRUE(file.seek(8).ok());
    EXPECT_TRUE(file.read(buffer, sizeof buffer, done).ok());
    EXPECT_EQ(std::string_view(buffer, done), "89") << "short at the end of the file";
    EXPECT_TRUE(file.truncate(4).ok());
    put(file, "ab");
    const uint64_t far = (uint64_t{5} << 30U) + 1;  // behind 4 GiB
    EXPECT_TRUE(file.seek(far).ok());
    put(file, "z");
    EXPECT_TRUE(file.flush().ok());
    uint64_t size = 0;
    EXPECT_TRUE(file.size(size).ok());
    EXPECT_EQ(size, far + 1);
    EXPECT_FALSE(file.seek(~uint64_t{0}).ok());
    EXPECT_TRUE(file.truncate(6).ok());
    EXPECT_TRUE(file.close().ok());
    EXPECT_EQ(test::readFile(folder.file("x")), "0123ab");
}

TEST(File, RefusesFoldersAndPathsThroughFiles) {
    const TemporaryFolder folder;
    const std::string plain = folder.write("plain", "");
    File file;
    for (const auto access : {FileAccess::Read, FileAccess::Write}) {
        EXPECT_FALSE(file.open(folder.path(), FileMode::OpenExisting, access, FileShare::None).ok());
        EXPECT_FALSE(file.openPlain(folder.path(), FileMode::OpenExisting, access, FileShare::None).ok());
        EXPECT_FALSE(file.open("", FileMode::OpenAlways, access, FileShare::None).ok());
        EXPECT_FALSE(file.open(joinPath(plain, "below"), FileMode::OpenAlways, access, FileShare::None).ok());
        EXPECT_FALSE(file.open(folder.file(std::string(999, 'n')), FileMode::OpenAlways, access, FileShare::None).ok());
    }
    std::string contents;
    EXPECT_FALSE(readWholeFile(folder.path(), 1000, FileShare::ReadWrite, contents).ok());
    EXPECT_FALSE(createDirectory(joinPath(plain, "below")).ok());
    EXPECT_TRUE(listDirectory(plain).empty());
    EXPECT_FALSE(isDirectory(plain));
    EXPECT_FALSE(isWritableFolder(joinPath(plain, "below")));
}

TEST(File, RenamingReplacesOnlyWhenAsked) {
    const TemporaryFolder folder;
    const std::string a = folder.write("a", "A");
    const std::string b = folder.write("b", "B");
    EXPECT_TRUE(renameFile(a, b).alreadyExists());
    EXPECT_EQ(test::readFile(b), "B");
    EXPECT_TRUE(replaceFile(a, b).ok());
    EXPECT_EQ(test::readFile(b), "A");
    EXPECT_TRUE(renameFile(b, a).ok());
    EXPECT_TRUE(renameFile(b, folder.file("c")).notFound());
    EXPECT_TRUE(createDirectory(folder.file("Z")).ok());
    EXPECT_TRUE(createDirectory(folder.file("Z")).alreadyExists());
    EXPECT_THAT(listDirectory(folder.path()), ElementsAre("Z", "a"));
    EXPECT_TRUE(createFolders(folder.file("Z/y/x/")).ok());
    EXPECT_TRUE(createFolders(folder.file("Z/y")).ok());
    EXPECT_FALSE(createFolders(joinPath(a, "y")).ok());
    EXPECT_FALSE(removeDirectory(folder.file("Z")).ok()) << "not empty";
    for (const char* name : {"Z/y/x", "Z/y", "Z"}) {
        EXPECT_TRUE(removeDirectory(folder.file(name)).ok());
    }
    EXPECT_TRUE(removeFile(a).ok());
    EXPECT_FALSE(fileExists(a));
}

TEST(File, WholeFilesInOneStep) {
    const TemporaryFolder folder;
    const std::string path = folder.file("settings");
    std::string contents;
    EXPECT_TRUE(readWholeFile(path, 10, FileShare::ReadWrite, contents).notFound());
    EXPECT_TRUE(replaceWholeFile(path, "old").ok());
    EXPECT_TRUE(replaceWholeFile(path, std::string_view("n\0w", 3)).ok());
    EXPECT_TRUE(readWholeFile(path, 3, FileShare::None, contents).ok());
    EXPECT_EQ(contents, std::string("n\0w", 3));
    EXPECT_EQ(readWholeFile(path, 2, FileShare::None, contents).code(), OsError::tooLarge().code());
    EXPECT_TRUE(contents.empty());
    EXPECT_FALSE(replaceWholeFile(joinPath(path, "below"), "x").ok());
    EXPECT_THAT(listDirectory(folder.path()), ElementsAre("settings")) << "temporary files are gone";
    std::string first;
    std::string second;
    EXPECT_TRUE(createTemporaryFile(folder.path(), "t", first).ok());
    EXPECT_TRUE(createTemporaryFile(folder.path(), "t", second).ok());
    EXPECT_NE(first, second);
    EXPECT_EQ(fileNameOf(first).front(), 't');
    EXPECT_TRUE(isWritableFolder(folder.path()));
}

}  // namespace
}  // namespace tarno2
