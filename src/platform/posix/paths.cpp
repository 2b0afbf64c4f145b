#include "platform/paths.h"

#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>

#include "platform/file.h"

namespace tarno2 {

namespace {

/// The home of the user as the system lists it: programs that the system starts have no $HOME.
std::string homeOfUser() {
    constexpr size_t kMostBytes = 16384;
    std::string buffer(kMostBytes, '\0');
    passwd entry{};
    passwd* found = nullptr;
    getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found);
    return found == nullptr || entry.pw_dir == nullptr ? std::string() : std::string(entry.pw_dir);
}

}  // namespace

const char kPathSeparator = '/';

bool isPossiblePath(std::string_view path) {
    return path.find('\0') == std::string_view::npos;
}

bool isPathSeparator(char c) {
    return c == '/';
}

std::optional<std::string> environmentVariable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

std::string executableFolder() {
    std::string path(PATH_MAX, '\0');
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    if (length <= 0) {
        return currentFolder();
    }
    path.resize(static_cast<size_t>(length));
    return parentFolder(path);
}

std::string currentFolder() {
    std::string path(PATH_MAX, '\0');
    if (getcwd(path.data(), path.size()) == nullptr) {
        return {};
    }
    path.resize(path.find('\0'));
    return path;
}

bool isWritableFolder(const std::string& folder) {
    return isDirectory(folder) && faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

std::string userSettingsFolder() {
    if (const auto config = environmentVariable("XDG_CONFIG_HOME"); config && isAbsolutePath(*config)) {
        return joinPath(*config, "tarno2");
    }
    std::string home = environmentVariable("HOME").value_or("");
    if (home.empty()) {
        home = homeOfUser();
    }
    return home.empty() ? home : joinPath(home, ".config/tarno2");
}

}  // namespace tarno2
