// SPDX-License-Identifier: MIT

#ifndef TARNO2_DRIVER_ANSWERS_H
#define TARNO2_DRIVER_ANSWERS_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <stdint.h>
#include <string>
#include <vector>

#include <tarno2/IADCDevice.h>
#include <tarno2/driver/board.h>

namespace tarno2 {
namespace sdk {

/// Answers to queries. Their structures are packed and may lie anywhere, so they are copied, not dereferenced.
template <typename Value>
int32_t put(void* result, const Value& value) {
    std::memcpy(result, &value, sizeof value);
    return 1;
}

inline int32_t* valuesOf(const ADCIntList& list) {
    return list.m_pnValues;
}
inline float* valuesOf(const ADCFloatList& list) {
    return list.m_pfValues;
}

/// No answer for an empty list.
template <typename List, typename Value>
int32_t putList(void* result, const std::vector<Value>& values) {
    if (values.empty()) {
        return 0;
    }
    List list;
    std::memcpy(&list, result, sizeof list);
    list.m_nCount = static_cast<uint32_t>(values.size());
    if (valuesOf(list) != nullptr) {
        std::copy(values.begin(), values.begin() + std::min<std::ptrdiff_t>(list.m_nCapacity, list.m_nCount),
                  valuesOf(list));
    }
    return put(result, list);
}

/// The boards, numbered from 1.
inline int32_t putBoards(void* result, const std::vector<Board>& boards) {
    ADCBoardList list;
    std::memcpy(&list, result, sizeof list);
    list.m_nCount = static_cast<uint32_t>(boards.size());
    for (uint32_t i = 0; list.m_pEntries != nullptr && i < list.m_nCapacity && i < list.m_nCount; ++i) {
        ADCBoardEntry& entry = list.m_pEntries[i];
        entry.m_nNumber = i + 1;
        std::snprintf(entry.m_sName, sizeof entry.m_sName, "%03X %s", i + 1, boards[i].name.c_str());
    }
    return put(result, list);
}

/// R of an input that goes from -R / gain to +R / gain; of one with `limits`, what the larger of them makes.
inline int32_t putInputRange(void* result, const Board& board, ADCInputRange asked, const InputLimits* limits) {
    const size_t channel = static_cast<size_t>(asked.m_nChannel);
    double range = channel < board.channelRanges.size() ? board.channelRanges[channel] : board.range;
    if (limits != nullptr) {
        range = std::max(std::fabs(limits->lower), std::fabs(limits->upper)) * std::max(+asked.m_nGain, 1);
    }
    asked.m_fRange = static_cast<float>(range);
    return put(result, asked);
}

inline int32_t putInputLimits(void* result, const ADCInputRange& asked, const InputLimits& limits) {
    ADCInputLimits answer = ADCInputLimits();
    answer.m_nChannel = asked.m_nChannel;
    answer.m_nGain = asked.m_nGain;
    answer.m_fLower = limits.lower;
    answer.m_fUpper = limits.upper;
    return put(result, answer);
}

/// The text of a channel, cut to whole letters where it is too long; no answer for one that is empty or of no channel.
inline int32_t putChannelText(void* result, const Board& board, const std::vector<std::string>& texts) {
    ADCChannelText answer;
    std::memcpy(&answer, result, sizeof answer);
    const size_t channel = static_cast<size_t>(answer.m_nChannel);
    if (channel >= board.channels || channel >= texts.size() || texts[channel].empty()) {
        return 0;
    }
    const std::string& text = texts[channel];
    size_t length = std::min(text.size(), sizeof answer.m_sText - 1);
    while (length > 0 && length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) {
        --length;
    }
    std::memset(answer.m_sText, 0, sizeof answer.m_sText);
    std::memcpy(answer.m_sText, text.data(), length);
    return put(result, answer);
}

/// The queries that a board's facts answer; 0 for another.
inline int32_t answerFacts(const Board& board, uint32_t code, void* result) {
    switch (code) {
        case kADCGetMaxBuffer:
        case kADCGetMaxBufferOld:
            return put(result, board.maximumRing);
        case kADCGetSampleFormat:
            return put(result, board.format);
        case kADCGetCodeRange:
            return put(result, board.codes);
        case kADCGetGainList:
            return putList<ADCIntList>(result, board.gains);
        case kADCGetChannelCount:
            return put(result, board.channels);
        case kADCGetFrequencyList:
            return putList<ADCFloatList>(result, board.frequencies);
        case kADCGetFrequencyLimits: {
            const ADCFrequencyLimits limits = {board.minimumFrequency, board.maximumFrequency};
            return put(result, limits);
        }
        case kADCGetBoardModes:
            return put(result, board.modes);
        case kADCGetCutMode:
        case kADCGetExtendedBlock:
            return put(result, static_cast<uint32_t>(1));
        case kADCGetPerChannelFrequency:
            return put(result, static_cast<uint32_t>(board.perChannelFrequency));
        case kADCGetHotPlug:
            return put(result, static_cast<uint32_t>(board.hotPlug));
        case kADCGetHardwareAverage:
        case kADCGetPreHistory:
            return put(result, static_cast<uint32_t>(0));
        case kADCGetSynchronousChannels:
            return put(result, static_cast<uint32_t>(board.synchronousChannels));
        case kADCGetBoardFrequency:
            return put(result, board.usualFrequency);
        case kADCGetChannelName:
            return putChannelText(result, board, board.channelNames);
        case kADCGetChannelUnit:
            return putChannelText(result, board, board.channelUnits);
        default:
            return 0;
    }
}

}  // namespace sdk
}  // namespace tarno2

#endif  // TARNO2_DRIVER_ANSWERS_H
