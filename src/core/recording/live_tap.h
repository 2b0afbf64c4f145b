#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace tarno2 {

/// Hands the newest frames of a recording from its acquisition thread to one reader, the signal view.
///
/// A ring of slots, each with an atomic state by which exactly one side holds it. The acquisition side never waits,
/// locks or allocates: a reader that is late loses the oldest frames, and sees by the frame's number how many. A block
/// becomes visible when all of it has been copied, so half a block is never seen. While nobody watches, a block costs
/// one atomic load.
///
/// The frames are the board's after decimation and before the synchronisation chooses among them.
class LiveTap {
public:
    LiveTap();
    ~LiveTap();
    LiveTap(const LiveTap&) = delete;
    LiveTap& operator=(const LiveTap&) = delete;

    /// Empties the tap for a recording and counts frames from 0. `largestBlock`: bytes of the largest block that is
    /// expected (a larger one is cut to its newest frames). `bytesPerSecond`: of the stream; 0 when not known. False,
    /// and a tap that keeps nothing, without memory. Window thread, while neither a recording nor a reader runs.
    bool prepare(size_t frameBytes, size_t largestBlock, double bytesPerSecond);
    /// Whether somebody watches. Any thread.
    void setWatched(bool watched) { watched_.store(watched, std::memory_order_relaxed); }
    [[nodiscard]] bool watched() const { return watched_.load(std::memory_order_relaxed); }
    /// How often `prepare` was called: another number is another recording. Any thread.
    [[nodiscard]] uint32_t recording() const { return recording_.load(std::memory_order_relaxed); }
    /// Frames that the visible blocks reach to. Any thread.
    [[nodiscard]] uint64_t frameCount() const { return frameCount_.load(std::memory_order_relaxed); }

    /// The frames that are there, and those that come until `restart`, are given to nobody. The reader's thread.
    void awaitRestart() { begin_.store(kNever, std::memory_order_release); }
    /// Counts the frames that come next from 0. Acquisition thread.
    void restart() noexcept;

    /// Takes a block of whole frames. Acquisition thread.
    void put(std::span<const std::byte> block) noexcept;

    /// Gives the oldest frames that were not taken yet to `use(firstFrame, frames)`, a callable that takes a uint64_t
    /// and a std::span<const std::byte>; they are valid during the call alone. False when there are none. A first frame
    /// above the last one's end means that the frames between are lost to the view. The reader's thread.
    template <typename Use>
    bool take(Use use) {
        Slot* slot = claim();
        if (slot == nullptr) {
            return false;
        }
        use(slot->firstFrame, std::span<const std::byte>(slot->data, slot->bytes));
        slot->state.store(Idle, std::memory_order_release);
        return true;
    }

private:
    static constexpr uint64_t kNever = ~uint64_t{0};
    enum State : uint32_t { Idle, Writing, Reading };
    struct alignas(64) Slot {
        std::atomic<uint32_t> state{Idle};
        uint64_t sequence = 0;  ///< which use of the ring it is, from 1; 0: never used
        uint64_t firstFrame = 0;
        std::byte* data = nullptr;
        size_t bytes = 0;
    };

    [[nodiscard]] Slot* claim();
    [[nodiscard]] Slot& slotOf(uint64_t sequence) { return slots_[sequence % slotCount_]; }

    std::unique_ptr<Slot[]> slots_;
    std::unique_ptr<std::byte[]> memory_;
    size_t slotCount_ = 0;
    size_t slotBytes_ = 0;  ///< whole frames
    size_t frameBytes_ = 1;

    uint64_t nextSequence_ = 1;  ///< acquisition thread
    uint64_t nextFrame_ = 0;     ///< acquisition thread
    uint64_t taken_ = 0;         ///< reader: the last sequence that it took or passed

    alignas(64) std::atomic<uint64_t> published_{0};  ///< the last sequence of a whole block
    std::atomic<uint64_t> frameCount_{0};
    std::atomic<uint64_t> begin_{0};  ///< sequences below it are given to nobody
    std::atomic<bool> watched_{false};
    std::atomic<uint32_t> recording_{0};
};

}  // namespace tarno2
