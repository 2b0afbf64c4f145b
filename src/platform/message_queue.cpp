#include "platform/message_queue.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "platform/clock.h"

namespace tarno2 {

void MessageQueue::post(std::function<void()> work) {
    if (!work) {
        return;
    }
    const std::scoped_lock lock(mutex_);
    work_.push_back(std::move(work));
    wake_.notify_one();
}

void MessageQueue::startTimer(uint32_t milliseconds, std::function<void()> tick) {
    const uint64_t period = std::max<uint64_t>(milliseconds, 1);
    const std::scoped_lock lock(mutex_);
    // A millisecond has begun already: no tick comes before its time is over.
    timer_ = Timer{period, tickCount() + period + 1, std::move(tick)};
}

void MessageQueue::stopTimer() {
    const std::scoped_lock lock(mutex_);
    timer_.reset();
}

void MessageQueue::quit() {
    const std::scoped_lock lock(mutex_);
    workBeforeQuit_ = workBeforeQuit_.value_or(work_.size());
    wake_.notify_one();
}

void MessageQueue::run() {
    while (const auto next = takeNext()) {
        next();
    }
}

std::function<void()> MessageQueue::takeNext() {
    std::unique_lock lock(mutex_);
    for (;;) {
        if (workBeforeQuit_ == 0U) {
            workBeforeQuit_.reset();
            return {};
        }
        const uint64_t now = tickCount();
        const bool due = timer_ && timer_->nextTick <= now;
        if (due && (work_.empty() || !tickedLast_)) {
            tickedLast_ = true;
            timer_->nextTick += timer_->periodMs;
            return timer_->tick;
        }
        if (!work_.empty()) {
            tickedLast_ = false;
            auto work = std::move(work_.front());
            work_.pop_front();
            if (workBeforeQuit_) {
                --*workBeforeQuit_;
            }
            return work;
        }
        if (timer_) {
            wake_.wait_for(lock, std::chrono::milliseconds(timer_->nextTick - now));
        } else {
            wake_.wait(lock);
        }
    }
}

}  // namespace tarno2
