#include "apps/console/console_session.h"

#include <exception>
#include <utility>

#include "config/logs/console_log.h"
#include "config/logs/debug_log.h"
#include "config/logs/program_version.h"
#include "config/settings/settings_file.h"
#include "language/language_table.h"

namespace tarno2 {

ConsoleSession::ConsoleSession(RecordingWish settings, std::string programDirectory)
    : settings_(std::move(settings)),
      programDirectory_(std::move(programDirectory)),
      fileName_(settings_.fileName),
      selection_([this](const std::string& fault) { showMessage(fault); }, programDirectory_),
      control_(*this, selection_.driver(), naming_) {}

void ConsoleSession::run() {
    DEBUG_LOG("LoadConfig consolemode");
    if (!applySettings()) {
        return;
    }
    if (!selection_.hasFrequency(settings_.frequency)) {
        consoleLog().log("Frequency not founded");
    }
    DEBUG_LOG("LoadConfig consolemode - Status OK");
    consoleLog().log("Console mode ENABLED Tarno2 version %s", versionText().c_str());
    if (fileName_.empty()) {
        control_.GenerateFileName();
    }
    const auto tell = [](const std::vector<RecoveryReport>& reports) {
        for (const RecoveryReport& report : reports) {
            consoleLog().log("%s", report.text().c_str());
        }
    };
    if (!recovery_.recover(foldersOf({fileName_, savedFileName()}), tell)) {
        consoleLog().log("No unfinished recordings were looked for: the system has no thread for it");
    }
    if (control_.StartButtonClick()) {
        consoleLog().log("Save to file \"%s\"", fileName_.c_str());
    }
    queue_.run();
    recovery_.wait();
    DEBUG_LOG("WriteConfig consolemode");
}

bool ConsoleSession::applySettings() {
    const ApplyOutcome outcome = selection_.apply(settings_.driver, settings_.base);
    if (const std::string& problem = selection_.driver().settingsProblem(); !problem.empty()) {
        consoleLog().log("%s", problem.c_str());
    }
    switch (outcome) {
        case ApplyOutcome::Done:
            return true;
        case ApplyOutcome::DriverNotFound:
            consoleLog().log("Driver not founded");
            return false;
        case ApplyOutcome::NoDriverName:
        case ApplyOutcome::DriverError:
            SetErrorCode(BoardStatus::DriverError);
            break;
        case ApplyOutcome::BoardError:
            SetErrorCode(BoardStatus::Error);
            break;
    }
    if (!selection_.problem().empty()) {
        consoleLog().log("%s", selection_.problem().c_str());
    }
    return false;
}

void ConsoleSession::SetErrorCode(BoardStatus status) {
    if (status == BoardStatus::Ready) {
        return;
    }
    consoleLog().log("Set error code = %d: %s . Program aborted.", static_cast<int>(status),
                     text(boardStatusWord(status)).c_str());
}

// Whatever goes wrong in one step, the recording that runs goes on.
void ConsoleSession::enqueue(std::function<void()> work, bool last) {
    queue_.post([this, last, step = std::move(work)] {
        try {
            step();
        } catch (const std::exception& error) {
            if (last) {
                queue_.quit();
            }
            DEBUG_LOG("!!!! Exception: %s", error.what());
            consoleLog().log("!!!! Exception: %s", error.what());
        }
    });
}

void ConsoleSession::requestStop(bool systemEnds) {
    recovery_.stop();
    enqueue(
        [this, systemEnds] {
            if (control_.running() && systemEnds) {
                control_.endForShutdown();
            } else if (control_.running()) {
                control_.StopButtonClick();
            } else {
                queue_.quit();
            }
        },
        true);
}

void ConsoleSession::post(const Notification& notification) {
    if (notification.result.isNews()) {
        enqueue([this, notification] { handle(notification); }, notification.result.code != StopCode::Running);
    }
}

void ConsoleSession::handle(const Notification& notification) {
    control_.OnNotification(notification);
    if (notification.result.code == StopCode::Unplug) {
        SetErrorCode(BoardStatus::Unplugged);
    }
}

RecordingWish ConsoleSession::settings() {
    return settings_;
}

std::string ConsoleSession::savedFileName() {
    return tarno2::savedFileName(programDirectory_);
}

void ConsoleSession::showStatus(const std::string& status) {
    consoleLog().log("%s", status.c_str());
}

void ConsoleSession::showAttention(const std::string& message) {
    consoleLog().log("%s", message.c_str());
}

void ConsoleSession::showDetail(const std::string& detail) {
    consoleLog().log("%s", detail.c_str());
}

void ConsoleSession::showMessage(const std::string& message) {
    consoleLog().log("%s", message.c_str());
}

void ConsoleSession::startTimer(uint32_t milliseconds) {
    queue_.startTimer(milliseconds, [this] { control_.StopTimerTick(); });
}

}  // namespace tarno2
