#include "scopera/curves.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tarno2 {

namespace {

// Logical pixels.
constexpr double kPointsApart = 4.0;
constexpr double kDotsApart = 12.0;  ///< samples that are so far apart are marked on their lines
constexpr double kDot = 3.0;

// How much is seen of the last one of many earlier curves, and of the newest.
constexpr double kPalest = 0.08;
constexpr double kFullest = 0.6;

void prepare(QImage& image, QSize size, double ratio) {
    if (image.size() != size) {
        image = QImage(size, QImage::Format_ARGB32_Premultiplied);
    }
    image.setDevicePixelRatio(ratio);
}

}  // namespace

Curves::Curves(QCPAxis* xAxis, QCPAxis* yAxis, const Lanes& lanes) : QCPAbstractPlottable(xAxis, yAxis), lanes_(lanes) {
    setSelectable(QCP::stNone);
}

void Curves::setFrames(const SCOPERAFrames& frames) {
    frames_ = frames;
    spansStale_ = true;
}

void Curves::setStyles(std::vector<CurveStyle> styles) {
    styles_ = std::move(styles);
    earlierImageStale_ = true;
}

void Curves::setEarlier(std::vector<SCOPERAFrames> frames) {
    earlier_ = std::move(frames);
    earlierExtremesStale_ = earlierImageStale_ = true;
    if (earlier_.empty()) {
        earlierImage_ = {};
        earlierExtremes_.clear();
    }
}

void Curves::setPoints(bool points) {
    spansStale_ = spansStale_ || points != points_;
    earlierImageStale_ = earlierImageStale_ || points != points_;
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
    std::optional<QCPRange> all;
    for (size_t i = 0; i < styles_.size(); ++i) {
        const auto one = styles_[i].visible ? extremes(i) : std::nullopt;
        if (one) {
            all = all ? all->expanded(*one) : *one;
        }
    }
    return all;
}

std::optional<QCPRange> Curves::extremes(size_t column) {
    updateSpans(pixelSize().width());
    updateEarlierExtremes();
    CodeSpan codes;
    if (column < spans_.columns()) {
        codes = spans_.whole(column);
    }
    if (column < earlierExtremes_.size()) {
        codes.include(earlierExtremes_[column]);
    }
    if (column >= styles_.size() || codes.empty()) {
        return std::nullopt;
    }
    const CurveStyle& style = styles_[column];
    const auto [low, high] =
        std::minmax({codes.low * style.scale + style.offset, codes.high * style.scale + style.offset});
    return QCPRange(low, high);
}

void Curves::draw(QCPPainter* painter) {
    const QSize size = pixelSize();
    if (size.isEmpty() || (frames_.m_nFrames == 0 && earlier_.empty())) {
        return;
    }
    updateSpans(size.width());
    const double ratio = parentPlot()->bufferDevicePixelRatio();
    const std::vector<RowBand> rows = bands(ratio);
    // Without it the painter is shifted by half a pixel, for lines.
    painter->setAntialiasing(true);
    if (!earlier_.empty()) {
        drawEarlier(rows, size, ratio);
        painter->drawImage(clipRect().topLeft(), earlierImage_);
    }
    if (frames_.m_nFrames > 0) {
        prepare(image_, size, ratio);
        drawOn(frames_, spans_, rows, image_, ratio);
        painter->drawImage(clipRect().topLeft(), image_);
    }
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

void Curves::drawOn(const SCOPERAFrames& frames, const PixelSpans& spans, const std::vector<RowBand>& bands,
                    QImage& image, double ratio) const {
    const PixelTarget target{reinterpret_cast<uint32_t*>(image.bits()),
                             static_cast<size_t>(image.bytesPerLine()) / sizeof(uint32_t),
                             static_cast<size_t>(image.width()), static_cast<size_t>(image.height())};
    const auto thickness = static_cast<size_t>(std::max(ratio, 1.0));
    const auto curves = curvesInBands(styles_, spans.columns(), bands, thickness, target.height);
    const double distance = frames.m_fStepX / spansRange_.size() * static_cast<double>(target.width);
    if (points_) {
        // Points that stand apart are drawn large enough to be seen.
        drawPoints(frames, spans, curves, (distance >= kPointsApart * ratio ? 3 : 1) * thickness, target);
    } else if (distance > 1.0 || frames.m_nFrames == 1) {
        const bool dots = distance >= kDotsApart * ratio || frames.m_nFrames == 1;
        drawSparseLines(frames, spansRange_.lower, spansRange_.upper, dots ? kDot * ratio : 0.0, curves, target);
    } else {
        drawSpans(spans, curves, target);
    }
}

// What they reach to, without the cost of their picture.
void Curves::updateEarlierExtremes() {
    const QCPRange range = keyAxis()->range();
    if (!earlierExtremesStale_ && earlierRange_ == range) {
        return;
    }
    earlierExtremes_.clear();
    PixelSpans one;
    for (const SCOPERAFrames& frames : earlier_) {
        one.build(frames, range.lower, range.upper, 1, false);
        earlierExtremes_.resize(std::max(earlierExtremes_.size(), one.columns()));
        for (size_t i = 0; i < one.columns(); ++i) {
            earlierExtremes_[i].include(one.whole(i));
        }
    }
    earlierRange_ = range;
    earlierExtremesStale_ = false;
}

// The oldest first, each over the ones before. The picture is kept until something in it changes: there may be very
// many of them.
void Curves::drawEarlier(const std::vector<RowBand>& bands, QSize size, double ratio) {
    if (!earlierImageStale_ && earlierImage_.size() == size && earlierBands_ == bands &&
        earlierDrawnRange_ == spansRange_) {
        return;
    }
    prepare(earlierImage_, size, ratio);
    earlierImage_.fill(Qt::transparent);
    QImage one;
    prepare(one, size, ratio);
    PixelSpans spans;
    QPainter painter(&earlierImage_);
    const auto count = static_cast<double>(earlier_.size());
    for (size_t i = earlier_.size(); i-- > 0;) {
        spans.build(earlier_[i], spansRange_.lower, spansRange_.upper, spansWidth_, !points_);
        drawOn(earlier_[i], spans, bands, one, ratio);
        painter.setOpacity(kPalest + (kFullest - kPalest) * (1.0 - static_cast<double>(i) / count));
        painter.drawImage(0, 0, one);
    }
    earlierBands_ = bands;
    earlierDrawnRange_ = spansRange_;
    earlierImageStale_ = false;
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
