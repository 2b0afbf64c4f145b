#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "drivers/simulator/counter_signal.h"

namespace tarno2::test {

/// The counter signal as a device sends it: samples from `first` on, little-endian, in words of 2 or 4 bytes.
inline std::string counterBytes(uint64_t first, size_t samples, uint32_t bytes) {
    std::string text(samples * bytes, '\0');
    for (size_t i = 0; i < samples; ++i) {
        const uint32_t word = drivers::counterWord(first + i, 8 * bytes);
        for (uint32_t byte = 0; byte < bytes; ++byte) {
            text[i * bytes + byte] = static_cast<char>(word >> (8 * byte));
        }
    }
    return text;
}

/// The same, as the words that a driver hands over.
inline std::vector<uint32_t> counterWords(uint64_t first, size_t samples, uint32_t bits = 16) {
    std::vector<uint32_t> words(samples);
    for (size_t i = 0; i < samples; ++i) {
        words[i] = drivers::counterWord(first + i, bits);
    }
    return words;
}

}  // namespace tarno2::test
