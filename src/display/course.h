#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "display/screen.h"
#include "display/signal_format.h"

namespace tarno2 {

/// The least and the greatest code of a channel in a column of a picture; none where the signal isn't known.
struct CourseColumn {
    int32_t low = 0;
    int32_t high = 0;
    bool known = false;
};

/// The course of one channel over the frames from 0 up to, but not including, `frames`, in so many columns. The screen
/// is that of these frames.
[[nodiscard]] std::vector<CourseColumn> courseOf(const Screen& screen, const SignalFormat& format, size_t channel,
                                                 uint64_t frames, size_t columns);

}  // namespace tarno2
