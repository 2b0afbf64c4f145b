#include "ui/panels/padlock.h"

#include <QPainter>
#include <QWidget>

namespace tarno2 {

QPixmap padlock(const QWidget& widget) {
    const int height = widget.fontMetrics().height();
    const qreal ratio = widget.devicePixelRatioF();
    QPixmap pixmap(QSize(height, height) * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(height / 16.0, height / 16.0);
    const QColor color = widget.palette().color(QPalette::WindowText);
    painter.setPen(QPen(color, 1.8));
    painter.drawArc(QRectF(4.9, 1.8, 6.2, 8.4), 0, 180 * 16);
    painter.drawLine(QPointF(4.9, 6.0), QPointF(4.9, 8.0));
    painter.drawLine(QPointF(11.1, 6.0), QPointF(11.1, 8.0));
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(QRectF(3.0, 7.5, 10.0, 7.0), 1.2, 1.2);
    return pixmap;
}

}  // namespace tarno2
