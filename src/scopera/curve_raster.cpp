#include "scopera/curve_raster.h"

#include <algorithm>

#include "scopera/pixel_tile.h"

namespace tarno2 {

namespace {

/// Most samples of a pixel, beside its extremes, that are drawn as points.
constexpr size_t kPointsInPixel = 8;

BandCurve inBand(const CurveStyle& style, size_t column, const RowBand& band, size_t thickness) {
    const double rows = (static_cast<double>(band.rows) - 1.0) / (band.upper - band.lower);
    return {column, style.argb, -style.scale * rows, static_cast<double>(band.top) + (band.upper - style.offset) * rows,
            style.marked ? 2 * thickness : thickness};
}

/// A square of `size` rows from the row of the code on, cut at the ends of the band.
void fillPoint(uint32_t* pixels, const BandCurves& band, const BandCurve& curve, double code, size_t size) {
    // Half a row more, so that cutting off the fraction rounds.
    const size_t above = size / 2;
    const double top = code * curve.slope + curve.origin + 0.5 - static_cast<double>(above);
    const double bottom = top + static_cast<double>(size);
    // Said in this way, it also leaves out what is no number.
    if (!(bottom >= static_cast<double>(band.first) && top < static_cast<double>(band.end))) {
        return;
    }
    const auto first = std::max(static_cast<size_t>(std::max(top, 0.0)), band.first);
    const auto end = std::min(static_cast<size_t>(bottom), band.end);
    if (first < end) {
        std::fill(pixels + first, pixels + end, curve.argb);
    }
}

template <typename Sample>
void fillPoints(const Sample* samples, const PixelSpans& spans, size_t pixel, const BandCurves& band,
                const BandCurve& curve, size_t size, uint32_t* pixels) {
    const CodeSpan& span = spans.at(pixel)[curve.column];
    if (span.empty()) {
        return;
    }
    fillPoint(pixels, band, curve, span.low, size);
    fillPoint(pixels, band, curve, span.high, size);
    const size_t first = spans.firstFrame(pixel);
    const size_t count = spans.firstFrame(pixel + 1) - first;
    const size_t step = (count + kPointsInPixel - 1) / kPointsInPixel;
    for (size_t i = 0; i < count; i += step) {
        fillPoint(pixels, band, curve, static_cast<double>(samples[(first + i) * spans.columns() + curve.column]),
                  size);
    }
}

}  // namespace

std::vector<BandCurves> curvesInBands(const std::vector<CurveStyle>& styles, size_t columns,
                                      const std::vector<RowBand>& bands, size_t thickness, size_t height) {
    const auto rows = static_cast<ptrdiff_t>(height);
    std::vector<BandCurves> result;
    result.reserve(bands.size());
    for (const RowBand& band : bands) {
        result.push_back({static_cast<size_t>(std::clamp<ptrdiff_t>(band.top, 0, rows)),
                          static_cast<size_t>(std::clamp<ptrdiff_t>(band.top + band.rows, 0, rows)),
                          {}});
    }
    for (const bool marked : {true, false}) {
        for (size_t i = 0; i < std::min(styles.size(), columns); ++i) {
            const CurveStyle& style = styles[i];
            if (style.visible && style.marked == marked && style.lane < bands.size()) {
                result[style.lane].curves.push_back(inBand(style, i, bands[style.lane], thickness));
            }
        }
    }
    std::erase_if(result, [](const BandCurves& band) { return band.first >= band.end || band.curves.empty(); });
    return result;
}

void drawPoints(const SCOPERAFrames& frames, const PixelSpans& spans, const std::vector<BandCurves>& bands, size_t size,
                const PixelTarget& target) {
    const size_t before = size / 2;
    withSamples(frames, [&](const auto* samples) {
        fillColumns(target, [&](size_t x, uint32_t* pixels) {
            const size_t first = x + before + 1 > size ? x + before + 1 - size : 0;
            const size_t last = std::min(x + before + 1, spans.pixels());
            for (const BandCurves& band : bands) {
                for (size_t i = band.curves.size(); i-- > 0;) {
                    for (size_t pixel = first; pixel < last; ++pixel) {
                        fillPoints(samples, spans, pixel, band, band.curves[i], size, pixels);
                    }
                }
            }
        });
    });
}

}  // namespace tarno2
