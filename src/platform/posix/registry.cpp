#include "platform/registry.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "platform/file.h"
#include "platform/paths.h"
#include "platform/registry_folders.h"

namespace tarno2 {

namespace {

constexpr const char* kFolderName = "registry.d";
constexpr size_t kLongestStem = 200;  ///< bytes of a file's name, well under what file systems take

std::string userFolder() {
    const std::string settings = userSettingsFolder();
    return settings.empty() ? settings : joinPath(settings, kFolderName);
}

void appendUsualFolders(std::vector<std::string>& folders) {
    folders.push_back(joinPath(executableFolder(), kFolderName));
    if (std::string user = userFolder(); !user.empty()) {
        folders.push_back(std::move(user));
    }
    folders.emplace_back("/etc/tarno2/registry.d");
}

/// The elements of $TARNO2_REGISTRY; a single empty one when it is unset.
std::vector<std::string> elements() {
    const std::string variable = environmentVariable("TARNO2_REGISTRY").value_or("");
    std::vector<std::string> elements;
    for (size_t start = 0; start <= variable.size();) {
        const size_t end = std::min(variable.find(':', start), variable.size());
        elements.push_back(variable.substr(start, end - start));
        start = end + 1;
    }
    return elements;
}

/// The folders to be read, each once.
std::vector<std::string> allFolders() {
    std::vector<std::string> folders;
    bool usual = false;
    for (const std::string& element : elements()) {
        if (!element.empty()) {
            folders.push_back(element);
        } else if (!usual) {
            appendUsualFolders(folders);
            usual = true;
        }
    }
    return folders;
}

/// The first place that is named, be it the usual one.
std::string writableFolder() {
    const std::string first = elements().front();
    return first.empty() ? userFolder() : first;
}

/// A file name made of the last part of a key.
std::string stemOf(const std::string& key) {
    std::string stem = key.substr(key.rfind('\\') + 1).substr(0, kLongestStem);
    for (char& c : stem) {
        if (c == '/' || static_cast<unsigned char>(c) < ' ') {
            c = '_';
        }
    }
    if (stem.empty() || stem.front() == '.') {
        stem.insert(stem.begin(), '_');
    }
    return stem;
}

/// Whether all that a text holds stands under that one key.
bool holdsOnly(const std::vector<RegistryTextEntry>& entries, RegistryRoot root, const std::string& key) {
    return !entries.empty() && std::all_of(entries.begin(), entries.end(), [&](const RegistryTextEntry& entry) {
        return entry.root == root && sameRegistryName(entry.key, key);
    });
}

/// The name of the text for a key: of its own text, or one that is free. Never that of a text with other keys.
std::string textFor(const std::string& folder, RegistryRoot root, const std::string& key) {
    const std::string stem = stemOf(key);
    std::string name = stem + ".reg";
    for (int k = 2; fileExists(joinPath(folder, name)) && !holdsOnly(readRegistryFile(folder, name), root, key); ++k) {
        name = stem + '-' + std::to_string(k) + ".reg";
    }
    return name;
}

}  // namespace

std::optional<std::string> registrySubKey(RegistryRoot root, const std::string& key, int index, size_t capacity) {
    std::vector<std::string> names;
    appendSubKeys(readRegistryFolders(allFolders()), root, key, names);
    return nameAt(names, index, capacity);
}

std::optional<RegistryValue> registryValue(RegistryRoot root, const std::string& key, const std::string& name) {
    return findRegistryValue(readRegistryFolders(allFolders()), root, key, name);
}

OsError registrySetString(RegistryRoot root, const std::string& key, const std::string& name, const std::string& value,
                          std::string& where) {
    const std::string folder = writableFolder();
    if (folder.empty() || key.empty()) {
        return OsError(ENOENT);
    }
    if (const OsError error = createFolders(folder); !error.ok()) {
        where = folder;
        return error;
    }
    const std::string file = textFor(folder, root, key);
    where = joinPath(folder, file);
    auto values = readRegistryFile(folder, file);
    std::erase_if(values,
                  [&](const RegistryTextEntry& entry) { return entry.keyOnly || sameRegistryName(entry.name, name); });
    values.push_back({root, key, name, false, {kRegistryString, value, {}}});
    const auto text = formatRegistryText(root, key, values);
    return text ? replaceWholeFile(where, *text) : OsError(EINVAL);
}

OsError registryDeleteKey(RegistryRoot root, const std::string& key, std::string& where) {
    const std::string folder = writableFolder();
    where = folder;
    OsError error(ENOENT);
    for (const auto& name : registryFiles(folder)) {
        if (holdsOnly(readRegistryFile(folder, name), root, key)) {
            where = joinPath(folder, name);
            error = removeFile(where);
            if (!error.ok()) {
                break;
            }
        }
    }
    return error;
}

}  // namespace tarno2
