#pragma once

#include <algorithm>
#include <optional>

#include "display/recorded.h"
#include "measure/cursor_places.h"

namespace tarno2 {

/// How two recordings lie beside each other on one time axis.
enum class Alignment : int { Start = 0, TimeOfDay = 1 };

/// Frames of one recording at those of another: `begin + step * frame`.
struct FrameLine {
    double begin = 0.0;
    double step = 1.0;  ///< above 0

    [[nodiscard]] double of(double frame) const { return begin + step * frame; }
    [[nodiscard]] FrameLine inverse() const { return {-begin / step, 1.0 / step}; }
    [[nodiscard]] PictureEdges of(const PictureEdges& edges) const { return {of(edges.low), of(edges.high)}; }
};

/// Frames of `other` at those of `first`. By the start: both begin at once, each with the rate of its description. By
/// the time of day: as their clocks tell it, with the rates that these have measured. Nothing when a rate or a clock is
/// not known.
[[nodiscard]] std::optional<FrameLine> frameLine(const RecordedFrames& first, const RecordedFrames& other,
                                                 Alignment alignment);

}  // namespace tarno2
