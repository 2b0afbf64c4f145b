#include "core/storage/recovery_thread.h"

#include <exception>
#include <utility>

#include "config/logs/debug_log.h"
#include "platform/paths.h"

namespace tarno2 {

RecoveryThread::~RecoveryThread() {
    stop();
    wait();
}

bool RecoveryThread::recover(const std::set<std::string>& folders, const Report& report) {
    {
        const std::scoped_lock lock(mutex_);
        for (const std::string& folder : folders) {
            jobs_.push_back({folder, report});
        }
        if (running_) {
            return true;
        }
    }
    thread_.join();
    running_ = thread_.create([this] { run(); });
    if (!running_) {
        DEBUG_LOG("!!!!! No thread for the recovery of recordings");
        jobs_.clear();
        return false;
    }
    thread_.resume();
    return true;
}

void RecoveryThread::run() {
    for (Job job; next(job);) {
        try {
            job.report(recoverFolder(job.folder, &stopped_));
        } catch (const std::exception& error) {
            DEBUG_LOG("!!!! Exception: %s", error.what());
        }
    }
}

bool RecoveryThread::next(Job& job) {
    const std::scoped_lock lock(mutex_);
    running_ = !jobs_.empty() && !stopped_.load(std::memory_order_relaxed);
    if (running_) {
        job = std::move(jobs_.front());
        jobs_.pop_front();
    }
    return running_;
}

std::set<std::string> foldersOf(const std::vector<std::string>& fileNames) {
    std::set<std::string> folders;
    for (const std::string& name : fileNames) {
        if (!name.empty()) {
            folders.insert(parentFolder(name));
        }
    }
    return folders;
}

}  // namespace tarno2
