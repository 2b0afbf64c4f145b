#include "core/devices/input_limits.h"

#include <cmath>

namespace tarno2 {

InputLimits inputLimits(Device& device, int32_t channel, int32_t gain) {
    const int32_t factor = gain == 0 ? 1 : gain;
    ADCInputLimits limits{channel, factor, 0.0, 0.0};
    if (device.get(kADCGetInputLimits, limits)) {
        const bool possible = std::isfinite(limits.m_fLower) && std::isfinite(limits.m_fUpper);
        return possible ? InputLimits{limits.m_fLower, limits.m_fUpper, 0.0F} : InputLimits{};
    }
    ADCInputRange range{channel, gain, 0.0F};
    if (!device.get(kADCGetInputRange, range) || !std::isfinite(range.m_fRange) || range.m_fRange <= 0) {
        return {};
    }
    const double limit = static_cast<double>(range.m_fRange) / factor;
    return {-limit, limit, range.m_fRange};
}

}  // namespace tarno2
