#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/registry_text.h"

namespace tarno2 {

/// What one registry text holds; its folder is noted in each value. Nothing when it can't be read.
[[nodiscard]] std::vector<RegistryTextEntry> readRegistryFile(const std::string& folder, const std::string& name);
/// The names of the registry texts (`*.reg`) in a folder, in order.
[[nodiscard]] std::vector<std::string> registryFiles(const std::string& folder);
/// What all registry texts of the folders hold, in their order.
[[nodiscard]] std::vector<RegistryTextEntry> readRegistryFolders(const std::vector<std::string>& folders);

/// Adds the names of a key's sub keys that `names` hasn't yet, in the order in which they first appear.
void appendSubKeys(const std::vector<RegistryTextEntry>& entries, RegistryRoot root, const std::string& key,
                   std::vector<std::string>& names);
/// The first value of that name in that key.
[[nodiscard]] std::optional<RegistryValue> findRegistryValue(const std::vector<RegistryTextEntry>& entries,
                                                             RegistryRoot root, const std::string& key,
                                                             const std::string& name);
/// Of these names the one with that index, as `registrySubKey` returns it.
[[nodiscard]] std::optional<std::string> nameAt(const std::vector<std::string>& names, int index, size_t capacity);

/// "HKEY_LOCAL_MACHINE", "HKEY_CURRENT_USER".
[[nodiscard]] const char* registryRootName(RegistryRoot root);
/// One key with its values as a registry text that every registry editor reads (UTF-16 when it is not plain ASCII).
/// Nothing when a name or string holds control characters, which such texts can't express.
[[nodiscard]] std::optional<std::string> formatRegistryText(RegistryRoot root, const std::string& key,
                                                            const std::vector<RegistryTextEntry>& values);

}  // namespace tarno2
