#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/os_error.h"

namespace tarno2 {

/// The system registry. On Windows the real one, and after it the registry texts in `registry.d` beside the program;
/// elsewhere registry texts alone: every `*.reg` file, in name order, of each folder in $TARNO2_REGISTRY
/// (colon-separated). An empty element there, or the variable being unset, stands for the usual places: `registry.d`
/// beside the program, `$XDG_CONFIG_HOME/tarno2/registry.d` and `/etc/tarno2/registry.d`. The first value found wins.
/// Key and value names do not tell case.
///
/// Each call reads the registry anew; nothing is kept, so a driver that was just installed is seen.
enum class RegistryRoot { LocalMachine, CurrentUser };

inline constexpr uint32_t kRegistryString = 1;  ///< REG_SZ
inline constexpr uint32_t kRegistryBinary = 3;  ///< REG_BINARY
inline constexpr uint32_t kRegistryDword = 4;   ///< REG_DWORD

struct RegistryValue {
    uint32_t type = 0;
    std::string data;    ///< the value's bytes; of a string without its closing zero
    std::string folder;  ///< folder of the text that holds the value; empty for the real registry
};

/// Name of the sub key with that index, in the order of the registry; cut to `capacity - 1` bytes. Nothing when there
/// is no such key or index, or when the capacity is under 2.
[[nodiscard]] std::optional<std::string> registrySubKey(RegistryRoot root, const std::string& key, int index,
                                                        size_t capacity);
/// A value of a key; nothing when the key or the value is missing.
[[nodiscard]] std::optional<RegistryValue> registryValue(RegistryRoot root, const std::string& key,
                                                         const std::string& name);
/// Writes a string value, making its key. On POSIX it goes to a text of its own, named after the key's last part, in
/// the user's folder (the first one of $TARNO2_REGISTRY when set). `where` gets the file or key written.
OsError registrySetString(RegistryRoot root, const std::string& key, const std::string& name, const std::string& value,
                          std::string& where);
/// Removes a key that `registrySetString` made, with its values.
OsError registryDeleteKey(RegistryRoot root, const std::string& key, std::string& where);

}  // namespace tarno2
