// SPDX-License-Identifier: MIT

#ifndef TARNO2_DRIVER_BOARD_H
#define TARNO2_DRIVER_BOARD_H

#include <stdint.h>
#include <string>
#include <vector>

#include <tarno2/IADCDevice.h>

namespace tarno2 {
namespace sdk {

/// The voltages of the lowest and the highest code.
struct InputLimits {
    double lower;
    double upper;
};

/// The layout of plain sample words of 2 or 4 bytes: `bits` wide codes from bit 0 on, no digital lines.
inline ADCSampleFormat plainWords(uint32_t bytes, uint32_t bits, bool signedCodes) {
    ADCSampleFormat format = ADCSampleFormat();
    format.m_nBytes = bytes;
    format.m_nCodeBits = bits;
    format.m_nCodeMask = bits >= 32 ? 0xFFFFFFFFU : (static_cast<uint32_t>(1) << bits) - 1U;
    format.m_nSignedCodes = signedCodes ? 1 : 0;
    return format;
}

/// All codes of so many bits, 2 to 32; unsigned ones of at most 31, because a code range is of signed numbers.
inline ADCCodeRange allCodes(uint32_t bits, bool signedCodes) {
    const int64_t count = static_cast<int64_t>(1) << bits;
    const ADCCodeRange range = {static_cast<int32_t>(signedCodes ? -count / 2 : 0),
                                static_cast<int32_t>(signedCodes ? count / 2 - 1 : count - 1)};
    return range;
}

/// What a board is and can do, as plain facts: the answers to most queries, and the limits of a parameter block.
struct Board {
    std::string id;    ///< by which `open` finds it again, the same after a new search; the user doesn't see it
    std::string name;  ///< what the user reads behind its number: "ADC16 (16 channels)"
    ADCSampleFormat format = plainWords(2, 16, true);
    ADCCodeRange codes = allCodes(16, true);
    uint32_t channels = 1;                  ///< 1 to 160
    double range = 1.0;                     ///< an input goes from -range / gain to +range / gain, volts
    std::vector<double> channelRanges;      ///< the range of each channel, where they differ
    std::vector<std::string> channelNames;  ///< of each channel that has one, UTF-8; empty: its number alone
    std::vector<std::string> channelUnits;  ///< what its volts really are, likewise ("mA"); empty: volts
    std::vector<int32_t> gains;             ///< to choose from, from 1 up; empty: only 1
    std::vector<InputLimits> limits;  ///< of each of `gains` (or of gain 1): in place of `range`, for boards that are
                                      ///< not symmetric. `Driver::inputLimits` tells of channels that differ
    std::vector<float> frequencies;   ///< the only ones, Hz; empty: any within the limits
    float minimumFrequency = 1.0F;    ///< Hz, total over all channels ...
    float maximumFrequency = 1.0F;
    float usualFrequency = 1.0F;
    bool perChannelFrequency = false;  ///< ... or of a channel: all frequencies, in the block too
    bool synchronousChannels = true;   ///< the channels of a frame are sampled at one moment
    float externalClockRate = 0.0F;    ///< Hz, total: what an external clock usually brings; 0: nobody knows
    uint32_t modes = 0;                ///< kADCMode...
    uint32_t minimumRing = 0;          ///< samples; at least two bursts, where bursts can't wait for room
    uint32_t maximumRing = 1U << 24;   ///< samples
    bool hotPlug = false;              ///< can be pulled out: `Driver::present`
};

/// What the host has set up: the measurement that `begin` starts.
struct Measurement {
    std::vector<int32_t> channels;  ///< in the order of the samples of a frame
    std::vector<int32_t> gains;     ///< of each of them
    double frequency = 0.0;         ///< Hz, total over all channels
    double packetFrequency = 0.0;   ///< frames per second in packet mode, else 0
    bool differential = false;
    bool externalStart = false;
    bool externalClock = false;  ///< the frequency is then `Board::externalClockRate`

    double framesPerSecond() const {
        return packetFrequency > 0.0 ? packetFrequency : frequency / static_cast<double>(channels.size());
    }
};

}  // namespace sdk
}  // namespace tarno2

#endif  // TARNO2_DRIVER_BOARD_H
