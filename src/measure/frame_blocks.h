#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
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

/// Memory of copies that are made again and again: new memory costs more than the copying. Any threads.
class FrameBuffers {
public:
    /// One that was kept, with what it held; else an empty one.
    [[nodiscard]] std::vector<std::byte> take();
    void giveBack(std::vector<std::byte> buffer) noexcept;

private:
    std::mutex mutex_;
    std::array<std::vector<std::byte>, 2> kept_;  ///< as many as there are workers that read at a time
};

/// Frames in memory, numbered from `firstFrame` on. Any threads.
class FramesInMemory final : public FrameSource {
public:
    /// `home` gets the memory back at the end.
    FramesInMemory(std::vector<std::byte> frames, size_t frameBytes, uint64_t firstFrame = 0,
                   std::shared_ptr<FrameBuffers> home = nullptr)
        : frames_(std::move(frames)), frameBytes_(frameBytes), firstFrame_(firstFrame), home_(std::move(home)) {}
    ~FramesInMemory() override;
    FramesInMemory(const FramesInMemory&) = delete;
    FramesInMemory& operator=(const FramesInMemory&) = delete;

    [[nodiscard]] FrameSpan span() const { return {firstFrame_, frameCount()}; }

    [[nodiscard]] size_t frameBytes() const override { return frameBytes_; }
    [[nodiscard]] uint64_t frameCount() const override { return firstFrame_ + frames_.size() / frameBytes_; }
    [[nodiscard]] uint64_t read(uint64_t firstFrame, uint64_t count, std::byte* out) override;

private:
    std::vector<std::byte> frames_;
    size_t frameBytes_;
    uint64_t firstFrame_;
    std::shared_ptr<FrameBuffers> home_;
};

}  // namespace tarno2
