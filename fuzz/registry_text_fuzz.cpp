// Registry texts, by which drivers are installed.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/registry_text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // Two bytes of UTF-16 become three of UTF-8 at the most; everything else keeps its length.
    const auto fits = [size](const std::string& text) { return text.size() * 2 <= size * 3; };
    for (const auto& entry : tarno2::parseRegistryText({reinterpret_cast<const char*>(data), size})) {
        if (!fits(entry.key) || !fits(entry.name)) {
            std::abort();
        }
    }
    return 0;
}
