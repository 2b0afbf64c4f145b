#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include <tarno2/IADCDevice.h>

#include "core/devices/board_facts.h"

namespace tarno2 {

/// What the user asked the board for.
struct BoardSettings {
    std::vector<int32_t> channels;  ///< physical numbers in recording order, at most kMaximumChannels
    std::vector<int32_t> gains;     ///< one a channel
    float frequency = 0.0F;         ///< Hz; after the check pass the one that the driver accepted
    bool differential = false;
    bool externalStart = false;
    bool packetMode = false;
    float packetFrequency = 0.0F;  ///< Hz, packets of one frame
    bool externalClock = false;

    [[nodiscard]] uint32_t channelCount() const { return static_cast<uint32_t>(channels.size()); }
};

/// What the driver changed of what it was asked for, a line each for the log.
[[nodiscard]] std::vector<std::string> correctionLines(const BoardSettings& asked, const BoardSettings& made);

/// Check: the driver looks at the blocks and corrects them. Init: it sets the board up by them.
enum class SetupPass { Check, Init };

/// The two blocks that a driver takes, with the arrays that the extended one points into.
struct ParameterBlocks {
    ADCParametersDMA dma{};
    ADCParametersDMAEX extended{};
    std::array<int32_t, kMaximumChannels> channels{};
    std::array<int32_t, kMaximumChannels> gains{};

    ParameterBlocks() = default;
    // The extended block points into this object.
    ParameterBlocks(const ParameterBlocks&) = delete;
    ParameterBlocks& operator=(const ParameterBlocks&) = delete;

    /// Fills both blocks from the settings. `maximumBuffer`: the driver's largest ring, samples.
    void build(const BoardSettings& settings, SetupPass pass, uint32_t maximumBuffer);

    /// Write a block to the debug log, a field a line.
    void dumpDma() const;
    void dumpExtended() const;
};

/// Ring to ask for, samples: half a second's worth, at most the driver's maximum, at least 32.
[[nodiscard]] int32_t dmaBlockSize(float frequency, uint32_t maximumBuffer);

/// The nearest ring to `ringSize` whose halves hold whole frames: rounded up, or down where that would pass the
/// driver's maximum. 0 when not even one frame a half fits. A ring that fits already is returned as it is.
[[nodiscard]] uint32_t ringOfWholeFrames(uint32_t ringSize, uint32_t channelCount, uint32_t maximumBuffer);

}  // namespace tarno2
