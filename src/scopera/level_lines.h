#pragma once

#include <QColor>
#include <QFont>
#include <QString>
#include <optional>
#include <qcustomplot.h>
#include <vector>

#include "scopera/lanes.h"

namespace tarno2 {

/// Lines at values of columns, thresholds for example, which can be dragged up and down. Of one beyond what is shown an
/// arrow points to it, by which it is dragged back.
class LevelLines : public QCPLayerable {
public:
    struct Level {
        size_t column = 0;
        double y = 0.0;
        QString text;
        uint64_t identity = 0;
        bool movable = false;
    };

    /// Where a column is drawn, and how.
    struct Column {
        size_t lane = 0;
        QColor color;
        bool visible = false;
    };

    LevelLines(QCPAxis* xAxis, const Lanes& lanes) : QCPLayerable(xAxis->parentPlot()), xAxis_(xAxis), lanes_(lanes) {}

    void setLevels(std::vector<Level> levels) { levels_ = std::move(levels); }
    /// Of a level by its place, and the other way round; nothing when there is none, or it can't be moved.
    [[nodiscard]] uint64_t identityOf(size_t level) const { return levels_[level].identity; }
    [[nodiscard]] std::optional<size_t> placeOf(uint64_t identity) const;
    void setColumns(std::vector<Column> columns) { columns_ = std::move(columns); }
    void setFont(const QFont& font) { font_ = font; }
    void setTextColor(const QColor& text) { text_ = text; }
    /// The movable level at a place.
    [[nodiscard]] std::optional<size_t> levelAt(const QPointF& place) const;
    /// Moves it to the height of that place, as far as its lane's range reaches.
    const Level& move(size_t level, double pixel);

protected:
    void applyDefaultAntialiasingHint(QCPPainter* painter) const override { painter->setAntialiasing(false); }
    QRect clipRect() const override { return xAxis_->axisRect()->rect(); }
    void draw(QCPPainter* painter) override;

private:
    /// The height at which it is drawn, at the end of its lane's range when it lies beyond; nothing while its column is
    /// not drawn.
    [[nodiscard]] std::optional<double> pixelOf(const Level& level) const;
    /// 1 above the range, -1 below it.
    [[nodiscard]] int sideOf(const Level& level) const;
    void drawHandle(QCPPainter& painter, double row, int side) const;

    QCPAxis* xAxis_;
    const Lanes& lanes_;
    std::vector<Level> levels_;
    std::vector<Column> columns_;
    QFont font_;
    QColor text_;
};

}  // namespace tarno2
