#include "core/devices/library_object.h"

#include <tarno2/IADCDevice.h>

#include "platform/paths.h"
#include "platform/registry.h"

namespace tarno2 {

namespace {

constexpr size_t kLongestPath = 255;

// Drivers and the library that draws have a factory of the same form.
void* callFactory(void* entry, const char* interfaceName) {
    const auto factory = reinterpret_cast<ADCStaticFactory>(entry);
    try {
        return factory(interfaceName, 0);
    } catch (...) {
        return nullptr;
    }
}

}  // namespace

std::optional<std::string> registeredLibrary(const std::string& key, std::string& why) {
    const auto value = registryValue(RegistryRoot::LocalMachine, key, "path");
    if (!value) {
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

void* loadObject(Library& library, const std::string& path, const char* interfaceName, std::string& why) {
    if (!library.load(path, why)) {
        return nullptr;
    }
    void* object = nullptr;
    if (void* entry = library.symbol(TARNO2_FACTORY_NAME); entry == nullptr) {
        why = "the library has no \"" TARNO2_FACTORY_NAME "\"";
    } else if (object = callFactory(entry, interfaceName); object == nullptr) {
        why = std::string("the library makes no ") + interfaceName + " object";
    }
    if (object == nullptr) {
        library.unload();
    }
    return object;
}

}  // namespace tarno2
