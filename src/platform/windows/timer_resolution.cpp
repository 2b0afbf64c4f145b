#include "platform/timer_resolution.h"

// The other header lacks the types of the first.
// clang-format off
#include <windows.h>
#include <timeapi.h>
// clang-format on

namespace tarno2 {

namespace {

constexpr UINT kPeriod = 1;  // ms

}  // namespace

bool TimerResolution::raise() {
    return timeBeginPeriod(kPeriod) == TIMERR_NOERROR;
}

void TimerResolution::lower() {
    timeEndPeriod(kPeriod);
}

}  // namespace tarno2
