#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "scopera/pixel_spans.h"

namespace tarno2 {

/// How a curve looks, and its way from code to Y.
struct CurveStyle {
    uint32_t argb = 0;  ///< opaque
    bool visible = false;
    bool marked = false;  ///< drawn in front of the others, and thicker
    double scale = 1.0;
    double offset = 0.0;
    size_t lane = 0;  ///< the band that it lies in
};

/// The pixels to fill: rows of `width` out of `stride`, premultiplied ARGB.
struct PixelTarget {
    uint32_t* pixels;
    size_t stride;
    size_t width;
    size_t height;
};

/// Rows of the target that stand for a range of Y: the uppermost for `upper`, the lowest for `lower`. Nothing of its
/// curves is drawn outside of them. Bands don't overlap.
struct RowBand {
    ptrdiff_t top;  ///< bands may lie in part, or whole, outside the target
    ptrdiff_t rows;
    double lower;
    double upper;
    friend bool operator==(const RowBand&, const RowBand&) = default;
};

/// A curve that is drawn: row of the target = code * slope + origin, within the rows from `first` up to `end`.
struct BandCurve {
    size_t column;
    uint32_t argb;
    double slope;
    double origin;
    size_t thickness;  ///< pixels
};

/// The curves of a band that can be seen, the one in front first.
struct BandCurves {
    size_t first;
    size_t end;
    std::vector<BandCurve> curves;
};

/// Sorts the visible curves among the first `columns` styles into their bands; bands outside the target are left out.
[[nodiscard]] std::vector<BandCurves> curvesInBands(const std::vector<CurveStyle>& styles, size_t columns,
                                                    const std::vector<RowBand>& bands, size_t thickness, size_t height);

// All three fill the whole target: where no curve lies it becomes transparent.

/// Many samples a pixel: the spans, joined and as wide as the target. What a curve runs through for several pixels of
/// the time axis, from its least to its greatest code, becomes a veil that shows what lies behind it; what stands out
/// of that, an edge, a spike, the rim of a noise, is opaque. The cost depends on the borders between spans, not on the
/// rows between them.
void drawSpans(const PixelSpans& spans, const std::vector<BandCurves>& bands, const PixelTarget& target);
/// Samples that are further apart than pixels: the lines between them, each pixel by the part that a line covers. Dots
/// of `dot` pixels mark the samples; 0: none.
void drawSparseLines(const SCOPERAFrames& frames, double lower, double upper, double dot,
                     const std::vector<BandCurves>& bands, const PixelTarget& target);
/// Points: every sample, or when there are many in a pixel its extremes and a few evenly chosen ones; squares of
/// `size` pixels. The spans are those of the frames, not joined.
void drawPoints(const SCOPERAFrames& frames, const PixelSpans& spans, const std::vector<BandCurves>& bands, size_t size,
                const PixelTarget& target);

}  // namespace tarno2
