#pragma once

#include <span>

#include "config/settings/program_settings.h"

namespace tarno2 {

/// A place for a window that was somewhere when the program ran last: unchanged while enough of its title can be
/// grasped on one of the screens, else moved, and cut down when it is larger than the screen. `screens` are the usable
/// areas in the same pixels, the main one first; without any the place stays. Invalid sizes become those of a new
/// window.
[[nodiscard]] WindowPlace placeOnScreens(WindowPlace place, std::span<const WindowPlace> screens);

}  // namespace tarno2
