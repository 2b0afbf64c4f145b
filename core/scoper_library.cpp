#include "core/scoper_library.h"

#include "config/debug_log.h"
#include "core/driver_catalogue.h"
#include "core/library_object.h"

namespace tarno2 {

bool ScoperLibrary::load(std::string& why) {
    if (loadRegistered(why)) {
        DEBUG_LOG("Scoper load ok");
        return true;
    }
    DEBUG_LOG("Scoper not loaded");
    DEBUG_LOG("!!!!! %s", why.c_str());
    return false;
}

bool ScoperLibrary::loadRegistered(std::string& why) {
    object_.reset();
    const auto path = registeredLibrary(scoperKey(), why);
    if (!path) {
        return false;
    }
    object_.reset(static_cast<ISCOPERA*>(loadObject(library_, *path, TARNO2_SCOPERA_INTERFACE, why)));
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
