#include "platform/paths.h"

#include "platform/file.h"

namespace tarno2 {

namespace {

bool hasDrive(std::string_view path) {
    return kPathSeparator == '\\' && path.size() >= 2 && path[1] == ':';
}

/// How much of the path names a root: "/", "C:" or "C:\".
size_t rootLength(std::string_view path) {
    const size_t drive = hasDrive(path) ? 2 : 0;
    return drive < path.size() && isPathSeparator(path[drive]) ? drive + 1 : drive;
}

std::string withoutTrailingSeparators(std::string_view path) {
    const size_t root = rootLength(path);
    while (path.size() > root && isPathSeparator(path.back())) {
        path.remove_suffix(1);
    }
    return std::string(path);
}

}  // namespace

size_t findLastSeparator(std::string_view path) {
    for (size_t i = path.size(); i-- > 0;) {
        if (isPathSeparator(path[i])) {
            return i;
        }
    }
    return std::string_view::npos;
}

std::string parentFolder(std::string_view path) {
    const size_t separator = findLastSeparator(path);
    return separator == std::string_view::npos ? std::string()
                                               : withoutTrailingSeparators(path.substr(0, separator + 1));
}

std::string fileNameOf(std::string_view path) {
    const size_t separator = findLastSeparator(path);
    return std::string(separator == std::string_view::npos ? path : path.substr(separator + 1));
}

std::string joinPath(std::string_view folder, std::string_view name) {
    while (!name.empty() && isPathSeparator(name.front()) && !folder.empty()) {
        name.remove_prefix(1);
    }
    std::string path = withoutTrailingSeparators(folder);
    if (!path.empty() && !isPathSeparator(path.back())) {
        path += kPathSeparator;
    }
    return path.append(name);
}

bool isAbsolutePath(std::string_view path) {
    return rootLength(path) > 0;
}

std::string programDirectory() {
    if (const auto home = environmentVariable("TARNO2_HOME"); home && !home->empty()) {
        std::string folder = withoutTrailingSeparators(*home);
        createFolders(folder);  // what can't be made shows when something is to be put there
        return folder;
    }
    std::string folder = executableFolder();
    const bool installed = fileExists(joinPath(folder, kInstalledMark));
    if (!installed && isWritableFolder(folder)) {
        return folder;
    }
    std::string settings = userSettingsFolder();
    if (settings.empty()) {
        return installed ? currentFolder() : folder;
    }
    createFolders(settings);
    return settings;
}

}  // namespace tarno2
