#pragma once

#include <string>

namespace tarno2 {

/// What was typed after the program's name. On Windows the command line as it stands, quotes and blanks included;
/// elsewhere, where a shell has taken it apart, the arguments joined by single blanks.
[[nodiscard]] std::string argumentText(int argc, const char* const* argv);

}  // namespace tarno2
