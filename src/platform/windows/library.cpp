#include "platform/library.h"

#include <utility>
#include <windows.h>

#include "platform/os_error.h"
#include "platform/paths.h"

namespace tarno2 {

const char* const kLibrarySuffix = ".dll";

bool Library::load(const std::string& path, std::string& error) {
    unload();
    // A damaged library would otherwise be reported in a box that waits for a click.
    DWORD previousMode = 0;
    SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &previousMode);
    // A driver's own libraries lie beside it.
    handle_ = LoadLibraryExA(path.c_str(), nullptr, isAbsolutePath(path) ? LOAD_WITH_ALTERED_SEARCH_PATH : 0);
    if (handle_ == nullptr) {
        error = OsError::last().text();
    }
    SetThreadErrorMode(previousMode, nullptr);
    return handle_ != nullptr;
}

void Library::unload() {
    if (handle_ != nullptr) {
        FreeLibrary(static_cast<HMODULE>(std::exchange(handle_, nullptr)));
    }
}

void* Library::symbol(const char* name) const {
    if (handle_ == nullptr) {
        return nullptr;
    }
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle_), name));
}

void keepLibraryOf(void (*function)()) {
    HMODULE library = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<LPCSTR>(function), &library);
}

}  // namespace tarno2
