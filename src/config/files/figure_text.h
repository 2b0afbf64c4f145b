#pragma once

#include <cstdint>
#include <string>

namespace tarno2 {

/// "00:12:31"; the hours grow beyond two digits.
[[nodiscard]] std::string formatDuration(uint64_t seconds);

/// A count with its digits in groups of three, parted by blanks that no line is broken at.
[[nodiscard]] std::string formatCount(uint64_t count);

/// "12.4 MB": three digits, counted by 1024, in the language chosen last.
[[nodiscard]] std::string formatSize(uint64_t bytes);

/// "12.4 MB/s".
[[nodiscard]] std::string formatRate(double bytesPerSecond);

}  // namespace tarno2
