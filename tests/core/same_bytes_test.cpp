// What a recording leaves on the disk does not depend on how its data waited in memory.

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <vector>

#include "config/files/recording_name.h"
#include "core/storage/data_writer.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "records/key_value_file.h"
#include "tests/core/faulty_disk.h"
#include "tests/core/rig.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

constexpr uint64_t kCache = DataWriter::kCacheBytes;
constexpr uint64_t kMebi = 1024 * 1024;

struct Case {
    const char* what;
    uint32_t channels;
    uint64_t pieceBytes;
    uint64_t limitBytes;
    uint64_t recordFrames;         // 0: a plain stream of frames
    std::vector<uint64_t> frames;  // of the blocks
};

const Case kCases[] = {
    {"plain", 3, 0, 0, 0, {100000, 700000, 1, 600001, 100}},
    {"limit a byte before the cache is full", 1, 0, kCache - 1, 0, {kMebi, kMebi / 2}},
    {"limit where the cache is full", 1, 0, kCache, 0, {kMebi, kMebi / 2}},
    {"limit a byte after the cache is full", 1, 0, kCache + 1, 0, {kMebi, kMebi / 2, 5}},
    {"limit in the block that fills the cache", 1, 0, kCache - 100, 0, {kMebi, kMebi}},
    {"limit in the block that fills it again", 1, 0, 2 * kCache + 100, 0, {kMebi, kMebi, kMebi / 2, kMebi}},
    {"limit in a block beyond the cache", 2, 0, 3 * kCache, 0, {10, 2 * kMebi, 2 * kMebi}},
    {"pieces of some caches", 3, 2 * kCache + 7, 0, 0, {400000, 400000, 400000, 400000, 3}},
    {"a piece begins with a block that the limit leaves out", 1, kMebi, kMebi + kCache, 0, {kMebi / 2, 2 * kMebi}},
    {"small pieces", 2, 1000, 0, 0, {300, 700, 2500, 1}},
    {"pieces and limit", 5, 300007, 900001, 0, {20000, 50000, 50000}},
    {"records", 2, 0, 0, 500, {500, 5000, 500000, 500}},
    {"records in pieces", 2, 5000, 0, 500, {500, 5000, 1000}},
    {"records in pieces with a limit", 2, 5000, 21000, 500, {500, 5000, 1000}},
    {"a frame larger than a piece", 8, 10, 0, 0, {3}},
    {"blocks that end anywhere", 3, 30, 0, 0, {1, 3, 1, 7, 3}},
    {"limit where a piece ends", 2, 40, 80, 0, {20, 20}},
    {"limit in the first block, larger than the cache", 1, 0, 7 * kMebi, 0, {4 * kMebi}},
    {"limit in a later block, larger than the cache", 1, 0, 5 * kMebi, 0, {2 * kMebi, 2 * kMebi}},
    {"limit in a block larger than the cache that is not empty", 1, 0, 4 * kMebi, 0, {kMebi, 2 * kMebi}},
    {"records larger than a piece", 1, 20, 0, 15, {30, 15}},
    {"limit in a record", 1, 0, 250, 50, {100, 100}},
    {"limit in a record of a piece", 1, 200, 350, 50, {250}},
    {"limit in a record that the cache has no room for",
     1,
     0,
     (kCache / 100 + 1) * 100,
     50,
     {150, (kCache / 100 - 3) * 50, 450}},
    {"records and a limit at the cache", 1, 0, kCache + 200, 1000, {1000000, 572000, 2000}},
};

using Files = std::map<std::string, std::string>;

constexpr uint64_t kSkipped = 1000;  // bytes

/// How data wait: each a disk and a longest wait.
struct Waiting {
    const char* what;
    uint32_t longestWaitMs;
    bool held;          // nothing reaches the disk before all is in memory
    bool room = false;  // blocks are put right into the cache; their first words are not handed over
};

Files recordInto(const TemporaryFolder& folder, const Case& c, const Waiting& waiting) {
    FaultyDisk disk;
    WriterSetup setup = fakeSetup(folder.file("run.dat"), c.channels);
    setup.pieceBytes = c.pieceBytes;
    setup.limitBytes = c.limitBytes;
    setup.bufferBytes = 16 * kMebi;
    setup.longestWaitMs = waiting.longestWaitMs;
    setup.makeFile = disk.maker();
    if (waiting.held) {
        disk.hold();
    }
    RecordDescription description;
    DataWriter writer;
    EXPECT_EQ(writer.open(setup, description), 0);
    uint64_t position = 0;
    uint64_t points = 0;
    int32_t result = 0;
    for (const uint64_t frames : c.frames) {
        const std::string data = streamBytes(position, frames * c.channels, 2);
        const uint64_t unit = setup.frameBytes() * std::max<uint64_t>(c.recordFrames, 1);
        std::vector<SynchroEvent> events(c.recordFrames == 0 ? 0 : frames / c.recordFrames);
        for (SynchroEvent& event : events) {
            event.point = ++points;
        }
        position += frames * c.channels;
        const auto* from = reinterpret_cast<const std::byte*>(data.data());
        if (std::byte* room = waiting.room ? writer.room(data.size() + kSkipped) : nullptr; room != nullptr) {
            from = static_cast<std::byte*>(std::memcpy(room + kSkipped, from, data.size()));
        }
        result = writer.Write(from, data.size(), unit, events);
    }
    EXPECT_EQ(result, c.limitBytes == 0 ? 0 : 1);
    disk.release();
    EXPECT_TRUE(writer.Close());
    Files files;
    for (const std::string& name : listDirectory(folder.path())) {
        std::string text = readFile(folder.file(name));
        if (const size_t time = text.find("CreateTime = "); time != std::string::npos && name.ends_with(".txt")) {
            text.erase(time, text.find("\r\n", time) - time);  // of pieces: now
        }
        files[name] = std::move(text);
    }
    return files;
}

/// The files as a writer without threads leaves them: blocks are gathered in one cache, which is written together with
/// the block that would fill it, unless the limit has cut that block short and it is none that fills it alone.
std::vector<std::string> plainPieces(const Case& c) {
    const uint64_t frame = 2 * c.channels;
    const uint64_t unit = frame * std::max<uint64_t>(c.recordFrames, 1);
    const uint64_t pieceBytes = std::max(c.pieceBytes / frame, uint64_t{1}) * frame;
    std::vector<std::string> pieces(1);
    uint64_t cache = 0;
    uint64_t total = 0;
    uint64_t position = 0;
    for (const uint64_t frames : c.frames) {
        std::string data = streamBytes(position, frames * c.channels, 2);
        position += frames * c.channels;
        const bool alone = data.size() >= kCache;  // fills the cache
        const bool cut = c.limitBytes != 0 && total + data.size() > c.limitBytes;
        data.resize(cut ? c.limitBytes - total : data.size());
        while (!data.empty()) {
            uint64_t part = data.size();
            if (c.pieceBytes != 0) {
                const uint64_t least = std::min<uint64_t>(unit, part);
                if (!pieces.back().empty() && pieces.back().size() + least > pieceBytes) {
                    pieces.emplace_back();
                    cache = 0;
                }
                const uint64_t room = pieceBytes > pieces.back().size() ? pieceBytes - pieces.back().size() : 0;
                part = std::min(part, std::max(room / unit, uint64_t{1}) * unit);
            }
            const bool fills = cache + part >= kCache;
            cache = fills ? 0 : cache + part;
            if (!fills || !cut || part < data.size() || alone) {
                pieces.back().append(data, 0, part);
                total += part;
            }
            data.erase(0, part);
        }
    }
    std::erase_if(pieces, [frame](const std::string& piece) { return piece.size() < frame; });
    return pieces;
}

/// Points of the events that the description of a data file lists.
std::vector<int32_t> listedPoints(const std::string& dataName) {
    KeyValueFile file;
    std::vector<int32_t> points(100000);
    uint32_t count = 0;
    EXPECT_TRUE(file.openForReading(RecordDescription::fileNameFor(dataName))) << dataName;
    if (!file.readInt32Array("SynchroListPoint", points, count)) {
        count = 0;
    }
    points.resize(count);
    return points;
}

/// Each description tells the frames of its file, and the events of the records that begin there.
void expectDescribed(const std::vector<std::string>& names, const std::vector<std::string>& data, const Case& c) {
    int32_t point = 0;
    for (size_t k = 0; k < names.size(); ++k) {
        const uint64_t frames = data[k].size() / (2 * c.channels);
        EXPECT_EQ(describedFrames(names[k]), frames) << k;
        std::vector<int32_t> points(c.recordFrames == 0 ? 0 : (frames + c.recordFrames - 1) / c.recordFrames);
        std::generate(points.begin(), points.end(), [&point] { return ++point; });
        EXPECT_EQ(listedPoints(names[k]), points) << k;
    }
}

TEST(SameBytes, HoweverTheDataWaited) {
    constexpr Waiting kWays[] = {{"whole caches", 600000, false},
                                 {"hardly at all", 1, false},
                                 {"all in memory", 600000, true},
                                 {"all in memory, then due", 1, true},
                                 {"in the cache from the first", 600000, false, true}};
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.what);
        const std::vector<std::string> expected = plainPieces(c);
        Files first;
        for (const Waiting& way : kWays) {
            SCOPED_TRACE(way.what);
            const TemporaryFolder folder;
            const Files files = recordInto(folder, c, way);
            first = first.empty() ? files : first;
            EXPECT_TRUE(files == first);
            ASSERT_EQ(files.size(), 2 * expected.size());
            std::vector<std::string> names;
            for (uint32_t k = 0; k < expected.size(); ++k) {
                names.push_back(RecordingName(folder.file("run.dat")).piece(k));
                EXPECT_TRUE(files.at(fileNameOf(names.back())) == expected[k]) << k;
            }
            expectDescribed(names, expected, c);
        }
    }
}

}  // namespace
}  // namespace tarno2::test
