#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarno2 {

/// Names of files are the system's own bytes: the code page on Windows, UTF-8 elsewhere.

/// '\\' on Windows, '/' elsewhere.
extern const char kPathSeparator;
/// Whether the character parts folders: '/', and '\\' too on Windows.
[[nodiscard]] bool isPathSeparator(char c);
/// Position of the last separator, npos when there is none.
[[nodiscard]] size_t findLastSeparator(std::string_view path);
/// What stands before the last separator (a root keeps its separator); empty when there is none.
[[nodiscard]] std::string parentFolder(std::string_view path);
/// What stands after the last separator.
[[nodiscard]] std::string fileNameOf(std::string_view path);
/// `folder` and `name` with exactly one separator between them; `name` alone when the folder is empty.
[[nodiscard]] std::string joinPath(std::string_view folder, std::string_view name);
/// Starts at a root (or with a drive on Windows).
[[nodiscard]] bool isAbsolutePath(std::string_view path);

/// Whether the system can have a file of that name at all: on Windows one without the characters `"<>|?*` and without
/// ':' but after the drive; elsewhere any without a zero in it.
[[nodiscard]] bool isPossiblePath(std::string_view path);

/// A variable of the environment; nothing when it is unset.
[[nodiscard]] std::optional<std::string> environmentVariable(const char* name);
/// Folder of the running program, without a separator at its end.
[[nodiscard]] std::string executableFolder();
[[nodiscard]] std::string currentFolder();
/// Whether this user may make files in the folder.
[[nodiscard]] bool isWritableFolder(const std::string& folder);
/// The user's settings folder for this program (%APPDATA%\Tarno2, $XDG_CONFIG_HOME/tarno2 or .config/tarno2 in the home
/// that $HOME or else the list of users names), which need not exist yet. Empty when the user has none.
[[nodiscard]] std::string userSettingsFolder();
/// A file of this name beside the program says that it was installed, so that its folder is nobody's to write to.
inline constexpr const char* kInstalledMark = "installed.txt";
/// Where settings and logs live: $TARNO2_HOME when set; else the program's own folder when it is writable and the
/// program was not installed; else the user's settings folder for this program. The first and the last are made when
/// missing. Without a separator at its end. Of an installed program of a user without such a folder the current one.
[[nodiscard]] std::string programDirectory();

}  // namespace tarno2
