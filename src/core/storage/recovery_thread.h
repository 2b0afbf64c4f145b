#pragma once

#include <atomic>
#include <deque>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "core/storage/recovery.h"
#include "platform/thread.h"

namespace tarno2 {

/// Recovers what was cut off while the program goes on: a recording may start meanwhile, and waits only for the
/// recovery of its own name. All operations but `stop` belong to the creating thread.
class RecoveryThread {
public:
    using Report = std::function<void(const std::vector<RecoveryReport>&)>;

    RecoveryThread() = default;
    /// Stops and waits.
    ~RecoveryThread();
    RecoveryThread(const RecoveryThread&) = delete;
    RecoveryThread& operator=(const RecoveryThread&) = delete;

    /// Recovers folders (see `recoverFolder`), after those that were asked for before. `report` is called once for each
    /// folder, on the thread that recovers. False when the system gives no thread: then nothing is recovered now.
    bool recover(const std::set<std::string>& folders, const Report& report);
    /// Ends after the current recording; what is left is for another time. Any thread.
    void stop() { stopped_.store(true, std::memory_order_relaxed); }
    /// Waits until everything is done, or was stopped.
    void wait() { thread_.join(); }

private:
    struct Job {
        std::string folder;
        Report report;
    };
    void run();
    [[nodiscard]] bool next(Job& job);

    std::atomic<bool> stopped_{false};
    std::mutex mutex_;
    std::deque<Job> jobs_;
    bool running_ = false;
    Thread thread_;
};

/// The folders of these files, each once; empty names have none.
[[nodiscard]] std::set<std::string> foldersOf(const std::vector<std::string>& fileNames);

}  // namespace tarno2
