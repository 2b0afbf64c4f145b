#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarno2 {

/// A moment as a text of ISO 8601, to the microsecond: "2026-11-22T18:01:29.123456Z". `utc`: microseconds since
/// 1970-01-01T00:00:00Z, of the years 1 to 9999.
[[nodiscard]] std::string utcText(int64_t utc);

/// The same moment as clocks show it so many minutes east of Greenwich: "2026-11-22T21:01:29.123456+03:00".
[[nodiscard]] std::string localTimeText(int64_t utc, int32_t offsetMinutes);

/// Microseconds since 1970 of a text that one of both has given. Nothing when it is another one.
[[nodiscard]] std::optional<int64_t> parseUtcText(std::string_view text);

/// Minutes east of Greenwich of a text that one of both has given. Nothing when it is another one.
[[nodiscard]] std::optional<int32_t> parseUtcOffset(std::string_view text);

}  // namespace tarno2
