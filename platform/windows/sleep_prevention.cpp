#include "platform/sleep_prevention.h"

#include <windows.h>

namespace tarno2 {

SleepPrevention::SleepPrevention() {
    SetThreadExecutionState(ES_CONTINUOUS | ES_SYSTEM_REQUIRED);
}

SleepPrevention::~SleepPrevention() {
    SetThreadExecutionState(ES_CONTINUOUS);
}

}  // namespace tarno2
