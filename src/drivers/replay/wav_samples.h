#pragma once

#include <cstddef>

#include <tarno2/driver/board.h>

#include "drivers/replay/wav_file.h"

namespace tarno2::drivers {

// What the board gives: words of 16 bits with codes of 8, which have no sign, or of 16, and words of 32 bits with codes
// of 24 or 32. Floats are codes of 32 bits, of which -1.0 is the lowest.

/// Makes words and codes of a board those of such samples.
void takeFormat(WavSample sample, sdk::Board& board);

/// The words of `count` samples, at `to`. What is no number is 0, what is beyond -1.0 to 1.0 the nearest code.
void takeSamples(WavSample sample, const std::byte* from, size_t count, std::byte* to);

}  // namespace tarno2::drivers
