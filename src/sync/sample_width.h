#pragma once

#include <cstdint>

namespace tarno2 {

/// How a sample word is turned into the number that a threshold is compared with: moved left, then right with its sign.
struct WordShift {
    uint32_t left = 0;
    uint32_t right = 0;
};

/// What asks for a number out of a packed word.
enum class Comparison { Analysis, Synchronisation };

/// Everything in which 16-bit samples differ from 32-bit ones. Bit numbers and shifts count modulo 32.
struct Samples16 {
    using Word = int16_t;

    /// Thresholds of the analysis are 16 bits wide; that of the synchronisation is not cut.
    static constexpr int32_t analysisCode(int32_t code) { return static_cast<int16_t>(code); }
    /// A packed word that is compared as it is.
    static constexpr WordShift wholeWord(Comparison /*comparison*/, uint32_t /*codeShift*/) { return {}; }
    /// Bits of the word that the port's bit looks at. The mask meets the sign-extended word: what lies above bit 15
    /// looks at the sign.
    static constexpr Word portMask(int32_t bit, uint32_t portShift) {
        const uint32_t line = (1U << (static_cast<uint32_t>(bit) & 31U)) & 0xFFFFU;
        const uint32_t mask = line << (portShift & 31U);
        return static_cast<Word>(static_cast<uint16_t>(mask | ((mask >> 16U) != 0 ? 0x8000U : 0U)));
    }
    static constexpr Word movedLeft(Word word, uint32_t /*left*/) { return word; }
};

struct Samples32 {
    using Word = int32_t;

    static constexpr int32_t analysisCode(int32_t code) { return code; }
    /// "As it is" keeps only the low bits of a 32-bit word, with their sign: the code's shift alone in the
    /// synchronisation, 16 more in the analysis.
    static constexpr WordShift wholeWord(Comparison comparison, uint32_t codeShift) {
        const uint32_t shift = ((comparison == Comparison::Analysis ? 16U : 32U) - codeShift) & 31U;
        return {shift, shift};
    }
    static constexpr Word portMask(int32_t bit, uint32_t portShift) {
        return static_cast<Word>(1U << (static_cast<uint32_t>(bit) & 31U) << (portShift & 31U));
    }
    static constexpr Word movedLeft(Word word, uint32_t left) {
        return static_cast<Word>(static_cast<uint32_t>(word) << left);
    }
};

}  // namespace tarno2
