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
        : below_(word.codeBelowLines()),
          isSigned_(word.signedCodes),
          shift_(std::min(word.codeShift, kBits - 1)),
          width_(std::min(word.portShift, kBits)),
          mask_(width_ == kBits ? static_cast<Bits>(~Bits{0}) : static_cast<Bits>((Bits{1} << width_) - 1)),
          sign_(width_ == 0 ? Bits{0} : static_cast<Bits>(Bits{1} << (width_ - 1))) {}

    /// Calls `use` with a function from a word to its code, so that the loop around it is compiled for each kind.
    template <typename Use>
    auto with(Use use) const {
        if (below_) {
            // The sign bit spreads upwards: flipped, then taken away again.
            const Bits flip = isSigned_ ? sign_ : Bits{0};
            return use([m = mask_, flip](Word w) {
                return static_cast<Word>(static_cast<Bits>((static_cast<Bits>(w) & m) ^ flip) - flip);
            });
        }
        return withShift([&](auto known) {
            if (isSigned_) {
                return use([known](Word w) { return static_cast<Word>(w >> known); });
            }
            return use([known](Word w) { return static_cast<Word>(static_cast<Bits>(w) >> known); });
        });
    }
    /// The lines of a frame's first word, line 0 in bit 0; what lies above the last line is not cleared.
    [[nodiscard]] Bits lines(Word first) const {
        const auto bits = static_cast<Bits>(first);
        return below_ ? (width_ == kBits ? Bits{0} : static_cast<Bits>(bits >> width_)) : bits;
    }
    /// A word with that code and those lines: `with` and `lines` give them back.
    [[nodiscard]] Word pack(Word code, Bits lineBits) const {
        const auto bits = static_cast<Bits>(code);
        if (below_) {
            const Bits high = width_ == kBits ? Bits{0} : static_cast<Bits>(lineBits << width_);
            return static_cast<Word>(static_cast<Bits>(bits & mask_) | high);
        }
        const auto low = static_cast<Bits>((Bits{1} << shift_) - 1);
        return static_cast<Word>(static_cast<Bits>(bits << shift_) | static_cast<Bits>(lineBits & low));
    }

private:
    // Compilers shift many 16-bit words at once only by a number that they know.
    template <uint32_t Known = 0, typename Use>
    auto withShift(Use use) const {
        if constexpr (kBits > 16) {
            return use(shift_);
        } else {
            if constexpr (Known + 1 < kBits) {
                if (shift_ != Known) {
                    return withShift<Known + 1>(use);
                }
            }
            return use(std::integral_constant<uint32_t, Known>{});
        }
    }

    bool below_;
    bool isSigned_;
    uint32_t shift_;
    uint32_t width_;
    Bits mask_;
    Bits sign_;
};

}  // namespace tarno2
