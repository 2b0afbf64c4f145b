#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>

namespace tarno2 {

/// The message loop of a program without a window: other threads post work to the thread that runs it.
class MessageQueue {
public:
    /// Queues work for the thread in `run`. Any thread.
    void post(std::function<void()> work);
    /// Calls `tick` on the running thread every `milliseconds` from now on, in place of an earlier timer. Ticks keep to
    /// the clock: those that are late, because work took long, are made up for. That thread.
    void startTimer(uint32_t milliseconds, std::function<void()> tick);
    void stopTimer();
    /// Ends `run` once the work that was posted before is done; what is posted later waits for the next `run`. Needs no
    /// memory. Any thread.
    void quit();
    /// Runs posted work and timer ticks until `quit`.
    void run();

private:
    struct Timer {
        uint64_t periodMs;
        uint64_t nextTick;
        std::function<void()> tick;
    };
    /// Waits for the next thing to call; an empty function ends `run`.
    [[nodiscard]] std::function<void()> takeNext();

    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<std::function<void()>> work_;
    std::optional<size_t> workBeforeQuit_;
    std::optional<Timer> timer_;
    bool tickedLast_ = false;  ///< so that overdue ticks and posted work take turns
};

}  // namespace tarno2
