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

RingProducer::RingProducer() = default;

RingProducer::~RingProducer() {
    stop();
}

void RingProducer::configure(uint32_t samples, uint32_t channels, uint32_t bytesPerSample) {
    memory_.assign(size_t{samples} * bytesPerSample, std::byte{0});
    ring_ = samples;
    half_ = samples / 2;
    channels_ = channels;
    bytes_ = bytesPerSample;
    written_ = 0;
    fetched_ = 0;
}

bool RingProducer::start(std::unique_ptr<SampleSource> source, const StreamPlan& plan) {
    stop();
    if (!dataEvent_.valid() || !wake_.valid()) {
        return false;
    }
    source_ = std::move(source);
    plan_ = plan;
    end_ = plan.silentAfter == kNever ? kNever : plan.silentAfter - plan.silentAfter % channels_;
    prepared_ = 0;
    written_ = 0;
    fetched_ = 0;
    stop_ = false;
    dataEvent_.reset();
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

bool RingProducer::read(void* destination, uint32_t count, uint32_t offset) {
    if (offset > ring_ || count > ring_ - offset) {
        return false;
    }
    const uint64_t position = positionOf(offset);
    auto* out = static_cast<std::byte*>(destination);
    for (uint32_t done = 0; done < count;) {
        const uint32_t from = offset + done;
        const uint32_t inHalf = from < half_ ? std::min(count - done, half_ - from) : count - done;
        const std::lock_guard lock(halfLocks_[from < half_ ? 0 : 1]);
        std::memcpy(out + size_t{done} * bytes_, at(from), size_t{inHalf} * bytes_);
        done += inHalf;
    }
    // Reading on from where the reader stands moves it forward; looking anywhere else does not.
    const uint64_t before = fetched_.load(std::memory_order_relaxed);
    if (position != before || count == 0) {
        return true;
    }
    fetched_.store(before + count, std::memory_order_release);
    if (running() && plan_.framesPerSecond <= 0.0 && before / half_ != (before + count) / half_) {
        publishPrepared();
        wake_.set();
    }
    return true;
}

uint64_t RingProducer::positionOf(uint32_t offset) const {
    const uint64_t fetched = fetched_.load(std::memory_order_relaxed);
    return ring_ == 0 ? 0 : fetched + (offset + ring_ - fetched % ring_) % ring_;
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
        const uint64_t due = std::min(dueFrames * channels_, end_.load());
        while (position < due && !stopping()) {
            if (position + half_ > plan_.overflowAfter && position % half_ == 0) {
                return runOver(position);
            }
            const uint64_t inHalf = half_ - position % half_;
            const uint64_t slice = std::max<uint64_t>(kSliceSamples / channels_, 1) * channels_;
            const uint64_t wanted = std::min({due - position, inHalf, slice});
            const uint64_t got = produce(position, wanted, true);
            position += got;
            if (got < wanted) {
                return completeHalf(position);
            }
        }
        if (!stopping() && position < end_) {
            static_cast<void>(wake_.wait(millisecondsUntil(position / channels_ + 1, plan_.framesPerSecond, elapsed)));
        }
    }
}

void RingProducer::runByReader() {
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
    if (got < wanted) {
        completeHalf(position + got);
    }
    {
        // Only now: a reader that published a half before it was completed would never be told of the rest.
        const std::lock_guard lock(publishing_);
        prepared_ = std::max(prepared_, position + got);
    }
    publishPrepared();
    return got == half_;
}

/// Puts samples, at most to the end of the half, into the ring. Returns how many the source had.
uint64_t RingProducer::produce(uint64_t position, uint64_t samples, bool publish) {
    const std::lock_guard lock(halfLocks_[position % ring_ < half_ ? 0 : 1]);
    const bool there = position >= ring_ && source_->still();
    const uint64_t got =
        there ? samples : source_->fill(position / channels_, at(position), samples / channels_) * channels_;
    if (publish) {
        // Counted before the half is let go: a reader that met overwritten samples sees it in the count.
        written_.store(position + got, std::memory_order_release);
        if (got > 0 && (position + got) % half_ == 0) {
            announceHalf();
        }
    }
    return got;
}

/// The source has ended at `position`: rounds the half in hand off, when there is one.
void RingProducer::completeHalf(uint64_t position) {
    if (!plan_.completeLastHalf || position % half_ == 0) {
        return;
    }
    const uint64_t rest = half_ - position % half_;
    {
        const std::lock_guard lock(halfLocks_[position % ring_ < half_ ? 0 : 1]);
        std::byte* word = at(position);
        for (uint64_t i = 0; i < rest; ++i, word += bytes_) {
            std::memcpy(word, &plan_.fillWord, bytes_);
        }
        if (plan_.framesPerSecond > 0.0) {
            written_.store(position + rest, std::memory_order_release);
            announceHalf();
            return;
        }
    }
    const std::lock_guard lock(publishing_);
    prepared_ = position + rest;
}

/// Goes on without regard to the reader for more than a ring: the way a board overtakes a host that is late.
void RingProducer::runOver(uint64_t position) {
    const uint64_t end = position + 3 * uint64_t{half_};
    const std::scoped_lock lock(halfLocks_[0], halfLocks_[1]);
    for (uint64_t p = position; p < end; p += half_) {
        static_cast<void>(source_->fill(p / channels_, at(p), half_ / channels_));
    }
    written_.store(end, std::memory_order_release);
    for (int i = 0; i < 3; ++i) {
        announceHalf();
    }
}

/// Lets the reader have the next half once it has fetched all before it. Called by both threads.
void RingProducer::publishPrepared() {
    const std::lock_guard lock(publishing_);
    const uint64_t written = written_.load(std::memory_order_relaxed);
    const uint64_t next = std::min<uint64_t>(prepared_, written + half_);
    if (stopping() || next <= written || fetched_.load(std::memory_order_acquire) < written) {
        return;
    }
    written_.store(next, std::memory_order_release);
    if (next % half_ == 0) {
        announceHalf();
    }
}

void RingProducer::announceHalf() {
    if (plan_.announce) {
        dataEvent_.set();
    }
}

/// Waits until the reader has fetched all samples before `position`; false when the measurement ends first.
bool RingProducer::waitForFetched(uint64_t position) {
    while (!stopping()) {
        if (fetched_.load(std::memory_order_acquire) >= position) {
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
