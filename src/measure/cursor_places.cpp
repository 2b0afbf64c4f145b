#include "measure/cursor_places.h"

#include <algorithm>
#include <cmath>

namespace tarno2 {

namespace {

constexpr double kEdgeRounding = 1e-9;  // of the picture's width

uint64_t wholeFrame(double frame) {
    return frame > 0.0 ? static_cast<uint64_t>(std::llround(frame)) : 0;
}

}  // namespace

void CursorPlaces::begin(const PictureEdges& picture) {
    for (size_t i = 0; i < kCount; ++i) {
        place(i, picture.low + picture.width() * static_cast<double>(i + 1) / 3.0, picture);
    }
    active_ = 0;
}

bool CursorPlaces::lost(const PictureEdges& picture) const {
    const auto isOutside = [&](size_t cursor) {
        const double at = frame(cursor, picture);
        return !(at >= picture.low && at <= picture.high);
    };
    return (isOutside(0) && isOutside(1)) || frame(0, picture) == frame(1, picture);
}

void CursorPlaces::fixOnScreen(bool onScreen, const PictureEdges& picture) {
    const double frames[kCount] = {frame(0, picture), frame(1, picture)};
    if (onScreen_ && !onScreen) {
        screen_ = places_;
    }
    onScreen_ = onScreen;
    for (size_t i = 0; i < kCount; ++i) {
        place(i, frames[i], picture);
    }
    const auto isOutside = [](double part) { return !(part >= -kEdgeRounding && part <= 1.0 + kEdgeRounding); };
    if (onScreen_ && std::ranges::any_of(places_, isOutside)) {
        places_ = screen_;
    }
}

double CursorPlaces::frame(size_t cursor, const PictureEdges& picture) const {
    return onScreen_ ? picture.low + places_[cursor] * picture.width() : places_[cursor];
}

void CursorPlaces::place(size_t cursor, double frame, const PictureEdges& picture) {
    if (!onScreen_) {
        places_[cursor] = frame;
    } else if (picture.width() > 0.0) {
        places_[cursor] = (frame - picture.low) / picture.width();
    }
}

void CursorPlaces::move(double frames, const PictureEdges& picture, uint64_t frameCount) {
    const double last = frameCount > 0 ? static_cast<double>(frameCount - 1) : 0.0;
    const double low = std::clamp(picture.low, 0.0, last);
    const double high = std::clamp(picture.high, low, last);
    // Frame by frame where they are told apart.
    const double wanted = std::round(frame(active_, picture)) + frames;
    place(active_, std::clamp(wanted, low, high), picture);
}

bool CursorPlaces::onFrame(size_t cursor, const PictureEdges& picture, uint64_t frameCount) const {
    const double at = std::round(frame(cursor, picture));
    return at >= 0.0 && at < static_cast<double>(frameCount);
}

FrameSpan CursorPlaces::between(const PictureEdges& picture, uint64_t frameCount) const {
    const auto [left, right] = std::minmax({frame(0, picture), frame(1, picture)});
    if (!(std::round(right) >= 0.0)) {
        return {};
    }
    const uint64_t first = wholeFrame(left);
    const uint64_t end = std::max(wholeFrame(right), first + 1);
    return {std::min(first, frameCount), std::min(end, frameCount)};
}

}  // namespace tarno2
