#pragma once

#include <QString>

#include "display/axis_x.h"
#include "display/wall_clock.h"

namespace tarno2 {

/// "1.234 kHz": six digits, with the unit in which they are read best. An empty text for what is no frequency.
[[nodiscard]] QString frequencyWithUnit(double hertz);
/// The same with so many digits.
[[nodiscard]] QString frequencyWithUnit(double hertz, int digits);
/// A time between two frames in the unit of the X axis, seconds while that counts samples, and its inverse: "Δt 1.5 ms,
/// 1/Δt 666.667 Hz". Empty when the rate is not known.
[[nodiscard]] QString timeBetween(double frames, double framesPerSecond, AxisXUnit unit);

/// "14:05:30.250", when that frame came, with as many decimals as tell moments apart that lie so many frames from each
/// other.
[[nodiscard]] QString timeOfDay(const WallClock& clock, double frame, double resolution);

}  // namespace tarno2
