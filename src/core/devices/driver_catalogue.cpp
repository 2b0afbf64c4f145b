#include "core/devices/driver_catalogue.h"

#include "core/devices/library_object.h"
#include "platform/registry.h"

namespace tarno2 {

namespace {

constexpr const char* kCompanyKey = "Kestrel Lines LTD";

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
    return joinKey({"SOFTWARE", kCompanyKey, "Drivers", "1.0", name});
}

std::string scoperKey() {
    return joinKey({"SOFTWARE", kCompanyKey, "SCOPERA"});
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
    if (name.empty()) {
        why = "no driver is chosen";
        return std::nullopt;
    }
    return registeredLibrary(driverKey(name), why);
}

}  // namespace tarno2
