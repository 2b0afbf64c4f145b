#include "platform/thread.h"

#include <process.h>
#include <utility>
#include <windows.h>

namespace tarno2 {

struct Thread::State {
    std::function<void()> body;
    HANDLE handle = nullptr;
    bool resumed = false;
};

bool Thread::launch(std::function<void()> body) {
    auto state = std::make_shared<State>();
    state->body = std::move(body);
    const auto entry = [](void* argument) -> unsigned {
        auto& own = *static_cast<State*>(argument);
        own.body();
        own.body = nullptr;
        return 0;
    };
    using Entry = unsigned(__stdcall*)(void*);
    const uintptr_t handle =
        _beginthreadex(nullptr, 0, static_cast<Entry>(entry), state.get(), CREATE_SUSPENDED, nullptr);
    if (handle == 0) {
        return false;
    }
    state->handle = reinterpret_cast<HANDLE>(handle);
    state_ = std::move(state);
    return true;
}

PriorityResult Thread::raisePriority() {
    if (!state_) {
        return PriorityResult::Unchanged;
    }
    const bool raised = SetThreadPriority(state_->handle, THREAD_PRIORITY_TIME_CRITICAL) != 0;
    return raised ? PriorityResult::Realtime : PriorityResult::Unchanged;
}

void giveWayToOthers() {
    static_cast<void>(SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_LOWEST));
}

void Thread::resume() {
    if (state_ && !std::exchange(state_->resumed, true)) {
        ResumeThread(state_->handle);
    }
}

void Thread::join() {
    if (state_) {
        resume();
        WaitForSingleObject(state_->handle, INFINITE);
        CloseHandle(state_->handle);
        state_.reset();
    }
}

}  // namespace tarno2
