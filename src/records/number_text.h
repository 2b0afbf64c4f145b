#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarno2 {

// Numbers at the front of a text, as scanf reads them in the "C" locale whatever the user's is: blanks before are
// skipped, the longest valid prefix is taken, what follows is ignored ("12 mV" is 12, "0,5" is 0). Nothing when no
// number stands there or when it is out of range.

/// "%d".
[[nodiscard]] std::optional<int32_t> parseInt32(std::string_view text);
/// "%u". A minus sign counts modulo 2^32, so that a negative number means the unsigned one with the same bits.
[[nodiscard]] std::optional<uint32_t> parseUInt32(std::string_view text);
/// "%X", with or without "0x"; signs as in `parseUInt32`.
[[nodiscard]] std::optional<uint32_t> parseHex32(std::string_view text);
/// Unsigned decimal of 64 bits; signs as in `parseUInt32`.
[[nodiscard]] std::optional<uint64_t> parseUInt64(std::string_view text);
/// "%f", decimal; also "inf" and "nan".
[[nodiscard]] std::optional<float> parseFloat(std::string_view text);
/// "%lf", likewise.
[[nodiscard]] std::optional<double> parseDouble(std::string_view text);

/// The shortest text that `parseDouble` makes the same number of.
[[nodiscard]] std::string exactNumberText(double value);

}  // namespace tarno2
