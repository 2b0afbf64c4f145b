#pragma once

#include <cstdint>
#include <windows.h>

namespace tarno2 {

/// The system's own handle, kept in portable headers as a number.
inline HANDLE nativeHandle(intptr_t handle) {
    return reinterpret_cast<HANDLE>(handle);
}

}  // namespace tarno2
