#include "ui/synchro_picture.h"

#include <QPainter>
#include <QPainterPath>

#include "ui/text.h"

namespace tarno2 {

namespace {

constexpr double kMargin = 6.0;
const QColor kMarkColor(217, 119, 6);  // amber: stands out from light and dark backgrounds alike

QColor faded(QColor color, int alpha) {
    color.setAlpha(alpha);
    return color;
}

QString conditionText(SketchCondition condition) {
    switch (condition) {
        case SketchCondition::Start:
            return uiText(TextId::SynchroStartCondition);
        case SketchCondition::Write:
            return uiText(TextId::SynchroWriteCondition);
        case SketchCondition::Stop:
            return uiText(TextId::SynchroStopCondition);
        case SketchCondition::Trigger:
            break;
    }
    return uiText(TextId::SynchroThreshold);
}

double placeOf(int32_t point, const QRectF& area) {
    return area.left() + area.width() * point / (SynchroSketch::kPoints - 1);
}

double heightOf(float value, const SynchroSketch::Lane& lane, const QRectF& area) {
    const double part = lane.digital ? 0.15 + 0.7 * value : (value + 1.0) / 2.0;
    return area.bottom() - part * area.height();
}

}  // namespace

SynchroPicture::SynchroPicture(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void SynchroPicture::setSketch(SynchroSketch sketch) {
    sketch_ = std::move(sketch);
    update();
}

QSize SynchroPicture::sizeHint() const {
    return {fontMetrics().averageCharWidth() * 80, fontMetrics().height() * 14};
}

QSize SynchroPicture::minimumSizeHint() const {
    return {fontMetrics().averageCharWidth() * 40, fontMetrics().height() * 8};
}

QRectF SynchroPicture::laneArea(size_t lane) const {
    const double line = fontMetrics().height();
    QRectF area = QRectF(rect()).adjusted(kMargin, kMargin + line, -kMargin, -kMargin - line);
    area.setHeight(area.height() / static_cast<double>(sketch_.lanes.size()));
    area.translate(0.0, area.height() * static_cast<double>(lane));
    return area;
}

void SynchroPicture::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(palette().color(QPalette::Mid));
    painter.setBrush(palette().color(QPalette::Base));
    painter.drawRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));
    if (sketch_.lanes.empty()) {
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(rect(), Qt::AlignCenter, uiText(TextId::SynchroValueMistake));
        return;
    }
    paintRecord(painter);
    paintLevels(painter);
    for (size_t i = 0; i < sketch_.lanes.size(); ++i) {
        paintSignal(painter, sketch_.lanes[i], laneArea(i));
    }
    paintMarks(painter);
}

/// The prehistory and the history, shaded differently, with their names below.
void SynchroPicture::paintRecord(QPainter& painter) const {
    if (sketch_.recordBegin < 0) {
        return;
    }
    const QRectF lane = laneArea(0);
    const double top = kMargin + fontMetrics().height();
    const double bottom = height() - kMargin - fontMetrics().height();
    const QColor shade = palette().color(QPalette::Highlight);
    const struct {
        int32_t begin;
        int32_t end;
        int alpha;
        TextId text;
        Qt::AlignmentFlag side;
    } parts[] = {{sketch_.recordBegin, sketch_.trigger, 40, TextId::SynchroPictureBefore, Qt::AlignRight},
                 {sketch_.trigger, sketch_.recordEnd, 90, TextId::SynchroPictureAfter, Qt::AlignLeft}};
    for (const auto& part : parts) {
        const QRectF area(QPointF(placeOf(part.begin, lane), top), QPointF(placeOf(part.end, lane), bottom));
        painter.fillRect(area, faded(shade, part.alpha));
        if (part.begin == part.end) {
            continue;
        }
        const QRectF below =
            part.side == Qt::AlignRight
                ? QRectF(QPointF(kMargin, bottom), QPointF(area.right() - 4, height() - kMargin))
                : QRectF(QPointF(area.left() + 4, bottom), QPointF(width() - kMargin, height() - kMargin));
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(below, static_cast<int>((part.side | Qt::AlignVCenter).toInt()), uiText(part.text));
    }
}

void SynchroPicture::paintLevels(QPainter& painter) const {
    const QRectF area = laneArea(0);
    double free = area.right();  // labels of equal levels stand side by side
    for (const SynchroSketch::Level& level : sketch_.levels) {
        const double y = heightOf(level.height, sketch_.lanes.front(), area);
        painter.setPen(QPen(level.reachable ? kMarkColor : faded(kMarkColor, 110), 1.2, Qt::DashLine));
        painter.drawLine(QPointF(area.left(), y), QPointF(area.right(), y));
        const QString text = conditionText(level.condition);
        const double width = fontMetrics().horizontalAdvance(text);
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(QPointF(free - width - 2, level.height > 0.6F ? y + fontMetrics().ascent() + 1 : y - 3), text);
        free -= width + 14;
    }
}

/// Runs of kept points are drawn strong, the others faint.
void SynchroPicture::paintSignal(QPainter& painter, const SynchroSketch::Lane& lane, const QRectF& area) const {
    const QPen strong(palette().color(QPalette::Highlight), 2.6);
    const QPen faint(faded(palette().color(QPalette::Text), 130), 1.0);
    painter.setBrush(Qt::NoBrush);
    const auto count = static_cast<int32_t>(lane.signal.size());
    for (int32_t begin = 0; begin + 1 < count;) {
        const bool kept = sketch_.kept[static_cast<size_t>(begin)];
        QPainterPath path(QPointF(placeOf(begin, area), heightOf(lane.signal[static_cast<size_t>(begin)], lane, area)));
        int32_t end = begin + 1;
        for (; end < count; ++end) {
            const auto index = static_cast<size_t>(end);
            path.lineTo(placeOf(end, area), heightOf(lane.signal[index], lane, area));
            if (sketch_.kept[index] != kept) {
                break;
            }
        }
        painter.setPen(kept ? strong : faint);
        painter.drawPath(path);
        begin = end;
    }
    if (lane.digital) {
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(area.topLeft() + QPointF(2, fontMetrics().ascent()),
                         uiText(TextId::DigitalLineName, {QString::number(lane.line)}));
    }
}

void SynchroPicture::paintMarks(QPainter& painter) const {
    if (sketch_.trigger >= 0) {
        const QString text = uiText(TextId::SynchroPictureTrigger);
        paintMark(painter, sketch_.trigger, text, fontMetrics().horizontalAdvance(text) / 2.0, kMargin);
        paintEdge(painter);
    }
    double free = kMargin;
    if (sketch_.start >= 0) {
        const QString text = uiText(TextId::SynchroStartCondition);
        free = paintMark(painter, sketch_.start, text, fontMetrics().horizontalAdvance(text) + 3.0, kMargin) + 8.0;
    }
    if (sketch_.stop >= 0) {
        paintMark(painter, sketch_.stop, uiText(TextId::SynchroStopCondition), -3.0, free);
    }
}

/// An upright line through all lanes with a name above that begins so far before it, but not left of `free`. Returns
/// where the name ends.
double SynchroPicture::paintMark(QPainter& painter, int32_t point, const QString& text, double before,
                                 double free) const {
    const QRectF lane = laneArea(0);
    const double x = placeOf(point, lane);
    const double line = fontMetrics().height();
    painter.setPen(QPen(kMarkColor, 1.6));
    painter.drawLine(QPointF(x, kMargin + line), QPointF(x, height() - kMargin - line));
    const double length = fontMetrics().horizontalAdvance(text);
    const double left = std::max(free, std::min(x - before, width() - kMargin - length));
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(QPointF(left, kMargin + fontMetrics().ascent() - 2), text);
    return left + length;
}

/// An arrow on the trigger's line that points the way the signal goes.
void SynchroPicture::paintEdge(QPainter& painter) const {
    const QRectF lane = laneArea(0);
    const double x = placeOf(sketch_.trigger, lane);
    const double y = sketch_.levels.empty() ? lane.center().y()
                                            : heightOf(sketch_.levels.front().height, sketch_.lanes.front(), lane);
    const double size = fontMetrics().height() / 1.8;
    const double ahead = sketch_.falling ? size : -size;
    painter.setPen(Qt::NoPen);
    painter.setBrush(kMarkColor);
    painter.drawPolygon(QPolygonF(
        {QPointF(x, y + ahead), QPointF(x - size * 0.8, y - ahead * 0.6), QPointF(x + size * 0.8, y - ahead * 0.6)}));
}

}  // namespace tarno2
