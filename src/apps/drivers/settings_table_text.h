#pragma once

#include <string>
#include <vector>

#include "core/devices/driver_settings.h"

namespace tarno2 {

/// What a driver wants to be told, as a table for people: a line a setting, further ones where its choices take them.
[[nodiscard]] std::string settingsTableText(const std::vector<DriverSetting>& settings);

}  // namespace tarno2
