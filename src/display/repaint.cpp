#include "display/repaint.h"

#include <algorithm>

namespace tarno2 {

int32_t millisecondsBetween(const LocalTime& from, const LocalTime& to) {
    return (to.hour - from.hour) * 3600000 + (to.minute - from.minute) * 60000 + (to.second - from.second) * 1000 +
           (to.millisecond - from.millisecond);
}

bool RepaintRate::due(const LocalTime& now) {
    const int32_t elapsed = begun_ ? millisecondsBetween(last_, now) : -1;
    const int32_t late = elapsed - (kPeriodMs - late_);
    if (elapsed >= 0 && late < 0) {
        return false;
    }
    ++counter_;
    if (elapsed > 0) {
        rate_ = counter_ * 1000 / elapsed;
    }
    counter_ = 0;
    last_ = now;
    late_ = elapsed >= 0 && late <= kMadeUpMs ? late : 0;
    begun_ = true;
    return true;
}

int32_t RepaintRate::waitMs(const LocalTime& now) const {
    const int32_t period = kPeriodMs - late_;
    const int32_t elapsed = begun_ ? millisecondsBetween(last_, now) : period;
    return elapsed < 0 ? 0 : std::max(period - elapsed, 0);
}

}  // namespace tarno2
