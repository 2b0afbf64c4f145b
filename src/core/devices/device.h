#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <tarno2/IADCDevice.h>

namespace tarno2 {

/// A driver's device object, called so that nothing it throws gets through: a call that throws has failed.
/// Does not own the object. Which thread may call is the interface's matter.
class Device {
public:
    Device() = default;
    explicit Device(IADCDevice* device) : device_(device) {}

    [[nodiscard]] bool present() const { return device_ != nullptr; }

    void release() noexcept;
    [[nodiscard]] bool selectBoard(uint32_t number) noexcept;
    /// The driver's answer, 0 when it threw.
    [[nodiscard]] int32_t setup(int32_t apply, void* block) noexcept;
    [[nodiscard]] bool start() noexcept;
    void stop() noexcept;
    /// The driver's answer, kADCDataFailed when it threw.
    [[nodiscard]] int32_t getData(int32_t mode, void* destination, uint32_t count, uint32_t offset) noexcept;
    [[nodiscard]] bool setProgramDirectory(const std::string& folder) noexcept;
    /// Why this thread's last call failed: what it threw, or the driver's words.
    [[nodiscard]] std::string lastError() noexcept;

    template <typename Result>
    [[nodiscard]] bool get(uint32_t code, Result& result) noexcept {
        return query(code, &result);
    }
    /// A uint32_t answer, or `otherwise` when the driver has none.
    [[nodiscard]] uint32_t number(uint32_t code, uint32_t otherwise) noexcept;
    /// A name or unit of a channel (kADCGetChannelName, kADCGetChannelUnit), in UTF-8; empty when the driver has none.
    [[nodiscard]] std::string channelText(uint32_t code, uint32_t channel);
    [[nodiscard]] bool set(uint32_t code, const void* value) noexcept;

    // Texts in the entries of lists are ended, however the driver left them.
    [[nodiscard]] std::vector<ADCBoardEntry> boards();
    [[nodiscard]] std::vector<ADCSetting> settings();
    [[nodiscard]] std::vector<float> floats(uint32_t code);
    [[nodiscard]] std::vector<int32_t> integers(uint32_t code);

private:
    [[nodiscard]] bool query(uint32_t code, void* result) noexcept;

    IADCDevice* device_ = nullptr;
};

}  // namespace tarno2
