// What a host asks about board and ring.

#include <algorithm>
#include <cstring>

#include "drivers/common/ring_device.h"

namespace tarno2::drivers {

namespace {

/// Queries and blocks are packed and may lie anywhere, so they are copied, not dereferenced.
template <typename T>
int32_t put(void* result, const T& value) {
    std::memcpy(result, &value, sizeof value);
    return 1;
}

int32_t* valuesOf(const ADCIntList& list) {
    return list.m_pnValues;
}

float* valuesOf(const ADCFloatList& list) {
    return list.m_pfValues;
}

template <typename List, typename Value>
int32_t putList(void* result, const std::vector<Value>& values) {
    if (values.empty()) {
        return 0;
    }
    List list{};
    std::memcpy(&list, result, sizeof list);
    list.m_nCount = static_cast<uint32_t>(values.size());
    if (valuesOf(list) != nullptr) {
        std::copy_n(values.begin(), std::min<size_t>(list.m_nCapacity, values.size()), valuesOf(list));
    }
    return put(result, list);
}

}  // namespace

int32_t RingDevice::Get(uint32_t code, void* result) noexcept {
    if (result == nullptr) {
        return 0;
    }
    if (code == kADCGetAbiVersion) {
        return put(result, kADCAbiVersion);
    }
    if (code == kADCGetSamplesWritten) {  // asked around every transfer, so without the lock
        return put(result, producer_.samplesWritten());
    }
    return guarded([&] { return answer(code, result); });
}

int32_t RingDevice::answer(uint32_t code, void* result) {
    if (code == kADCGetBoardList) {
        return answerBoardList(result);
    }
    if (board_ == nullptr) {
        return 0;
    }
    if (code == kADCGetRing) {
        return answerRing(result);
    }
    return answerForBoard(code, result);
}

int32_t RingDevice::answerForBoard(uint32_t code, void* result) {
    switch (code) {
        case kADCGetMaxBuffer:
        case kADCGetMaxBufferOld:
            return put(result, board_->maximumRing);
        case kADCGetHotPlugPresence:
            return board_->hotPlug ? put(result, uint32_t{1}) : 0;
        case kADCGetSampleFormat:
            return put(result, board_->format);
        case kADCGetCodeRange:
            return put(result, board_->codes);
        case kADCGetInputRange: {
            ADCInputRange range{};
            std::memcpy(&range, result, sizeof range);
            if (range.m_nChannel < 0 || range.m_nChannel >= static_cast<int32_t>(board_->channels)) {
                return fail("The board has no channel %d.", range.m_nChannel);
            }
            range.m_fRange = board_->channelRanges.empty()
                                 ? board_->range
                                 : board_->channelRanges[static_cast<size_t>(range.m_nChannel)];
            return put(result, range);
        }
        case kADCGetGainList:
            return putList<ADCIntList>(result, board_->gains);
        case kADCGetChannelCount:
            return put(result, board_->channels);
        case kADCGetFrequencyList:
            return putList<ADCFloatList>(result, board_->frequencies);
        case kADCGetFrequencyLimits:
            return put(result, ADCFrequencyLimits{board_->minimumFrequency, board_->maximumFrequency});
        case kADCGetBoardModes:
            return put(result, board_->modes);
        case kADCGetCutMode:
        case kADCGetExtendedBlock:
            return put(result, uint32_t{1});
        case kADCGetHotPlug:
            return put(result, uint32_t{board_->hotPlug});
        case kADCGetPerChannelFrequency:
        case kADCGetHardwareAverage:
        case kADCGetPreHistory:
            return put(result, uint32_t{0});
        case kADCGetSynchronousChannels:
            return put(result, uint32_t{1});
        case kADCGetBoardFrequency:
            return put(result, board_->usualFrequency);
        default:
            return 0;
    }
}

int32_t RingDevice::answerBoardList(void* result) {
    ADCBoardList list{};
    std::memcpy(&list, result, sizeof list);
    list.m_nCount = static_cast<uint32_t>(boards_.size());
    if (list.m_pEntries != nullptr) {
        for (uint32_t i = 0; i < list.m_nCapacity && i < list.m_nCount; ++i) {
            ADCBoardEntry& entry = list.m_pEntries[i];
            entry.m_nNumber = i + 1;
            std::snprintf(entry.m_sName, sizeof entry.m_sName, "%03X %s", i + 1, boards_[i].name.c_str());
        }
    }
    return put(result, list);
}

int32_t RingDevice::answerRing(void* result) {
    if (!configured_) {
        return fail("The board was not set up.");
    }
    ADCRingInfo info{};
    info.m_nRingSize = producer_.ringSamples();
    info.m_hDataEvent = producer_.dataEvent().number();
    return put(result, info);
}

}  // namespace tarno2::drivers
