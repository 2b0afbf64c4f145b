// Settings texts: every way to look a key up, and the program's settings from them.

#include <array>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "config/settings/config_work.h"
#include "config/settings/settings_file.h"

namespace {

using namespace tarno2;

template <typename Config>
void readAll(std::string_view text) {
    Config config;
    config.loadText(text);
    for (const char* key : {"K", "List", "DebugMode", ""}) {
        std::string value;
        uint8_t byte = 0;
        int16_t word = 0;
        int32_t integer = 0;
        float single = 0.0F;
        double real = 0.0;
        std::array<char, 3> room{};
        std::array<int8_t, 5> bytes{};
        std::array<double, 20> reals{};
        std::array<std::string, 3> texts;
        config.GetString(key, room);
        config.GetStringCopy(key, value);
        config.GetUInt8(key, byte);
        config.GetInt16(key, word);
        config.GetInt32(key, integer);
        config.GetFloat(key, single);
        config.GetDouble(key, real);
        config.GetInt8Array(key, bytes);
        config.GetDoubleArray(key, reals);
        config.GetStringArrayCopy(key, texts);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    readAll<CConfigWork>(text);
    readAll<LineConfigReader>(text);
    LineConfigReader file;
    file.loadText(text);
    ProgramSettings settings;
    readSettings(file, settings);
    const SynchroSizes& sizes = settings.wish.synchroSizes;
    if (sizes.prehistory < 0 || sizes.history < 0 || settings.frequencyList.size() > 1000 ||
        settings.wish.base > 0x7FFFFFFF) {
        std::abort();
    }
    return 0;
}
