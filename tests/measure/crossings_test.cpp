#include "measure/crossings.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <utility>

#include "measure/statistics.h"
#include "tests/measure/made_frames.h"

namespace tarno2::test {
namespace {

using PlainEdge = std::pair<bool, double>;  ///< rising, time

/// What crossings.h says, sample by sample.
std::vector<PlainEdge> plainEdges(const std::vector<double>& codes, const CrossingLevels& levels) {
    std::vector<PlainEdge> edges;
    double crossed = 0.0;
    int side = 0;
    for (size_t i = 0; i < codes.size(); ++i) {
        if (i > 0 && (codes[i - 1] < levels.middle) != (codes[i] < levels.middle)) {
            crossed = double(i) - 1.0 + (levels.middle - codes[i - 1]) / (codes[i] - codes[i - 1]);
        }
        const int reached = codes[i] >= levels.high ? 1 : codes[i] <= levels.low ? -1 : side;
        if (reached != side && side != 0) {
            edges.emplace_back(reached > 0, crossed);
        }
        side = reached;
    }
    return edges;
}

void expectSame(const EdgeTimes& found, const std::vector<PlainEdge>& edges) {
    std::vector<double> rises;
    double high = 0.0;
    for (size_t i = 0; i < edges.size(); ++i) {
        if (edges[i].first) {
            rises.push_back(edges[i].second);
            high += i + 2 < edges.size() ? edges[i + 1].second - edges[i].second : 0.0;
        }
    }
    ASSERT_EQ(found.count(), edges.size());
    ASSERT_EQ(found.period().has_value(), rises.size() > 1);
    if (rises.size() > 1) {
        EXPECT_EQ(*found.period(), (rises.back() - rises.front()) / double(rises.size() - 1));
        EXPECT_NEAR(*found.duty(), high / (rises.back() - rises.front()), 1e-9);
    }
}

/// Channels in turns: noise, a random walk, a noisy wave of few and one of many samples, a constant and a late pulse.
std::vector<std::byte> mixedFrames(size_t channels, size_t frames, size_t turn) {
    Noise noise;
    std::vector<double> walks(channels);
    return madeFrames<int16_t>(channels, frames, [&, frames, turn](size_t channel, size_t frame) {
        const double fine = double(noise.next() >> 16) - 32768.0;
        switch ((channel + turn) % 6) {
            case 0:
                return fine;
            case 1:
                walks[channel] = std::clamp(walks[channel] + fine / 30.0, -32000.0, 32000.0);
                return walks[channel];
            case 2:
                return 9000.0 * std::sin(double(frame) * 0.7) + fine / 10.0;
            case 3:
                return 30000.0 * std::sin(double(frame) / 300.0) + fine / 20.0;
            case 4:
                return -5.0;
            default:
                return frame % 1000 < 990 || frame < frames / 2 ? 100.0 : -100.0;
        }
    });
}

// In blocks of that many frames, and in two parts that are joined; at last with a call for each edge.
void compareWithPlain(const SignalFormat& format, const std::vector<std::byte>& frames, size_t step) {
    const size_t count = frames.size() / format.frameBytes();
    std::vector<std::vector<double>> codes(format.channelCount());
    for (size_t i = 0; i < count; ++i) {
        const FrameValues values = valuesOf(format, frames.data() + i * format.frameBytes());
        for (size_t channel = 0; channel < codes.size(); ++channel) {
            codes[channel].push_back(values.codes[channel]);
        }
    }
    std::vector<CrossingLevels> levels;
    std::vector<std::vector<PlainEdge>> expected;
    for (const std::vector<double>& channel : codes) {
        const auto [least, most] = std::ranges::minmax(channel);
        levels.push_back(CrossingLevels::between(least, most));
        expected.push_back(plainEdges(channel, levels.back()));
    }
    const auto look = [&](size_t first, size_t end, Crossings::Found found = {}) {
        auto crossings = Crossings::create(format, levels, 0, std::move(found));
        for (size_t i = first; i < end; i += step) {
            crossings->add(i, frames.data() + i * format.frameBytes(), std::min(step, end - i));
        }
        return crossings;
    };
    const auto once = look(0, count);
    const size_t middle = count / 2 - step % 97;
    const auto joined = look(0, middle);
    joined->join(*look(middle, count));
    std::vector<std::vector<PlainEdge>> told(codes.size());
    look(0, count, [&](size_t channel, bool rising, double time) { told[channel].emplace_back(rising, time); });
    for (size_t channel = 0; channel < codes.size(); ++channel) {
        SCOPED_TRACE(testing::Message() << channel << " of " << codes.size() << " by " << step);
        expectSame(once->edges(channel), expected[channel]);
        expectSame(joined->edges(channel), expected[channel]);
        EXPECT_EQ(told[channel], expected[channel]);
    }
}

TEST(Crossings, AreThoseOfThePlainLoop) {
    for (const size_t channels : {1U, 3U, 7U, 8U, 12U, 16U, 17U, 160U}) {
        for (size_t turn = 0; turn < (channels < 6 ? 6 : 1); ++turn) {
            const std::vector<std::byte> frames = mixedFrames(channels, channels > 17 ? 3001 : 18013, turn);
            for (const size_t step :
                 {size_t{1}, size_t{13}, size_t{71}, size_t{129}, size_t{777}, size_t{4093}, size_t{17001}}) {
                compareWithPlain(madeFormat(channels), frames, step);
            }
            compareWithPlain(madeFormat(channels, {2, 0, 3, 0, false}), frames, 501);
        }
    }
    compareWithPlain(madeFormat(3, {4, 1, 0, 16, true}), mixedFrames(6, 5000, 0), 1777);
    // More frames at once than lanes take.
    compareWithPlain(madeFormat(1), mixedFrames(1, 600001, 0), 300000);
}

}  // namespace
}  // namespace tarno2::test
