#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "config/files/file_naming.h"
#include "config/settings/recording_wish.h"
#include "core/devices/board_selection.h"
#include "core/recording/recording_control.h"
#include "core/recording/recording_shell.h"
#include "core/storage/recovery_thread.h"
#include "platform/message_queue.h"

namespace tarno2 {

/// One unattended recording without a window: the shell that the recording logic runs in. What a window would show is a
/// line in the console log. Everything but `post` and `requestStop` runs on the thread that calls `run`.
class ConsoleSession final : public RecordingShell {
public:
    ConsoleSession(RecordingWish settings, std::string programDirectory);

    /// Applies the settings, records once, and returns when it is over.
    void run();
    /// Ends the recording like the stop button; `systemEnds`: because of a logoff or shutdown. Any thread.
    void requestStop(bool systemEnds = false);
    /// What came of the recording is to be asked of it after `run`.
    [[nodiscard]] const RecordingControl& control() const { return control_; }
    /// How long a board may give no data event, milliseconds at least. Before `run`.
    void setDataWait(uint32_t milliseconds) { control_.setDataWait(milliseconds); }

    void post(const Notification& notification) override;
    [[nodiscard]] RecordingWish settings() override;
    [[nodiscard]] std::string fileName() override { return fileName_; }
    void setFileName(const std::string& name) override { fileName_ = name; }
    [[nodiscard]] std::string savedFileName() override;
    void showStatus(const std::string& status) override;
    void showAttention(const std::string& message) override;
    void showDetail(const std::string& detail) override;
    void showMessage(const std::string& message) override;
    void showBytes(uint64_t /*bytes*/) override {}
    void showProgress(int /*percent*/) override {}
    void startTimer(uint32_t milliseconds) override;
    void killTimer() override { queue_.stopTimer(); }
    [[nodiscard]] bool consoleMode() override { return true; }
    void quit() override { queue_.quit(); }

private:
    /// Queues work whose exceptions end up in the logs; `last`: it ends the recording, and the program with it.
    void enqueue(std::function<void()> work, bool last);
    void handle(const Notification& notification);
    [[nodiscard]] bool applySettings();
    void SetErrorCode(BoardStatus status);

    RecordingWish settings_;
    std::string programDirectory_;
    std::string fileName_;
    MessageQueue queue_;
    FileNaming naming_;
    BoardSelection selection_;
    RecordingControl control_;
    RecoveryThread recovery_;
};

}  // namespace tarno2
