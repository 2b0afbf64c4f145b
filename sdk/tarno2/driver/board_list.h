// SPDX-License-Identifier: MIT

#ifndef TARNO2_DRIVER_BOARD_LIST_H
#define TARNO2_DRIVER_BOARD_LIST_H

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
    ~BoardSearch() { end(); }
    /// Waits for the end of a search; none follows.
    void end() {
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

/// The boards of a driver as the host was told of them last. A search is quick, and then made when the list is asked
/// for, or long, and then made on a thread and when something has changed. The caller locks.
class BoardList {
public:
    /// How to search with the settings of now.
    struct Search {
        BoardSearch::Look look;
        bool isLong;
    };

    BoardList() : begun_(false), counted_(false) {}
    /// The settings have changed.
    void forget() { begun_ = counted_ = false; }
    /// What is there; of a long search that goes on, what it has told after 100 ms at most. A host asks for a list
    /// twice, first only for the count: the entries are then those that were counted.
    const std::vector<Board>& ask(const Search& search, bool onlyCounts) {
        const bool wereCounted = counted_ && !onlyCounts;
        counted_ = false;
        if (!wereCounted) {
            beginOnce(search);
            told_ = search.isLong ? search_.boards() : search.look();
        }
        counted_ = onlyCounts && !told_.empty();
        return told_;
    }
    const std::vector<Board>& told() const { return told_; }
    /// Before what a search uses goes away.
    void end() { search_.end(); }
    /// Whether a long search goes on. The first one begins with this question at the latest: a host that asks it before
    /// the list must not take an incomplete list for all there is.
    bool searching(const Search& search) {
        beginOnce(search);
        return search_.goesOn();
    }
    void searchAnew(const Search& search) {
        counted_ = false;
        if (search.isLong) {
            search_.begin(search.look);
            begun_ = true;
        }
    }

    /// The board that the host means by a number. Where that is quick it is looked for anew, for it may have been
    /// pulled out, and others have other numbers then. False when it is not there, with its name if it was.
    bool find(uint32_t number, const Search& search, Board& board) {
        const bool wasTold = !told_.empty();
        const std::vector<Board> told = wasTold ? told_ : ask(search, false);
        if (number == 0 || number > told.size()) {
            return false;
        }
        board = told[number - 1];
        if (search.isLong || !wasTold) {
            return true;
        }
        const std::vector<Board> now = search.look();
        for (size_t i = 0; i < now.size(); ++i) {
            if (now[i].id == board.id && (!board.id.empty() || i == number - 1)) {
                board = now[i];
                return true;
            }
        }
        return false;
    }

private:
    void beginOnce(const Search& search) {
        const uint32_t patience = 100;
        if (!begun_ && search.isLong) {
            searchAnew(search);
            search_.wait(patience);
        }
    }

    std::vector<Board> told_;
    bool begun_;
    bool counted_;  // the entries of `told_` are asked for next
    BoardSearch search_;
};

}  // namespace sdk
}  // namespace tarno2

#endif  // TARNO2_DRIVER_BOARD_LIST_H
