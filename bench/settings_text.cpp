#include "bench/settings_text.h"

#include <array>
#include <cstdint>
#include <stdexcept>

namespace tarno2::bench {

namespace {

constexpr uint32_t kChannels = 160;

// Four values a line, as our own files have them.
std::string list(const std::string& key, bool gains) {
    std::string text = key + " = ";
    for (uint32_t i = 0; i < kChannels; ++i) {
        text += gains ? "1" : std::to_string(i);
        if (i + 1 < kChannels) {
            text += i % 4 == 3 ? " ,\\\r\n    " : " , ";
        }
    }
    return text + "\r\n\r\n";
}

}  // namespace

std::string settingsText(size_t bytes) {
    const std::string settings =
        std::string(";Recording of the test stand\r\n") + "DriverName = \"Simulator\"\r\n\r\n" +
        ";Number of the board in the driver's list\r\n" + "BaseNumber = 2\r\n\r\n" +
        "FileName = \"/data/stand 4/run.dat\"\r\n\r\n" + "ChannelCount = 160\r\n\r\n" + list("ChannelsNumber", false) +
        list("ChannelsGain", true) + ";Hz, all channels together\r\n" + "Frequency = 1000000.000000\r\n\r\n" +
        "MeasureFileMode = 2\r\n\r\n" + "SizeNeedHight = 0\r\n\r\n" + "SizeNeedLow = 512\r\n\r\n" +
        "SizeMode = 2\r\n\r\n" + "BoardMode = 0x00000000\r\n\r\n" + "Decimation = 1\r\n";
    std::string text;
    for (uint32_t i = 0; text.size() + settings.size() < bytes; ++i) {
        const std::string number = std::to_string(i);
        text += ";Remark " + number + "\r\nOtherEntry" + number + " = " + number + " , 0x0000FFFF\r\n\r\n";
    }
    return text + settings;
}

void lookUpSettings(const KeyValueFile& file) {
    std::string word;
    bool found = file.readString("DriverName", word, {}) && word == "Simulator";
    found = file.readString("FileName", word, {}) && !word.empty() && found;
    uint32_t bits = 0;
    for (const char* key : {"BaseNumber", "BoardMode"}) {
        found = file.readUInt32(key, bits, 1, true) && found;
    }
    for (const char* key : {"SizeNeedHight", "SizeNeedLow"}) {
        found = file.readUInt32(key, bits, 1) && found;
    }
    int32_t number = 0;
    for (const char* key : {"ChannelCount", "MeasureFileMode", "SizeMode", "Decimation"}) {
        found = file.readInt32(key, number, 0) && found;
    }
    double frequency = 0.0;
    found = file.readDouble("Frequency", frequency, 0.0) && frequency > 0.0 && found;
    for (const char* key : {"ChannelsNumber", "ChannelsGain"}) {
        std::array<int32_t, kChannels> values{};
        uint32_t count = 0;
        found = file.readInt32Array(key, values, count) && count == kChannels && found;
    }
    if (!found) {
        throw std::runtime_error("a setting is not as it was written");
    }
}

}  // namespace tarno2::bench
