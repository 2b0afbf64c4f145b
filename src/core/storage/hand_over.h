#pragma once

#include <atomic>
#include <cstddef>
#include <memory>

namespace tarno2 {

/// Items on their way from one thread to one other, in order and without locks. There is room for so many, all of it
/// made at once: neither thread ever allocates.
template <typename T>
class HandOver {
public:
    /// Throws std::bad_alloc.
    explicit HandOver(size_t room) : items_(std::make_unique<T[]>(room)), room_(room) {}

    /// Sending thread: false when there is no room.
    [[nodiscard]] bool push(const T& item) {
        const size_t sent = sent_.load(std::memory_order_relaxed);
        if (sent - taken_.load(std::memory_order_acquire) == room_) {
            return false;
        }
        items_[sent % room_] = item;
        sent_.store(sent + 1, std::memory_order_release);
        return true;
    }
    /// Sending thread: the next `push` finds room.
    [[nodiscard]] bool hasRoom() const {
        return sent_.load(std::memory_order_relaxed) - taken_.load(std::memory_order_acquire) < room_;
    }
    /// Sending thread: just half of the room is taken up.
    [[nodiscard]] bool halfFull() const {
        return sent_.load(std::memory_order_relaxed) - taken_.load(std::memory_order_relaxed) == room_ / 2;
    }

    /// Receiving thread: the oldest item, null when there is none. It stays until `pop`.
    [[nodiscard]] const T* front() const {
        const size_t taken = taken_.load(std::memory_order_relaxed);
        return taken == sent_.load(std::memory_order_acquire) ? nullptr : &items_[taken % room_];
    }
    /// Receiving thread: forgets the oldest item, which `front` has shown.
    void pop() { taken_.store(taken_.load(std::memory_order_relaxed) + 1, std::memory_order_release); }

private:
    std::unique_ptr<T[]> items_;
    size_t room_;
    std::atomic<size_t> sent_{0};
    std::atomic<size_t> taken_{0};
};

}  // namespace tarno2
