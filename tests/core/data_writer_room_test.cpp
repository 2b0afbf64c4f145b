#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "core/storage/data_writer.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

uint16_t wordAt(uint64_t index) {
    return static_cast<uint16_t>(index + 40503U * (index >> 16U));
}

// Blocks that are put right into the cache reach the files like any others, also where pieces begin within a block and
// where the writer takes only a part of what was put there.
TEST(DataWriterRoom, BlocksReadIntoTheCacheReachTheFilesInOrder) {
    struct Case {
        const char* what;
        uint64_t blockWords;
        uint64_t pieceBytes;
        uint64_t skippedWords;  // words at a block's beginning that are not handed over
    } cases[] = {{"one file", 350000, 0, 0},
                 {"a piece is less than a block", 350000, 100000, 0},
                 {"pieces of a block and a half", 350000, 1050000, 0},
                 {"pieces beyond the cache", 350000, 4000000, 0},
                 {"only the end of a block", 350000, 1050000, 1000},
                 {"blocks beyond the cache", 1600000, 2000000, 0}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const TemporaryFolder folder;
        WriterSetup setup;
        setup.fileName = folder.file("run.dat");
        setup.pieceBytes = c.pieceBytes;
        RecordDescription description;
        DataWriter writer;
        ASSERT_EQ(writer.open(setup, description), 0);
        std::vector<uint16_t> own(c.blockWords);
        std::string expected;
        uint64_t index = 0;
        for (int block = 0; block < 12; ++block) {
            std::byte* room = writer.room(c.blockWords * 2);
            std::byte* place = room != nullptr ? room : reinterpret_cast<std::byte*>(own.data());
            for (uint64_t i = 0; i < c.blockWords; ++i) {
                const uint16_t word = wordAt(index++);
                std::memcpy(place + 2 * i, &word, 2);
            }
            place += 2 * c.skippedWords;
            const uint64_t size = 2 * (c.blockWords - c.skippedWords);
            expected.append(reinterpret_cast<const char*>(place), size);
            ASSERT_EQ(writer.Write(place, size, 2), 0);
        }
        ASSERT_TRUE(writer.Close());
        std::string written = readFile(setup.fileName);
        for (uint32_t k = 1; k < writer.fileCount(); ++k) {
            written += readFile(folder.file("run_" + std::to_string(k) + ".dat"));
        }
        EXPECT_TRUE(written == expected);
    }
}

}  // namespace
}  // namespace tarno2::test
