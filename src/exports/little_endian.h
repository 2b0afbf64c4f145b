#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace tarno2 {

/// A number as so many bytes of a file, the lowest one first; any number of them.
inline std::string littleEndian(uint64_t value, size_t bytes) {
    std::string text;
    for (size_t i = 0; i < bytes; ++i, value >>= 8U) {
        text += static_cast<char>(static_cast<uint8_t>(value));
    }
    return text;
}

}  // namespace tarno2
