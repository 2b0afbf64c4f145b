#pragma once

#include "core/devices/device.h"

namespace tarno2 {

/// Waits until a driver has found its boards; false when it still searches after 20 s.
[[nodiscard]] bool waitForBoards(Device& device);

}  // namespace tarno2
