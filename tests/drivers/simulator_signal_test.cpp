// What the simulated inputs show.

#include <algorithm>
#include <set>

#include "drivers/simulator/counter_signal.h"
#include "tests/drivers/driver_rig.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

using drivers::counterWord;

/// Words of so many frames of a measurement paced by the reader.
std::vector<uint32_t> record(const std::string& settings, uint32_t board, Wish wish, uint64_t frames) {
    const TemporaryFolder folder;
    const ScopedEnvironment environment("TARNO2_SIMULATOR", "RealTime=0;" + settings);
    const LoadedDriver driver(SIMULATOR_LIBRARY, folder.path());
    EXPECT_EQ(driver->SelectBoard(board), 1);
    RingReader reader(driver, std::move(wish));
    EXPECT_TRUE(reader.ok()) << driver.lastError();
    EXPECT_EQ(driver->Start(), 1) << driver.lastError();
    EXPECT_TRUE(reader.record(frames * static_cast<uint64_t>(reader.accepted().m_nChannelNumber)));
    driver->Stop();
    return reader.words();
}

int32_t code16(uint32_t word) {
    return static_cast<int16_t>(word);
}
int32_t code14(uint32_t word) {
    return static_cast<int16_t>(word) >> 2;
}
int32_t code24(uint32_t word) {
    return static_cast<int32_t>(word << 8) >> 8;
}

TEST(SimulatorSignal, CounterShowsEveryShift) {
    // A block that is lost anywhere, whatever its length, leaves a wrong word within one turn of the low bits.
    for (const uint64_t lost :
         {1ULL, 160ULL, 4096ULL, 65535ULL, 65536ULL, 131072ULL, 65536ULL * 160, 40503ULL, 25033ULL}) {
        for (const uint32_t bits : {12U, 16U, 32U}) {
            bool seen = false;
            for (uint64_t i = 1000; !seen && i < 1000 + (uint64_t{1} << std::min(bits, 16U)); ++i) {
                seen = counterWord(i, bits) != counterWord(i + lost, bits);
            }
            EXPECT_TRUE(seen) << lost << " samples, " << bits << " bits";
        }
    }
    EXPECT_EQ(counterWord(65535, 16), 65535U);
    EXPECT_EQ(counterWord(65536, 16), 40503U);
    EXPECT_EQ(counterWord(0x123456789, 32), 0x23456789U);
}

TEST(SimulatorSignal, WaveformsHaveTheirPeriodAmplitudeAndGain) {
    // 1000 frames a second, 10 Hz: a period of 100 frames; 50 % of full scale at gain 1.
    Wish wish = Wish::firstChannels(4, 4000.0F, 800);
    wish.gains = {1, 1, 1, 1};
    const std::vector<uint32_t> words = record("SignalFrequency=10;Amplitude=50", 2, wish, 1000);
    std::vector<int32_t> channel[4];
    for (size_t i = 0; i < 4000; ++i) {
        channel[i % 4].push_back(code16(words[i]));
    }
    for (size_t c = 0; c < 3; ++c) {
        for (size_t i = 100; i < 1000; ++i) {
            ASSERT_EQ(channel[c][i], channel[c][i - 100]) << "channel " << c << ", frame " << i;
        }
    }
    const auto range = [&](size_t c) { return std::minmax_element(channel[c].begin(), channel[c].end()); };
    EXPECT_EQ(channel[0][0], 0);
    EXPECT_EQ(channel[0][25], 16383) << "top of the sine";
    EXPECT_EQ(channel[0][75], -16383);
    EXPECT_EQ(std::set<int32_t>(channel[1].begin(), channel[1].end()), (std::set<int32_t>{-16383, 16383}));
    for (size_t i = 1; i < 90; ++i) {
        EXPECT_GT(channel[2][i], channel[2][i - 1]);
    }
    EXPECT_NE(channel[3][0], channel[3][100]);
    EXPECT_LE(*range(3).second, 16383);
    EXPECT_GT(*range(3).second, 15000);
    EXPECT_LT(*range(3).first, -15000);

    wish.gains = {100, 1, 10, 1};
    const std::vector<uint32_t> amplified = record("SignalFrequency=10;Amplitude=5", 2, wish, 100);
    EXPECT_EQ(code16(amplified[25 * 4]), 32767) << "more than the range is cut";
    EXPECT_EQ(code16(amplified[75 * 4]), -32768);
    EXPECT_EQ(code16(amplified[2]), code16(words[2])) << "ten times a tenth";
}

TEST(SimulatorSignal, EveryChannelAndOrderShows) {
    Wish wish = Wish::firstChannels(3, 3000.0F, 300);
    wish.channels = {8, 0, 4};
    const std::vector<uint32_t> words = record("Signal=Sine", 2, wish, 100);
    const std::vector<uint32_t> straight = record("Signal=Sine", 2, Wish::firstChannels(9, 9000.0F, 900), 100);
    for (size_t frame = 0; frame < 100; ++frame) {
        for (size_t i = 0; i < 3; ++i) {
            ASSERT_EQ(words[frame * 3 + i], straight[frame * 9 + static_cast<size_t>(wish.channels[i])]) << frame;
        }
    }
    EXPECT_NE(words[0], words[1]);
}

TEST(SimulatorSignal, DigitalLinesCountBesideTheCodes) {
    struct Case {
        uint32_t board;
        float frequency;
        int32_t (*code)(uint32_t);
        uint32_t shift, lines;
        int32_t top;
    };
    const Case cases[] = {{1, 2000.0F, code14, 0, 2, 6552}, {3, 2000.0F, code24, 24, 8, 6710885}};
    for (const Case& c : cases) {
        const std::vector<uint32_t> words = record("Signal=Square;SignalFrequency=1;DigitalPeriod=3", c.board,
                                                   Wish::firstChannels(2, c.frequency, 60), 900);
        for (size_t i = 0; i < 1800; ++i) {
            ASSERT_EQ((words[i] >> c.shift) & ((1U << c.lines) - 1U), (i / 2 / 3) & ((1U << c.lines) - 1U)) << i;
            ASSERT_EQ(std::abs(c.code(words[i])), c.top) << i;
        }
    }
    const std::vector<uint32_t> unsignedCodes = record("Signal=Square", 4, Wish::firstChannels(1, 1000.0F, 60), 100);
    EXPECT_EQ(unsignedCodes[0], 2048U + 1637U);
    EXPECT_EQ(unsignedCodes[60], 2048U - 1637U);
}

TEST(SimulatorSignal, LongPeriodsAreTheSameAsShortOnes) {
    // Two million frames do not fit the table of one period and are computed as they come.
    const std::vector<uint32_t> slow =
        record("Signal=Ramp;SignalFrequency=1", 2, Wish::firstChannels(1, 2e6F, 1000), 5000);
    EXPECT_TRUE(std::is_sorted(slow.begin(), slow.end(), [](uint32_t a, uint32_t b) { return code16(a) < code16(b); }));
    EXPECT_GT(code16(slow.back()), code16(slow.front()));
}

TEST(SimulatorSignal, PacketsDoNotChangeTheFrames) {
    Wish wish = Wish::firstChannels(2, 10000.0F, 100);
    wish.packetFrequency = 1000.0F;
    // The frames come a thousand times a second, so 10 Hz take a hundred of them.
    const std::vector<uint32_t> words = record("Signal=Sine;SignalFrequency=10", 1, wish, 200);
    EXPECT_GT(code14(words[25 * 2]), 6500);
    EXPECT_EQ(words[0] & ~3U, words[200] & ~3U);
}

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
