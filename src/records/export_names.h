#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace tarno2 {

/// The longest name of an output file, characters.
inline constexpr size_t kMaximumOutputName = 259;

/// In place of a name: what is written goes to the program's standard output.
inline constexpr const char* kStandardOutput = "-";

/// Whether the name is given and not too long.
[[nodiscard]] bool isOutputName(const std::string& name);

/// The name that is offered for what becomes of a data file: the part after its last "." is replaced by the extension,
/// or that is added when it has none.
[[nodiscard]] std::string defaultOutputName(const std::string& dataFileName, const std::string& extension = "csv");

/// Names of the output files: "<base>.<extension>", then "<base>_1.<extension>", "<base>_2.<extension>", ... The name
/// is taken apart at its last "."; without one the extension is empty and the names end in a dot.
[[nodiscard]] std::string outputPieceName(const std::string& outputName, uint32_t piece);

}  // namespace tarno2
