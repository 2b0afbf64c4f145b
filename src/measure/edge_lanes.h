#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tarno2 {

inline constexpr size_t kEdgeLanes = 8;
/// Frame numbers and alternating sums of them have 16 bits.
inline constexpr uint64_t kMostLaneFrames = uint64_t{1} << 14;

#if defined(__SSE2__)

/// Eight words, each `step` after the other, for eight stretches of one signal. Loads each with the word before it,
/// which need not be put in its place.
inline __m128i eightWords(const int16_t* words, size_t step) {
    const auto two = [words, step](size_t i) {
        int32_t pair = 0;
        std::memcpy(&pair, words + i * step - 1, sizeof(pair));
        return _mm_cvtsi32_si128(pair);
    };
    const auto four = [&two](size_t i) {
        return _mm_unpacklo_epi32(_mm_unpacklo_epi16(two(i), two(i + 1)), _mm_unpacklo_epi16(two(i + 2), two(i + 3)));
    };
    return _mm_unpackhi_epi64(four(0), four(4));
}

/// Where a lane of `EdgeLanes` begins. Frames are counted from there.
struct LaneStart {
    double middle = 0.0;
    int16_t belowUpper = 0;  ///< above it is above the middle
    int16_t belowHigh = 0;   ///< above it is high
    int16_t aboveLow = 0;    ///< below it is low
    bool high = false;       ///< the side it is on
    int16_t previous = 0;    ///< code of the frame before
    // The last crossing of the middle, when it is beyond it already: the frame after it, and the codes about it.
    bool crossingKnown = true;
    int16_t crossed = 0;
    int16_t before = 0;
    int16_t after = 1;
};

/// What was found in a lane.
struct LaneEdges {
    uint16_t count = 0;
    bool certain = false;  ///< their times are known; false when the first one's crossing was not
    bool high = false;     ///< the side it is on at the end
    int16_t last = 0;      ///< the frame after the last edge
    int16_t earlier = 0;   ///< the frame after the edge before that one, if there are two
    double balance = 0.0;  ///< times of falling edges less those of rising ones, as though each were a frame later
};

/// Edges of eight signals, or of eight stretches of one, looked for side by side: every edge takes the same few
/// instructions, however many there are, but nothing is known of each one afterwards. One thread.
class EdgeLanes {
public:
    void begin(size_t lane, const LaneStart& start) {
        middle_[lane] = start.middle;
        upper_[lane] = start.belowUpper;
        // On the high side the inverted code is compared with the inverted low level.
        const auto inverted = static_cast<int16_t>(~start.aboveLow);
        turn_[lane] = static_cast<int16_t>(start.belowHigh ^ inverted);
        level_[lane] = start.high ? inverted : start.belowHigh;
        invert_[lane] = start.high ? -1 : 0;
        previous_[lane] = start.previous;
        certain_[lane] = start.crossingKnown;
        crossed_[lane] = start.crossed;
        before_[lane] = start.before;
        after_[lane] = start.after;
    }

    /// Looks at the frames, at most `kMostLaneFrames`, once its lanes have begun; others find nothing. `row(frame)`
    /// gives the codes of all lanes.
    template <typename Row>
    void run(size_t frames, Row row);

    [[nodiscard]] LaneEdges edges(size_t lane) const {
        return {static_cast<uint16_t>(count_[lane]), certain_[lane], invert_[lane] != 0, last_[lane], earlier_[lane],
                frameSum_[lane] + partSum_[lane]};
    }

private:
    using Codes = int16_t[kEdgeLanes];

    static __m128i load(const Codes& from) { return _mm_load_si128(reinterpret_cast<const __m128i*>(from)); }
    static void store(Codes& to, __m128i value) { _mm_store_si128(reinterpret_cast<__m128i*>(to), value); }
    static __m128i choose(__m128i mask, __m128i one, __m128i other) {
        return _mm_or_si128(_mm_and_si128(mask, one), _mm_andnot_si128(mask, other));
    }
    inline void addParts(__m128i before, __m128i after, __m128i chosen);

    bool certain_[kEdgeLanes] = {};
    alignas(16) double middle_[kEdgeLanes] = {};
    alignas(16) double partSum_[kEdgeLanes] = {};
    alignas(16) Codes upper_ = {};
    alignas(16) Codes turn_ = {};  ///< the bits in which the two levels differ
    /// That the code, or the inverted one, has to exceed next. A lane that has not begun never does.
    alignas(16) Codes level_ = {32767, 32767, 32767, 32767, 32767, 32767, 32767, 32767};
    alignas(16) Codes invert_ = {};  ///< all bits on the high side
    alignas(16) Codes previous_ = {};
    alignas(16) Codes crossed_ = {};
    alignas(16) Codes before_ = {};
    alignas(16) Codes after_ = {};
    alignas(16) Codes count_ = {};
    alignas(16) Codes last_ = {};
    alignas(16) Codes earlier_ = {};
    alignas(16) Codes frameSum_ = {};
};

// The part of a frame from the sample before the crossing to the crossing: added of falling edges, subtracted of rising
// ones, which the code before tells, being above the middle or below it.
void EdgeLanes::addParts(__m128i before, __m128i after, __m128i chosen) {
    const __m128i height = _mm_sub_epi16(_mm_max_epi16(before, after), _mm_min_epi16(before, after));
    const __m128i zero = _mm_setzero_si128();
    const auto add = [this](size_t lane, __m128i from, __m128i over, __m128i mask) {
        const __m128d fall = _mm_sub_pd(_mm_cvtepi32_pd(from), _mm_load_pd(middle_ + lane));
        const __m128d part = _mm_and_pd(_mm_div_pd(fall, _mm_cvtepi32_pd(over)), _mm_castsi128_pd(mask));
        _mm_store_pd(partSum_ + lane, _mm_add_pd(_mm_load_pd(partSum_ + lane), part));
    };
    const auto addFour = [&add](size_t lane, __m128i from, __m128i over, __m128i mask) {
        from = _mm_srai_epi32(from, 16);
        add(lane, from, over, _mm_unpacklo_epi32(mask, mask));
        add(lane + 2, _mm_unpackhi_epi64(from, from), _mm_unpackhi_epi64(over, over), _mm_unpackhi_epi32(mask, mask));
    };
    addFour(0, _mm_unpacklo_epi16(before, before), _mm_unpacklo_epi16(height, zero),
            _mm_unpacklo_epi16(chosen, chosen));
    addFour(4, _mm_unpackhi_epi16(before, before), _mm_unpackhi_epi16(height, zero),
            _mm_unpackhi_epi16(chosen, chosen));
}

template <typename Row>
void EdgeLanes::run(size_t frames, Row row) {
    const __m128i upper = load(upper_);
    __m128i level = load(level_);
    __m128i invert = load(invert_);
    __m128i previous = load(previous_);
    __m128i wasAbove = _mm_cmpgt_epi16(previous, upper);
    __m128i crossed = load(crossed_);
    __m128i before = load(before_);
    __m128i after = load(after_);
    __m128i count = load(count_);
    __m128i last = load(last_);
    __m128i earlier = load(earlier_);
    __m128i frameSum = load(frameSum_);
    __m128i now = _mm_setzero_si128();
    for (size_t i = 0; i < frames; ++i, now = _mm_add_epi16(now, _mm_set1_epi16(1))) {
        const __m128i codes = row(i);
        const __m128i above = _mm_cmpgt_epi16(codes, upper);
        const __m128i crosses = _mm_xor_si128(above, wasAbove);
        before = choose(crosses, previous, before);
        after = choose(crosses, codes, after);
        crossed = choose(crosses, now, crossed);
        previous = codes;
        wasAbove = above;
        const __m128i reached = _mm_cmpgt_epi16(_mm_xor_si128(codes, invert), level);
        if (_mm_movemask_epi8(reached) == 0) {
            continue;
        }
        invert = _mm_xor_si128(invert, reached);
        level = _mm_xor_si128(level, _mm_and_si128(reached, load(turn_)));
        earlier = choose(reached, last, earlier);
        last = choose(reached, crossed, last);
        count = _mm_sub_epi16(count, reached);
        const __m128i time = _mm_sub_epi16(_mm_xor_si128(crossed, invert), invert);
        frameSum = _mm_add_epi16(frameSum, _mm_and_si128(time, reached));
        addParts(before, after, reached);
    }
    store(invert_, invert);
    store(count_, count);
    store(last_, last);
    store(earlier_, earlier);
    store(frameSum_, frameSum);
}

#endif

}  // namespace tarno2
