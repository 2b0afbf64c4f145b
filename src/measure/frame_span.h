#pragma once

#include <cstdint>

namespace tarno2 {

/// Frames from `first` up to, but not including, `end`.
struct FrameSpan {
    uint64_t first = 0;
    uint64_t end = 0;
    [[nodiscard]] uint64_t count() const { return end > first ? end - first : 0; }
    friend bool operator==(const FrameSpan&, const FrameSpan&) = default;
};

}  // namespace tarno2
