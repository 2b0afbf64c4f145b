// Checksums of recordings, computed beside the disk and after the end.

#include <functional>
#include <gtest/gtest.h>
#include <vector>

#include "config/files/recording_name.h"
#include "core/storage/checksum_thread.h"
#include "core/storage/data_writer.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "platform/utf.h"
#include "records/checksum_list.h"
#include "tests/core/faulty_disk.h"
#include "tests/core/rig.h"

namespace tarno2::test {
namespace {

constexpr uint32_t kPatienceMs = 60000;

std::string sha256Of(const std::string& file) {
    Sha256 hash;
    const std::string bytes = readFile(file);
    hash.add(std::as_bytes(std::span(bytes)));
    return hash.take();
}

/// The list beside a recording; empty when there is none.
std::vector<FileChecksum> listOf(const std::string& dataName) {
    const std::string list = RecordingName(dataName).checksums();
    return fileExists(list) ? readChecksumList(readFile(list)).value_or(std::vector<FileChecksum>())
                            : std::vector<FileChecksum>();
}

/// Every data file and its checksum, as they should be listed.
std::vector<FileChecksum> filesOf(const std::string& dataName) {
    std::vector<FileChecksum> files;
    const RecordingName name(dataName);
    for (uint32_t k = 0; k < 20; ++k) {
        if (fileExists(name.piece(k))) {
            files.push_back({fileNameOf(name.piece(k)), sha256Of(name.piece(k))});
        }
    }
    return files;
}

Passport knownPassport() {
    Passport passport;
    passport.channels.resize(7);
    return passport;
}

TEST(Checksums, AreThoseOfTheFilesHoweverTheRecordingWent) {
    struct Case {
        const char* name;
        bool passport;
        uint64_t pieceBytes;
        std::function<void(FaultyDisk&, const std::string& dataName)> prepare;
        size_t files;
    };
    const uint64_t total = 9'000'012;
    const std::vector<Case> cases = {
        {"run.dat", true, 0, {}, 1},
        {"run.dat", false, 0, {}, 1},
        {"an odd \xD0\xB0 name.dat", true, 1'000'000, {}, 10},
        {"short_writes.dat", true, 0, [](FaultyDisk& disk, const std::string&) { disk.shortWrites = true; }, 1},
        {"full.dat", true, 0, [](FaultyDisk& disk, const std::string&) { disk.capacity = 5'000'003; }, 1},
        {"removed.dat", true, 1'000'000,
         [](FaultyDisk& disk, const std::string& dataName) {
             disk.beforeWrite = [dataName](uint32_t write) {
                 if (write == 1) {
                     removeFile(RecordingName(dataName).piece(1));
                 }
             };
         },
         9},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        TemporaryFolder folder;
        const std::string dataName = folder.file(c.name);
        FaultyDisk disk;
        ChecksumThread checksums;
        WriterSetup setup = fakeSetup(dataName, 7);
        setup.makeFile = disk.maker();
        setup.pieceBytes = c.pieceBytes;
        setup.checksums = &checksums;
        if (c.passport) {
            setup.passport = knownPassport();
        }
        if (c.prepare) {
            c.prepare(disk, dataName);
        }
        RecordDescription description;
        {
            DataWriter writer;
            ASSERT_EQ(writer.open(setup, description), 0) << writer.openError();
            for (uint64_t done = 0; done < total;) {
                const std::string data = streamBytes(done / 2, 70000, 2);
                done += data.size();
                if (writer.Write(reinterpret_cast<const std::byte*>(data.data()), data.size(), setup.frameBytes()) !=
                    0) {
                    break;
                }
            }
            static_cast<void>(writer.Close());
        }
        ASSERT_TRUE(checksums.wait(kPatienceMs));
        const auto files = filesOf(dataName);
        EXPECT_GE(files.size(), c.files == 1 ? 1U : c.files - 1);
        EXPECT_EQ(listOf(dataName), files);
        EXPECT_EQ(fileExists(RecordingName(dataName).passport()), c.passport);
        if (c.passport) {
            std::string problem;
            const auto passport = readPassport(readFile(RecordingName(dataName).passport()), problem);
            ASSERT_TRUE(passport) << problem;
            // A file that was removed under the writer's hands may have vanished only when it was closed: it is told
            // of, and has no checksum.
            std::vector<FileChecksum> told;
            for (const PassportPiece& piece : passport->pieces) {
                if (!piece.sha256.empty()) {
                    told.push_back({utf8ToSystem(piece.file), piece.sha256});
                }
            }
            EXPECT_EQ(told, files);
            EXPECT_LE(passport->pieces.size(), c.files == 9 ? 10 : files.size());
        }
    }
}

TEST(Checksums, GiveWayToRecordingsThatRunAndLetGoOfTheirNames) {
    TemporaryFolder folder;
    const std::string data = folder.write("run.dat", std::string(3'000'000, 'x'));
    const std::string foreign = folder.write("foreign.dat", "samples");
    const std::string foreignList = folder.write("foreign.sha256", "a list of somebody else");
    ChecksumThread checksums;
    // A recording whose disk has fallen behind.
    const auto running = checksums.begin(folder.file("other.dat"));
    ASSERT_NE(running, nullptr);
    running->setRoom(false);
    checksums.add(data, 0);
    ASSERT_TRUE(checksums.progress());
    EXPECT_EQ(checksums.progress()->dataName, data);
    EXPECT_EQ(checksums.progress()->done, 0U) << "the disk is not read";
    checksums.release(folder.file("unlike.dat"));
    EXPECT_TRUE(checksums.progress()) << "that recording has other files";
    checksums.release(data);
    EXPECT_FALSE(checksums.progress());
    EXPECT_TRUE(listOf(data).empty()) << "nothing was known";

    checksums.add(data, 0);
    checksums.add(foreign, 0);
    running->setRoom(true);
    running->leave();
    ASSERT_TRUE(checksums.wait(kPatienceMs));
    EXPECT_EQ(listOf(data), filesOf(data));
    EXPECT_EQ(readFile(foreignList), "a list of somebody else");
    EXPECT_FALSE(fileExists(folder.file("other.sha256"))) << "it was never finished";
}

TEST(Checksums, OnesThatAreReadyStayWhenTheRestIsGivenUp) {
    TemporaryFolder folder;
    const std::string data = folder.write("run.dat", std::string(1000, 'x'));
    std::vector<std::byte> buffer(1000);
    RecordingChecksums checksums(data);
    checksums.pieceBegins(data);
    checksums.pieceEnds(1000);
    checksums.pieceBegins(folder.write("run_1.dat", std::string(2000, 'y')));
    checksums.pieceEnds(2000);
    checksums.finish(std::nullopt);
    ASSERT_TRUE(checksums.step(buffer) && checksums.step(buffer)) << "half of the second file is read";
    EXPECT_NE(checksums.complete(), "");
    EXPECT_EQ(listOf(data), (std::vector<FileChecksum>{{"run.dat", sha256Of(data)}}));
}

TEST(Checksums, ARecordingThatMadeWayKeepsNoneOfAnother) {
    TemporaryFolder folder;
    const std::string data = folder.write("run.dat", std::string(1000, 'x'));
    std::vector<std::byte> buffer(100);
    RecordingChecksums checksums(data);
    checksums.pieceBegins(data);
    checksums.pieceEnds(1000);
    checksums.finish(std::nullopt);
    ASSERT_TRUE(checksums.step(buffer));
    ASSERT_TRUE(renameFile(data, folder.file("run_old1.dat")).ok());
    folder.write("run.dat", std::string(1000, 'y'));
    while (checksums.step(buffer)) {
    }
    EXPECT_EQ(checksums.complete(), "");
    EXPECT_TRUE(listOf(data).empty());
}

}  // namespace
}  // namespace tarno2::test
