#include "ui/view_icons.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <utility>

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

void drawCommand(QPainter& painter, CommandIcon command) {
    const QColor color = painter.pen().color();
    switch (command) {
        case CommandIcon::Start: {
            QPainterPath triangle(QPointF(4.0, 2.0));
            triangle.lineTo(14.0, 8.0);
            triangle.lineTo(4.0, 14.0);
            painter.fillPath(triangle, color);
            break;
        }
        case CommandIcon::Stop:
            painter.fillRect(QRectF(3.0, 3.0, 10.0, 10.0), color);
            break;
        case CommandIcon::Cycle: {  // most of a circle, with an arrow's head at its end
            painter.drawArc(QRectF(2.5, 2.5, 11.0, 11.0), 60 * 16, 290 * 16);
            QPainterPath head(QPointF(16.0, 6.0));
            head.lineTo(10.0, 6.5);
            head.lineTo(14.0, 11.0);
            painter.fillPath(head, color);
            break;
        }
    }
}

template <typename Draw>
QIcon drawnIcon(const QPalette& palette, Draw draw) {
    QIcon icon;
    for (const int scale : {1, 2, 3}) {
        for (const auto& [mode, group] :
             {std::pair{QIcon::Normal, QPalette::Active}, std::pair{QIcon::Disabled, QPalette::Disabled}}) {
            QPixmap pixmap(kSize * scale, kSize * scale);
            pixmap.setDevicePixelRatio(scale);
            pixmap.fill(Qt::transparent);
            QPainter painter(&pixmap);
            painter.setRenderHint(QPainter::Antialiasing);
            painter.setPen(QPen(palette.color(group, QPalette::ButtonText), 1.4));
            draw(painter);
            painter.end();
            icon.addPixmap(pixmap, mode);
        }
    }
    return icon;
}

}  // namespace

QIcon followIcon(int mode, const QPalette& palette) {
    return drawnIcon(palette, [mode](QPainter& painter) { drawMode(painter, mode); });
}

QIcon commandIcon(CommandIcon command, const QPalette& palette) {
    return drawnIcon(palette, [command](QPainter& painter) { drawCommand(painter, command); });
}

}  // namespace tarno2
