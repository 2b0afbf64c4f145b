#include "ui/records_signal.h"

#include <algorithm>
#include <utility>

namespace tarno2 {

namespace {

constexpr uint64_t kReadAtOnce = uint64_t{8} << 20;  ///< bytes; a paint takes some milliseconds for so much

/// Frames that are there until the work on them is cancelled, so that it ends with the block that is being read.
class FramesUntilCancelled final : public FrameSource {
public:
    FramesUntilCancelled(FrameSource& source, const WorkProgress& progress) : source_(source), progress_(progress) {}

    [[nodiscard]] size_t frameBytes() const override { return source_.frameBytes(); }
    [[nodiscard]] uint64_t frameCount() const override { return source_.frameCount(); }
    [[nodiscard]] uint64_t read(uint64_t firstFrame, uint64_t count, std::byte* out) override {
        return progress_.cancelled() ? 0 : source_.read(firstFrame, count, out);
    }

private:
    FrameSource& source_;
    const WorkProgress& progress_;
};

std::vector<std::unique_ptr<RecordScreen>> readAll(RecordReader& reader, const std::vector<uint64_t>& records,
                                                   const RecordPart& part) {
    std::vector<std::unique_ptr<RecordScreen>> screens;
    for (const uint64_t record : records) {
        if (auto screen = reader.read(record, part)) {
            screens.push_back(std::move(screen));
        }
    }
    return screens;
}

}  // namespace

RecordsSignal::RecordsSignal(const ShownSignal& of, FrameSource& frames, TriggeredRecords records, size_t most,
                             std::function<void()> read)
    : ShownSignal(of.format(), of.channels()),
      frames_(frames),
      stack_(of.format(), records),
      reader_(frames, of.format(), records.frames),
      newest_(frames, records.frames),
      screens_(newest_, of.format()),
      most_(most),
      read_(std::move(read)) {}

bool RecordsSignal::update() {
    const uint64_t count = stack_.records().count(frames_.frameCount());
    if (count == count_ || count == 0) {
        return false;
    }
    count_ = count;
    newest_.moveTo(count - 1);
    return true;
}

// Its own: it stays at this record when the next one comes.
std::shared_ptr<FrameSource> RecordsSignal::rawFrames(FrameSpan /*span*/) {
    if (count_ == 0) {
        return nullptr;
    }
    auto record = std::make_shared<RecordFrames>(frames_, stack_.records().frames);
    record->moveTo(count_ - 1);
    return record;
}

// What was asked for and could not be read is not asked for again. Records that come while the worker reads the same
// part of those before them are read after: it would never end otherwise.
const RecordStack* RecordsSignal::earlier(uint64_t first, uint64_t end, size_t buckets, bool& changed) {
    changed = takeRead();
    const RecordWish wish = stack_.wish(count_ - std::min<uint64_t>(count_, 1), most_ - 1, {first, end, buckets});
    std::vector<uint64_t> missing = stack_.missing(wish);
    if (missing.size() * stack_.bytesOf(wish.part) <= kReadAtOnce) {
        if (std::exchange(asked_, std::nullopt)) {
            worker_.stop();
        }
        changed = stack_.take(wish, readAll(reader_, missing, wish.part)) || changed;
    } else if (asked_ != wish && !(asked_ && asked_->part == wish.part && worker_.busy())) {
        startWorker(wish, std::move(missing));
    }
    return &stack_;
}

// Nothing when another wish was read at once meanwhile.
bool RecordsSignal::takeRead() {
    std::optional<Screens> done;
    {
        const std::lock_guard lock(mutex_);
        done = std::exchange(done_, std::nullopt);
    }
    return done && asked_ && stack_.take(*asked_, std::move(*done));
}

void RecordsSignal::startWorker(const RecordWish& wish, std::vector<uint64_t> missing) {
    asked_ = wish;
    worker_.stop();
    {
        const std::lock_guard lock(mutex_);
        done_.reset();
    }
    worker_.start([this, part = wish.part, records = std::move(missing)](WorkProgress& progress) {
        FramesUntilCancelled frames(frames_, progress);
        RecordReader reader(frames, format(), stack_.records().frames);
        Screens screens = readAll(reader, records, part);
        if (progress.cancelled()) {
            return;
        }
        {
            const std::lock_guard lock(mutex_);
            done_ = std::move(screens);
        }
        read_();
    });
}

}  // namespace tarno2
