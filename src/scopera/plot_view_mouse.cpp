#include <QMouseEvent>
#include <QWheelEvent>
#include <cmath>

#include "scopera/plot_view.h"

namespace tarno2 {

namespace {

constexpr double kPanThreshold = 8.0;  // pixels along an axis
constexpr int kSmallestZoom = 4;       // pixels of a rectangle's sides
constexpr double kZoomStep = 0.8;      // of the range, for a notch of the wheel
constexpr double kNotch = 120.0;

}  // namespace

bool PlotView::changeRange(int32_t axis, double lower, double upper, int32_t cause) {
    constexpr double kFinest = 1e-11;  // of the numbers themselves, beyond which they can't be told apart
    constexpr double kLargest = 1e18;
    const double most = std::max(std::abs(lower), std::abs(upper));
    // Negated, so that no number is refused too.
    if (!(upper - lower > most * kFinest && most < kLargest) || !QCPRange::validRange(lower, upper)) {
        return false;
    }
    axisOf(axis)->setRange(lower, upper);
    makeStale();
    tell(events_.m_pRangeChanged, axis, lower, upper, cause);
    return true;
}

void PlotView::zoomInto(const QRect& rect) {
    const QRect area = rect.normalized() & axisRect()->rect();
    if (area.width() < kSmallestZoom || area.height() < kSmallestZoom) {
        return;
    }
    const QCPRange x(xAxis->pixelToCoord(area.left()), xAxis->pixelToCoord(area.right()));
    const QCPRange y(yAxis->pixelToCoord(area.bottom()), yAxis->pixelToCoord(area.top()));
    changeRange(kScoperaAxisX, x.lower, x.upper, kScoperaCauseRectangle);
    changeRange(kScoperaAxisY, y.lower, y.upper, kScoperaCauseRectangle);
}

void PlotView::switchColumn(size_t column) {
    const bool visible = !legend_->entryVisible(column);
    legend_->setEntryVisible(column, visible);
    curves_->setCurveVisible(column, visible);
    makeStale();
    tell(events_.m_pColumnSwitched, static_cast<uint32_t>(column), visible ? 1 : 0);
}

void PlotView::mousePressEvent(QMouseEvent* event) {
    const QPointF place = event->position();
    if (event->button() == Qt::LeftButton) {
        const bool inside = axisRect()->rect().contains(place.toPoint());
        if (const auto column = legend_->entryAt(place)) {
            switchColumn(*column);
        } else if (inside && (event->modifiers() & Qt::ShiftModifier) != 0) {
            QCustomPlot::mousePressEvent(event);
        } else if (const auto flag = inside ? flags_->flagAt(place) : std::nullopt) {
            tell(events_.m_pFlagClicked, *flag);
        } else if (inside) {
            grip_ = cursors_->gripAt(place);
            if (!grip_) {
                pan_ = Pan{place, xAxis->range(), yAxis->range(), false, false};
            }
        }
    }
    event->accept();
    tell(events_.m_pMousePressed, static_cast<int32_t>(event->button()), xAxis->pixelToCoord(place.x()),
         yAxis->pixelToCoord(place.y()));
}

void PlotView::mouseMoveEvent(QMouseEvent* event) {
    const QPointF place = event->position();
    event->accept();
    if (selectionRect()->isActive()) {
        QCustomPlot::mouseMoveEvent(event);
    } else if (grip_) {
        dragCursor(place);
    } else if (pan_) {
        dragPicture(place);
    } else {
        showMouseShape(place);
    }
    const bool inside = axisRect()->rect().contains(place.toPoint());
    tell(events_.m_pMouseMoved, xAxis->pixelToCoord(place.x()), yAxis->pixelToCoord(place.y()), inside ? 1 : 0);
}

void PlotView::mouseReleaseEvent(QMouseEvent* event) {
    event->accept();
    if (event->button() != Qt::LeftButton) {
        return;
    }
    if (selectionRect()->isActive()) {
        QCustomPlot::mouseReleaseEvent(event);
    }
    pan_.reset();
    grip_.reset();
    showMouseShape(event->position());
}

void PlotView::mouseDoubleClickEvent(QMouseEvent* event) {
    event->accept();
    if (event->button() != Qt::LeftButton) {
        return;
    }
    if (const auto column = legend_->entryAt(event->position())) {
        switchColumn(*column);
    } else {
        tell(events_.m_pAutomaticWanted);
    }
}

void PlotView::wheelEvent(QWheelEvent* event) {
    event->accept();
    const QPointF place = event->position();
    const QRect area = axisRect()->rect();
    // Some systems turn the wheel sideways when a modifier is held.
    const QPoint angle = event->angleDelta();
    const double notches = (angle.y() != 0 ? angle.y() : angle.x()) / kNotch;
    if (notches == 0.0 || legend_->entryAt(place)) {
        return;
    }
    const bool vertical = (event->modifiers() & Qt::ControlModifier) != 0 || place.x() < area.left();
    const int32_t axis = vertical ? kScoperaAxisY : kScoperaAxisX;
    const double center = vertical ? yAxis->pixelToCoord(place.y()) : xAxis->pixelToCoord(place.x());
    const double factor = std::pow(kZoomStep, notches);
    const QCPRange range = axisRange(axis);
    changeRange(axis, center + (range.lower - center) * factor, center + (range.upper - center) * factor,
                kScoperaCauseWheel);
}

void PlotView::leaveEvent(QEvent* event) {
    tell(events_.m_pMouseMoved, 0.0, 0.0, 0);
    QCustomPlot::leaveEvent(event);
}

void PlotView::dragPicture(const QPointF& place) {
    const QPointF way = place - pan_->begin;
    pan_->movesX = pan_->movesX || std::abs(way.x()) >= kPanThreshold;
    pan_->movesY = pan_->movesY || std::abs(way.y()) >= kPanThreshold;
    if (!pan_->movesX && !pan_->movesY) {
        return;
    }
    setCursor(Qt::ClosedHandCursor);
    // A call back may end the drag or the view's range may be another by then: work with a copy.
    const Pan pan = *pan_;
    const QSize size = axisRect()->size();
    if (pan.movesX) {
        const double shift = -way.x() * pan.x.size() / size.width();
        changeRange(kScoperaAxisX, pan.x.lower + shift, pan.x.upper + shift, kScoperaCauseDrag);
    }
    if (pan.movesY) {
        const double shift = way.y() * pan.y.size() / size.height();
        changeRange(kScoperaAxisY, pan.y.lower + shift, pan.y.upper + shift, kScoperaCauseDrag);
    }
}

void PlotView::dragCursor(const QPointF& place) {
    cursors_->move(*grip_, place);
    if (stale_) {
        update();
    } else {
        cursors_->layer()->replot();
    }
    const SCOPERACursors places = cursors_->places();
    tell(events_.m_pCursorsMoved, &places);
}

void PlotView::showMouseShape(const QPointF& place) {
    const auto grip = cursors_->gripAt(place);
    if (!grip) {
        unsetCursor();
    } else if (grip->vertical && grip->horizontal) {
        setCursor(Qt::SizeAllCursor);
    } else {
        setCursor(grip->vertical ? Qt::SizeHorCursor : Qt::SizeVerCursor);
    }
}

}  // namespace tarno2
