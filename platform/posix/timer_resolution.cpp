#include "platform/timer_resolution.h"

namespace tarno2 {

TimerResolution::TimerResolution() : raised_(false) {}

TimerResolution::~TimerResolution() = default;

}  // namespace tarno2
