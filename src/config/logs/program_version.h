#pragma once

#include <string>

namespace tarno2 {

/// The version of the program, four numbers joined by points: the one that its file carries, else the one that it was
/// built with. Any thread.
[[nodiscard]] const std::string& versionText();

}  // namespace tarno2
