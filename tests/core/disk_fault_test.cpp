// Disks that stall, fill up or break while a recording is written.

#include <algorithm>
#include <atomic>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <thread>
#include <vector>

#include "core/storage/data_writer.h"
#include "platform/clock.h"
#include "platform/file.h"
#include "tests/core/faulty_disk.h"
#include "tests/core/rig.h"

namespace tarno2::test {
namespace {

constexpr uint64_t kCache = DataWriter::kCacheBytes;

/// A writer on a faulty disk, fed with the stream of test samples in frames of 7 channels.
struct DiskRig {
    DiskRig() { setup.makeFile = disk.maker(); }
    [[nodiscard]] bool open() { return writer.open(setup, description) == 0; }
    /// Writes blocks of whole frames until so many bytes were accepted, or the writer wants no more.
    int32_t feed(uint64_t bytes) {
        int32_t result = 0;
        while (result == 0 && position < bytes) {
            const std::string data = streamBytes(position / 2, 70000, 2);
            position += data.size();
            result = writer.Write(reinterpret_cast<const std::byte*>(data.data()), data.size(), setup.frameBytes());
        }
        return result;
    }
    /// What all files hold, every one of them described and of whole frames.
    [[nodiscard]] std::string recorded() const {
        std::string all;
        for (const std::string& name : listDirectory(folder.path())) {
            if (name.ends_with(".txt")) {
                continue;
            }
            const std::string data = readFile(folder.file(name));
            EXPECT_EQ(describedFrames(folder.file(name)) * 14, data.size()) << name;
            all += data;
        }
        return all;
    }

    const TemporaryFolder folder;
    FaultyDisk disk;
    WriterSetup setup = fakeSetup(folder.file("run.dat"), 7);
    RecordDescription description;
    DataWriter writer;
    uint64_t position = 0;
};

TEST(DiskFault, AStallIsWaitedForInMemoryAndThenByTheWriter) {
    DiskRig rig;
    rig.setup.bufferBytes = 6 * kCache;
    ASSERT_TRUE(rig.open());
    ASSERT_EQ(rig.writer.bufferBytes(), 6 * kCache);
    rig.disk.hold();
    EXPECT_EQ(rig.feed(5 * kCache), 0) << "does not wait";
    std::thread feeder([&rig] { EXPECT_EQ(rig.feed(20 * kCache), 0); });
    while (rig.writer.waitingBytes() < 6 * kCache) {
        std::this_thread::yield();
    }
    EXPECT_EQ(rig.writer.totalBytes(), 6 * kCache) << "memory is full";
    rig.disk.release();
    feeder.join();
    EXPECT_TRUE(rig.writer.Close());
    EXPECT_TRUE(rig.recorded() == streamBytes(0, rig.position / 2, 2));
    EXPECT_EQ(rig.disk.flushedBytes(), rig.position) << "the disk has it when it is closed";
}

TEST(DiskFault, MemoryIsTakenAsFarAsTheProcessMayHaveIt) {
    const struct {
        uint64_t room;
        uint64_t taken;
    } cases[] = {{100 * kCache, 8 * kCache}, {12 * kCache, 6 * kCache}, {0, 4 * kCache}};
    for (const auto& [room, taken] : cases) {
        DiskRig rig;
        rig.setup.bufferBytes = 8 * kCache;
        rig.setup.memoryRoom = [bytes = room] { return bytes; };
        rig.disk.hold();
        ASSERT_TRUE(rig.open());
        EXPECT_EQ(rig.writer.bufferBytes(), taken);
        // All of it is used while the disk takes nothing, also what is made ready only now.
        rig.feed(taken - kCache);
        EXPECT_GE(rig.writer.waitingBytes(), taken - kCache);
        rig.disk.release();
        EXPECT_TRUE(rig.writer.Close());
        EXPECT_TRUE(rig.recorded() == streamBytes(0, rig.position / 2, 2));
    }
}

// Every tenth write ends only when eight more caches were handed over: the one that hands them over would hang if it
// waited for the disk.
TEST(DiskFault, StallsShorterThanTheMemoryHoldNobodyUp) {
    constexpr uint64_t kBytes = 24 * kCache;
    DiskRig rig;
    rig.setup.bufferBytes = 16 * kCache;
    std::atomic<bool> stalled{false};
    std::atomic<bool> hung{false};
    rig.disk.beforeWrite = [&](uint32_t number) {
        const uint64_t goal = std::min(rig.writer.totalBytes() + 8 * kCache, kBytes);
        const uint64_t guard = tickCount() + 30000;
        stalled = number % 10 == 9;
        while (stalled && rig.writer.totalBytes() < goal) {
            std::this_thread::yield();
            hung = tickCount() > guard;
            stalled = !hung;
        }
        stalled = false;
    };
    ASSERT_TRUE(rig.open());
    while (rig.position < kBytes && rig.feed(rig.position + kCache) == 0) {
        // Between stalls the disk is the faster one.
        while (rig.writer.waitingBytes() > 4 * kCache && !stalled) {
            std::this_thread::yield();
        }
    }
    EXPECT_TRUE(rig.writer.Close());
    EXPECT_FALSE(hung);
    EXPECT_GE(rig.position, kBytes);
    EXPECT_TRUE(rig.recorded() == streamBytes(0, rig.position / 2, 2));
}

TEST(DiskFault, WhatCameBeforeAnErrorStays) {
    const struct {
        const char* what;
        uint64_t pieceBytes;
        uint64_t stays;  // bytes
        std::function<void(FaultyDisk&)> script;
    } cases[] = {
        {"nothing fits", 0, 0, [](FaultyDisk& disk) { disk.capacity = 0; }},
        {"full in a frame", 0, 7000000, [](FaultyDisk& disk) { disk.capacity = 7000003; }},
        {"full at a cache's border", 0, 2 * kCache / 14 * 14, [](FaultyDisk& disk) { disk.capacity = 2 * kCache; }},
        {"full in the second piece", 3500000, 5000002, [](FaultyDisk& disk) { disk.capacity = 5000003; }},
        {"the third file can't be made", 3500000, 7000000, [](FaultyDisk& disk) { disk.failingCreate = 2; }},
        {"a write takes less than it says", 0, (kCache + kCache / 2) / 14 * 14,
         [](FaultyDisk& disk) { disk.shortWrites = true; }},
        {"the first piece can't be brought to the disk", 3500000, 3500000,
         [](FaultyDisk& disk) { disk.failingFlush = true; }},
        {"the first piece can't be closed", 3500000, 3500000, [](FaultyDisk& disk) { disk.failingClose = true; }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        DiskRig rig;
        c.script(rig.disk);
        rig.setup.pieceBytes = c.pieceBytes;
        rig.setup.longestWaitMs = 600000;
        ASSERT_TRUE(rig.open());
        EXPECT_EQ(rig.feed(16 * kCache), -1) << "more than memory takes";
        EXPECT_EQ(rig.feed(rig.position + 1), -1) << "an error stays";
        EXPECT_FALSE(rig.writer.Close());
        EXPECT_FALSE(rig.writer.writeError().empty());
        EXPECT_TRUE(rig.recorded() == streamBytes(0, c.stays / 2, 2));
        EXPECT_EQ(rig.writer.savedBytes(), c.stays);
        EXPECT_EQ(2 * rig.writer.savedFiles(), listDirectory(rig.folder.path()).size());
    }
}

TEST(DiskFault, AnErrorWakesAWriterThatWaits) {
    DiskRig rig;
    rig.disk.capacity = kCache;
    rig.disk.hold();
    ASSERT_TRUE(rig.open());
    std::thread feeder([&rig] { EXPECT_EQ(rig.feed(20 * kCache), -1); });
    while (rig.writer.waitingBytes() < rig.writer.bufferBytes()) {
        std::this_thread::yield();
    }
    rig.disk.release();
    feeder.join();
    EXPECT_FALSE(rig.writer.Close());
    EXPECT_TRUE(rig.recorded() == streamBytes(0, kCache / 14 * 7, 2));
}

TEST(DiskFault, SlowDataDoNotWaitForAFullCache) {
    DiskRig rig;
    rig.setup.longestWaitMs = 10;
    ASSERT_TRUE(rig.open());
    for (int round = 1; round <= 3; ++round) {
        EXPECT_EQ(rig.feed(rig.position + 1), 0);
        while (rig.writer.waitingBytes() > 0) {
            std::this_thread::yield();
        }
        EXPECT_TRUE(readFile(rig.setup.fileName) == streamBytes(0, rig.position / 2, 2)) << "round " << round;
    }
    EXPECT_TRUE(rig.writer.Close());
}

TEST(DiskFault, DataAreBroughtToTheDiskNowAndThen) {
    DiskRig rig;
    rig.setup.longestWaitMs = 600000;
    rig.setup.flushPeriodMs = 1;
    ASSERT_TRUE(rig.open());
    EXPECT_EQ(rig.feed(3 * kCache - 1), 0);
    while (rig.disk.flushedBytes() < 2 * kCache) {
        std::this_thread::yield();
    }
    EXPECT_TRUE(rig.writer.Close());
    EXPECT_EQ(rig.disk.flushedBytes(), rig.position);
}

/// A session on a faulty disk with a board whose ring is small beside the memory.
struct SessionOnDisk {
    static constexpr uint32_t kHalf = 100002;  // samples; whole frames of 3 channels

    SessionOnDisk() {
        device.ring = [](uint32_t, uint32_t) { return 2 * kHalf; };
        session.emplace(device);
        session->setup = fakeSetup({}, 3);
        session->setup.makeFile = disk.maker();
    }
    /// Begins on a disk that takes nothing yet.
    [[nodiscard]] bool beginHeld() {
        disk.hold();
        return session->begin(3, 1e6F) && device.waitForCall("Start");
    }
    /// Halves of the ring, until so many samples have been read.
    [[nodiscard]] bool feedUntil(uint64_t end) {
        while (samples < end) {
            device.produce(kHalf);
            samples += kHalf;
            if (!device.waitForReads(samples)) {
                return false;
            }
        }
        return true;
    }
    /// The file's bytes, after the end.
    [[nodiscard]] std::string described() const {
        const std::string data = session->data();
        EXPECT_EQ(describedFrames(session->dataName) * 6, data.size());
        return data;
    }
    FaultyDisk disk;
    FakeDevice device;
    std::optional<SessionRig> session;
    uint64_t samples = 0;
};

TEST(DiskFault, ADiskThatFallsBehindIsToldOnceUntilItHasCaughtUp) {
    SessionOnDisk rig;
    ASSERT_TRUE(rig.beginHeld());
    const DataWriter& writer = rig.session->board->writer();
    for (size_t stall = 1; stall <= 2; ++stall) {
        ASSERT_TRUE(rig.feedUntil(rig.samples + writer.bufferBytes() / 3));
        while (rig.session->notes.slowDiskCount() < stall) {
            std::this_thread::yield();
        }
        EXPECT_EQ(rig.session->notes.slowDiskCount(), stall);
        rig.disk.release();
        while (writer.waitingBytes() > 0) {
            std::this_thread::yield();
        }
        rig.disk.hold();
    }
    rig.disk.release();
    EXPECT_EQ(rig.session->stop().code, StopCode::User);
    EXPECT_TRUE(rig.described() == streamBytes(0, rig.samples, 2));
}

TEST(DiskFault, AStallLongerThanMemoryAndRingIsAnOverflowAfterTheLastSavedSample) {
    SessionOnDisk rig;
    ASSERT_TRUE(rig.beginHeld());
    const DataWriter& writer = rig.session->board->writer();
    ASSERT_TRUE(rig.feedUntil(writer.bufferBytes() / 2 + 1));
    while (writer.totalBytes() < writer.bufferBytes()) {
        std::this_thread::yield();
    }
    rig.device.produce(uint64_t{2} * SessionOnDisk::kHalf);
    rig.disk.release();
    const RecordingResult result = rig.session->end();
    EXPECT_EQ(result.code, StopCode::Error);
    EXPECT_EQ(result.detail, ErrorDetail::Overflow);
    EXPECT_EQ(result.overflowPosition, rig.samples);
    EXPECT_EQ(readFile(rig.session->folder.file("run.log")),
              "sample = " + std::to_string(rig.samples) + ", count = " + std::to_string(2 * SessionOnDisk::kHalf) +
                  ", cause = overwritten\r\n");
    EXPECT_TRUE(rig.described() == streamBytes(0, rig.samples, 2));
}

TEST(DiskFault, AnErrorEndsTheRecordingWithWhatCameBeforeIt) {
    constexpr uint64_t kStays = (2 * kCache + 5) / 6 * 6;
    SessionOnDisk rig;
    rig.disk.capacity = 2 * kCache + 5;
    rig.session->setup.longestWaitMs = 600000;
    rig.device.readerPaced = 100000000;
    ASSERT_TRUE(rig.session->begin(3, 1e6F));
    const RecordingResult result = rig.session->end();
    EXPECT_EQ(result.code, StopCode::WriteError);
    EXPECT_FALSE(result.problem.empty());
    EXPECT_TRUE(rig.described() == streamBytes(0, kStays / 2, 2));
    EXPECT_EQ(result.bytes, kStays);
    EXPECT_EQ(result.files, 1U);
    const uint64_t accepted = rig.session->board->writer().totalBytes();
    const Loss expected{LossCause::Disk, kStays / 2, (accepted - kStays) / 2};
    EXPECT_EQ(result.losses, std::vector<Loss>{expected});
    EXPECT_NE(readFile(rig.session->folder.file("run.log")).find("cause = disk"), std::string::npos);
}

// Reads everywhere while caches go round many times and pieces begin.
TEST(DiskFault, ReadBackSeesWhatWasAcceptedWhereverItIs) {
    DiskRig rig;
    rig.setup.pieceBytes = 2000000;
    rig.setup.longestWaitMs = 5;
    ASSERT_TRUE(rig.open());
    const uint64_t bytes = 20 * kCache;
    const std::string expected = streamBytes(0, bytes / 2 + 70000, 2);
    std::atomic<bool> over{false};
    std::thread reader([&] {
        std::vector<std::byte> out(100000);
        uint64_t offset = 12345;
        for (uint64_t round = 0; !over || round < 100; ++round) {
            const uint64_t total = rig.writer.totalBytes();
            // Near the end, where caches are filled anew, and anywhere before it.
            offset = offset * 6364136223846793005U + 1442695040888963407U;
            const uint64_t back = (offset >> 20U) % (round % 2 == 0 ? 5 * kCache : bytes);
            const uint64_t from = total > back ? total - back : 0;
            const uint64_t got = rig.writer.readBack(from, out.data(), out.size());
            ASSERT_GE(got, std::min<uint64_t>(out.size(), total - from));
            ASSERT_EQ(std::memcmp(out.data(), expected.data() + from, got), 0) << from;
        }
    });
    EXPECT_EQ(rig.feed(bytes), 0);
    EXPECT_TRUE(rig.writer.Close());
    over = true;
    reader.join();
    std::string all(rig.position + 5, '\0');
    EXPECT_EQ(rig.writer.readBack(0, reinterpret_cast<std::byte*>(all.data()), all.size()), rig.position);
    EXPECT_TRUE(all.starts_with(expected.substr(0, rig.position)));
    EXPECT_EQ(rig.writer.readBack(rig.position + 5, reinterpret_cast<std::byte*>(all.data()), all.size()), 0U);
}

}  // namespace
}  // namespace tarno2::test
