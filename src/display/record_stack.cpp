#include "display/record_stack.h"

#include <algorithm>
#include <utility>

namespace tarno2 {

namespace {

constexpr uint64_t kMostMemory = uint64_t{64} << 20;
constexpr uint64_t kMostRead = uint64_t{256} << 20;
constexpr uint64_t kRowsPerBucket =
    4;  // a screen has every frame up to two a bucket, and twice as many rows as buckets

}  // namespace

uint64_t RecordFrames::read(uint64_t firstFrame, uint64_t count, std::byte* out) {
    const uint64_t left = count_ - std::min(firstFrame, count_);
    return source_.read(first_ + firstFrame, std::min(count, left), out);
}

RecordStack::RecordStack(FrameSource& frames, const SignalFormat& format, TriggeredRecords records)
    : frames_(frames),
      frameBytes_(format.frameBytes()),
      records_(records),
      one_(frames, records.frames),
      screens_(one_, format) {}

size_t RecordStack::affordable(size_t most, size_t buckets) const {
    const uint64_t rows = std::min<uint64_t>(kRowsPerBucket * buckets, records_.frames);
    const uint64_t byMemory = kMostMemory / std::max<uint64_t>(rows * frameBytes_, 1);
    const uint64_t byReading = kMostRead / std::max<uint64_t>(records_.frames * frameBytes_, 1);
    return static_cast<size_t>(std::min<uint64_t>(most, std::max<uint64_t>(std::min(byMemory, byReading), 1)));
}

bool RecordStack::show(uint64_t end, size_t most, uint64_t firstFrame, uint64_t endFrame, size_t buckets) {
    const Part part{firstFrame, endFrame, buckets};
    bool changed = false;
    if (part != part_) {
        changed = !shown_.empty();
        shown_.clear();
        part_ = part;
    }
    end = std::min(end, count());
    const uint64_t begin = end - std::min<uint64_t>(end, affordable(most, buckets));
    const auto outside = [&](const auto& one) { return one->record < begin || one->record >= end; };
    changed = std::erase_if(shown_, outside) > 0 || changed;
    // Those that are kept follow each other; what is missing is newer, or older when more are wanted than before.
    const auto make = [&](uint64_t record) {
        auto one = std::make_unique<Shown>();
        one->record = record;
        one_.moveTo(record);
        return screens_.build(firstFrame, endFrame, buckets, one->screen) ? std::move(one) : nullptr;
    };
    uint64_t next = shown_.empty() ? begin : shown_.front()->record + 1;
    for (; next < end; ++next) {
        if (auto one = make(next)) {
            shown_.push_front(std::move(one));
            changed = true;
        }
    }
    uint64_t last = shown_.empty() ? begin : shown_.back()->record;
    for (; last > begin; --last) {
        auto one = make(last - 1);
        if (!one) {
            break;
        }
        shown_.push_back(std::move(one));
        changed = true;
    }
    return changed;
}

}  // namespace tarno2
