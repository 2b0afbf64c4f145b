#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/registry.h"

namespace tarno2 {

/// One value of a registry text, with the root and key it stands under.
struct RegistryTextEntry {
    RegistryRoot root = RegistryRoot::LocalMachine;
    std::string key;   ///< without the root's name
    std::string name;  ///< empty for the default value ("@") and for the entry that stands for the key itself
    bool keyOnly = false;
    RegistryValue value;
};

/// Parses a registry text ("REGEDIT4" or "Windows Registry Editor Version 5.00"; single-byte, UTF-8 or UTF-16LE with
/// byte order mark): `[ROOT\key]`, `"name"="string"`, `"name"=dword:1f`, `"name"=hex:01,02` and `hex(n):` with
/// continuation lines, `@=`, `;` comments. A line that can't be parsed is skipped, the rest is read; deletions
/// (`[-key]`, `"name"=-`) drop what stands before them. Unknown roots are passed over with their values.
/// A text without one of the two headings gives nothing.
[[nodiscard]] std::vector<RegistryTextEntry> parseRegistryText(std::string_view text);

/// The same key or name, without telling case (ASCII letters).
[[nodiscard]] bool sameRegistryName(std::string_view a, std::string_view b);

}  // namespace tarno2
