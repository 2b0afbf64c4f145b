#include "core/storage/data_writer.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <thread>

#include "config/files/recording_name.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "records/recorded_format.h"
#include "tests/core/rig.h"

namespace tarno2::test {
namespace {

constexpr uint64_t kMebi = 1024 * 1024;

WriterSetup setupFor(const std::string& name, uint32_t channels) {
    WriterSetup setup;
    setup.fileName = name;
    setup.sampleWidth = 2;
    setup.channelCount = channels;
    setup.facts.driverName = "Fake";
    setup.facts.totalFrequency = 1000.0 * channels;
    setup.facts.layout = {2, 0, 0x3FFF, 14, 14, 0xC000, 2, 1};
    setup.facts.ranges.assign(channels, {5.0, -5.0});
    return setup;
}

/// Writes the stream of test samples block by block.
struct Feeder {
    explicit Feeder(DataWriter& dataWriter) : writer(dataWriter) {}
    int32_t write(uint64_t bytes, uint64_t unit) {
        const std::string data = streamBytes(position / 2, bytes / 2, 2);
        position += bytes;
        return writer.Write(reinterpret_cast<const std::byte*>(data.data()), bytes, unit);
    }
    DataWriter& writer;
    uint64_t position = 0;
};

uint64_t describedFrames(const std::string& dataName) {
    RecordedFormat format;
    std::string missing;
    EXPECT_TRUE(readRecordedFormat(RecordDescription::fileNameFor(dataName), format, missing))
        << dataName << ": " << missing;
    EXPECT_EQ(format.driverName, "Fake");
    EXPECT_EQ(format.frequencyPerChannel, 1000.0);
    EXPECT_EQ(format.layout.digitalBits, 2);
    return format.frames;
}

TEST(DataWriter, SizeLimitOnEverySideOfACacheBorder) {
    struct Case {
        const char* what;
        uint64_t limit;
        std::vector<uint64_t> blocks;
        std::vector<int32_t> results;
        uint64_t size;  // of the file
    };
    const Case cases[] = {
        {"inside a block that fits the cache", 4000, {2400, 2400}, {0, 1}, 4000},
        {"exactly, in the cache", 4800, {2400, 2400}, {0, 1}, 4800},
        {"inside, after a flush", 5 * kMebi, {2 * kMebi, 2 * kMebi, 2 * kMebi}, {0, 0, 1}, 5 * kMebi},
        {"inside a block that flushes: it is left out", 7 * kMebi / 2, {2 * kMebi, 2 * kMebi}, {0, 1}, 2 * kMebi},
        {"exactly on a block that flushes", 3 * kMebi, {3 * kMebi / 2, 3 * kMebi / 2}, {0, 1}, 3 * kMebi},
        {"exactly on a flush, not on the cache", 4 * kMebi, {2 * kMebi, 2 * kMebi}, {0, 1}, 4 * kMebi},
        {"one byte pair short of the cache", 3 * kMebi - 2, {2 * kMebi, 2 * kMebi}, {0, 1}, 3 * kMebi - 2},
        {"nothing more after it", 4000, {4000, 400, 400}, {1, 1, 1}, 4000},
        {"inside a block larger than the cache: that is cut", 5 * kMebi, {4 * kMebi, 4 * kMebi}, {0, 1}, 5 * kMebi},
        {"inside the first block, larger than the cache", 7 * kMebi, {8 * kMebi}, {1}, 7 * kMebi},
        {"larger than the cache", 9 * kMebi, {4 * kMebi, 5 * kMebi}, {0, 1}, 9 * kMebi},
        {"unlimited", 0, {2 * kMebi, 2 * kMebi, 4 * kMebi, 2}, {0, 0, 0, 0}, 8 * kMebi + 2},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        TemporaryFolder folder;
        const std::string name = folder.file("run.dat");
        WriterSetup setup = setupFor(name, 1);
        setup.limitBytes = c.limit;
        RecordDescription description;
        DataWriter writer;
        ASSERT_EQ(writer.open(setup, description), 0);
        Feeder feeder(writer);
        for (size_t i = 0; i < c.blocks.size(); ++i) {
            EXPECT_EQ(feeder.write(c.blocks[i], 2), c.results[i]) << "block " << i;
        }
        EXPECT_TRUE(writer.Close());
        EXPECT_TRUE(readFile(name) == streamBytes(0, c.size / 2, 2));
        EXPECT_EQ(describedFrames(name), c.size / 2);
    }
}

TEST(DataWriter, Pieces) {
    struct Case {
        const char* what;
        uint32_t channels;
        uint64_t piece;
        uint64_t unit;  // frames that stay together
        uint64_t limit;
        std::vector<uint64_t> blocks;  // frames
        std::vector<uint64_t> sizes;   // of the pieces, frames
    };
    const Case cases[] = {
        {"whole frames", 3, 20, 1, 0, {7}, {3, 3, 1}},
        {"blocks that end anywhere", 3, 30, 1, 0, {1, 3, 1, 7, 3}, {5, 5, 5}},
        {"a frame larger than a piece", 8, 10, 1, 0, {3}, {1, 1, 1}},
        {"records end a piece", 1, 20, 4, 0, {12, 8}, {8, 8, 4}},
        {"records larger than a piece", 1, 20, 15, 0, {30, 15}, {15, 15, 15}},
        {"the limit counts all pieces", 2, 40, 1, 100, {20, 20}, {10, 10, 5}},
        {"the limit at a border", 2, 40, 1, 80, {20, 20}, {10, 10}},
        {"pieces over the cache's border",
         2,
         5 * kMebi,
         1,
         0,
         {kMebi, kMebi, kMebi},
         {5 * kMebi / 4, 5 * kMebi / 4, kMebi / 2}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        TemporaryFolder folder;
        const std::string name = folder.file("run.one.bin");
        WriterSetup setup = setupFor(name, c.channels);
        setup.pieceBytes = c.piece;
        setup.limitBytes = c.limit;
        const uint64_t frame = setup.frameBytes();
        RecordDescription description;
        DataWriter writer;
        ASSERT_EQ(writer.open(setup, description), 0);
        writer.setCreateTime({2003, 2, 0, 1, 4, 5, 6, 7});
        Feeder feeder(writer);
        for (const uint64_t frames : c.blocks) {
            EXPECT_GE(feeder.write(frames * frame, c.unit * frame), 0);
        }
        EXPECT_TRUE(writer.Close());
        EXPECT_EQ(listDirectory(folder.path()).size(), 2 * c.sizes.size()) << "a data file and a description each";
        uint64_t position = 0;
        for (uint32_t k = 0; k < c.sizes.size(); ++k) {
            const std::string piece = folder.file(k == 0 ? "run.one.bin" : "run.one_" + std::to_string(k) + ".bin");
            EXPECT_TRUE(readFile(piece) == streamBytes(position, c.sizes[k] * c.channels, 2)) << k;
            EXPECT_EQ(describedFrames(piece), c.sizes[k]) << k;
            const std::string text = readFile(RecordDescription::fileNameFor(piece));
            EXPECT_EQ(text.find("01.02.2003") != std::string::npos, k == 0) << "create time of piece " << k;
            position += c.sizes[k] * c.channels;
        }
    }
}

TEST(DataWriter, EmptyRecordingLeavesNothing) {
    TemporaryFolder folder;
    WriterSetup setup = setupFor(joinPath(joinPath(folder.file("new"), "deep"), "run.dat"), 2);
    RecordDescription description;
    DataWriter writer;
    ASSERT_EQ(writer.open(setup, description), 0);
    EXPECT_TRUE(fileExists(setup.fileName)) << "the folders are made";
    EXPECT_TRUE(writer.Close());
    EXPECT_TRUE(writer.Close()) << "a second time does no harm";
    EXPECT_TRUE(listDirectory(parentFolder(setup.fileName)).empty());
}

TEST(DataWriter, WhatCannotBeOpened) {
    TemporaryFolder folder;
    const std::string file = folder.write("file", "x");
    struct Case {
        std::string name;
        uint32_t channels;
        int32_t code;
    };
    for (const Case& c : {Case{"", 2, -2}, Case{folder.file("run.dat"), 0, -3}, Case{joinPath(file, "run.dat"), 2, -5},
                          Case{joinPath(joinPath(file, "deep"), "run.dat"), 2, -5}}) {
        RecordDescription description;
        DataWriter writer;
        EXPECT_EQ(writer.open(setupFor(c.name, c.channels), description), c.code) << c.name;
        EXPECT_EQ(writer.openError().empty(), c.code != -5) << c.name;
        EXPECT_EQ(Feeder(writer).write(4, 4), -1) << c.name;
        writer.Close();
    }
    EXPECT_EQ(listDirectory(folder.path()), std::vector<std::string>{"file"});
    EXPECT_EQ(readFile(file), "x");
}

TEST(DataWriter, EarlierRecordingIsKept) {
    TemporaryFolder folder;
    const std::string name = folder.file("run.dat");
    ScopedDebugLog log;
    for (const char* round : {"1", "2"}) {
        folder.write("run.dat", std::string("data") + round);
        folder.write("run.txt", std::string("text") + round);
        folder.write("run_1.dat", std::string("piece") + round);
        RecordDescription description;
        DataWriter writer;
        ASSERT_EQ(writer.open(setupFor(name, 1), description), 0);
        EXPECT_EQ(writer.movedAside().size(), 3U);
        EXPECT_TRUE(writer.Close());
    }
    for (const char* round : {"1", "2"}) {
        EXPECT_EQ(readFile(folder.file(std::string("run_old") + round + ".dat")), std::string("data") + round);
        EXPECT_EQ(readFile(folder.file(std::string("run_old") + round + ".txt")), std::string("text") + round);
        EXPECT_EQ(readFile(folder.file(std::string("run_old") + round + "_1.dat")), std::string("piece") + round);
    }
    EXPECT_EQ(listDirectory(folder.path()).size(), 6U);
    EXPECT_EQ(firstMissing(log.finish(), {"run_old1.dat", "run_old2.dat"}), "");
}

/// A volume of a few pages, gone at the end.
class SmallVolume {
public:
    explicit SmallVolume(const std::string& size) {
        mounted_ = kPathSeparator == '/' && createDirectory(path()).ok() &&
                   std::system(("mount -t tmpfs -o size=" + size + " tmpfs " + path() + " 2>&1").c_str()) == 0;
    }
    ~SmallVolume() {
        if (mounted_ && std::system(("umount " + path()).c_str()) != 0) {
            ADD_FAILURE() << "still mounted: " << path();
        }
    }
    SmallVolume(const SmallVolume&) = delete;
    SmallVolume& operator=(const SmallVolume&) = delete;
    [[nodiscard]] bool mounted() const { return mounted_; }
    [[nodiscard]] std::string path() const { return folder_.file("small"); }

private:
    TemporaryFolder folder_;
    bool mounted_ = false;
};

TEST(DataWriter, FullDiskLeavesWholeDescribedFrames) {
    for (const uint64_t block : {kMebi + 2, 4 * kMebi + 10}) {
        SmallVolume volume("4m");
        if (!volume.mounted()) {
            GTEST_SKIP() << "needs the right to mount a small tmpfs";
        }
        const std::string name = joinPath(volume.path(), "run.dat");
        RecordDescription description;
        DataWriter writer;
        const WriterSetup setup = setupFor(name, 7);
        ASSERT_EQ(writer.open(setup, description), 0);
        Feeder feeder(writer);
        const uint64_t frame = setup.frameBytes();
        int32_t result = 0;
        for (int i = 0; i < 1000 && result == 0; ++i) {  // memory takes some before the disk is found to be full
            result = feeder.write(block / frame * frame, frame);
        }
        EXPECT_EQ(result, -1);
        EXPECT_FALSE(writer.writeError().empty());
        EXPECT_EQ(feeder.write(frame, frame), -1) << "an error stays";
        EXPECT_FALSE(writer.Close());
        const std::string data = readFile(name);
        EXPECT_GT(data.size(), 3 * kMebi);
        EXPECT_EQ(data.size() % frame, 0U);
        EXPECT_TRUE(data == streamBytes(0, data.size() / 2, 2));
        EXPECT_EQ(describedFrames(name), data.size() / frame) << "the description has room, too";
    }
}

TEST(DataWriter, KeepsAMarginOfTheDiskFree) {
    for (const bool pieces : {false, true}) {
        SmallVolume volume("16m");
        if (!volume.mounted()) {
            GTEST_SKIP() << "needs the right to mount a small tmpfs";
        }
        WriterSetup setup = setupFor(joinPath(volume.path(), "run.dat"), 1);
        setup.keepDiskMargin = true;
        setup.bytesPerSecond = 2e6;
        setup.longestWaitMs = 1;
        setup.pieceBytes = pieces ? 3 * kMebi : 0;
        RecordDescription description;
        DataWriter writer;
        ASSERT_EQ(writer.open(setup, description), 0);
        Feeder feeder(writer);
        int32_t result = 0;
        while (result == 0) {
            result = feeder.write(100000, 2);
            while (writer.waitingBytes() > 0) {
                std::this_thread::yield();
            }
        }
        EXPECT_EQ(result, 1);
        EXPECT_TRUE(writer.diskNearlyFull());
        EXPECT_TRUE(writer.Close());
        std::string data;
        for (uint32_t k = 0; k < writer.fileCount(); ++k) {
            const std::string name = RecordingName(setup.fileName).piece(k);
            const std::string piece = readFile(name);
            EXPECT_EQ(describedFrames(name), piece.size() / 2);
            data += piece;
        }
        EXPECT_TRUE(data == streamBytes(0, feeder.position / 2, 2)) << "what was accepted is kept";
        EXPECT_GT(data.size(), 12 * kMebi);
        EXPECT_LT(data.size(), 14 * kMebi + 300000) << "a second of the stream stays free";
    }
}

TEST(DataWriter, FullDiskEndsTheRecording) {
    SmallVolume volume("2m");
    if (!volume.mounted()) {
        GTEST_SKIP() << "needs the right to mount a small tmpfs";
    }
    for (const bool atClose : {false, true}) {
        FakeDevice device;
        device.ring = [](uint32_t, uint32_t) { return 200000U; };
        device.readerPaced = atClose ? 1300000 : 50000000;  // 2.5 MiB wait in the cache for the end
        SessionRig rig(device);
        rig.dataName = joinPath(volume.path(), "run.dat");
        ASSERT_TRUE(rig.begin(1, 1e6F));
        if (atClose) {
            ASSERT_TRUE(device.waitForReads(1300000));
            rig.board->requestStop();
        }
        EXPECT_EQ(rig.end().code, StopCode::WriteError);
        const std::string data = rig.data();
        EXPECT_FALSE(data.empty());
        EXPECT_TRUE(data == streamBytes(0, data.size() / 2, 2));
        EXPECT_TRUE(fileExists(joinPath(volume.path(), "run.txt")));
        removeFile(rig.dataName);
        removeFile(joinPath(volume.path(), "run.txt"));
    }
}

}  // namespace
}  // namespace tarno2::test
