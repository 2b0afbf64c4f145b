#pragma once

#include <cstdint>
#include <string>

namespace tarno2 {

/// Calls a driver in the order of a recording, with a watch, and prints a line for each thing that it looked at:
/// "ok", "missing" (the host does without), "slow" (over 100 ms) or "wrong". `board` is its number in the driver's
/// list. False when something is wrong, or the driver can't be loaded. Takes some seconds.
bool checkDriver(const std::string& name, uint32_t board);

}  // namespace tarno2
