#include "platform/registry_folders.h"

#include <algorithm>
#include <string_view>

#include "platform/c_locale.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "platform/utf.h"

namespace tarno2 {

namespace {

constexpr uint64_t kLargestText = 1 << 20;

bool hasControlCharacters(std::string_view text) {
    return std::any_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; });
}

std::string quoted(std::string_view text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            result += '\\';
        }
        result += c;
    }
    return result + '"';
}

std::string formatValue(const RegistryValue& value) {
    if (value.type == kRegistryString) {
        return quoted(value.data);
    }
    std::string text = formatText("hex(%x):", value.type);
    for (size_t i = 0; i < value.data.size(); ++i) {
        text += formatText(i == 0 ? "%02x" : ",%02x", static_cast<unsigned char>(value.data[i]));
    }
    return text;
}

/// Plain ASCII stays as it is; other characters survive everywhere as UTF-16 with its mark.
std::string encoded(const std::string& text) {
    const bool ascii =
        std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    const auto utf16 = ascii ? std::nullopt : utf8ToUtf16(text);
    if (!utf16) {
        return text;
    }
    std::string bytes = "\xFF\xFE";
    for (const char16_t unit : *utf16) {
        bytes += static_cast<char>(unit & 0xFFU);
        bytes += static_cast<char>(unit >> 8U);
    }
    return bytes;
}

}  // namespace

std::vector<RegistryTextEntry> readRegistryFile(const std::string& folder, const std::string& name) {
    std::string text;
    if (!readWholeFile(joinPath(folder, name), kLargestText, FileShare::ReadWrite, text).ok()) {
        return {};
    }
    auto entries = parseRegistryText(text);
    for (auto& entry : entries) {
        entry.value.folder = folder;
    }
    return entries;
}

std::vector<std::string> registryFiles(const std::string& folder) {
    auto names = listDirectory(folder);
    std::erase_if(names, [](const std::string& name) {
        return name.size() < 4 || !sameRegistryName(name.substr(name.size() - 4), ".reg");
    });
    return names;
}

std::vector<RegistryTextEntry> readRegistryFolders(const std::vector<std::string>& folders) {
    std::vector<RegistryTextEntry> all;
    for (const auto& folder : folders) {
        for (const auto& name : registryFiles(folder)) {
            auto entries = readRegistryFile(folder, name);
            std::move(entries.begin(), entries.end(), std::back_inserter(all));
        }
    }
    return all;
}

void appendSubKeys(const std::vector<RegistryTextEntry>& entries, RegistryRoot root, const std::string& key,
                   std::vector<std::string>& names) {
    const std::string prefix = key.empty() ? key : key + '\\';
    for (const auto& entry : entries) {
        const std::string_view path = entry.key;
        if (!entry.keyOnly || entry.root != root || path.size() <= prefix.size() ||
            !sameRegistryName(path.substr(0, prefix.size()), prefix)) {
            continue;
        }
        const std::string_view below = path.substr(prefix.size());
        const std::string_view name = below.substr(0, below.find('\\'));
        const auto same = [name](const std::string& known) { return sameRegistryName(known, name); };
        if (!name.empty() && std::none_of(names.begin(), names.end(), same)) {
            names.emplace_back(name);
        }
    }
}

std::optional<RegistryValue> findRegistryValue(const std::vector<RegistryTextEntry>& entries, RegistryRoot root,
                                               const std::string& key, const std::string& name) {
    for (const auto& entry : entries) {
        if (!entry.keyOnly && entry.root == root && sameRegistryName(entry.key, key) &&
            sameRegistryName(entry.name, name)) {
            return entry.value;
        }
    }
    return std::nullopt;
}

std::optional<std::string> nameAt(const std::vector<std::string>& names, int index, size_t capacity) {
    if (index < 0 || static_cast<size_t>(index) >= names.size() || capacity < 2) {
        return std::nullopt;
    }
    return names[static_cast<size_t>(index)].substr(0, capacity - 1);
}

const char* registryRootName(RegistryRoot root) {
    return root == RegistryRoot::LocalMachine ? "HKEY_LOCAL_MACHINE" : "HKEY_CURRENT_USER";
}

std::optional<std::string> formatRegistryText(RegistryRoot root, const std::string& key,
                                              const std::vector<RegistryTextEntry>& values) {
    bool expressible = !hasControlCharacters(key);
    std::string text = "Windows Registry Editor Version 5.00\r\n\r\n[";
    text += registryRootName(root);
    text += '\\' + key + "]\r\n";
    for (const auto& entry : values) {
        const RegistryValue& value = entry.value;
        expressible = expressible && !hasControlCharacters(entry.name) &&
                      (value.type != kRegistryString || !hasControlCharacters(value.data));
        text += (entry.name.empty() ? "@" : quoted(entry.name)) + '=' + formatValue(value) + "\r\n";
    }
    return expressible ? std::optional(encoded(text)) : std::nullopt;
}

}  // namespace tarno2
