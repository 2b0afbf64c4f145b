#include "measure/statistics.h"

#include <algorithm>
#include <gmock/gmock.h>

#include "display/sample_code.h"
#include "measure/channel_sums.h"
#include "measure/crossings.h"
#include "measure/nearest_edge.h"
#include "tests/measure/made_frames.h"

namespace tarno2::test {
namespace {

using testing::DoubleNear;
using testing::Optional;

SpanStatistics measured(std::vector<std::byte> frames, const SignalFormat& format) {
    FramesInMemory source(std::move(frames), format.frameBytes());
    WorkProgress progress;
    SpanStatistics out;
    EXPECT_EQ(measure(source, format, {0, source.frameCount()}, progress, out), ReadEnd::Whole);
    EXPECT_EQ(progress.part(), 1.0);
    return out;
}

// Long enough for two threads; the three signals have closed forms.
TEST(Statistics, SineSquareAndRampWithOffsets) {
    const SignalFormat format = madeFormat(3);
    constexpr size_t kPeriod = 480;
    constexpr size_t kFrames = kPeriod * 2000;
    const SpanStatistics all =
        measured(madeFrames<int16_t>(3, kFrames,
                                     [](size_t channel, size_t frame) {
                                         const double part = double(frame % kPeriod) / kPeriod;
                                         switch (channel) {
                                             case 0:
                                                 return 1000.0 + 20000.0 * std::sin(kTurn * part);
                                             case 1:
                                                 return part < 0.3 ? 12000.0 : -8000.0;
                                             default:
                                                 return -240.0 + double(frame % kPeriod);
                                         }
                                     }),
                 format);
    const SignalStatistics& sine = all.channels[0];
    EXPECT_EQ(sine.peakToPeak(), 40000.0);
    EXPECT_NEAR(*sine.mean, 1000.0, 1e-6);
    EXPECT_NEAR(*sine.deviation, 20000.0 / std::sqrt(2.0), 0.05);
    EXPECT_NEAR(*sine.rms, std::hypot(1000.0, 20000.0 / std::sqrt(2.0)), 0.05);
    EXPECT_THAT(sine.frequency, Optional(DoubleNear(100.0, 1e-9)));
    EXPECT_THAT(sine.duty, Optional(DoubleNear(0.5, 1e-6)));
    const SignalStatistics& square = all.channels[1];
    EXPECT_EQ(*square.mean, 0.3 * 12000.0 - 0.7 * 8000.0);
    EXPECT_DOUBLE_EQ(*square.rms, std::sqrt(0.3 * 12000.0 * 12000.0 + 0.7 * 8000.0 * 8000.0));
    EXPECT_THAT(square.frequency, Optional(DoubleNear(100.0, 1e-9)));
    EXPECT_THAT(square.duty, Optional(DoubleNear(0.3, 1e-12)));
    EXPECT_EQ(square.edges, 2 * 2000 - 1);
    const SignalStatistics& ramp = all.channels[2];
    EXPECT_DOUBLE_EQ(*ramp.mean, -0.5);
    EXPECT_DOUBLE_EQ(*ramp.deviation, std::sqrt((480.0 * 480.0 - 1.0) / 12.0));

    const LinearScale inverted{-0.5, 100.0};
    const SignalStatistics volts = square.inUnit(inverted);
    EXPECT_EQ(volts.minimum, -5900.0);
    EXPECT_EQ(volts.maximum, 4100.0);
    EXPECT_DOUBLE_EQ(*volts.mean, 1100.0);
    EXPECT_DOUBLE_EQ(*volts.rms, std::hypot(1100.0, *square.deviation / 2.0));
    EXPECT_THAT(volts.duty, Optional(DoubleNear(0.7, 1e-12)));
}

// What floating point would lose: one code up and down upon the largest ones.
TEST(Statistics, SmallSignalOnLargeConstantIsExact) {
    const SampleWordFormat word{4, 1, 0, 32, false};
    const SignalFormat format = madeFormat(1, word);
    const SpanStatistics all = measured(
        madeFrames<uint32_t>(1, 100000, [](size_t, size_t frame) { return 4294967290.0 + double(frame % 2) * 2.0; }),
        format);
    EXPECT_EQ(*all.channels[0].mean, 4294967291.0);
    EXPECT_EQ(*all.channels[0].deviation, 1.0);
    EXPECT_THAT(all.channels[0].frequency, Optional(DoubleNear(24000.0, 1e-6)));
}

// Every layout of a word and number of channels against the plainest loop, however the frames are divided.
TEST(Statistics, EveryFormatAddsUpLikeThePlainLoop) {
    const SampleWordFormat words[] = {{2, 1, 0, 16, true}, {2, 1, 0, 12, true}, {2, 1, 0, 14, false},
                                      {2, 0, 4, 0, true},  {2, 0, 3, 0, false}, {4, 1, 0, 24, true},
                                      {4, 0, 8, 0, false}};
    for (const SampleWordFormat& word : words) {
        for (const size_t channels : {1U, 3U, 8U, 20U}) {
            const SignalFormat format = madeFormat(channels, word);
            constexpr size_t kFrames = 4001;
            Noise noise;
            std::vector<std::byte> frames(kFrames * format.frameBytes());
            for (std::byte& byte : frames) {
                byte = static_cast<std::byte>(noise.next() >> 24);
            }
            const auto sums = ChannelSums::create(format);
            const auto rest = ChannelSums::create(format);
            sums->add(frames.data(), 1777);
            rest->add(frames.data() + 1777 * format.frameBytes(), kFrames - 1777);
            sums->join(*rest);
            for (size_t channel = 0; channel < channels; ++channel) {
                double low = 1e12;
                double high = -1e12;
                long double sum = 0.0;
                long double squares = 0.0;
                for (size_t i = 0; i < kFrames; ++i) {
                    const double code = valuesOf(format, frames.data() + i * format.frameBytes()).codes[channel];
                    low = std::min(low, code);
                    high = std::max(high, code);
                    sum += code;
                    squares += static_cast<long double>(code) * code;
                }
                const long double mean = sum / kFrames;
                const CodeMoments moments = sums->moments(channel);
                EXPECT_EQ(moments.minimum, low);
                EXPECT_EQ(moments.maximum, high);
                EXPECT_DOUBLE_EQ(moments.mean, static_cast<double>(mean));
                EXPECT_NEAR(moments.variance / static_cast<double>(squares / kFrames - mean * mean), 1.0, 1e-9);
            }
        }
    }
}

TEST(Crossings, NoiseAtTheMiddleIsNoEdge) {
    const SignalFormat format = madeFormat(1);
    Noise noise;
    const SpanStatistics all =
        measured(madeFrames<int16_t>(1, 48000,
                                     [&noise](size_t, size_t frame) {
                                         return 10000.0 * std::sin(kTurn * double(frame) / 4800.0) +
                                                double(noise.next() % 801) - 400.0;
                                     }),
                 format);
    EXPECT_NEAR(*all.channels[0].frequency, 10.0, 0.02);
    const SpanStatistics once =
        measured(madeFrames<int16_t>(1, 1000, [](size_t, size_t frame) { return frame < 500 ? -5.0 : 5.0; }), format);
    EXPECT_EQ(once.channels[0].edges, 1U);
    EXPECT_FALSE(once.channels[0].frequency);
    EXPECT_FALSE(once.channels[0].duty);
}

TEST(Lines, FrequencyDutyAndNearestEdge) {
    const SignalFormat format = madeFormat(2, {2, 0, 4, 0, true});
    const auto frames = madeFrames<int16_t>(2, 2000000, [](size_t channel, size_t frame) {
        const int lines = (frame % 100 < 25 ? 1 : 0) | (frame >= 1000003 ? 4 : 0);
        return channel == 0 ? 16.0 * double(frame % 8) + lines : 0.0;
    });
    const SpanStatistics all = measured(frames, format);
    ASSERT_EQ(all.lines.size(), 4U);
    EXPECT_THAT(all.lines[0].frequency, Optional(DoubleNear(480.0, 1e-9)));
    EXPECT_THAT(all.lines[0].duty, Optional(DoubleNear(0.25, 1e-12)));
    EXPECT_EQ(all.lines[2].edges, 1U);
    EXPECT_EQ(all.lines[3].edges, 0U);
    EXPECT_FALSE(all.lines[1].frequency);

    FramesInMemory source(frames, format.frameBytes());
    EXPECT_EQ(nearestLineEdge(source, format, {0, 2000000}, 2, 17.0), 1000003.0);
    EXPECT_EQ(nearestLineEdge(source, format, {0, 2000000}, 0, 1220.0), 1225.0);
    EXPECT_EQ(nearestLineEdge(source, format, {0, 2000000}, 3, 5.0), std::nullopt);
    EXPECT_THAT(nearestEdge(source, format, {1000, 3000}, 0, 1204.3), Optional(DoubleNear(1203.5, 0.51)));
    EXPECT_EQ(nearestEdge(source, format, {1000, 3000}, 1, 1204.3), std::nullopt);
}

TEST(Statistics, EndsWhenCancelledOrUnread) {
    const SignalFormat format = madeFormat(1);
    FramesInMemory source(std::vector<std::byte>(20000), 2);
    SpanStatistics out;
    WorkProgress cancelled;
    cancelled.cancel();
    EXPECT_EQ(measure(source, format, {0, 10000}, cancelled, out), ReadEnd::Cancelled);
    WorkProgress progress;
    EXPECT_EQ(measure(source, format, {0, 10001}, progress, out), ReadEnd::NotRead);
}

TEST(Statistics, ExtremesTellWhatIsLeft) {
    const SignalFormat format = madeFormat(2);
    Screen screen;
    screen.bucketFrames = 100;
    screen.words = madeFrames<int16_t>(
        2, 4, [](size_t channel, size_t row) { return (row % 2 == 0 ? -1.0 : 1.0) * double(100 * channel + row); });
    screen.rows = 4;
    const auto all = measureExtremes(screen, format, {0, 200});
    ASSERT_TRUE(all);
    EXPECT_TRUE(all->fromExtremes);
    EXPECT_EQ(all->channels[1].minimum, -102.0);
    EXPECT_EQ(all->channels[1].maximum, 103.0);
    EXPECT_FALSE(all->channels[1].mean);
    EXPECT_FALSE(measureExtremes(Screen{}, format, {0, 200}));
}

}  // namespace
}  // namespace tarno2::test
