// The time of what is in the signal view.

#include <algorithm>

#include "display/place_text.h"
#include "ui/go_to_dialog.h"
#include "ui/show_form.h"
#include "ui/text.h"

namespace tarno2 {

std::optional<WallClock> T_ShowForm::wallClock() const {
    if (records_) {
        return std::nullopt;  // each of them has a time of its own
    }
    return file_ ? file_->frames().wallClock() : liveClock_;
}

bool T_ShowForm::tellsClock() const {
    return (file_ ? fileClock_ : settings_.viewClock) && wallClock();
}

void T_ShowForm::ClockClick(bool on) {
    (file_ ? fileClock_ : settings_.viewClock) = on;
    userChanged();
}

void T_ShowForm::GoToTimeClick() {
    if (first_ != nullptr) {
        first_->GoToTimeClick();
        return;
    }
    guarded("GoToTimeClick", [this] {
        if (shownSignal() != nullptr) {
            GoToDialog(
                titleText(TextId::GoToTime), uiText(TextId::GoToTimeHint),
                [this](const QString& place) { return goTo(place); }, this)
                .exec();
        }
    });
}

QString T_ShowForm::goTo(const QString& place) {
    const ShownSignal* signal = shownSignal();
    if (signal == nullptr) {
        return uiText(TextId::ViewNoData);
    }
    const PlaceTerms terms{signal->format().framesPerSecond, static_cast<uint64_t>(std::max(reach().high, 0.0)),
                           wallClock(), unitX() == AxisXUnit::Samples && !tellsClock(), tellsClock()};
    PlaceProblem problem = PlaceProblem::None;
    if (const auto frame = parsePlace(place.toStdString(), terms, problem)) {
        leavePart(kScoperaCauseKey);
        goToFrame(static_cast<uint64_t>(*frame));
        return {};
    }
    switch (problem) {
        case PlaceProblem::NoRate:
            return uiText(TextId::PlaceNoRate);
        case PlaceProblem::NoClock:
            return uiText(TextId::PlaceNoClock);
        case PlaceProblem::Outside:
            return uiText(TextId::PlaceOutside, {place.trimmed()});
        default:
            return uiText(TextId::PlaceNotUnderstood, {place.trimmed()});
    }
}

}  // namespace tarno2
