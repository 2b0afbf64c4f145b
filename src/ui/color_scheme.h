#pragma once

#include <cstdint>

namespace tarno2 {

/// Colours all windows of the program: 0 as the system does, and follows it; 1 light, 2 dark. Window thread.
void applyColorScheme(int32_t scheme);

}  // namespace tarno2
