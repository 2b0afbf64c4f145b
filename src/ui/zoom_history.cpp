#include "ui/zoom_history.h"

#include <utility>

namespace tarno2 {

namespace {

constexpr uint64_t kSameGestureMs = 700;

}  // namespace

void ZoomHistory::leave(ShownPart part, int cause, uint64_t nowMs) {
    const bool goesOn = !parts_.empty() && cause == cause_ && nowMs - lastMs_ < kSameGestureMs;
    cause_ = cause;
    lastMs_ = nowMs;
    if (goesOn) {
        return;
    }
    parts_.push_back(std::move(part));
    if (parts_.size() > kMost) {
        parts_.pop_front();
    }
}

std::optional<ShownPart> ZoomHistory::back() {
    if (parts_.empty()) {
        return std::nullopt;
    }
    ShownPart part = std::move(parts_.back());
    parts_.pop_back();
    lastMs_ = 0;
    cause_ = 0;
    return part;
}

}  // namespace tarno2
