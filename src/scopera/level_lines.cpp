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
        columns_[level.column].lane >= lanes_.count() || !lanes_.range(columns_[level.column].lane).contains(level.y)) {
        return std::nullopt;
    }
    return lanes_.pixelOf(columns_[level.column].lane, level.y);
}

std::optional<size_t> LevelLines::levelAt(const QPointF& place) const {
    if (!clipRect().contains(place.toPoint())) {
        return std::nullopt;
    }
    for (size_t i = levels_.size(); i-- > 0;) {
        const auto row = pixelOf(levels_[i]);
        if (levels_[i].movable && row && std::abs(*row - place.y()) <= kLevelReach) {
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
        painter->setPen(QPen(color, 0, Qt::DashLine));
        painter->drawLine(QPointF(area.left(), *row), QPointF(area.right(), *row));
        if (level.movable) {
            painter->setPen(Qt::NoPen);
            painter->setBrush(color);
            const double right = area.right();
            const std::array<QPointF, 3> handle = {QPointF(right - kHandle, *row), QPointF(right, *row - kHandle / 2),
                                                   QPointF(right, *row + kHandle / 2)};
            painter->drawPolygon(handle.data(), static_cast<int>(handle.size()));
        }
        // Above the line, or below it where the picture ends.
        const double top = *row - metrics.height() < area.top() ? *row + 1 : *row - metrics.height();
        painter->setPen(text_);
        painter->drawText(QRectF(area.left(), top, area.width() - kHandle - 4, metrics.height()),
                          Qt::AlignRight | Qt::AlignVCenter, level.text);
    }
}

}  // namespace tarno2
