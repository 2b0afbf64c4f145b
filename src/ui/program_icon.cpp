#include "ui/program_icon.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace tarno2 {

namespace {

QPixmap drawIcon(int side) {
    QPixmap pixmap(side, side);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(side / 64.0, side / 64.0);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x1d, 0x2b, 0x36));
    painter.drawRoundedRect(QRectF(2, 6, 60, 52), 8, 8);
    QPainterPath trace(QPointF(8, 36));
    trace.cubicTo(14, 8, 20, 8, 26, 34);
    trace.cubicTo(32, 60, 38, 56, 42, 36);
    trace.cubicTo(45, 22, 50, 24, 56, 30);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(0x5f, 0xe0, 0x8a), 4, Qt::SolidLine, Qt::RoundCap));
    painter.drawPath(trace);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0xe5, 0x39, 0x35));
    painter.drawEllipse(QPointF(50, 17), 7, 7);
    return pixmap;
}

}  // namespace

QIcon programIcon() {
    QIcon icon;
    for (const int side : {16, 24, 32, 48, 64, 128, 256}) {
        icon.addPixmap(drawIcon(side));
    }
    return icon;
}

}  // namespace tarno2
