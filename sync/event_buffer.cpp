#include "sync/event_buffer.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

namespace tarno2 {

void EventBuffer::allocate(size_t channels, size_t sampleBytes, uint32_t prehistory, uint32_t history) {
    const uint64_t frames = uint64_t{prehistory} + history;
    const uint64_t bytes = frames * channels * sampleBytes;
    if (frames != 0 && channels > std::numeric_limits<uint32_t>::max() / frames) {
        throw std::bad_alloc();
    }
    data_.reset();
    data_ = std::make_unique_for_overwrite<std::byte[]>(static_cast<size_t>(bytes));
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

void EventBuffer::unroll(std::vector<std::byte>& output) const {
    const std::byte* ring = data_.get();
    const std::byte* oldest = ring + ringIndex_ * frameBytes_;
    const std::byte* history = ring + prehistory_ * frameBytes_;
    output.insert(output.end(), oldest, history);
    output.insert(output.end(), ring, oldest);
    output.insert(output.end(), history, history + history_ * frameBytes_);
}

}  // namespace tarno2
