#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>

#include "config/files/disk_info.h"
#include "config/files/file_naming.h"
#include "core/devices/driver.h"
#include "core/recording/board.h"
#include "core/recording/recording_shell.h"
#include "core/recording/run_end.h"
#include "language/text_ids.h"
#include "records/record_description.h"

namespace tarno2 {

/// Starting and stopping recordings: the rules behind the start and stop buttons and behind console mode. Checks the
/// settings in a fixed order, makes a board session for each recording and frees it after the stop.
/// Window thread only; notifications reach it through the shell.
class RecordingControl {
public:
    /// All outlive the control.
    RecordingControl(RecordingShell& shell, T_DRIVER& driver, FileNaming& naming);
    ~RecordingControl();

    /// Starts a recording; of a board that is monitored, from its running signal, with the board's settings as they
    /// are. A refusal is logged, shown and leaves nothing behind, and what is monitored goes on. True when it runs.
    bool StartButtonClick();
    /// Runs the board and shows its signal, without a file; ends that when it is done already. A refusal is as that of
    /// a recording. True when it runs. Never in console mode.
    bool MonitorButtonClick();
    /// Ends the running recording, waits for its files and proposes the next name; or ends the monitoring.
    void StopButtonClick();
    /// Ends the recording because the system is ending, and says so.
    void endForShutdown();
    /// Handles what an acquisition thread posted.
    void OnNotification(const Notification& notification);
    /// A second of the stop timer has passed. True when the time that was asked for is over: the recording has ended.
    bool StopTimerTick();
    /// Puts a new unused name into the file name field.
    void GenerateFileName();

    /// What came of the recording that ended last, and what was told of it. Nothing before one has ended.
    [[nodiscard]] RecordingOutcome outcome() const { return outcome_; }
    [[nodiscard]] const RecordingResult& lastResult() const { return lastResult_; }

    /// The board runs, for a recording or to be monitored.
    [[nodiscard]] bool running() const { return session_ != nullptr; }
    /// It runs, and nothing is kept.
    [[nodiscard]] bool monitoring() const { return session_ != nullptr && monitoring_; }
    /// The session of the running recording, or of what is monitored; null when there is none.
    [[nodiscard]] T_BOARD* session() { return session_.get(); }
    /// What was asked of the running recording, without conditions that the start has switched off.
    [[nodiscard]] const RecordingWish& settings() const { return settings_; }
    /// What the running recording's description says of board and settings.
    [[nodiscard]] const RecordingFacts& facts() const { return facts_; }
    /// Gets the frames of the recordings from the next one on, for the signal view; null: nobody does. It outlives them
    /// and still holds the last frames of a recording when its session is gone.
    void setLiveTap(LiveTap* tap) { liveTap_ = tap; }
    /// Called before a session goes, for who reads what it has recorded. Empty: nobody is.
    void setBeforeSessionGoes(std::function<void()> told) { beforeSessionGoes_ = std::move(told); }
    /// Computes the checksums of the recordings from the next one on; null: nobody does. It outlives them.
    void setChecksums(ChecksumThread* checksums) { checksums_ = checksums; }
    /// How long a board may give no data event, milliseconds at least.
    void setDataWait(uint32_t milliseconds) { dataWaitMs_ = milliseconds; }

private:
    // What is checked before a start (recording_control_checks.cpp).
    [[nodiscard]] bool createSession();
    [[nodiscard]] bool checkFile();
    [[nodiscard]] bool checkSettings();
    [[nodiscard]] bool checkStopRule();
    [[nodiscard]] bool startThread();
    void takeWish();

    // What it needs beside the board (recording_control_files.cpp).
    [[nodiscard]] bool boardFacts();
    [[nodiscard]] bool prepareFacts();
    void chooseCut();
    [[nodiscard]] bool prepareSynchro();
    void warnOfFreeSpace();
    [[nodiscard]] bool createFiles();
    void warnOfSmallBuffer();
    void warnOfMarks(bool ended);
    void prepareLiveTap();

    // Its course and end.
    [[nodiscard]] bool keepFromNow();
    [[nodiscard]] bool handOver();
    void tellMonitored();
    void release();
    void recordingBegins();
    void startStopTimer();
    void watchForExternalStart();
    void warnOfSlowDisk(uint64_t waitingBytes);
    void report(const Notification& notification);
    [[nodiscard]] RunEnd endOf(const RecordingResult& result) const;
    [[nodiscard]] bool cycleGoesOn();
    bool refuse(TextId id, const std::string& detail = {});
    void attention(const std::string& message);
    void freeSession();

    RecordingShell& shell_;
    T_DRIVER& driver_;
    FileNaming& naming_;
    RecordDescription description_;
    std::unique_ptr<T_BOARD> session_;
    uint32_t sessionNumber_ = 0;
    std::set<uint32_t> refusedSessions_;  ///< shown as refused: what their threads still say is only logged
    uint32_t dataWaitMs_ = 10000;
    std::function<void()> beforeSessionGoes_;
    LiveTap* liveTap_ = nullptr;
    ChecksumThread* checksums_ = nullptr;
    bool closing_ = false;

    RecordingWish settings_;
    std::string fileName_;
    DiskFacts disk_;
    RecordingFacts facts_;
    uint64_t pieceBytes_ = 0;
    uint64_t wantedBuffer_ = 0;    ///< bytes; 0 once it was told that there are fewer
    uint64_t lostMarks_ = 0;       ///< that were told of
    bool diskNearlyFull_ = false;  ///< as the last recording left it
    OutsideEnd outsideEnd_ = OutsideEnd::User;
    RecordingOutcome outcome_ = RecordingOutcome::NothingRecorded;
    RecordingResult lastResult_;
    bool monitoring_ = false;       ///< of the session
    bool monitoredUntold_ = false;  ///< where the recording begins in the signal that was monitored
    bool timerArmed_ = false;
    bool startAwaited_ = false;  ///< the stop timer counts once the external start has come
    int64_t timerCount_ = 0;
};

}  // namespace tarno2
