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
    stopEvent_.reset();
    readyEvent_.reset();
    startEvent_.reset();
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
