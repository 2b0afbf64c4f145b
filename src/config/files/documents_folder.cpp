#include "config/files/documents_folder.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "platform/file.h"
#include "platform/paths.h"
#include "platform/registry.h"

namespace tarno2 {

namespace {

constexpr uint64_t kMostBytes = 64 << 10;
constexpr std::string_view kKey = "XDG_DOCUMENTS_DIR=\"";
constexpr std::string_view kHome = "$HOME/";

/// What stands between the quotes, as a shell takes it.
std::string unquoted(std::string_view text) {
    std::string result;
    for (size_t i = 0; i < text.size() && text[i] != '"'; ++i) {
        i += text[i] == '\\' && i + 1 < text.size() ? 1 : 0;
        result += text[i];
    }
    return result;
}

/// From a line such as XDG_DOCUMENTS_DIR="$HOME/Documents"; the last one counts. The home itself stands for none.
std::string documentsOfDesktop(const std::string& home) {
    const std::string settings = parentFolder(userSettingsFolder());
    std::string text;
    if (!readWholeFile(joinPath(settings, "user-dirs.dirs"), kMostBytes, FileShare::ReadWrite, text).ok()) {
        return {};
    }
    std::string folder;
    for (std::string_view rest = text; !rest.empty();) {
        std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
        if (line.starts_with(kKey)) {
            folder = unquoted(line.substr(kKey.size()));
            if (folder.starts_with(kHome)) {
                folder = folder.size() > kHome.size() ? joinPath(home, folder.substr(kHome.size())) : std::string();
            }
        }
    }
    return folder.starts_with('/') && folder != home ? folder : std::string();
}

}  // namespace

std::string documentsFolder() {
    const auto personal = registryValue(
        RegistryRoot::CurrentUser, "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders", "Personal");
    if (personal && personal->type == kRegistryString && !personal->data.empty()) {
        return personal->data;
    }
    if (auto documents = environmentVariable("XDG_DOCUMENTS_DIR"); documents && !documents->empty()) {
        return *documents;
    }
    const std::string home = environmentVariable("HOME").value_or("");
    if (home.empty()) {
        return {};
    }
    const std::string documents = documentsOfDesktop(home);
    return documents.empty() ? joinPath(home, "Documents") : documents;
}

}  // namespace tarno2
