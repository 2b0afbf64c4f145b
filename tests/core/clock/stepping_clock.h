#pragma once

#include <array>
#include <atomic>
#include <cstdint>

namespace tarno2::test {

/// The clocks of a program in which time stands still until a recording has looked at it: a test that links this has no
/// other. By the recording's next look it is a step later, and the board has made all that was due by then; so what the
/// recording notes is exact.
struct SteppingClock {
    static constexpr uint64_t kStep = 120'000'000;  ///< nanoseconds; two leave room in the ring of any recording

    std::atomic<uint64_t> now{0};    ///< nanoseconds since the program began
    std::atomic<uint32_t> steps{0};  ///< that are left
    std::atomic<uint64_t> looks{0};  ///< how often the monotonic clock was read
    /// The same by each thread that ever read it, in the order of their first looks.
    std::array<std::atomic<uint64_t>, 64> looksOfThreads{};
    std::atomic<int64_t> setBy{0};  ///< microseconds by which somebody has set the system's clock
};
[[nodiscard]] SteppingClock& steppingClock();

}  // namespace tarno2::test
