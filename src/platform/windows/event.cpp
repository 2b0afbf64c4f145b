#include "platform/event.h"

#include <windows.h>

#include "platform/clock.h"
#include "platform/windows/native_handle.h"

namespace tarno2 {

Event::Event() : handle_(reinterpret_cast<intptr_t>(CreateEventA(nullptr, TRUE, FALSE, nullptr))), owned_(true) {}

void Event::close() {
    if (owned_ && valid()) {
        CloseHandle(nativeHandle(handle_));
    }
}

// -1 is the number of the process itself, which a wait would take for an object.
bool Event::valid() const {
    return handle_ != 0 && handle_ != -1;
}

bool Event::set() {
    return valid() && SetEvent(nativeHandle(handle_)) != 0;
}

uint64_t Event::reset() {
    const bool signalled = wait(0) == WaitResult::Signalled;
    return signalled && ResetEvent(nativeHandle(handle_)) != 0 ? 1 : 0;
}

WaitResult Event::wait(uint32_t milliseconds) const {
    if (!valid()) {
        return WaitResult::Failed;
    }
    static_assert(kWaitForever == INFINITE);
    switch (WaitForSingleObject(nativeHandle(handle_), milliseconds)) {
        case WAIT_OBJECT_0:
            return WaitResult::Signalled;
        case WAIT_TIMEOUT:
            return WaitResult::TimedOut;
        default:
            return WaitResult::Failed;
    }
}

Event::Either Event::waitEither(const Event& a, const Event& b, uint32_t milliseconds) {
    if (!a.valid() || !b.valid()) {
        return {WaitResult::Failed, false, false, OsError(ERROR_INVALID_HANDLE)};
    }
    const HANDLE handles[] = {nativeHandle(a.handle_), nativeHandle(b.handle_)};
    switch (WaitForMultipleObjects(2, handles, FALSE, milliseconds)) {
        case WAIT_OBJECT_0:  // the lowest index is reported: the other may be signalled too
            return {WaitResult::Signalled, true, b.wait(0) == WaitResult::Signalled, {}};
        case WAIT_OBJECT_0 + 1:
            return {WaitResult::Signalled, false, true, {}};
        case WAIT_TIMEOUT:
            return {WaitResult::TimedOut, false, false, {}};
        default:
            return {WaitResult::Failed, false, false, OsError::last()};
    }
}

}  // namespace tarno2
