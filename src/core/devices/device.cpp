#include "core/devices/device.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <string_view>

#include "config/logs/debug_log.h"
#include "platform/codepage1251.h"
#include "records/channel_label.h"

namespace tarno2 {

namespace {

/// What the last call of this thread threw; empty when it returned.
thread_local std::array<char, 300> thrown{};

void noteThrown(const char* what) noexcept {
    std::snprintf(thrown.data(), thrown.size(), "the driver threw an exception%s%s", *what == '\0' ? "" : ": ", what);
    DEBUG_LOG("!!!!! %s", thrown.data());
}

// Calls the driver; whatever it throws counts as `failed`.
template <typename Call, typename Result>
Result guarded(IADCDevice* device, Result failed, Call call) noexcept {
    thrown.front() = '\0';
    if (device == nullptr) {
        return failed;
    }
    try {
        return call(*device);
    } catch (const std::exception& error) {
        noteThrown(error.what());
    } catch (...) {
        noteThrown("");
    }
    return failed;
}

// Asks a list twice: how long it is, then for its entries.
template <typename List, typename Entry, typename Ask>
std::vector<Entry> readList(Entry* List::*entries, Ask ask, uint32_t most = 100000) {
    List list{};
    if (!ask(list) || list.m_nCount == 0 || list.m_nCount > most) {
        return {};
    }
    std::vector<Entry> values(list.m_nCount);
    list.m_nCapacity = list.m_nCount;
    list.*entries = values.data();
    if (!ask(list)) {
        return {};
    }
    values.resize(std::min<size_t>(values.size(), list.m_nCount));
    return values;
}

}  // namespace

void Device::release() noexcept {
    guarded(device_, 0, [](IADCDevice& device) {
        device.Release();
        return 1;
    });
    device_ = nullptr;
}

bool Device::selectBoard(uint32_t number) noexcept {
    return guarded(device_, 0, [number](IADCDevice& device) { return device.SelectBoard(number); }) == 1;
}

int32_t Device::setup(int32_t apply, void* block) noexcept {
    return guarded(device_, 0, [apply, block](IADCDevice& device) { return device.Setup(apply, block, 0); });
}

bool Device::start() noexcept {
    return guarded(device_, 0, [](IADCDevice& device) { return device.Start(); }) == 1;
}

void Device::stop() noexcept {
    guarded(device_, 0, [](IADCDevice& device) {
        device.Stop();
        return 1;
    });
}

int32_t Device::getData(int32_t mode, void* destination, uint32_t count, uint32_t offset) noexcept {
    return guarded(device_, static_cast<int32_t>(kADCDataFailed),
                   [=](IADCDevice& device) { return device.GetData(mode, destination, count, offset); });
}

bool Device::setProgramDirectory(const std::string& folder) noexcept {
    return guarded(device_, 0, [&](IADCDevice& device) { return device.SetProgramDirectory(folder.c_str()); }) == 1;
}

std::string Device::lastError() noexcept {
    if (thrown.front() != '\0') {
        return thrown.data();
    }
    std::array<char, 1000> text{};
    const int32_t told = guarded(device_, 0, [&text](IADCDevice& device) {
        return device.LastError(text.data(), static_cast<uint32_t>(text.size()));
    });
    text.back() = '\0';
    return told == 1 ? std::string(text.data()) : std::string();
}

bool Device::query(uint32_t code, void* result) noexcept {
    return guarded(device_, 0, [code, result](IADCDevice& device) { return device.Get(code, result); }) == 1;
}

uint32_t Device::number(uint32_t code, uint32_t otherwise) noexcept {
    uint32_t value = otherwise;
    return get(code, value) ? value : otherwise;
}

std::string Device::channelText(uint32_t code, uint32_t channel) {
    ADCChannelText answer{static_cast<int32_t>(channel), {}};
    if (!get(code, answer)) {
        return {};
    }
    const std::string_view text(answer.m_sText, sizeof answer.m_sText);
    return usableLabelText(typedToUtf8(text.substr(0, text.find('\0'))));
}

bool Device::set(uint32_t code, const void* value) noexcept {
    return guarded(device_, 0, [code, value](IADCDevice& device) { return device.Set(code, value); }) == 1;
}

std::vector<ADCBoardEntry> Device::boards() {
    auto entries = readList<ADCBoardList, ADCBoardEntry>(
        &ADCBoardList::m_pEntries, [this](ADCBoardList& list) { return get(kADCGetBoardList, list); });
    for (ADCBoardEntry& entry : entries) {
        entry.m_sName[sizeof(entry.m_sName) - 1] = '\0';
    }
    return entries;
}

std::vector<ADCSetting> Device::settings() {
    constexpr uint32_t kMostSettings = 256;
    auto entries = readList<ADCSettingList, ADCSetting>(
        &ADCSettingList::m_pEntries, [this](ADCSettingList& list) { return get(kADCGetSettings, list); },
        kMostSettings);
    for (ADCSetting& entry : entries) {
        entry.m_sKey[sizeof(entry.m_sKey) - 1] = '\0';
        entry.m_sCaption[sizeof(entry.m_sCaption) - 1] = '\0';
        entry.m_sCaptionRu[sizeof(entry.m_sCaptionRu) - 1] = '\0';
        entry.m_sValue[sizeof(entry.m_sValue) - 1] = '\0';
        entry.m_sChoices[sizeof(entry.m_sChoices) - 1] = '\0';
        entry.m_sChoiceTexts[sizeof(entry.m_sChoiceTexts) - 1] = '\0';
    }
    return entries;
}

std::vector<float> Device::floats(uint32_t code) {
    return readList<ADCFloatList, float>(&ADCFloatList::m_pfValues,
                                         [this, code](ADCFloatList& list) { return get(code, list); });
}

std::vector<int32_t> Device::integers(uint32_t code) {
    return readList<ADCIntList, int32_t>(&ADCIntList::m_pnValues,
                                         [this, code](ADCIntList& list) { return get(code, list); });
}

}  // namespace tarno2
