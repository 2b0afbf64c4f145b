#include "scopera/curves.h"

#include <algorithm>
#include <cmath>

namespace tarno2 {

Curves::Curves(QCPAxis* xAxis, QCPAxis* yAxis) : QCPAbstractPlottable(xAxis, yAxis) {
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
    CodeSpan all;
    for (size_t i = 0; i < std::min(styles_.size(), spans_.columns()); ++i) {
        const CodeSpan& codes = spans_.whole(i);
        if (styles_[i].visible && !codes.empty()) {
            all.include(codes.low * styles_[i].scale + styles_[i].offset);
            all.include(codes.high * styles_[i].scale + styles_[i].offset);
        }
    }
    if (all.empty()) {
        return std::nullopt;
    }
    return QCPRange(all.low, all.high);
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
    const QCPRange y = valueAxis()->range();
    const PixelTarget target{reinterpret_cast<uint32_t*>(image_.bits()),
                             static_cast<size_t>(image_.bytesPerLine()) / sizeof(uint32_t),
                             static_cast<size_t>(size.width()), static_cast<size_t>(size.height())};
    const auto thickness = static_cast<size_t>(std::max(ratio, 1.0));
    if (points_) {
        // Points that stand apart are drawn large enough to be seen.
        const double distance = frames_.m_fStepX / spansRange_.size() * size.width();
        const size_t dots = distance >= 4.0 * ratio ? 3 : 1;
        drawPoints(frames_, spans_, styles_, {y.lower, y.upper}, dots * thickness, target);
    } else {
        drawLines(spans_, styles_, {y.lower, y.upper}, thickness, target);
    }
    // Without it the painter is shifted by half a pixel, for lines.
    painter->setAntialiasing(true);
    painter->drawImage(clipRect().topLeft(), image_);
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
