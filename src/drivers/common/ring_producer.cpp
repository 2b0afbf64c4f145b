#include "drivers/common/ring_producer.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "platform/clock.h"

namespace tarno2::drivers {

namespace {

constexpr uint64_t kSliceSamples = 65536;  // most that is produced under one lock when paced by the clock
constexpr double kShortestWait = 2.0;      // milliseconds between two looks at the clock
constexpr double kLongestWait = 100.0;

uint32_t millisecondsUntil(uint64_t frame, double framesPerSecond, double elapsedSeconds) {
    const double wait = (static_cast<double>(frame) / framesPerSecond - elapsedSeconds) * 1000.0;
    return static_cast<uint32_t>(std::clamp(wait, kShortestWait, kLongestWait));
}

}  // namespace

RingProducer::RingProducer(sdk::Ring& ring, std::function<void(const StreamPlan&)> onEnd)
    : ring_(ring), onEnd_(std::move(onEnd)) {}

RingProducer::~RingProducer() {
    stop();
}

bool RingProducer::start(std::unique_ptr<SampleSource> source, const StreamPlan& plan) {
    stop();
    if (!wake_.valid()) {
        return false;
    }
    source_ = std::move(source);
    plan_ = plan;
    half_ = ring_.half();
    const uint64_t last = std::min(plan.silentAfter, plan.endAfter);
    end_ = last == kNever ? kNever : last - last % plan.channels;
    prepared_ = 0;
    streamEnd_ = plan.endAfter <= plan.silentAfter ? end_.load() : kNever;
    fetchedHalves_ = 0;
    stop_ = false;
    wake_.reset();
    if (!thread_.create([this] { run(); })) {
        return false;
    }
    running_ = true;
    thread_.resume();
    return true;
}

void RingProducer::stop() {
    if (!thread_.joinable()) {
        return;
    }
    stop_ = true;
    wake_.set();
    thread_.join();
    running_ = false;
    source_.reset();
}

void RingProducer::fetched() {
    if (!running_.load(std::memory_order_relaxed) || plan_.framesPerSecond > 0.0) {
        return;
    }
    const uint64_t halves = ring_.fetched() / half_;
    if (halves != fetchedHalves_) {
        fetchedHalves_ = halves;
        publishPrepared();
        wake_.set();
    }
}

void RingProducer::run() {
    const uint64_t begin = tickCount();
    while (!stopping() && plan_.startDelay != 0) {
        const uint64_t elapsed = tickCount() - begin;
        if (plan_.startDelay != kWaitForever && elapsed >= plan_.startDelay) {
            break;
        }
        const uint32_t rest =
            plan_.startDelay == kWaitForever ? kWaitForever : plan_.startDelay - static_cast<uint32_t>(elapsed);
        if (wake_.wait(rest) == WaitResult::Failed) {
            return;
        }
        if (!stopping()) {
            wake_.reset();
        }
    }
    if (plan_.framesPerSecond > 0.0) {
        runByClock();
    } else {
        runByReader();
    }
}

/// Fills whatever the clock says is due, then looks away for some milliseconds.
void RingProducer::runByClock() {
    const uint64_t begin = monotonicNanoseconds();
    uint64_t position = 0;
    while (!stopping() && position < end_) {
        const double elapsed = static_cast<double>(monotonicNanoseconds() - begin) * 1e-9;
        const auto dueFrames = static_cast<uint64_t>(std::floor(elapsed * plan_.framesPerSecond));
        const uint64_t due = std::min(dueFrames * plan_.channels, end_.load());
        while (position < due && !stopping()) {
            if (position + half_ > plan_.overflowAfter && position % half_ == 0) {
                return runOver(position);
            }
            const uint64_t inHalf = half_ - position % half_;
            const uint64_t slice = std::max<uint64_t>(kSliceSamples / plan_.channels, 1) * plan_.channels;
            const uint64_t wanted = std::min({due - position, inHalf, slice});
            const uint64_t got = produce(position, wanted, true);
            position += got;
            if (got < wanted) {
                return endStream(position);
            }
        }
        if (!stopping() && position < end_) {
            static_cast<void>(
                wake_.wait(millisecondsUntil(position / plan_.channels + 1, plan_.framesPerSecond, elapsed)));
        }
    }
    if (position == plan_.endAfter - plan_.endAfter % plan_.channels) {
        endStream(position);
    }
}

void RingProducer::runByReader() {
    if (end_ == 0) {
        publishPrepared();
    }
    for (uint64_t position = 0; position < end_; position += half_) {
        if (position + half_ > plan_.overflowAfter) {
            if (waitForFetched(position)) {
                runOver(position);
            }
            return;
        }
        // The half that is generated now lies where the half before last was; that one has to be out of use.
        if (!waitForFetched(position < half_ ? 0 : position - half_) || !fillByReader(position)) {
            return;
        }
    }
}

/// Generates one half; false when it was the last one.
bool RingProducer::fillByReader(uint64_t position) {
    const uint64_t wanted = std::min<uint64_t>(half_, end_ - position);
    const uint64_t got = produce(position, wanted, false);
    {
        const std::lock_guard lock(publishing_);
        prepared_ = std::max(prepared_, position + got);
        if (got < wanted) {
            streamEnd_ = position + got;
        }
    }
    publishPrepared();
    return got == half_;
}

/// Puts samples, at most to the end of the half, into the ring. Returns how many the source had.
uint64_t RingProducer::produce(uint64_t position, uint64_t samples, bool publish) {
    const std::lock_guard lock(ring_.lockOf(position));
    const bool there = position >= ring_.samples() && source_->still();
    const uint64_t got =
        there ? samples
              : source_->fill(position / plan_.channels, at(position), samples / plan_.channels) * plan_.channels;
    if (publish) {
        // Counted before the half is let go: a reader that met overwritten samples sees it in the count.
        ring_.setWritten(position + got);
        if (got > 0 && (position + got) % half_ == 0) {
            announceHalf();
        }
    }
    return got;
}

/// Everything before `position` is counted, and nothing follows.
void RingProducer::endStream(uint64_t position) {
    end_ = position;
    onEnd_(plan_);
}

/// Goes on without regard to the reader for more than a ring: the way a board overtakes a host that is late.
void RingProducer::runOver(uint64_t position) {
    const uint64_t end = position + 3 * half_;
    const std::scoped_lock lock(ring_.lockOf(0), ring_.lockOf(half_));
    for (uint64_t p = position; p < end; p += half_) {
        static_cast<void>(source_->fill(p / plan_.channels, at(p), half_ / plan_.channels));
    }
    ring_.setWritten(end);
    for (int i = 0; i < 3; ++i) {
        announceHalf();
    }
}

/// Lets the reader have the next half once it has fetched all before it. Called by both threads.
void RingProducer::publishPrepared() {
    const std::lock_guard lock(publishing_);
    const uint64_t written = ring_.written();
    const uint64_t next = std::min<uint64_t>(prepared_, written + half_);
    if (stopping() || ring_.fetched() < written) {
        return;
    }
    if (next > written) {
        ring_.setWritten(next);
        if (next % half_ == 0) {
            announceHalf();
        }
    }
    if (next == streamEnd_) {
        streamEnd_ = kNever;
        endStream(next);
    }
}

void RingProducer::announceHalf() {
    if (plan_.announce) {
        ring_.event().set();
    }
}

/// Waits until the reader has fetched all samples before `position`; false when the measurement ends first.
bool RingProducer::waitForFetched(uint64_t position) {
    while (!stopping()) {
        if (ring_.fetched() >= position) {
            return true;
        }
        if (wake_.wait(kWaitForever) == WaitResult::Failed) {
            return false;
        }
        wake_.reset();
    }
    return false;
}

}  // namespace tarno2::drivers
