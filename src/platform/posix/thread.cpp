#include "platform/thread.h"

#include <condition_variable>
#include <mutex>
#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>
#include <utility>

namespace tarno2 {

namespace {

/// High enough to go before ordinary work, low enough to leave the system's own threads in front.
constexpr int kRealtimePriority = 10;
constexpr int kRaisedNice = -15;

}  // namespace

struct Thread::State {
    std::function<void()> body;
    pthread_t thread{};
    std::mutex mutex;
    std::condition_variable changed;
    pid_t id = 0;  ///< the system's number of the thread, once it runs
    bool open = false;

    void run() {
        {
            std::unique_lock lock(mutex);
            id = gettid();
            changed.notify_all();
            changed.wait(lock, [this] { return open; });
        }
        body();
        body = nullptr;
    }
};

bool Thread::launch(std::function<void()> body) {
    auto state = std::make_shared<State>();
    state->body = std::move(body);
    const auto entry = [](void* argument) -> void* {
        static_cast<State*>(argument)->run();
        return nullptr;
    };
    if (pthread_create(&state->thread, nullptr, entry, state.get()) != 0) {
        return false;
    }
    state_ = std::move(state);
    return true;
}

PriorityResult Thread::raisePriority() {
    if (!state_) {
        return PriorityResult::Unchanged;
    }
    std::unique_lock lock(state_->mutex);
    state_->changed.wait(lock, [this] { return state_->id != 0; });
    const pid_t id = state_->id;
    sched_param parameters{};
    for (const int priority : {kRealtimePriority, sched_get_priority_min(SCHED_FIFO)}) {
        parameters.sched_priority = priority;
        if (sched_setscheduler(id, SCHED_FIFO | SCHED_RESET_ON_FORK, &parameters) == 0) {
            return PriorityResult::Realtime;
        }
    }
    parameters.sched_priority = 0;
    static_cast<void>(sched_setscheduler(id, SCHED_OTHER | SCHED_RESET_ON_FORK, &parameters));
    const bool raised = setpriority(PRIO_PROCESS, static_cast<id_t>(id), kRaisedNice) == 0;
    return raised ? PriorityResult::Raised : PriorityResult::Unchanged;
}

void giveWayToOthers() {
    constexpr int kLast = 19;
    static_cast<void>(setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), kLast));
}

void Thread::resume() {
    if (state_) {
        const std::scoped_lock lock(state_->mutex);
        state_->open = true;
        state_->changed.notify_all();
    }
}

void Thread::join() {
    if (state_) {
        resume();
        pthread_join(state_->thread, nullptr);
        state_.reset();
    }
}

}  // namespace tarno2
