#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace tarno2::test {

/// A program that runs beside the test, with the test's environment. It is killed when the object goes.
class ChildProcess {
public:
    /// Starts the program; both of its outputs go to the file `output`. The arguments reach it as they are on POSIX; on
    /// Windows they are joined with blanks, as if they were typed.
    ChildProcess(const std::string& program, const std::vector<std::string>& arguments, const std::string& output);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Waits for the end; nothing when the program still runs after so long, or never started. The exit status; on
    /// POSIX 128 + the signal's number when a signal ended it.
    std::optional<int> waitForEnd(std::chrono::seconds guard);
    /// Ends the program at once, so that it can clean nothing up, and waits until it is gone.
    void kill();
    /// Whether nothing more of it reaches the disk once `kill` has returned. Not so under Wine, where the end is told
    /// while a write that was under way still goes through.
    static bool killEndsWrites();

    enum class Request { Interrupt, Terminate, HangUp };
    /// Asks the program to end, as a console or the system does. False where no signal can be sent to another program.
    bool ask(Request request);

private:
    long id_ = -1;                             ///< POSIX: the process
    int watch_ = -1;                           ///< POSIX: becomes readable when it ends
    [[maybe_unused]] void* handle_ = nullptr;  ///< Windows
    std::optional<int> status_;
};

}  // namespace tarno2::test
