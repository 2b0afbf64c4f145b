// The trigger in the signal view: thresholds that can be dragged, and records over each other.

#include <QAction>
#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "display/axis_y.h"
#include "ui/show_form.h"
#include "ui/text.h"
#include "ui/threshold_lines.h"

namespace tarno2 {

namespace {

const SignalDrawing::Column* columnOf(const std::vector<SignalDrawing::Column>& columns, int32_t channel) {
    const auto found = std::ranges::find(columns, channel, &SignalDrawing::Column::key);
    return found != columns.end() ? &*found : nullptr;
}

/// From one scale of the same codes to another.
double converted(double value, const LinearScale& from, const LinearScale& to) {
    return to.of((value - from.offset) / from.factor);
}

}  // namespace

// Those of an opened recording are its own, which nobody can change.
void T_ShowForm::showLevels() {
    const ShownSignal* signal = shownSignal();
    std::vector<ShownLevel> levels;
    for (const ThresholdLine& line :
         file_ || signal == nullptr ? std::vector<ThresholdLine>() : thresholdLines(settings_.wish.synchro)) {
        const SignalDrawing::Column* column = columnOf(drawing_->columns(), line.channel);
        if (column == nullptr || column->scale.factor == 0.0 || line.channel < 0) {
            continue;
        }
        const auto place = static_cast<size_t>(column - drawing_->columns().data());
        const LinearScale volts = axisYScale(signal->format(), place, AxisYUnit::Volts);
        const double y = converted(line.volts, volts, column->scale);
        const bool rises = line.upward == (column->scale.factor / volts.factor > 0.0);
        const QString text = QStringLiteral("%1 %2 %3 %4")
                                 .arg(uiText(line.role), rises ? QStringLiteral("↑") : QStringLiteral("↓"),
                                      QString::number(y, 'f', decimalsFor(std::abs(column->scale.factor))),
                                      QString::fromStdString(column->unitText));
        levels.push_back({static_cast<uint32_t>(place), y, text.toStdString(), line.identity});
    }
    if (levels == levels_ && thresholdsLocked_ == levelsLocked_) {
        return;
    }
    levels_ = std::move(levels);
    levelsLocked_ = thresholdsLocked_;
    std::vector<SCOPERALevel> handed;
    for (const ShownLevel& level : levels_) {
        handed.push_back({level.column, levelsLocked_ ? 0U : 1U, level.y, level.text.c_str(), level.identity});
    }
    scoper_->SetLevels(handed.data(), static_cast<uint32_t>(handed.size()));
}

// A value is kept to the digits that its channel resolves.
void T_ShowForm::levelMoved(uint64_t identity, double y, bool done) {
    const auto level = std::ranges::find(levels_, identity, &ShownLevel::identity);
    const ShownSignal* signal = shownSignal();
    if (thresholdsLocked_ || signal == nullptr || level == levels_.end() ||
        level->column >= drawing_->columns().size()) {
        return;
    }
    const LinearScale& scale = drawing_->columns()[level->column].scale;
    const double digits = std::pow(10.0, decimalsFor(std::abs(scale.factor)));
    const LinearScale volts = axisYScale(signal->format(), level->column, AxisYUnit::Volts);
    setThreshold(settings_.wish.synchro, identity, converted(std::round(y * digits) / digits, scale, volts));
    userChanged();
    if (done) {
        emit thresholdMoved();
    }
}

void T_ShowForm::setThresholdsLocked(bool locked) {
    if (std::exchange(thresholdsLocked_, locked) != locked) {
        userChanged();
    }
}

void T_ShowForm::RecordsClick(int count) {
    if (first_ != nullptr) {
        first_->RecordsClick(count);
        return;
    }
    guarded("RecordsClick", [&] {
        settings_.viewRecords = count;
        layRecords();
        if (count > 0 && !records_ && shownSignal() != nullptr) {
            emit message(uiText(TextId::RecordsNone));
        }
        userChanged();
    });
}

// Of the signal that is there: it begins anew with another one, and when a running one has ended.
void T_ShowForm::layRecords() {
    const bool before = records_ != nullptr;
    if (before) {
        endWork();
        drawing_->clear();
        records_.reset();
    }
    ShownSignal* signal = shownSignal();
    if (signal != nullptr && drawing_ && first_ == nullptr && settings_.viewRecords > 0 && signal->records() &&
        signal->recordFrames() != nullptr) {
        endWork();
        drawing_->clear();
        records_ = std::make_unique<RecordsSignal>(*signal, *signal->recordFrames(), *signal->records(),
                                                   static_cast<size_t>(settings_.viewRecords), paintLater());
        static_cast<void>(records_->update());
    }
    if (before || records_) {
        zooms_.clear();
        zoomBack_->setEnabled(false);
        drawing_->resetScaleY();
        courseFrames_ = 0;
        showWhole();
    }
}

// Whole records: the first one gives the picture its length.
void T_ShowForm::followRecords() {
    const bool first = records_ && frameCount() == 0;
    if (!records_ || !records_->update()) {
        return;
    }
    endWork();
    courseFrames_ = 0;
    if (first) {
        showWhole();
        showControls();
    }
}

}  // namespace tarno2
