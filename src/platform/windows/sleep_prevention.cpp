#include "platform/sleep_prevention.h"

#include <windows.h>

namespace tarno2 {

void SleepPrevention::prevent(bool wanted) {
    SetThreadExecutionState(wanted ? ES_CONTINUOUS | ES_SYSTEM_REQUIRED : ES_CONTINUOUS);
}

}  // namespace tarno2
