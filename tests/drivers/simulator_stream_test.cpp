// Samples on their way through the simulator's ring, with both paces.

#include "drivers/simulator/counter_signal.h"
#include "tests/drivers/driver_rig.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

using drivers::counterWord;

/// Index of the first sample that is not the counter's, or -1.
int64_t firstWrongSample(const std::vector<uint32_t>& words, uint32_t bits) {
    for (size_t i = 0; i < words.size(); ++i) {
        if (words[i] != counterWord(i, bits)) {
            return static_cast<int64_t>(i);
        }
    }
    return -1;
}

TEST(SimulatorStream, EverySampleArrivesOnceWhateverTheRing) {
    struct Case {
        uint32_t board;
        uint32_t bits;
        int32_t channels;
        int32_t wished;
        uint32_t ring;  // what the driver has to make of it
    };
    const Case cases[] = {
        {1, 16, 1, 32, 32},          {1, 16, 3, 32, 36},     {1, 16, 16, 1, 32},
        {1, 16, 16, 100000, 100000}, {2, 16, 160, 32, 320},  {2, 16, 160, 99999, 100160},
        {2, 16, 7, 131072, 131082},  {2, 16, 1, 0, 2},       {3, 32, 8, 50000, 50000},
        {3, 32, 5, 1000, 1000},      {4, 12, 4, 4096, 4096}, {4, 12, 3, -5, 6},
        {4, 12, 3, 300000, 262140},
    };
    const TemporaryFolder folder;
    const ScopedEnvironment settings("TARNO2_SIMULATOR", "RealTime=0;Signal=Counter");
    const LoadedDriver driver(SIMULATOR_LIBRARY, folder.path());
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "board " << c.board << ", " << c.channels << " channels, ring " << c.wished);
        ASSERT_EQ(driver->SelectBoard(c.board), 1);
        RingReader reader(driver, Wish::firstChannels(c.channels, 100e3F, c.wished));
        ASSERT_TRUE(reader.ok()) << driver.lastError();
        EXPECT_EQ(reader.ring(), c.ring);
        ASSERT_EQ(driver->Start(), 1) << driver.lastError();
        EXPECT_TRUE(reader.record(std::min<uint64_t>(200000, uint64_t{c.ring} * 200)));
        EXPECT_LE(reader.written() - reader.position(), c.ring / 2);
        driver->Stop();
        EXPECT_EQ(firstWrongSample(reader.words(), c.bits), -1);
    }
}

TEST(SimulatorStream, ClockPacedSamplesCountUpAndEndWithStop) {
    const TemporaryFolder folder;
    const ScopedEnvironment settings("TARNO2_SIMULATOR", "Signal=Counter;SilentAfter=100000");
    const LoadedDriver driver(SIMULATOR_LIBRARY, folder.path());
    ASSERT_EQ(driver->SelectBoard(2), 1);
    for (int run = 0; run < 3; ++run) {
        RingReader reader(driver, Wish::firstChannels(5, 200e3F, 100000));
        ASSERT_TRUE(reader.ok());
        ASSERT_EQ(driver->Start(), 1);
        EXPECT_EQ(driver->Start(), 0) << "it runs already";
        ASSERT_GE(reader.waitForHalf(), 1U);
        EXPECT_GE(reader.written(), reader.ring() / 2);
        EXPECT_EQ(reader.fetch(reader.ring() / 2), 1);
        driver->Stop();
        driver->Stop();
        const uint64_t written = reader.written();
        EXPECT_EQ(written % 5, 0U);
        // What is in the ring stays readable, the part of a half too.
        EXPECT_EQ(reader.fetch(static_cast<uint32_t>(written - reader.position())), 1);
        EXPECT_EQ(firstWrongSample(reader.words(), 16), -1);
        EXPECT_EQ(reader.written(), written);
    }
}

}  // namespace
}  // namespace tarno2::test
