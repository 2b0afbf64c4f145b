#pragma once

#include <cstdint>

#include "core/devices/board_facts.h"

namespace tarno2 {

/// What an operator can switch only when the board and its driver offer it.
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
/// The gain that a channel is recorded with: the one asked for, or the board's first when it lacks that one.
[[nodiscard]] int32_t usableGain(const BoardFacts& board, int32_t gain);

}  // namespace tarno2
