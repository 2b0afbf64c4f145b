#include "core/recording/data_wait.h"

#include <algorithm>

#include "platform/clock.h"

namespace tarno2 {

namespace {

constexpr uint32_t kPresencePeriodMs = 250;
constexpr uint32_t kLongHalfMs = 100;
/// Half the time between two progress notifications, which then come evenly.
constexpr uint32_t kLookPeriodMs = 20;

}  // namespace

void DataWait::begin(uint32_t dataEvent, const WaitPlan& plan) {
    plan_ = plan;
    dataEvent_ = Event::wrap(dataEvent);
    dataEvent_.reset();
    eventAt_ = tickCount();
    presenceAt_ = 0;
}

uint64_t DataWait::takeEvents() {
    const uint64_t events = dataEvent_.reset();
    if (events > 0) {
        eventAt_ = tickCount();
        presenceAt_ = 0;
    }
    return events;
}

bool DataWait::longHalves() const {
    return plan_.halfMs > kLongHalfMs || !(plan_.halfMs > 0.0);
}

DataWait::Wake DataWait::next(bool counted, bool dataKnown) {
    for (;;) {
        if (link_.stopRequested()) {
            return Wake::Stop;
        }
        if (unplugged()) {
            return Wake::Unplugged;
        }
        if (dataKnown) {
            return Wake::Event;
        }
        uint32_t slice = untilLimit();
        if (driver_.facts().hotPlug) {
            slice = std::min(slice, kPresencePeriodMs);
        }
        const uint32_t look = counted ? untilLook() : kWaitForever;
        slice = std::min(slice, look);
        const Event::Either woken = Event::waitEither(dataEvent_, link_.stopEvent(), slice);
        if (woken.first) {
            return Wake::Event;
        }
        if (woken.second) {
            return Wake::Stop;
        }
        if (woken.result == WaitResult::Failed) {
            error_ = woken.error;
            return Wake::Failed;
        }
        if (untilLimit() == 0) {
            return Wake::TimedOut;
        }
        if (slice == look) {
            return Wake::Look;
        }
    }
}

// Asked with each half, and in between as often as a user notices.
bool DataWait::unplugged() {
    const uint64_t now = tickCount();
    if (!driver_.facts().hotPlug || (presenceAt_ != 0 && now - presenceAt_ < kPresencePeriodMs)) {
        return false;
    }
    presenceAt_ = std::max<uint64_t>(now, 1);
    uint32_t present = 1;
    return driver_.device().get(kADCGetHotPlugPresence, present) && present == 0;
}

uint32_t DataWait::untilLimit() const {
    if (plan_.limitMs == kWaitForever) {
        return kWaitForever;
    }
    const uint64_t elapsed = tickCount() - eventAt_;
    return elapsed < plan_.limitMs ? static_cast<uint32_t>(plan_.limitMs - elapsed) : 0;
}

// A board may be slower than it said: then the time that has passed tells.
uint32_t DataWait::untilLook() const {
    const uint64_t elapsed = tickCount() - eventAt_;
    return longHalves() || elapsed >= kLongHalfMs ? kLookPeriodMs : static_cast<uint32_t>(kLongHalfMs - elapsed);
}

}  // namespace tarno2
