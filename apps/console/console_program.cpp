#include "apps/console/console_program.h"

#include <cstdio>
#include <exception>

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

namespace {

// Whatever goes wrong, what was recorded is closed and described when the session goes.
void record(const AutoSettings& settings, const std::string& directory, StopRelay& relay) {
    try {
        ConsoleSession session(settings, directory);
        const StopRelay::Attached attached(relay, [&session] { session.requestStop(); });
        session.run();
    } catch (const std::exception& error) {
        consoleLog().log("!!!! Exception: %s", error.what());
    }
}

}  // namespace

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
        if (!watcher.watching()) {
            consoleLog().log("A request to end the program ends it at once: the system has no thread to watch for one");
        }
        record(*settings, directory, relay);
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
