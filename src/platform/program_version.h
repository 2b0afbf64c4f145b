#pragma once

#include <optional>
#include <string>

namespace tarno2 {

/// The version that the running program's file carries, four numbers joined by points: of its version resource on
/// Windows. Nothing where files of programs carry none.
[[nodiscard]] std::optional<std::string> executableVersion();

}  // namespace tarno2
