#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>

#include "core/storage/data_writer.h"

namespace tarno2 {

/// The frames of a recording's files, by number. Any threads, several at a time.
class FrameSource {
public:
    FrameSource() = default;
    virtual ~FrameSource() = default;
    FrameSource(const FrameSource&) = delete;
    FrameSource& operator=(const FrameSource&) = delete;

    [[nodiscard]] virtual size_t frameBytes() const = 0;
    /// Frames that are there now; grows while a recording runs.
    [[nodiscard]] virtual uint64_t frameCount() const = 0;
    /// Reads up to `count` frames from `firstFrame` on into `out`, which has room for them. Returns how many: fewer at
    /// the end, or when the disk failed.
    [[nodiscard]] virtual uint64_t read(uint64_t firstFrame, uint64_t count, std::byte* out) = 0;
};

/// What the running recording has put into its files so far, that which waits in memory included. The writer must
/// outlive it. Its readers take turns; the acquisition thread never waits for them.
class RunningRecording final : public FrameSource {
public:
    RunningRecording(DataWriter& writer, size_t frameBytes) : writer_(writer), frameBytes_(frameBytes) {}

    [[nodiscard]] size_t frameBytes() const override { return frameBytes_; }
    [[nodiscard]] uint64_t frameCount() const override { return writer_.totalBytes() / frameBytes_; }
    [[nodiscard]] uint64_t read(uint64_t firstFrame, uint64_t count, std::byte* out) override;

private:
    DataWriter& writer_;
    size_t frameBytes_;
    std::mutex mutex_;
};

}  // namespace tarno2
