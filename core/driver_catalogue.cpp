#include "core/driver_catalogue.h"

#include "platform/paths.h"
#include "platform/registry.h"

namespace tarno2 {

namespace {

constexpr size_t kLongestPath = 255;

// An empty component is skipped with its backslash.
std::string joinKey(std::initializer_list<std::string> components) {
    std::string key;
    for (const std::string& component : components) {
        if (component.empty()) {
            continue;
        }
        if (!key.empty()) {
            key += '\\';
        }
        key += component;
    }
    return key;
}

}  // namespace

std::string driverKey(const std::string& name) {
    return joinKey({"SOFTWARE", "Kestrel Lines LTD", "Drivers", "1.0", name});
}

std::string driverCatalogueKey() {
    return driverKey({});
}

void EnumerateDrivers(const std::function<void(const std::string&)>& callback, size_t capacity) {
    for (int index = 0;; ++index) {
        const auto name = registrySubKey(RegistryRoot::LocalMachine, driverCatalogueKey(), index, capacity);
        if (!name) {
            return;
        }
        callback(*name);
    }
}

std::optional<std::string> driverLibraryPath(const std::string& name, std::string& why) {
    const auto value = registryValue(RegistryRoot::LocalMachine, driverKey(name), "path");
    if (name.empty() || !value) {
        why = "no \"path\" in the registry";
        return std::nullopt;
    }
    if (value->type != kRegistryString || value->data.empty()) {
        why = "\"path\" in the registry is not a string";
        return std::nullopt;
    }
    if (value->data.size() > kLongestPath) {
        why = "\"path\" in the registry is longer than 255 bytes";
        return std::nullopt;
    }
    if (value->folder.empty() || isAbsolutePath(value->data)) {
        return value->data;
    }
    return joinPath(value->folder, value->data);
}

}  // namespace tarno2
