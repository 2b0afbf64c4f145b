#pragma once

#include <cstdint>
#include <string>

#include "config/settings/recording_wish.h"
#include "core/recording/notification.h"
#include "core/recording/run_end.h"

namespace tarno2 {

/// What the recording logic asks of the program around it (see `SessionHost`). Everything but `post` is called on the
/// window's thread. Texts are in the program's single-byte code page.
class RecordingShell : public NotificationTarget {
public:
    /// What the controls or the autosettings ask of the next recording.
    [[nodiscard]] virtual RecordingWish settings() = 0;
    /// The file name field.
    [[nodiscard]] virtual std::string fileName() = 0;
    virtual void setFileName(const std::string& name) = 0;
    /// The name of the last recording of an earlier run, empty when there is none.
    [[nodiscard]] virtual std::string savedFileName() = 0;

    virtual void showStatus(const std::string& status) = 0;
    /// A refusal or warning, complete with its "Attention: ", in code page 1251.
    virtual void showAttention(const std::string& message) = 0;
    /// What exactly stands behind the message before it: the driver's or the system's words, one line, for the log
    /// list. In code page 1251 or in the system's own encoding.
    virtual void showDetail(const std::string& detail) = 0;
    /// A text for a message box.
    virtual void showMessage(const std::string& message) = 0;
    /// The check at start has switched synchronisation off: the settings that are shown follow.
    virtual void synchronisationSwitchedOff() = 0;
    /// A recording is over: what came of it, after its status and messages.
    virtual void recordingEnded(const Notification& last, const RunEnd& end) = 0;

    /// Calls `RecordingControl::StopTimerTick` every so many milliseconds, in place of an earlier timer.
    virtual void startTimer(uint32_t milliseconds) = 0;
    virtual void killTimer() = 0;

    /// The program records once, unattended, and ends.
    [[nodiscard]] virtual bool consoleMode() = 0;
    /// Ends the program: a start was refused in console mode, or the one recording is over. Returns at once;
    /// notifications posted before are still handled.
    virtual void quit() = 0;
};

}  // namespace tarno2
