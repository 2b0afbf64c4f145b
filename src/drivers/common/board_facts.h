#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <tarno2/IADCDevice.h>

namespace tarno2::drivers {

/// What a board is and can do: the answers to most queries, and the limits of a parameter block.
struct BoardFacts {
    std::string name;
    ADCSampleFormat format{};
    ADCCodeRange codes{};
    uint32_t channels = 1;
    float range = 1.0F;                ///< volts at gain 1
    std::vector<float> channelRanges;  ///< volts of each channel, where they differ; empty: `range` for all
    std::vector<int32_t> gains;        ///< empty: only gain 1
    std::vector<float> frequencies;    ///< total Hz, the only ones; empty: any within the limits
    float minimumFrequency = 1.0F;
    float maximumFrequency = 1.0F;
    float usualFrequency = 1.0F;
    double channelFrequency = 0.0;   ///< when above 0, each channel runs at exactly this rate, whatever is asked for
    float externalClockRate = 0.0F;  ///< total Hz of what stands in for an external clock
    uint32_t modes = 0;              ///< kADCMode...
    uint32_t maximumRing = 0;        ///< samples
    bool hotPlug = false;
};

/// What an accepted parameter block asks for.
struct Measurement {
    std::vector<int32_t> channels;
    std::vector<int32_t> gains;
    double frequency = 0.0;        ///< total Hz
    double packetFrequency = 0.0;  ///< frames per second in packet mode, else 0
    bool differential = false;
    bool externalStart = false;
    bool externalClock = false;

    [[nodiscard]] double framesPerSecond() const {
        return packetFrequency > 0.0 ? packetFrequency : frequency / static_cast<double>(channels.size());
    }
};

/// The word of a sample, from its code (cut to the code's bits) and the state of the digital lines.
[[nodiscard]] inline uint32_t packSample(const ADCSampleFormat& format, int32_t code, uint32_t lines) {
    return ((static_cast<uint32_t>(code) << format.m_nCodeShift) & format.m_nCodeMask) |
           ((lines << format.m_nDigitalShift) & format.m_nDigitalMask);
}

}  // namespace tarno2::drivers
