// SPDX-License-Identifier: MIT

#ifndef TARNO2_DRIVER_BOARD_SEARCH_H
#define TARNO2_DRIVER_BOARD_SEARCH_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <stdint.h>
#include <thread>
#include <utility>
#include <vector>

#include <tarno2/driver/board.h>

namespace tarno2 {
namespace sdk {

/// A search for boards on a thread of its own, so that a window that asks for them goes on.
class BoardSearch {
public:
    typedef std::function<std::vector<Board>()> Look;

    BoardSearch() : running_(false) {}
    ~BoardSearch() {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            next_ = Look();
        }
        join();
    }

    /// Begins to look; of a search that goes on the boards don't count any more. Throws what std::thread throws. `look`
    /// doesn't throw.
    void begin(const Look& look) {
        std::unique_lock<std::mutex> lock(mutex_);
        next_ = look;
        if (running_) {
            return;
        }
        running_ = true;
        lock.unlock();
        join();
        try {
            thread_ = std::thread(&BoardSearch::run, this);
        } catch (...) {
            const std::lock_guard<std::mutex> again(mutex_);
            running_ = false;
            next_ = Look();
            throw;
        }
    }
    bool goesOn() const {
        const std::lock_guard<std::mutex> lock(mutex_);
        return running_;
    }
    /// Waits for the end of the search, at most so long.
    void wait(uint32_t milliseconds) {
        std::unique_lock<std::mutex> lock(mutex_);
        ended_.wait_for(lock, std::chrono::milliseconds(milliseconds), [this] { return !running_; });
    }
    /// What the last complete search has found.
    std::vector<Board> boards() const {
        const std::lock_guard<std::mutex> lock(mutex_);
        return boards_;
    }

private:
    BoardSearch(const BoardSearch&);
    BoardSearch& operator=(const BoardSearch&);

    void join() {
        if (thread_.joinable()) {
            thread_.join();
        }
    }
    void run() {
        std::unique_lock<std::mutex> lock(mutex_);
        while (next_) {
            const Look look = std::move(next_);
            next_ = Look();
            lock.unlock();
            std::vector<Board> found = look();
            lock.lock();
            if (!next_) {
                boards_ = std::move(found);
            }
        }
        running_ = false;
        ended_.notify_all();
    }

    mutable std::mutex mutex_;
    std::condition_variable ended_;
    Look next_;
    bool running_;
    std::vector<Board> boards_;
    std::thread thread_;
};

}  // namespace sdk
}  // namespace tarno2

#endif  // TARNO2_DRIVER_BOARD_SEARCH_H
