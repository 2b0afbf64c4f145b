#include "scopera/level_lines.h"

#include <QFontMetrics>
#include <algorithm>
#include <array>
#include <cmath>

namespace tarno2 {

namespace {

constexpr double kLevelReach = 4.0;  // pixels from a line within which the mouse takes it
constexpr double kHandle = 9.0;

}  // namespace

std::optional<double> LevelLines::pixelOf(const Level& level) const {
    if (level.column >= columns_.size() || !columns_[level.column].visible ||
        columns_[level.column].lane >= lanes_.count()) {
        return std::nullopt;
    }
    const size_t lane = columns_[level.column].lane;
    const QCPRange range = lanes_.range(lane);
    return lanes_.pixelOf(lane, std::clamp(level.y, range.lower, range.upper));
}

int LevelLines::sideOf(const Level& level) const {
    const QCPRange range = lanes_.range(columns_[level.column].lane);
    return level.y > range.upper ? 1 : level.y < range.lower ? -1 : 0;
}

std::optional<size_t> LevelLines::levelAt(const QPointF& place) const {
    if (!clipRect().contains(place.toPoint())) {
        return std::nullopt;
    }
    for (size_t i = levels_.size(); i-- > 0;) {
        const auto row = pixelOf(levels_[i]);
        if (!levels_[i].movable || !row) {
            continue;
        }
        const bool beyond = sideOf(levels_[i]) != 0;
        if (std::abs(*row - place.y()) <= (beyond ? kHandle : kLevelReach) &&
            (!beyond || place.x() >= clipRect().right() - kHandle)) {
            return i;
        }
    }
    return std::nullopt;
}

std::optional<size_t> LevelLines::placeOf(uint64_t identity) const {
    const auto found = std::find_if(levels_.begin(), levels_.end(), [identity](const Level& level) {
        return level.identity == identity && level.movable;
    });
    return found != levels_.end() ? std::optional(static_cast<size_t>(found - levels_.begin())) : std::nullopt;
}

const LevelLines::Level& LevelLines::move(size_t level, double pixel) {
    Level& moved = levels_[level];
    if (!pixelOf(moved)) {
        return moved;
    }
    const QCPRange range = lanes_.range(columns_[moved.column].lane);
    moved.y = std::clamp(lanes_.valueAt(columns_[moved.column].lane, pixel), range.lower, range.upper);
    return moved;
}

void LevelLines::draw(QCPPainter* painter) {
    const QRect area = clipRect();
    const QFontMetrics metrics(font_);
    painter->setFont(font_);
    for (const Level& level : levels_) {
        const auto row = pixelOf(level);
        if (!row) {
            continue;
        }
        const QColor color = columns_[level.column].color;
        const int side = sideOf(level);
        if (side == 0) {
            painter->setPen(QPen(color, 0, Qt::DashLine));
            painter->drawLine(QPointF(area.left(), *row), QPointF(area.right(), *row));
        }
        if (level.movable || side != 0) {
            painter->setPen(Qt::NoPen);
            painter->setBrush(color);
            drawHandle(*painter, *row, side);
        }
        // Above the line, or below it where the picture ends.
        const bool below = side > 0 || (side == 0 && *row - metrics.height() < area.top());
        const double top = below ? *row + 1 : *row - metrics.height();
        painter->setPen(text_);
        painter->drawText(QRectF(area.left(), top, area.width() - kHandle - 4, metrics.height()),
                          Qt::AlignRight | Qt::AlignVCenter, level.text);
    }
}

// At the right end of the line; of one beyond the range it points there.
void LevelLines::drawHandle(QCPPainter& painter, double row, int side) const {
    const double right = clipRect().right();
    std::array<QPointF, 3> handle = {QPointF(right - kHandle, row), QPointF(right, row - kHandle / 2),
                                     QPointF(right, row + kHandle / 2)};
    if (side != 0) {
        const double base = row + side * kHandle;
        handle = {QPointF(right - kHandle / 2, row), QPointF(right - kHandle, base), QPointF(right, base)};
    }
    painter.drawPolygon(handle.data(), static_cast<int>(handle.size()));
}

}  // namespace tarno2
