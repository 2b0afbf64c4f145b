#include "scopera/curve_raster.h"

#include <algorithm>
#include <bit>

namespace tarno2 {

namespace {

/// One column of pixels while it is filled, and which of them are.
class PixelColumn {
public:
    explicit PixelColumn(size_t height) : height_(height), filled_((height + 63) / 64) {}

    void begin(uint32_t* pixels) {
        pixels_ = pixels;
        left_ = height_;
        std::fill_n(pixels, height_, 0);
        std::fill(filled_.begin(), filled_.end(), 0);
    }
    [[nodiscard]] bool full() const { return left_ == 0; }

    /// Fills what is free of the rows from `top` to `bottom`, both included and within the column.
    void fill(size_t top, size_t bottom, uint32_t argb) {
        const size_t lastWord = bottom / 64;
        for (size_t word = top / 64; word <= lastWord; ++word) {
            uint64_t wanted = ~uint64_t{0};
            if (word == top / 64) {
                wanted &= ~uint64_t{0} << (top % 64);
            }
            if (word == lastWord) {
                wanted &= ~uint64_t{0} >> (63 - bottom % 64);
            }
            const uint64_t fresh = wanted & ~filled_[word];
            if (fresh != 0) {
                filled_[word] |= wanted;
                fillBits(word * 64, fresh, argb);
            }
        }
    }

private:
    void fillBits(size_t row, uint64_t bits, uint32_t argb) {
        while (bits != 0) {
            const auto begin = static_cast<size_t>(std::countr_zero(bits));
            const auto count = static_cast<size_t>(std::countr_one(bits >> begin));
            std::fill_n(pixels_ + row + begin, count, argb);
            left_ -= count;
            if (begin + count == 64) {
                return;
            }
            bits &= ~uint64_t{0} << (begin + count);
        }
    }

    size_t height_;
    size_t left_ = 0;
    uint32_t* pixels_ = nullptr;
    std::vector<uint64_t> filled_;
};

/// A curve that is drawn: row = code * slope + origin.
struct Curve {
    size_t column;
    uint32_t argb;
    double slope;
    double origin;
};

std::vector<Curve> visibleCurves(const PixelSpans& spans, const std::vector<CurveStyle>& styles, RowRange range,
                                 size_t height) {
    std::vector<Curve> curves;
    const double rows = (static_cast<double>(height) - 1.0) / (range.upper - range.lower);
    for (size_t i = 0; i < std::min(styles.size(), spans.columns()); ++i) {
        if (styles[i].visible) {
            curves.push_back({i, styles[i].argb, -styles[i].scale * rows, (range.upper - styles[i].offset) * rows});
        }
    }
    return curves;
}

/// Fills the rows of a span, thickened by `extra` rows downwards.
void fillSpan(PixelColumn& column, const Curve& curve, const CodeSpan& span, size_t extra, size_t height) {
    if (span.empty()) {
        return;
    }
    // Half a row more, so that cutting off the fraction rounds.
    const double a = span.low * curve.slope + curve.origin + 0.5;
    const double b = span.high * curve.slope + curve.origin + 0.5;
    const double top = std::min(a, b);
    const double bottom = std::max(a, b) + static_cast<double>(extra);
    const auto end = static_cast<double>(height);
    // Said in this way, it also leaves out what is no number.
    if (!(bottom >= 0.0 && top < end)) {
        return;
    }
    const auto first = static_cast<size_t>(std::max(top, 0.0));
    const auto last = static_cast<size_t>(std::min(bottom, end - 0.5));
    column.fill(first, std::max(first, last), curve.argb);
}

/// Columns that are filled one below the other in a small memory and then turned into rows: writing down the columns of
/// a whole picture would touch another cache line with each pixel.
constexpr size_t kTileWidth = 16;

template <typename Fill>
void fillColumns(const PixelTarget& target, Fill fill) {
    // An odd count of cache lines, so that the columns don't compete for the same ones.
    const size_t stride = 16 * (((target.height + 15) / 16) | 1);
    std::vector<uint32_t> tile(stride * kTileWidth);
    PixelColumn column(target.height);
    for (size_t left = 0; left < target.width; left += kTileWidth) {
        const size_t width = std::min(kTileWidth, target.width - left);
        for (size_t i = 0; i < width; ++i) {
            column.begin(tile.data() + i * stride);
            fill(left + i, column);
        }
        for (size_t row = 0; row < target.height; ++row) {
            uint32_t* const pixels = target.pixels + row * target.stride + left;
            for (size_t i = 0; i < width; ++i) {
                pixels[i] = tile[i * stride + row];
            }
        }
    }
}

/// Most samples of a pixel, beside its extremes, that are drawn as points.
constexpr size_t kPointsInPixel = 8;

template <typename Sample>
void fillPoints(const Sample* samples, const PixelSpans& spans, size_t pixel, const Curve& curve, size_t extra,
                size_t height, PixelColumn& column) {
    const auto point = [&](double code) { fillSpan(column, curve, {code, code}, extra, height); };
    const CodeSpan& span = spans.at(pixel)[curve.column];
    if (span.empty()) {
        return;
    }
    point(span.low);
    point(span.high);
    const size_t first = spans.firstFrame(pixel);
    const size_t count = spans.firstFrame(pixel + 1) - first;
    const size_t step = (count + kPointsInPixel - 1) / kPointsInPixel;
    for (size_t i = 0; i < count; i += step) {
        point(static_cast<double>(samples[(first + i) * spans.columns() + curve.column]));
    }
}

}  // namespace

void drawLines(const PixelSpans& spans, const std::vector<CurveStyle>& styles, RowRange range, size_t thickness,
               const PixelTarget& target) {
    const std::vector<Curve> curves = visibleCurves(spans, styles, range, target.height);
    fillColumns(target, [&](size_t x, PixelColumn& column) {
        for (size_t i = 0; i < curves.size() && !column.full(); ++i) {
            for (size_t back = 0; back < thickness && back <= x && x - back < spans.pixels(); ++back) {
                fillSpan(column, curves[i], spans.at(x - back)[curves[i].column], thickness - 1, target.height);
            }
        }
    });
}

void drawPoints(const SCOPERAFrames& frames, const PixelSpans& spans, const std::vector<CurveStyle>& styles,
                RowRange range, size_t size, const PixelTarget& target) {
    std::vector<Curve> curves = visibleCurves(spans, styles, range, target.height);
    const size_t before = size / 2;
    for (Curve& curve : curves) {
        curve.origin -= static_cast<double>(before);
    }
    withSamples(frames, [&](const auto* samples) {
        fillColumns(target, [&](size_t x, PixelColumn& column) {
            const size_t first = x + before + 1 > size ? x + before + 1 - size : 0;
            const size_t last = std::min(x + before, spans.pixels() - 1);
            for (size_t i = 0; i < curves.size() && !column.full(); ++i) {
                for (size_t pixel = first; pixel <= last; ++pixel) {
                    fillPoints(samples, spans, pixel, curves[i], size - 1, target.height, column);
                }
            }
        });
    });
}

}  // namespace tarno2
