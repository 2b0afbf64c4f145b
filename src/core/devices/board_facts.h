#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <tarno2/IADCDevice.h>

#include "core/devices/device.h"
#include "records/channel_label.h"

namespace tarno2 {

/// Most channels that a recording can have.
inline constexpr uint32_t kMaximumChannels = 160;

/// What a driver says of the board that is chosen. Read once, when the board is chosen.
struct BoardFacts {
    bool formatKnown = false;  ///< the driver told the format
    ADCSampleFormat format{};
    bool codeRangeKnown = false;
    ADCCodeRange codeRange{};
    uint32_t channelCount = 0;              ///< physical channels
    std::vector<std::string> channelNames;  ///< of each channel, in UTF-8, where the driver has one
    std::vector<std::string> channelUnits;  ///< likewise; what its volts really are
    std::vector<int32_t> gains;             ///< to choose from; gain 1 alone when the driver tells none
    std::vector<float> frequencies;         ///< the only ones, Hz; empty: any within the limits
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
    /// The bit of a digital line, from 0, in the first word of a frame; 0 when there is no such line.
    [[nodiscard]] uint32_t lineMask(int32_t line) const;
};

[[nodiscard]] BoardFacts readBoardFacts(Device& device);

/// What a channel of the board is called and told in: as its operator says, and where he says nothing, as the driver
/// does.
[[nodiscard]] ChannelLabel channelLabel(const BoardFacts& board, int32_t channel, ChannelLabel given);

}  // namespace tarno2
