#include "tests/core/fake_device.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace tarno2::test {

namespace {

constexpr auto kPatience = std::chrono::seconds(30);

void putSample(std::byte* destination, uint64_t position, uint32_t width) {
    const auto value = static_cast<uint32_t>(position * 2654435761U + (position >> 32));
    if (width == 2) {
        const auto word = static_cast<uint16_t>(value >> 16);
        std::memcpy(destination, &word, sizeof word);
    } else {
        std::memcpy(destination, &value, sizeof value);
    }
}

}  // namespace

std::string streamBytes(uint64_t from, uint64_t count, uint32_t width) {
    std::string bytes(count * width, '\0');
    for (uint64_t i = 0; i < count; ++i) {
        putSample(reinterpret_cast<std::byte*>(bytes.data()) + i * width, from + i, width);
    }
    return bytes;
}

FakeDevice::FakeDevice() {
    numbers = {{kADCGetAbiVersion, kADCAbiVersion}, {kADCGetChannelCount, 160}, {kADCGetExtendedBlock, 1}};
}

void FakeDevice::note(const char* call, int64_t a, int64_t b, int64_t c) {
    if (!quiet) {
        std::string line = call;
        for (const int64_t value : {a, b, c}) {
            if (value >= 0) {
                line += ' ' + std::to_string(value);
            }
        }
        const std::lock_guard lock(mutex_);
        calls_.push_back(line);
        changed_.notify_all();
    }
    if (throwing == call) {
        throw std::runtime_error("thrown by the driver");
    }
}

bool FakeDevice::waitUntil(const std::function<bool()>& done) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, kPatience, done);
}

bool FakeDevice::waitForReads(uint64_t samples) {
    return waitUntil([&] { return read_ >= samples; });
}

bool FakeDevice::waitForCall(const std::string& begin) {
    return waitUntil([&] {
        return std::any_of(calls_.begin(), calls_.end(), [&](const auto& call) { return call.starts_with(begin); });
    });
}

uint64_t FakeDevice::samplesRead() {
    const std::lock_guard lock(mutex_);
    return read_;
}

uint32_t FakeDevice::ringSize() {
    const std::lock_guard lock(mutex_);
    return ringSize_;
}

std::vector<std::string> FakeDevice::calls() {
    const std::lock_guard lock(mutex_);
    return calls_;
}

size_t FakeDevice::countCalls(const std::string& begin) {
    const auto all = calls();
    return static_cast<size_t>(
        std::count_if(all.begin(), all.end(), [&](const auto& call) { return call.starts_with(begin); }));
}

std::vector<ADCParametersDMA> FakeDevice::dmaBlocks() {
    const std::lock_guard lock(mutex_);
    return dmaBlocks_;
}

void FakeDevice::produce(uint64_t samples) {
    const std::lock_guard lock(mutex_);
    produceLocked(samples);
}

void FakeDevice::produceLocked(uint64_t samples) {
    const uint64_t half = std::max<uint64_t>(ringSize_ / 2, 1);
    const uint64_t before = written_ / half;
    written_ += samples;
    for (uint64_t filled = before; filled < written_ / half; ++filled) {
        event_.set();
    }
    if (streamEnd && written_ >= readerPaced) {
        event_.set();
    }
}

int32_t FakeDevice::SelectBoard(uint32_t number) {
    note("SelectBoard", number);
    return 1;
}

int32_t FakeDevice::CloseBoard() {
    note("CloseBoard");
    return 1;
}

int32_t FakeDevice::Setup(int32_t apply, void* block, int32_t zero) {
    int32_t type = 0;
    std::memcpy(&type, block, sizeof type);
    note("Setup", apply, type);
    const std::lock_guard lock(mutex_);
    if (zero != 0) {
        calls_.emplace_back("Setup with a third argument");
    }
    if (type == kADCTypeDMAEX) {
        if (correctEx) {
            correctEx(apply, *static_cast<ADCParametersDMAEX*>(block));
        }
        return setupAnswers[apply][1];
    }
    auto& dma = *static_cast<ADCParametersDMA*>(block);
    dmaBlocks_.push_back(dma);
    if (apply == 1) {
        const auto asked = static_cast<uint32_t>(dma.m_nDMABlockSize);
        ringSize_ = ring ? ring(asked, ringsMade_) : asked;
        ++ringsMade_;
    }
    if (correctDma) {
        correctDma(apply, dma);
    }
    return setupAnswers[apply][0];
}

int32_t FakeDevice::Start() {
    if (whileStarting) {
        whileStarting();
    }
    {
        const std::lock_guard lock(mutex_);
        written_ = 0;
        if (startAnswer == 1) {
            produceLocked(std::max(atStart, std::min<uint64_t>(ringSize_ / 2, readerPaced)));
        }
    }
    note("Start");  // who waits for it may produce from now on
    return startAnswer;
}

int32_t FakeDevice::GetData(int32_t mode, void* destination, uint32_t count, uint32_t offset) {
    note("GetData", mode, count, offset);
    uint32_t number = 0;
    {
        const std::lock_guard lock(mutex_);
        number = reads_++;
        const bool portionEnded = mode == kADCDataPreHistory && number >= preHistoryReads;
        if (number == failingRead || portionEnded || uint64_t{offset} + count > ringSize_) {
            changed_.notify_all();
            return kADCDataFailed;
        }
        // Each place of the ring holds the newest sample that fell on it.
        for (uint32_t i = 0; i < count; ++i) {
            const uint64_t place = offset + i;
            const uint64_t turns = written_ > place ? (written_ - 1 - place) / ringSize_ : 0;
            putSample(static_cast<std::byte*>(destination) + uint64_t{i} * format.m_nBytes, turns * ringSize_ + place,
                      format.m_nBytes);
        }
        if (written_ < readerPaced) {
            produceLocked(std::min<uint64_t>(ringSize_ / 2, readerPaced - written_));
        }
    }
    if (afterRead) {
        afterRead(number);
    }
    const std::lock_guard lock(mutex_);
    read_ += count;
    changed_.notify_all();
    return 1;
}

int32_t FakeDevice::LastError(char* text, uint32_t size) {
    std::snprintf(text, size, "%s", error.c_str());
    return 1;
}

int32_t FakeDevice::Get(uint32_t code, void* result) {
    note("Get", code);
    if (afterGetCode) {
        afterGetCode(code);
    }
    const std::lock_guard lock(mutex_);
    switch (code) {
        case kADCGetSampleFormat:
            *static_cast<ADCSampleFormat*>(result) = format;
            return formatKnown ? 1 : 0;
        case kADCGetCodeRange:
            *static_cast<ADCCodeRange*>(result) = {-8192, 8191};
            return codeRangeKnown ? 1 : 0;
        case kADCGetInputRange:
            static_cast<ADCInputRange*>(result)->m_fRange = inputRange;
            return inputRange > 0 ? 1 : 0;
        case kADCGetInputLimits:
            if (inputLimits) {
                auto& limits = *static_cast<ADCInputLimits*>(result);
                limits.m_fLower = inputLimits->first / limits.m_nGain;
                limits.m_fUpper = inputLimits->second / limits.m_nGain;
            }
            return inputLimits ? 1 : 0;
        case kADCGetRing:
            return answerRing(*static_cast<ADCRingInfo*>(result));
        case kADCGetDrqList: {
            auto& list = *static_cast<ADCIntList*>(result);
            list.m_nCount = static_cast<uint32_t>(drqNumbers.size());
            std::copy_n(drqNumbers.begin(), std::min(list.m_nCapacity, list.m_nCount), list.m_pnValues);
            return drqNumbers.empty() ? 0 : 1;
        }
        case kADCGetSamplesWritten:
            *static_cast<uint64_t*>(result) =
                std::min(written_, countLag == 0 ? written_ : readerPaced - std::min(readerPaced, countLag));
            return tellsCount ? 1 : 0;
        case kADCGetStreamEnd:
            if (streamEnd) {
                *static_cast<ADCStreamEnd*>(result) = written_ >= readerPaced ? *streamEnd : ADCStreamEnd{};
            }
            return streamEnd ? 1 : 0;
        default:
            break;
    }
    const auto found = numbers.find(code);
    if (found == numbers.end()) {
        return answer ? answer(code, result) : 0;
    }
    std::memcpy(result, &found->second, sizeof found->second);
    return 1;
}

int32_t FakeDevice::Set(uint32_t code, const void* value) {
    note("Set", code);
    return code == kADCSetDrq && *static_cast<const int32_t*>(value) != drqNumbers.back() ? 1 : 0;
}

int32_t FakeDevice::answerRing(ADCRingInfo& info) {
    const uint32_t time = ringAnswers_++;
    if (time >= ringRefusedFrom) {
        return 0;
    }
    uint32_t told = ringSize_;
    if (restate && time > 0) {
        restate(told);
    }
    info = {told, 0, eventLost ? kNever : event_.number()};
    return 1;
}

int32_t FakeDevice::SetProgramDirectory(const char* folder) {
    note((std::string("SetProgramDirectory ") + folder).c_str());
    return settingsUsable ? 1 : 0;
}

}  // namespace tarno2::test
