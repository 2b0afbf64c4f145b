#pragma once

#include <cstdint>
#include <limits>
#include <string>

namespace tarno2 {

inline constexpr uint64_t kNoMemoryLimit = std::numeric_limits<uint64_t>::max();

/// Bytes that the machine has available and that every control group around this process leaves, of both versions;
/// memory that only caches files counts as free. `root`: where the folders proc and sys lie, empty for the system's
/// own.
[[nodiscard]] uint64_t systemMemoryRoom(const std::string& root);

}  // namespace tarno2
