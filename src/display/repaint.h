#pragma once

#include <cstdint>

#include "platform/clock.h"

namespace tarno2 {

/// Milliseconds from one time of day to another, days left aside.
[[nodiscard]] int32_t millisecondsBetween(const LocalTime& from, const LocalTime& to);

/// Limits how often new data are fetched and drawn: at most once in 40 ms. A paint that comes too early draws what the
/// view has already, and the fetch is made up for later. Window thread.
class RepaintRate {
public:
    static constexpr int32_t kPeriodMs = 40;

    /// Asked by each paint. True when new data are due; the time then counts from `now`. A clock that went back
    /// (midnight, or it was set) makes them due.
    [[nodiscard]] bool due(const LocalTime& now);
    /// After `due` said no: milliseconds until it will say yes.
    [[nodiscard]] int32_t waitMs(const LocalTime& now) const;
    /// Drawn paints a second, from the last two; 0 before.
    [[nodiscard]] int32_t rate() const { return rate_; }

private:
    bool begun_ = false;
    LocalTime last_;
    int32_t counter_ = 0;  ///< paints since the last drawn one
    int32_t rate_ = 0;
};

}  // namespace tarno2
