#include "tests/drivers/driver_rig.h"

#include <cstring>

namespace tarno2::test {

LoadedDriver::LoadedDriver(const std::string& library, const std::string& folder) {
    std::string error;
    if (!library_.load(library, error)) {
        ADD_FAILURE() << library << ": " << error;
        return;
    }
    const auto factory = reinterpret_cast<ADCStaticFactory>(library_.symbol(TARNO2_FACTORY_NAME));
    device_ = factory == nullptr ? nullptr : static_cast<IADCDevice*>(factory(TARNO2_DEVICE_INTERFACE, 0));
    EXPECT_NE(device_, nullptr) << library;
    if (device_ != nullptr) {
        settingsTaken_ = device_->SetProgramDirectory(folder.c_str());
    }
}

LoadedDriver::~LoadedDriver() {
    if (device_ != nullptr) {
        device_->Release();
    }
}

std::string LoadedDriver::lastError() const {
    char text[256] = "untouched";
    device_->LastError(text, sizeof text);
    return text;
}

std::vector<std::string> LoadedDriver::boards() const {
    ADCBoardEntry entries[8] = {};
    ADCBoardList list{8, 0, entries};
    EXPECT_EQ(device_->Get(kADCGetBoardList, &list), 1);
    std::vector<std::string> names;
    for (uint32_t i = 0; i < list.m_nCount; ++i) {
        EXPECT_EQ(uint32_t{entries[i].m_nNumber}, i + 1);
        names.emplace_back(entries[i].m_sName);
    }
    return names;
}

Wish Wish::firstChannels(int32_t count, float frequency, int32_t ring) {
    Wish wish;
    wish.channels.clear();
    for (int32_t i = 0; i < count; ++i) {
        wish.channels.push_back(i);
    }
    wish.gains.assign(static_cast<size_t>(count), 1);
    wish.frequency = frequency;
    wish.ring = ring;
    return wish;
}

ADCParametersDMA Wish::base() const {
    ADCParametersDMA block{};
    block.m_nType = kADCTypeDMA;
    block.m_nSizeOf = sizeof block;
    block.m_nStartOf = startOf | kADCStartRing;
    block.m_nIntOf = -1;
    block.m_nDMABlockSize = ring;
    block.m_nDMAMode = 0x1000000;
    block.m_fFreqStart = frequency;
    block.m_fFreqPack = packetFrequency;
    block.m_nTimerPack = packetFrequency > 0.0F ? 1 : -1;
    block.m_nFirstChannel = channels.front();
    block.m_nChannelNumber = static_cast<int32_t>(channels.size());
    block.m_nGain = gains.front();
    return block;
}

ADCParametersDMAEX Wish::extended() {
    ADCParametersDMAEX block{};
    block.m_nType = kADCTypeDMAEX;
    block.m_nSizeOf = sizeof block;
    block.m_pnGains = gains.data();
    block.m_pnChannels = channels.data();
    block.m_nSize = static_cast<int32_t>(channels.size());
    block.m_nControl = control;
    return block;
}

RingReader::RingReader(const LoadedDriver& driver, Wish wish)
    : driver_(driver), base_(wish.base()), event_(Event::wrap(0)) {
    uint32_t takesExtended = 0;
    driver->Get(kADCGetExtendedBlock, &takesExtended);
    for (const int32_t apply : {0, 1}) {
        if (driver->Setup(apply, &base_, 0) != 1) {
            return;
        }
        ADCParametersDMAEX extended = wish.extended();
        if (takesExtended == 1 && driver->Setup(apply, &extended, 0) != 1) {
            return;
        }
        wish.control &= ~kADCControlExternalStart;
    }
    ADCRingInfo info{};
    info.m_nReserved = 99;
    if (driver->Get(kADCGetRing, &info) != 1) {
        return;
    }
    EXPECT_EQ(info.m_nReserved, 0);
    ring_ = info.m_nRingSize;
    event_ = Event::wrap(info.m_hDataEvent);
    format_ = driver.get<ADCSampleFormat>(kADCGetSampleFormat);
    ok_ = true;
}

uint64_t RingReader::written() const {
    return driver_.get<uint64_t>(kADCGetSamplesWritten);
}

uint64_t RingReader::waitForHalf() {
    return event_.wait(10000) == WaitResult::Signalled ? event_.reset() : 0;
}

int32_t RingReader::fetch(uint32_t samples) {
    const size_t before = bytes_.size();
    bytes_.resize(before + size_t{samples} * format_.m_nBytes);
    const int32_t mode = format_.m_nBytes == 2 ? kADCDataShort : kADCDataLong;
    const int32_t result =
        driver_->GetData(mode, bytes_.data() + before, samples, static_cast<uint32_t>(position_ % ring_));
    if (result == kADCDataFailed) {
        bytes_.resize(before);
    } else {
        position_ += samples;
    }
    return result;
}

bool RingReader::record(uint64_t samples) {
    const uint32_t half = ring_ / 2;
    while (position_ < samples) {
        const auto end = driver_.get<ADCStreamEnd>(kADCGetStreamEnd);
        if (end.m_nCause != kADCEndNone && end.m_nPosition - position_ < half) {
            const auto rest = static_cast<uint32_t>(end.m_nPosition - position_);
            return rest > 0 && fetch(rest) != kADCDataFailed && position_ >= samples;
        }
        if (written() - position_ < half && waitForHalf() == 0) {
            return false;
        }
        while (written() - position_ >= half && position_ < samples) {
            if (fetch(half) == kADCDataFailed) {
                return false;
            }
        }
    }
    return true;
}

std::vector<uint32_t> RingReader::words() const {
    std::vector<uint32_t> words(bytes_.size() / format_.m_nBytes);
    for (size_t i = 0; i < words.size(); ++i) {
        std::memcpy(&words[i], bytes_.data() + i * format_.m_nBytes, format_.m_nBytes);
    }
    return words;
}

}  // namespace tarno2::test
