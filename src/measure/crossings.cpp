#include "measure/crossings.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

#include "measure/code_ranges.h"
#include "measure/codes.h"
#include "measure/edge_lanes.h"

namespace tarno2 {

namespace {

constexpr double kBand = 0.1;  // of the signal's height, on each side of the middle

#if defined(__SSE2__)
constexpr uint64_t kLeadIn = 4;  // frames of a block before its lanes: noise has crossed the middle, or is on its side
constexpr uint64_t kLeastLane = 8;  // frames; shorter ones do not pay
#endif

enum class Side : int8_t { Unknown, Low, High };

/// One channel between two blocks.
struct Watched {
    double middle = 0.0;
    int64_t upperHalf = 0;  ///< the least code at or above the middle
    int64_t low = 0;        ///< at or below it is low
    int64_t high = 0;       ///< at or above it is high
    Side side = Side::Unknown;
    Side firstSide = Side::Unknown;
    std::optional<double> firstEdge;  ///< where the signal came to its first side, if that was seen
    std::optional<double> pending;    ///< the last crossing towards the other side, which it has not reached yet
    std::optional<int64_t> last;      ///< code of the last frame
    std::optional<int64_t> first;     ///< code of the first frame
    double start = 0.0;               ///< time of the first frame
    EdgeTimes edges;
};

double crossing(double frame, int64_t before, int64_t after, double middle) {
    return frame - 1.0 + (middle - static_cast<double>(before)) / static_cast<double>(after - before);
}

template <typename Word>
class CrossingsOf final : public Crossings {
public:
    CrossingsOf(const SignalFormat& format, const std::vector<CrossingLevels>& levels, uint64_t origin, Found found)
        : code_(format.word),
          channels_(format.channelCount()),
          stretches_(channels_ < kEdgeLanes ? kEdgeLanes : 1),
          origin_(origin),
          found_(std::move(found)),
          watched_(channels_) {
#if defined(__SSE2__)
        if constexpr (sizeof(Word) == 2) {
            ranges_.assign(stretches_, CodeRanges(code_, channels_));
        }
#endif
        for (size_t i = 0; i < channels_; ++i) {
            takeLevels(i, levels[i]);
        }
    }

    void add(uint64_t firstFrame, const std::byte* frames, uint64_t count) override {
        const uint64_t most = kMostLaneFrames * stretches_;
        for (uint64_t done = 0; done < count; done += most) {
            addBlock(firstFrame + done, frames + done * channels_ * sizeof(Word), std::min(most, count - done));
        }
    }

    void join(const Crossings& next) override {
        const auto& other = static_cast<const CrossingsOf&>(next);
        for (size_t i = 0; i < channels_; ++i) {
            joinChannel(watched_[i], other.watched_[i], i);
        }
    }

    [[nodiscard]] const EdgeTimes& edges(size_t channel) const override {
        return watched_[channel].edges;
    }

private:
    void addBlock(uint64_t firstFrame, const std::byte* frames, uint64_t count) {
        words_ = reinterpret_cast<const Word*>(frames);
        firstTime_ = static_cast<double>(firstFrame - origin_);
        for (size_t i = 0; i < channels_; ++i) {
            if (!watched_[i].first) {
                watched_[i].first = codeAt(i, 0);
                watched_[i].start = firstTime_;
            }
        }
        uint64_t frame = 0;
#if defined(__SSE2__)
        if constexpr (sizeof(Word) == 2) {
            frame = lookAtLanes(count);
        }
#endif
        lookAtAll(frame, count);
        for (size_t i = 0; i < channels_; ++i) {
            endBlock(i, count);
        }
    }

    void takeLevels(size_t channel, const CrossingLevels& levels) {
        const auto bias = static_cast<double>(code_.bias());
        // Levels beyond the codes are never reached.
        const auto whole = [bias](double level) { return static_cast<int64_t>(std::clamp(level - bias, -9e15, 9e15)); };
        Watched& watched = watched_[channel];
        watched.middle = levels.middle - bias;
        watched.upperHalf = whole(std::ceil(levels.middle));
        watched.low = whole(std::floor(levels.low));
        watched.high = whole(std::ceil(levels.high));
    }

    [[nodiscard]] int64_t codeAt(size_t channel, uint64_t frame) const {
        return code_.of(words_[frame * channels_ + channel]);
    }

#if defined(__SSE2__)
    // Eight channels side by side, or with fewer eight stretches of each, one after the other. Returns the frames
    // looked at.
    uint64_t lookAtLanes(uint64_t count) requires(sizeof(Word) == 2) {
        if (count < kLeadIn + stretches_ * kLeastLane) {
            return 0;
        }
        lookAtAll(0, kLeadIn);
        const uint64_t frames = (count - kLeadIn) / stretches_;
        for (size_t i = 0; i < stretches_; ++i) {
            ranges_[i].look(words_ + (kLeadIn + i * frames) * channels_, frames);
        }
        if (stretches_ > 1) {
            for (size_t i = 0; i < channels_; ++i) {
                lookAtStretches(i, frames);
            }
        } else {
            for (size_t i = 0; i < channels_; i += kEdgeLanes) {
                lookAtEight(i, frames);
            }
        }
        return kLeadIn + frames * stretches_;
    }

    [[nodiscard]] bool reaches(size_t channel, size_t stretch, Side side) const {
        const Watched& watched = watched_[channel];
        return side == Side::High ? ranges_[stretch].most(channel) >= watched.high
                                  : ranges_[stretch].least(channel) <= watched.low;
    }
    /// From that side.
    [[nodiscard]] bool turns(size_t channel, size_t stretch, Side side) const {
        return (side != Side::High && reaches(channel, stretch, Side::High)) ||
               (side != Side::Low && reaches(channel, stretch, Side::Low));
    }
    /// Edges can be added together: none has to be told, and there is one before them.
    [[nodiscard]] bool canBeSummed(size_t channel) const {
        const Watched& watched = watched_[channel];
        return watched.side != Side::Unknown && watched.edges.rises() > 0 && !found_;
    }

    // The last eight channels overlap those before.
    void lookAtEight(size_t channel, uint64_t frames) requires(sizeof(Word) == 2) {
        const size_t first = std::min(channel, channels_ - kEdgeLanes);
        EdgeLanes lanes;
        bool summed[kEdgeLanes] = {};
        bool any = false;
        for (size_t i = channel - first; i < kEdgeLanes; ++i) {
            if (!turns(first + i, 0, watched_[first + i].side)) {
                continue;
            }
            if (canBeSummed(first + i)) {
                any = summed[i] = true;
                lanes.begin(i, laneStart(first + i, 0, kLeadIn, watched_[first + i].side));
            } else {
                lookAtEach(first + i, frames);
            }
        }
        if (!any) {
            return;
        }
        const Word* words = words_ + kLeadIn * channels_ + first;
        lanes.run(frames, [&, code = code_](size_t frame) { return code.ofEight(words + frame * channels_); });
        for (size_t i = 0; i < kEdgeLanes; ++i) {
            if (summed[i]) {
                takeLanes(lanes, i, i + 1, first + i, frames);
            }
        }
    }

    void lookAtStretches(size_t channel, uint64_t frames) requires(sizeof(Word) == 2) {
        Side sides[kEdgeLanes];
        Side side = watched_[channel].side;
        bool turning = false;
        for (size_t i = 0; i < kEdgeLanes; ++i) {
            sides[i] = side;
            turning = turning || turns(channel, i, side);
            side = sideAfter(channel, i, frames, side);
        }
        if (!turning) {
            return;
        }
        if (!canBeSummed(channel)) {
            lookAtEach(channel, frames * kEdgeLanes);
            return;
        }
        EdgeLanes lanes;
        for (size_t i = 0; i < kEdgeLanes; ++i) {
            const uint64_t start = kLeadIn + i * frames;
            lanes.begin(i, laneStart(channel, i == 0 ? 0 : start - frames, start, sides[i]));
        }
        const Word* words = words_ + kLeadIn * channels_ + channel;
        const size_t stretch = frames * channels_;
        lanes.run(frames, [&, code = code_](size_t frame) {
            return code.ofEight(eightWords(words + frame * channels_, stretch));
        });
        takeLanes(lanes, 0, kEdgeLanes, channel, frames);
    }

    // The side that a channel is on after a stretch, which was `side` before it.
    [[nodiscard]] Side sideAfter(size_t channel, size_t stretch, uint64_t frames, Side side) const {
        const bool high = reaches(channel, stretch, Side::High);
        const bool low = reaches(channel, stretch, Side::Low);
        if (!(high && low)) {
            return high ? Side::High : low ? Side::Low : side;
        }
        const Watched& watched = watched_[channel];
        uint64_t frame = kLeadIn + (stretch + 1) * frames - 1;
        int64_t code = codeAt(channel, frame);
        while (code < watched.high && code > watched.low) {
            code = codeAt(channel, --frame);
        }
        return code >= watched.high ? Side::High : Side::Low;
    }

    // Of a lane that begins with `frame`; frames before `from` are not looked at.
    [[nodiscard]] LaneStart laneStart(size_t channel, uint64_t from, uint64_t frame, Side side) const {
        const auto within = [](int64_t level) {
            return static_cast<int16_t>(
                std::clamp<int64_t>(level, std::numeric_limits<int16_t>::min(), std::numeric_limits<int16_t>::max()));
        };
        const Watched& watched = watched_[channel];
        LaneStart start{.middle = watched.middle,
                        .belowUpper = within(watched.upperHalf - 1),
                        .belowHigh = within(watched.high - 1),
                        .aboveLow = within(watched.low + 1),
                        .high = side == Side::High,
                        .previous = static_cast<int16_t>(codeAt(channel, frame - 1))};
        if (beyond(start.previous, watched, other(side))) {
            uint64_t crossed = frame - 1;
            while (crossed > from && beyond(codeAt(channel, crossed - 1), watched, other(side))) {
                --crossed;
            }
            start.crossingKnown = crossed > from;
            if (start.crossingKnown) {
                start.crossed = static_cast<int16_t>(static_cast<int64_t>(crossed) - static_cast<int64_t>(frame));
                start.before = static_cast<int16_t>(codeAt(channel, crossed - 1));
                start.after = static_cast<int16_t>(codeAt(channel, crossed));
            }
        }
        return start;
    }

    // Takes the edges of a channel's lanes when all is known of them, else looks for each.
    void takeLanes(const EdgeLanes& lanes, size_t lane, size_t end, size_t channel, uint64_t frames) {
        for (size_t i = lane; i < end; ++i) {
            if (lanes.edges(i).count > 0 && !lanes.edges(i).certain) {
                lookAtEach(channel, frames * (end - lane));
                return;
            }
        }
        for (size_t i = lane; i < end; ++i) {
            take(lanes.edges(i), channel, kLeadIn + (i - lane) * frames);
        }
    }

    void lookAtEach(size_t channel, uint64_t frames) {
        for (uint64_t i = 0; i < frames; ++i) {
            lookAt(channel, kLeadIn + i);
        }
    }

    // Edges of a lane that began with `start`.
    void take(const LaneEdges& found, size_t channel, uint64_t start) {
        if (found.count == 0) {
            return;
        }
        Watched& watched = watched_[channel];
        const auto time = [&](int16_t crossed) {
            const uint64_t frame = start + static_cast<uint64_t>(int64_t{crossed});
            return crossing(firstTime_ + static_cast<double>(frame), codeAt(channel, frame - 1), codeAt(channel, frame),
                            watched.middle);
        };
        EdgeRun run{.count = found.count, .rising = found.high, .last = time(found.last), .balance = found.balance};
        if (found.count > 1) {
            run.earlier = time(found.earlier);
        }
        if (found.count % 2 != 0) {
            const double shift = firstTime_ + static_cast<double>(start) - 1.0;
            run.balance += found.high ? -shift : shift;
        }
        watched.edges.add(run);
        watched.side = found.high ? Side::High : Side::Low;
        watched.pending.reset();
    }
#endif

    void lookAtAll(uint64_t frame, uint64_t end) {
        for (; frame < end; ++frame) {
            for (size_t i = 0; i < channels_; ++i) {
                lookAt(i, frame);
            }
        }
    }

    void lookAt(size_t channel, uint64_t frame) {
        const int64_t code = codeAt(channel, frame);
        const Watched& watched = watched_[channel];
        if (code >= watched.high && watched.side != Side::High) {
            reach(channel, Side::High, frame);
        } else if (code <= watched.low && watched.side != Side::Low) {
            reach(channel, Side::Low, frame);
        }
    }

    void reach(size_t channel, Side side, uint64_t frame) {
        Watched& watched = watched_[channel];
        const std::optional<double> time = crossingBefore(channel, side, frame);
        if (watched.side == Side::Unknown) {
            watched.firstSide = side;
            watched.firstEdge = time;
        } else if (time) {
            edge(watched, channel, side, *time);
        }
        watched.side = side;
        watched.pending.reset();
    }

    void edge(Watched& watched, size_t channel, Side side, double time) {
        if (side == Side::High) {
            watched.edges.rise(time);
        } else {
            watched.edges.fall(time);
        }
        if (found_) {
            found_(channel, side == Side::High, time);
        }
    }

    [[nodiscard]] static bool beyond(int64_t code, const Watched& watched, Side side) {
        return (code >= watched.upperHalf) == (side == Side::High);
    }

    // The last crossing of the middle towards that side up to a frame that lies beyond it.
    [[nodiscard]] std::optional<double> crossingBefore(size_t channel, Side side, uint64_t frame) const {
        const Watched& watched = watched_[channel];
        int64_t after = codeAt(channel, frame);
        for (; frame > 0; --frame) {
            const int64_t before = codeAt(channel, frame - 1);
            if (!beyond(before, watched, side)) {
                return crossing(firstTime_ + static_cast<double>(frame), before, after, watched.middle);
            }
            after = before;
        }
        if (watched.last && !beyond(*watched.last, watched, side)) {
            return crossing(firstTime_, *watched.last, after, watched.middle);
        }
        return watched.pending;
    }

    void endBlock(size_t channel, uint64_t count) {
        Watched& watched = watched_[channel];
        const int64_t code = codeAt(channel, count - 1);
        // Between the levels when the block ends: where it crossed the middle is kept for the next one.
        if (code > watched.low && code < watched.high) {
            const Side towards = watched.side != Side::Unknown ? other(watched.side)
                                 : code >= watched.upperHalf   ? Side::High
                                                               : Side::Low;
            watched.pending =
                beyond(code, watched, towards) ? crossingBefore(channel, towards, count - 1) : std::nullopt;
        }
        watched.last = code;
    }

    static Side other(Side side) {
        return side == Side::High ? Side::Low : Side::High;
    }

    void joinChannel(Watched& watched, const Watched& next, size_t channel) {
        if (!next.last) {
            return;
        }
        const Side side = next.firstSide;
        const bool known = watched.side != Side::Unknown && side != Side::Unknown;
        if (known && side != watched.side) {
            std::optional<double> time = next.firstEdge;
            if (!time && watched.last && next.first) {
                time = beyond(*watched.last, watched, side)
                           ? watched.pending
                           : std::optional(crossing(next.start, *watched.last, *next.first, watched.middle));
            }
            if (time) {
                edge(watched, channel, side, *time);
            }
        }
        watched.edges.join(next.edges);
    }

    MeasuredCodes<Word> code_;
    size_t channels_;
    size_t stretches_;  ///< of a channel, in lanes
    uint64_t origin_;
    Found found_;
    const Word* words_ = nullptr;  ///< the block that is looked at
    double firstTime_ = 0.0;       ///< of its first frame
    std::vector<Watched> watched_;
#if defined(__SSE2__)
    std::vector<CodeRanges> ranges_;  ///< of the stretches of the block
#endif
};

}  // namespace

CrossingLevels CrossingLevels::between(double minimum, double maximum) {
    const double middle = (minimum + maximum) / 2.0;
    if (!(minimum < maximum)) {
        return {middle, -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()};
    }
    const double band = (maximum - minimum) * kBand;
    return {middle, middle - band, middle + band};
}

std::unique_ptr<Crossings> Crossings::create(const SignalFormat& format, const std::vector<CrossingLevels>& levels,
                                             uint64_t origin, Found found) {
    if (format.word.sampleWidth == 4) {
        return std::make_unique<CrossingsOf<int32_t>>(format, levels, origin, std::move(found));
    }
    return std::make_unique<CrossingsOf<int16_t>>(format, levels, origin, std::move(found));
}

}  // namespace tarno2
