#pragma once

#include <cstdint>
#include <random>
#include <string>

namespace tarno2::test {

enum class DiskTrouble { None, Stalls, LongStall, SlowClose, Full, ShortWrite, NoFile, NoFlush, NoClose };
enum class BoardTrouble { None, Overflow, FailedTransfer, Silence, Unplugged };

[[nodiscard]] const char* nameOf(DiskTrouble trouble);
[[nodiscard]] const char* nameOf(BoardTrouble trouble);

/// One recording of the simulator's counter signal and what goes wrong meanwhile.
struct Plan {
    uint32_t board = 1;
    uint32_t sampleWidth = 2;   ///< bytes
    uint32_t counterBits = 16;  ///< of a sample word
    uint32_t channels = 1;
    double frequency = 1000.0;  ///< total Hz
    bool realTime = true;
    uint32_t decimation = 1;
    uint64_t limitBytes = 0;   ///< 0: the stop button ends it
    uint32_t stopAfterMs = 0;  ///< when the stop button is pressed
    uint64_t pieceBytes = 0;
    uint64_t bufferLimit = 0;  ///< memory for data that wait
    uint32_t longestWaitMs = 1000;

    DiskTrouble disk = DiskTrouble::None;
    uint64_t diskBytes = 0;   ///< Full: what fits
    uint32_t diskNumber = 0;  ///< stalls: each so many-th write, or the one; NoFile: the first that can't be made
    uint32_t stallMs = 0;     ///< how long one stall, or a close, takes
    BoardTrouble trouble = BoardTrouble::None;
    uint64_t troubleAt = 0;  ///< sample

    [[nodiscard]] uint64_t frameBytes() const { return uint64_t{sampleWidth} * channels; }
    /// The simulator's settings file.
    [[nodiscard]] std::string simulatorSettings() const;
    /// All of it in a line.
    [[nodiscard]] std::string text() const;
};

/// Makes a recording up that takes a few seconds at most.
[[nodiscard]] Plan drawPlan(std::mt19937_64& dice);

}  // namespace tarno2::test
