#pragma once

#include <atomic>
#include <cstdint>

namespace tarno2 {

/// How far a computation over many frames is, and the wish to end it. Any threads.
class WorkProgress {
public:
    void cancel() { cancelled_ = true; }
    [[nodiscard]] bool cancelled() const { return cancelled_; }

    /// So many steps will be taken.
    void begin(uint64_t steps) {
        done_ = 0;
        total_ = steps;
    }
    void add(uint64_t steps) { done_ += steps; }
    /// 0 to 1.
    [[nodiscard]] double part() const {
        const uint64_t total = total_;
        return total == 0 ? 0.0 : static_cast<double>(done_) / static_cast<double>(total);
    }

private:
    std::atomic<bool> cancelled_ = false;
    std::atomic<uint64_t> done_ = 0;
    std::atomic<uint64_t> total_ = 0;
};

}  // namespace tarno2
