#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarno2 {

/// UTF-8 as UTF-16; nothing when it is no UTF-8 (overlong forms and surrogates included).
[[nodiscard]] std::optional<std::u16string> utf8ToUtf16(std::string_view utf8);
/// UTF-16 as UTF-8. A surrogate without its partner becomes U+FFFD.
[[nodiscard]] std::string utf16ToUtf8(std::u16string_view utf16);
/// UTF-16 in the encoding of the system's file names: UTF-8, on Windows the code page of the system. What that lacks
/// becomes "?", which no name of a file has there, and not some similar letter, which may name another file.
[[nodiscard]] std::string utf16ToSystem(std::u16string_view utf16);

/// UTF-8 in that encoding. What is no UTF-8 stays as it is.
[[nodiscard]] std::string utf8ToSystem(const std::string& utf8);
/// A text in that encoding, such as the name of a file, as UTF-8. What is no letter there becomes U+FFFD.
[[nodiscard]] std::string systemToUtf8(const std::string& text);

}  // namespace tarno2
