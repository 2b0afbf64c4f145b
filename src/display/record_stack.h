#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
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

/// What of each record is drawn, in about so many buckets.
struct RecordPart {
    uint64_t firstFrame = 0;
    uint64_t endFrame = 0;
    size_t buckets = 0;
    friend bool operator==(const RecordPart&, const RecordPart&) = default;
};

/// Records to be drawn over each other, by their numbers, and what of each.
struct RecordWish {
    uint64_t begin = 0;
    uint64_t end = 0;
    RecordPart part;
    friend bool operator==(const RecordWish&, const RecordWish&) = default;
};

/// A record as it is drawn.
struct RecordScreen {
    uint64_t record = 0;
    Screen screen;
};

/// Makes screens of records. One thread.
class RecordReader {
public:
    /// `frames` outlives it. Throws std::bad_alloc.
    RecordReader(FrameSource& frames, const SignalFormat& format, uint64_t framesOfRecord)
        : one_(frames, framesOfRecord), screens_(one_, format) {}

    /// Null when the record can't be read.
    [[nodiscard]] std::unique_ptr<RecordScreen> read(uint64_t record, const RecordPart& part);

private:
    RecordFrames one_;
    FileScreens screens_;
};

/// The last records of a triggered recording, to be drawn over each other: each as a screen of the same part of it. A
/// new record costs its own frames alone; another part needs all of them again. Memory and reading are bounded: very
/// large records are fewer. Reads nothing itself. One thread.
class RecordStack {
public:
    RecordStack(const SignalFormat& format, TriggeredRecords records)
        : frameBytes_(format.frameBytes()), records_(records) {}

    [[nodiscard]] const TriggeredRecords& records() const { return records_; }
    /// Up to `most` records before number `end`, as many as can be afforded.
    [[nodiscard]] RecordWish wish(uint64_t end, size_t most, const RecordPart& part) const;
    /// Records of the wish that are not there as wished, the newest first.
    [[nodiscard]] std::vector<uint64_t> missing(const RecordWish& wish) const;
    /// Bytes that a screen of the part is made of.
    [[nodiscard]] uint64_t bytesOf(const RecordPart& part) const;

    /// Takes such screens, and drops what is no part of the wish. True when there are others than before.
    bool take(const RecordWish& wish, std::vector<std::unique_ptr<RecordScreen>> screens);
    /// The newest first.
    [[nodiscard]] size_t shown() const { return shown_.size(); }
    [[nodiscard]] const Screen& screen(size_t index) const { return shown_[index]->screen; }

private:
    size_t frameBytes_;
    TriggeredRecords records_;
    RecordPart part_;
    std::vector<std::unique_ptr<RecordScreen>> shown_;
};

}  // namespace tarno2
