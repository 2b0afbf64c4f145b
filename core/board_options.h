#pragma once

#include <cstdint>

#include "core/board_facts.h"

namespace tarno2 {

/// What an operator can switch or choose only when the board and its driver offer it.
enum class BoardOption {
    ExternalStart,
    Differential,
    PacketMode,
    ExternalClock,
    CutMode,
    DigitalPort,
    HardwareAverage
};

[[nodiscard]] bool offers(const BoardFacts& board, BoardOption option);
/// The BoardModeBits that the board offers.
[[nodiscard]] uint32_t offeredModes(const BoardFacts& board);

}  // namespace tarno2
