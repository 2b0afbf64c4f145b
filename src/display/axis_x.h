#pragma once

#include <cstdint>

namespace tarno2 {

/// Units of the signal view's X axis; the numbers are those of the settings files and of the menu items' tags.
enum class AxisXUnit : int32_t { Samples = 0, Microseconds = 1, Milliseconds = 2, Seconds = 3, Minutes = 4, Hours = 5 };

/// Place of a frame on the X axis. `framesPerSecond` is the per-channel rate, Hz; a rate of 0 or less gives 0 in every
/// unit but samples.
[[nodiscard]] double axisXOfFrame(double frame, AxisXUnit unit, double framesPerSecond);

/// The frame at a place on the X axis: the inverse of `axisXOfFrame`.
[[nodiscard]] double frameOfAxisX(double place, AxisXUnit unit, double framesPerSecond);

/// Decimals by which values `span` / `steps` apart are told from each other, 0 to 12.
[[nodiscard]] int resolvedDecimals(double span, double steps);

}  // namespace tarno2
