#pragma once

#include <cstdint>

#include "core/recording/stop_code.h"

namespace tarno2 {

/// What an acquisition thread tells the window's thread. It carries a copy of the result, so that one that arrives late
/// never meets the next recording.
struct Notification {
    uint32_t session = 0;  ///< number of the board session
    RecordingResult result;
};

/// Where notifications go: handed to the window's thread, in order.
class NotificationTarget {
public:
    virtual ~NotificationTarget() = default;
    /// Any thread. Progress (`StopCode::Running`) comes at most once in 40 ms and must not block or allocate.
    virtual void post(const Notification& notification) = 0;
};

}  // namespace tarno2
