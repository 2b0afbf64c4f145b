#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarno2 {

// Numbers in the windows' fields and labels. They don't depend on the locale of the process: "." is the decimal
// character, and "," is taken for it, as a Russian keyboard types it.

/// The number that the whole text is, blanks around it aside; nothing when it is none or not finite. Every field for
/// numbers reads its text by it.
[[nodiscard]] std::optional<double> parseNumberField(std::string_view text);
/// A frequency in Hz as the boards know it, in single precision, with no digit more than that takes: "44100",
/// "33333.332".
[[nodiscard]] std::string frequencyText(double hertz);

}  // namespace tarno2
