#include "scopera/cursors.h"

#include <QFontMetrics>
#include <algorithm>
#include <cmath>

#include "scopera/axis_ticker.h"

namespace tarno2 {

namespace {

constexpr double kReach = 5.0;  // pixels from a line within which the mouse takes it
constexpr int kPadding = 6;
constexpr int kCellGap = 14;

/// The decimals that a pixel of a range needs.
int decimalsFor(double range, int pixels) {
    return decimalsOf(std::pow(10.0, std::floor(std::log10(range / std::max(pixels, 1)))));
}

/// A value with these, unless it is told how many.
QString valueText(double value, const QCPRange& range, int pixels, int digits) {
    return plainNumber(value, digits < 0 ? decimalsFor(range.size(), pixels) : digits);
}

/// Where a cursor lies that nobody has placed.
double thirdOf(const QCPRange& range, size_t cursor) {
    return range.lower + range.size() * static_cast<double>(cursor + 1) / 3.0;
}

/// Whether both have got a place.
bool bringIntoRange(double& first, double& second, const QCPRange& range) {
    const bool together = first == second;
    const bool moveFirst = together || !range.contains(first);
    const bool moveSecond = together || !range.contains(second);
    if (moveFirst) {
        first = thirdOf(range, 0);
    }
    if (moveSecond) {
        second = thirdOf(range, 1);
    }
    return moveFirst && moveSecond;
}

}  // namespace

Cursors::Cursors(QCPAxis* xAxis, const Lanes& lanes)
    : QCPLayerable(xAxis->parentPlot()), xAxis_(xAxis), lanes_(lanes) {}

size_t Cursors::laneOf(size_t cursor) const {
    return std::min<size_t>(places_.m_nLane[cursor], lanes_.count() - 1);
}

void Cursors::setColors(const QColor& line, const QColor& text, const QColor& background) {
    lineColor_ = line;
    textColor_ = text;
    backgroundColor_ = background;
}

void Cursors::setTexts(const QString& unitX, const QString& unitY, const QString& difference) {
    unitX_ = unitX;
    unitY_ = unitY;
    difference_ = difference;
}

void Cursors::setDigits(int x, int y) {
    digitsX_ = x;
    digitsY_ = y;
}

void Cursors::bringIntoView() {
    // Copies, because the fields are packed.
    double x[] = {places_.m_fX[0], places_.m_fX[1]};
    double y[] = {yOf(0), yOf(1)};
    const auto first = static_cast<uint32_t>(laneOf(0));
    bringIntoRange(x[0], x[1], xAxis_->range());
    heightsFollow_ = bringIntoRange(y[0], y[1], lanes_.range(first)) || heightsFollow_;
    places_ = {{x[0], x[1]}, {y[0], y[1]}, {first, first}};
}

SCOPERACursors Cursors::places() const {
    SCOPERACursors places = places_;
    places.m_fY[0] = yOf(0);
    places.m_fY[1] = yOf(1);
    return places;
}

void Cursors::setPlaces(const SCOPERACursors& places) {
    const bool sameHeights = places.m_fY[0] == yOf(0) && places.m_fY[1] == yOf(1) &&
                             places.m_nLane[0] == places_.m_nLane[0] && places.m_nLane[1] == places_.m_nLane[1];
    heightsFollow_ = heightsFollow_ && sameHeights;
    places_ = places;
}

double Cursors::yOf(size_t cursor) const {
    return heightsFollow_ ? thirdOf(lanes_.range(laneOf(cursor)), cursor) : places_.m_fY[cursor];
}

std::optional<Cursors::Grip> Cursors::gripAt(const QPointF& place) const {
    if (!visible() || !clipRect().contains(place.toPoint())) {
        return std::nullopt;
    }
    for (size_t i = 0; i < 2; ++i) {
        const bool vertical = std::abs(xAxis_->coordToPixel(places_.m_fX[i]) - place.x()) <= kReach;
        const bool horizontal = std::abs(lanes_.pixelOf(laneOf(i), yOf(i)) - place.y()) <= kReach;
        if (vertical || horizontal) {
            return Grip{i, vertical, horizontal};
        }
    }
    return std::nullopt;
}

void Cursors::move(const Grip& grip, const QPointF& place) {
    if (grip.vertical) {
        const QCPRange range = xAxis_->range();
        places_.m_fX[grip.cursor] = std::clamp(xAxis_->pixelToCoord(place.x()), range.lower, range.upper);
    }
    if (grip.horizontal) {
        places_ = places();
        heightsFollow_ = false;
        // Dragged from lane to lane.
        const size_t lane = lanes_.laneAt(place.y());
        const QCPRange range = lanes_.range(lane);
        places_.m_nLane[grip.cursor] = static_cast<uint32_t>(lane);
        places_.m_fY[grip.cursor] = std::clamp(lanes_.valueAt(lane, place.y()), range.lower, range.upper);
    }
}

QString Cursors::textOfX(double x, bool difference) const {
    if (!clock_.shown()) {
        return valueText(x, xAxis_->range(), clipRect().width(), digitsX_);
    }
    if (difference) {
        return clock_.length(x, clockDecimals());
    }
    const QString time = clock_.timeAt(x, clockDecimals());
    return onOneDay() ? time : clock_.dateAt(x, clockDecimals()) + QLatin1Char(' ') + time;
}

int Cursors::clockDecimals() const {
    return digitsX_ < 0 ? decimalsFor(xAxis_->range().size() * clock_.secondsPerUnit, clipRect().width()) : digitsX_;
}

bool Cursors::onOneDay() const {
    return clock_.dateAt(places_.m_fX[0], clockDecimals()) == clock_.dateAt(places_.m_fX[1], clockDecimals());
}

QString Cursors::unitOf(size_t cursor) const {
    const size_t lane = laneOf(cursor);
    return !lanes_.shown() ? unitY_ : lane < laneUnits_.size() ? laneUnits_[lane] : QString();
}

// Where the values have one unit, or the times one date, it stands above, else with each.
QVector<QStringList> Cursors::table() const {
    const bool oneUnit = unitOf(0) == unitOf(1);
    const auto row = [this, oneUnit](const QString& head, const QString& x, double y, size_t cursor) {
        const size_t lane = laneOf(cursor);
        const QString value = valueText(y, lanes_.range(lane), lanes_.rows(lane).height(), digitsY_);
        return QStringList{head, x, oneUnit ? value : (value + QLatin1Char(' ') + unitOf(cursor)).trimmed()};
    };
    QVector<QStringList> rows;
    const QString unitY = oneUnit ? unitOf(0) : QString();
    QString unitX = unitX_;
    if (clock_.shown()) {
        unitX = onOneDay() ? clock_.dateAt(places_.m_fX[0], clockDecimals()) : QString();
    }
    if (!unitX.isEmpty() || !unitY.isEmpty()) {
        rows.append({QString(), unitX, unitY});
    }
    rows.append(row(QStringLiteral("1"), textOfX(places_.m_fX[0], false), yOf(0), 0));
    rows.append(row(QStringLiteral("2"), textOfX(places_.m_fX[1], false), yOf(1), 1));
    rows.append(row(difference_, textOfX(places_.m_fX[1] - places_.m_fX[0], true), yOf(1) - yOf(0), 0));
    if (laneOf(0) != laneOf(1)) {
        rows.back().back() = QStringLiteral("-");  // values of two scales have no difference
    }
    return rows;
}

void Cursors::applyDefaultAntialiasingHint(QCPPainter* painter) const {
    painter->setAntialiasing(false);
}

QRect Cursors::clipRect() const {
    return xAxis_->axisRect()->rect();
}

void Cursors::draw(QCPPainter* painter) {
    drawLines(painter);
    drawTable(painter);
}

void Cursors::drawLines(QCPPainter* painter) const {
    const QRect area = clipRect();
    painter->setFont(font_);
    const int height = QFontMetrics(font_).height();
    for (size_t i = 0; i < 2; ++i) {
        const double x = xAxis_->coordToPixel(places_.m_fX[i]);
        const double y = lanes_.pixelOf(laneOf(i), yOf(i));
        // Places far outside would overflow the painter's coordinates.
        const bool seenX = xAxis_->range().contains(places_.m_fX[i]);
        const bool seenY = lanes_.range(laneOf(i)).contains(yOf(i));
        painter->setPen(QPen(lineColor_, 0, i == 0 ? Qt::SolidLine : Qt::DashLine));
        const QString name = QString::number(i + 1);
        if (seenX) {
            painter->drawLine(QPointF(x, area.top()), QPointF(x, area.bottom()));
            painter->drawText(QPointF(x + 3, area.bottom() - 3), name);
        }
        if (seenY) {
            painter->drawLine(QPointF(area.left(), y), QPointF(area.right(), y));
            const double base = y - 3 < area.top() + height ? y + height : y - 3;
            painter->drawText(QRectF(area.left(), base - height, area.width() - 3, height),
                              Qt::AlignRight | Qt::AlignBottom, name);
        }
    }
}

void Cursors::drawTable(QCPPainter* painter) const {
    const QVector<QStringList> rows = table();
    const QFontMetrics metrics(font_);
    int widths[3] = {};
    for (const QStringList& row : rows) {
        for (int cell = 0; cell < 3; ++cell) {
            widths[cell] = std::max(widths[cell], metrics.horizontalAdvance(row[cell]));
        }
    }
    const QRect area = clipRect();
    const int rowHeight = metrics.height() + 1;
    const QRect box(area.left() + kPadding, area.top() + kPadding,
                    widths[0] + widths[1] + widths[2] + 2 * kCellGap + 2 * kPadding,
                    static_cast<int>(rows.size()) * rowHeight + 2 * kPadding);
    painter->setPen(QPen(lineColor_, 0));
    painter->setBrush(backgroundColor_);
    painter->drawRect(box);
    painter->setPen(textColor_);
    for (int i = 0; i < rows.size(); ++i) {
        int left = box.left() + kPadding;
        const int top = box.top() + kPadding + i * rowHeight;
        for (int cell = 0; cell < 3; ++cell) {
            const int side = cell == 0 ? Qt::AlignLeft : Qt::AlignRight;
            painter->drawText(QRect(left, top, widths[cell], rowHeight), side | Qt::AlignVCenter, rows[i][cell]);
            left += widths[cell] + kCellGap;
        }
    }
}

}  // namespace tarno2
