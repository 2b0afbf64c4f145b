#pragma once

#include <functional>

namespace tarno2 {

/// Calls back when the program is asked to end from outside: SIGINT, SIGTERM and SIGHUP, on Windows Ctrl-C, Ctrl-Break,
/// closing the console, logoff and shutdown. Make one before any other thread is started; it is the only one alive.
/// The callback runs on a thread of its own. On Windows a console close waits for `finished` before the process ends.
class TerminationWatcher {
public:
    explicit TerminationWatcher(std::function<void()> callback);
    ~TerminationWatcher();
    TerminationWatcher(const TerminationWatcher&) = delete;
    TerminationWatcher& operator=(const TerminationWatcher&) = delete;

    /// Everything is saved: a console close that waits may go on.
    void finished();
};

}  // namespace tarno2
