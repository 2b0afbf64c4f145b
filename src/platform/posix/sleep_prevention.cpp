#include "platform/sleep_prevention.h"

namespace tarno2 {

void SleepPrevention::prevent(bool /*wanted*/) {}

}  // namespace tarno2
