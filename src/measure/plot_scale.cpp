#include "measure/plot_scale.h"

#include <algorithm>
#include <cmath>

namespace tarno2 {

namespace {

constexpr double kLeastPositive = 1e-300;

/// The next 1, 2 or 5 times a power of ten that is not below.
double niceStep(double least) {
    const double power = std::pow(10.0, std::floor(std::log10(least)));
    for (const double part : {1.0, 2.0, 5.0}) {
        if (part * power >= least * (1.0 - 1e-9)) {
            return part * power;
        }
    }
    return 10.0 * power;
}

}  // namespace

PlotScale::PlotScale(double low, double high, bool logarithmic) : low_(low), high_(high), logarithmic_(logarithmic) {
    if (logarithmic) {
        low_ = std::max(low_, kLeastPositive);
        high_ = high_ > low_ ? high_ : low_ * 10.0;
    } else if (!(high_ > low_)) {
        high_ = low_ + std::max(std::abs(low_), 1.0);
    }
}

double PlotScale::partOf(double value) const {
    if (logarithmic_) {
        return std::log(std::max(value, kLeastPositive) / low_) / std::log(high_ / low_);
    }
    return (value - low_) / (high_ - low_);
}

double PlotScale::valueAt(double part) const {
    return logarithmic_ ? low_ * std::pow(high_ / low_, part) : low_ + part * (high_ - low_);
}

std::vector<PlotTick> PlotScale::ticks(size_t most) const {
    most = std::max<size_t>(most, 2);
    // Less than a decade is told better by round numbers.
    return logarithmic_ && high_ / low_ >= 10.0 ? decades(most) : linearTicks(most);
}

std::vector<PlotTick> PlotScale::linearTicks(size_t most) const {
    const double step = niceStep((high_ - low_) / static_cast<double>(most));
    const double first = std::ceil(low_ / step - 1e-9);
    std::vector<PlotTick> ticks;
    // Limits that lie closer than a number has digits for: neighbouring ticks are the same value.
    for (size_t i = 0; i <= most + 1; ++i) {
        const double value = (first + static_cast<double>(i)) * step;
        if (!(value <= high_ + step * 1e-9)) {
            break;
        }
        if (ticks.empty() || value > ticks.back().value) {
            ticks.push_back({value, true});
        }
    }
    return ticks;
}

// Each power of ten or, where they are too many, every so manieth; lines between where there is room.
std::vector<PlotTick> PlotScale::decades(size_t most) const {
    const auto first = static_cast<int>(std::floor(std::log10(low_)));
    const auto last = static_cast<int>(std::ceil(std::log10(high_)));
    const int stride = std::max(1, (last - first + static_cast<int>(most) - 1) / static_cast<int>(most));
    std::vector<PlotTick> ticks;
    for (int decade = first; decade <= last; ++decade) {
        for (int part = 1; part < 10; ++part) {
            const double value = part * std::pow(10.0, decade);
            const bool labelled = part == 1 && (decade - first) % stride == 0;
            if (value >= low_ * (1.0 - 1e-9) && value <= high_ * (1.0 + 1e-9) && (labelled || stride == 1)) {
                ticks.push_back({value, labelled});
            }
        }
    }
    return ticks;
}

}  // namespace tarno2
