#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "core/devices/driver.h"
#include "core/devices/holder_count.h"
#include "core/devices/parameter_blocks.h"
#include "core/recording/line_edges.h"
#include "core/recording/live_tap.h"
#include "core/recording/session_link.h"
#include "core/storage/data_writer.h"
#include "core/storage/mark_writer.h"
#include "platform/sleep_prevention.h"
#include "platform/thread.h"
#include "platform/timer_resolution.h"
#include "sync/block_evaluator.h"

namespace tarno2 {

/// One session with one board through the loaded driver: made for a recording, or to look at what the board gives until
/// one is wanted, and deleted after it. It turns the user's settings into the driver's parameter blocks, and owns the
/// acquisition thread, its link to it and the data file writer.
///
/// The window's thread makes it, fills the settings, starts and ends it; in between they belong to the thread.
class T_BOARD {
public:
    /// `number` tells this session's notifications from those of others. The driver must outlive the session.
    T_BOARD(T_DRIVER& driver, uint32_t number, FaultReporter faults);
    /// Ends the thread and releases the driver.
    ~T_BOARD();
    T_BOARD(const T_BOARD&) = delete;
    T_BOARD& operator=(const T_BOARD&) = delete;

    /// Events and cache are allocated.
    [[nodiscard]] bool ready() const;

    BoardSettings settings;       ///< corrected by the driver once the thread is started
    uint32_t decimation = 1;      ///< keep the first of so many frames
    MarkedLine markedLine;        ///< edges of a digital line that mark the recording
    uint32_t dataWaitMs = 10000;  ///< least time without a data event that ends the recording
    std::unique_ptr<BlockEvaluator> evaluator;
    LiveTap* liveTap = nullptr;  ///< takes every block before the evaluator; outlives the session. Null: nobody does

    /// Once in a session: makes the thread, which sets the board up and then waits for `Begin`. False when the board,
    /// the memory or the system refused: see `failure`. Notifications go to `target`, which outlives the session.
    [[nodiscard]] bool StartThread(NotificationTarget* target, ProgressCallback progress);
    /// Lets the thread start the measurement and keep all of it.
    void Begin();
    /// Lets the thread start the measurement and show it to the tap alone, until `Keep`.
    void Monitor() { link_.beginMonitoring(); }
    /// Has the thread keep what it reads from its next block on, by the evaluator, the writer and the marks, which are
    /// ready then and the thread's from here on. False when it has ended before: they are the caller's still.
    [[nodiscard]] bool Keep() { return link_.keep(); }
    /// Another writer in place of one that was not opened, or that the thread did not take; what that has made goes.
    void renewWriter() { writer_ = std::make_unique<DataWriter>(); }
    /// Frames at the recorded rate that had come before the first one that is kept. Nothing before there is one. Any
    /// thread.
    [[nodiscard]] std::optional<uint64_t> framesBefore() const { return link_.framesBefore(); }
    /// Asks the thread to end the recording, whatever it waits for. Any thread.
    void requestStop() { link_.requestStop(); }
    /// Why it is asked to, for the passport; before `requestStop`. Window thread.
    void setOutsideEnd(OutsideEnd end) { link_.setOutsideEnd(end); }
    /// Asks the thread to end, and waits for it without limit. Files are closed then.
    void endThread();
    /// Checks the settings with the driver, takes over its corrections and sets the board up. Acquisition thread, while
    /// `StartThread` waits for it.
    [[nodiscard]] StartFailure Init();

    [[nodiscard]] uint32_t number() const { return number_; }
    [[nodiscard]] T_DRIVER& driver() { return driver_; }
    [[nodiscard]] const T_DRIVER& driver() const { return driver_; }
    [[nodiscard]] DataWriter& writer() { return *writer_; }
    /// What is marked while it records.
    [[nodiscard]] MarkWriter& marks() { return marks_; }
    /// The operator marks this moment; nothing when there is no room for it, or nothing is kept yet. Window thread.
    std::optional<RecordingMark> mark();
    [[nodiscard]] uint32_t maxBufferSamples() const { return maxBufferSamples_; }
    /// Why `StartThread` has failed.
    [[nodiscard]] const StartFailure& failure() const { return failure_; }
    /// The board has put something into its ring, which with an external start may be long after `Begin`.
    [[nodiscard]] bool dataBegun();
    /// Samples of the whole stream that were read so far. Any thread.
    [[nodiscard]] uint64_t samplesRead() const { return link_.samplesRead(); }
    /// How full the ring was at the worst read, thousandths. Any thread.
    [[nodiscard]] uint32_t worstLoad() const { return link_.worstLoad(); }
    /// Records of synchronisation and events of analysis that were found so far. Any thread.
    [[nodiscard]] uint64_t eventCount() const { return link_.eventCount(); }
    /// Samples a second that the settings make the board deliver, over all channels.
    [[nodiscard]] double sampleRate() const;

private:
    [[nodiscard]] bool fitsBaseBlock() const;
    [[nodiscard]] std::string takeOver(const ParameterBlocks& blocks, SetupPass pass);
    [[nodiscard]] StartFailure initPass(ParameterBlocks& blocks);
    [[nodiscard]] StartFailure fitRing(ParameterBlocks& blocks, uint32_t maximumBuffer);
    [[nodiscard]] StartFailure refused(const char* pass, std::string problem) const;

    T_DRIVER& driver_;
    uint32_t number_;
    HolderCount holders_;
    MarkWriter marks_;         ///< outlives the writer
    uint64_t newestMark_ = 0;  ///< frame that the operator marked last
    std::unique_ptr<DataWriter> writer_ = std::make_unique<DataWriter>();
    SessionLink link_;
    StartFailure failure_;
    uint32_t maxBufferSamples_ = 0;

    const SleepPrevention awake_;
    const TimerResolution fineTimers_;
    Thread thread_;
};

}  // namespace tarno2
