#pragma once

#include <cstdint>

namespace tarno2 {

/// What a channel showed lately, volts.
struct ChannelReading {
    int32_t channel = 0;   ///< physical number
    double value = 0.0;    ///< of the newest frame
    double minimum = 0.0;  ///< since the reading before
    double maximum = 0.0;
};

}  // namespace tarno2
