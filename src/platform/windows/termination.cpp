#include "platform/termination.h"

#include <atomic>
#include <cstdio>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <windows.h>

#include "platform/clock.h"
#include "platform/event.h"

namespace tarno2 {

namespace {

struct Watch {
    std::function<void()> callback;
    Event finished;
    std::optional<uint64_t> askedAt;
    bool registered = false;
    std::atomic<bool> systemEnds{false};

    /// False when the program is to end now, as if nobody watched.
    bool take() {
        const uint64_t now = tickCount();
        if (askedAt && now - *askedAt >= TerminationWatcher::kPatienceMs) {
            return false;
        }
        askedAt = askedAt.value_or(now);
        try {
            callback();
        } catch (const std::exception& error) {
            std::fprintf(stderr, "The request to end was not taken: %s\n", error.what());
        }
        return true;
    }
};

std::mutex mutex;
std::shared_ptr<Watch> current;  ///< shared with the system's thread that runs the handler

BOOL WINAPI handleControl(DWORD type) {
    std::shared_ptr<Watch> watch;
    {
        const std::scoped_lock lock(mutex);
        watch = current;
        if (watch) {
            watch->systemEnds = type == CTRL_LOGOFF_EVENT || type == CTRL_SHUTDOWN_EVENT;
        }
        if (!watch || !watch->take()) {
            return FALSE;
        }
    }
    if (type != CTRL_C_EVENT && type != CTRL_BREAK_EVENT) {
        // The process ends when this returns; the system itself limits how long that may take.
        (void)watch->finished.wait(kWaitForever);
    }
    return TRUE;
}

}  // namespace

TerminationWatcher::TerminationWatcher(std::function<void()> callback) {
    {
        const std::scoped_lock lock(mutex);
        current = std::make_shared<Watch>();
        current->callback = std::move(callback);
    }
    current->registered = SetConsoleCtrlHandler(handleControl, TRUE) != 0;
}

bool TerminationWatcher::watching() const {
    return current->registered;
}

// Without the lock, which is held while the callback runs.
bool TerminationWatcher::systemEnds() const {
    return current->systemEnds;
}

TerminationWatcher::~TerminationWatcher() {
    finished();
    SetConsoleCtrlHandler(handleControl, FALSE);
    const std::scoped_lock lock(mutex);
    current.reset();
}

void TerminationWatcher::finished() {
    const std::scoped_lock lock(mutex);
    if (current) {
        current->finished.set();
    }
}

}  // namespace tarno2
