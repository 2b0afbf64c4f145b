#pragma once

#include <vector>

#include <tarno2/driver/board.h>

namespace tarno2::drivers {

/// The simulator's boards, in the order of their numbers:
/// 1  16-bit words: 14-bit signed codes above two digital lines; 16 channels; every mode
/// 2  16-bit signed codes; 160 channels; fast
/// 3  32-bit words: 24-bit signed codes below eight digital lines; 8 channels; a list of frequencies
/// 4  16-bit words: 12-bit unsigned codes; 4 channels; can be unplugged
[[nodiscard]] std::vector<sdk::Board> simulatedBoards();

}  // namespace tarno2::drivers
