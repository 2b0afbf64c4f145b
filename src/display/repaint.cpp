#include "display/repaint.h"

#include <algorithm>

namespace tarno2 {

int32_t millisecondsBetween(const LocalTime& from, const LocalTime& to) {
    return (to.hour - from.hour) * 3600000 + (to.minute - from.minute) * 60000 + (to.second - from.second) * 1000 +
           (to.millisecond - from.millisecond);
}

bool RepaintRate::due(const LocalTime& now) {
    const int32_t elapsed = begun_ ? millisecondsBetween(last_, now) : -1;
    if (elapsed >= 0 && elapsed < kPeriodMs) {
        return false;
    }
    ++counter_;
    if (elapsed > 0) {
        rate_ = counter_ * 1000 / elapsed;
    }
    counter_ = 0;
    last_ = now;
    begun_ = true;
    return true;
}

int32_t RepaintRate::waitMs(const LocalTime& now) const {
    const int32_t elapsed = begun_ ? millisecondsBetween(last_, now) : kPeriodMs;
    return elapsed < 0 ? 0 : std::max(kPeriodMs - elapsed, 0);
}

}  // namespace tarno2
