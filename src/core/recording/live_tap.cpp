#include "core/recording/live_tap.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

namespace tarno2 {

namespace {

constexpr size_t kLeastBytes = size_t{4} << 20;
constexpr size_t kMostBytes = size_t{96} << 20;
constexpr size_t kLeastSlot = size_t{1} << 10;
constexpr size_t kMostSlot = size_t{256} << 10;
constexpr double kSeconds = 1.0;       ///< what a reader may be late
constexpr double kSlotSeconds = 0.01;  ///< half the time between two looks at a board's count

// Bytes for blocks of that size: enough for a second, and for the blocks that come while one is being read.
size_t tapBytes(size_t largestBlock, double bytesPerSecond) {
    const double wanted = std::max(3.0 * static_cast<double>(largestBlock), kSeconds * bytesPerSecond);
    return static_cast<size_t>(std::clamp(wanted, static_cast<double>(kLeastBytes), static_cast<double>(kMostBytes)));
}

}  // namespace

LiveTap::LiveTap() = default;
LiveTap::~LiveTap() = default;

bool LiveTap::prepare(size_t frameBytes, size_t largestBlock, double bytesPerSecond) {
    nextSequence_ = 1;
    nextFrame_ = 0;
    taken_ = 0;
    published_.store(0, std::memory_order_relaxed);
    frameCount_.store(0, std::memory_order_relaxed);
    begin_.store(0, std::memory_order_relaxed);
    recording_.fetch_add(1, std::memory_order_relaxed);
    slots_.reset();
    memory_.reset();
    slotCount_ = 0;
    frameBytes_ = std::max<size_t>(frameBytes, 1);
    // Of a slow board the blocks are what it counted between two looks: slots for them are small, so that little of a
    // slot stays empty.
    const double look = kSlotSeconds * bytesPerSecond;
    const size_t usual =
        look > 0.0 && look < static_cast<double>(largestBlock) ? static_cast<size_t>(look) : largestBlock;
    const size_t slot = std::max(std::clamp(usual, kLeastSlot, kMostSlot), frameBytes_);
    slotBytes_ = slot / frameBytes_ * frameBytes_;
    const size_t count = std::max<size_t>(tapBytes(largestBlock, bytesPerSecond) / slotBytes_, 4);
    // Pages that nobody watches are never touched, so they take no memory.
    memory_.reset(new (std::nothrow) std::byte[count * slotBytes_]);
    slots_.reset(new (std::nothrow) Slot[count]);
    if (memory_ == nullptr || slots_ == nullptr) {
        return false;
    }
    for (size_t i = 0; i < count; ++i) {
        slots_[i].data = memory_.get() + i * slotBytes_;
    }
    slotCount_ = count;
    return true;
}

void LiveTap::restart() noexcept {
    nextFrame_ = 0;
    frameCount_.store(0, std::memory_order_relaxed);
    begin_.store(nextSequence_, std::memory_order_release);
}

void LiveTap::put(std::span<const std::byte> block) noexcept {
    uint64_t frame = nextFrame_;
    nextFrame_ += block.size() / frameBytes_;
    if (!watched() || slotCount_ == 0) {
        return;
    }
    // The slot that the reader holds is passed over, so one less than all take a block without running into its start.
    const size_t most = (slotCount_ - 1) * slotBytes_;
    if (block.size() > most) {
        const size_t left = (block.size() - most + frameBytes_ - 1) / frameBytes_;
        block = block.subspan(left * frameBytes_);
        frame += left;
    }
    while (!block.empty()) {
        const uint64_t sequence = nextSequence_++;
        Slot& slot = slotOf(sequence);
        uint32_t idle = Idle;
        if (!slot.state.compare_exchange_strong(idle, Writing, std::memory_order_acquire, std::memory_order_relaxed)) {
            continue;
        }
        slot.sequence = sequence;
        slot.firstFrame = frame;
        slot.bytes = std::min(block.size(), slotBytes_);
        std::memcpy(slot.data, block.data(), slot.bytes);
        frame += slot.bytes / frameBytes_;
        block = block.subspan(slot.bytes);
        slot.state.store(Idle, std::memory_order_release);
    }
    frameCount_.store(nextFrame_, std::memory_order_relaxed);
    published_.store(nextSequence_ - 1, std::memory_order_release);
}

LiveTap::Slot* LiveTap::claim() {
    const uint64_t last = published_.load(std::memory_order_acquire);
    if (slotCount_ == 0) {
        return nullptr;
    }
    // What is older than the ring was overwritten.
    taken_ = std::max(taken_, last - std::min<uint64_t>(last, slotCount_));
    if (const uint64_t begin = begin_.load(std::memory_order_acquire); begin > taken_ + 1) {
        taken_ = std::min(begin - 1, last);
    }
    while (taken_ < last) {
        const uint64_t sequence = ++taken_;
        Slot& slot = slotOf(sequence);
        uint32_t idle = Idle;
        if (!slot.state.compare_exchange_strong(idle, Reading, std::memory_order_acquire, std::memory_order_relaxed)) {
            continue;
        }
        if (slot.sequence == sequence) {
            return &slot;
        }
        // It was passed over, or belongs to a newer block already.
        slot.state.store(Idle, std::memory_order_release);
    }
    return nullptr;
}

}  // namespace tarno2
