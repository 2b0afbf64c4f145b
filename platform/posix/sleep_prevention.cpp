#include "platform/sleep_prevention.h"

namespace tarno2 {

SleepPrevention::SleepPrevention() = default;

SleepPrevention::~SleepPrevention() = default;

}  // namespace tarno2
