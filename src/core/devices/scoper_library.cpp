#include "core/devices/scoper_library.h"

#include "config/logs/debug_log.h"
#include "core/devices/driver_catalogue.h"
#include "core/devices/library_object.h"
#include "platform/file.h"
#include "platform/paths.h"

namespace tarno2 {

bool ScoperLibrary::load(std::string& why) {
    object_.reset();
    const auto listed = registeredLibrary(scoperKey(), why);
    bool loaded = listed && loadFrom(*listed, why);
    // A registry that lists drivers alone, or a library that has moved, leaves the one that came with the program.
    const std::string own = joinPath(executableFolder(), std::string("scopera") + kLibrarySuffix);
    if (!loaded && fileExists(own)) {
        loaded = loadFrom(own, why);
    }
    if (loaded) {
        DEBUG_LOG("Scoper load ok");
    } else {
        DEBUG_LOG("Scoper not loaded");
        DEBUG_LOG("!!!!! %s", why.c_str());
    }
    return loaded;
}

bool ScoperLibrary::loadFrom(const std::string& path, std::string& why) {
    object_.reset(static_cast<ISCOPERA*>(loadObject(library_, path, TARNO2_SCOPERA_INTERFACE, why)));
    if (!object_) {
        return false;
    }
    if (const uint32_t version = object_->AbiVersion(); version != kScoperaAbiVersion) {
        why = "the library's interface has version " + std::to_string(version) + ", this program's " +
              std::to_string(kScoperaAbiVersion);
        object_.reset();
        library_.unload();
        return false;
    }
    return true;
}

}  // namespace tarno2
