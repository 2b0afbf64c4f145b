// Key/value texts: descriptions of recordings and autosettings.

#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "records/key_value_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tarno2::KeyValueFile file;
    file.readText(std::string_view(reinterpret_cast<const char*>(data), size));
    for (const char* key : {"K", "ChannelsNumber", "FileName", ""}) {
        int32_t integer = 0;
        uint32_t unsignedInteger = 0;
        uint64_t large = 0;
        double real = 0.0;
        std::string text;
        std::array<int32_t, 3> integers{};
        std::array<double, 3> reals{};
        uint32_t count = 0;
        for (const bool hex : {false, true}) {
            if (!file.readInt32(key, integer, 7, hex) && integer != 7) {
                std::abort();
            }
            file.readUInt32(key, unsignedInteger, 0, hex);
            file.readInt32Array(key, integers, count, hex);
        }
        file.readUInt64(key, large, 0);
        file.readDouble(key, real, 0.0);
        file.readString(key, text, {});
        file.readDoubleArray(key, reals, count);
    }
    return 0;
}
