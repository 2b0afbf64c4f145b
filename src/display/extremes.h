#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "display/signal_format.h"

namespace tarno2 {

/// The arithmetic of minima and maxima for one format of frames.
///
/// An entry stands for a stretch of neighbouring frames: the smallest code of each channel and, when there are digital
/// lines, the lines that were 1 in all frames; then the largest codes and the lines that were 1 in some. One thread.
class Extremes {
public:
    /// The format has at least one channel.
    [[nodiscard]] static std::unique_ptr<Extremes> create(const SignalFormat& format);
    virtual ~Extremes() = default;
    Extremes(const Extremes&) = delete;
    Extremes& operator=(const Extremes&) = delete;

    [[nodiscard]] size_t frameBytes() const { return frameBytes_; }
    [[nodiscard]] size_t entryBytes() const { return entryBytes_; }

    /// Makes `count` entries of raw frames, `framesPerEntry` (at least 1) each.
    virtual void reduce(const std::byte* frames, size_t framesPerEntry, size_t count, std::byte* entries) = 0;
    /// Widens an entry by another one.
    virtual void merge(std::byte* entry, const std::byte* other) const = 0;
    /// An entry as two raw frames, smallest and largest, from which the converter takes the same codes and lines.
    virtual void toFrames(const std::byte* entry, std::byte* twoFrames) const = 0;
    /// The codes of a channel.
    [[nodiscard]] virtual int32_t minimum(const std::byte* entry, size_t channel) const = 0;
    [[nodiscard]] virtual int32_t maximum(const std::byte* entry, size_t channel) const = 0;

protected:
    Extremes(size_t frameBytes, size_t entryBytes) : frameBytes_(frameBytes), entryBytes_(entryBytes) {}

private:
    size_t frameBytes_;
    size_t entryBytes_;
};

}  // namespace tarno2
