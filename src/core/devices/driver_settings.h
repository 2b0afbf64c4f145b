#pragma once

#include <optional>
#include <string>
#include <vector>

#include "config/settings/driver_values.h"
#include "core/devices/device.h"

namespace tarno2 {

/// One thing that a driver wants to be told.
struct DriverSetting {
    enum class Type { Text, Integer, Real, Choice, File, Folder };

    std::string key;
    Type type = Type::Text;  ///< also of a type that this program does not know
    bool fixed = false;      ///< the environment decides
    bool free = false;       ///< of a choice: other values are taken too
    bool bounded = false;    ///< a number from `minimum` to `maximum`
    double minimum = 0.0;
    double maximum = 0.0;
    std::string caption;                   ///< UTF-8; the key when the driver has none
    std::string captionRussian;            ///< UTF-8; the English one when the driver has none
    std::string value;                     ///< in use now
    std::vector<std::string> choices;      ///< values of a choice; name patterns of a file
    std::vector<std::string> choiceTexts;  ///< what the user reads for each of them; as many

    friend bool operator==(const DriverSetting&, const DriverSetting&) = default;
};

/// What the driver wants to be told, in its order, as far as it can be used: an entry without a proper key, and another
/// one of the same key, are left out. Empty when the driver wants nothing.
[[nodiscard]] std::vector<DriverSetting> readDriverSettings(Device& device);

/// Why the driver does not take a value, in its words or ours; nothing when it took it.
[[nodiscard]] std::optional<std::string> tellDriver(Device& device, const DriverValue& value);

/// A value that a driver was to be told and was not.
struct DriverRefusal {
    enum class Kind {
        Refused,  ///< the driver does not take it
        Unknown,  ///< the driver wants no such thing
        Fixed     ///< the environment decides, and says something else
    };
    Kind kind = Kind::Refused;
    DriverValue value;
    std::string why;  ///< the driver's words; of a fixed one the value in use
};

/// Tells the driver all these values, in their order; returns those that did not reach it, each of them in the debug
/// log too.
[[nodiscard]] std::vector<DriverRefusal> tellDriver(Device& device, const std::vector<DriverValue>& values);

}  // namespace tarno2
