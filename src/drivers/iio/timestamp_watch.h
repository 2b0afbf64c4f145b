#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace tarno2::drivers {

/// Finds by the time of each frame where the board lost some, which nothing else tells.
///
/// Times of frames jitter: one that is late and made up for by those after it is no loss. Boards that give the same
/// time to the frames of a burst can't be watched; that is found out from the first block.
class TimestampWatch {
public:
    explicit TimestampWatch(double framesPerSecond);

    struct Loss {
        size_t frame = 0;     ///< first frame of the block that comes after the gap
        uint64_t frames = 0;  ///< that are missing before it
    };
    /// Looks at the times of the next block, nanoseconds. After a loss the watch is over.
    std::optional<Loss> look(std::span<const int64_t> times);

private:
    [[nodiscard]] bool isRegular(std::span<const int64_t> times) const;

    double period_;  // nanoseconds
    std::optional<int64_t> last_;
    enum class State { Unknown, Watching, Off };
    State state_ = State::Unknown;
};

}  // namespace tarno2::drivers
