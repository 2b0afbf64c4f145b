#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/clock.h"
#include "records/passport.h"

namespace tarno2 {

/// When frames came, as clocks showed it where they were recorded. Times are microseconds since the beginning of 1970
/// there; a change to summer time within a recording is not followed.
struct WallClock {
    int64_t start = 0;             ///< of frame 0
    double framesPerSecond = 0.0;  ///< above 0
    std::optional<int64_t> ahead;  ///< of UTC, microseconds; nothing: nobody knows

    [[nodiscard]] int64_t at(double frame) const;
    [[nodiscard]] double frameAt(int64_t time) const;
};

/// Of the frames from `firstFrame` of the recording on, as its passport tells; `rate`: frames a second of the
/// description, Hz. Nothing when the frames don't follow each other evenly, because conditions chose them, or the rate
/// is not known.
[[nodiscard]] std::optional<WallClock> wallClockOf(const Passport& passport, uint64_t firstFrame, double rate);
/// Of a recording that began then.
[[nodiscard]] std::optional<WallClock> wallClockOf(const LocalTime& created, double rate);
/// Of a running one, whose newest frame of so many has come by now.
[[nodiscard]] std::optional<WallClock> wallClockNow(uint64_t frames, double rate);

/// From the beginning of the one to that of the other: by UTC where both know it, so that summer time and
/// places with another time don't matter, else as their clocks showed it.
[[nodiscard]] int64_t microsecondsBetween(const WallClock& from, const WallClock& to);

/// The same moment as a time since 1970, by the calendar. Nothing when there is no such day or time.
[[nodiscard]] std::optional<int64_t> timeOf(const LocalTime& time);
/// "hh:mm:ss" with so many decimals, 9 at most, of which those beyond the sixth are zeros.
[[nodiscard]] std::string clockText(int64_t time, int decimals);
/// "2026-11-23".
[[nodiscard]] std::string dateText(int64_t time);

}  // namespace tarno2
