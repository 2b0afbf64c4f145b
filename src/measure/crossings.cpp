#include "measure/crossings.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

#include "measure/codes.h"

namespace tarno2 {

namespace {

constexpr double kBand = 0.1;  // of the signal's height, on each side of the middle

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
        if (count == 0) {
            return;
        }
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
            const uint64_t rowFrames = lanes_.back().frame + 1;
            for (; frame + rowFrames <= count; frame += rowFrames) {
                lookAtRow(frame);
            }
        }
#endif
        for (; frame < count; ++frame) {
            for (size_t i = 0; i < channels_; ++i) {
                lookAt(i, frame);
            }
        }
        for (size_t i = 0; i < channels_; ++i) {
            endBlock(i, count);
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
    uint64_t origin_;
    Found found_;
    const Word* words_ = nullptr;  ///< the block that is looked at
    double firstTime_ = 0.0;       ///< of its first frame
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
