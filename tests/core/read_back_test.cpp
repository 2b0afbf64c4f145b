#include <gtest/gtest.h>
#include <string>

#include "core/storage/data_writer.h"
#include "tests/core/fake_device.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

TEST(ReadBack, CountsOverAllPiecesFromTheFirstSample) {
    const TemporaryFolder folder;
    WriterSetup setup;
    setup.fileName = folder.file("run.dat");
    setup.pieceBytes = 100000;
    RecordDescription description;
    DataWriter writer;
    ASSERT_EQ(writer.open(setup, description), 0);
    const std::string data = streamBytes(0, 225000, 2);
    ASSERT_EQ(writer.Write(reinterpret_cast<const std::byte*>(data.data()), data.size(), 2), 0);
    ASSERT_TRUE(writer.Close());
    const struct {
        uint64_t offset;
        uint64_t size;
        uint64_t copied;
    } cases[] = {{0, 450000, 450000}, {0, 500000, 450000}, {99998, 4, 4},   {100001, 250001, 250001},
                 {449999, 10, 1},     {450000, 10, 0},     {1000000, 10, 0}};
    for (const auto& c : cases) {
        std::string out(c.size, '\0');
        EXPECT_EQ(writer.readBack(c.offset, reinterpret_cast<std::byte*>(out.data()), c.size), c.copied) << c.offset;
        EXPECT_TRUE(c.copied == 0 || out.compare(0, c.copied, data, c.offset, c.copied) == 0) << c.offset;
    }
}

}  // namespace
}  // namespace tarno2::test
