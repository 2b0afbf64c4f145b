// SPDX-License-Identifier: MIT

#ifndef TARNO2_DRIVER_FACTORY_H
#define TARNO2_DRIVER_FACTORY_H

#include <cstring>
#include <stdint.h>

#include <tarno2/IADCDevice.h>

namespace tarno2 {
namespace sdk {

/// What `StaticFactory` returns: a new `DriverType`; null for another interface or when it can't be made.
template <typename DriverType>
void* makeDevice(const char* interfaceName) noexcept {
    if (interfaceName == nullptr || std::strcmp(interfaceName, TARNO2_DEVICE_INTERFACE) != 0) {
        return nullptr;
    }
    try {
        return static_cast<IADCDevice*>(new DriverType);
    } catch (...) {
        return nullptr;
    }
}

}  // namespace sdk
}  // namespace tarno2

/// The library's export, for a driver with a constructor without arguments. Outside every namespace.
#define TARNO2_DRIVER(DriverType)                                                             \
    TARNO2_EXPORT void* TARNO2_CALL StaticFactory(const char* interfaceName, uint32_t flags); \
    TARNO2_EXPORT void* TARNO2_CALL StaticFactory(const char* interfaceName, uint32_t) {      \
        return ::tarno2::sdk::makeDevice<DriverType>(interfaceName);                          \
    }

#endif  // TARNO2_DRIVER_FACTORY_H
