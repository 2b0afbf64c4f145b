#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "display/signal_format.h"
#include "measure/edge_times.h"

namespace tarno2 {

/// The digital lines of a frame, line 0 in bit 0; none above the last line.
[[nodiscard]] uint32_t linesOf(const SampleWordFormat& word, const std::byte* frame);

/// Looks for edges of the digital lines in frames that follow each other. An edge is at the first frame of the new
/// level. One thread.
class LineWatch {
public:
    using Found = std::function<void(size_t line, bool rising, double time)>;

    /// Times count from frame `origin`.
    LineWatch(const SignalFormat& format, uint64_t origin, Found found = {});

    void add(uint64_t firstFrame, const std::byte* frames, uint64_t count);
    /// Takes over the edges of frames that follow; nothing is added after.
    void join(const LineWatch& next);
    [[nodiscard]] size_t count() const { return edges_.size(); }
    [[nodiscard]] const EdgeTimes& edges(size_t line) const { return edges_[line]; }

private:
    template <typename Word>
    void lookAt(const Word* words, double firstTime, uint64_t count);
    void change(uint32_t lines, double time);

    SampleWordFormat word_;
    size_t channels_;
    uint64_t origin_;
    Found found_;
    bool begun_ = false;
    uint32_t first_ = 0;  ///< lines of the first frame
    double start_ = 0.0;  ///< its time
    uint32_t last_ = 0;   ///< lines of the last frame
    std::vector<EdgeTimes> edges_;
};

}  // namespace tarno2
