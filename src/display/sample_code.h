#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "display/signal_format.h"

namespace tarno2 {

/// How the code is taken out of words of one width, and put back.
template <typename Word>
struct SampleCode {
    using Bits = std::make_unsigned_t<Word>;
    static constexpr uint32_t kBits = sizeof(Word) * 8;

    explicit SampleCode(const SampleWordFormat& word)
        : below(word.codeBelowLines()),
          isSigned(word.signedCodes),
          shift(std::min(word.codeShift, kBits - 1)),
          width(std::min(word.portShift, kBits)),
          mask(width == kBits ? static_cast<Bits>(~Bits{0}) : static_cast<Bits>((Bits{1} << width) - 1)),
          sign(width == 0 ? Bits{0} : static_cast<Bits>(Bits{1} << (width - 1))) {}

    /// Calls `use` with a function from a word to its code, so that the loop around it is compiled for each kind.
    template <typename Use>
    auto with(Use use) const {
        if (below) {
            // The sign bit spreads upwards: flipped, then taken away again.
            const Bits flip = isSigned ? sign : Bits{0};
            return use([m = mask, flip](Word w) {
                return static_cast<Word>(static_cast<Bits>((static_cast<Bits>(w) & m) ^ flip) - flip);
            });
        }
        return withShift([&](auto known) {
            if (isSigned) {
                return use([known](Word w) { return static_cast<Word>(w >> known); });
            }
            return use([known](Word w) { return static_cast<Word>(static_cast<Bits>(w) >> known); });
        });
    }
    /// The lines of a frame's first word, line 0 in bit 0; what lies above the last line is not cleared.
    [[nodiscard]] Bits lines(Word first) const {
        const auto bits = static_cast<Bits>(first);
        return below ? (width == kBits ? Bits{0} : static_cast<Bits>(bits >> width)) : bits;
    }
    /// A word with that code and those lines: `with` and `lines` give them back.
    [[nodiscard]] Word pack(Word code, Bits lineBits) const {
        const auto bits = static_cast<Bits>(code);
        if (below) {
            const Bits high = width == kBits ? Bits{0} : static_cast<Bits>(lineBits << width);
            return static_cast<Word>(static_cast<Bits>(bits & mask) | high);
        }
        const auto low = static_cast<Bits>((Bits{1} << shift) - 1);
        return static_cast<Word>(static_cast<Bits>(bits << shift) | static_cast<Bits>(lineBits & low));
    }

private:
    // Compilers shift many 16-bit words at once only by a number that they know.
    template <uint32_t Known = 0, typename Use>
    auto withShift(Use use) const {
        if constexpr (kBits > 16) {
            return use(shift);
        } else {
            if constexpr (Known + 1 < kBits) {
                if (shift != Known) {
                    return withShift<Known + 1>(use);
                }
            }
            return use(std::integral_constant<uint32_t, Known>{});
        }
    }

    bool below;
    bool isSigned;
    uint32_t shift;
    uint32_t width;
    Bits mask;
    Bits sign;
};

}  // namespace tarno2
