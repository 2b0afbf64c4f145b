#include "measure/latest_worker.h"

#include <exception>
#include <utility>

namespace tarno2 {

LatestWorker::~LatestWorker() {
    stop();
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    changed_.notify_all();
}

void LatestWorker::start(Job job) {
    if (!thread_.joinable()) {
        thread_ = std::jthread([this] { run(); });
    }
    auto progress = std::make_shared<WorkProgress>();
    {
        const std::lock_guard lock(mutex_);
        if (progress_) {
            progress_->cancel();
        }
        progress_ = std::move(progress);
        next_ = std::move(job);
    }
    changed_.notify_all();
}

void LatestWorker::stop() {
    std::unique_lock lock(mutex_);
    if (progress_) {
        progress_->cancel();
    }
    next_ = nullptr;
    changed_.wait(lock, [this] { return !working_; });
}

bool LatestWorker::busy() const {
    const std::lock_guard lock(mutex_);
    return working_ || next_ != nullptr;
}

double LatestWorker::part() const {
    const std::lock_guard lock(mutex_);
    return progress_ ? progress_->part() : 0.0;
}

void LatestWorker::run() {
    std::unique_lock lock(mutex_);
    while (true) {
        changed_.wait(lock, [this] { return ending_ || next_ != nullptr; });
        if (ending_) {
            return;
        }
        Job job = std::exchange(next_, nullptr);
        const std::shared_ptr<WorkProgress> progress = progress_;
        working_ = true;
        lock.unlock();
        try {
            job(*progress);
        } catch (const std::exception&) {
            progress->cancel();
        }
        // What the job held goes before anyone is told that it is over.
        job = nullptr;
        lock.lock();
        working_ = false;
        changed_.notify_all();
    }
}

}  // namespace tarno2
