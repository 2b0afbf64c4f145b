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

TimerResolution::TimerResolution() : raised_(timeBeginPeriod(kPeriod) == TIMERR_NOERROR) {}

TimerResolution::~TimerResolution() {
    if (raised_) {
        timeEndPeriod(kPeriod);
    }
}

}  // namespace tarno2
