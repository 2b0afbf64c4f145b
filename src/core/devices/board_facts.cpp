#include "core/devices/board_facts.h"

namespace tarno2 {

BoardFacts readBoardFacts(Device& device) {
    BoardFacts facts;
    facts.formatKnown = device.get(kADCGetSampleFormat, facts.format);
    facts.codeRangeKnown = device.get(kADCGetCodeRange, facts.codeRange);
    facts.channelCount = device.number(kADCGetChannelCount, 0);
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

}  // namespace tarno2
