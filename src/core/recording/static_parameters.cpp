#include "core/recording/static_parameters.h"

#include "core/devices/input_limits.h"

namespace tarno2 {

namespace {

SampleLayout layoutOf(const ADCSampleFormat& format) {
    SampleLayout layout;
    layout.bytesPerSample = static_cast<int32_t>(format.m_nBytes);
    layout.analogShift = static_cast<int32_t>(format.m_nCodeShift);
    layout.analogMask = static_cast<int32_t>(format.m_nCodeMask);
    layout.analogBits = static_cast<int32_t>(format.m_nCodeBits);
    layout.digitalShift = static_cast<int32_t>(format.m_nDigitalShift);
    layout.digitalMask = static_cast<int32_t>(format.m_nDigitalMask);
    layout.digitalBits = static_cast<int32_t>(format.m_nDigitalLines);
    layout.analogSigned = format.m_nSignedCodes != 0 ? 1 : 0;
    return layout;
}

}  // namespace

bool calculateStaticParameters(T_DRIVER& driver, const T_BOARD& session, RecordingFacts& facts, std::string& missing) {
    const BoardFacts& board = driver.facts();
    if (!board.formatKnown) {
        missing = "its sample format";
        return false;
    }
    if (!board.codeRangeKnown || board.codeRange.m_nMinimum >= board.codeRange.m_nMaximum) {
        missing = "its code range";
        return false;
    }
    const BoardSettings& settings = session.settings;
    facts = {};
    for (size_t i = 0; i < settings.channels.size(); ++i) {
        const InputLimits limits = inputLimits(driver.device(), settings.channels[i], settings.gains[i]);
        if (!limits.known()) {
            missing = "the input range of channel " + std::to_string(settings.channels[i]);
            return false;
        }
        facts.ranges.push_back({limits.upper, limits.lower, limits.range});
    }
    const double channels = board.perChannelFrequency ? settings.channelCount() : 1.0;
    facts.driverName = driver.name();
    facts.totalFrequency = static_cast<double>(settings.frequency) * channels / session.decimation;
    facts.synchronousChannels = board.synchronousChannels;
    facts.packetMode = settings.packetMode;
    facts.packetFrequency =
        settings.packetMode ? static_cast<double>(settings.packetFrequency) / session.decimation : 0.0;
    facts.externalClock = settings.externalClock;
    facts.backwardOrder = board.format.m_nBackwardOrder != 0;
    facts.layout = layoutOf(board.format);
    return true;
}

}  // namespace tarno2
