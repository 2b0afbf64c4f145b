#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "measure/codes.h"

namespace tarno2 {

#if defined(__SSE2__)

/// The least and the greatest code of every channel among some frames of 16-bit words. One thread.
class CodeRanges {
public:
    CodeRanges(const MeasuredCodes<int16_t>& code, size_t channels)
        : code_(code), channels_(channels), row_(rowWords(channels)), least_(row_), most_(row_) {}

    void look(const int16_t* words, uint64_t frames) {
        std::ranges::fill(least_, std::numeric_limits<int16_t>::max());
        std::ranges::fill(most_, std::numeric_limits<int16_t>::min());
        const uint64_t rows = frames * channels_ / row_;
        for (size_t lane = 0; rows > 0 && lane < row_; lane += 8) {
            lookAtLanes(words + lane, rows, lane);
        }
        for (size_t lane = channels_; lane < row_; ++lane) {
            join(lane % channels_, least_[lane], most_[lane]);
        }
        for (size_t i = rows * row_; i < frames * channels_; ++i) {
            const int16_t code = code_.of(words[i]);
            join(i % channels_, code, code);
        }
    }
    [[nodiscard]] int16_t least(size_t channel) const { return least_[channel]; }
    [[nodiscard]] int16_t most(size_t channel) const { return most_[channel]; }

private:
    void lookAtLanes(const int16_t* words, uint64_t rows, size_t lane) {
        const MeasuredCodes<int16_t> code = code_;
        __m128i least = code.ofEight(words);
        __m128i most = least;
        for (uint64_t i = 1; i < rows; ++i) {
            words += row_;
            const __m128i codes = code.ofEight(words);
            least = _mm_min_epi16(least, codes);
            most = _mm_max_epi16(most, codes);
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(&least_[lane]), least);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(&most_[lane]), most);
    }
    void join(size_t channel, int16_t least, int16_t most) {
        least_[channel] = std::min(least_[channel], least);
        most_[channel] = std::max(most_[channel], most);
    }

    MeasuredCodes<int16_t> code_;
    size_t channels_;
    size_t row_;
    std::vector<int16_t> least_;  ///< of a row's words, then the first ones of the channels
    std::vector<int16_t> most_;
};

#endif

}  // namespace tarno2
