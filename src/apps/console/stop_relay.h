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

    /// Attaches `stop` as long as it lives: it is called, at once when the wish came before. It must return soon and
    /// not call back.
    class Attached {
    public:
        Attached(StopRelay& relay, std::function<void()> stop) : relay_(relay) { relay_.attach(std::move(stop)); }
        ~Attached() { relay_.attach({}); }
        Attached(const Attached&) = delete;
        Attached& operator=(const Attached&) = delete;

    private:
        StopRelay& relay_;
    };

private:
    void attach(std::function<void()> stop) {
        const std::lock_guard lock(mutex_);
        stop_ = std::move(stop);
        if (requested_ && stop_) {
            stop_();
        }
    }

    std::mutex mutex_;
    std::function<void()> stop_;
    bool requested_ = false;
};

}  // namespace tarno2
