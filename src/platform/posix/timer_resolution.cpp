#include "platform/timer_resolution.h"

namespace tarno2 {

bool TimerResolution::raise() {
    return false;
}

void TimerResolution::lower() {}

}  // namespace tarno2
