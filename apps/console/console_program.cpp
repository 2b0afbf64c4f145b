#include "apps/console/console_program.h"

#include "apps/console/console_session.h"
#include "apps/console/stop_relay.h"
#include "config/auto_settings.h"
#include "config/console_log.h"
#include "config/debug_log.h"
#include "platform/clock.h"
#include "platform/paths.h"
#include "platform/termination.h"

namespace tarno2 {

void logConsoleExit() {
    const LocalTime now = localTime();
    consoleLog().log("Program exit at %02d:%02d:%02d %02d.%02d.%04d", now.hour, now.minute, now.second, now.day,
                     now.month, now.year);
    consoleLog().close();
    debugLog().close();
}

void runConsoleProgram(const std::string& path) {
    StopRelay relay;
    TerminationWatcher watcher([&relay] { relay.request(); });
    const std::string directory = programDirectory();
    if (const auto settings = LoadAutoSettings(path, directory)) {
        ConsoleSession session(*settings, directory);
        relay.attach([&session] { session.requestStop(); });
        session.run();
        relay.detach();
    }
    logConsoleExit();
    watcher.finished();
}

}  // namespace tarno2
