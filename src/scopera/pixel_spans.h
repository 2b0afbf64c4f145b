#pragma once

#include <cstddef>
#include <limits>
#include <vector>

#include "scopera/samples.h"

namespace tarno2 {

template <typename Sample>
class FrameExtremes;

/// From the least to the greatest code of a curve; empty until it includes one.
struct CodeSpan {
    double low = std::numeric_limits<double>::infinity();
    double high = -std::numeric_limits<double>::infinity();

    [[nodiscard]] bool empty() const { return low > high; }
    void include(double code) {
        low = code < low ? code : low;
        high = code > high ? code : high;
    }
    /// An empty one changes nothing.
    void include(const CodeSpan& other) {
        low = other.low < low ? other.low : low;
        high = other.high > high ? other.high : high;
    }
};

/// What a picture needs to know of the frames: for each column of pixels and each curve the span of its codes. Made
/// once for given frames, range and width; so the cost of a paint depends on the pixels, not on the samples.
class PixelSpans {
public:
    /// The range from `lower` to `upper` is parted into `pixels` columns. With `joined` a span also takes in the line
    /// to the samples outside of its pixel, as far as it runs within it: neighbouring spans touch, a steep edge becomes
    /// a vertical line, and between samples that are pixels apart the spans follow the line.
    void build(const SCOPERAFrames& frames, double lower, double upper, size_t pixels, bool joined);
    void clear();

    [[nodiscard]] size_t pixels() const { return firstFrames_.empty() ? 0 : firstFrames_.size() - 1; }
    [[nodiscard]] size_t columns() const { return columns_; }
    /// The spans of a pixel, one a curve.
    [[nodiscard]] const CodeSpan* at(size_t pixel) const { return spans_.data() + pixel * columns_; }
    /// The frames of a pixel are those from here to that of the next pixel.
    [[nodiscard]] size_t firstFrame(size_t pixel) const { return firstFrames_[pixel]; }
    /// The codes of a curve in the whole range, without lines to samples outside of it.
    [[nodiscard]] const CodeSpan& whole(size_t column) const { return whole_[column]; }

private:
    void findFrames(const SCOPERAFrames& frames, double lower, double upper, size_t pixels);
    template <typename Sample>
    void reduce(const Sample* samples);
    template <typename Sample>
    void reducePixels(const Sample* samples, size_t begin, size_t end, FrameExtremes<Sample>& extremes,
                      std::vector<CodeSpan>& whole);
    template <typename Sample>
    void join(const Sample* samples, const SCOPERAFrames& frames, double lower, double upper);

    size_t columns_ = 0;
    std::vector<size_t> firstFrames_;
    std::vector<CodeSpan> spans_;
    std::vector<CodeSpan> whole_;
};

}  // namespace tarno2
