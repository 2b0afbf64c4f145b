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
    double scale = 1.0;
    double offset = 0.0;
};

/// The pixels to fill: rows of `width` out of `stride`, premultiplied ARGB.
struct PixelTarget {
    uint32_t* pixels;
    size_t stride;
    size_t width;
    size_t height;
};

/// What the rows stand for: the uppermost for `upper`, the lowest for `lower`.
struct RowRange {
    double lower;
    double upper;
};

/// Fills all pixels of the target: where no curve lies they become transparent. A column of pixels is filled from the
/// front curve, the first, to the back one, and what is filled already is skipped by a bit mask: no pixel is written
/// twice, and a hidden curve costs next to nothing. `thickness` is in pixels.
///
/// Lines from joined spans as wide as the target.
void drawLines(const PixelSpans& spans, const std::vector<CurveStyle>& styles, RowRange range, size_t thickness,
               const PixelTarget& target);
/// Points: every sample, or when there are many in a pixel its extremes and a few evenly chosen ones; squares of
/// `size` pixels. The spans are those of the frames, not joined.
void drawPoints(const SCOPERAFrames& frames, const PixelSpans& spans, const std::vector<CurveStyle>& styles,
                RowRange range, size_t size, const PixelTarget& target);

}  // namespace tarno2
