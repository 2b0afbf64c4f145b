#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <mutex>
#include <string>

#include <tarno2/driver/ring.h>

#include "drivers/common/sample_source.h"
#include "platform/event.h"
#include "platform/thread.h"

namespace tarno2::drivers {

inline constexpr uint64_t kNever = std::numeric_limits<uint64_t>::max();

/// How a measurement runs.
struct StreamPlan {
    uint32_t channels = 1;
    double framesPerSecond = 0.0;         ///< pace of the clock; 0: paced by the reader
    uint32_t startDelay = 0;              ///< milliseconds until the first sample; kWaitForever: it never comes
    bool announce = true;                 ///< set the data event
    uint64_t silentAfter = kNever;        ///< samples (cut to whole frames) after which nothing more comes
    uint64_t overflowAfter = kNever;      ///< sample at which the ring is run over, whatever the reader has fetched
    uint64_t endAfter = kNever;           ///< samples (cut to whole frames) after which the stream ends
    uint32_t endCause = kADCEndOfSource;  ///< why it ends there, or with its source
    uint64_t endLost = 0;                 ///< samples, of kADCEndLost
    std::string endText;                  ///< the reason for the user
};

/// The thread that fills a board's ring with samples that are made for it.
///
/// Paced by the clock, the count of samples is at any time what the rate and the time since the start make it. Paced by
/// the reader, a half is published once the half before it was fetched, and generated while that one is in use; so
/// nothing is ever overwritten.
///
/// `start` and `stop` belong to one thread at a time; `fetched` may run beside the producer.
class RingProducer {
public:
    /// `onEnd` is called when the stream has come to its end, after its last sample was counted, by either thread.
    RingProducer(sdk::Ring& ring, std::function<void(const StreamPlan&)> onEnd);
    ~RingProducer();
    RingProducer(const RingProducer&) = delete;
    RingProducer& operator=(const RingProducer&) = delete;

    /// Starts with an empty ring. False when the system gives no thread or event.
    [[nodiscard]] bool start(std::unique_ptr<SampleSource> source, const StreamPlan& plan);
    /// Ends the thread; the ring keeps its contents.
    void stop();
    /// The reader has fetched samples.
    void fetched();

    /// The last sample before the silence that the plan asked for is in the ring.
    [[nodiscard]] bool silent() const { return ring_.written() >= end_.load(std::memory_order_relaxed); }

private:
    void run();
    void runByClock();
    void runByReader();
    bool fillByReader(uint64_t position);
    void runOver(uint64_t position);
    uint64_t produce(uint64_t position, uint64_t samples, bool publish);
    void endStream(uint64_t position);
    void publishPrepared();
    void announceHalf();
    bool waitForFetched(uint64_t position);
    [[nodiscard]] bool stopping() const { return stop_.load(std::memory_order_relaxed); }
    [[nodiscard]] std::byte* at(uint64_t position) { return reinterpret_cast<std::byte*>(ring_.at(position)); }

    sdk::Ring& ring_;
    std::function<void(const StreamPlan&)> onEnd_;
    uint64_t half_ = 0;
    std::unique_ptr<SampleSource> source_;
    StreamPlan plan_;
    std::atomic<uint64_t> end_{kNever};  // no sample from here on
    Event wake_;
    Thread thread_;
    std::atomic<bool> stop_{false};
    std::atomic<bool> running_{false};
    uint64_t fetchedHalves_ = 0;  // the reader's

    std::mutex publishing_;
    uint64_t prepared_ = 0;        // samples generated, published or not; under publishing_
    uint64_t streamEnd_ = kNever;  // where the stream ends; under publishing_
};

}  // namespace tarno2::drivers
