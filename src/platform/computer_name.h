#pragma once

#include <string>

namespace tarno2 {

/// What this computer is called in its network, UTF-8; empty when the system does not tell. Any thread.
[[nodiscard]] std::string computerName();

}  // namespace tarno2
