#include <QFontMetrics>
#include <QScrollBar>
#include <cmath>
#include <optional>

#include "scopera/plot_view.h"

namespace tarno2 {

namespace {

constexpr double kLeastDrag = 3.0;  // pixels; less is a click

}  // namespace

void PlotView::setLanes(const SCOPERALane* lanes, uint32_t count) {
    const bool before = lanes_.shown();
    lanes_.setLanes(lanes, count);
    const bool shown = lanes_.shown();
    if (shown != before) {
        held_ = {};
        heads_->setDropLane(std::nullopt);
        yAxis->setVisible(!shown);
        yAxis->setTickLabels(!shown);
        applyFont();
        applyColumns();
        fitViewport();
        QCustomPlot::updateLayout();
    }
    arrangeLanes();
    makeStale();
}

// The host may tell the levels anew while one of them is dragged: that one stays held.
void PlotView::holdLevel(uint64_t identity, const HeldLevel& held) {
    const auto place = levels_->placeOf(identity);
    held_ = place ? Held(HeldLevel{*place, held.begin, held.moved}) : Held();
}

void PlotView::setReadings(const SCOPERAReading* readings, uint32_t count) {
    std::vector<LaneHeads::Reading> taken;
    for (uint32_t i = 0; i < count; ++i) {
        taken.push_back({QString::fromUtf8(readings[i].m_sText), readings[i].m_fLow, readings[i].m_fHigh});
    }
    heads_->setReadings(std::move(taken));
    if (lanes_.shown()) {
        makeStale();
    }
}

void PlotView::setLevels(const SCOPERALevel* levels, uint32_t count) {
    std::vector<LevelLines::Level> taken;
    for (uint32_t i = 0; i < count; ++i) {
        const SCOPERALevel& level = levels[i];
        taken.push_back(
            {level.m_nColumn, level.m_fY, QString::fromUtf8(level.m_sText), level.m_nIdentity, level.m_nMovable != 0});
    }
    const auto* held = std::get_if<HeldLevel>(&held_);
    const std::optional<HeldLevel> before = held != nullptr ? std::optional(*held) : std::nullopt;
    const auto identity = before ? levels_->identityOf(before->level) : 0;
    levels_->setLevels(std::move(taken));
    if (before) {
        holdLevel(identity, *before);
    }
    makeStale();
}

std::optional<QCPRange> PlotView::extremes(uint32_t column) {
    fitViewport();
    return curves_->extremes(column);
}

bool PlotView::showLane(uint32_t lane) {
    if (lane >= lanes_.count()) {
        return false;
    }
    fitViewport();
    const QRect area = axisRect()->rect();
    const QRect place = lanes_.rect(lane);
    if (place.top() < area.top()) {
        scrollLanes(lanes_.scroll() + place.top() - area.top());
    } else if (place.bottom() > area.bottom()) {
        scrollLanes(lanes_.scroll() + place.bottom() - area.bottom());
    }
    return true;
}

// The scroll bar lies over the right margin of the picture, which is kept free for the last number of the X axis.
void PlotView::arrangeLanes() {
    const QRect area = axisRect()->rect();
    lanes_.arrange(area, QFontMetrics(font_).height());
    const int hidden = lanes_.shown() ? lanes_.contentHeight() - area.height() : 0;
    laneScroll_->setVisible(hidden > 0);
    if (hidden <= 0) {
        return;
    }
    const int width = std::min(laneScroll_->sizeHint().width(), axisRect()->margins().right());
    laneScroll_->setGeometry(area.right() + 1, area.top(), width, area.height());
    const QSignalBlocker quiet(laneScroll_);
    laneScroll_->setRange(0, hidden);
    laneScroll_->setPageStep(area.height());
    laneScroll_->setSingleStep(2 * QFontMetrics(font_).height());
    laneScroll_->setValue(lanes_.scroll());
}

void PlotView::scrollLanes(int pixels) {
    lanes_.setScroll(pixels);
    const QSignalBlocker quiet(laneScroll_);
    laneScroll_->setValue(lanes_.scroll());
    makeStale();
}

bool PlotView::changeLaneRange(size_t lane, double lower, double upper, int32_t cause) {
    if (!lanes_.shown()) {
        return changeRange(kScoperaAxisY, lower, upper, cause);
    }
    if (!isDrawable(lower, upper)) {
        return false;
    }
    lanes_.setRange(lane, QCPRange(lower, upper));
    makeStale();
    tell(events_.m_pLaneRangeChanged, static_cast<uint32_t>(lane), lower, upper, cause);
    return true;
}

void PlotView::press(const LaneHeads::Place& head, const QPointF& place) {
    switch (head.part) {
        case LaneHeads::Part::Hide:
            switchColumn(head.column);
            break;
        case LaneHeads::Part::Solo:
            tell(events_.m_pSoloWanted, static_cast<uint32_t>(head.column));
            break;
        case LaneHeads::Part::Name:
            held_ = HeldHead{head.column, place, false};
            break;
    }
}

void PlotView::dragBorder(const HeldBorder& held, const QPointF& place) {
    const size_t lane = held.lane;
    if (lane >= lanes_.count()) {
        return;
    }
    lanes_.resize(lane, static_cast<int>(place.y()) - lanes_.rect(lane).top() + 1);
    arrangeLanes();
    makeStale();
    tell(events_.m_pLaneResized, static_cast<uint32_t>(lane), static_cast<uint32_t>(lanes_.heightOf(lane)));
}

// A click changes nothing, least of all a threshold far beyond the picture.
void PlotView::dragLevel(HeldLevel& held, const QPointF& place, bool done) {
    held.moved = held.moved || std::abs(place.y() - held.begin.y()) >= kLeastDrag;
    if (!held.moved) {
        return;
    }
    const LevelLines::Level level = levels_->move(held.level, place.y());
    makeStale();
    tell(events_.m_pLevelMoved, level.identity, level.y, done ? 1 : 0);
}

void PlotView::dragHead(HeldHead& held, const QPointF& place) {
    held.moved = held.moved || std::abs(place.y() - held.begin.y()) >= heads_->lineHeight() / 2.0;
    if (held.moved) {
        setCursor(Qt::ClosedHandCursor);
        heads_->setDropLane(lanes_.laneAt(place.y()));
        makeStale();
    }
}

}  // namespace tarno2
