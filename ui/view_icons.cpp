#include "ui/view_icons.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace tarno2 {

namespace {

constexpr int kSize = 16;

void drawCurve(QPainter& painter, double left, double right) {
    QPainterPath curve(QPointF(left, 8.0));
    const double step = (right - left) / 4.0;
    curve.quadTo(left + step, -3.0, left + 2.0 * step, 8.0);
    curve.quadTo(left + 3.0 * step, 19.0, right, 8.0);
    painter.drawPath(curve);
}

void drawMode(QPainter& painter, int mode) {
    switch (mode) {
        case 1:  // the newest at the right edge, and all slides to the left
            drawCurve(painter, 1.0, 14.0);
            painter.drawLine(QPointF(14.5, 2.0), QPointF(14.5, 14.0));
            break;
        case 2:  // from the left edge on
            painter.drawLine(QPointF(1.5, 2.0), QPointF(1.5, 14.0));
            drawCurve(painter, 1.5, 10.0);
            break;
        default:  // a curve above a scroll bar
            painter.save();
            painter.translate(0.0, -2.5);
            drawCurve(painter, 1.0, 15.0);
            painter.restore();
            painter.drawRect(QRectF(1.5, 12.5, 13.0, 2.0));
            painter.fillRect(QRectF(5.0, 12.0, 4.0, 3.0), painter.pen().color());
            break;
    }
}

QPixmap pixmap(int mode, const QColor& color, int scale) {
    QPixmap result(kSize * scale, kSize * scale);
    result.setDevicePixelRatio(scale);
    result.fill(Qt::transparent);
    QPainter painter(&result);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, 1.4));
    drawMode(painter, mode);
    return result;
}

}  // namespace

QIcon followIcon(int mode, const QPalette& palette) {
    QIcon icon;
    for (const int scale : {1, 2, 3}) {
        icon.addPixmap(pixmap(mode, palette.color(QPalette::ButtonText), scale));
        icon.addPixmap(pixmap(mode, palette.color(QPalette::Disabled, QPalette::ButtonText), scale), QIcon::Disabled);
    }
    return icon;
}

}  // namespace tarno2
