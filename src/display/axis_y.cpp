#include "display/axis_y.h"

#include <algorithm>
#include <cmath>

namespace tarno2 {

namespace {

constexpr double kMargin = 0.1;          ///< of the visible span, on each side
constexpr double kRim = 0.02;            ///< of the shown span: nearer to an end a curve is not told from the frame
constexpr double kRoomy = 0.3;           ///< of the shown span may stay empty on a side before it shrinks
constexpr uint64_t kHoldMs = 1000;       ///< how long it has to be
constexpr double kShrinkMs = 700.0;      ///< in which two thirds of the way are gone
constexpr double kArrived = 0.01;        ///< of the shown span: near enough to stop
constexpr double kLeastRelative = 1e-9;  ///< span of a flat line, of its value

// What the values ask for: a flat line gets a span too.
AxisRange withMargin(AxisRange visible) {
    const double largest = visible.largest();
    double span = visible.high - visible.low;
    if (span <= largest * kLeastRelative) {
        span = largest > 0.0 ? largest : 1.0;
    }
    return {visible.low - span * kMargin, visible.high + span * kMargin};
}

bool isRoomy(AxisRange shown, AxisRange visible) {
    const double room = (shown.high - shown.low) * kRoomy;
    return visible.low - shown.low > room || shown.high - visible.high > room;
}

}  // namespace

AxisYKind kindOf(AxisYUnit unit) {
    return unit == AxisYUnit::Codes ? AxisYKind::Codes : unit == AxisYUnit::Units ? AxisYKind::Units : AxisYKind::Volts;
}

double unitsPerVolt(AxisYUnit unit) {
    switch (unit) {
        case AxisYUnit::Millivolts:
            return 1e3;
        case AxisYUnit::Microvolts:
            return 1e6;
        default:
            return 1.0;
    }
}

int decimalsFor(double step) {
    constexpr double kMost = 9.0;
    return step > 0.0 ? static_cast<int>(std::clamp(std::ceil(-std::log10(step)), 0.0, kMost)) : 0;
}

LinearScale axisYScale(const SignalFormat& format, size_t channel, AxisYUnit unit) {
    const double codes = static_cast<double>(format.maximumCode) - format.minimumCode;
    if (unit == AxisYUnit::Codes || codes <= 0.0 || channel >= format.channels.size()) {
        return {};
    }
    const SignalFormat::Channel& limits = format.channels[channel];
    const double factor = (limits.upper - limits.lower) / codes;
    if (unit == AxisYUnit::Units) {
        return {factor * limits.label.factor, limits.label.inUnit(limits.lower - format.minimumCode * factor)};
    }
    return {factor * unitsPerVolt(unit), (limits.lower - format.minimumCode * factor) * unitsPerVolt(unit)};
}

LinearScale digitalAxisYScale(const SignalFormat& format, AxisYUnit unit) {
    size_t widest = 0;
    for (size_t i = 1; i < format.channels.size(); ++i) {
        const SignalFormat::Channel& channel = format.channels[i];
        if (channel.upper - channel.lower > format.channels[widest].upper - format.channels[widest].lower) {
            widest = i;
        }
    }
    const LinearScale scale = axisYScale(format, widest, unit);
    if (scale.factor >= 0.0) {
        return scale;
    }
    // High lies above low, whichever way the channel's unit runs.
    const double ends = static_cast<double>(format.minimumCode) + format.maximumCode;
    return {-scale.factor, scale.factor * ends + scale.offset};
}

double fullScaleVolts(const SignalFormat& format) {
    double volts = 0.0;
    for (const SignalFormat::Channel& channel : format.channels) {
        volts = std::max({volts, std::abs(channel.upper), std::abs(channel.lower)});
    }
    return volts;
}

std::string unitsOf(const SignalFormat& format, const std::vector<size_t>& shown, const std::string& volts) {
    std::vector<std::string> units;
    for (const size_t column : shown) {
        const std::string& told = format.channels[column].label.unit;
        const std::string& unit = told.empty() ? volts : told;
        if (std::ranges::find(units, unit) == units.end()) {
            units.push_back(unit);
        }
    }
    std::string list;
    for (const std::string& unit : units) {
        list += (list.empty() ? "" : ", ") + unit;
    }
    return list;
}

AxisYUnit unitForVolts(double largestVolts) {
    if (largestVolts >= 1.0 || !(largestVolts > 0.0)) {
        return AxisYUnit::Volts;
    }
    return largestVolts >= 1e-3 ? AxisYUnit::Millivolts : AxisYUnit::Microvolts;
}

AxisRange AutomaticScaleY::update(AxisRange visible, uint64_t nowMs) {
    const auto passed = static_cast<double>(nowMs - std::min(lastMs_, nowMs));
    lastMs_ = nowMs;
    if (!(visible.low <= visible.high) || !std::isfinite(visible.low) || !std::isfinite(visible.high)) {
        return shown_;
    }
    const AxisRange wanted = withMargin(visible);
    if (!known_) {
        known_ = true;
        moving_ = false;
        roomy_ = false;
        return shown_ = wanted;
    }
    // A value that leaves the scale takes its side along at once, with a new margin; so does the other side where its
    // margin is none of the new span.
    if (visible.low < shown_.low || visible.high > shown_.high) {
        const double rim = (std::max(shown_.high, wanted.high) - std::min(shown_.low, wanted.low)) * kRim;
        shown_.low = visible.low < shown_.low + rim ? std::min(wanted.low, shown_.low) : shown_.low;
        shown_.high = visible.high > shown_.high - rim ? std::max(wanted.high, shown_.high) : shown_.high;
    }
    if (!moving_ && !isRoomy(shown_, visible)) {
        roomy_ = false;
        return shown_;
    }
    if (!roomy_) {
        roomy_ = true;
        roomySince_ = nowMs;
    }
    if (nowMs - roomySince_ >= kHoldMs) {
        shrink(wanted, passed);
    }
    return shown_;
}

void AutomaticScaleY::shrink(AxisRange wanted, double passedMs) {
    const double part = 1.0 - std::exp(-passedMs / kShrinkMs);
    const double near = (shown_.high - shown_.low) * kArrived;
    const AxisRange goal{std::max(wanted.low, shown_.low), std::min(wanted.high, shown_.high)};
    shown_.low += (goal.low - shown_.low) * part;
    shown_.high += (goal.high - shown_.high) * part;
    moving_ = goal.low - shown_.low > near || shown_.high - goal.high > near;
    if (!moving_) {
        shown_ = goal;
        roomy_ = false;
    }
}

}  // namespace tarno2
