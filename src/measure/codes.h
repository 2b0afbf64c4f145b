#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <type_traits>

#include "display/signal_format.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tarno2 {

/// Codes as they are measured: signed numbers of the word's width. Unsigned codes are moved down by half the width, so
/// that the same instructions serve both; `bias` brings them back.
template <typename Word>
struct MeasuredCodes {
    using Bits = std::make_unsigned_t<Word>;
    static constexpr uint32_t kBits = sizeof(Word) * 8;

    explicit MeasuredCodes(const SampleWordFormat& word)
        : left(word.codeBelowLines() ? kBits - std::clamp(word.portShift, 1U, kBits) : 0),
          right(word.codeBelowLines() ? left : std::min(word.codeShift, kBits - 1)),
          isSigned(word.signedCodes) {}

    [[nodiscard]] Word of(Word word) const {
        const auto shifted = static_cast<Bits>(static_cast<Bits>(word) << left);
        return isSigned ? static_cast<Word>(static_cast<Word>(shifted) >> right)
                        : static_cast<Word>(static_cast<Bits>(shifted >> right) ^ kTop);
    }
    /// Code = measured code + bias.
    [[nodiscard]] int64_t bias() const { return isSigned ? 0 : int64_t{1} << (kBits - 1); }

#if defined(__SSE2__)
    /// Eight words at once.
    [[nodiscard]] __m128i ofEight(const Word* words) const requires(sizeof(Word) == 2) {
        return ofEight(_mm_loadu_si128(reinterpret_cast<const __m128i*>(words)));
    }
    [[nodiscard]] __m128i ofEight(__m128i value) const requires(sizeof(Word) == 2) {
        value = _mm_sll_epi16(value, _mm_cvtsi32_si128(static_cast<int>(left)));
        const __m128i shift = _mm_cvtsi32_si128(static_cast<int>(right));
        return isSigned ? _mm_sra_epi16(value, shift)
                        : _mm_xor_si128(_mm_srl_epi16(value, shift), _mm_set1_epi16(static_cast<int16_t>(kTop)));
    }
#endif

    static constexpr Bits kTop = static_cast<Bits>(Bits{1} << (kBits - 1));
    uint32_t left;
    uint32_t right;
    bool isSigned;
};

/// Words in a row that is whole frames and whole registers: what is looked at together.
[[nodiscard]] inline size_t rowWords(size_t channels) {
    return std::lcm(channels, size_t{8});
}

}  // namespace tarno2
