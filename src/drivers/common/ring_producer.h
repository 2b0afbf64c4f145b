#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <mutex>
#include <vector>

#include "drivers/common/sample_source.h"
#include "platform/event.h"
#include "platform/thread.h"

namespace tarno2::drivers {

inline constexpr uint64_t kNever = std::numeric_limits<uint64_t>::max();

/// How a measurement runs.
struct StreamPlan {
    double framesPerSecond = 0.0;     ///< pace of the clock; 0: paced by the reader
    uint32_t startDelay = 0;          ///< milliseconds until the first sample; kWaitForever: it never comes
    bool announce = true;             ///< set the data event
    uint64_t silentAfter = kNever;    ///< samples (cut to whole frames) after which nothing more comes
    uint64_t overflowAfter = kNever;  ///< sample at which the ring is run over, whatever the reader has fetched
    bool completeLastHalf = false;    ///< when the source ends, fill the half in hand up with `fillWord`
    uint32_t fillWord = 0;
};

/// The ring of a board and the thread that fills it.
///
/// Paced by the clock, the count of samples is at any time what the rate and the time since the start make it. Paced by
/// the reader, a half is published once the half before it was fetched, and generated while that one is in use; so
/// nothing is ever overwritten.
///
/// `configure`, `start` and `stop` belong to one thread at a time; `read` may run beside the producer; the counters may
/// be asked by anybody.
class RingProducer {
public:
    RingProducer();
    ~RingProducer();
    RingProducer(const RingProducer&) = delete;
    RingProducer& operator=(const RingProducer&) = delete;

    /// Makes the ring anew, `samples` long (a multiple of 2 x channels), all zero. Nothing may run. Throws
    /// std::bad_alloc.
    void configure(uint32_t samples, uint32_t channels, uint32_t bytesPerSample);
    [[nodiscard]] uint32_t ringSamples() const { return ring_; }
    /// The data event, set once a half; invalid when the system had none left.
    [[nodiscard]] const Event& dataEvent() const { return dataEvent_; }

    /// Starts from an empty ring. False when the system gives no thread or event.
    [[nodiscard]] bool start(std::unique_ptr<SampleSource> source, const StreamPlan& plan);
    /// Ends the thread; the ring keeps its contents.
    void stop();
    [[nodiscard]] bool running() const { return running_.load(std::memory_order_relaxed); }

    /// Copies samples out of the ring; false when the range is not inside it.
    bool read(void* destination, uint32_t count, uint32_t offset);
    /// The absolute index of the sample that a reader in sequence means by this ring offset.
    [[nodiscard]] uint64_t positionOf(uint32_t offset) const;
    /// Samples put into the ring since the start.
    [[nodiscard]] uint64_t samplesWritten() const { return written_.load(std::memory_order_acquire); }
    /// The last sample before the silence that the plan asked for is in the ring.
    [[nodiscard]] bool silent() const { return samplesWritten() >= end_.load(std::memory_order_relaxed); }

private:
    void run();
    void runByClock();
    void runByReader();
    bool fillByReader(uint64_t position);
    void runOver(uint64_t position);
    uint64_t produce(uint64_t position, uint64_t samples, bool publish);
    void completeHalf(uint64_t position);
    void publishPrepared();
    void announceHalf();
    bool waitForFetched(uint64_t position);
    [[nodiscard]] bool stopping() const { return stop_.load(std::memory_order_relaxed); }
    [[nodiscard]] std::byte* at(uint64_t position) { return memory_.data() + position % ring_ * bytes_; }

    uint32_t ring_ = 0;
    uint32_t half_ = 0;
    uint32_t channels_ = 1;
    uint32_t bytes_ = 2;
    std::vector<std::byte> memory_;
    std::mutex halfLocks_[2];  // the producer and a late reader never touch one half at once

    std::unique_ptr<SampleSource> source_;
    StreamPlan plan_;
    std::atomic<uint64_t> end_{kNever};  // no sample from here on
    Event dataEvent_;
    Event wake_;
    Thread thread_;
    std::atomic<bool> stop_{false};
    std::atomic<bool> running_{false};

    std::mutex publishing_;
    uint64_t prepared_ = 0;  // samples generated, published or not; under publishing_
    std::atomic<uint64_t> written_{0};
    std::atomic<uint64_t> fetched_{0};  // how far the reader has come
};

}  // namespace tarno2::drivers
