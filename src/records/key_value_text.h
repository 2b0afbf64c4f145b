#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarno2 {

/// Brings a key/value text into the form that `findKeyValue` searches: comments, blanks at line starts and lone CRs are
/// gone, a run of blanks outside quotes is one space, a continued line is joined with the next one by a space, and
/// every line ends with CR LF. A text without any CR has LF as its line end; in any other one only CR LF ends a line.
[[nodiscard]] std::string normaliseKeyValueText(std::string_view text);

/// What stands after the "=" of the first line that begins with `key`, up to the line's end. Nothing when no line does,
/// or when that line has something else before its "=" or no "=" at all. The result points into `normalised`.
[[nodiscard]] std::optional<std::string_view> findKeyValue(std::string_view normalised, std::string_view key);

/// The keys of a normalised text, as they stand: what is before the first "=" of each line that has one. None
/// where control characters stand before it: that is no text.
[[nodiscard]] std::vector<std::string> keysOf(std::string_view normalised);

/// The text between the double quotes at the front of a value; a backslash takes the next character as it is. Nothing
/// when the value does not begin with a quote (blanks aside) or the closing one is missing.
[[nodiscard]] std::optional<std::string> unquoteValue(std::string_view value);

}  // namespace tarno2
