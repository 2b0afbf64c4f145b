#include "core/storage/cache_pool.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <thread>

namespace tarno2 {

namespace {

constexpr size_t kMostMakers = 4;

}  // namespace

CachePool::~CachePool() {
    planned_ = 0;
    makers_.clear();
}

size_t CachePool::reserve(size_t caches) {
    makers_.clear();
    try {
        plan(caches);
    } catch (const std::bad_alloc&) {
        planned_ = 0;
        caches_.erase(caches_.begin() + static_cast<ptrdiff_t>(std::min(taken_, caches_.size())), caches_.end());
    }
    const size_t atOnce = std::min(taken_ + kReadyAtOnce, planned_.load());
    nextToMake_ = atOnce;
    for (size_t cache = taken_; cache < atOnce; ++cache) {
        makeReady(cache);
    }
    collectFree();
    for (Thread& maker : makers_) {
        if (!maker.create([this] { makeOthersReady(); })) {
            makeOthersReady();
            break;
        }
        maker.resume();
    }
    return filledEvent_.valid() && emptiedEvent_.valid() ? planned_.load() : 0;
}

// Finds places for the caches that there are to be beyond those that there are.
void CachePool::plan(size_t caches) {
    size_t missing = caches - std::min(caches, planned_.load());
    caches_.resize(planned_);
    caches_.reserve(caches);
    while (missing > 0 && !blocks_.emplace_back().reserve(missing * kCacheBytes)) {
        blocks_.pop_back();
        missing /= 2;
    }
    for (size_t i = 0; i < missing; ++i) {
        caches_.push_back({&blocks_.back(), i * kCacheBytes});
    }
    ready_ = std::make_unique<std::atomic<bool>[]>(caches_.size());
    places_ = std::make_unique<std::atomic<std::byte*>[]>(caches_.size());
    free_.reserve(caches_.size());
    planned_ = caches_.size();
    if (planned_ > taken_ + kReadyAtOnce) {
        makers_.resize(std::clamp<size_t>(std::thread::hardware_concurrency(), 1, kMostMakers));
    }
}

void CachePool::makeReady(size_t cache) {
    if (caches_[cache].block->makeReady(caches_[cache].offset, kCacheBytes)) {
        ready_[cache].store(true, std::memory_order_release);
        emptiedEvent_.set();
        return;
    }
    size_t planned = planned_;
    while (planned > cache && !planned_.compare_exchange_weak(planned, cache)) {
    }
}

void CachePool::makeOthersReady() {
    for (size_t cache = nextToMake_++; cache < planned_; cache = nextToMake_++) {
        makeReady(cache);
    }
}

void CachePool::collectFree() {
    for (; taken_ < caches_.size() && ready_[taken_].load(std::memory_order_acquire); ++taken_) {
        free_.insert(free_.begin(), caches_[taken_].data());
    }
    const uint64_t end = givenBack_.load(std::memory_order_acquire);
    for (; collected_ < end; ++collected_) {
        free_.push_back(place(collected_).load(std::memory_order_relaxed));
    }
}

// Puts a free cache where the stream goes on when the last one is full.
bool CachePool::openCache(bool wait) {
    if (filled_.load(std::memory_order_relaxed) < opened_ * kCacheBytes) {
        return true;
    }
    for (collectFree(); free_.empty(); collectFree()) {
        if (!wait || abandoned_) {
            return false;
        }
        static_cast<void>(emptiedEvent_.wait(kWaitForever));
        emptiedEvent_.reset();
    }
    place(opened_).store(free_.back(), std::memory_order_relaxed);
    free_.pop_back();
    ++opened_;
    return true;
}

std::byte* CachePool::room(uint64_t size) {
    const uint64_t used = filled_.load(std::memory_order_relaxed) % kCacheBytes;
    if (used + size > kCacheBytes || !openCache(false)) {
        return nullptr;
    }
    return place(opened_ - 1).load(std::memory_order_relaxed) + used;
}

bool CachePool::append(const std::byte* data, uint64_t size) {
    while (size > 0) {
        if (!openCache(true)) {
            return false;
        }
        const uint64_t filled = filled_.load(std::memory_order_relaxed);
        const uint64_t used = filled % kCacheBytes;
        const uint64_t part = std::min(size, kCacheBytes - used);
        std::byte* to = place(opened_ - 1).load(std::memory_order_relaxed) + used;
        if (data != to) {
            std::memmove(to, data, part);
        }
        filled_.store(filled + part, std::memory_order_release);
        if (used + part == kCacheBytes) {
            filledEvent_.set();
        }
        data += part;
        size -= part;
    }
    return !abandoned_;
}

void CachePool::waitFilled(uint32_t milliseconds) {
    static_cast<void>(filledEvent_.wait(milliseconds));
    filledEvent_.reset();
    giveBack();
}

std::span<const std::byte> CachePool::pending(uint64_t end) const {
    const uint64_t from = emptied();
    const uint64_t used = from % kCacheBytes;
    if (end <= from) {
        return {};
    }
    const std::byte* cache = place(from / kCacheBytes).load(std::memory_order_relaxed);
    return {cache + used, std::min(end - from, kCacheBytes - used)};
}

void CachePool::take(uint64_t size) {
    const uint64_t end = emptied() + size;
    emptied_.store(end, std::memory_order_relaxed);
    usedUp_.store(end / kCacheBytes);
    giveBack();
}

// A store-load handshake with `look`, sequentially consistent on both sides: it stores the cache that it looks at and
// then loads what is used up; here the store of what is used up comes before the load. So at least one side sees the
// other: `look` that it is late, or this side that a cache is looked at, which waits then with those that follow it.
void CachePool::giveBack() {
    const uint64_t usedUp = usedUp_.load();
    const uint64_t end = std::min(usedUp, looked_.load());
    if (end > givenBack_.load(std::memory_order_relaxed)) {
        givenBack_.store(end, std::memory_order_release);
        emptiedEvent_.set();
    }
}

void CachePool::abandon() {
    abandoned_ = true;
    emptiedEvent_.set();
}

uint64_t CachePool::look(uint64_t offset, std::byte* out, uint64_t size) {
    const uint64_t end = filled();
    const uint64_t number = offset / kCacheBytes;
    if (number < usedUp_.load()) {
        return 0;
    }
    uint64_t part = 0;
    looked_.store(number);
    if (offset < end && number >= usedUp_.load()) {
        const uint64_t used = offset % kCacheBytes;
        part = std::min({size, end - offset, kCacheBytes - used});
        std::memcpy(out, place(number).load(std::memory_order_relaxed) + used, part);
    }
    looked_.store(kNone);
    if (number < usedUp_.load()) {
        wake();  // the cache may have been held back
    }
    return part;
}

}  // namespace tarno2
