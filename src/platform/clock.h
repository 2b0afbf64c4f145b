#pragma once

#include <cstdint>

namespace tarno2 {

inline constexpr uint64_t kNanosecondsPerMillisecond = 1'000'000;
inline constexpr uint64_t kNanosecondsPerSecond = 1'000'000'000;

/// Local calendar time to the millisecond.
struct LocalTime {
    uint16_t year = 0;
    uint16_t month = 0;      ///< 1 to 12
    uint16_t dayOfWeek = 0;  ///< 0 is Sunday
    uint16_t day = 0;        ///< 1 to 31
    uint16_t hour = 0;
    uint16_t minute = 0;
    uint16_t second = 0;
    uint16_t millisecond = 0;

    friend bool operator==(const LocalTime&, const LocalTime&) = default;
};

/// The local time now, or so many milliseconds ago. Any thread.
[[nodiscard]] LocalTime localTime(uint64_t millisecondsAgo = 0);

/// Milliseconds of a clock that never goes back; its zero is arbitrary. Any thread.
[[nodiscard]] uint64_t tickCount();

/// Nanoseconds of a clock that never goes back; its zero is arbitrary. Any thread.
[[nodiscard]] uint64_t monotonicNanoseconds();

/// Microseconds since 1970-01-01T00:00:00Z by the system's clock, which may be set at any time. Any thread.
[[nodiscard]] int64_t utcMicroseconds();

/// By how many minutes local time was ahead of UTC at that moment (microseconds since 1970). Any thread.
[[nodiscard]] int32_t utcOffsetMinutes(int64_t utc);

/// Gives the processor away for at least so many milliseconds.
void sleepMilliseconds(uint32_t milliseconds);

}  // namespace tarno2
