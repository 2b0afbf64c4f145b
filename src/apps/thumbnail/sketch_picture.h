#pragma once

#include <QImage>
#include <vector>

#include "display/course.h"

namespace tarno2 {

/// The channels that a picture shows at most: the first ones.
inline constexpr size_t kMostSketched = 8;

/// A picture of the courses of some channels, as wide as `size` and three quarters as high, each in a lane and a colour
/// of its own that it fills. Needs no display and no application object.
[[nodiscard]] QImage drawSketch(const std::vector<std::vector<CourseColumn>>& channels, int size);

}  // namespace tarno2
