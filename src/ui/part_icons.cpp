#include "ui/part_icons.h"

#include <QPainter>
#include <QPainterPath>

#include "ui/view_icons.h"

namespace tarno2 {

namespace {

// A chip with its legs.
void drawBoard(QPainter& painter) {
    painter.drawRect(QRectF(3.5, 3.5, 9.0, 9.0));
    painter.fillRect(QRectF(6.0, 6.0, 4.0, 4.0), painter.pen().color());
    for (const double at : {5.5, 8.0, 10.5}) {
        painter.drawLine(QPointF(at, 1.0), QPointF(at, 3.5));
        painter.drawLine(QPointF(at, 12.5), QPointF(at, 15.0));
        painter.drawLine(QPointF(1.0, at), QPointF(3.5, at));
        painter.drawLine(QPointF(12.5, at), QPointF(15.0, at));
    }
}

// Samples of a wave at even distances.
void drawMeasuring(QPainter& painter) {
    const QPointF samples[] = {{2.0, 8.0}, {5.0, 3.5}, {8.0, 6.5}, {11.0, 12.0}, {14.0, 9.0}};
    painter.drawLine(QPointF(1.0, 14.5), QPointF(15.0, 14.5));
    for (const QPointF& sample : samples) {
        painter.drawLine(sample, QPointF(sample.x(), 14.5));
        painter.drawEllipse(sample, 0.9, 0.9);
    }
}

// A sheet with a folded corner.
void drawFile(QPainter& painter) {
    QPainterPath sheet(QPointF(3.0, 1.5));
    sheet.lineTo(9.5, 1.5);
    sheet.lineTo(13.0, 5.0);
    sheet.lineTo(13.0, 14.5);
    sheet.lineTo(3.0, 14.5);
    sheet.closeSubpath();
    painter.drawPath(sheet);
    painter.drawPolyline(QPolygonF({QPointF(9.5, 1.5), QPointF(9.5, 5.0), QPointF(13.0, 5.0)}));
    painter.drawLine(QPointF(5.5, 8.5), QPointF(10.5, 8.5));
    painter.drawLine(QPointF(5.5, 11.5), QPointF(10.5, 11.5));
}

// Check marks before lines.
void drawChannels(QPainter& painter) {
    for (const double row : {3.0, 8.0, 13.0}) {
        painter.drawPolyline(QPolygonF({QPointF(1.0, row), QPointF(2.5, row + 1.7), QPointF(5.5, row - 1.7)}));
        painter.drawLine(QPointF(8.0, row), QPointF(15.0, row));
    }
}

// A window with its title.
void drawProgram(QPainter& painter) {
    painter.drawRoundedRect(QRectF(1.5, 2.5, 13.0, 11.0), 1.5, 1.5);
    painter.fillRect(QRectF(1.5, 2.5, 13.0, 3.0), painter.pen().color());
    painter.drawLine(QPointF(5.0, 8.5), QPointF(11.0, 8.5));
    painter.drawLine(QPointF(5.0, 11.0), QPointF(9.0, 11.0));
}

void drawTable(QPainter& painter) {
    painter.drawRect(QRectF(1.5, 2.5, 13.0, 11.0));
    painter.fillRect(QRectF(1.5, 2.5, 13.0, 2.5), painter.pen().color());
    painter.drawLine(QPointF(1.5, 8.0), QPointF(14.5, 8.0));
    painter.drawLine(QPointF(1.5, 10.8), QPointF(14.5, 10.8));
    painter.drawLine(QPointF(6.0, 5.0), QPointF(6.0, 13.5));
}

// An edge with an arrow, and the level that it passes.
void drawTrigger(QPainter& painter) {
    painter.drawPolyline(QPolygonF({QPointF(1.5, 13.5), QPointF(7.0, 13.5), QPointF(7.0, 2.5), QPointF(14.5, 2.5)}));
    QPainterPath head(QPointF(7.0, 4.5));
    head.lineTo(10.2, 9.5);
    head.lineTo(3.8, 9.5);
    painter.fillPath(head, painter.pen().color());
}

void draw(QPainter& painter, PartIcon part) {
    switch (part) {
        case PartIcon::Board:
            return drawBoard(painter);
        case PartIcon::Measuring:
            return drawMeasuring(painter);
        case PartIcon::File:
            return drawFile(painter);
        case PartIcon::Channels:
            return drawChannels(painter);
        case PartIcon::Program:
            return drawProgram(painter);
        case PartIcon::Table:
            return drawTable(painter);
        case PartIcon::Trigger:
            return drawTrigger(painter);
    }
}

}  // namespace

QIcon partIcon(PartIcon part, const QPalette& palette) {
    return drawnIcon(palette, [part](QPainter& painter) { draw(painter, part); });
}

}  // namespace tarno2
