#include "measure/crossings.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

#include "measure/codes.h"
#include "measure/edge_lanes.h"

namespace tarno2 {

namespace {

constexpr double kBand = 0.1;  // of the signal's height, on each side of the middle

constexpr uint64_t kDense = 32;     // words an edge, below which eight lanes are faster than one edge after the other
constexpr uint64_t kLeadIn = 4;     // frames at the start of a block after which a dense signal is on a side
constexpr uint64_t kLeastLane = 8;  // frames of a lane below which it does not pay
constexpr uint64_t kLookBack = 64;  // frames before a lane in which a dense signal was on a side

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

/// A word of a row.
struct Lane {
    uint32_t channel = 0;
    uint32_t frame = 0;  ///< of the row
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
          row_(rowWords(channels_)),
          stretches_(channels_ < 8 ? 8 : 1),
          origin_(origin),
          found_(std::move(found)),
          watched_(channels_),
          lows_(row_),
          highs_(row_),
          mayFall_(row_, -1),
          mayRise_(row_, -1),
          lanes_(row_) {
        for (size_t i = 0; i < row_; ++i) {
            lanes_[i] = {static_cast<uint32_t>(i % channels_), static_cast<uint32_t>(i / channels_)};
        }
        for (size_t i = 0; i < channels_; ++i) {
            takeLevels(i, levels[i]);
        }
    }

    void add(uint64_t firstFrame, const std::byte* frames, uint64_t count) override {
        const uint64_t most = kMostLane * stretches_;
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
    static constexpr uint64_t kMostLane = uint64_t{1} << 14;  ///< frames, that have numbers of 16 bits

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
        edgesInBlock_ = 0;
#if defined(__SSE2__)
        if constexpr (sizeof(Word) == 2) {
            frame = dense_ && !found_ ? lookAtLanes(count) : lookAtRows(count);
        }
#endif
        lookAtAll(frame, count);
        for (size_t i = 0; i < channels_; ++i) {
            endBlock(i, count);
        }
        dense_ = edgesInBlock_ * kDense > count * channels_;
    }

    void lookAtAll(uint64_t frame, uint64_t end) {
        for (; frame < end; ++frame) {
            for (size_t i = 0; i < channels_; ++i) {
                lookAt(i, frame);
            }
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
        if constexpr (sizeof(Word) == 2) {
            constexpr int64_t kLeast = std::numeric_limits<int16_t>::min();
            constexpr int64_t kMost = std::numeric_limits<int16_t>::max();
            for (size_t lane = channel; lane < row_; lane += channels_) {
                // Compared with < and >, so each is one further.
                lows_[lane] = static_cast<int16_t>(std::clamp(watched.low + 1, kLeast, kMost));
                highs_[lane] = static_cast<int16_t>(std::clamp(watched.high - 1, kLeast, kMost));
            }
        }
    }

    [[nodiscard]] int64_t codeAt(size_t channel, uint64_t frame) const {
        return code_.of(words_[frame * channels_ + channel]);
    }

#if defined(__SSE2__)
    // Returns the frames looked at, like lookAtLanes.
    uint64_t lookAtRows(uint64_t count) requires(sizeof(Word) == 2) {
        const uint64_t rowFrames = lanes_.back().frame + 1;
        uint64_t frame = 0;
        for (; frame + rowFrames <= count; frame += rowFrames) {
            lookAtRow(frame);
        }
        return frame;
    }

    // Where no two of the eight words are of one channel, those that have reached their level are known at once.
    void lookAtRow(uint64_t frame) requires(sizeof(Word) == 2) {
        const Word* words = words_ + frame * channels_;
        const bool distinct = channels_ >= 8;
        const auto load = [](const int16_t* from) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from)); };
        for (size_t lane = 0; lane < row_; lane += 8) {
            const __m128i codes = code_.ofEight(words + lane);
            const __m128i rises = _mm_and_si128(_mm_cmpgt_epi16(codes, load(&highs_[lane])), load(&mayRise_[lane]));
            const __m128i falls = _mm_and_si128(_mm_cmplt_epi16(codes, load(&lows_[lane])), load(&mayFall_[lane]));
            auto reached = static_cast<uint32_t>(_mm_movemask_epi8(_mm_or_si128(rises, falls)));
            if (distinct) {
                const auto risen = static_cast<uint32_t>(_mm_movemask_epi8(rises));
                for (; reached != 0; reached &= reached - 1, reached &= reached - 1) {
                    const auto bit = static_cast<size_t>(std::countr_zero(reached));
                    reach(lanes_[lane + bit / 2].channel, (risen >> bit & 1U) != 0 ? Side::High : Side::Low,
                          frame + lanes_[lane + bit / 2].frame);
                }
            } else if (reached != 0) {
                for (size_t i = lane; i < lane + 8; ++i) {
                    lookAt(lanes_[i].channel, frame + lanes_[i].frame);
                }
            }
        }
    }

    // Edges that are too many to look at one by one: of eight channels at once, or of eight stretches of each channel.
    uint64_t lookAtLanes(uint64_t count) requires(sizeof(Word) == 2) {
        if (count < kLeadIn + stretches_ * kLeastLane) {
            return 0;
        }
        lookAtAll(0, kLeadIn);
        const uint64_t frames = (count - kLeadIn) / stretches_;
        if (stretches_ == 1) {
            for (size_t done = 0; done < channels_; done += 8) {
                // The last eight overlap those before.
                const size_t first = std::min(done, channels_ - 8);
                lookAtEight(first, done - first, frames);
            }
        } else {
            for (size_t i = 0; i < channels_; ++i) {
                lookAtStretches(i, frames);
            }
        }
        return kLeadIn + frames * stretches_;
    }

    // Channels from `first` on, of which so many are known already.
    void lookAtEight(size_t first, size_t known, uint64_t frames) requires(sizeof(Word) == 2) {
        EdgeLanes lanes;
        bool begun[8] = {};
        for (size_t i = known; i < 8; ++i) {
            begun[i] = begin(lanes, i, first + i, kLeadIn, watched_[first + i].side);
        }
        const Word* words = words_ + kLeadIn * channels_ + first;
        lanes.run(frames, [&, code = code_](size_t frame) { return code.ofEight(words + frame * channels_); });
        for (size_t i = known; i < 8; ++i) {
            if (begun[i]) {
                take(lanes.edges(i), first + i, kLeadIn);
            } else {
                lookAtOne(first + i, kLeadIn, kLeadIn + frames);
            }
        }
    }

    void lookAtStretches(size_t channel, uint64_t frames) requires(sizeof(Word) == 2) {
        EdgeLanes lanes;
        Side side = watched_[channel].side;
        for (size_t i = 0; i < 8; ++i) {
            const uint64_t start = kLeadIn + i * frames;
            if (!begin(lanes, i, channel, start, i == 0 ? side : sideBefore(channel, start))) {
                lookAtOne(channel, kLeadIn, kLeadIn + frames * 8);
                return;
            }
        }
        const Word* words = words_ + kLeadIn * channels_ + channel;
        const size_t stretch = frames * channels_;
        lanes.run(frames, [&, code = code_](size_t frame) {
            const Word* at = words + frame * channels_;
            return code.ofEight(_mm_setr_epi16(at[0], at[stretch], at[stretch * 2], at[stretch * 3], at[stretch * 4],
                                               at[stretch * 5], at[stretch * 6], at[stretch * 7]));
        });
        for (size_t i = 0; i < 8; ++i) {
            take(lanes.edges(i), channel, kLeadIn + i * frames);
        }
    }

    // False when too little is known of the channel at that frame.
    [[nodiscard]] bool begin(EdgeLanes& lanes, size_t lane, size_t channel, uint64_t frame, Side side) const
        requires(sizeof(Word) == 2) {
        const Watched& watched = watched_[channel];
        if (side == Side::Unknown || watched.edges.rises() == 0) {
            return false;
        }
        LaneStart start{.middle = watched.middle,
                        .belowUpper = static_cast<int16_t>(watched.upperHalf - 1),
                        .belowHigh = highs_[channel],
                        .aboveLow = lows_[channel],
                        .high = side == Side::High,
                        .previous = static_cast<int16_t>(codeAt(channel, frame - 1))};
        const Side towards = other(side);
        if (beyond(start.previous, watched, towards)) {
            uint64_t crossed = frame - 1;
            while (crossed > 0 && frame - crossed < kLookBack && beyond(codeAt(channel, crossed - 1), watched, towards)) {
                --crossed;
            }
            if (crossed == 0 || beyond(codeAt(channel, crossed - 1), watched, towards)) {
                return false;
            }
            start.crossed = static_cast<int16_t>(static_cast<int64_t>(crossed) - static_cast<int64_t>(frame));
            start.before = static_cast<int16_t>(codeAt(channel, crossed - 1));
            start.after = static_cast<int16_t>(codeAt(channel, crossed));
        }
        lanes.begin(lane, start);
        return true;
    }

    [[nodiscard]] Side sideBefore(size_t channel, uint64_t frame) const {
        const Watched& watched = watched_[channel];
        for (uint64_t back = 1; back <= std::min(frame, kLookBack); ++back) {
            const int64_t code = codeAt(channel, frame - back);
            if (code >= watched.high || code <= watched.low) {
                return code >= watched.high ? Side::High : Side::Low;
            }
        }
        return Side::Unknown;
    }

    // Edges of a lane that began with that frame.
    void take(const LaneEdges& found, size_t channel, uint64_t start) {
        if (found.count == 0) {
            return;
        }
        const auto time = [&](int16_t crossed) {
            const uint64_t frame = start + static_cast<uint64_t>(int64_t{crossed});
            return crossing(firstTime_ + static_cast<double>(frame), codeAt(channel, frame - 1),
                            codeAt(channel, frame), watched_[channel].middle);
        };
        EdgeRun run{.count = found.count, .rising = found.high, .last = time(found.last), .balance = found.balance};
        if (found.count > 1) {
            run.earlier = time(found.earlier);
        }
        if (found.count % 2 != 0) {
            const double shift = firstTime_ + static_cast<double>(start) - 1.0;
            run.balance += found.high ? -shift : shift;
        }
        watched_[channel].edges.add(run);
        edgesInBlock_ += found.count;
        setSide(channel, found.high ? Side::High : Side::Low);
        watched_[channel].pending.reset();
    }

    void lookAtOne(size_t channel, uint64_t frame, uint64_t end) {
        for (; frame < end; ++frame) {
            lookAt(channel, frame);
        }
    }
#endif

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
        ++edgesInBlock_;
        const std::optional<double> time = crossingBefore(channel, side, frame);
        if (watched.side == Side::Unknown) {
            watched.firstSide = side;
            watched.firstEdge = time;
        } else if (time) {
            edge(watched, channel, side, *time);
        }
        setSide(channel, side);
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

    void setSide(size_t channel, Side side) {
        watched_[channel].side = side;
        for (size_t lane = channel; lane < row_; lane += channels_) {
            mayRise_[lane] = side == Side::High ? 0 : -1;
            mayFall_[lane] = side == Side::Low ? 0 : -1;
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
    size_t row_;
    size_t stretches_;  ///< of a channel, in lanes
    uint64_t origin_;
    Found found_;
    const Word* words_ = nullptr;  ///< the block that is looked at
    double firstTime_ = 0.0;       ///< of its first frame
    uint64_t edgesInBlock_ = 0;
    bool dense_ = false;  ///< the last block had many edges
    std::vector<Watched> watched_;
    // For eight words at once.
    std::vector<int16_t> lows_;
    std::vector<int16_t> highs_;
    std::vector<int16_t> mayFall_;
    std::vector<int16_t> mayRise_;
    std::vector<Lane> lanes_;
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
