#include "core/devices/parameter_blocks.h"

#include <algorithm>

#include "config/logs/debug_log.h"
#include "platform/c_locale.h"

namespace tarno2 {

namespace {

constexpr int32_t kSmallestBlock = 32;
constexpr int32_t kDmaMode = 0x1000000;

int32_t startSource(const BoardSettings& settings, SetupPass pass) {
    int32_t source = kADCStartByProgram;
    if (settings.externalStart || settings.externalClock) {
        source |= kADCStartExternal;
    }
    if (pass == SetupPass::Init && settings.externalClock) {
        source = kADCStartExternal;
    }
    return source | kADCStartRing;
}

std::string listed(const std::vector<int32_t>& numbers) {
    std::string list;
    for (const int32_t number : numbers) {
        list += (list.empty() ? "" : ", ") + std::to_string(number);
    }
    return list;
}

}  // namespace

std::vector<std::string> correctionLines(const BoardSettings& asked, const BoardSettings& made) {
    std::vector<std::string> lines;
    const auto hertz = [&lines](const char* format, float wanted, float taken) {
        if (taken != wanted) {
            lines.push_back(formatText(format, static_cast<double>(wanted), static_cast<double>(taken)));
        }
    };
    const auto numbers = [&lines](const char* what, const auto& wanted, const auto& taken) {
        if (taken != wanted) {
            lines.push_back(formatText("Asked for the %s %s, the board takes %s", what, listed(wanted).c_str(),
                                       listed(taken).c_str()));
        }
    };
    hertz("Asked for %f Hz, the board takes %f Hz", asked.frequency, made.frequency);
    hertz("Asked for packets of %f Hz, the board takes %f Hz", asked.packetFrequency, made.packetFrequency);
    numbers("channels", asked.channels, made.channels);
    numbers("gains", asked.gains, made.gains);
    return lines;
}

int32_t dmaBlockSize(float frequency, uint32_t maximumBuffer) {
    const double half = static_cast<double>(frequency) / 2.0;
    const double limit = std::min<double>(maximumBuffer, 0x7FFFFFFF);
    if (!(half > 0.0)) {
        return kSmallestBlock;
    }
    return std::max(static_cast<int32_t>(std::min(half, limit)), kSmallestBlock);
}

uint32_t ringOfWholeFrames(uint32_t ringSize, uint32_t channelCount, uint32_t maximumBuffer) {
    const uint64_t step = uint64_t{2} * channelCount;
    if (step == 0) {
        return 0;
    }
    const uint64_t limit = std::min<uint64_t>(maximumBuffer, 0x7FFFFFFF);
    const uint64_t up = std::max<uint64_t>((ringSize + step - 1) / step, 1) * step;
    const uint64_t fitting = up <= limit ? up : limit / step * step;
    return static_cast<uint32_t>(fitting);
}

void ParameterBlocks::build(const BoardSettings& settings, SetupPass pass, uint32_t maximumBuffer) {
    const uint32_t count = std::min(settings.channelCount(), kMaximumChannels);
    channels.fill(0);
    gains.fill(0);
    std::copy_n(settings.channels.begin(), count, channels.begin());
    std::copy_n(settings.gains.begin(), std::min<size_t>(count, settings.gains.size()), gains.begin());

    dma.m_nType = kADCTypeDMA;
    dma.m_nSizeOf = sizeof(ADCParametersDMA);
    dma.m_nStartOf = startSource(settings, pass);
    dma.m_nIntOf = -1;
    dma.m_nDMABlockSize = dmaBlockSize(settings.frequency, maximumBuffer);
    dma.m_nDMAMode = kDmaMode;
    dma.m_fFreqStart = settings.externalClock ? 0.0F : settings.frequency;
    dma.m_nTimerStart = 0;
    dma.m_fFreqPack = settings.packetMode ? settings.packetFrequency : 0.0F;
    dma.m_nTimerPack = settings.packetMode ? 1 : -1;
    dma.m_nFirstChannel = channels[0];
    dma.m_nChannelNumber = static_cast<int32_t>(count);
    dma.m_nGain = gains[0];

    extended.m_nType = kADCTypeDMAEX;
    extended.m_nSizeOf = sizeof(ADCParametersDMAEX);
    extended.m_pnGains = gains.data();
    extended.m_pnChannels = channels.data();
    extended.m_nSize = static_cast<int32_t>(count);
    extended.m_nControl = settings.differential ? kADCControlDifferential : 0;
    if (pass == SetupPass::Check && settings.externalStart) {
        extended.m_nControl |= kADCControlExternalStart;
    }
    extended.m_nSyncLevel[0] = 0;
    extended.m_nSyncLevel[1] = 0;
}

void ParameterBlocks::dumpDma() const {
    DEBUG_LOG("*         m_nStartOf = %d", dma.m_nStartOf);
    DEBUG_LOG("*         m_nIntOf = %d", dma.m_nIntOf);
    DEBUG_LOG("*         m_nDMABlockSize = %d", dma.m_nDMABlockSize);
    DEBUG_LOG("*         m_nDMAMode = %d", dma.m_nDMAMode);
    DEBUG_LOG("*         m_fFreqStart = %f", static_cast<double>(dma.m_fFreqStart));
    DEBUG_LOG("*         m_nTimerStart = %d", dma.m_nTimerStart);
    DEBUG_LOG("*         m_fFreqPack = %f", static_cast<double>(dma.m_fFreqPack));
    DEBUG_LOG("*         m_nTimerPack = %d", dma.m_nTimerPack);
    DEBUG_LOG("*         m_nFirstChannel = %d", dma.m_nFirstChannel);
    DEBUG_LOG("*         m_nChannelNumber = %d", dma.m_nChannelNumber);
    DEBUG_LOG("*         m_nGain = %d", dma.m_nGain);
    DEBUG_LOG("*         m_nType = %d", dma.m_nType);
    DEBUG_LOG("*         m_nSizeOf = %d", dma.m_nSizeOf);
}

void ParameterBlocks::dumpExtended() const {
    const int32_t count = std::clamp<int32_t>(extended.m_nSize, 0, kMaximumChannels);
    DEBUG_LOG("*         m_nSize = %d", extended.m_nSize);
    for (int32_t i = 0; i < count; ++i) {
        DEBUG_LOG("*         m_pnChannels[%d] = %d", i, channels[static_cast<size_t>(i)]);
    }
    for (int32_t i = 0; i < count; ++i) {
        DEBUG_LOG("*         m_pnGains[%d] = %d", i, gains[static_cast<size_t>(i)]);
    }
    DEBUG_LOG("*         m_nControl = %d", extended.m_nControl);
    DEBUG_LOG("*         m_nSyncLevel[0] = %d , m_nSyncLevel[1] = %d", extended.m_nSyncLevel[0],
              extended.m_nSyncLevel[1]);
    DEBUG_LOG("*         m_nType = %d", extended.m_nType);
    DEBUG_LOG("*         m_nSizeOf = %d", extended.m_nSizeOf);
}

}  // namespace tarno2
