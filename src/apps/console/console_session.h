#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "config/settings/recording_wish.h"
#include "core/recording/session_host.h"
#include "platform/message_queue.h"

namespace tarno2 {

/// One unattended recording without a window: what a window would show is a line in the console log alone. Everything
/// but `post`, `faultFound` and `requestStop` runs on the thread that calls `run`.
class ConsoleSession final : public SessionFront {
public:
    ConsoleSession(const RecordingWish& settings, std::string programDirectory);

    /// Applies the settings, records once, and returns when it is over.
    void run();
    /// Ends the recording like the stop button; `systemEnds`: because of a logoff or shutdown. Any thread.
    void requestStop(bool systemEnds = false) { host_.requestStop(systemEnds); }
    /// What came of the recording is to be asked of it after `run`.
    [[nodiscard]] const RecordingControl& control() const { return host_.control(); }

    void post(std::function<void()> step) override { queue_.post(std::move(step)); }
    void faultFound(const std::string& fault) override { host_.showMessage(fault); }
    [[nodiscard]] std::string fileName() override { return fileName_; }
    void setFileName(const std::string& name) override { fileName_ = name; }
    void startTimer(uint32_t milliseconds) override;
    void killTimer() override { queue_.stopTimer(); }
    void quit() override { queue_.quit(); }

private:
    std::string fileName_;
    MessageQueue queue_;
    SessionHost host_;
};

}  // namespace tarno2
