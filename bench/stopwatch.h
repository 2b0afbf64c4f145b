#pragma once

#include <cstdint>

#include "platform/clock.h"

namespace tarno2::bench {

/// Measures from its construction on.
class Stopwatch {
public:
    [[nodiscard]] double seconds() const { return static_cast<double>(monotonicNanoseconds() - begin_) * 1e-9; }

private:
    uint64_t begin_ = monotonicNanoseconds();
};

}  // namespace tarno2::bench
