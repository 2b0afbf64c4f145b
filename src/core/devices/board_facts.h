#pragma once

#include <cstdint>
#include <vector>

#include <tarno2/IADCDevice.h>

#include "core/devices/device.h"

namespace tarno2 {

/// Most channels that a recording can have.
inline constexpr uint32_t kMaximumChannels = 160;

/// What a driver says of the board that is chosen. Read once, when the board is chosen.
struct BoardFacts {
    bool formatKnown = false;  ///< the driver told the format
    ADCSampleFormat format{};
    bool codeRangeKnown = false;
    ADCCodeRange codeRange{};
    uint32_t channelCount = 0;       ///< physical channels
    std::vector<int32_t> gains;      ///< to choose from; gain 1 alone when the driver tells none
    std::vector<float> frequencies;  ///< the only ones, Hz; empty: any within the limits
    ADCFrequencyLimits frequencyLimits{};
    float boardFrequency = 0.0F;  ///< Hz, to start a selector with
    uint32_t boardModes = 0;      ///< kADCMode... bits
    bool cutMode = true;          ///< a recording may be cut into pieces
    bool extendedBlock = false;
    bool perChannelFrequency = false;
    bool hotPlug = false;
    bool hardwareAverage = false;
    bool preHistory = false;
    bool synchronousChannels = false;

    /// Bytes per sample; 2 while the format is not known.
    [[nodiscard]] uint32_t sampleWidth() const { return formatKnown ? format.m_nBytes : 2; }
    /// The digital port's lines share the sample word with the code.
    [[nodiscard]] bool packed() const { return formatKnown && format.m_nDigitalMask != 0; }
};

[[nodiscard]] BoardFacts readBoardFacts(Device& device);

}  // namespace tarno2
