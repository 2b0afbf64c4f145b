#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace tarno2 {

/// Which frame of the stream was the newest at a moment, by both clocks of the computer.
struct ClockPair {
    uint64_t frame = 0;      ///< frames that had come, counted at the recorded rate from the start of the stream
    uint64_t monotonic = 0;  ///< nanoseconds of the clock that never goes back
    int64_t utc = 0;         ///< microseconds since 1970 by the system's clock, which somebody may set

    friend bool operator==(const ClockPair&, const ClockPair&) = default;
};

/// The clock of a recording: pairs from its first second to its last, as evenly as there is room. They begin a second
/// apart; when there are too many, every second one goes and the distance doubles. Memory is fixed, so the acquisition
/// thread may fill it. An object is used by one thread at a time.
class ClockPairs {
public:
    static constexpr size_t kMostPairs = 1024;

    /// Whether a pair at that moment is wanted; nanoseconds of the clock that never goes back.
    [[nodiscard]] bool isDue(uint64_t monotonic) const {
        return count_ == 0 || monotonic - pairs_[count_ - 1].monotonic >= period_;
    }
    /// Takes a pair that is due, or the last one of a recording. One that goes back in frames or in time is left out.
    void add(const ClockPair& pair);

    [[nodiscard]] std::span<const ClockPair> pairs() const { return {pairs_.data(), count_}; }

private:
    std::array<ClockPair, kMostPairs> pairs_;
    size_t count_ = 0;
    uint64_t period_ = 1'000'000'000;  ///< nanoseconds
};

/// A recording's clock as a straight line through its pairs.
class ClockLine {
public:
    /// By the least squares of the frames over the time of the clock that never goes back. Nothing when the pairs are
    /// fewer than two, or no time lies between them.
    [[nodiscard]] static std::optional<ClockLine> through(std::span<const ClockPair> pairs);

    /// Frames a second that really came, Hz.
    [[nodiscard]] double frequency() const { return framesPerNanosecond_ * 1e9; }
    /// When that frame came by the system's clock, microseconds since 1970. A system clock that was set while the
    /// recording ran counts as it stood at its first pair.
    [[nodiscard]] int64_t utcOf(double frame) const;
    /// The frame, with its fraction, that came at that time by the system's clock.
    [[nodiscard]] double frameAt(int64_t utc) const;

private:
    ClockPair origin_;
    double framesPerNanosecond_ = 0.0;
    double atOrigin_ = 0.0;  ///< frames that the line has there beyond those of the pair
};

}  // namespace tarno2
