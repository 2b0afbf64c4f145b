#include "config/settings/window_place.h"

#include <algorithm>

namespace tarno2 {

namespace {

constexpr int32_t kGrip = 80;         // pixels of the upper edge that a mouse needs
constexpr int32_t kTitleHeight = 30;  // a window's title lies above its place
constexpr int32_t kSmallestSide = 120;

int32_t overlap(int32_t begin, int32_t length, int32_t otherBegin, int32_t otherLength) {
    return std::min(begin + length, otherBegin + otherLength) - std::max(begin, otherBegin);
}

bool graspable(const WindowPlace& place, const WindowPlace& screen) {
    return overlap(place.left, place.width, screen.left, screen.width) >= kGrip && place.top >= screen.top &&
           place.top + kTitleHeight <= screen.top + screen.height;
}

}  // namespace

WindowPlace placeOnScreens(WindowPlace place, std::span<const WindowPlace> screens) {
    if (place.width < kSmallestSide || place.height < kSmallestSide) {
        place.width = WindowPlace().width;
        place.height = WindowPlace().height;
    }
    if (screens.empty()) {
        return place;
    }
    const auto home = std::find_if(screens.begin(), screens.end(),
                                   [&place](const WindowPlace& screen) { return graspable(place, screen); });
    const WindowPlace& screen = home == screens.end() ? screens.front() : *home;
    place.width = std::min(place.width, screen.width);
    place.height = std::min(place.height, screen.height);
    if (home == screens.end()) {
        place.left = std::clamp(place.left, screen.left, screen.left + screen.width - place.width);
        place.top = std::clamp(place.top, screen.top, screen.top + screen.height - place.height);
    }
    return place;
}

}  // namespace tarno2
