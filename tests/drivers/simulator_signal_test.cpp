// What the simulated inputs show.

#include <algorithm>
#include <set>

#include "drivers/simulator/counter_signal.h"
#include "tests/drivers/driver_rig.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

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
    using drivers::counterWord;
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

}  // namespace
}  // namespace tarno2::test
