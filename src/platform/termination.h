#pragma once

#include <cstdint>
#include <functional>

namespace tarno2 {

/// Calls back when the program is asked to end from outside: SIGINT, SIGTERM and SIGHUP, on Windows Ctrl-C, Ctrl-Break,
/// closing the console, logoff and shutdown. Make one before any other thread is started; it is the only one alive.
/// The callback runs on a thread of its own. On Windows a console close waits for `finished` before the process ends.
/// Who asks once more, `kPatienceMs` or later after the first time, means it: the process ends at once, so that a
/// driver that never comes back can be got rid of. Requests that come sooner belong to the first one.
class TerminationWatcher {
public:
    static constexpr uint64_t kPatienceMs = 1000;

    explicit TerminationWatcher(std::function<void()> callback);
    ~TerminationWatcher();
    TerminationWatcher(const TerminationWatcher&) = delete;
    TerminationWatcher& operator=(const TerminationWatcher&) = delete;

    /// False when the system had no thread for it: requests end the process at once.
    [[nodiscard]] bool watching() const;
    /// What asked last is the end of the user's session: a logoff, or the system shutting down. Only Windows tells. May
    /// be called by the callback.
    [[nodiscard]] bool systemEnds() const;
    /// Everything is saved: a console close that waits may go on.
    void finished();
};

}  // namespace tarno2
