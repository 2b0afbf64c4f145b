#include "apps/console/console_program.h"

#include <cstdio>

#include "apps/console/console_session.h"
#include "apps/console/stop_relay.h"
#include "config/auto_settings.h"
#include "config/console_log.h"
#include "config/debug_log.h"
#include "config/program_version.h"
#include "language/language_table.h"
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

int runWithoutWindow(const CommandLine& line) {
    switch (line.mode) {
        case CommandLine::Console:
            runConsoleProgram(line.path);
            break;
        case CommandLine::Version:
            std::printf("Tarno2 %s\n", versionText().c_str());
            break;
        case CommandLine::Interactive:
        case CommandLine::Usage:
            std::fprintf(stderr, "%s\n", languageTable().loadUtf8(static_cast<int32_t>(TextId::Usage)).c_str());
            break;
    }
    return 0;
}

}  // namespace tarno2
