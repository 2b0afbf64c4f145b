#pragma once

#include <optional>
#include <string>

#include "platform/library.h"

namespace tarno2 {

/// Where a library lies that the registry lists under a key, as the string "path"; nothing, with the reason, when the
/// entry is missing or no string. A relative path counts from the folder of the registry text that holds it.
[[nodiscard]] std::optional<std::string> registeredLibrary(const std::string& key, std::string& why);

/// Loads a library and has its factory make an object of an interface. On failure the result is null, nothing is loaded
/// and `why` says what is wrong; nothing that the factory throws gets through. Window thread.
[[nodiscard]] void* loadObject(Library& library, const std::string& path, const char* interfaceName, std::string& why);

}  // namespace tarno2
