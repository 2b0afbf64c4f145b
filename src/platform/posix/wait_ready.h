#pragma once

#include <cerrno>
#include <poll.h>

#include "platform/clock.h"
#include "platform/event.h"

namespace tarno2 {

enum class Ready { Yes, TimedOut, Cancelled, Failed };

/// Waits until a descriptor is ready for `events` (or has failed, which the next call on it tells), an event is set, or
/// the time has passed. Interruptions do not stretch it.
inline Ready waitReady(int descriptor, short events, const Event& cancel, uint32_t milliseconds) {
    const uint64_t deadline = tickCount() + milliseconds;
    for (;;) {
        pollfd fds[] = {{descriptor, events, 0}, {static_cast<int>(cancel.number()), POLLIN, 0}};
        const uint64_t now = tickCount();
        const int result = poll(fds, 2, now < deadline ? static_cast<int>(deadline - now) : 0);
        if (result < 0 && errno == EINTR) {
            continue;
        }
        if (result < 0) {
            return Ready::Failed;
        }
        if (fds[1].revents != 0) {
            return Ready::Cancelled;
        }
        return result == 0 ? Ready::TimedOut : Ready::Yes;
    }
}

}  // namespace tarno2
