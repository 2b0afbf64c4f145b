#pragma once

#include <QColor>
#include <QString>
#include <QWidget>
#include <optional>
#include <vector>

#include "measure/plot_scale.h"
#include "measure/spectrum.h"

class QPainter;

namespace tarno2 {

/// A spectrum as it is drawn: values in the unit of the axis, a curve a channel.
struct SpectrumCurves {
    struct Curve {
        QString name;
        QColor color;
        std::vector<double> values;  ///< of each bin
    };
    std::vector<Curve> curves;
    double binWidth = 0.0;  ///< Hz
    QString unit;           ///< of the values
    bool decades = false;   ///< the values want a logarithmic axis
    double deepest = 0.0;   ///< below this nothing is drawn
};

/// Draws spectra with their axes, in the colours of its palette. Of the bins in a column of pixels the greatest is
/// seen. The wheel zooms the frequency about the mouse, a double click shows all. Window thread.
class SpectrumPicture : public QWidget {
    Q_OBJECT

public:
    explicit SpectrumPicture(QWidget* parent);

    void setCurves(SpectrumCurves curves);
    /// Says why there is nothing; empty with curves.
    void setNotice(const QString& notice);
    void setLogarithmic(bool logarithmic);
    [[nodiscard]] const SpectrumCurves& curves() const { return curves_; }

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    [[nodiscard]] QRect area() const;
    [[nodiscard]] PlotScale scaleX() const;
    [[nodiscard]] PlotScale scaleY() const;
    void drawAxes(QPainter& painter, const QRect& area, const PlotScale& x, const PlotScale& y) const;
    void drawCurve(QPainter& painter, const QRect& area, const PlotScale& x, const PlotScale& y,
                   const SpectrumCurves::Curve& curve) const;
    void drawMouse(QPainter& painter, const QRect& area, const PlotScale& x, const PlotScale& y) const;
    [[nodiscard]] double highest() const;

    SpectrumCurves curves_;
    QString notice_;
    bool logarithmic_ = false;
    double zoomLow_ = 0.0;  ///< Hz; equal: all is shown
    double zoomHigh_ = 0.0;
    std::optional<QPoint> mouse_;
};

}  // namespace tarno2
