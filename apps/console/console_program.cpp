#include "apps/console/console_program.h"

#include <mutex>
#include <optional>

#include "apps/console/console_session.h"
#include "config/auto_settings.h"
#include "config/console_log.h"
#include "config/debug_log.h"
#include "platform/clock.h"
#include "platform/paths.h"
#include "platform/termination.h"

namespace tarno2 {

namespace {

// Hands a signal to the session, which comes to life later and ends earlier than the watch for signals.
class StopRelay {
public:
    void request() {
        const std::lock_guard lock(mutex_);
        requested_ = true;
        if (session_ != nullptr) {
            session_->requestStop();
        }
    }
    void attach(ConsoleSession* session) {
        const std::lock_guard lock(mutex_);
        session_ = session;
        if (requested_ && session_ != nullptr) {
            session_->requestStop();
        }
    }

private:
    std::mutex mutex_;
    ConsoleSession* session_ = nullptr;
    bool requested_ = false;
};

void logExit() {
    const LocalTime now = localTime();
    consoleLog().log("Program exit at %02d:%02d:%02d %02d.%02d.%04d", now.hour, now.minute, now.second, now.day,
                     now.month, now.year);
    consoleLog().close();
    debugLog().close();
}

}  // namespace

void runConsoleProgram(const std::string& path) {
    StopRelay relay;
    TerminationWatcher watcher([&relay] { relay.request(); });
    const std::string directory = programDirectory();
    if (const auto settings = LoadAutoSettings(path, directory)) {
        ConsoleSession session(*settings, directory);
        relay.attach(&session);
        session.run();
        relay.attach(nullptr);
    }
    logExit();
    watcher.finished();
}

}  // namespace tarno2
