#pragma once

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include <tarno2/IADCDevice.h>

#include "platform/event.h"
#include "platform/library.h"

namespace tarno2::test {

/// A driver library with one device of it, as a host holds them.
class LoadedDriver {
public:
    /// Loads the library and makes its device; `folder` is the program directory.
    LoadedDriver(const std::string& library, const std::string& folder);
    ~LoadedDriver();
    LoadedDriver(const LoadedDriver&) = delete;
    LoadedDriver& operator=(const LoadedDriver&) = delete;

    IADCDevice* operator->() const { return device_; }
    [[nodiscard]] IADCDevice* device() const { return device_; }
    [[nodiscard]] int32_t settingsTaken() const { return settingsTaken_; }
    [[nodiscard]] std::string lastError() const;
    [[nodiscard]] std::vector<std::string> boards() const;

    /// A query's answer; a failed expectation when there is none.
    template <typename T>
    T get(uint32_t code, T value = {}) const {
        EXPECT_EQ(device_->Get(code, &value), 1) << "code " << code;
        return value;
    }

private:
    Library library_;
    IADCDevice* device_ = nullptr;
    int32_t settingsTaken_ = 0;
};

/// What a measurement is to be like, and the parameter blocks for it.
struct Wish {
    std::vector<int32_t> channels{0};
    std::vector<int32_t> gains{1};
    float frequency = 1000.0F;
    int32_t ring = 64;
    int32_t startOf = kADCStartByProgram;
    int32_t control = 0;
    float packetFrequency = 0.0F;

    [[nodiscard]] static Wish firstChannels(int32_t count, float frequency, int32_t ring);
    [[nodiscard]] ADCParametersDMA base() const;
    /// Points into this object.
    [[nodiscard]] ADCParametersDMAEX extended();
};

/// Reads the ring in the way of a host: waits for the event, asks the count, fetches whole halves.
class RingReader {
public:
    /// Both blocks are checked, then applied; the ring's facts are asked for. `ok()` is false when one was refused.
    RingReader(const LoadedDriver& driver, Wish wish);

    [[nodiscard]] bool ok() const { return ok_; }
    [[nodiscard]] uint32_t ring() const { return ring_; }
    [[nodiscard]] const ADCParametersDMA& accepted() const { return base_; }
    [[nodiscard]] uint64_t written() const;
    [[nodiscard]] uint64_t position() const { return position_; }
    /// Waits for the event and resets it; how often it was set (at least 1 where that is not counted), 0 after 10 s.
    uint64_t waitForHalf();
    /// Fetches the next `samples` (all that lie in one stretch) and appends their bytes; GetData's result.
    int32_t fetch(uint32_t samples);
    /// Waits for and fetches halves until at least so many samples are there, or the stream ends, up to its last one;
    /// false when they do not come.
    bool record(uint64_t samples);

    /// The samples fetched so far, as 16- or 32-bit words.
    [[nodiscard]] std::vector<uint32_t> words() const;
    [[nodiscard]] const std::vector<uint8_t>& bytes() const { return bytes_; }

private:
    const LoadedDriver& driver_;
    ADCParametersDMA base_{};
    ADCSampleFormat format_{};
    Event event_;
    uint32_t ring_ = 0;
    uint64_t position_ = 0;
    std::vector<uint8_t> bytes_;
    bool ok_ = false;
};

}  // namespace tarno2::test
