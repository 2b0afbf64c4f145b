#pragma once

#include <algorithm>
#include <gtest/gtest.h>

#include "core/recording/recording_control.h"
#include "language/language_table.h"
#include "tests/core/rig.h"

namespace tarno2::test {

/// The program around the recording logic: keeps what it is shown, in order, and its notifications for `pump`.
class FakeShell final : public RecordingShell {
public:
    RecordingWish settings() override { return wanted; }
    std::string fileName() override { return name; }
    void setFileName(const std::string& newName) override { name = newName; }
    std::string savedFileName() override { return {}; }
    void showStatus(const std::string& status) override { shown.push_back("status: " + status); }
    void showAttention(const std::string& message) override { shown.push_back(message); }
    void showMessage(const std::string& message) override { shown.push_back("box: " + message); }
    void showDetail(const std::string& detail) override { details.push_back(detail); }
    void synchronisationSwitchedOff() override {}
    void recordingEnded(const Notification& last, const RunEnd& /*end*/) override { ended = last.result; }
    void startTimer(uint32_t milliseconds) override { timer = milliseconds; }
    void killTimer() override { timer = 0; }
    bool consoleMode() override { return console; }
    void quit() override { ++quits; }
    void post(const Notification& notification) override { notes.post(notification); }

    [[nodiscard]] bool hasShown(const std::string& text) const {
        return std::any_of(shown.begin(), shown.end(),
                           [&](const auto& s) { return s.find(text) != std::string::npos; });
    }

    RecordingWish wanted;
    std::string name;
    std::vector<std::string> shown;
    std::vector<std::string> details;
    RecordingResult ended;
    uint32_t timer = 0;
    bool console = false;
    int quits = 0;
    NotificationLog notes;
};

/// The recording logic over a fake board, with a folder for its files.
class ControlRig {
public:
    ControlRig()
        : driver([this](const std::string& fault) { faults.push_back(fault); }), control(shell, driver, naming) {
        languageTable().select(kLanguageEnglish);
        device.ring = [](uint32_t, uint32_t) { return 1000U; };
        shell.wanted.channels = {0, 1};
        shell.wanted.frequency = 1e6;
        shell.name = folder.file("run.dat");
        control.setDataWait(1);
    }

    void attach() {
        std::string why;
        ASSERT_TRUE(driver.attach(&device, "Fake", folder.path(), why)) << why;
        ASSERT_TRUE(driver.selectBoard(1, why)) << why;
    }
    /// Hands the next end of a recording to the control, as the window's message loop would.
    Notification pump() {
        const auto notification = shell.notes.nextEnd();
        if (!notification) {
            ADD_FAILURE() << "no notification came";
            return {};
        }
        control.OnNotification(*notification);
        return *notification;
    }
    [[nodiscard]] std::vector<std::string> files() const { return listDirectory(folder.path()); }

    FakeDevice device;
    TemporaryFolder folder;
    std::vector<std::string> faults;
    FakeShell shell;
    FileNaming naming;
    T_DRIVER driver;
    RecordingControl control;
};

}  // namespace tarno2::test
