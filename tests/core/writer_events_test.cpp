#include <gtest/gtest.h>
#include <vector>

#include "config/files/recording_name.h"
#include "core/storage/data_writer.h"
#include "platform/paths.h"
#include "records/key_value_file.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

constexpr uint64_t kRecord = 100;  // bytes; frames of one word

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

/// Writes blocks of so many records each, events with the points 1, 2, 3, ...
int32_t writeRecords(DataWriter& writer, const std::vector<size_t>& blocks) {
    uint64_t point = 0;
    int32_t result = 0;
    for (const size_t records : blocks) {
        std::vector<SynchroEvent> events(records);
        for (SynchroEvent& event : events) {
            event.point = ++point;
        }
        const std::vector<std::byte> data(records * kRecord);
        result = writer.Write(data.data(), data.size(), kRecord, events);
    }
    return result;
}

TEST(WriterEvents, StandInTheDescriptionOfTheFileThatHoldsTheRecord) {
    const struct {
        const char* what;
        uint64_t pieceBytes;
        uint64_t limitBytes;
        std::vector<size_t> blocks;
        std::vector<std::vector<int32_t>> points;  // a file
    } cases[] = {
        {"one file", 0, 0, {2, 1, 3}, {{1, 2, 3, 4, 5, 6}}},
        {"no event", 0, 0, {}, {}},
        {"whole pieces", 200, 0, {2, 2}, {{1, 2}, {3, 4}}},
        {"pieces with room left", 250, 0, {1, 4}, {{1, 2}, {3, 4}, {5}}},
        {"a record larger than a piece", 60, 0, {2, 1}, {{1}, {2}, {3}}},
        {"limit between records", 0, 300, {2, 2}, {{1, 2, 3}}},
        {"limit in a record", 0, 250, {2, 2}, {{1, 2, 3}}},
        {"limit in a piece", 200, 350, {5}, {{1, 2}, {3, 4}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const TemporaryFolder folder;
        WriterSetup setup;
        setup.fileName = folder.file("run.dat");
        setup.facts.driverName = "Fake";
        setup.facts.ranges = {{5.0, -5.0}};
        setup.pieceBytes = c.pieceBytes;
        setup.limitBytes = c.limitBytes;
        RecordDescription description;
        DataWriter writer;
        ASSERT_EQ(writer.open(setup, description), 0);
        EXPECT_EQ(writeRecords(writer, c.blocks), c.limitBytes == 0 ? 0 : 1);
        EXPECT_TRUE(writer.Close());
        std::vector<std::vector<int32_t>> points;
        for (uint32_t piece = 0; piece < c.points.size(); ++piece) {
            points.push_back(listedPoints(RecordingName(setup.fileName).piece(piece)));
        }
        EXPECT_EQ(points, c.points);
    }
}

TEST(WriterEvents, RecordsThatTheLimitLeavesOutAreNotListed) {
    // The limit cuts the last block while the cache has to be written: that block does not reach the file.
    constexpr size_t kFilling = DataWriter::kCacheBytes / kRecord;
    const TemporaryFolder folder;
    WriterSetup setup;
    setup.fileName = folder.file("run.dat");
    setup.facts.driverName = "Fake";
    setup.facts.ranges = {{5.0, -5.0}};
    setup.limitBytes = (kFilling + 1) * kRecord;
    RecordDescription description;
    DataWriter writer;
    ASSERT_EQ(writer.open(setup, description), 0);
    EXPECT_EQ(writeRecords(writer, {3, kFilling - 3, 9}), 1);
    EXPECT_TRUE(writer.Close());
    EXPECT_EQ(listedPoints(setup.fileName).size(), kFilling);
}

}  // namespace
}  // namespace tarno2::test
