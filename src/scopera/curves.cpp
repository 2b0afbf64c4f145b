#include "scopera/curves.h"

#include <algorithm>
#include <cmath>

namespace tarno2 {

namespace {

// Logical pixels.
constexpr double kPointsApart = 4.0;
constexpr double kDotsApart = 12.0;  ///< samples that are so far apart are marked on their lines
constexpr double kDot = 3.0;

}  // namespace

Curves::Curves(QCPAxis* xAxis, QCPAxis* yAxis, const Lanes& lanes) : QCPAbstractPlottable(xAxis, yAxis), lanes_(lanes) {
    setSelectable(QCP::stNone);
}

void Curves::setFrames(const SCOPERAFrames& frames) {
    frames_ = frames;
    spansStale_ = true;
}

void Curves::setPoints(bool points) {
    spansStale_ = spansStale_ || points != points_;
    points_ = points;
}

QRect Curves::clipRect() const {
    // The upper end of the Y axis lies above the pixels of the axis rectangle.
    return QCPAbstractPlottable::clipRect().adjusted(0, -1, 0, 0);
}

QSize Curves::pixelSize() const {
    const QSizeF size = QSizeF(clipRect().size()) * parentPlot()->bufferDevicePixelRatio();
    return {static_cast<int>(std::lround(size.width())), static_cast<int>(std::lround(size.height()))};
}

void Curves::updateSpans(int width) {
    const QCPRange range = keyAxis()->range();
    const auto pixels = static_cast<size_t>(std::max(width, 0));
    if (!spansStale_ && spansRange_ == range && spansWidth_ == pixels) {
        return;
    }
    spans_.build(frames_, range.lower, range.upper, pixels, !points_);
    spansRange_ = range;
    spansWidth_ = pixels;
    spansStale_ = false;
}

std::optional<QCPRange> Curves::extremes() {
    updateSpans(pixelSize().width());
    std::optional<QCPRange> all;
    for (size_t i = 0; i < std::min(styles_.size(), spans_.columns()); ++i) {
        const auto one = styles_[i].visible ? extremes(i) : std::nullopt;
        if (one) {
            all = all ? all->expanded(*one) : *one;
        }
    }
    return all;
}

std::optional<QCPRange> Curves::extremes(size_t column) {
    updateSpans(pixelSize().width());
    if (column >= std::min(styles_.size(), spans_.columns()) || spans_.whole(column).empty()) {
        return std::nullopt;
    }
    const CodeSpan& codes = spans_.whole(column);
    const CurveStyle& style = styles_[column];
    const auto [low, high] =
        std::minmax({codes.low * style.scale + style.offset, codes.high * style.scale + style.offset});
    return QCPRange(low, high);
}

void Curves::draw(QCPPainter* painter) {
    const QSize size = pixelSize();
    if (size.isEmpty() || frames_.m_nFrames == 0) {
        return;
    }
    updateSpans(size.width());
    if (image_.size() != size) {
        image_ = QImage(size, QImage::Format_ARGB32_Premultiplied);
    }
    const double ratio = parentPlot()->bufferDevicePixelRatio();
    image_.setDevicePixelRatio(ratio);
    const PixelTarget target{reinterpret_cast<uint32_t*>(image_.bits()),
                             static_cast<size_t>(image_.bytesPerLine()) / sizeof(uint32_t),
                             static_cast<size_t>(size.width()), static_cast<size_t>(size.height())};
    drawOn(target, ratio);
    // Without it the painter is shifted by half a pixel, for lines.
    painter->setAntialiasing(true);
    painter->drawImage(clipRect().topLeft(), image_);
}

// In rows of the image.
std::vector<RowBand> Curves::bands(double ratio) const {
    std::vector<RowBand> bands;
    for (size_t lane = 0; lane < lanes_.count(); ++lane) {
        const QCPRange y = lanes_.range(lane);
        if (lanes_.shown()) {
            const QRect rows = lanes_.rows(lane);
            bands.push_back({std::lround((rows.top() - clipRect().top()) * ratio), std::lround(rows.height() * ratio),
                             y.lower, y.upper});
        } else {
            bands.push_back({0, pixelSize().height(), y.lower, y.upper});
        }
    }
    return bands;
}

void Curves::drawOn(const PixelTarget& target, double ratio) const {
    const auto thickness = static_cast<size_t>(std::max(ratio, 1.0));
    const auto curves = curvesInBands(styles_, spans_.columns(), bands(ratio), thickness, target.height);
    const double distance = frames_.m_fStepX / spansRange_.size() * static_cast<double>(target.width);
    if (points_) {
        // Points that stand apart are drawn large enough to be seen.
        drawPoints(frames_, spans_, curves, (distance >= kPointsApart * ratio ? 3 : 1) * thickness, target);
    } else if (distance > 1.0 || frames_.m_nFrames == 1) {
        const bool dots = distance >= kDotsApart * ratio || frames_.m_nFrames == 1;
        drawSparseLines(frames_, spansRange_.lower, spansRange_.upper, dots ? kDot * ratio : 0.0, curves, target);
    } else {
        drawSpans(spans_, curves, target);
    }
}

void Curves::drawLegendIcon(QCPPainter* /*painter*/, const QRectF& /*rect*/) const {}

double Curves::selectTest(const QPointF& /*pos*/, bool /*onlySelectable*/, QVariant* /*details*/) const {
    return -1.0;
}

QCPRange Curves::getKeyRange(bool& foundRange, QCP::SignDomain /*inSignDomain*/) const {
    foundRange = false;
    return {};
}

QCPRange Curves::getValueRange(bool& foundRange, QCP::SignDomain /*inSignDomain*/,
                               const QCPRange& /*inKeyRange*/) const {
    foundRange = false;
    return {};
}

}  // namespace tarno2
