#include "apps/drivers/board_search.h"

#include "platform/clock.h"

namespace tarno2 {

bool waitForBoards(Device& device) {
    constexpr uint32_t kPeriodMs = 100;
    constexpr uint64_t kLongestMs = 20000;
    const uint64_t begin = tickCount();
    while (device.number(kADCGetBoardSearch, 0) == 1) {
        if (tickCount() - begin > kLongestMs) {
            return false;
        }
        sleepMilliseconds(kPeriodMs);
    }
    return true;
}

}  // namespace tarno2
