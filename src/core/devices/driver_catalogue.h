#pragma once

#include <functional>
#include <optional>
#include <string>

namespace tarno2 {

/// The registry key that lists the drivers: one sub key a driver, named as the user sees it, with the value "path".
[[nodiscard]] std::string driverCatalogueKey();
/// The key of one driver.
[[nodiscard]] std::string driverKey(const std::string& name);

/// The key of the library that draws signals, with its value "path".
[[nodiscard]] std::string scoperKey();

/// Passes the name of every installed driver (at most 999 characters) to the callback, in the registry's order.
/// `capacity` is the room for a name with its closing zero; under 2 nothing is listed.
void EnumerateDrivers(const std::function<void(const std::string&)>& callback, size_t capacity = 1000);

/// Where a driver's library lies; nothing, with the reason, when its entry is missing or no string. A relative path
/// counts from the folder of the registry text that holds it.
[[nodiscard]] std::optional<std::string> driverLibraryPath(const std::string& name, std::string& why);

}  // namespace tarno2
