#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>

namespace tarno2 {

/// Items on their way from one thread to one other, in order, without locks and without end: a chain of blocks. A block
/// that was emptied is used again, so that memory is asked for only while the receiver is more than a block behind.
template <typename T>
class HandOver {
public:
    HandOver() : head_(new Block), tail_(head_), spare_(new Block) {}
    ~HandOver() {
        while (head_ != nullptr) {
            const std::unique_ptr<Block> block(head_);
            head_ = block->next;
        }
        delete spare_.load();
    }
    HandOver(const HandOver&) = delete;
    HandOver& operator=(const HandOver&) = delete;

    /// Sending thread.
    void push(const T& item) {
        if (tail_->count.load(std::memory_order_relaxed) == kBlock) {
            Block* next = spare_.exchange(nullptr, std::memory_order_acquire);
            if (next == nullptr) {
                next = new Block;
            }
            next->next.store(nullptr, std::memory_order_relaxed);
            next->count.store(0, std::memory_order_relaxed);
            tail_->next.store(next, std::memory_order_release);
            tail_ = next;
        }
        const size_t count = tail_->count.load(std::memory_order_relaxed);
        tail_->items[count] = item;
        tail_->count.store(count + 1, std::memory_order_release);
    }

    /// Receiving thread: the oldest item, null when there is none. It stays until `pop`.
    [[nodiscard]] const T* front() {
        if (taken_ == kBlock) {
            Block* next = head_->next.load(std::memory_order_acquire);
            if (next == nullptr) {
                return nullptr;
            }
            delete spare_.exchange(head_, std::memory_order_acq_rel);
            head_ = next;
            taken_ = 0;
        }
        return taken_ < head_->count.load(std::memory_order_acquire) ? &head_->items[taken_] : nullptr;
    }
    /// Receiving thread: forgets the oldest item, which `front` has shown.
    void pop() { ++taken_; }

private:
    static constexpr size_t kBlock = 256;
    struct Block {
        std::array<T, kBlock> items;
        std::atomic<size_t> count{0};
        std::atomic<Block*> next{nullptr};
    };

    Block* head_;  ///< of the receiving thread
    size_t taken_ = 0;
    Block* tail_;  ///< of the sending thread
    std::atomic<Block*> spare_;
};

}  // namespace tarno2
