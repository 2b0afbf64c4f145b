#pragma once

#include <QFont>
#include <QPoint>
#include <QString>
#include <cstdint>
#include <optional>
#include <qcustomplot.h>

#include <tarno2/ISCOPERA.h>

#include "scopera/cursors.h"
#include "scopera/curves.h"
#include "scopera/flags.h"
#include "scopera/legend.h"

namespace tarno2 {

/// The widget: axes, curves, legend and cursors, and what the mouse does with them. The methods are those of
/// `ISCOPERA`, whose arguments have been checked. Changes mark the picture as stale; it is drawn when the window system
/// asks for it, so never while the view can't be seen.
class PlotView : public QCustomPlot {
public:
    explicit PlotView(QWidget* parent);

    void setEvents(const SCOPERAEvents& events) { events_ = events; }
    void setColumns(const SCOPERAColumn* columns, uint32_t count);
    void setFrames(const SCOPERAFrames& frames);
    void setFlags(const SCOPERAFlag* flags, uint32_t count);
    void setAxisRange(int32_t axis, const QCPRange& range);
    [[nodiscard]] QCPRange axisRange(int32_t axis) const { return axisOf(axis)->range(); }
    [[nodiscard]] std::optional<QCPRange> extremes();
    [[nodiscard]] bool setOption(uint32_t option, int32_t value);
    [[nodiscard]] std::optional<int32_t> option(uint32_t option) const;
    [[nodiscard]] bool setText(uint32_t code, const QString& text);
    void setPlotFont(const QString& family, int32_t points);
    void setCursors(const SCOPERACursors& places);
    [[nodiscard]] const SCOPERACursors& cursors() const { return cursors_->places(); }
    [[nodiscard]] uint32_t pixelWidth();
    void render();
    /// As it is shown, with what has changed since.
    [[nodiscard]] QPixmap picture();

protected:
    void updateLayout() override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    /// A drag of the picture. An axis moves once the mouse has gone a little way along it, so that a drag to the side
    /// leaves the Y axis alone.
    struct Pan {
        QPointF begin;
        QCPRange x;
        QCPRange y;
        bool movesX;
        bool movesY;
    };

    template <typename... Arguments, typename... Values>
    void tell(void(TARNO2_CALL* callBack)(void*, Arguments...), Values... values) const {
        if (callBack != nullptr) {
            callBack(events_.m_pContext, values...);
        }
    }
    [[nodiscard]] QCPAxis* axisOf(int32_t axis) const { return axis == kScoperaAxisX ? xAxis : yAxis; }
    void makeStale();
    /// Arranges the view anew when its size has changed since it was drawn.
    void fitViewport();
    void applyPalette();
    void applyFont();
    void showCursors(bool shown);
    /// A range that the user chose; false when it would be too small or too large to draw.
    bool changeRange(int32_t axis, double lower, double upper, int32_t cause);
    void zoomInto(const QRect& rect);
    void switchColumn(size_t column);
    void dragPicture(const QPointF& place);
    void dragCursor(const QPointF& place);
    void showMouseShape(const QPointF& place);

    SCOPERAEvents events_{};
    Curves* curves_;
    Legend* legend_;
    Cursors* cursors_;
    Flags* flags_;
    QFont font_;
    QString units_[2];
    QString difference_;
    int32_t digits_[2] = {-1, -1};
    bool points_ = false;
    bool grid_ = true;
    bool stale_ = true;
    bool paintWanted_ = true;
    uint32_t announcedWidth_ = 0;
    std::optional<Pan> pan_;
    std::optional<Cursors::Grip> grip_;
};

}  // namespace tarno2
