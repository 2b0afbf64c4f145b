#pragma once

#include <functional>
#include <memory>

namespace tarno2 {

/// What became of the wish for time-critical priority.
enum class PriorityResult { Realtime, Raised, Unchanged };

/// A thread that is created suspended, may be given a higher priority, and runs its body once it is resumed.
/// All operations belong to the creating thread. Destruction resumes and joins it.
class Thread {
public:
    Thread();
    ~Thread();
    Thread(Thread&&) noexcept;
    Thread& operator=(Thread&&) noexcept;

    /// Creates the thread; the body does not run before `resume`. What the body throws ends the thread, with a line on
    /// the standard error. False when the system has no thread or memory left.
    [[nodiscard]] bool create(std::function<void()> body);
    /// Asks for time-critical priority: priority 15 on Windows, else SCHED_FIFO, else a lower nice value. Threads that
    /// the body makes, itself or through a driver, have ordinary priority.
    PriorityResult raisePriority();
    /// Lets the body run. Further calls do nothing.
    void resume();
    /// Lets the body run and waits for its end, without limit. Does nothing when there is no thread.
    void join();
    [[nodiscard]] bool joinable() const;

private:
    struct State;
    [[nodiscard]] bool launch(std::function<void()> body);

    /// Of one thread object alone; a pointer that needs to know the type only where it is made.
    std::shared_ptr<State> state_;
};

/// Lets the thread that calls it run only where others leave the processors room, and have the disk after them. Whether
/// the system does so is of no consequence.
void giveWayToOthers();

/// English words for the log.
[[nodiscard]] const char* describe(PriorityResult result);

}  // namespace tarno2
