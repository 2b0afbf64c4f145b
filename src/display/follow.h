#pragma once

#include <cstdint>

#include "display/axis_x.h"

namespace tarno2 {

/// How the view follows the data; the numbers are those of the settings files and of the button's images.
enum class FollowMode : int32_t {
    None = 0,      ///< stays where the scroll bar is
    Recorder = 1,  ///< the newest screen slides in from the right
    Sweep = 2      ///< the screen fills from the left and starts again empty at its end
};

/// What is on screen: a whole screen of frames, those that have not come yet included.
struct VisibleFrames {
    uint64_t first = 0;    ///< at the left edge
    uint64_t end = 0;      ///< at the right edge: one past the last frame of the screen
    double axisFirst = 0;  ///< what the X axis says at the left edge, frames
    double axisEnd = 0;    ///< at the right edge
};

/// Frames on a screen that is `span` wide in the X unit: at least 1.
[[nodiscard]] uint64_t pageFrames(double span, AxisXUnit unit, double framesPerSecond);

/// What is on screen when `frames` frames have come and a screen holds `page` frames (0 counts as 1). `position` is the
/// scroll bar's, used by `None` alone. A recorder's screen begins to slide when it is full. A sweep's X axis counts
/// from its start; it is full when its last frame has come and begins again with the frame after.
[[nodiscard]] VisibleFrames visibleFrames(FollowMode mode, uint64_t frames, uint64_t page, uint64_t position);

}  // namespace tarno2
