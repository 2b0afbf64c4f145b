#pragma once

#include <QFont>
#include <QPoint>
#include <QString>
#include <cstdint>
#include <optional>
#include <qcustomplot.h>
#include <variant>
#include <vector>

#include <tarno2/ISCOPERA.h>

#include "scopera/clock_axis.h"
#include "scopera/cursors.h"
#include "scopera/curves.h"
#include "scopera/flags.h"
#include "scopera/lane_heads.h"
#include "scopera/lanes.h"
#include "scopera/legend.h"
#include "scopera/level_lines.h"

class QScrollBar;

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
    void setLanes(const SCOPERALane* lanes, uint32_t count);
    void setReadings(const SCOPERAReading* readings, uint32_t count);
    void setLevels(const SCOPERALevel* levels, uint32_t count);
    [[nodiscard]] bool showLane(uint32_t lane);
    void setClock(const ClockAxis& clock);
    void setEarlier(const SCOPERAFrames* frames, uint32_t count);
    void setAxisRange(int32_t axis, const QCPRange& range);
    [[nodiscard]] QCPRange axisRange(int32_t axis) const { return axisOf(axis)->range(); }
    [[nodiscard]] std::optional<QCPRange> extremes();
    [[nodiscard]] std::optional<QCPRange> extremes(uint32_t column);
    [[nodiscard]] bool setOption(uint32_t option, int32_t value);
    [[nodiscard]] std::optional<int32_t> option(uint32_t option) const;
    [[nodiscard]] bool setText(uint32_t code, const QString& text);
    void setPlotFont(const QString& family, int32_t points);
    void setCursors(const SCOPERACursors& places);
    [[nodiscard]] SCOPERACursors cursors() const { return cursors_->places(); }
    [[nodiscard]] uint32_t pixelWidth();
    void render();
    /// As it is shown, with what has changed since.
    [[nodiscard]] QPixmap picture();
    /// The same as SVG.
    [[nodiscard]] QByteArray svg();

protected:
    bool event(QEvent* event) override;
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
        size_t lane;
        double movedY;  ///< pixels that Y has gone already: its unit may change on the way
        bool movesX;
        bool movesY;
    };

    /// What else the mouse holds, from its press to its release.
    struct HeldBorder {
        size_t lane;
    };
    struct HeldLevel {
        size_t level;
        QPointF begin;
        bool moved;
    };
    struct HeldHead {
        size_t column;
        QPointF begin;
        bool moved;
    };
    using Held = std::variant<std::monostate, Pan, Cursors::Grip, HeldBorder, HeldLevel, HeldHead>;

    struct Column {
        QString name;
        QString unit;
        QColor color;
        bool visible;
        bool marked;
        size_t lane;
        double scale;
        double offset;
    };

    template <typename... Arguments, typename... Values>
    void tell(void(TARNO2_CALL* callBack)(void*, Arguments...), Values... values) const {
        if (callBack != nullptr) {
            callBack(events_.m_pContext, values...);
        }
    }
    [[nodiscard]] QCPAxis* axisOf(int32_t axis) const { return axis == kScoperaAxisX ? xAxis : yAxis; }
    void makeStale();
    void applyColumns();
    // Lanes (plot_view_lanes.cpp).
    void arrangeLanes();
    void holdLevel(uint64_t identity, const HeldLevel& held);
    void scrollLanes(int pixels);
    /// Arranges the view anew when its size has changed since it was drawn.
    void fitViewport();
    void fitClock();
    void applyPalette();
    void applyFont();
    void showCursors(bool shown);
    /// Neither too small nor too large to draw.
    [[nodiscard]] static bool isDrawable(double lower, double upper);
    /// A range that the user chose; false when it would be too small or too large to draw.
    bool changeRange(int32_t axis, double lower, double upper, int32_t cause);
    /// The same for a lane; without lanes it is the Y axis.
    bool changeLaneRange(size_t lane, double lower, double upper, int32_t cause);
    void zoom(const QPointF& place, double factor, bool vertical, int32_t cause);
    void pinch(const QPointF& place, double factor);
    void zoomInto(const QRect& rect);
    [[nodiscard]] Held holdAt(const QPointF& place);
    void press(const LaneHeads::Place& head, const QPointF& place);
    void dragBorder(const HeldBorder& held, const QPointF& place);
    void dragLevel(HeldLevel& held, const QPointF& place, bool done);
    void dragHead(HeldHead& held, const QPointF& place);
    void dropHead(const HeldHead& held, const QPointF& place);
    void switchColumn(size_t column);
    void dragPicture(Pan& held, const QPointF& place);
    void dragCursor(const Cursors::Grip& grip, const QPointF& place);
    void showMouseShape(const QPointF& place);

    SCOPERAEvents events_{};
    Lanes lanes_;
    QSharedPointer<QCPAxisTicker> numbers_;
    QSharedPointer<ClockTicker> times_;
    Curves* curves_;
    Legend* legend_;
    Cursors* cursors_;
    Flags* flags_;
    LevelLines* levels_;
    LaneGrid* laneGrid_;
    LaneHeads* heads_;
    QScrollBar* laneScroll_;
    std::vector<Column> columns_;
    QFont font_;
    QString units_[2];
    QString difference_;
    int32_t digits_[2] = {-1, -1};
    ClockAxis clock_;
    bool points_ = false;
    bool grid_ = true;
    bool stale_ = true;
    bool paintWanted_ = true;
    uint32_t announcedWidth_ = 0;
    Held held_;
};

}  // namespace tarno2
