#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarno2::drivers {

struct KeyValue {
    std::string key;
    std::string value;
};

/// A device as the tools of the library name it: "fx2lafw:conn=1.2".
struct DeviceSpec {
    std::string text;
    std::string driver;
    std::vector<KeyValue> options;
};
/// Devices, parted by blanks. Nothing when one of them is not to be understood.
[[nodiscard]] std::optional<std::vector<DeviceSpec>> readDevices(std::string_view text);

/// An option of a device, or of a group of its channels: "samplerate=1m", "Logic:pattern=incremental".
struct DeviceOption {
    std::string group;
    KeyValue option;
};
/// Options, parted by blanks. Nothing when one of them is not to be understood.
[[nodiscard]] std::optional<std::vector<DeviceOption>> readOptions(std::string_view text);

}  // namespace tarno2::drivers
