#include "measure/channel_sums.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "measure/codes.h"

namespace tarno2 {

namespace {

__extension__ using WideSum = __int128;
__extension__ using WideSquares = unsigned __int128;

struct Sums {
    int64_t minimum = std::numeric_limits<int64_t>::max();
    int64_t maximum = std::numeric_limits<int64_t>::min();
    WideSum sum = 0;
    WideSquares squares = 0;

    void add(int64_t code) {
        minimum = std::min(minimum, code);
        maximum = std::max(maximum, code);
        sum += code;
        squares += static_cast<uint64_t>(code * code);
    }
    void join(const Sums& other) {
        minimum = std::min(minimum, other.minimum);
        maximum = std::max(maximum, other.maximum);
        sum += other.sum;
        squares += other.squares;
    }
};

// frames * squares - sum * sum, over the square of frames. Beyond 128 bits (more than 2^32 frames of 32-bit codes) in
// floating point.
double varianceOf(const Sums& sums, uint64_t frames) {
    const auto count = static_cast<double>(frames);
    if (sums.squares <= std::numeric_limits<WideSquares>::max() / frames) {
        const WideSquares spread = sums.squares * frames - static_cast<WideSquares>(sums.sum * sums.sum);
        return static_cast<double>(spread) / count / count;
    }
    const auto wide = static_cast<long double>(frames);
    const long double mean = static_cast<long double>(sums.sum) / wide;
    return static_cast<double>(std::max(static_cast<long double>(sums.squares) / wide - mean * mean, 0.0L));
}

template <typename Word>
class SumsOf final : public ChannelSums {
public:
    explicit SumsOf(const SignalFormat& format)
        : code_(format.word), channels_(format.channelCount()), row_(rowWords(channels_)), sums_(channels_) {}

    void add(const std::byte* frames, uint64_t count) override {
        const auto* words = reinterpret_cast<const Word*>(frames);
        frames_ += count;
        size_t left = count * channels_;
#if defined(__SSE2__)
        if constexpr (sizeof(Word) == 2) {
            while (left >= row_ * 2) {
                const size_t pairs = std::min(left / (row_ * 2), kMostPairs);
                for (size_t lane = 0; lane < row_; lane += 8) {
                    addLanes(words + lane, pairs, lane);
                }
                words += pairs * 2 * row_;
                left -= pairs * 2 * row_;
            }
        }
#endif
        for (; left > 0; left -= channels_, words += channels_) {
            for (size_t i = 0; i < channels_; ++i) {
                sums_[i].add(code_.of(words[i]));
            }
        }
    }

    void join(const ChannelSums& other) override {
        const auto& from = static_cast<const SumsOf&>(other);
        frames_ += from.frames_;
        for (size_t i = 0; i < channels_; ++i) {
            sums_[i].join(from.sums_[i]);
        }
    }

    [[nodiscard]] CodeMoments moments(size_t channel) const override {
        const Sums& sums = sums_[channel];
        if (frames_ == 0) {
            return {};
        }
        const auto bias = static_cast<double>(code_.bias());
        const long double mean = static_cast<long double>(sums.sum) / static_cast<long double>(frames_);
        return {frames_, static_cast<double>(sums.minimum) + bias, static_cast<double>(sums.maximum) + bias,
                static_cast<double>(mean + static_cast<long double>(bias)), varianceOf(sums, frames_)};
    }

private:
#if defined(__SSE2__)
    // The sums of this many pairs of codes fit in 32 bits.
    static constexpr size_t kMostPairs = size_t{1} << 14;

    // Eight columns of words, two rows at a time: their codes side by side make one multiplication of both squares.
    void addLanes(const Word* words, size_t pairs, size_t lane) requires(sizeof(Word) == 2) {
        const __m128i ones = _mm_set1_epi16(1);
        const __m128i lower = _mm_set_epi32(0, -1, 0, -1);
        const MeasuredCodes<Word> code = code_;
        __m128i low = code.ofEight(words);
        __m128i high = low;
        __m128i sums[2] = {};
        __m128i squares[4] = {};
        for (size_t i = 0; i < pairs; ++i, words += 2 * row_) {
            const __m128i first = code.ofEight(words);
            const __m128i second = code.ofEight(words + row_);
            low = _mm_min_epi16(low, _mm_min_epi16(first, second));
            high = _mm_max_epi16(high, _mm_max_epi16(first, second));
            const __m128i both[2] = {_mm_unpacklo_epi16(first, second), _mm_unpackhi_epi16(first, second)};
            for (size_t half = 0; half < 2; ++half) {
                sums[half] = _mm_add_epi32(sums[half], _mm_madd_epi16(both[half], ones));
                const __m128i product = _mm_madd_epi16(both[half], both[half]);
                squares[half] = _mm_add_epi64(squares[half], _mm_and_si128(product, lower));
                squares[half + 2] = _mm_add_epi64(squares[half + 2], _mm_srli_epi64(product, 32));
            }
        }
        alignas(16) int16_t lows[8];
        alignas(16) int16_t highs[8];
        alignas(16) int32_t added[8];
        alignas(16) uint64_t squared[8];  // lanes 0 2, 4 6, 1 3, 5 7
        _mm_store_si128(reinterpret_cast<__m128i*>(lows), low);
        _mm_store_si128(reinterpret_cast<__m128i*>(highs), high);
        for (size_t i = 0; i < 2; ++i) {
            _mm_store_si128(reinterpret_cast<__m128i*>(added + 4 * i), sums[i]);
        }
        for (size_t i = 0; i < 4; ++i) {
            _mm_store_si128(reinterpret_cast<__m128i*>(squared + 2 * i), squares[i]);
        }
        for (size_t i = 0; i < 8; ++i) {
            const size_t place = (i % 2) * 4 + i / 2;
            sums_[(lane + i) % channels_].join({lows[i], highs[i], added[i], squared[place]});
        }
    }
#endif

    MeasuredCodes<Word> code_;
    size_t channels_;
    size_t row_;
    uint64_t frames_ = 0;
    std::vector<Sums> sums_;
};

}  // namespace

std::unique_ptr<ChannelSums> ChannelSums::create(const SignalFormat& format) {
    if (format.word.sampleWidth == 4) {
        return std::make_unique<SumsOf<int32_t>>(format);
    }
    return std::make_unique<SumsOf<int16_t>>(format);
}

}  // namespace tarno2
