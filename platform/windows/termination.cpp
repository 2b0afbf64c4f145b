#include "platform/termination.h"

#include <memory>
#include <mutex>
#include <utility>
#include <windows.h>

#include "platform/event.h"

namespace tarno2 {

namespace {

struct Watch {
    std::function<void()> callback;
    Event finished;
};

std::mutex mutex;
std::shared_ptr<Watch> current;  ///< shared with the system's thread that runs the handler

BOOL WINAPI handleControl(DWORD type) {
    std::shared_ptr<Watch> watch;
    {
        const std::scoped_lock lock(mutex);
        watch = current;
        if (!watch) {
            return FALSE;
        }
        watch->callback();
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
    SetConsoleCtrlHandler(handleControl, TRUE);
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
