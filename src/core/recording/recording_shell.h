#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "config/settings/auto_settings.h"
#include "core/recording/notification.h"
#include "sync/synchro_settings.h"

namespace tarno2 {

/// What the user has set for the next recording, as the controls hold it.
struct RecordingSettings {
    std::vector<int32_t> channels;  ///< active channels' numbers in recording order
    std::vector<int32_t> gains;     ///< one a channel; 1 where there is none
    std::string frequencyText;      ///< Hz
    uint32_t boardMode = 0;         ///< BoardModeBits
    double packetFrequency = 0.0;   ///< Hz
    StopRule stopRule = StopRule::Manual;
    double stopSeconds = 0.0;                               ///< for StopRule::Time
    uint64_t stopBytes = 0;                                 ///< for StopRule::Size; all pieces together
    bool cutMode = false;                                   ///< cut the recording into pieces
    std::string cutNumberText;                              ///< size of a piece, MiB
    bool automaticCut = false;                              ///< pieces as large as the volume holds
    int32_t decimation = 1;                                 ///< keep the first of so many frames
    uint32_t writeBufferMegabytes = kWriteBufferMegabytes;  ///< memory for what waits for the disk, MiB at most
    uint32_t longestWriteWaitMs = kLongestWriteWaitMs;      ///< after so long data are on their way to the disk
    bool autoStart = false;                                 ///< begin the next recording when one ended by its rule
    SynchroSettings synchro;                                ///< which frames to keep; channels are numbered
    SynchroSizes synchroSizes;
    bool useDigitalPort = false;
};

/// What the recording logic asks of the program around it: the main window, or the console session without one.
/// Everything but `post` is called on the window's thread. Texts are in the program's single-byte code page.
class RecordingShell : public NotificationTarget {
public:
    [[nodiscard]] virtual RecordingSettings settings() = 0;
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
    virtual void synchronisationSwitchedOff() {}
    /// A recording is over: what came of it, after its status and messages.
    virtual void recordingEnded(const RecordingResult& result);
    virtual void showBytes(uint64_t bytes) = 0;
    virtual void showProgress(int percent) = 0;

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
