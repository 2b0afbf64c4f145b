#include <QGestureEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPinchGesture>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <utility>

#include "scopera/plot_view.h"

namespace tarno2 {

namespace {

constexpr double kPanThreshold = 8.0;  // pixels along an axis
constexpr int kSmallestZoom = 4;       // pixels of a rectangle's sides
constexpr double kZoomStep = 0.8;      // of the range, for a notch of the wheel
constexpr double kNotch = 120.0;
constexpr double kScrollLines = 3.0;  // of text, for a notch

}  // namespace

bool PlotView::isDrawable(double lower, double upper) {
    constexpr double kFinest = 1e-11;  // of the numbers themselves, beyond which they can't be told apart
    constexpr double kLargest = 1e18;
    const double most = std::max(std::abs(lower), std::abs(upper));
    return upper - lower > most * kFinest && most < kLargest && QCPRange::validRange(lower, upper);
}

bool PlotView::changeRange(int32_t axis, double lower, double upper, int32_t cause) {
    if (!isDrawable(lower, upper)) {
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
    const size_t lane = lanes_.laneAt(area.center().y());
    const QRect place = lanes_.shown() ? area & lanes_.rect(lane) : area;
    const QCPRange y(lanes_.valueAt(lane, place.bottom()), lanes_.valueAt(lane, place.top()));
    changeRange(kScoperaAxisX, x.lower, x.upper, kScoperaCauseRectangle);
    if (place.height() >= kSmallestZoom) {
        changeLaneRange(lane, y.lower, y.upper, kScoperaCauseRectangle);
    }
}

// About the place.
void PlotView::zoom(const QPointF& place, double factor, bool vertical, int32_t cause) {
    const size_t lane = lanes_.laneAt(place.y());
    const double center = vertical ? lanes_.valueAt(lane, place.y()) : xAxis->pixelToCoord(place.x());
    const QCPRange range = vertical ? lanes_.range(lane) : xAxis->range();
    const double lower = center + (range.lower - center) * factor;
    const double upper = center + (range.upper - center) * factor;
    if (vertical) {
        changeLaneRange(lane, lower, upper, cause);
    } else {
        changeRange(kScoperaAxisX, lower, upper, cause);
    }
}

void PlotView::switchColumn(size_t column) {
    const bool visible = !columns_[column].visible;
    columns_[column].visible = visible;
    applyColumns();
    tell(events_.m_pColumnSwitched, static_cast<uint32_t>(column), visible ? 1 : 0);
}

PlotView::Held PlotView::holdAt(const QPointF& place) {
    if (const auto border = lanes_.borderAt(place.y())) {
        return HeldBorder{*border};
    }
    if (const auto grip = cursors_->gripAt(place)) {
        return *grip;
    }
    if (const auto level = levels_->levelAt(place)) {
        return HeldLevel{*level, place, false};
    }
    const size_t lane = lanes_.laneAt(place.y());
    return Pan{place, xAxis->range(), lane, 0.0, false, false};
}

void PlotView::mousePressEvent(QMouseEvent* event) {
    const QPointF place = event->position();
    if (event->button() == Qt::LeftButton) {
        const bool inside = axisRect()->rect().contains(place.toPoint());
        if (const auto column = legend_->entryAt(place)) {
            switchColumn(*column);
        } else if (const auto border = inside ? std::nullopt : lanes_.borderAt(place.y())) {
            held_ = HeldBorder{*border};
        } else if (const auto head = heads_->placeAt(place)) {
            press(*head, place);
        } else if (inside && (event->modifiers() & Qt::ShiftModifier) != 0) {
            QCustomPlot::mousePressEvent(event);
        } else if (const auto flag = inside ? flags_->flagAt(place) : std::nullopt) {
            tell(events_.m_pFlagClicked, *flag);
        } else if (inside) {
            held_ = holdAt(place);
        }
    }
    event->accept();
    tell(events_.m_pMousePressed, static_cast<int32_t>(event->button()), xAxis->pixelToCoord(place.x()),
         lanes_.valueAt(lanes_.laneAt(place.y()), place.y()));
}

void PlotView::mouseMoveEvent(QMouseEvent* event) {
    const QPointF place = event->position();
    event->accept();
    if (selectionRect()->isActive()) {
        QCustomPlot::mouseMoveEvent(event);
    } else if (auto* pan = std::get_if<Pan>(&held_)) {
        dragPicture(*pan, place);
    } else if (const auto* grip = std::get_if<Cursors::Grip>(&held_)) {
        dragCursor(*grip, place);
    } else if (const auto* border = std::get_if<HeldBorder>(&held_)) {
        dragBorder(*border, place);
    } else if (auto* level = std::get_if<HeldLevel>(&held_)) {
        dragLevel(*level, place, false);
    } else if (auto* head = std::get_if<HeldHead>(&held_)) {
        dragHead(*head, place);
    } else {
        showMouseShape(place);
    }
    const bool inside = axisRect()->rect().contains(place.toPoint());
    const size_t lane = lanes_.laneAt(place.y());
    tell(events_.m_pMouseMoved, xAxis->pixelToCoord(place.x()), lanes_.valueAt(lane, place.y()), inside ? 1 : 0,
         lanes_.shown() ? static_cast<int32_t>(lane) : -1);
}

void PlotView::mouseReleaseEvent(QMouseEvent* event) {
    event->accept();
    if (event->button() != Qt::LeftButton) {
        return;
    }
    if (selectionRect()->isActive()) {
        QCustomPlot::mouseReleaseEvent(event);
    }
    Held held = std::exchange(held_, {});
    if (auto* level = std::get_if<HeldLevel>(&held)) {
        dragLevel(*level, event->position(), true);
    } else if (const auto* head = std::get_if<HeldHead>(&held)) {
        dropHead(*head, event->position());
    }
    showMouseShape(event->position());
}

void PlotView::mouseDoubleClickEvent(QMouseEvent* event) {
    event->accept();
    if (event->button() != Qt::LeftButton) {
        return;
    }
    if (const auto column = legend_->entryAt(event->position())) {
        switchColumn(*column);
    } else if (const auto head = heads_->placeAt(event->position())) {
        press(*head, event->position());
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
    if (place.x() < area.left() - heads_->scaleWidth() && lanes_.shown()) {
        scrollLanes(lanes_.scroll() - static_cast<int>(std::lround(notches * kScrollLines * heads_->lineHeight())));
        return;
    }
    const bool vertical = (event->modifiers() & Qt::ControlModifier) != 0 || place.x() < area.left();
    zoom(place, std::pow(kZoomStep, notches), vertical, kScoperaCauseWheel);
}

// Of a touch screen, or of a touch pad.
bool PlotView::event(QEvent* event) {
    if (event->type() == QEvent::NativeGesture) {
        const auto* gesture = static_cast<QNativeGestureEvent*>(event);
        if (gesture->gestureType() == Qt::ZoomNativeGesture) {
            pinch(gesture->position(), 1.0 + gesture->value());
            return true;
        }
    } else if (event->type() == QEvent::Gesture) {
        auto* gestures = static_cast<QGestureEvent*>(event);
        if (const auto* two = static_cast<QPinchGesture*>(gestures->gesture(Qt::PinchGesture))) {
            held_ = {};
            pinch(mapFromGlobal(two->hotSpot()), two->scaleFactor());
            return true;
        }
    }
    return QCustomPlot::event(event);
}

void PlotView::pinch(const QPointF& place, double factor) {
    if (factor > 0.0 && factor != 1.0) {
        zoom(place, 1.0 / factor, false, kScoperaCausePinch);
    }
}

void PlotView::leaveEvent(QEvent* event) {
    tell(events_.m_pMouseMoved, 0.0, 0.0, 0, -1);
    QCustomPlot::leaveEvent(event);
}

void PlotView::dragPicture(Pan& held, const QPointF& place) {
    const QPointF way = place - held.begin;
    held.movesX = held.movesX || std::abs(way.x()) >= kPanThreshold;
    held.movesY = held.movesY || std::abs(way.y()) >= kPanThreshold;
    if (!held.movesX && !held.movesY) {
        return;
    }
    setCursor(Qt::ClosedHandCursor);
    // A call back may end the drag or the view's range may be another by then: work with a copy.
    const Pan pan = held;
    held.movedY = pan.movesY ? way.y() : 0.0;
    if (pan.movesX) {
        const double shift = -way.x() * pan.x.size() / axisRect()->width();
        changeRange(kScoperaAxisX, pan.x.lower + shift, pan.x.upper + shift, kScoperaCauseDrag);
    }
    if (pan.movesY && pan.lane < lanes_.count()) {
        const QCPRange range = lanes_.range(pan.lane);
        const double shift = (way.y() - pan.movedY) * range.size() / lanes_.rows(pan.lane).height();
        changeLaneRange(pan.lane, range.lower + shift, range.upper + shift, kScoperaCauseDrag);
    }
}

void PlotView::dragCursor(const Cursors::Grip& grip, const QPointF& place) {
    cursors_->move(grip, place);
    if (stale_) {
        update();
    } else {
        cursors_->layer()->replot();
    }
    const SCOPERACursors places = cursors_->places();
    tell(events_.m_pCursorsMoved, &places);
}

void PlotView::dropHead(const HeldHead& held, const QPointF& place) {
    heads_->setDropLane(std::nullopt);
    makeStale();
    const auto column = static_cast<uint32_t>(held.column);
    if (held.moved) {
        tell(events_.m_pHeadDropped, column, static_cast<uint32_t>(lanes_.laneAt(place.y())));
    } else {
        tell(events_.m_pHeadClicked, column);
    }
}

void PlotView::showMouseShape(const QPointF& place) {
    const auto grip = cursors_->gripAt(place);
    const bool border =
        lanes_.borderAt(place.y()).has_value() && place.x() <= axisRect()->right() && place.y() <= axisRect()->bottom();
    if (border || (!grip && levels_->levelAt(place))) {
        setCursor(Qt::SizeVerCursor);
    } else if (!grip) {
        unsetCursor();
    } else if (grip->vertical && grip->horizontal) {
        setCursor(Qt::SizeAllCursor);
    } else {
        setCursor(grip->vertical ? Qt::SizeHorCursor : Qt::SizeVerCursor);
    }
}

}  // namespace tarno2
