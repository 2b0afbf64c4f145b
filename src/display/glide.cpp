#include "display/glide.h"

#include <algorithm>

namespace tarno2 {

namespace {

constexpr double kForget = 0.25;    // of the block's length, for each second: boards are set up anew
constexpr double kCatchUp = 0.5;    // of what lies behind or before the wanted place, for each second
constexpr double kMostHaste = 0.1;  // faster or slower than the board, so that nobody sees it
constexpr double kMostBlocks = 2.0;

}  // namespace

uint64_t Glide::shown(uint64_t arrived, double framesPerSecond, uint64_t nowMs) {
    const auto all = static_cast<double>(arrived);
    if (!(framesPerSecond > 0.0)) {
        known_ = false;
        return arrived;
    }
    if (!known_ || arrived < arrived_ || nowMs < lastMs_) {
        known_ = true;
        arrived_ = arrived;
        lastMs_ = nowMs;
        block_ = 0.0;
        shown_ = all;
        return arrived;
    }
    const double seconds = static_cast<double>(nowMs - lastMs_) / 1000.0;
    // What comes between two pictures at the board's own pace is no block.
    const double step = all - static_cast<double>(arrived_) - seconds * framesPerSecond;
    block_ = std::max(step, block_ * (1.0 - std::min(kForget * seconds, 1.0)));
    arrived_ = arrived;
    lastMs_ = nowMs;
    const double late = all - block_ - shown_;
    const double haste = std::clamp(kCatchUp * late / framesPerSecond, -kMostHaste, kMostHaste);
    shown_ += seconds * framesPerSecond * (1.0 + haste);
    shown_ = std::clamp(shown_, all - kMostBlocks * block_ - seconds * framesPerSecond, all);
    return static_cast<uint64_t>(std::max(shown_, 0.0));
}

}  // namespace tarno2
