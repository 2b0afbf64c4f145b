#pragma once

#include <functional>
#include <mutex>
#include <utility>

namespace tarno2 {

/// Hands the wish to end the program to a recording, which comes to life later and ends earlier than the watch for
/// signals. Any thread.
class StopRelay {
public:
    /// The program is to end: tells who is attached, or whoever attaches next.
    void request() {
        const std::lock_guard lock(mutex_);
        requested_ = true;
        if (stop_) {
            stop_();
        }
    }
    /// `stop` is called, at once when the wish came before. It must return soon and not call back.
    void attach(std::function<void()> stop) {
        const std::lock_guard lock(mutex_);
        stop_ = std::move(stop);
        if (requested_ && stop_) {
            stop_();
        }
    }
    void detach() { attach({}); }

private:
    std::mutex mutex_;
    std::function<void()> stop_;
    bool requested_ = false;
};

}  // namespace tarno2
