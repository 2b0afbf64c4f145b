// Registry texts, by which drivers are installed.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/registry_text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    for (const auto& entry : tarno2::parseRegistryText({reinterpret_cast<const char*>(data), size})) {
        if (entry.key.size() > size || entry.name.size() > size) {
            std::abort();
        }
    }
    return 0;
}
