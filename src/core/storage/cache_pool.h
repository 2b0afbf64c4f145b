#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <memory>
#include <span>
#include <vector>

#include "platform/event.h"
#include "platform/memory.h"
#include "platform/thread.h"

namespace tarno2 {

/// The part of a recording that waits in memory for the disk: one stream of bytes, counted from the first sample, in
/// caches of one size that go round between two threads without locks. The filling thread appends and waits only while
/// every cache holds what is not on the disk yet; the emptying thread takes the bytes in order and gives caches back. A
/// third thread may look at what is still here: the cache that it looks at is not filled anew until it is done.
///
/// `reserve` comes before the threads; they belong to one thread each from then on. Threads of the pool's own go on to
/// make caches ready after it: each is used once it is really there.
class CachePool {
public:
    static constexpr size_t kCacheBytes = 0x300000;
    /// So many caches are really there when `reserve` returns: enough to begin with.
    static constexpr size_t kReadyAtOnce = 4;

    CachePool() = default;
    ~CachePool();
    CachePool(const CachePool&) = delete;
    CachePool& operator=(const CachePool&) = delete;

    /// Has memory for so many caches. Returns how many there are, or will be soon: fewer when not all is allocated.
    size_t reserve(size_t caches);
    /// Less than `reserve` said when memory that was promised turned out not to be there. Any thread.
    [[nodiscard]] uint64_t capacity() const { return planned_.load(std::memory_order_relaxed) * kCacheBytes; }

    /// Bytes appended so far. Any thread.
    [[nodiscard]] uint64_t filled() const { return filled_.load(std::memory_order_acquire); }
    /// Bytes that the emptying thread has taken. Any thread.
    [[nodiscard]] uint64_t emptied() const { return emptied_.load(std::memory_order_relaxed); }

    // The filling thread.
    /// Where the next `size` bytes will stand, when they fit in the current cache: bytes that are put there need not be
    /// copied by `append`. Null when they don't, or no cache is free at once.
    [[nodiscard]] std::byte* room(uint64_t size);
    /// Appends bytes, which may stand in `room` and beyond. False when the pool was abandoned while it waited.
    [[nodiscard]] bool append(const std::byte* data, uint64_t size);

    // The emptying thread.
    /// Waits until a cache is full or `wake` was called, at most so many milliseconds.
    void waitFilled(uint32_t milliseconds);
    /// The next bytes that were not taken yet, up to `end` of the stream, as far as they stand in one cache.
    [[nodiscard]] std::span<const std::byte> pending(uint64_t end) const;
    /// The first `size` of the pending bytes are on the disk: a cache that is used up goes back.
    void take(uint64_t size);
    /// Nothing will be taken any more: a waiting `append` returns, now and ever after.
    void abandon();

    // Any thread.
    void wake() { filledEvent_.set(); }

    // The looking thread.
    /// Copies bytes from `offset` of the stream on, as far as they are in the one cache. 0: they are not here any more.
    [[nodiscard]] uint64_t look(uint64_t offset, std::byte* out, uint64_t size);

private:
    /// A place in one of the blocks.
    struct Cache {
        MemoryBlock* block = nullptr;
        size_t offset = 0;
        [[nodiscard]] std::byte* data() const { return block->data() + offset; }
    };
    static constexpr uint64_t kNone = std::numeric_limits<uint64_t>::max();

    /// The cache with this number in the stream. Numbers that are in use at one time have a place each.
    [[nodiscard]] std::atomic<std::byte*>& place(uint64_t number) { return places_[number % caches_.size()]; }
    [[nodiscard]] const std::atomic<std::byte*>& place(uint64_t number) const {
        return places_[number % caches_.size()];
    }
    void plan(size_t caches);
    void makeReady(size_t cache);
    void makeOthersReady();
    void collectFree();
    [[nodiscard]] bool openCache(bool wait);
    void giveBack();

    std::deque<MemoryBlock> blocks_;
    std::vector<Cache> caches_;
    std::unique_ptr<std::atomic<bool>[]> ready_;  ///< of each cache: it is really there
    std::atomic<size_t> planned_{0};              ///< caches from here on will never be there
    std::atomic<size_t> nextToMake_{0};
    std::vector<Thread> makers_;
    std::unique_ptr<std::atomic<std::byte*>[]> places_;  ///< where the numbered caches of the stream are
    Event filledEvent_;
    Event emptiedEvent_;
    std::atomic<bool> abandoned_{false};

    // Of the filling thread.
    size_t taken_ = 0;              ///< caches that were ready so far
    std::vector<std::byte*> free_;  ///< the one that came back last is on top: it is still near the processor
    uint64_t collected_ = 0;        ///< numbers below it were collected
    uint64_t opened_ = 0;           ///< numbers below it have a cache

    std::atomic<uint64_t> filled_{0};
    std::atomic<uint64_t> emptied_{0};
    std::atomic<uint64_t> usedUp_{0};      ///< numbers below it are on the disk: nobody new looks at them
    std::atomic<uint64_t> givenBack_{0};   ///< numbers below it may be filled anew
    std::atomic<uint64_t> looked_{kNone};  ///< number of the cache that is being looked at
};

}  // namespace tarno2
