#include "ui/spectrum_picture.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "ui/measured_text.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

constexpr qsizetype kStroke = 8;    // steps of a line that are drawn at once
constexpr size_t kMostSmooth = 32;  // curves: among more of them nobody sees the smooth ones
constexpr int kTextMargin = 6;
constexpr double kZoomStep = 0.8;  // a notch of the wheel

QString valueText(double value, bool decades) {
    return decades ? QString::number(value, 'e', 0) : QString::number(value, 'g', 4);
}

}  // namespace

SpectrumPicture::SpectrumPicture(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("SpectrumPicture"));
    setMouseTracking(true);
    setMinimumSize(fontMetrics().averageCharWidth() * 20, fontMetrics().height() * 5);
}

QSize SpectrumPicture::sizeHint() const {
    return {fontMetrics().averageCharWidth() * 60, fontMetrics().height() * 12};
}

void SpectrumPicture::setCurves(SpectrumCurves curves) {
    curves_ = std::move(curves);
    notice_.clear();
    update();
}

void SpectrumPicture::setNotice(const QString& notice) {
    curves_.curves.clear();
    notice_ = notice;
    update();
}

void SpectrumPicture::setLogarithmic(bool logarithmic) {
    logarithmic_ = logarithmic;
    update();
}

QRect SpectrumPicture::area() const {
    const int left = fontMetrics().horizontalAdvance(QStringLiteral("-1.00e-12")) + kTextMargin;
    const int below = fontMetrics().height() + kTextMargin;
    return rect().adjusted(left, fontMetrics().height() / 2 + 2, -fontMetrics().averageCharWidth() * 5, -below);
}

double SpectrumPicture::highest() const {
    const size_t bins = curves_.curves.empty() ? 0 : curves_.curves.front().values.size();
    return bins > 1 ? static_cast<double>(bins - 1) * curves_.binWidth : 1.0;
}

// A logarithmic axis begins with the first bin above 0.
PlotScale SpectrumPicture::scaleX() const {
    const double low = logarithmic_ ? curves_.binWidth : 0.0;
    if (zoomLow_ < zoomHigh_ && zoomLow_ < highest()) {
        return {std::max(zoomLow_, low), std::min(zoomHigh_, highest()), logarithmic_};
    }
    return {low, highest(), logarithmic_};
}

PlotScale SpectrumPicture::scaleY() const {
    double low = 1e300;
    double high = -1e300;
    for (const SpectrumCurves::Curve& curve : curves_.curves) {
        for (const double value : curve.values) {
            low = std::min(low, value);
            high = std::max(high, value);
        }
    }
    low = std::max(low, curves_.deepest);
    if (curves_.decades) {
        low = std::max(low, high * 1e-18);
        return {std::pow(10.0, std::floor(std::log10(std::max(low, 1e-40)))),
                std::pow(10.0, std::ceil(std::log10(std::max(high, 1e-39)))), true};
    }
    const double margin = (high - low) * 0.05;
    return {low - (low < 0.0 ? margin : 0.0), high + margin, false};
}

void SpectrumPicture::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Base));
    painter.setPen(palette().color(QPalette::Text));
    if (curves_.curves.empty()) {
        painter.drawText(rect().adjusted(kTextMargin, 0, -kTextMargin, 0), Qt::AlignCenter | Qt::TextWordWrap, notice_);
        return;
    }
    const QRect inside = area();
    if (inside.width() < 2 || inside.height() < 2) {
        return;
    }
    const PlotScale x = scaleX();
    const PlotScale y = scaleY();
    drawAxes(painter, inside, x, y);
    painter.setClipRect(inside);
    painter.setRenderHint(QPainter::Antialiasing, curves_.curves.size() <= kMostSmooth);
    // As in the picture of the signal, the first lies in front.
    for (size_t i = curves_.curves.size(); i-- > 0;) {
        drawCurve(painter, inside, x, y, curves_.curves[i]);
    }
    painter.setClipping(false);
    painter.setRenderHint(QPainter::Antialiasing);
    drawMouse(painter, inside, x, y);
}

void SpectrumPicture::drawAxes(QPainter& painter, const QRect& area, const PlotScale& x, const PlotScale& y) const {
    const QColor text = palette().color(QPalette::Text);
    QColor grid = text;
    grid.setAlphaF(0.2F);
    const int height = fontMetrics().height();
    const auto letters = static_cast<size_t>(std::max(fontMetrics().averageCharWidth() * 14, 1));
    for (const PlotTick& tick : x.ticks(static_cast<size_t>(area.width()) / letters)) {
        const int at = area.left() + static_cast<int>(std::lround(x.partOf(tick.value) * (area.width() - 1)));
        painter.setPen(QPen(grid, 0, tick.labelled ? Qt::SolidLine : Qt::DotLine));
        painter.drawLine(at, area.top(), at, area.bottom());
        if (tick.labelled) {
            painter.setPen(text);
            painter.drawText(QRect(at - 200, area.bottom() + 2, 400, height), Qt::AlignHCenter | Qt::AlignTop,
                             frequencyWithUnit(tick.value, 4));
        }
    }
    for (const PlotTick& tick : y.ticks(static_cast<size_t>(area.height() / (height * 2)))) {
        const int at = area.bottom() - static_cast<int>(std::lround(y.partOf(tick.value) * (area.height() - 1)));
        painter.setPen(QPen(grid, 0, tick.labelled ? Qt::SolidLine : Qt::DotLine));
        painter.drawLine(area.left(), at, area.right(), at);
        if (tick.labelled) {
            painter.setPen(text);
            painter.drawText(QRect(0, at - height / 2, area.left() - 4, height), Qt::AlignRight | Qt::AlignVCenter,
                             valueText(tick.value, curves_.decades));
        }
    }
    painter.setPen(text);
    painter.drawRect(area);
    painter.drawText(area.adjusted(kTextMargin, 2, -kTextMargin, 0), Qt::AlignLeft | Qt::AlignTop, curves_.unit);
}

// Where bins are closer than pixels their greatest is drawn, so that no line is lost between them.
void SpectrumPicture::drawCurve(QPainter& painter, const QRect& area, const PlotScale& x, const PlotScale& y,
                                const SpectrumCurves::Curve& curve) const {
    QPolygonF line;
    int column = -1;
    double best = 0.0;
    const auto pointOf = [&](double at, double value) {
        const double part = std::clamp(y.partOf(std::max(value, curves_.deepest)), -1.0, 2.0);
        return QPointF(area.left() + at, area.bottom() - part * (area.height() - 1));
    };
    for (size_t i = x.logarithmic() ? 1 : 0; i < curve.values.size(); ++i) {
        const double place = x.partOf(static_cast<double>(i) * curves_.binWidth) * (area.width() - 1);
        if (place < -1.0e4 || place > area.width() + 1.0e4) {
            continue;
        }
        const auto pixel = static_cast<int>(std::floor(place));
        if (pixel == column && !line.isEmpty()) {
            best = std::max(best, curve.values[i]);
            line.back() = pointOf(line.back().x() - area.left(), best);
        } else {
            column = pixel;
            best = curve.values[i];
            line.append(pointOf(place, best));
        }
    }
    painter.setPen(QPen(curve.color, painter.testRenderHint(QPainter::Antialiasing) ? 1.2 : 0.0));
    // The time for one stroke grows with the square of its ups and downs.
    for (qsizetype i = 0; i + 1 < line.size(); i += kStroke) {
        painter.drawPolyline(line.constData() + i, static_cast<int>(std::min(kStroke + 1, line.size() - i)));
    }
}

// What the first curve is at the mouse.
void SpectrumPicture::drawMouse(QPainter& painter, const QRect& area, const PlotScale& x, const PlotScale& y) const {
    if (!mouse_ || !area.contains(*mouse_)) {
        return;
    }
    const auto& values = curves_.curves.front().values;
    const double hertz = x.valueAt(static_cast<double>(mouse_->x() - area.left()) / (area.width() - 1));
    const auto bin = static_cast<size_t>(std::llround(std::max(hertz / curves_.binWidth, 0.0)));
    if (bin >= values.size()) {
        return;
    }
    const QString text = frequencyWithUnit(static_cast<double>(bin) * curves_.binWidth) + QStringLiteral("   ") +
                         QString::number(values[bin], 'g', 4) + QLatin1Char(' ') + curves_.unit;
    const int width = fontMetrics().horizontalAdvance(text) + 2 * kTextMargin;
    const QRect box(area.right() - width, area.top(), width, fontMetrics().height() + 4);
    painter.fillRect(box, palette().color(QPalette::Base));
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(box, Qt::AlignCenter, text);
    const double part = std::clamp(y.partOf(std::max(values[bin], curves_.deepest)), 0.0, 1.0);
    painter.drawEllipse(QPointF(mouse_->x(), area.bottom() - part * (area.height() - 1)), 3.0, 3.0);
}

void SpectrumPicture::wheelEvent(QWheelEvent* event) {
    const QRect inside = area();
    const PlotScale x = scaleX();
    const double notches = event->angleDelta().y() / 120.0;
    if (curves_.curves.empty() || notches == 0.0 || inside.width() < 2) {
        event->ignore();
        return;
    }
    const double at = std::clamp((event->position().x() - inside.left()) / (inside.width() - 1), 0.0, 1.0);
    const double factor = std::pow(kZoomStep, notches);
    zoomLow_ = std::max(x.valueAt(at - at * factor), 0.0);
    zoomHigh_ = std::max(x.valueAt(at + (1.0 - at) * factor), zoomLow_ + curves_.binWidth * 8.0);
    if (zoomLow_ <= curves_.binWidth && zoomHigh_ >= highest()) {
        zoomLow_ = zoomHigh_ = 0.0;
    }
    update();
    event->accept();
}

void SpectrumPicture::mouseDoubleClickEvent(QMouseEvent* /*event*/) {
    zoomLow_ = zoomHigh_ = 0.0;
    update();
}

void SpectrumPicture::mouseMoveEvent(QMouseEvent* event) {
    mouse_ = event->position().toPoint();
    update();
}

void SpectrumPicture::leaveEvent(QEvent* /*event*/) {
    mouse_.reset();
    update();
}

}  // namespace tarno2
