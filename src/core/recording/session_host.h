#pragma once

#include <atomic>
#include <cstdint>
#include <exception>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "config/files/file_naming.h"
#include "config/settings/recording_wish.h"
#include "core/devices/board_selection.h"
#include "core/recording/recording_control.h"
#include "core/recording/recording_shell.h"
#include "core/recording/run_watch.h"
#include "core/storage/checksum_thread.h"
#include "core/storage/recovery_thread.h"
#include "platform/event.h"

namespace tarno2 {

/// What differs between a program with a window and one without: where a session's steps run, where its settings stand,
/// and what is shown. What is told is a line in the console log already. The session's thread, where nothing else is
/// said; texts in code page 1251, a detail also in the system's own encoding.
class SessionFront {
public:
    virtual ~SessionFront() = default;

    /// Runs a step on the session's thread later, in the order of the calls. Any thread.
    virtual void post(std::function<void()> step) = 0;
    /// Shows a fault of a driver, which may be found while another thread looks for its board. Any thread.
    virtual void faultFound(const std::string& fault) = 0;
    /// What the operator has set; not asked in console mode.
    [[nodiscard]] virtual RecordingWish settings() { return {}; }
    /// The file name field.
    [[nodiscard]] virtual std::string fileName() = 0;
    virtual void setFileName(const std::string& name) = 0;
    /// Calls `SessionHost::timerTick` every so many milliseconds, in place of an earlier timer.
    virtual void startTimer(uint32_t milliseconds) = 0;
    virtual void killTimer() = 0;
    /// Ends the program. Returns at once; what was posted before is still done.
    virtual void quit() = 0;

    /// A refusal or warning, complete with its "Attention: ".
    virtual void showAttention(const std::string& /*message*/) {}
    /// What exactly stands behind the message before it.
    virtual void showDetail(const std::string& /*detail*/) {}
    /// A text for a message box.
    virtual void showMessage(const std::string& /*message*/) {}
    virtual void synchronisationSwitchedOff() {}
    /// The state of the chosen board has changed.
    virtual void showBoard() {}
    /// The state of the run has changed, and what follows may take a moment.
    virtual void showState() {}
    /// A run has begun; it is that of the watch.
    virtual void runBegun() {}
    /// The session of the run is gone. Not told where the next run begins at once.
    virtual void runEnded() {}
    /// What came of a run, after its messages.
    virtual void showEnd(const RecordingResult& /*result*/, const RunEnd& /*end*/) {}
    /// A step is done: state and figures may be others.
    virtual void showRun() {}
};

/// What every recording program does, with a window or without one: board and driver, names, start and stop, the watch
/// over the run, the recovery of what was cut off, and the lines of the console log. What a step throws is a line in
/// both logs, and the recording goes on; in console mode a start or an end that could not be done in full ends the
/// program. The session's thread, except `post` and `requestStop`.
class SessionHost final : public RecordingShell {
public:
    /// `front` outlives it. With `console` settings the program records once, unattended, and ends.
    SessionHost(SessionFront& front, std::string programDirectory, std::optional<RecordingWish> console);

    [[nodiscard]] BoardSelection& selection() { return selection_; }
    [[nodiscard]] RecordingControl& control() { return control_; }
    [[nodiscard]] const RecordingControl& control() const { return control_; }
    [[nodiscard]] const RunWatch& watch() const { return watch_; }
    [[nodiscard]] FileNaming& naming() { return naming_; }
    [[nodiscard]] const std::optional<RecordingWish>& console() const { return console_; }
    /// The program ends by itself: nobody is asked any more.
    [[nodiscard]] bool ending() const { return ending_; }
    /// From now on nobody is asked any more.
    void setEnding() { ending_ = true; }

    /// Chooses driver and board of the console settings, after the driver's search for boards, for which it waits so
    /// long at most. False when they can't be used: the program ends.
    [[nodiscard]] bool applyConsoleSettings(uint32_t longestSearchMs = kLongestSearchMs);
    static constexpr uint32_t kLongestSearchMs = 20000;
    /// Tells how the choice of driver and board went. True when they can be used.
    bool boardApplied(ApplyOutcome outcome);
    /// Tells what of its settings did not reach the driver: of its own file, and of what it was told.
    void tellDriverSettings();
    /// Notes the state of the chosen board; a fatal one is a line in the console log and ends console mode.
    void SetErrorCode(BoardStatus status);
    /// The board can't be used as it is, and a start should look for it first: it may have been switched on since.
    [[nodiscard]] bool startNeedsBoard();
    /// What came of such a search. True when the start can go on.
    bool boardFoundForStart(ApplyOutcome outcome);

    /// Recovers what was cut off where recordings are kept, or in `folder`; see `RecoveryThread`. `told` is called on
    /// the thread that recovers.
    void recover(const RecoveryThread::Report& told, const std::string& folder = {});
    /// Waits until that is done.
    void waitForRecovery() { recovery_.wait(); }
    /// At the program's end: waits until the checksums of what was recorded are there, and tells in the console log how
    /// far they are. With a window it does not wait for long: what the operator saw coming he may give up.
    void waitForChecksums();
    /// The program is asked to end: what it waits for is given up. Any thread.
    void endWaiting();
    /// How far those of finished recordings are; nothing when none is computed.
    [[nodiscard]] std::optional<ChecksumThread::Progress> checksumProgress() { return checksums_.progress(); }
    void giveUpChecksums() { checksums_.stop(); }

    void start();
    void stop();
    /// Shows what the board gives, or ends that.
    void monitor();
    /// Ends the recording because the system is ending.
    void shutdown();
    /// Ends the recording like the stop button, and then the program; `systemEnds`: because of a logoff or shutdown.
    /// Any thread.
    void requestStop(bool systemEnds);
    /// The timer of the front has run down: gives the recording all ticks that are due.
    void timerTick();
    /// Looks what has become of the run, and has it shown.
    void follow();
    /// Notes the data file of the last run if there is one: a recording that kept nothing left no file.
    void rememberFile();
    /// Noted last; empty when there was none.
    [[nodiscard]] const std::string& keptFile() const { return keptFile_; }

    /// Runs a step; what it throws is logged. False when it threw.
    template <typename Step>
    bool guarded(const char* name, Step step) noexcept;

    // What the recording logic asks for.
    void post(const Notification& notification) override;
    [[nodiscard]] RecordingWish settings() override;
    [[nodiscard]] std::string fileName() override { return front_.fileName(); }
    void setFileName(const std::string& name) override { front_.setFileName(name); }
    [[nodiscard]] std::string savedFileName() override;
    void showStatus(const std::string& status) override;
    void showAttention(const std::string& message) override;
    void showDetail(const std::string& detail) override;
    void showMessage(const std::string& message) override;
    void synchronisationSwitchedOff() override { front_.synchronisationSwitchedOff(); }
    void recordingEnded(const Notification& last, const RunEnd& end) override;
    void startTimer(uint32_t milliseconds) override;
    void killTimer() override;
    [[nodiscard]] bool consoleMode() override { return console_.has_value(); }
    void quit() override;

private:
    /// A guarded step that is followed by a look at the run. False when it threw.
    template <typename Step>
    bool perform(const char* name, Step step) noexcept;
    [[nodiscard]] bool settingsReachDriver();
    [[nodiscard]] ApplyOutcome waitForSearch(uint32_t longestMs);
    void handle(const Notification& notification);
    void beginRun(T_BOARD& session);
    void takeRecording(const T_BOARD& session, RunFacts& facts);
    void tellChecksums(const std::string& problem);
    static void logException(const char* name, const char* what) noexcept;

    SessionFront& front_;
    std::string programDirectory_;
    std::optional<RecordingWish> console_;
    FileNaming naming_;
    BoardSelection selection_;
    RunWatch watch_;
    TimerTicks ticks_;
    std::atomic<bool> waiting_{false};  ///< for checksums alone
    ChecksumThread checksums_;          ///< outlives the recordings that it follows
    RecordingControl control_;
    std::string keptFile_;
    bool ending_ = false;
    Event stopAsked_;
    RecoveryThread recovery_;  ///< ends before everything that it reports to
};

/// Each as a line in the console log.
void logRecovered(const std::vector<RecoveryReport>& reports);

template <typename Step>
bool SessionHost::guarded(const char* name, Step step) noexcept {
    try {
        step();
        return true;
    } catch (const std::exception& error) {
        logException(name, error.what());
    } catch (...) {
        logException(name, "unknown");
    }
    return false;
}

template <typename Step>
bool SessionHost::perform(const char* name, Step step) noexcept {
    const bool whole = guarded(name, step);
    guarded(name, [this] { follow(); });
    return whole;
}

}  // namespace tarno2
