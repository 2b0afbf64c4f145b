#pragma once

#include <cstring>

#include <tarno2/IADCDevice.h>

namespace tarno2::drivers {

/// What a driver's `StaticFactory` returns: a new `DeviceType` as the device interface; null for another interface or
/// when it can't be made. The caller owns it through its `Release`.
template <typename DeviceType>
void* makeDevice(const char* interfaceName) noexcept {
    if (interfaceName == nullptr || std::strcmp(interfaceName, TARNO2_DEVICE_INTERFACE) != 0) {
        return nullptr;
    }
    try {
        return static_cast<IADCDevice*>(new DeviceType);
    } catch (...) {
        return nullptr;
    }
}

}  // namespace tarno2::drivers
