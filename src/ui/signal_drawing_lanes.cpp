// Curves in lanes, one below the other.

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "ui/signal_drawing.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

/// So many channels can still be told apart on one axis.
constexpr size_t kMostOnOneAxis = 4;
constexpr double kLineMargin = 0.15;  // of the height between 0 and 1, above and below

}  // namespace

bool SignalDrawing::lanesWanted(const SignalFormat& format) const {
    if (settings_.viewLanes >= 0) {
        return settings_.viewLanes == 1;
    }
    return lanesLike_ != nullptr ? lanesLike_->inLanes() : analogColumns(format) > kMostOnOneAxis;
}

void SignalDrawing::scaleLanes(const ShownSignal& signal, uint64_t nowMs) {
    const SignalFormat& format = signal.format();
    // Extremes come in the units that the columns were handed over in.
    setColumns(columnsOf(signal));
    std::vector<LaneColumn> columns;
    for (const Column& column : columns_) {
        columns.push_back({column.key, column.visible});
    }
    lanes_.clear();
    for (LanePlan& plan : layout_.arrange(columns)) {
        const AxisYUnit unit = columns_[plan.columns.front()].unit;
        lanes_.push_back({std::move(plan), {}, unit});
    }
    for (DrawnLane& lane : lanes_) {
        scaleLane(format, lane, nowMs);
    }
    if (settings_.viewCommonScale) {
        shareScales(format);
    }
    const bool automatic = settings_.axisYMode == static_cast<int32_t>(AxisYUnit::Automatic);
    std::vector<SCOPERALane> handed;
    for (DrawnLane& lane : lanes_) {
        lane.unit = automatic && !lane.range.empty() ? unitForVolts(lane.range.largest()) : unitY_;
        const AxisRange range = lane.range.empty() ? AxisRange{-1.0, 1.0} : lane.range;
        const double units = unitsPerVolt(lane.unit);
        handed.push_back(
            {range.low * units, range.high * units, layout_.heightOf(lane.plan.key), lane.plan.digital() ? 1U : 0U});
    }
    setColumns(columnsOf(signal));
    scoper_.SetLanes(handed.data(), static_cast<uint32_t>(handed.size()));
}

void SignalDrawing::scaleLane(const SignalFormat& format, DrawnLane& lane, uint64_t nowMs) {
    if (lane.plan.digital()) {
        lane.range = lineRange(format, lane);
    } else if (const auto chosen = layout_.chosenRange(lane.plan.key)) {
        lane.range = *chosen;
    } else if (!settings_.axisYAutoMode) {
        lane.range = userRange(format);
    } else {
        AxisRange visible{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
        for (const size_t column : lane.plan.columns) {
            AxisRange one;
            if (scoper_.GetColumnExtremes(static_cast<uint32_t>(column), &one.low, &one.high) == 1) {
                const double units = unitsPerVolt(columns_[column].unit);
                visible.low = std::min(visible.low, one.low / units);
                visible.high = std::max(visible.high, one.high / units);
            }
        }
        lane.range = layout_.automaticRange(lane.plan.key, visible, nowMs);
    }
}

// Where channels have units of their own, those of one unit can be compared.
void SignalDrawing::shareScales(const SignalFormat& format) {
    const auto unitOf = [&](const DrawnLane& lane) {
        return unitY_ == AxisYUnit::Units ? format.channels[lane.plan.columns.front()].label.unit : std::string();
    };
    const auto joins = [&](const DrawnLane& lane) {
        return !lane.plan.digital() && !lane.range.empty() && !layout_.chosenRange(lane.plan.key);
    };
    std::map<std::string, AxisRange> common;
    for (const DrawnLane& lane : lanes_) {
        if (joins(lane)) {
            AxisRange& range = common.try_emplace(unitOf(lane), lane.range).first->second;
            range = {std::min(range.low, lane.range.low), std::max(range.high, lane.range.high)};
        }
    }
    for (DrawnLane& lane : lanes_) {
        if (joins(lane)) {
            lane.range = common[unitOf(lane)];
        }
    }
}

// From where the lines lie at 0 to where they lie at 1, whatever they do now.
AxisRange SignalDrawing::lineRange(const SignalFormat& format, const DrawnLane& lane) const {
    const DigitalSettings digital{settings_.digitalLines, format.maximumCode};
    const LinearScale scale = digitalAxisYScale(format, lane.unit);
    AxisRange range{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
    for (const size_t column : lane.plan.columns) {
        const size_t line = column - analogColumns(format);
        for (const bool bit : {false, true}) {
            const double value = scale.of(digitalLineValue(format.word, digital, line, bit)) / unitsPerVolt(lane.unit);
            range = {std::min(range.low, value), std::max(range.high, value)};
        }
    }
    const double code = std::abs(scale.factor) / unitsPerVolt(lane.unit);
    const double margin = range.empty() ? code : (range.high - range.low) * kLineMargin;
    return {range.low - margin, range.high + margin};
}

std::string SignalDrawing::unitTextOf(uint32_t lane) const {
    const size_t column = lane < lanes_.size() ? lanes_[lane].plan.columns.front() : columns_.size();
    return column < columns_.size() ? columns_[column].unitText : std::string();
}

AxisRange SignalDrawing::rangeOf(uint32_t lane) const {
    if (lane >= lanes_.size()) {
        return {};
    }
    const double units = unitsPerVolt(lanes_[lane].unit);
    return {lanes_[lane].range.low * units, lanes_[lane].range.high * units};
}

void SignalDrawing::setLaneRange(uint32_t lane, AxisRange range) {
    if (lane < lanes_.size() && !lanes_[lane].plan.digital()) {
        const double units = unitsPerVolt(lanes_[lane].unit);
        layout_.setRange(lanes_[lane].plan.key, {range.low / units, range.high / units});
    }
}

void SignalDrawing::setLaneHeight(uint32_t lane, uint32_t pixels) {
    if (lane < lanes_.size()) {
        layout_.setHeight(lanes_[lane].plan.key, pixels);
    }
}

void SignalDrawing::dropColumn(uint32_t column, uint32_t lane) {
    if (column < columns_.size() && lane < lanes_.size()) {
        layout_.share(columns_[column].key, lanes_[lane].plan);
    }
}

void SignalDrawing::showValues(const SignalFormat& format, const std::vector<ChannelValues>& values) {
    values_ = values;
    codes_ = {static_cast<double>(format.minimumCode), static_cast<double>(format.maximumCode)};
    handReadings();
}

// In the units that the columns have now.
void SignalDrawing::handReadings() {
    if (!inLanes() || values_.empty()) {
        return;
    }
    const double codes = std::max(codes_.high - codes_.low, 1.0);
    std::vector<std::string> texts;
    std::vector<SCOPERAReading> readings;
    for (size_t i = 0; i < std::min(values_.size(), columns_.size()) && columns_[i].key >= 0; ++i) {
        const LinearScale& scale = columns_[i].scale;
        const int decimals = decimalsFor(std::abs(scale.factor));
        texts.push_back(QString::number(scale.of(values_[i].newest), 'f', decimals).toStdString());
    }
    for (size_t i = 0; i < texts.size(); ++i) {
        readings.push_back(
            {texts[i].c_str(), (values_[i].minimum - codes_.low) / codes, (values_[i].maximum - codes_.low) / codes});
    }
    scoper_.SetReadings(readings.data(), static_cast<uint32_t>(readings.size()));
}

}  // namespace tarno2
