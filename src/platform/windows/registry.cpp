#include "platform/registry.h"

#include <array>
#include <utility>
#include <windows.h>

#include "platform/paths.h"
#include "platform/registry_folders.h"

namespace tarno2 {

namespace {

HKEY rootKey(RegistryRoot root) {
    return root == RegistryRoot::LocalMachine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

/// An open key of the registry; closed on destruction.
class Key {
public:
    Key(RegistryRoot root, const std::string& key) {
        if (RegOpenKeyExA(rootKey(root), key.c_str(), 0, KEY_READ, &handle_) != ERROR_SUCCESS) {
            handle_ = nullptr;
        }
    }
    ~Key() {
        if (handle_ != nullptr) {
            RegCloseKey(handle_);
        }
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    [[nodiscard]] std::vector<std::string> subKeys() const {
        std::vector<std::string> names;
        std::array<char, 1024> name{};
        DWORD length = name.size();
        for (DWORD i = 0; handle_ != nullptr && RegEnumKeyExA(handle_, i, name.data(), &length, nullptr, nullptr,
                                                              nullptr, nullptr) == ERROR_SUCCESS;
             ++i) {
            names.emplace_back(name.data(), length);
            length = name.size();
        }
        return names;
    }

    [[nodiscard]] std::optional<RegistryValue> value(const std::string& name) const {
        RegistryValue value;
        DWORD size = 256;
        DWORD type = 0;
        LSTATUS status = handle_ == nullptr ? ERROR_FILE_NOT_FOUND : ERROR_MORE_DATA;
        while (status == ERROR_MORE_DATA) {
            value.data.resize(size);
            status = RegQueryValueExA(handle_, name.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(value.data.data()),
                                      &size);
        }
        if (status != ERROR_SUCCESS) {
            return std::nullopt;
        }
        value.type = type;
        value.data.resize(size);
        if ((type == REG_SZ || type == REG_EXPAND_SZ) && value.data.ends_with('\0')) {
            value.data.pop_back();
        }
        return value;
    }

private:
    HKEY handle_ = nullptr;
};

/// The texts beside a program that was unpacked and not installed.
std::vector<RegistryTextEntry> readTexts() {
    return readRegistryFolders({joinPath(executableFolder(), "registry.d")});
}

std::string fullName(RegistryRoot root, const std::string& key) {
    return std::string(registryRootName(root)) + '\\' + key;
}

}  // namespace

std::optional<std::string> registrySubKey(RegistryRoot root, const std::string& key, int index, size_t capacity) {
    std::vector<std::string> names = Key(root, key).subKeys();
    appendSubKeys(readTexts(), root, key, names);
    return nameAt(names, index, capacity);
}

std::optional<RegistryValue> registryValue(RegistryRoot root, const std::string& key, const std::string& name) {
    auto value = Key(root, key).value(name);
    return value ? value : findRegistryValue(readTexts(), root, key, name);
}

OsError registrySetString(RegistryRoot root, const std::string& key, const std::string& name, const std::string& value,
                          std::string& where) {
    where = fullName(root, key);
    HKEY handle = nullptr;
    LSTATUS status = RegCreateKeyExA(rootKey(root), key.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_WRITE,
                                     nullptr, &handle, nullptr);
    if (status == ERROR_SUCCESS) {
        status = RegSetValueExA(handle, name.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                                static_cast<DWORD>(value.size() + 1));
        RegCloseKey(handle);
    }
    return OsError(static_cast<int>(status));
}

OsError registryDeleteKey(RegistryRoot root, const std::string& key, std::string& where) {
    where = fullName(root, key);
    return OsError(static_cast<int>(RegDeleteKeyA(rootKey(root), key.c_str())));
}

}  // namespace tarno2
