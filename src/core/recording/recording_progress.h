#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "core/recording/recording_shell.h"

namespace tarno2 {

/// How far a recording is.
struct RecordingFigures {
    uint64_t elapsedSeconds = 0;
    std::optional<uint64_t> remainingSeconds;  ///< nothing without an end, or while the rate is not known
    std::optional<int> percent;                ///< 0 to 100; nothing without an end
    std::optional<double> bytesPerSecond;      ///< of the last seconds; nothing until two blocks tell it
};

/// How much of a recording there was when its newest block came.
struct BlockMark {
    uint32_t session = 0;  ///< number of its session
    uint64_t bytes = 0;    ///< written until then
    uint64_t time = 0;     ///< milliseconds of the clock that never goes back
};

/// The newest block's mark, from the thread that reads the board to the one that shows the figures. Nobody waits.
class NewestBlock {
public:
    /// One thread at a time.
    void put(const BlockMark& mark) noexcept;
    /// Any thread. Nothing while a new one is being put.
    [[nodiscard]] std::optional<BlockMark> get() const noexcept;

private:
    std::atomic<uint32_t> changes_{0};  ///< odd while it is being changed
    std::atomic<uint32_t> session_{0};
    std::atomic<uint64_t> bytes_{0};
    std::atomic<uint64_t> time_{0};
};

/// Follows the running recording by its clock and by what was written. Times are milliseconds of one clock that never
/// goes back. No thread of its own.
class RecordingProgress {
public:
    /// A recording has begun.
    void begin(StopRule rule, double stopSeconds, uint64_t stopBytes, uint64_t now);
    /// A block came: so many bytes were written at that time. The same mark may be told again.
    void block(uint64_t bytes, uint64_t time);
    /// So many bytes were written until now.
    [[nodiscard]] RecordingFigures update(uint64_t bytes, uint64_t now);

private:
    struct Mark {
        uint64_t time = 0;
        uint64_t bytes = 0;
    };
    [[nodiscard]] std::optional<double> rate(uint64_t now) const;
    void remember(const Mark& mark);

    StopRule rule_ = StopRule::Manual;
    double stopSeconds_ = 0.0;
    uint64_t stopBytes_ = 0;
    uint64_t start_ = 0;
    std::array<Mark, 12> marks_{};  ///< of the last seconds, the oldest one at `oldest_`
    size_t oldest_ = 0;
    size_t count_ = 0;
    Mark newest_;              ///< the newest block
    uint64_t longestGap_ = 0;  ///< between two blocks, ms
};

/// Tells when the disk falls behind: when more than half of the memory for what waits for it is full, and again only
/// after it had caught up.
class DiskWatch {
public:
    [[nodiscard]] bool fallsBehind(uint64_t waitingBytes, uint64_t bufferBytes);

private:
    bool behind_ = false;
};

}  // namespace tarno2
