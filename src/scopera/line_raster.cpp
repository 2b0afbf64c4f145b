#include <algorithm>
#include <array>
#include <cmath>

#include "scopera/curve_raster.h"
#include "scopera/pixel_tile.h"

namespace tarno2 {

namespace {

/// Lines of one pixel look thinner than they are, because most of them lie on two rows.
constexpr double kLineWidth = 1.4;

/// The part of each pixel of a column that a curve covers; only rows within its band.
class Coverage {
public:
    explicit Coverage(const BandCurves& band)
        : first_(band.first), end_(band.end), begin_(band.end), past_(band.first), parts_(band.end) {}

    /// Adds what the line covers of the column within `width` of it, where its middle runs from row `a` to row `b`
    /// (pixel r reaches from r to r + 1). `half` is half its height, which is cut at the rows `top` and `bottom` of its
    /// ends.
    void addLine(double a, double b, double width, double half, double top, double bottom) {
        const double low = std::max(std::min(a, b) - half, top);
        const double high = std::min(std::max(a, b) + half, bottom);
        if (!(low < high)) {
            return;
        }
        const size_t first = within(std::floor(low));
        const size_t past = within(std::ceil(high));
        double before = covered(std::max(static_cast<double>(first), low), a, b, half);
        for (size_t row = first; row < past; ++row) {
            const double next = covered(std::min(static_cast<double>(row) + 1.0, high), a, b, half);
            parts_[row] += static_cast<float>((next - before) * width);
            before = next;
        }
        begin_ = std::min(begin_, first);
        past_ = std::max(past_, past);
    }
    /// Adds a disc: a chord of it of that height around the row, for a part of the column.
    void addChord(double row, double half, double width) { addLine(row, row, width, half, row - half, row + half); }

    /// Lays the colour over the column's pixels as far as they are covered, and forgets.
    void blend(uint32_t argb, uint32_t* pixels) {
        for (size_t row = begin_; row < past_; ++row) {
            const auto part = (static_cast<uint32_t>(std::min(parts_[row], 1.0F) * 512.0F) + 1) / 2;
            pixels[row] = mixed(pixels[row], argb, part);
            parts_[row] = 0.0F;
        }
        begin_ = end_;
        past_ = first_;
    }

private:
    /// The integral over the column's width of how much of the line lies above the row `z`.
    static double covered(double z, double a, double b, double half) {
        return above(z + half, a, b) - above(z - half, a, b);
    }
    /// The integral of max(0, z - y(x)), y running evenly from a to b.
    static double above(double z, double a, double b) {
        const double way = b - a;
        if (std::abs(way) < 1e-6) {
            return std::max(0.0, z - (a + b) / 2.0);
        }
        const double fromA = std::max(0.0, z - a);
        const double fromB = std::max(0.0, z - b);
        return (fromA * fromA - fromB * fromB) / (2.0 * way);
    }
    static uint32_t mixed(uint32_t under, uint32_t over, uint32_t part) {
        const uint32_t left = 256 - part;
        const uint32_t redBlue = ((under & 0xFF00FF) * left + (over & 0xFF00FF) * part) >> 8 & 0xFF00FF;
        const uint32_t alphaGreen = (under >> 8 & 0xFF00FF) * left + (over >> 8 & 0xFF00FF) * part;
        return redBlue | (alphaGreen & 0xFF00FF00);
    }
    [[nodiscard]] size_t within(double row) const {
        return static_cast<size_t>(std::clamp(row, static_cast<double>(first_), static_cast<double>(end_)));
    }

    size_t first_;
    size_t end_;
    size_t begin_;  ///< rows that have been added to
    size_t past_;
    std::vector<float> parts_;
};

/// Where frames lie in the columns of pixels.
struct Places {
    double firstX;  ///< pixels
    double step;    ///< pixels between frames
    size_t frames;

    [[nodiscard]] double of(size_t frame) const { return firstX + static_cast<double>(frame) * step; }
    /// The last frame at that place or left of it; 0 when there is none.
    [[nodiscard]] size_t before(double x) const {
        const double frame = std::floor((x - firstX) / step);
        return frame > 0.0 ? std::min(static_cast<size_t>(frame), frames - 1) : 0;
    }
};

template <typename Sample>
class SparseLines {
public:
    SparseLines(const Sample* samples, size_t columns, const Places& places, double dot)
        : samples_(samples), columns_(columns), places_(places), dot_(dot) {}

    void fill(size_t x, const BandCurve& curve, Coverage& coverage) const {
        const auto left = static_cast<double>(x);
        const double thickness = kLineWidth * static_cast<double>(curve.thickness);
        for (size_t frame = places_.before(left); frame + 1 < places_.frames && places_.of(frame) < left + 1.0;
             ++frame) {
            addPiece(left, frame, curve, thickness, coverage);
        }
        if (dot_ > 0.0) {
            const double radius = dot_ / 2.0 + thickness / 2.0;
            for (size_t frame = places_.before(left - radius);
                 frame < places_.frames && places_.of(frame) <= left + 1.0 + radius; ++frame) {
                addDot(left, places_.of(frame), rowOf(frame, curve), radius, coverage);
            }
        }
    }

private:
    // The middle of a row, as the axes count: the row of the upper end is the first one.
    [[nodiscard]] double rowOf(size_t frame, const BandCurve& curve) const {
        return static_cast<double>(samples_[frame * columns_ + curve.column]) * curve.slope + curve.origin + 0.5;
    }
    void addPiece(double left, size_t frame, const BandCurve& curve, double thickness, Coverage& coverage) const {
        const double from = places_.of(frame);
        const double begin = std::max(left, from);
        const double end = std::min(left + 1.0, from + places_.step);
        if (!(begin < end)) {
            return;
        }
        double rowFrom = rowOf(frame, curve);
        const double slope = (rowOf(frame + 1, curve) - rowFrom) / places_.step;
        if (slope == 0.0) {
            rowFrom = std::floor(rowFrom) + 0.5;  // a level stays sharp
        }
        const double rowTo = rowFrom + slope * places_.step;
        const double half = thickness / 2.0;
        coverage.addLine(rowFrom + (begin - from) * slope, rowFrom + (end - from) * slope, end - begin,
                         half * std::sqrt(1.0 + slope * slope), std::min(rowFrom, rowTo) - half,
                         std::max(rowFrom, rowTo) + half);
    }
    /// Four chords of a disc for each column.
    static void addDot(double left, double x, double row, double radius, Coverage& coverage) {
        for (const double part : {0.125, 0.375, 0.625, 0.875}) {
            const double way = left + part - x;
            const double square = radius * radius - way * way;
            if (square > 0.0) {
                coverage.addChord(row, std::sqrt(square), 0.25);
            }
        }
    }

    const Sample* samples_;
    size_t columns_;
    Places places_;
    double dot_;
};

}  // namespace

void drawSparseLines(const SCOPERAFrames& frames, double lower, double upper, double dot,
                     const std::vector<BandCurves>& bands, const PixelTarget& target) {
    const double pixels = static_cast<double>(target.width) / (upper - lower);
    const Places places{(frames.m_fFirstX - lower) * pixels, frames.m_fStepX * pixels,
                        static_cast<size_t>(frames.m_nFrames)};
    std::vector<Coverage> coverages(bands.begin(), bands.end());
    withSamples(frames, [&](const auto* samples) {
        const SparseLines lines(samples, frames.m_nColumns, places, dot);
        fillColumns(target, [&](size_t x, uint32_t* columnPixels) {
            for (size_t band = 0; band < bands.size(); ++band) {
                for (size_t i = bands[band].curves.size(); i-- > 0;) {
                    const BandCurve& curve = bands[band].curves[i];
                    lines.fill(x, curve, coverages[band]);
                    coverages[band].blend(curve.argb, columnPixels);
                }
            }
        });
    });
}

}  // namespace tarno2
