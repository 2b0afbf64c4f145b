#pragma once

#include <QColor>
#include <QFont>
#include <QString>
#include <cstdint>
#include <optional>
#include <qcustomplot.h>
#include <vector>

#include "scopera/lanes.h"

namespace tarno2 {

/// What stands at the left of the lanes: for each of its columns the colour, the name, the newest value with its unit
/// and the bar of its level; and beside them the lane's scale.
class LaneHeads : public QCPLayerable {
public:
    struct Entry {
        QString name;
        QString unit;
        QColor color;
        bool visible = false;
        bool marked = false;
        size_t lane = 0;
    };
    struct Reading {
        QString text;
        double low = 0.0;
        double high = 0.0;
    };
    /// What of a head is at a place.
    enum class Part { Name, Hide, Solo };
    struct Place {
        size_t column;
        Part part;
    };

    LaneHeads(QCustomPlot* plot, const Lanes& lanes) : QCPLayerable(plot), lanes_(lanes) {}

    void setEntries(std::vector<Entry> entries) { entries_ = std::move(entries); }
    void setReadings(std::vector<Reading> readings) { readings_ = std::move(readings); }
    void setFont(const QFont& font) { font_ = font; }
    void setColors(const QColor& text, const QColor& dimmed, const QColor& line, const QColor& shade);
    /// The lane that a head is dragged over; nothing: none is.
    void setDropLane(std::optional<size_t> lane) { dropLane_ = lane; }

    /// Logical pixels that heads and scales take, left of the picture.
    [[nodiscard]] int width() const { return headWidth() + scaleWidth(); }
    [[nodiscard]] int scaleWidth() const;
    [[nodiscard]] int lineHeight() const;
    [[nodiscard]] std::optional<Place> placeAt(const QPointF& place) const;

protected:
    void applyDefaultAntialiasingHint(QCPPainter* painter) const override { painter->setAntialiasing(false); }
    QRect clipRect() const override;
    void draw(QCPPainter* painter) override;

private:
    [[nodiscard]] int headWidth() const;
    [[nodiscard]] QRect area() const;
    [[nodiscard]] std::vector<std::vector<size_t>> columnsOfLanes() const;
    [[nodiscard]] QRect rowOf(size_t lane, size_t index, size_t count) const;
    [[nodiscard]] QRect buttonOf(const QRect& row, Part part) const;
    void drawLane(QCPPainter* painter, size_t lane, const std::vector<size_t>& columns) const;
    void drawEntry(QCPPainter* painter, size_t column, const QRect& row) const;
    void drawButtons(QCPPainter* painter, const QRect& row) const;
    void drawLevel(QCPPainter* painter, const Entry& entry, const Reading& reading, const QRect& row) const;
    void drawScale(QCPPainter* painter, size_t lane) const;

    const Lanes& lanes_;
    std::vector<Entry> entries_;
    std::vector<Reading> readings_;
    std::optional<size_t> dropLane_;
    QFont font_;
    QColor text_;
    QColor dimmed_;
    QColor line_;
    QColor shade_;
};

/// The lines of the lanes' scales behind the curves, and the borders between lanes.
class LaneGrid : public QCPLayerable {
public:
    LaneGrid(QCPAxis* xAxis, const Lanes& lanes) : QCPLayerable(xAxis->parentPlot()), xAxis_(xAxis), lanes_(lanes) {}

    void setColors(const QPen& grid, const QPen& border) {
        grid_ = grid;
        border_ = border;
    }
    void setLines(bool shown) { lines_ = shown; }

protected:
    void applyDefaultAntialiasingHint(QCPPainter* painter) const override { painter->setAntialiasing(false); }
    QRect clipRect() const override { return xAxis_->axisRect()->rect(); }
    void draw(QCPPainter* painter) override;

private:
    QCPAxis* xAxis_;
    const Lanes& lanes_;
    QPen grid_;
    QPen border_;
    bool lines_ = true;
};

}  // namespace tarno2
