// The driver that was built out of tree.

#include "platform/file.h"
#include "tests/drivers/driver_rig.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

TEST(SdkExample, RecordsAfterABuildOfItsOwn) {
    if (!fileExists(EXAMPLE_LIBRARY)) {
        GTEST_SKIP() << "ctest builds it before this test: " << EXAMPLE_LIBRARY;
    }
    const TemporaryFolder folder;
    const LoadedDriver driver(EXAMPLE_LIBRARY, folder.path());
    ASSERT_NE(driver.device(), nullptr);
    EXPECT_EQ(driver.get<uint32_t>(kADCGetAbiVersion), kADCAbiVersion);
    ASSERT_EQ(driver.boards().size(), 1U);
    EXPECT_EQ(driver.boards()[0].substr(0, 4), "001 ");
    EXPECT_EQ(driver->SelectBoard(2), 0);
    ASSERT_EQ(driver->SelectBoard(1), 1);

    Wish wish = Wish::firstChannels(3, 90000.0F, 20000);
    wish.channels = {2, 0, 3};
    RingReader reader(driver, wish);
    ASSERT_TRUE(reader.ok()) << driver.lastError();
    EXPECT_EQ(reader.ring(), 20004U);
    ASSERT_EQ(driver->Start(), 1);
    ASSERT_GE(reader.waitForHalf(), 1U);
    ASSERT_GE(reader.written(), reader.ring() / 2);
    ASSERT_EQ(reader.fetch(reader.ring() / 2), 1);
    const uint64_t written = reader.written();
    driver->Stop();
    if (written > reader.ring()) {
        GTEST_SKIP() << "the machine was too busy to read in time";
    }
    const std::vector<uint32_t> words = reader.words();
    for (size_t frame = 0; frame < words.size() / 3; ++frame) {
        for (size_t i = 0; i < 3; ++i) {
            ASSERT_EQ(words[frame * 3 + i], frame % 1000 + static_cast<uint32_t>(wish.channels[i]) * 1000) << frame;
        }
    }
}

}  // namespace
}  // namespace tarno2::test
