#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <vector>

#include "display/file_screens.h"
#include "display/frame_source.h"
#include "display/recorded.h"
#include "display/screen.h"

namespace tarno2 {

/// One record of those that lie one behind the other in a source, as frames from 0 on.
class RecordFrames final : public FrameSource {
public:
    /// `source` outlives it.
    RecordFrames(FrameSource& source, uint64_t framesOfRecord) : source_(source), count_(framesOfRecord) {}

    /// Nobody else reads meanwhile.
    void moveTo(uint64_t record) {
        first_ = record * count_;
        there_ = true;
    }

    [[nodiscard]] size_t frameBytes() const override { return source_.frameBytes(); }
    /// None before it was moved to a record.
    [[nodiscard]] uint64_t frameCount() const override { return there_ ? count_ : 0; }
    [[nodiscard]] uint64_t read(uint64_t firstFrame, uint64_t count, std::byte* out) override;

private:
    FrameSource& source_;
    uint64_t count_;
    uint64_t first_ = 0;
    bool there_ = false;
};

/// The last records of a triggered recording, to be drawn over each other: each as a screen of the same part of it. A
/// new record costs its own frames alone; another part reads all of them again. Memory and reading are bounded: very
/// large records are fewer. One thread.
class RecordStack {
public:
    /// `frames` outlives it. Throws std::bad_alloc.
    RecordStack(FrameSource& frames, const SignalFormat& format, TriggeredRecords records);

    [[nodiscard]] const TriggeredRecords& records() const { return records_; }
    /// Whole records that are there now.
    [[nodiscard]] uint64_t count() const { return records_.count(frames_.frameCount()); }

    /// Makes the screens of up to `most` records before number `end`, in about so many buckets. True when they are
    /// others than before.
    bool show(uint64_t end, size_t most, uint64_t firstFrame, uint64_t endFrame, size_t buckets);
    /// The newest first.
    [[nodiscard]] size_t shown() const { return shown_.size(); }
    [[nodiscard]] const Screen& screen(size_t index) const { return shown_[index]->screen; }

private:
    struct Shown {
        uint64_t record = 0;
        Screen screen;
    };
    struct Part {
        uint64_t firstFrame = 0;
        uint64_t endFrame = 0;
        size_t buckets = 0;
        friend bool operator==(const Part&, const Part&) = default;
    };
    [[nodiscard]] size_t affordable(size_t most, size_t buckets) const;

    FrameSource& frames_;
    size_t frameBytes_;
    TriggeredRecords records_;
    RecordFrames one_;
    FileScreens screens_;
    Part part_;
    std::deque<std::unique_ptr<Shown>> shown_;
};

}  // namespace tarno2
