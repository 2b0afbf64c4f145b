#pragma once

#include <QObject>
#include <cstdint>
#include <functional>
#include <memory>

#include "platform/thread.h"

namespace tarno2 {

/// Looks for boards on a thread of its own, because a driver that waits for a mute instrument may take minutes: nobody
/// else uses the driver meanwhile. Window thread.
class BoardSearch : public QObject {
    Q_OBJECT

public:
    explicit BoardSearch(QObject* parent = nullptr);
    /// Waits for the end of a search, without limit; nobody hears of it any more.
    ~BoardSearch() override;

    /// Runs `search` on another thread, then `found` on this one: before it returns when that takes a moment, else from
    /// the event loop, after `slow`. When there is no other thread `search` runs on this one. Not while one is busy.
    void run(std::function<void()> search, std::function<void()> found);
    [[nodiscard]] bool busy() const { return run_ != nullptr; }
    void wait();

signals:
    /// The search takes its time.
    void slow();

private:
    struct Run;
    void finish();

    std::shared_ptr<Run> run_;  ///< null: none is busy
    Thread thread_;
};

}  // namespace tarno2
