#pragma once

#include <cstdint>
#include <limits>

#include "sync/sample_width.h"

namespace tarno2 {

/// A yes-or-no question to one sample word of a frame: is its level high or low enough, is a bit of the port set.
///
/// Thresholds are moved to where the code lies in the word, so that the words themselves are compared: a word's code
/// reaches k exactly when the word reaches k moved left.
template <typename Width>
class Condition {
public:
    using Word = typename Width::Word;

    /// Asks nothing that a word could meet.
    static Condition never() { return {Kind::BitSet, 0, {}, 0}; }
    /// The code is `code` or more. `place`: index of the word that is asked, counted from the frame's first.
    static Condition atLeast(int64_t code, WordShift shift, int64_t place) {
        const int64_t bound = code << shift.right;
        return bound > kMaximum ? never() : Condition{Kind::AtLeast, clamped(bound), shift, place};
    }
    /// The code is `code` or less.
    static Condition atMost(int64_t code, WordShift shift, int64_t place) {
        const int64_t bound = ((code + 1) << shift.right) - 1;
        return bound < kMinimum ? never() : Condition{Kind::AtMost, clamped(bound), shift, place};
    }
    /// One of the mask's bits is set in the frame's first word (or, with `set` false, none is).
    static Condition port(Word mask, bool set) { return {set ? Kind::BitSet : Kind::BitClear, mask, {}, 0}; }

    [[nodiscard]] int64_t place() const { return place_; }

    /// Calls `use` with the test itself, a function of a word, so that loops around it are compiled for each kind.
    template <typename Use>
    auto with(Use use) const {
        switch (kind_) {
            case Kind::AtLeast:
                return use([bound = operand_, left = left_](Word w) { return Width::movedLeft(w, left) >= bound; });
            case Kind::AtMost:
                return use([bound = operand_, left = left_](Word w) { return Width::movedLeft(w, left) <= bound; });
            case Kind::BitSet:
                return use([mask = operand_](Word w) { return static_cast<Word>(w & mask) != 0; });
            case Kind::BitClear:
                break;
        }
        return use([mask = operand_](Word w) { return static_cast<Word>(w & mask) == 0; });
    }
    [[nodiscard]] bool met(Word word) const {
        return with([word](auto test) { return test(word); });
    }

private:
    enum class Kind { AtLeast, AtMost, BitSet, BitClear };

    static constexpr int64_t kMinimum = std::numeric_limits<Word>::min();
    static constexpr int64_t kMaximum = std::numeric_limits<Word>::max();

    Condition(Kind kind, Word operand, WordShift shift, int64_t place)
        : kind_(kind), operand_(operand), left_(shift.left), place_(place) {}
    static Word clamped(int64_t bound) {
        return static_cast<Word>(bound < kMinimum ? kMinimum : bound > kMaximum ? kMaximum : bound);
    }

    Kind kind_;
    Word operand_;
    uint32_t left_;
    int64_t place_;
};

}  // namespace tarno2
