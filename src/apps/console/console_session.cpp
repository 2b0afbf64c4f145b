#include "apps/console/console_session.h"

#include <utility>

#include "config/logs/console_log.h"
#include "config/logs/debug_log.h"
#include "config/logs/program_version.h"

namespace tarno2 {

ConsoleSession::ConsoleSession(const RecordingWish& settings, std::string programDirectory)
    : fileName_(settings.fileName), host_(*this, std::move(programDirectory), settings) {}

void ConsoleSession::run() {
    if (!host_.applyConsoleSettings()) {
        return;
    }
    DEBUG_LOG("LoadConfig consolemode - Status OK");
    consoleLog().log("Console mode ENABLED Tarno2 version %s", versionText().c_str());
    if (fileName_.empty()) {
        host_.control().GenerateFileName();
    }
    host_.recover(logRecovered);
    host_.start();
    queue_.run();
    host_.waitForRecovery();
    host_.waitForChecksums();
    DEBUG_LOG("WriteConfig consolemode");
}

void ConsoleSession::startTimer(uint32_t milliseconds) {
    queue_.startTimer(milliseconds, [this] { host_.timerTick(); });
}

}  // namespace tarno2
