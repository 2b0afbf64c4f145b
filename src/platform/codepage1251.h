#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarno2 {

/// Code page 1251 (Windows, Cyrillic), by one table of our own on every system. Byte 0x98 has no character.

/// UTF-8 text as code page 1251; nothing when a character is not in the page or the text is no UTF-8.
[[nodiscard]] std::optional<std::string> utf8ToCp1251(std::string_view utf8);
/// A message with names of files and words of the system in it, in code page 1251: letters in a row that are UTF-8 are
/// converted, with "?" for those that the page lacks; others are taken for letters of the page and stay.
[[nodiscard]] std::string systemTextToCp1251(const std::string& text);
/// Code page 1251 as UTF-8. Byte 0x98 becomes U+FFFD.
[[nodiscard]] std::string cp1251ToUtf8(std::string_view text);
/// Words that somebody typed into a file, as UTF-8: they are UTF-8 or, when they can't be, code page 1251.
[[nodiscard]] std::string typedToUtf8(std::string_view text);
/// Code page 1251 as UTF-16, one unit a byte.
[[nodiscard]] std::u16string cp1251ToUtf16(std::string_view text);
/// UTF-16 as code page 1251; nothing when a character is not in the page.
[[nodiscard]] std::optional<std::string> utf16ToCp1251(std::u16string_view text);
/// The code point of a byte (0xFFFD for 0x98).
[[nodiscard]] char16_t cp1251CodePoint(unsigned char byte);

}  // namespace tarno2
