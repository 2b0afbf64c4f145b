#include "core/devices/board_options.h"

#include <algorithm>

#include "config/settings/recording_wish.h"

namespace tarno2 {

uint32_t offeredModes(const BoardFacts& board) {
    uint32_t modes =
        board.boardModes & (kBoardExternalStart | kBoardDifferential | kBoardPacketMode | kBoardExternalClock);
    // Only the extended block tells a board of differential inputs.
    if (!board.extendedBlock) {
        modes &= ~static_cast<uint32_t>(kBoardDifferential);
    }
    return modes;
}

bool offers(const BoardFacts& board, BoardOption option) {
    switch (option) {
        case BoardOption::ExternalStart:
            return (offeredModes(board) & kBoardExternalStart) != 0;
        case BoardOption::Differential:
            return (offeredModes(board) & kBoardDifferential) != 0;
        case BoardOption::PacketMode:
            return (offeredModes(board) & kBoardPacketMode) != 0;
        case BoardOption::ExternalClock:
            return (offeredModes(board) & kBoardExternalClock) != 0;
        case BoardOption::CutMode:
            return board.cutMode;
        case BoardOption::DigitalPort:
            return board.packed();
        case BoardOption::HardwareAverage:
            return board.hardwareAverage;
    }
    return false;
}

int32_t usableGain(const BoardFacts& board, int32_t gain) {
    const bool known = std::find(board.gains.begin(), board.gains.end(), gain) != board.gains.end();
    return known || board.gains.empty() ? gain : board.gains.front();
}

}  // namespace tarno2
