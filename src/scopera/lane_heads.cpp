#include "scopera/lane_heads.h"

#include <QFontMetrics>
#include <algorithm>
#include <cmath>

#include "scopera/axis_ticker.h"

namespace tarno2 {

namespace {

constexpr int kHeadGap = 5;
constexpr int kBar = 4;           // height of the bar of a level
constexpr int kNameLetters = 22;  // that a head has room for
constexpr double kFull = 0.995;   // of the full scale: a level that comes so near to an end may have been cut

template <typename Use>
void forEachTick(const QCPRange& range, double step, Use use) {
    constexpr double kMost = 1000.0;
    const double first = std::ceil(range.lower / step);
    const double count = std::min(std::floor(range.upper / step) - first, kMost);
    for (int i = 0; i <= count; ++i) {
        use((first + i) * step);
    }
}

}  // namespace

void LaneHeads::setColors(const QColor& text, const QColor& dimmed, const QColor& line, const QColor& shade) {
    text_ = text;
    dimmed_ = dimmed;
    line_ = line;
    shade_ = shade;
}

int LaneHeads::lineHeight() const {
    return QFontMetrics(font_).height();
}

int LaneHeads::headWidth() const {
    return kNameLetters * QFontMetrics(font_).averageCharWidth() + 2 * kHeadGap;
}

int LaneHeads::scaleWidth() const {
    return QFontMetrics(font_).horizontalAdvance(QStringLiteral("-000.00")) + 2 * kHeadGap;
}

QRect LaneHeads::area() const {
    const QRect picture = mParentPlot->axisRect()->rect();
    return {picture.left() - width(), picture.top(), width(), picture.height()};
}

QRect LaneHeads::clipRect() const {
    return area();
}

std::vector<std::vector<size_t>> LaneHeads::columnsOfLanes() const {
    std::vector<std::vector<size_t>> columns(lanes_.count());
    for (size_t i = 0; i < entries_.size(); ++i) {
        if (entries_[i].visible && entries_[i].lane < columns.size()) {
            columns[entries_[i].lane].push_back(i);
        }
    }
    return columns;
}

// Columns of one lane share its height; each has at most the lines for its name, its value and its level.
QRect LaneHeads::rowOf(size_t lane, size_t index, size_t count) const {
    const QRect whole = lanes_.rect(lane);
    const int height = std::min(whole.height() / static_cast<int>(count), 2 * lineHeight() + kBar + 2 * kHeadGap);
    return {area().left(), whole.top() + static_cast<int>(index) * height, headWidth(), height};
}

QRect LaneHeads::buttonOf(const QRect& row, Part part) const {
    const int size = lineHeight();
    const int place = part == Part::Hide ? 1 : 2;
    return {row.right() - place * (size + 1), row.top() + 2, size, size};
}

std::optional<LaneHeads::Place> LaneHeads::placeAt(const QPointF& place) const {
    if (!lanes_.shown() || !area().contains(place.toPoint()) || place.x() >= area().left() + headWidth()) {
        return std::nullopt;
    }
    const size_t lane = lanes_.laneAt(place.y());
    const std::vector<size_t> columns = columnsOfLanes()[lane];
    for (size_t i = 0; i < columns.size(); ++i) {
        const QRect row = rowOf(lane, i, columns.size());
        if (!row.contains(place.toPoint())) {
            continue;
        }
        for (const Part part : {Part::Hide, Part::Solo}) {
            if (buttonOf(row, part).contains(place.toPoint())) {
                return Place{columns[i], part};
            }
        }
        return Place{columns[i], Part::Name};
    }
    return std::nullopt;
}

void LaneHeads::draw(QCPPainter* painter) {
    if (!lanes_.shown()) {
        return;
    }
    painter->setFont(font_);
    const auto columns = columnsOfLanes();
    for (size_t lane = 0; lane < lanes_.count(); ++lane) {
        if (lanes_.inSight(lane)) {
            drawLane(painter, lane, columns[lane]);
        }
    }
}

void LaneHeads::drawLane(QCPPainter* painter, size_t lane, const std::vector<size_t>& columns) const {
    const QRect whole = lanes_.rect(lane);
    const QRect head(area().left(), whole.top(), width(), whole.height());
    if (dropLane_ == lane) {
        painter->fillRect(head, shade_);
    }
    for (size_t i = 0; i < columns.size(); ++i) {
        drawEntry(painter, columns[i], rowOf(lane, i, columns.size()));
    }
    if (!lanes_.isLow(lane)) {
        drawScale(painter, lane);
    }
    painter->setPen(QPen(line_, 0));
    painter->drawLine(head.bottomLeft(), head.bottomRight());
}

void LaneHeads::drawEntry(QCPPainter* painter, size_t column, const QRect& row) const {
    const Entry& entry = entries_[column];
    const QFontMetrics metrics(font_);
    const int line = lineHeight();
    if (entry.marked) {
        painter->fillRect(row.adjusted(0, 0, 0, -1), shade_);
    }
    painter->fillRect(QRect(row.left(), row.top(), 4, row.height() - 1), entry.color);
    const int left = row.left() + 4 + kHeadGap;
    const QRect name(left, row.top() + 1, buttonOf(row, Part::Solo).left() - left, line);
    painter->setPen(text_);
    painter->drawText(name, Qt::AlignLeft | Qt::AlignVCenter,
                      metrics.elidedText(entry.name, Qt::ElideRight, name.width()));
    drawButtons(painter, row);
    if (column >= readings_.size()) {
        return;
    }
    const Reading& reading = readings_[column];
    const QRect value(left, name.bottom() + 1, row.right() - kHeadGap - left, line);
    if (value.bottom() <= row.bottom()) {
        const QString text = entry.unit.isEmpty() ? reading.text : reading.text + u' ' + entry.unit;
        painter->setPen(text_);
        painter->drawText(value, Qt::AlignRight | Qt::AlignVCenter, reading.text.isEmpty() ? entry.unit : text);
    }
    drawLevel(painter, entry, reading, row);
}

// An S for "solo", and a cross for "hide"; drawn, because not every font has them alike.
void LaneHeads::drawButtons(QCPPainter* painter, const QRect& row) const {
    painter->setPen(QPen(dimmed_, 0));
    const QRect solo = buttonOf(row, Part::Solo);
    painter->drawText(solo, Qt::AlignCenter, QStringLiteral("S"));
    const QRect hide = buttonOf(row, Part::Hide);
    const int inner = hide.width() * 3 / 10;
    const QRect cross = hide.adjusted(inner, inner, -inner, -inner);
    painter->setAntialiasing(true);
    painter->setPen(QPen(dimmed_, 1.3));
    painter->drawLine(cross.topLeft(), cross.bottomRight());
    painter->drawLine(cross.topRight(), cross.bottomLeft());
    painter->setAntialiasing(false);
}

void LaneHeads::drawLevel(QCPPainter* painter, const Entry& entry, const Reading& reading, const QRect& row) const {
    if (!(reading.low <= reading.high)) {
        return;
    }
    const QRect bar(row.left() + 4 + kHeadGap, row.bottom() - kBar - 2, row.width() - 4 - 2 * kHeadGap, kBar);
    if (bar.top() <= row.top() + lineHeight()) {
        return;
    }
    painter->fillRect(bar, shade_);
    const auto placeOf = [&](double part) {
        return static_cast<int>(std::lround(std::clamp(part, 0.0, 1.0) * bar.width()));
    };
    const int first = placeOf(reading.low);
    const int last = std::max(placeOf(reading.high), first + 2);
    const bool full = reading.high >= kFull || reading.low <= 1.0 - kFull;
    painter->fillRect(QRect(bar.left() + first, bar.top(), last - first, bar.height()),
                      full ? QColor(200, 30, 30) : entry.color);
}

void LaneHeads::drawScale(QCPPainter* painter, size_t lane) const {
    const int line = lineHeight();
    const QRect whole = lanes_.rect(lane);
    const int right = area().right() - kHeadGap;
    const double step = lanes_.tickStep(lane);
    painter->setPen(dimmed_);
    forEachTick(lanes_.range(lane), step, [&](double value) {
        const int middle = static_cast<int>(std::lround(lanes_.pixelOf(lane, value)));
        const QRect text(right - scaleWidth(), middle - line / 2, scaleWidth() - kHeadGap, line);
        if (text.top() >= whole.top() && text.bottom() <= whole.bottom()) {
            painter->drawText(text, Qt::AlignRight | Qt::AlignVCenter, plainNumber(value, decimalsOf(step)));
        }
        painter->drawLine(QPoint(right, middle), QPoint(right + kHeadGap, middle));
    });
}

void LaneGrid::draw(QCPPainter* painter) {
    if (!lanes_.shown()) {
        return;
    }
    const QRect picture = clipRect();
    for (size_t lane = 0; lane < lanes_.count(); ++lane) {
        if (!lanes_.inSight(lane)) {
            continue;
        }
        const QRect place = lanes_.rect(lane);
        if (lines_ && !lanes_.isLow(lane)) {
            painter->setPen(grid_);
            forEachTick(lanes_.range(lane), lanes_.tickStep(lane), [&](double value) {
                const double row = lanes_.pixelOf(lane, value);
                painter->drawLine(QPointF(picture.left(), row), QPointF(picture.right(), row));
            });
        }
        painter->setPen(border_);
        painter->drawLine(place.bottomLeft(), place.bottomRight());
    }
}

}  // namespace tarno2
