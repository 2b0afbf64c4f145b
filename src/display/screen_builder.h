#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "display/extremes.h"
#include "display/screen.h"

namespace tarno2 {

/// Frames a bucket when so many frames are to be shown in so many buckets: 1 when every frame can be.
[[nodiscard]] uint64_t bucketFramesFor(uint64_t frames, size_t buckets);
/// `frames` rounded up to whole entries of so many frames.
[[nodiscard]] uint64_t wholeEntries(uint64_t frames, uint64_t framesPerEntry);

/// Fills a screen from frames or entries, which come in the order of time.
class ScreenBuilder {
public:
    /// Empties the screen. All outlive the builder.
    ScreenBuilder(Screen& screen, Extremes& extremes, uint64_t bucketFrames);

    [[nodiscard]] uint64_t bucketFrames() const { return screen_.bucketFrames; }
    /// Adds raw frames that begin at that number: as they are, or to the buckets that they belong to.
    void addFrames(uint64_t firstFrame, const std::byte* frames, uint64_t count);
    /// Adds an entry whose frames lie in that bucket.
    void addEntry(uint64_t bucket, const std::byte* entry);
    /// Ends the last bucket. False when the screen is empty.
    [[nodiscard]] bool finish();

private:
    void addRows(uint64_t firstFrame, const std::byte* rows, size_t count);
    void endBucket();

    Screen& screen_;
    Extremes& extremes_;
    bool open_ = false;
    uint64_t bucket_ = 0;
    std::vector<std::byte> entry_;
    std::vector<std::byte> other_;
    std::vector<std::byte> rows_;
};

}  // namespace tarno2
