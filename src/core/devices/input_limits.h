#pragma once

#include <cstdint>

#include "core/devices/device.h"

namespace tarno2 {

/// The voltages of the lowest and the highest code of a channel at a gain.
struct InputLimits {
    double lower = 0.0;  ///< volts
    double upper = 0.0;  ///< volts
    float range = 0.0F;  ///< volts at gain 1 of an input from -range / gain to +range / gain; 0: the board told limits

    [[nodiscard]] bool known() const { return lower < upper; }
};

/// What the chosen board tells of a channel: its limits, or else its range. A gain of 0 counts as 1. Unknown when the
/// board tells neither, or nothing that an input can have.
[[nodiscard]] InputLimits inputLimits(Device& device, int32_t channel, int32_t gain);

}  // namespace tarno2
