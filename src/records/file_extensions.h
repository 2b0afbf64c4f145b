#pragma once

#include <string_view>

namespace tarno2 {

// The endings of a recording's files, with their ".". docs/formats.md tells what the files hold.
inline constexpr std::string_view kDataExtension = ".dat";  ///< unless another was chosen
inline constexpr std::string_view kDescriptionExtension = ".txt";
inline constexpr std::string_view kLossExtension = ".log";
inline constexpr std::string_view kPassportExtension = ".json";
inline constexpr std::string_view kMarksEnding = ".marks.csv";  ///< ends in a "." of its own: it is no extension
inline constexpr std::string_view kChecksumExtension = ".sha256";
inline constexpr std::string_view kJournalExtension = ".tarno2-journal";
inline constexpr std::string_view kEarlierJournalExtension = ".journal";  ///< of earlier versions; only read

/// Whether it is formed like the extension of a data file: a "." and 1 to 16 letters or digits.
[[nodiscard]] bool isExtension(std::string_view text);
/// Whether it is that of a file beside the data; letters' case does not count.
[[nodiscard]] bool isExtensionOfOtherFiles(std::string_view extension);
/// Whether a file of this name is a list of marks; letters' case does not count.
[[nodiscard]] bool isMarksName(std::string_view name);
/// Whether data files may have it.
[[nodiscard]] bool isDataExtension(std::string_view extension);

}  // namespace tarno2
