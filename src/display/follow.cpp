#include "display/follow.h"

#include <algorithm>
#include <cmath>

namespace tarno2 {

namespace {

// Doubles hold whole frames up to here, and no recording comes near.
constexpr double kMostFrames = 9e15;

uint64_t firstFrame(FollowMode mode, uint64_t frames, uint64_t page, uint64_t position) {
    switch (mode) {
        case FollowMode::None:
            return position;
        case FollowMode::Sweep:
            return frames == 0 ? 0 : (frames - 1) / page * page;
        default:
            return frames - std::min(frames, page);
    }
}

}  // namespace

uint64_t pageFrames(double span, AxisXUnit unit, double framesPerSecond) {
    const double frames = std::round(frameOfAxisX(span, unit, framesPerSecond));
    return frames >= 1.0 ? static_cast<uint64_t>(std::min(frames, kMostFrames)) : 1;
}

VisibleFrames visibleFrames(FollowMode mode, uint64_t frames, uint64_t page, uint64_t position) {
    page = std::max<uint64_t>(page, 1);
    VisibleFrames visible;
    visible.first = firstFrame(mode, frames, page, position);
    visible.end = visible.first + page;
    visible.axisFirst = mode == FollowMode::Sweep ? 0.0 : static_cast<double>(visible.first);
    visible.axisEnd = visible.axisFirst + static_cast<double>(page);
    return visible;
}

}  // namespace tarno2
