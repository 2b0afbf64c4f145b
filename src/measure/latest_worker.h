#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include "measure/work_progress.h"

namespace tarno2 {

/// Works off the newest of its jobs on a thread of its own: a new one ends the one before it, which sees its progress
/// cancelled. Used by one thread.
class LatestWorker {
public:
    /// What it throws ends the job and is lost: a job reports its failures itself.
    using Job = std::function<void(WorkProgress&)>;

    LatestWorker() = default;
    /// Cancels the job and waits for its end.
    ~LatestWorker();
    LatestWorker(const LatestWorker&) = delete;
    LatestWorker& operator=(const LatestWorker&) = delete;

    /// Throws std::system_error when there is no thread for it.
    void start(Job job);
    /// Cancels what is at work and waits for its end; nothing that a job uses is needed after.
    void stop();
    /// A job is waiting or at work.
    [[nodiscard]] bool busy() const;
    /// How far the newest job is, 0 to 1.
    [[nodiscard]] double part() const;

private:
    void run();

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    Job next_;
    std::shared_ptr<WorkProgress> progress_;  ///< of the newest job
    bool working_ = false;
    bool ending_ = false;
    std::jthread thread_;
};

}  // namespace tarno2
