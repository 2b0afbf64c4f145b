#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "display/frame_source.h"
#include "measure/frame_span.h"
#include "measure/work_progress.h"

namespace tarno2 {

/// What came of reading frames.
enum class ReadEnd : uint8_t { Whole, Cancelled, NotRead };

/// Parts into which a span is divided for threads: two when it is long enough to pay for a second one, else one. They
/// follow each other and together are the whole.
[[nodiscard]] std::vector<FrameSpan> partsOf(FrameSpan span, size_t frameBytes);

/// Is given the frames of a part, block by block in their order, on the thread of that part.
using BlockUse = std::function<void(size_t part, uint64_t firstFrame, const std::byte* frames, uint64_t count)>;

/// Reads the parts, each on a thread of its own but for the first, which the caller's reads. Every block counts its
/// frames as progress; cancelling ends the reading with the block that is at work. Throws std::bad_alloc before
/// anything is read; `use` throws nothing.
[[nodiscard]] ReadEnd readParts(FrameSource& source, const std::vector<FrameSpan>& parts, WorkProgress& progress,
                                const BlockUse& use);

/// Frames in memory, numbered from `firstFrame` on. Any threads.
class FramesInMemory final : public FrameSource {
public:
    FramesInMemory(std::vector<std::byte> frames, size_t frameBytes, uint64_t firstFrame = 0)
        : frames_(std::move(frames)), frameBytes_(frameBytes), firstFrame_(firstFrame) {}

    [[nodiscard]] size_t frameBytes() const override { return frameBytes_; }
    [[nodiscard]] uint64_t frameCount() const override { return firstFrame_ + frames_.size() / frameBytes_; }
    [[nodiscard]] uint64_t read(uint64_t firstFrame, uint64_t count, std::byte* out) override;

private:
    std::vector<std::byte> frames_;
    size_t frameBytes_;
    uint64_t firstFrame_;
};

}  // namespace tarno2
