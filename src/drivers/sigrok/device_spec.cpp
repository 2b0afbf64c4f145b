#include "drivers/sigrok/device_spec.h"

#include <algorithm>

namespace tarno2::drivers {

namespace {

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> parts;
    for (size_t begin = 0; begin <= text.size();) {
        const size_t end = std::min(text.find(separator, begin), text.size());
        parts.emplace_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return parts;
}

std::vector<std::string> words(std::string_view text) {
    std::vector<std::string> parts = split(text, ' ');
    std::erase(parts, "");
    return parts;
}

std::optional<KeyValue> keyValue(const std::string& text) {
    const size_t equals = text.find('=');
    if (equals == 0 || equals == std::string::npos) {
        return std::nullopt;
    }
    return KeyValue{.key = text.substr(0, equals), .value = text.substr(equals + 1)};
}

}  // namespace

std::optional<std::vector<DeviceSpec>> readDevices(std::string_view text) {
    std::vector<DeviceSpec> devices;
    for (const std::string& word : words(text)) {
        const std::vector<std::string> parts = split(word, ':');
        DeviceSpec device{.text = word, .driver = parts[0], .options = {}};
        for (size_t i = 1; i < parts.size(); ++i) {
            if (const std::optional<KeyValue> option = keyValue(parts[i])) {
                device.options.push_back(*option);
            } else if (device.options.empty()) {
                return std::nullopt;
            } else {
                device.options.back().value += ":" + parts[i];  // of a value: "conn=tcp-raw/host:5555"
            }
        }
        if (device.driver.empty()) {
            return std::nullopt;
        }
        devices.push_back(device);
    }
    return devices;
}

std::optional<std::vector<DeviceOption>> readOptions(std::string_view text) {
    std::vector<DeviceOption> options;
    for (const std::string& word : words(text)) {
        const size_t colon = word.find(':');
        const bool grouped = colon < word.find('=');
        const std::optional<KeyValue> option = keyValue(grouped ? word.substr(colon + 1) : word);
        if (!option.has_value()) {
            return std::nullopt;
        }
        options.push_back({.group = grouped ? word.substr(0, colon) : "", .option = *option});
    }
    return options;
}

}  // namespace tarno2::drivers
