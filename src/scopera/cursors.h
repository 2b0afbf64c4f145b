#pragma once

#include <QColor>
#include <QFont>
#include <QString>
#include <optional>
#include <qcustomplot.h>
#include <vector>

#include <tarno2/ISCOPERA.h>

#include "scopera/clock_axis.h"
#include "scopera/lanes.h"

namespace tarno2 {

/// Two pairs of crossing lines over the picture, and a box with their places and the differences. They want a layer of
/// their own, so that moving one draws no curve.
class Cursors : public QCPLayerable {
public:
    /// Lines of one cursor that are held with the mouse: a vertical one, a horizontal one or both.
    struct Grip {
        size_t cursor;
        bool vertical;
        bool horizontal;
    };

    Cursors(QCPAxis* xAxis, const Lanes& lanes);

    [[nodiscard]] SCOPERACursors places() const;
    void setPlaces(const SCOPERACursors& places);
    /// Cursors that can't be seen come to a third and two thirds of the picture. Their heights stay there, whatever
    /// signal comes, until one is placed.
    void bringIntoView();
    [[nodiscard]] std::optional<Grip> gripAt(const QPointF& place) const;
    void move(const Grip& grip, const QPointF& place);

    void setFont(const QFont& font) { font_ = font; }
    void setColors(const QColor& line, const QColor& text, const QColor& background);
    void setTexts(const QString& unitX, const QString& unitY, const QString& difference);
    /// What the values of each lane are told in, in place of the Y axis's unit.
    void setLaneUnits(const std::vector<QString>& units) { laneUnits_ = units; }
    /// Decimals of the values; negative: as many as the picture's resolution needs.
    void setDigits(int x, int y);
    /// The values of X are times of day, or numbers again.
    void setClock(const ClockAxis& clock) { clock_ = clock; }
    /// The box's text, row by row: head, X, Y. The units, where there are any, stand above.
    [[nodiscard]] QVector<QStringList> table() const;

protected:
    void applyDefaultAntialiasingHint(QCPPainter* painter) const override;
    QRect clipRect() const override;
    void draw(QCPPainter* painter) override;

private:
    [[nodiscard]] size_t laneOf(size_t cursor) const;
    [[nodiscard]] double yOf(size_t cursor) const;
    [[nodiscard]] QString unitOf(size_t cursor) const;
    [[nodiscard]] int clockDecimals() const;
    [[nodiscard]] bool onOneDay() const;
    [[nodiscard]] QString textOfX(double x, bool difference) const;
    void drawLines(QCPPainter* painter) const;
    void drawTable(QCPPainter* painter) const;

    QCPAxis* xAxis_;
    const Lanes& lanes_;
    SCOPERACursors places_{};
    bool heightsFollow_ = false;  ///< the picture's range: nobody has placed them yet
    QFont font_;
    QColor lineColor_;
    QColor textColor_;
    QColor backgroundColor_;
    QString unitX_;
    QString unitY_;
    std::vector<QString> laneUnits_;
    QString difference_;
    ClockAxis clock_;
    int digitsX_ = -1;
    int digitsY_ = -1;
};

}  // namespace tarno2
