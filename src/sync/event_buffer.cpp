#include "sync/event_buffer.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

#include "platform/memory.h"

namespace tarno2 {

namespace {

constexpr uint64_t kCertainlyThere = uint64_t{16} << 20;

}  // namespace

void EventBuffer::allocate(size_t channels, size_t sampleBytes, uint32_t prehistory, uint32_t history) {
    const uint64_t frames = uint64_t{prehistory} + history;
    const uint64_t bytes = frames * channels * sampleBytes;
    if (frames != 0 && channels > std::numeric_limits<uint32_t>::max() / frames) {
        throw std::bad_alloc();
    }
    data_.reset();
    // The system may promise more than there is.
    if (bytes > kCertainlyThere && bytes > usableMemory()) {
        throw std::bad_alloc();
    }
    data_ = std::make_unique<std::byte[]>(static_cast<size_t>(bytes) + kAside);
    frameBytes_ = channels * sampleBytes;
    prehistory_ = prehistory;
    history_ = history;
    restart();
}

void EventBuffer::restart() {
    ringIndex_ = 0;
    historyCount_ = 0;
    ringFull_ = prehistory_ == 0;
    triggered_ = false;
}

size_t EventBuffer::fillRing(const std::byte* frames, size_t count) {
    const size_t room = prehistory_ - ringIndex_;
    const size_t taken = std::min(room, count);
    push(frames, taken);
    ringFull_ = taken == room;
    return taken;
}

void EventBuffer::push(const std::byte* frames, size_t count) {
    if (prehistory_ == 0) {
        return;
    }
    const size_t skipped = count - std::min(count, prehistory_);
    const size_t kept = count - skipped;
    const size_t slot = (ringIndex_ + skipped) % prehistory_;
    const size_t beforeEnd = std::min(kept, prehistory_ - slot);
    frames += skipped * frameBytes_;
    std::memcpy(data_.get() + slot * frameBytes_, frames, beforeEnd * frameBytes_);
    std::memcpy(data_.get(), frames + beforeEnd * frameBytes_, (kept - beforeEnd) * frameBytes_);
    ringIndex_ = (ringIndex_ + count) % prehistory_;
}

size_t EventBuffer::addHistory(const std::byte* frames, size_t count) {
    const size_t taken = std::min(history_ - historyCount_, count);
    std::memcpy(data_.get() + (prehistory_ + historyCount_) * frameBytes_, frames, taken * frameBytes_);
    historyCount_ += taken;
    return taken;
}

std::span<const std::byte> EventBuffer::record() {
    bringToFront(ringIndex_ * frameBytes_);
    ringIndex_ = 0;
    return {data_.get(), (prehistory_ + history_) * frameBytes_};
}

// Lets the prehistory begin with what lies behind so many bytes; those come to its end.
void EventBuffer::bringToFront(size_t bytes) {
    std::byte* data = data_.get();
    std::byte* aside = data + (prehistory_ + history_) * frameBytes_;
    size_t before = bytes;
    size_t behind = prehistory_ * frameBytes_ - bytes;
    // The shorter part goes to its place at once, in exchange for what stands there.
    while (std::min(before, behind) > kAside) {
        const size_t shorter = std::min(before, behind);
        for (size_t done = 0; done < shorter; done += kAside) {
            const size_t part = std::min(shorter - done, kAside);
            std::memcpy(aside, data + done, part);
            std::memcpy(data + done, data + before + done, part);
            std::memcpy(data + before + done, aside, part);
        }
        data += shorter;
        (before <= behind ? behind : before) -= shorter;
    }
    if (before <= behind) {
        std::memcpy(aside, data, before);
        std::memmove(data, data + before, behind);
        std::memcpy(data + behind, aside, before);
    } else {
        std::memcpy(aside, data + before, behind);
        std::memmove(data + behind, data, before);
        std::memcpy(data, aside, behind);
    }
}

}  // namespace tarno2
