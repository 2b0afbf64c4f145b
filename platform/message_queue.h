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
    /// Calls `tick` on the running thread every `milliseconds` from now on, in place of an earlier timer. That thread.
    void startTimer(uint32_t milliseconds, std::function<void()> tick);
    void stopTimer();
    /// Ends `run` once the work that was posted before is done. Any thread.
    void quit();
    /// Runs posted work and timer ticks until `quit`.
    void run();

private:
    struct Timer {
        uint64_t periodMs;
        uint64_t nextTick;
        std::function<void()> tick;
    };
    [[nodiscard]] std::function<void()> takeNext();

    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<std::function<void()>> work_;
    std::optional<Timer> timer_;
    bool quit_ = false;
};

}  // namespace tarno2
