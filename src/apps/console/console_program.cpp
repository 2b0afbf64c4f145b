#include "apps/console/console_program.h"

#include <cstdio>
#include <exception>

#include "apps/console/console_session.h"
#include "apps/console/stop_relay.h"
#include "config/logs/console_log.h"
#include "config/logs/debug_log.h"
#include "config/logs/program_version.h"
#include "config/settings/auto_settings.h"
#include "language/language_table.h"
#include "platform/clock.h"
#include "platform/paths.h"
#include "platform/termination.h"

namespace tarno2 {

namespace {

// Whatever goes wrong, what was recorded is closed and described when the session goes. Returns the exit status.
int record(const CommandLine& line, const RecordingWish& settings, const std::string& directory, StopRelay& relay,
           const TerminationWatcher& watcher) {
    try {
        ConsoleSession session(settings, directory);
        const StopRelay::Attached attached(relay, [&session, &watcher] { session.requestStop(watcher.systemEnds()); });
        session.run();
        return exitStatus(line, session.control().outcome(), session.control().lastResult());
    } catch (const std::exception& error) {
        consoleLog().log("!!!! Exception: %s", error.what());
    }
    return exitStatus(line, RecordingOutcome::NothingRecorded, {});
}

int runConsoleProgram(const CommandLine& line) {
    StopRelay relay;
    TerminationWatcher watcher([&relay] { relay.request(); });
    const std::string directory = programDirectory();
    int status = 0;
    if (const auto settings = LoadAutoSettings(line.path, directory)) {
        if (!watcher.watching()) {
            consoleLog().log("A request to end the program ends it at once: the system has no thread to watch for one");
        }
        status = record(line, *settings, directory, relay, watcher);
    } else {
        status = exitStatus(line, RecordingOutcome::NothingRecorded, {});
    }
    logConsoleExit();
    watcher.finished();
    return status;
}

}  // namespace

void logConsoleExit() {
    const LocalTime now = localTime();
    consoleLog().log("Program exit at %02d:%02d:%02d %02d.%02d.%04d", now.hour, now.minute, now.second, now.day,
                     now.month, now.year);
    consoleLog().close();
    debugLog().close();
}

int exitStatus(const CommandLine& line, RecordingOutcome outcome, const RecordingResult& result) {
    if (!line.status) {
        return 0;
    }
    std::fputs(outcomeLine(outcome, result, consoleLog().path()).c_str(), stderr);
    return static_cast<int>(outcome);
}

int runWithoutWindow(const CommandLine& line, bool withWindow) {
    switch (line.mode) {
        case CommandLine::Console:
            return runConsoleProgram(line);
        case CommandLine::Version:
            std::printf("Tarno2 %s\n", versionText().c_str());
            break;
        case CommandLine::Options:
            std::fputs(optionList(commandOptions(withWindow)).c_str(), stdout);
            break;
        case CommandLine::Interactive:
        case CommandLine::Open:
        case CommandLine::Usage:
            std::fprintf(stderr, "%s\n", languageTable().loadUtf8(static_cast<int32_t>(TextId::Usage)).c_str());
            return line.status ? static_cast<int>(RecordingOutcome::NothingRecorded) : 0;
    }
    return 0;
}

}  // namespace tarno2
