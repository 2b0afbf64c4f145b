// What of the signal is in the picture, and the way back.

#include <QAction>
#include <QLabel>
#include <algorithm>
#include <cmath>
#include <utility>

#include "config/files/figure_text.h"
#include "display/axis_x.h"
#include "ui/color.h"
#include "ui/overview_strip.h"
#include "ui/show_form.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

constexpr double kKeyZoom = 0.5;  // of the span, for a press of + or -
constexpr int kChipMargin = 8;

/// Causes of the view's own, beside those of the plotting library.
constexpr int kCauseFit = 100;
constexpr int kCauseStrip = 101;

constexpr uint64_t kStripPeriodMs = 500;
constexpr double kLeastSpan = 2.0;

}  // namespace

void T_ShowForm::showWhole() {
    position_ = reach().low;
    fileSpan_ = std::max(reach().width(), 1.0);
}

void T_ShowForm::setSpan(double frames) {
    // Below a recording with more frames a second there may be less than that already.
    const double least = first_ != nullptr ? std::min(kLeastSpan, fileSpan_) : kLeastSpan;
    frames = std::clamp(frames, least, kMostSpan);
    if (fixed()) {
        fileSpan_ = std::min(frames, std::max(least, reach().width()));
    } else if (live_ && unitX() == static_cast<AxisXUnit>(settings_.axisXUnit)) {
        settings_.axisXValue = axisXOfFrame(frames, unitX(), live_->format().framesPerSecond);
    }
}

void T_ShowForm::setPosition(double frame) {
    position_ = std::clamp(frame, reach().low, reach().high);
}

void T_ShowForm::comeBack() {
    setPosition(std::min(position_, std::max(reach().high - fileSpan_, reach().low)));
}

PictureEdges T_ShowForm::reach() const {
    return fileReach_ && shownRecording() != nullptr ? *fileReach_
                                                     : PictureEdges{0.0, static_cast<double>(frameCount())};
}

ShownPart T_ShowForm::shownPart() const {
    ShownPart part;
    part.position = shownFrames().low;
    part.span = span();
    part.held = held_;
    part.yAutomatic = settings_.axisYAutoMode;
    part.yLower = settings_.axisYLower;
    part.yUpper = settings_.axisYUpper;
    part.yValue = settings_.axisYValue;
    if (drawing_) {
        part.lanes = drawing_->laneLayout();
    }
    return part;
}

void T_ShowForm::leavePart(int cause) {
    if (first_ != nullptr) {
        first_->leavePart(cause);
        zoomBack_->setEnabled(first_->zoomBack_->isEnabled());
    } else if (shownSignal() != nullptr) {
        zooms_.leave(shownPart(), cause, static_cast<uint64_t>(clock_.elapsed()));
        zoomBack_->setEnabled(true);
    }
}

void T_ShowForm::ZoomBackClick() {
    if (first_ != nullptr) {
        first_->ZoomBackClick();
        return;
    }
    const auto part = zooms_.back();
    zoomBack_->setEnabled(!zooms_.empty());
    if (!part || shownSignal() == nullptr) {
        return;
    }
    setSpan(part->span);
    setPosition(part->position);
    if (fixed() && part->position > reach().high) {
        comeBack();
    }
    held_ = part->held && liveRuns();
    settings_.axisYAutoMode = part->yAutomatic;
    settings_.axisYLower = part->yLower;
    settings_.axisYUpper = part->yUpper;
    settings_.axisYValue = part->yValue;
    if (drawing_) {
        drawing_->takeLaneRanges(part->lanes);
        if (part->yAutomatic) {
            drawing_->resetScale();
        }
    }
    userChanged();
}

void T_ShowForm::FitClick() {
    leavePart(kCauseFit);
    PaintBox1DblClick();
}

void T_ShowForm::fitTime() {
    leavePart(kCauseFit);
    showWhole();
    userChanged();
}

// About the middle of the picture; of a running signal that is followed its newest end stays.
void T_ShowForm::zoomTo(double frames) {
    if (shownSignal() == nullptr) {
        return;
    }
    leavePart(kScoperaCauseKey);
    const double middle = shownFrames().low + span() / 2.0;
    if (!fixed() && !wholeSpan_) {
        wholeSpan_ = span();
    }
    setSpan(frames);
    if (stays()) {
        setPosition(middle - span() / 2.0);
    }
    userChanged();
}

void T_ShowForm::ZoomInClick() {
    zoomTo(span() * kKeyZoom);
}

void T_ShowForm::ZoomOutClick() {
    zoomTo(span() / kKeyZoom);
}

void T_ShowForm::SampleAPixelClick() {
    zoomTo(scoper_ != nullptr ? scoper_->PixelWidth() : span());
}

void T_ShowForm::FirstFrameClick() {
    if (shownSignal() != nullptr) {
        leavePart(kScoperaCauseKey);
        held_ = held_ || !stays();
        setPosition(reach().low);
        userChanged();
    }
}

void T_ShowForm::NewestFrameClick() {
    if (shownSignal() != nullptr) {
        held_ = false;
        setPosition(std::max(reach().high - span(), reach().low));
        userChanged();
    }
}

// Who holds a running signal is told so: nothing else tells a picture that stands still from a board that does.
void T_ShowForm::showHeld() {
    const bool held = liveRuns() && !records_ && held_ && frameCount() > 0;
    heldChip_->setVisible(held);
    if (!held) {
        return;
    }
    const double behind = std::max(static_cast<double>(frameCount()) - shownFrames().high, 0.0);
    const double rate = shownSignal()->format().framesPerSecond;
    const QString far = rate > 0.0 ? fromCodePage(formatDuration(static_cast<uint64_t>(behind / rate)))
                                   : fromCodePage(formatCount(static_cast<uint64_t>(behind)));
    heldChip_->setText(uiText(TextId::HeldBehind, {far}));
    heldChip_->adjustSize();
    const QPoint corner = picture_->mapTo(this, QPoint(picture_->width(), 0));
    heldChip_->move(corner + QPoint(-heldChip_->width() - kChipMargin, kChipMargin));
}

// The whole signal is gone through for it, so a running one gets a new strip twice a second.
void T_ShowForm::showStrip() {
    ShownSignal* signal = shownSignal();
    if (signal == nullptr || !drawing_ || frameCount() == 0) {
        strip_->setCourse({}, 0, {});
        courseFrames_ = 0;
        return;
    }
    const ShownFrames shown = shownFrames();
    strip_->setPart(shown.low, shown.high);
    const auto now = static_cast<uint64_t>(clock_.elapsed());
    const uint64_t frames = signal->wholeCourse().frameCount();
    const auto channel = drawing_->mainChannel(signal->format());
    if (courseFrames_ != 0 && now - courseAt_ < kStripPeriodMs) {
        if (!stripTimer_.isActive()) {
            stripTimer_.start(static_cast<int>(kStripPeriodMs - (now - courseAt_)));
        }
        return;
    }
    stripTimer_.stop();
    courseAt_ = now;
    courseFrames_ = frames;
    if (!channel || !signal->wholeCourse().build(0, frames, strip_->pixels(), course_)) {
        strip_->setCourse({}, frames, {});
        return;
    }
    const uint32_t color = drawing_->columns()[*channel].color;
    strip_->setCourse(courseOf(course_, signal->format(), *channel, frames, strip_->pixels()), frames,
                      fromBgr(static_cast<int32_t>(color)));
    std::vector<double> marks;
    for (const MarkFlag& mark :
         shownMarks().flags(0.0, static_cast<double>(frames), static_cast<uint32_t>(strip_->pixels()))) {
        marks.push_back(static_cast<double>(mark.frame));
    }
    strip_->setMarks(std::move(marks));
}

void T_ShowForm::stripWanted(double frame) {
    if (shownSignal() == nullptr) {
        return;
    }
    leavePart(kCauseStrip);
    held_ = held_ || !stays();
    setPosition(frame - span() / 2.0);
    userChanged();
}

}  // namespace tarno2
