#pragma once

#include <cstdint>

namespace tarno2::drivers {

/// The simulator's counter signal: the word of a sample follows from its index in the stream alone (0 is the first
/// sample after the start, frames are not told apart), so that a lost, repeated or moved sample shows wherever it is.
///
/// A word of b bits is (index + 40503 * (index >> b)) mod 2^b. It counts up by one from sample to sample; at each
/// multiple of 2^b it jumps besides, so that a block whose length is a multiple of 2^b is missed too. The sequence
/// repeats after 2^(2b) samples (2^32 for 16 bits). With 32 bits the word is the index itself.
///
/// The bits are those of the word that carry something: all 16 on boards with 16-bit codes or with digital lines
/// below a 14-bit code (the counter then runs over code and lines together), the low 12 on a board with 12-bit codes,
/// all 32 (24-bit code and 8 lines) on a board with 32-bit words.
[[nodiscard]] constexpr uint32_t counterWord(uint64_t index, uint32_t bits) {
    if (bits >= 32) {
        return static_cast<uint32_t>(index);
    }
    return static_cast<uint32_t>(index + 40503U * (index >> bits)) & ((1U << bits) - 1U);
}

}  // namespace tarno2::drivers
