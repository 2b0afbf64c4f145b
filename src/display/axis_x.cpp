#include "display/axis_x.h"

#include <algorithm>
#include <cmath>

namespace tarno2 {

namespace {

/// Axis units a frame; a frame a sample.
double unitsPerFrame(AxisXUnit unit, double framesPerSecond) {
    if (unit == AxisXUnit::Samples) {
        return 1.0;
    }
    if (!(framesPerSecond > 0.0)) {
        return 0.0;
    }
    switch (unit) {
        case AxisXUnit::Microseconds:
            return 1e6 / framesPerSecond;
        case AxisXUnit::Milliseconds:
            return 1e3 / framesPerSecond;
        case AxisXUnit::Minutes:
            return 1.0 / (framesPerSecond * 60.0);
        case AxisXUnit::Hours:
            return 1.0 / (framesPerSecond * 3600.0);
        default:
            return 1.0 / framesPerSecond;
    }
}

}  // namespace

double axisXOfFrame(double frame, AxisXUnit unit, double framesPerSecond) {
    return frame * unitsPerFrame(unit, framesPerSecond);
}

double frameOfAxisX(double place, AxisXUnit unit, double framesPerSecond) {
    const double perFrame = unitsPerFrame(unit, framesPerSecond);
    return perFrame > 0.0 ? place / perFrame : 0.0;
}

int resolvedDecimals(double span, double steps) {
    const double step = span / std::max(steps, 1.0);
    return step > 0.0 ? static_cast<int>(std::clamp(std::ceil(-std::log10(step)), 0.0, 12.0)) : 0;
}

}  // namespace tarno2
