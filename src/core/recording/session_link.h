#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "core/recording/notification.h"
#include "core/recording/run_end.h"
#include "platform/event.h"

namespace tarno2 {

/// What kept a session's board from being set up.
struct StartFailure {
    enum class Kind {
        None,
        Init,          ///< the board or its driver refused the settings
        Memory,        ///< no memory for the blocks of the ring
        Thread,        ///< the system has no thread left, or an unexpected error ended it
        Incompatible,  ///< the driver's ring can't be used
    };

    Kind kind = Kind::None;
    std::string problem;  ///< the reason in the driver's or our words; empty when nothing more is known

    [[nodiscard]] bool failed() const { return kind != Kind::None; }
};

/// Called on the acquisition thread after each written block with (0, sample width).
using ProgressCallback = std::function<void(int, int)>;

/// What a session and its acquisition thread share: the events by which they hand over, the request to stop, where
/// notifications go, and how far the thread is. The session makes it and keeps it for longer than its thread runs.
///
/// `prepare` comes before the thread is made. Then the thread answers once with `answer`, which the session waits for,
/// and waits in turn for `begin`. What it reads it keeps from `keep` on, which comes before `begin` or while it
/// measures: until then evaluator, writer and marks are the session's, from then on the thread's.
class SessionLink {
public:
    /// The system had events left.
    [[nodiscard]] bool valid() const;

    /// Before a thread is made. Notifications go to `target`, which outlives the thread; null: to nobody.
    void prepare(NotificationTarget* target, ProgressCallback progress);
    /// Waits without limit until the thread has answered. Session's side.
    [[nodiscard]] StartFailure waitForAnswer();
    /// Lets the thread start the measurement. Session's side.
    void begin() { startEvent_.set(); }
    /// As `begin`, of a thread that keeps nothing until `keep`. Session's side.
    void beginMonitoring() {
        monitors_.store(true, std::memory_order_release);
        begin();
    }
    /// Has the thread keep all that it reads from its next block on. False when it has ended before: it keeps nothing
    /// any more. Session's side.
    [[nodiscard]] bool keep();
    /// Asks the thread to end, whatever it waits for. Any thread.
    void requestStop();

    /// The board is set up, or could not be. Only the first answer counts. Thread's side.
    void answer(StartFailure failure) noexcept;
    /// Waits without limit for `begin` or a stop. False when the system refused the wait. Thread's side.
    [[nodiscard]] bool waitForBegin() const;
    [[nodiscard]] bool stopRequested() const { return stopRequest_; }
    /// The session has called `beginMonitoring`: what comes before `keep` is kept by nobody. Thread's side.
    [[nodiscard]] bool monitors() const { return monitors_.load(std::memory_order_acquire); }
    /// The session has called `keep`. Any thread.
    [[nodiscard]] bool keepAsked() const { return keeping_.load(std::memory_order_acquire) == Keeping::Asked; }
    /// The thread reads no more. True when it was never to keep anything: then `keep` is refused from now on.
    [[nodiscard]] bool endUnkept();
    /// Signalled with the request to stop.
    [[nodiscard]] const Event& stopEvent() const { return stopEvent_; }
    [[nodiscard]] NotificationTarget* target() const { return target_; }
    /// Empty: nobody follows.
    [[nodiscard]] const ProgressCallback& progress() const { return progress_; }

    /// Samples of the whole stream that were read so far. Any thread; the acquisition thread sets it.
    [[nodiscard]] uint64_t samplesRead() const { return samplesRead_.load(std::memory_order_relaxed); }
    /// Why a recording ends that is ended from outside. Any thread; the session sets it before it asks for the stop.
    [[nodiscard]] OutsideEnd outsideEnd() const { return outsideEnd_.load(std::memory_order_relaxed); }
    void setOutsideEnd(OutsideEnd end) { outsideEnd_.store(end, std::memory_order_relaxed); }
    void setSamplesRead(uint64_t samples) { samplesRead_.store(samples, std::memory_order_relaxed); }
    /// Frames at the recorded rate that had come before the first one that is kept; nothing before there is one. Any
    /// thread; the acquisition thread sets it where that is not known beforehand.
    [[nodiscard]] std::optional<uint64_t> framesBefore() const;
    void setFramesBefore(uint64_t frames) { framesBefore_.store(frames, std::memory_order_release); }
    /// How full the ring was at the worst read, thousandths. Any thread; the acquisition thread sets it.
    [[nodiscard]] uint32_t worstLoad() const { return worstLoad_.load(std::memory_order_relaxed); }
    void setWorstLoad(uint32_t load) { worstLoad_.store(load, std::memory_order_relaxed); }
    /// Records of synchronisation and events of analysis that were found so far. Any thread; the acquisition thread
    /// sets it.
    [[nodiscard]] uint64_t eventCount() const { return eventCount_.load(std::memory_order_relaxed); }
    void setEventCount(uint64_t events) { eventCount_.store(events, std::memory_order_relaxed); }

private:
    enum class Keeping : uint32_t { No, Asked, Never };
    static constexpr uint64_t kNotYet = ~uint64_t{0};

    Event readyEvent_;
    Event startEvent_;
    Event stopEvent_;
    NotificationTarget* target_ = nullptr;
    ProgressCallback progress_;
    StartFailure failure_;  ///< the thread's until the ready event is set
    bool answered_ = false;
    std::atomic<bool> stopRequest_{false};
    std::atomic<bool> monitors_{false};
    std::atomic<Keeping> keeping_{Keeping::No};
    std::atomic<uint64_t> framesBefore_{kNotYet};
    std::atomic<OutsideEnd> outsideEnd_{OutsideEnd::User};
    std::atomic<uint64_t> samplesRead_{0};
    std::atomic<uint32_t> worstLoad_{0};
    std::atomic<uint64_t> eventCount_{0};
};

}  // namespace tarno2
