#pragma once

#include <string>

namespace tarno2 {

/// A field of a line as RFC 4180 has it: as it is when it holds none of the characters `special`, else between double
/// quotes with those inside of it doubled. `special` names the divider and the double quote, and the line ends where a
/// field may hold them.
[[nodiscard]] std::string quotedField(const std::string& field, const std::string& special);

}  // namespace tarno2
