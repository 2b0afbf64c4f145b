#include "ui/view_icons.h"

#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <utility>

namespace tarno2 {

namespace {

constexpr double kSize = 16.0;

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
        case CommandIcon::Monitor: {  // an eye
            QPainterPath lids(QPointF(1.0, 8.0));
            lids.quadTo(QPointF(8.0, 0.5), QPointF(15.0, 8.0));
            lids.quadTo(QPointF(8.0, 15.5), QPointF(1.0, 8.0));
            painter.drawPath(lids);
            painter.setBrush(color);
            painter.drawEllipse(QPointF(8.0, 8.0), 2.0, 2.0);
            break;
        }
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

void drawLens(QPainter& painter, bool larger) {
    painter.drawEllipse(QPointF(6.5, 6.5), 4.5, 4.5);
    painter.drawLine(QPointF(10.0, 10.0), QPointF(14.5, 14.5));
    painter.drawLine(QPointF(4.5, 6.5), QPointF(8.5, 6.5));
    if (larger) {
        painter.drawLine(QPointF(6.5, 4.5), QPointF(6.5, 8.5));
    }
}

// Arrows from the middle into all four corners.
void drawFit(QPainter& painter) {
    for (const double x : {1.0, -1.0}) {
        for (const double y : {1.0, -1.0}) {
            const QPointF corner(8.0 + 6.5 * x, 8.0 + 6.5 * y);
            painter.drawLine(QPointF(8.0 + 2.0 * x, 8.0 + 2.0 * y), corner);
            painter.drawLine(corner, corner - QPointF(3.5 * x, 0.0));
            painter.drawLine(corner, corner - QPointF(0.0, 3.5 * y));
        }
    }
}

void drawBack(QPainter& painter) {
    QPainterPath arc(QPointF(4.0, 5.0));
    arc.cubicTo(QPointF(16.0, 2.0), QPointF(16.0, 15.0), QPointF(5.0, 13.5));
    painter.drawPath(arc);
    painter.drawLine(QPointF(3.0, 5.5), QPointF(7.0, 1.5));
    painter.drawLine(QPointF(3.0, 5.5), QPointF(7.0, 8.5));
}

void drawClock(QPainter& painter) {
    painter.drawEllipse(QPointF(8.0, 8.0), 6.5, 6.5);
    painter.drawPolyline(QPolygonF({QPointF(8.0, 3.5), QPointF(8.0, 8.0), QPointF(11.5, 10.0)}));
}

// A sample on each column of a grid.
void drawSamples(QPainter& painter) {
    constexpr double kHeights[] = {10.0, 4.0, 7.0, 12.0};
    for (int i = 0; i < 4; ++i) {
        const double x = 2.5 + 3.6 * i;
        painter.drawLine(QPointF(x, 14.5), QPointF(x, kHeights[i]));
        painter.fillRect(QRectF(x - 1.2, kHeights[i] - 1.2, 2.4, 2.4), painter.pen().color());
    }
}

void drawEnd(QPainter& painter, bool last) {
    if (last) {
        painter.translate(16.0, 0.0);
        painter.scale(-1.0, 1.0);
    }
    painter.drawLine(QPointF(3.0, 3.0), QPointF(3.0, 13.0));
    QPainterPath arrow(QPointF(5.5, 8.0));
    arrow.lineTo(13.0, 3.5);
    arrow.lineTo(13.0, 12.5);
    painter.fillPath(arrow, painter.pen().color());
}

// Edges at one place, those of earlier records paler.
void drawRecords(QPainter& painter) {
    for (int i = 2; i >= 0; --i) {
        painter.setOpacity(1.0 - 0.3 * i);
        const double shift = 2.2 * i;
        painter.drawPolyline(QPolygonF({QPointF(1.0, 14.0 - shift), QPointF(7.0, 14.0 - shift),
                                        QPointF(9.0, 2.0 + shift), QPointF(15.0, 2.0 + shift)}));
    }
}

void drawKeys(QPainter& painter) {
    painter.drawRoundedRect(QRectF(1.0, 3.5, 14.0, 9.5), 1.5, 1.5);
    for (const double x : {3.5, 6.5, 9.5, 12.5}) {
        painter.drawPoint(QPointF(x, 6.5));
    }
    painter.drawLine(QPointF(4.5, 10.0), QPointF(11.5, 10.0));
}

void drawLanes(QPainter& painter) {
    for (const double top : {-4.5, 4.5}) {
        painter.save();
        painter.translate(0.0, top);
        painter.scale(1.0, 0.5);
        painter.translate(0.0, 8.0);
        drawCurve(painter, 1.0, 15.0);
        painter.restore();
    }
    painter.drawLine(QPointF(1.0, 8.0), QPointF(15.0, 8.0));
}

void drawLegend(QPainter& painter) {
    for (const double row : {3.5, 8.0, 12.5}) {
        painter.fillRect(QRectF(1.5, row - 1.5, 3.0, 3.0), painter.pen().color());
        painter.drawLine(QPointF(7.0, row), QPointF(14.5, row));
    }
}

void drawCursors(QPainter& painter) {
    drawCurve(painter, 1.0, 15.0);
    painter.drawLine(QPointF(5.0, 1.0), QPointF(5.0, 15.0));
    painter.drawLine(QPointF(11.0, 1.0), QPointF(11.0, 15.0));
}

// Lines above a floor.
void drawSpectrum(QPainter& painter) {
    painter.drawLine(QPointF(1.0, 14.5), QPointF(15.0, 14.5));
    for (const auto& [place, height] :
         {std::pair(3.0, 12.0), std::pair(6.5, 4.5), std::pair(10.0, 7.5), std::pair(13.5, 3.0)}) {
        painter.drawLine(QPointF(place, 14.5), QPointF(place, 14.5 - height));
    }
}

void drawPoints(QPainter& painter) {
    painter.setBrush(painter.pen().color());
    for (const QPointF& place :
         {QPointF(2.5, 9.0), QPointF(5.5, 4.0), QPointF(8.5, 8.0), QPointF(11.0, 12.5), QPointF(13.5, 7.0)}) {
        painter.drawEllipse(place, 1.0, 1.0);
    }
}

void drawFlag(QPainter& painter) {
    painter.drawLine(QPointF(4.0, 1.5), QPointF(4.0, 15.0));
    QPainterPath pennant(QPointF(4.0, 1.5));
    pennant.lineTo(13.5, 4.5);
    pennant.lineTo(4.0, 8.0);
    painter.fillPath(pennant, painter.pen().color());
}

// What lies between two marks goes down.
void drawPart(QPainter& painter) {
    drawCurve(painter, 1.0, 15.0);
    painter.drawLine(QPointF(4.0, 1.0), QPointF(4.0, 13.0));
    painter.drawLine(QPointF(12.0, 1.0), QPointF(12.0, 13.0));
    painter.drawLine(QPointF(8.0, 9.0), QPointF(8.0, 15.0));
    painter.drawLine(QPointF(5.5, 12.5), QPointF(8.0, 15.0));
    painter.drawLine(QPointF(10.5, 12.5), QPointF(8.0, 15.0));
}

void drawPicture(QPainter& painter, bool copy) {
    const QRectF frame = copy ? QRectF(1.0, 1.0, 10.0, 10.0) : QRectF(1.5, 1.5, 13.0, 9.0);
    painter.drawRect(frame);
    if (copy) {
        painter.drawLine(QPointF(14.5, 4.5), QPointF(14.5, 14.5));
        painter.drawLine(QPointF(4.5, 14.5), QPointF(14.5, 14.5));
    } else {
        painter.drawLine(QPointF(8.0, 11.0), QPointF(8.0, 15.0));
        painter.drawLine(QPointF(5.5, 12.5), QPointF(8.0, 15.0));
        painter.drawLine(QPointF(10.5, 12.5), QPointF(8.0, 15.0));
    }
    painter.setClipRect(frame);
    painter.translate(0.0, -2.0);
    drawCurve(painter, frame.left() + 1.0, frame.right() - 1.0);
}

void drawView(QPainter& painter, ViewIcon command) {
    switch (command) {
        case ViewIcon::Fit:
            return drawFit(painter);
        case ViewIcon::Back:
            return drawBack(painter);
        case ViewIcon::ZoomIn:
        case ViewIcon::ZoomOut:
            return drawLens(painter, command == ViewIcon::ZoomIn);
        case ViewIcon::GoToTime:
            return drawClock(painter);
        case ViewIcon::SampleAPixel:
            return drawSamples(painter);
        case ViewIcon::FirstFrame:
        case ViewIcon::NewestFrame:
            return drawEnd(painter, command == ViewIcon::NewestFrame);
        case ViewIcon::Records:
            return drawRecords(painter);
        case ViewIcon::Keys:
            return drawKeys(painter);
        case ViewIcon::Lanes:
            return drawLanes(painter);
        case ViewIcon::Legend:
            return drawLegend(painter);
        case ViewIcon::Cursors:
            return drawCursors(painter);
        case ViewIcon::Spectrum:
            return drawSpectrum(painter);
        case ViewIcon::Points:
            return drawPoints(painter);
        case ViewIcon::Marks:
            return drawFlag(painter);
        case ViewIcon::SavePart:
            return drawPart(painter);
        case ViewIcon::SavePicture:
        case ViewIcon::CopyPicture:
            return drawPicture(painter, command == ViewIcon::CopyPicture);
    }
}

/// Drawn when it is seen, in the size that is wanted then: most icons are never asked for in most sizes.
class DrawnIcon final : public QIconEngine {
public:
    DrawnIcon(const QPalette& palette, std::function<void(QPainter&)> draw)
        : enabled_(palette.color(QPalette::Active, QPalette::ButtonText)),
          disabled_(palette.color(QPalette::Disabled, QPalette::ButtonText)),
          draw_(std::move(draw)) {}

    void paint(QPainter* painter, const QRect& place, QIcon::Mode mode, QIcon::State /*state*/) override {
        painter->save();
        painter->translate(place.topLeft());
        painter->scale(place.width() / kSize, place.height() / kSize);
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(QPen(mode == QIcon::Disabled ? disabled_ : enabled_, 1.4));
        draw_(*painter);
        painter->restore();
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return pixmap;
    }
    [[nodiscard]] QIconEngine* clone() const override { return new DrawnIcon(*this); }

private:
    QColor enabled_;
    QColor disabled_;
    std::function<void(QPainter&)> draw_;
};

}  // namespace

QIcon drawnIcon(const QPalette& palette, std::function<void(QPainter&)> draw) {
    return QIcon(new DrawnIcon(palette, std::move(draw)));
}

QIcon followIcon(int mode, const QPalette& palette) {
    return drawnIcon(palette, [mode](QPainter& painter) { drawMode(painter, mode); });
}

QIcon commandIcon(CommandIcon command, const QPalette& palette) {
    return drawnIcon(palette, [command](QPainter& painter) { drawCommand(painter, command); });
}

QIcon viewIcon(ViewIcon command, const QPalette& palette) {
    return drawnIcon(palette, [command](QPainter& painter) { drawView(painter, command); });
}

}  // namespace tarno2
