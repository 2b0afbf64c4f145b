// SPDX-License-Identifier: MIT

#ifndef TARNO2_DRIVER_SETUP_H
#define TARNO2_DRIVER_SETUP_H

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <stdint.h>

#include <tarno2/IADCDevice.h>
#include <tarno2/driver/board.h>

#if defined(__GNUC__)
#define TARNO2_PRINTF(text, first) __attribute__((format(printf, text, first)))
#else
#define TARNO2_PRINTF(text, first)
#endif

namespace tarno2 {
namespace sdk {

/// The words for `LastError`: cut to 255 characters, nothing is allocated, any thread.
class Problem {
public:
    Problem() { text_[0] = '\0'; }
    void print(const char* format, va_list arguments) {
        const std::lock_guard<std::mutex> lock(mutex_);
        std::vsnprintf(text_, sizeof text_, format, arguments);
    }
    /// Always false, so that a check can end with it.
    TARNO2_PRINTF(2, 3) bool set(const char* format, ...) {
        va_list arguments;
        va_start(arguments, format);
        print(format, arguments);
        va_end(arguments);
        return false;
    }
    int32_t copy(char* text, uint32_t size) const {
        const std::lock_guard<std::mutex> lock(mutex_);
        std::snprintf(text, size, "%s", text_);
        return text_[0] != '\0' ? 1 : 0;
    }

private:
    mutable std::mutex mutex_;
    char text_[256];
};

/// The channels, gains and modes that an extended block asks for.
struct ChannelChoice {
    std::vector<int32_t> channels;
    std::vector<int32_t> gains;
    bool differential = false;
    bool externalStart = false;
};

/// Checks parameter blocks against a board and corrects what the board does otherwise. What can't be corrected is
/// refused, with the reason in `problem`.
class BlockCheck {
public:
    BlockCheck(const Board& board, Problem& problem) : board_(board), problem_(problem) {}

    static bool externalClock(const ADCParametersDMA& block) {
        return (block.m_nStartOf & kADCStartExternal) != 0 && !(block.m_fFreqStart != 0.0F);
    }

    /// All of a base block but its ring.
    bool correct(ADCParametersDMA& block) {
        if (block.m_nSizeOf != static_cast<int32_t>(sizeof block)) {
            return problem_.set("Base block of %d bytes, %d expected.", block.m_nSizeOf,
                                static_cast<int>(sizeof block));
        }
        if (!countFits(block.m_nChannelNumber) || !channelFits(block.m_nFirstChannel)) {
            return false;
        }
        int32_t gain = block.m_nGain;
        if (!correctGain(gain) || !modesFit(block) || !correctFrequency(block)) {
            return false;
        }
        block.m_nGain = gain;
        return true;
    }

    /// An extended block; what it asks for goes to `choice`.
    bool correct(ADCParametersDMAEX& block, ChannelChoice& choice) {
        if (block.m_nSizeOf != static_cast<int32_t>(sizeof block)) {
            return problem_.set("Extended block of %d bytes, %d expected.", block.m_nSizeOf,
                                static_cast<int>(sizeof block));
        }
        if (!countFits(block.m_nSize)) {
            return false;
        }
        if (block.m_pnChannels == nullptr || block.m_pnGains == nullptr) {
            return problem_.set("The extended block has no list of channels or gains.");
        }
        choice.differential = (block.m_nControl & kADCControlDifferential) != 0;
        choice.externalStart = (block.m_nControl & kADCControlExternalStart) != 0;
        if (choice.differential && (board_.modes & kADCModeDifferential) == 0) {
            return problem_.set("The board has no differential inputs.");
        }
        if (choice.externalStart && (board_.modes & kADCModeExternalStart) == 0) {
            return problem_.set("The board takes no external start.");
        }
        for (int32_t i = 0; i < block.m_nSize; ++i) {
            if (!channelFits(block.m_pnChannels[i]) || !correctGain(block.m_pnGains[i])) {
                return false;
            }
        }
        choice.channels.assign(block.m_pnChannels, block.m_pnChannels + block.m_nSize);
        choice.gains.assign(block.m_pnGains, block.m_pnGains + block.m_nSize);
        return true;
    }

    /// What a checked base block asks for. Without an extended block the channels follow each other. With an external
    /// clock an applied block doesn't tell of an external start any more; `startChecked` does.
    Measurement measurement(const ADCParametersDMA& block, bool startChecked) const {
        Measurement result;
        for (int32_t i = 0; i < block.m_nChannelNumber; ++i) {
            result.channels.push_back((block.m_nFirstChannel + i) % static_cast<int32_t>(board_.channels));
        }
        result.gains.assign(result.channels.size(), block.m_nGain);
        result.externalClock = externalClock(block);
        result.externalStart = result.externalClock ? startChecked : (block.m_nStartOf & kADCStartExternal) != 0;
        result.frequency = result.externalClock ? board_.externalClockRate : block.m_fFreqStart;
        if (!result.externalClock && board_.perChannelFrequency) {
            result.frequency *= static_cast<double>(result.channels.size());
        }
        result.packetFrequency = block.m_nTimerPack == 1 ? block.m_fFreqPack : 0.0F;
        return result;
    }

    /// The ring to wish for. The host wishes for half a second's worth at the frequency asked for. Packets, and an
    /// external clock, bring fewer samples, and half a second's worth of those is enough.
    int32_t wishedRing(const ADCParametersDMA& block) const {
        const double smallest = 32.0;  // that a host wishes for
        const int32_t unknown = 65536;
        const double channels = block.m_nChannelNumber;
        double rate = 0.0;
        if (block.m_nTimerPack == 1) {
            rate = static_cast<double>(block.m_fFreqPack) * channels;
        } else if (externalClock(block)) {
            rate = board_.externalClockRate;
            if (!(rate > 0.0)) {
                return unknown;
            }
        } else {
            return block.m_nDMABlockSize;
        }
        const double step = 2.0 * channels;
        const double enough = std::ceil(std::max(rate / 2.0, smallest) / step) * step;
        return static_cast<int32_t>(std::min(static_cast<double>(block.m_nDMABlockSize), enough));
    }

private:
    bool countFits(int32_t channels) {
        return (channels >= 1 && channels <= static_cast<int32_t>(std::min<uint32_t>(board_.channels, 160))) ||
               problem_.set("%d channels asked for, the board has %u.", channels, board_.channels);
    }
    bool channelFits(int32_t channel) {
        return (channel >= 0 && channel < static_cast<int32_t>(board_.channels)) ||
               problem_.set("The board has no channel %d.", channel);
    }
    bool correctGain(int32_t& gain) {
        if (gain == 0) {
            gain = 1;
        }
        const std::vector<int32_t>& gains = board_.gains;
        return (gains.empty() ? gain == 1 : std::find(gains.begin(), gains.end(), gain) != gains.end()) ||
               problem_.set("The board has no gain %d.", gain);
    }
    bool modesFit(const ADCParametersDMA& block) {
        const bool external = (block.m_nStartOf & kADCStartExternal) != 0;
        const bool clock = externalClock(block);
        if (clock && (board_.modes & kADCModeExternalClock) == 0) {
            return problem_.set("The board takes no external clock.");
        }
        if (external && !clock && (board_.modes & kADCModeExternalStart) == 0) {
            return problem_.set("The board takes no external start.");
        }
        if (block.m_nTimerPack == 1 && (board_.modes & kADCModePacket) == 0) {
            return problem_.set("The board has no packet mode.");
        }
        return true;
    }
    bool correctFrequency(ADCParametersDMA& block) {
        const bool clock = externalClock(block);
        if (!clock && (!std::isfinite(block.m_fFreqStart) || !(block.m_fFreqStart > 0.0F))) {
            return problem_.set("The frequency is not a positive number.");
        }
        if (!clock) {
            block.m_fFreqStart = nearest(block.m_fFreqStart);
        }
        if (block.m_nTimerPack != 1) {
            return true;
        }
        if (!std::isfinite(block.m_fFreqPack) || !(block.m_fFreqPack > 0.0F)) {
            return problem_.set("The packet frequency is not a positive number.");
        }
        // A packet begins when the one before is complete.
        const double rate = clock ? board_.externalClockRate : block.m_fFreqStart;
        const float fastest =
            static_cast<float>(board_.perChannelFrequency ? rate : rate / static_cast<double>(block.m_nChannelNumber));
        block.m_fFreqPack = std::min(+block.m_fFreqPack, fastest);
        return true;
    }
    float nearest(float wished) const {
        const std::vector<float>& list = board_.frequencies;
        if (list.empty()) {
            return std::min(std::max(wished, board_.minimumFrequency), board_.maximumFrequency);
        }
        return *std::min_element(list.begin(), list.end(),
                                 [wished](float a, float b) { return std::fabs(a - wished) < std::fabs(b - wished); });
    }

    const Board& board_;
    Problem& problem_;
};

}  // namespace sdk
}  // namespace tarno2

#endif  // TARNO2_DRIVER_SETUP_H
