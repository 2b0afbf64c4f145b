#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "display/record_stack.h"
#include "measure/latest_worker.h"
#include "ui/shown_signal.h"

namespace tarno2 {

/// The newest record of a triggered signal, with those before it behind it. Frame `prehistory` of each is its trigger.
/// What is behind it comes at once when little has to be read, else a worker reads it and the earlier picture stays
/// until then. It goes before the signal that it is of. Window thread.
class RecordsSignal final : public ShownSignal {
public:
    /// Up to `most` records. `read` is called on the worker's thread when there is more to draw. Throws std::bad_alloc.
    RecordsSignal(const ShownSignal& of, FrameSource& frames, TriggeredRecords records, size_t most,
                  std::function<void()> read);

    /// Goes on to the newest record. True when that is another one.
    bool update();
    [[nodiscard]] uint64_t prehistory() const { return stack_.records().prehistory; }
    [[nodiscard]] ScreenSource& screens() override { return screens_; }
    [[nodiscard]] ScreenSource& wholeCourse() override { return screens_; }
    [[nodiscard]] std::shared_ptr<FrameSource> rawFrames(FrameSpan span) override;
    [[nodiscard]] uint64_t firstRawFrame() const override { return 0; }
    [[nodiscard]] const RecordStack* earlier(uint64_t first, uint64_t end, size_t buckets, bool& changed) override;

private:
    using Screens = std::vector<std::unique_ptr<RecordScreen>>;
    [[nodiscard]] bool takeRead();
    void startWorker(const RecordWish& wish, std::vector<uint64_t> missing);

    FrameSource& frames_;
    RecordStack stack_;
    RecordReader reader_;
    RecordFrames newest_;
    FileScreens screens_;
    uint64_t count_ = 0;  ///< of the records, the newest one included
    size_t most_;
    std::function<void()> read_;
    std::optional<RecordWish> asked_;  ///< of the worker last
    std::mutex mutex_;
    std::optional<Screens> done_;  ///< by the worker; under the lock
    LatestWorker worker_;          ///< goes first
};

}  // namespace tarno2
