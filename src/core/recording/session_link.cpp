#include "core/recording/session_link.h"

#include <utility>

namespace tarno2 {

bool SessionLink::valid() const {
    return readyEvent_.valid() && startEvent_.valid() && stopEvent_.valid();
}

void SessionLink::prepare(NotificationTarget* target, ProgressCallback progress) {
    target_ = target;
    progress_ = std::move(progress);
    failure_ = {};
    answered_ = false;
    stopRequest_ = false;
    monitors_ = false;
    keeping_ = Keeping::No;
    framesBefore_ = kNotYet;
    stopEvent_.reset();
    readyEvent_.reset();
    startEvent_.reset();
}

bool SessionLink::keep() {
    Keeping before = Keeping::No;
    return keeping_.compare_exchange_strong(before, Keeping::Asked, std::memory_order_acq_rel) ||
           before == Keeping::Asked;
}

bool SessionLink::endUnkept() {
    Keeping before = Keeping::No;
    return keeping_.compare_exchange_strong(before, Keeping::Never, std::memory_order_acq_rel) ||
           before == Keeping::Never;
}

std::optional<uint64_t> SessionLink::framesBefore() const {
    const uint64_t frames = framesBefore_.load(std::memory_order_acquire);
    return frames == kNotYet ? std::nullopt : std::optional(frames);
}

StartFailure SessionLink::waitForAnswer() {
    if (readyEvent_.wait(kWaitForever) != WaitResult::Signalled) {
        return {StartFailure::Kind::Thread, {}};
    }
    return failure_;
}

void SessionLink::requestStop() {
    stopRequest_ = true;
    stopEvent_.set();
}

void SessionLink::answer(StartFailure failure) noexcept {
    if (answered_) {
        return;
    }
    answered_ = true;
    failure_ = std::move(failure);
    readyEvent_.set();
}

bool SessionLink::waitForBegin() const {
    return Event::waitEither(startEvent_, stopEvent_, kWaitForever).result == WaitResult::Signalled;
}

}  // namespace tarno2
