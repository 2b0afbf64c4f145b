#include "ui/board_search.h"

#include <QMetaObject>
#include <utility>

#include "config/logs/debug_log.h"
#include "platform/event.h"

namespace tarno2 {

namespace {

constexpr uint32_t kMomentMs = 300;  // a driver that answers needs no more, and nobody takes it for a standstill

}  // namespace

struct BoardSearch::Run {
    std::function<void()> search;
    std::function<void()> found;
    Event ended;
};

BoardSearch::BoardSearch(QObject* parent) : QObject(parent) {}

BoardSearch::~BoardSearch() {
    wait();
}

void BoardSearch::run(std::function<void()> search, std::function<void()> found) {
    run_ = std::make_shared<Run>();
    run_->search = std::move(search);
    run_->found = std::move(found);
    const auto body = [this, now = run_] {
        try {
            now->search();
        } catch (const std::exception& error) {
            DEBUG_LOG("!!!! BoardSearch: %s", error.what());
        } catch (...) {
            DEBUG_LOG("!!!! BoardSearch");
        }
        now->ended.set();
        // Whoever waited in vain for the end hears of it this way.
        QMetaObject::invokeMethod(
            this,
            [this, now] {
                if (run_ == now) {
                    finish();
                }
            },
            Qt::QueuedConnection);
    };
    if (!run_->ended.valid() || !thread_.create(body)) {
        run_->search();
        finish();
        return;
    }
    thread_.resume();
    if (run_->ended.wait(kMomentMs) == WaitResult::Signalled) {
        finish();
    } else {
        emit slow();
    }
}

void BoardSearch::finish() {
    thread_.join();
    thread_ = Thread();
    const auto found = std::move(run_->found);
    run_.reset();
    found();
}

void BoardSearch::wait() {
    thread_.join();
    run_.reset();
}

}  // namespace tarno2
