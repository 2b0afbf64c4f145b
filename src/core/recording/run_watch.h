#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "core/devices/board_selection.h"
#include "core/recording/notification.h"
#include "core/recording/recording_progress.h"
#include "core/recording/run_end.h"
#include "records/conversion_inputs.h"

namespace tarno2 {

/// What is known of a run when it begins, and of the last one after its end.
struct RunFacts {
    uint32_t session = 0;        ///< number of its session; 0: there has been none
    std::string file;            ///< the first data file
    uint64_t frameBytes = 0;     ///< of a frame in the files
    bool externalStart = false;  ///< the board waits for a signal before it measures
    bool conditions = false;     ///< synchronisation or analysis chooses what is kept
    bool monitored = false;      ///< nothing is kept; `file` and `inputs` are those of the recording before
    StopRule stopRule = StopRule::Manual;
    double stopSeconds = 0.0;  ///< for StopRule::Time
    uint64_t stopBytes = 0;    ///< for StopRule::Size; all pieces together
    KnownInputs inputs;        ///< what the driver tells of it more exactly than the description
};

/// What its session has counted so far.
struct RunCounts {
    bool dataBegun = false;
    uint64_t bytes = 0;
    uint32_t files = 0;
    uint64_t events = 0;
    uint32_t worstLoad = 0;  ///< of the ring, thousandths
};

/// The figures of a run as an operator sees them.
struct RunFigures : RecordingFigures {
    uint64_t bytes = 0;
    uint64_t frames = 0;
    uint32_t load = 0;  ///< of the ring at its worst, percent
    bool loadWarns = false;
    uint32_t files = 0;
    uint64_t events = 0;
};

/// Ticks of a timer by the clock: those that came late, because a box or a slow disk kept the program busy, are made up
/// for, and none comes before its time is over.
class TimerTicks {
public:
    using Clock = std::chrono::steady_clock;
    /// `period`: 0 counts as 1.
    void start(std::chrono::milliseconds period, Clock::time_point now);
    void stop() { running_ = false; }
    /// True once for each tick that is due.
    [[nodiscard]] bool take(Clock::time_point now);

private:
    bool running_ = false;
    std::chrono::milliseconds period_{1};
    Clock::time_point next_;
};

/// Watches the runs of a program one after the other: in which state it is, how far it is, and what is known of the
/// last one when it is over. Times are milliseconds of one clock that never goes back.
/// Window thread, except `blockCame`; no session, no thread and no clock of its own.
class RunWatch {
public:
    /// Any thread, one at a time: progress of a session. Neither waits nor allocates.
    void blockCame(const Notification& progress, uint64_t now) noexcept;

    /// The operator wants a run; what ended before is forgotten.
    void starting();
    /// The run that there is shall end.
    void stopping() { passing_ = RunState::Stopping; }
    /// A session measures, or waits for its board to begin. A run that was there before is over.
    void begin(RunFacts facts, uint64_t now);
    /// The session of the run is gone.
    void sessionGone();
    /// A start or stop is done, whatever came of it.
    void settled() { passing_.reset(); }
    void update(const RunCounts& counts, uint64_t now);
    /// The run ended by its own rule: all that was asked for is there.
    void ruleReached();
    /// The last word of a session, which may come when it is gone. That of an earlier one changes nothing.
    void ended(uint32_t session, const RecordingResult& result, const RunEnd& end);
    /// The state of the chosen board: without a usable one an idle program is in error.
    void setBoard(BoardStatus status) { board_ = status; }

    [[nodiscard]] RunState state() const;
    [[nodiscard]] const RunFigures& figures() const { return figures_; }
    [[nodiscard]] BoardStatus board() const { return board_; }
    [[nodiscard]] bool running() const { return running_; }
    /// The board has begun to measure.
    [[nodiscard]] bool begun() const { return begun_; }
    /// Of the run that there is, or of the last one.
    [[nodiscard]] const RunFacts& facts() const { return facts_; }
    [[nodiscard]] uint64_t frames(uint64_t bytes) const;
    /// What is known of a data file beside its description: it is one of the last run's pieces.
    [[nodiscard]] KnownInputs knownInputs(const std::string& dataFile) const;

private:
    void beginProgress(uint64_t now);
    [[nodiscard]] RunState runningState() const;

    NewestBlock newestBlock_;
    RecordingProgress progress_;
    RunFacts facts_;
    RunFigures figures_;
    bool running_ = false;
    bool begun_ = false;
    std::optional<RunState> passing_;  ///< Starting or Stopping
    RunState end_ = RunState::Ready;   ///< Ready: there was no run since the last start
    BoardStatus board_ = BoardStatus::Ready;
};

}  // namespace tarno2
