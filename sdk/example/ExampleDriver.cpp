// SPDX-License-Identifier: MIT
//
// A complete board driver in one file: a "board" of four channels whose samples are a slow ramp, 1000 codes apart from
// channel to channel. Copy it, put your board in the place of `fillFrames`, and keep the rest.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <thread>
#include <vector>

#include <tarno2/IADCDevice.h>

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/eventfd.h>
#include <unistd.h>
#endif

namespace {

const int32_t kChannels = 4;
const float kSlowest = 10.0F;  // Hz, all channels together
const float kFastest = 1000000.0F;
const int32_t kLargestRing = 1 << 20;  // samples

// The event that tells the host of another full half.
class DataEvent {
public:
#ifdef _WIN32
    DataEvent() : handle_(CreateEventA(nullptr, TRUE, FALSE, nullptr)) {}
    ~DataEvent() {
        CloseHandle(handle_);
    }
    bool valid() const {
        return handle_ != nullptr;
    }
    void set() {
        SetEvent(handle_);
    }
    // Handles have 32 significant bits, also in 64-bit programs.
    uint32_t number() const {
        return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(handle_));
    }

private:
    HANDLE handle_;
#else
    DataEvent() : descriptor_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}
    ~DataEvent() {
        close(descriptor_);
    }
    bool valid() const {
        return descriptor_ >= 0;
    }
    void set() {
        const uint64_t one = 1;
        const ssize_t written = write(descriptor_, &one, sizeof one);
        static_cast<void>(written);
    }
    uint32_t number() const {
        return static_cast<uint32_t>(descriptor_);
    }

private:
    int descriptor_;
#endif
    DataEvent(const DataEvent&);
    DataEvent& operator=(const DataEvent&);
};

template <typename T>
int32_t put(void* result, const T& value) {
    std::memcpy(result, &value, sizeof value);
    return 1;
}

class ExampleDevice : public IADCDevice {
public:
    ExampleDevice() : selected_(false), frequency_(0), ringSize_(0), stop_(false), written_(0) { error_[0] = 0; }

    void* TARNO2_CALL QueryInterface(const char*) override { return nullptr; }
    void TARNO2_CALL Release() override {
        Stop();
        delete this;
    }

    int32_t TARNO2_CALL SelectBoard(uint32_t number) override {
        selected_ = number == 1;
        return selected_ ? 1 : fail("There is only board 1.");
    }
    int32_t TARNO2_CALL CloseBoard() override {
        Stop();
        selected_ = false;
        return 1;
    }

    int32_t TARNO2_CALL Setup(int32_t apply, void* block, int32_t) override {
        if (!selected_ || block == nullptr || thread_.joinable()) {
            return fail("No board is chosen, or it is running.");
        }
        int32_t type;
        std::memcpy(&type, block, sizeof type);
        if (type == kADCTypeDMA) {
            return setupBase(apply != 0, *static_cast<ADCParametersDMA*>(block));
        }
        if (type == kADCTypeDMAEX) {
            return setupExtended(apply != 0, *static_cast<ADCParametersDMAEX*>(block));
        }
        return fail("Unknown parameter block.");
    }

    int32_t TARNO2_CALL Start() override {
        if (ringSize_ == 0 || thread_.joinable() || !dataEvent_.valid()) {
            return fail("The board was not set up, or it is running.");
        }
        stop_ = false;
        written_ = 0;
        try {
            thread_ = std::thread(&ExampleDevice::run, this);
        } catch (const std::exception& e) {  // no exception may leave the library
            return fail(e.what());
        }
        return 1;
    }

    void TARNO2_CALL Stop() override {
        stop_ = true;
        if (thread_.joinable()) {
            thread_.join();
        }
    }

    int32_t TARNO2_CALL GetData(int32_t mode, void* destination, uint32_t count, uint32_t offset) override {
        if (mode != kADCDataShort || destination == nullptr || offset > ringSize_ || count > ringSize_ - offset) {
            fail("The transfer is not inside the ring.");
            return kADCDataFailed;
        }
        const std::lock_guard<std::mutex> lock(ringMutex_);
        std::memcpy(destination, ring_.data() + offset, count * sizeof(int16_t));
        return 1;
    }

    int32_t TARNO2_CALL LastError(char* text, uint32_t size) override {
        if (text == nullptr || size == 0) {
            return 0;
        }
        std::snprintf(text, size, "%s", error_);
        return error_[0] != 0 ? 1 : 0;
    }

    int32_t TARNO2_CALL Get(uint32_t code, void* result) override;
    int32_t TARNO2_CALL Set(uint32_t, const void*) override { return 0; }
    int32_t TARNO2_CALL ReadPort(uint32_t*) override { return 0; }
    int32_t TARNO2_CALL WritePort(uint32_t) override { return 0; }
    int32_t TARNO2_CALL WriteAnalog(uint32_t, float) override { return 0; }
    int32_t TARNO2_CALL SetProgramDirectory(const char*) override { return 1; }

private:
    virtual ~ExampleDevice() {}

    int32_t fail(const char* text) {
        std::snprintf(error_, sizeof error_, "%s", text);
        return 0;
    }

    int32_t setupBase(bool apply, ADCParametersDMA& block) {
        if (block.m_nSizeOf != static_cast<int32_t>(sizeof block) || block.m_nChannelNumber < 1 ||
            block.m_nChannelNumber > kChannels || !(block.m_fFreqStart > 0)) {
            return fail("The base block asks for what the board can't do.");
        }
        block.m_fFreqStart = std::min(std::max(+block.m_fFreqStart, kSlowest), kFastest);
        // Whole frames in each half: up to the next multiple of 2 x channels, or down from the largest ring.
        const int32_t step = 2 * block.m_nChannelNumber;
        const int32_t wish = std::min(std::max(+block.m_nDMABlockSize, 1), kLargestRing);
        const int32_t ring = (wish + step - 1) / step * step;
        block.m_nDMABlockSize = ring <= kLargestRing ? ring : kLargestRing / step * step;
        if (!apply) {
            return 1;
        }
        try {
            ring_.assign(static_cast<size_t>(block.m_nDMABlockSize), 0);
            channels_.clear();
            for (int32_t i = 0; i < block.m_nChannelNumber; ++i) {
                channels_.push_back((block.m_nFirstChannel + i) & (kChannels - 1));
            }
        } catch (const std::exception& e) {
            return fail(e.what());
        }
        ringSize_ = static_cast<uint32_t>(block.m_nDMABlockSize);
        frequency_ = block.m_fFreqStart;
        return 1;
    }

    int32_t setupExtended(bool apply, const ADCParametersDMAEX& block) {
        if (block.m_nSizeOf != static_cast<int32_t>(sizeof block) || block.m_nSize < 1 || block.m_nSize > kChannels ||
            block.m_pnChannels == nullptr || block.m_nControl != 0) {
            return fail("The extended block asks for what the board can't do.");
        }
        for (int32_t i = 0; i < block.m_nSize; ++i) {
            if (block.m_pnChannels[i] < 0 || block.m_pnChannels[i] >= kChannels) {
                return fail("The board has no such channel.");
            }
        }
        if (apply && static_cast<size_t>(block.m_nSize) != channels_.size()) {
            return fail("The two blocks differ in the count of channels.");
        }
        if (apply) {
            std::copy(block.m_pnChannels, block.m_pnChannels + block.m_nSize, channels_.begin());
        }
        return 1;
    }

    // The board itself: sample words of so many frames, counted from the start of the measurement.
    void fillFrames(uint64_t first, int16_t* out, uint64_t frames) const {
        for (uint64_t frame = first; frame < first + frames; ++frame) {
            for (size_t i = 0; i < channels_.size(); ++i) {
                *out++ = static_cast<int16_t>(frame % 1000 + static_cast<uint64_t>(channels_[i]) * 1000);
            }
        }
    }

    void run() {
        typedef std::chrono::steady_clock Clock;
        const Clock::time_point begin = Clock::now();
        const uint64_t channels = channels_.size();
        const uint64_t half = ringSize_ / 2;
        uint64_t position = 0;  // samples since the start
        while (!stop_) {
            const double elapsed = std::chrono::duration<double>(Clock::now() - begin).count();
            const uint64_t due = static_cast<uint64_t>(elapsed * frequency_ / static_cast<double>(channels)) * channels;
            while (position < due && !stop_) {
                const uint64_t part = std::min(due - position, half - position % half);
                const std::lock_guard<std::mutex> lock(ringMutex_);
                fillFrames(position / channels, ring_.data() + position % ringSize_, part / channels);
                position += part;
                written_ = position;
                if (position % half == 0) {
                    dataEvent_.set();
                }
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }

    bool selected_;
    double frequency_;
    uint32_t ringSize_;
    std::vector<int16_t> ring_;
    std::vector<int32_t> channels_;
    std::mutex ringMutex_;
    DataEvent dataEvent_;
    std::thread thread_;
    std::atomic<bool> stop_;
    std::atomic<uint64_t> written_;
    char error_[128];
};

/// The one board that there is, in a list with room for as many as the host has made.
int32_t listBoards(void* result) {
    ADCBoardList list;
    std::memcpy(&list, result, sizeof list);
    list.m_nCount = 1;
    if (list.m_nCapacity > 0 && list.m_pEntries != nullptr) {
        list.m_pEntries[0].m_nNumber = 1;
        std::snprintf(list.m_pEntries[0].m_sName, sizeof list.m_pEntries[0].m_sName, "001 Example (4 channels)");
    }
    return put(result, list);
}

int32_t ExampleDevice::Get(uint32_t code, void* result) {
    if (result == nullptr) {
        return 0;
    }
    switch (code) {
        case kADCGetAbiVersion:
            return put(result, kADCAbiVersion);
        case kADCGetBoardList:
            return listBoards(result);
        case kADCGetSampleFormat: {
            ADCSampleFormat format = {};
            format.m_nBytes = 2;
            format.m_nCodeBits = 16;
            format.m_nCodeMask = 0xFFFF;
            format.m_nSignedCodes = 1;
            return put(result, format);
        }
        case kADCGetCodeRange: {
            const ADCCodeRange range = {-32768, 32767};
            return put(result, range);
        }
        case kADCGetInputRange: {
            ADCInputRange range;
            std::memcpy(&range, result, sizeof range);
            range.m_fRange = 10.0F;
            return put(result, range);
        }
        case kADCGetChannelCount:
            return put(result, static_cast<uint32_t>(kChannels));
        case kADCGetFrequencyLimits: {
            const ADCFrequencyLimits limits = {kSlowest, kFastest};
            return put(result, limits);
        }
        case kADCGetBoardFrequency:
            return put(result, 10000.0F);
        case kADCGetMaxBuffer:
            return put(result, static_cast<uint32_t>(kLargestRing));
        case kADCGetExtendedBlock:
            return put(result, static_cast<uint32_t>(1));
        case kADCGetSamplesWritten:
            return put(result, static_cast<uint64_t>(written_));
        case kADCGetRing: {
            if (ringSize_ == 0) {
                return 0;
            }
            ADCRingInfo info = {};
            info.m_nRingSize = ringSize_;
            info.m_hDataEvent = dataEvent_.number();
            return put(result, info);
        }
        default:  // every other code: the board has no answer
            return 0;
    }
}

}  // namespace

TARNO2_EXPORT void* TARNO2_CALL StaticFactory(const char* interfaceName, uint32_t flags);

TARNO2_EXPORT void* TARNO2_CALL StaticFactory(const char* interfaceName, uint32_t) {
    if (interfaceName == nullptr || std::strcmp(interfaceName, TARNO2_DEVICE_INTERFACE) != 0) {
        return nullptr;
    }
    try {
        return static_cast<IADCDevice*>(new ExampleDevice);
    } catch (...) {
        return nullptr;
    }
}
