#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "core/recording_shell.h"

namespace tarno2 {

/// How far a recording is.
struct RecordingFigures {
    uint64_t elapsedSeconds = 0;
    std::optional<uint64_t> remainingSeconds;  ///< nothing without an end, or while the rate is not known
    std::optional<int> percent;                ///< 0 to 100; nothing without an end
    double bytesPerSecond = 0.0;               ///< of the last seconds
};

/// Follows the running recording by its clock and by what was written. Times are milliseconds of one clock that never
/// goes back. No thread of its own.
class RecordingProgress {
public:
    /// A recording has begun.
    void begin(StopRule rule, double stopSeconds, uint64_t stopBytes, uint64_t now);
    /// So many bytes were written until now.
    [[nodiscard]] RecordingFigures update(uint64_t bytes, uint64_t now);

private:
    struct Mark {
        uint64_t time = 0;
        uint64_t bytes = 0;
    };
    [[nodiscard]] double rateUntil(const Mark& now) const;
    void remember(const Mark& mark);

    StopRule rule_ = StopRule::Manual;
    double stopSeconds_ = 0.0;
    uint64_t stopBytes_ = 0;
    uint64_t start_ = 0;
    std::array<Mark, 12> marks_{};  ///< of the last seconds, the oldest one at `oldest_`
    size_t oldest_ = 0;
    size_t count_ = 0;
};

}  // namespace tarno2
