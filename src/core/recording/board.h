#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "core/devices/driver.h"
#include "core/devices/holder_count.h"
#include "core/devices/parameter_blocks.h"
#include "core/recording/live_tap.h"
#include "core/recording/notification.h"
#include "core/storage/data_writer.h"
#include "platform/event.h"
#include "platform/sleep_prevention.h"
#include "platform/thread.h"
#include "platform/timer_resolution.h"
#include "sync/block_evaluator.h"

namespace tarno2 {

/// How the check and set-up of a board ended.
enum class InitOutcome { Done, Refused, Incompatible };

/// One session with one board through the loaded driver: made for a recording and deleted after it. It turns the user's
/// settings into the driver's parameter blocks, and owns the acquisition thread, the data file writer and the events by
/// which the window's thread and the acquisition thread hand over.
///
/// The window's thread makes it, fills the settings, starts and ends it; in between they belong to the thread.
class T_BOARD {
public:
    /// Called on the acquisition thread after each written block with (0, sample width).
    using ProgressCallback = std::function<void(int, int)>;

    /// `number` tells this session's notifications from those of others. The driver must outlive the session.
    T_BOARD(T_DRIVER& driver, uint32_t number, FaultReporter faults);
    /// Ends the thread and releases the driver.
    ~T_BOARD();
    T_BOARD(const T_BOARD&) = delete;
    T_BOARD& operator=(const T_BOARD&) = delete;

    /// Events and cache could be had.
    [[nodiscard]] bool ready() const;

    BoardSettings settings;       ///< corrected by the driver once the thread is started
    uint32_t decimation = 1;      ///< keep the first of so many frames
    uint32_t dataWaitMs = 10000;  ///< least time without a data event that ends the recording
    std::unique_ptr<BlockEvaluator> evaluator;
    LiveTap* liveTap = nullptr;  ///< takes every block before the evaluator; outlives the session. Null: nobody does

    /// Once in a session: makes the thread, which sets the board up and then waits for `Begin`. False when the board,
    /// the memory or the system refused; the session's error flags say which. Notifications go to `target`, which
    /// outlives the session.
    [[nodiscard]] bool StartThread(NotificationTarget* target, ProgressCallback progress);
    /// Lets the thread start the measurement.
    void Begin();
    /// Asks the thread to end the recording, whatever it waits for. Any thread.
    void requestStop();
    /// Asks the thread to end, and waits for it without limit.
    void endThread();

    [[nodiscard]] uint32_t number() const { return number_; }
    [[nodiscard]] T_DRIVER& driver() { return driver_; }
    [[nodiscard]] DataWriter& writer() { return writer_; }
    [[nodiscard]] uint32_t maxBufferSamples() const { return maxBufferSamples_; }
    [[nodiscard]] bool threadError() const { return threadError_; }
    [[nodiscard]] bool initError() const { return initError_; }
    [[nodiscard]] bool memoryError() const { return memoryError_; }
    [[nodiscard]] bool startError() const { return startError_; }
    [[nodiscard]] bool incompatible() const { return incompatible_; }
    /// Why the board could not be set up, in the driver's or our words. After `StartThread` has failed.
    [[nodiscard]] const std::string& problem() const { return problem_; }
    /// The board has put something into its ring, which with an external start may be long after `Begin`.
    [[nodiscard]] bool dataBegun();
    /// Samples of the whole stream that were read so far. Any thread.
    [[nodiscard]] uint64_t samplesRead() const { return samplesRead_.load(std::memory_order_relaxed); }
    /// How full the ring was at the worst read, thousandths. Any thread.
    [[nodiscard]] uint32_t worstLoad() const { return worstLoad_.load(std::memory_order_relaxed); }
    /// Records of synchronisation and events of analysis that were found so far. Any thread.
    [[nodiscard]] uint64_t eventCount() const { return eventCount_.load(std::memory_order_relaxed); }
    /// Samples a second that the settings make the board deliver, over all channels.
    [[nodiscard]] double sampleRate() const;

private:
    friend class AcquisitionThread;

    [[nodiscard]] InitOutcome Init();
    [[nodiscard]] bool fitsBaseBlock() const;
    [[nodiscard]] bool takeOver(const ParameterBlocks& blocks, SetupPass pass);
    [[nodiscard]] bool initPass(ParameterBlocks& blocks);
    [[nodiscard]] InitOutcome fitRing(ParameterBlocks& blocks, uint32_t maximumBuffer);
    InitOutcome refused(const char* pass, const std::string& problem);

    T_DRIVER& driver_;
    uint32_t number_;
    HolderCount holders_;
    DataWriter writer_;
    Event readyEvent_;
    Event startEvent_;
    Event stopEvent_;
    NotificationTarget* target_ = nullptr;
    ProgressCallback progress_;

    uint32_t maxBufferSamples_ = 0;
    std::string problem_;
    bool noDataCheck_ = true;
    std::atomic<bool> stopRequest_{false};
    std::atomic<bool> threadError_{false};
    std::atomic<bool> initError_{false};
    std::atomic<bool> memoryError_{false};
    std::atomic<bool> startError_{false};
    std::atomic<bool> incompatible_{false};
    std::atomic<uint64_t> samplesRead_{0};
    std::atomic<uint32_t> worstLoad_{0};
    std::atomic<uint64_t> eventCount_{0};

    const SleepPrevention awake_;
    const TimerResolution fineTimers_;
    Thread thread_;
};

}  // namespace tarno2
