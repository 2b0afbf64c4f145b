#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tarno2 {

/// A line of a list of checksums, as `sha256sum` writes and reads them.
struct FileChecksum {
    std::string file;    ///< without its folder, in the encoding of the system's file names
    std::string sha256;  ///< 64 hexadecimal digits in lower case

    friend bool operator==(const FileChecksum&, const FileChecksum&) = default;
};

/// The list of a recording: UTF-8, a line a file. A name with a backslash or a line end is escaped, which a backslash
/// that begins the line tells.
[[nodiscard]] std::string checksumListText(std::span<const FileChecksum> files);
/// Such a list read back, whoever wrote it. Nothing when a line of it is none, or there is no line.
[[nodiscard]] std::optional<std::vector<FileChecksum>> readChecksumList(std::string_view text);

/// Whether it is a SHA-256 in hexadecimal digits of lower case.
[[nodiscard]] bool isSha256(std::string_view text);

}  // namespace tarno2
