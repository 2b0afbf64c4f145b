#include "core/devices/board_facts.h"

#include <algorithm>

namespace tarno2 {

namespace {

std::vector<std::string> channelTexts(Device& device, uint32_t code, uint32_t channels) {
    std::vector<std::string> texts;
    for (uint32_t i = 0; i < std::min(channels, kMaximumChannels); ++i) {
        texts.push_back(device.channelText(code, i));
    }
    return texts;
}

}  // namespace

uint32_t BoardFacts::lineMask(int32_t line) const {
    if (!formatKnown || line < 0 || static_cast<uint32_t>(line) >= format.m_nDigitalLines) {
        return 0;
    }
    const uint32_t bit = format.m_nDigitalShift + static_cast<uint32_t>(line);
    return bit < 32 ? format.m_nDigitalMask & (1U << bit) : 0;
}

BoardFacts readBoardFacts(Device& device) {
    BoardFacts facts;
    facts.formatKnown = device.get(kADCGetSampleFormat, facts.format);
    facts.codeRangeKnown = device.get(kADCGetCodeRange, facts.codeRange);
    facts.channelCount = device.number(kADCGetChannelCount, 0);
    facts.channelNames = channelTexts(device, kADCGetChannelName, facts.channelCount);
    facts.channelUnits = channelTexts(device, kADCGetChannelUnit, facts.channelCount);
    facts.gains = device.integers(kADCGetGainList);
    if (facts.gains.empty()) {
        facts.gains = {1};
    }
    facts.frequencies = device.floats(kADCGetFrequencyList);
    if (!device.get(kADCGetFrequencyLimits, facts.frequencyLimits)) {
        facts.frequencyLimits = {};
    }
    if (!device.get(kADCGetBoardFrequency, facts.boardFrequency)) {
        facts.boardFrequency = 0.0F;
    }
    facts.boardModes = device.number(kADCGetBoardModes, 0);
    facts.cutMode = device.number(kADCGetCutMode, 1) != 0;
    facts.extendedBlock = device.number(kADCGetExtendedBlock, 0) != 0;
    facts.perChannelFrequency = device.number(kADCGetPerChannelFrequency, 0) != 0;
    facts.hotPlug = device.number(kADCGetHotPlug, 0) != 0;
    facts.hardwareAverage = device.number(kADCGetHardwareAverage, 0) != 0;
    facts.preHistory = device.number(kADCGetPreHistory, 0) != 0;
    facts.synchronousChannels = device.number(kADCGetSynchronousChannels, 0) != 0;
    return facts;
}

ChannelLabel channelLabel(const BoardFacts& board, int32_t channel, ChannelLabel given) {
    const auto takeOver = [channel](std::string& text, const std::vector<std::string>& told) {
        const auto index = static_cast<size_t>(channel);
        if (text.empty() && index < told.size()) {
            text = told[index];
        }
    };
    takeOver(given.name, board.channelNames);
    takeOver(given.unit, board.channelUnits);
    return given;
}

}  // namespace tarno2
