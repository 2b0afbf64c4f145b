#include "platform/library.h"

#include <dlfcn.h>
#include <utility>

namespace tarno2 {

const char* const kLibrarySuffix = ".so";

bool Library::load(const std::string& path, std::string& error) {
    unload();
    if (path.empty()) {  // would be the program itself
        error = "no file name";
        return false;
    }
    handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) {
        const char* words = dlerror();
        error = words == nullptr ? "unknown error" : words;
    }
    return handle_ != nullptr;
}

void Library::unload() {
    if (handle_ != nullptr) {
        dlclose(std::exchange(handle_, nullptr));
    }
}

void* Library::symbol(const char* name) const {
    return handle_ == nullptr ? nullptr : dlsym(handle_, name);
}

void keepLibraryOf(void (*function)()) {
    Dl_info facts{};
    if (dladdr(reinterpret_cast<void*>(function), &facts) != 0) {
        dlopen(facts.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
    }
}

}  // namespace tarno2
