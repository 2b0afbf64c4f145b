#include "platform/program_version.h"

#include <vector>
#include <windows.h>

#include "platform/c_locale.h"

namespace tarno2 {

std::optional<std::string> executableVersion() {
    std::string path(32768, '\0');
    path.resize(GetModuleFileNameA(nullptr, path.data(), static_cast<DWORD>(path.size())));
    DWORD unused = 0;
    std::vector<char> resource(GetFileVersionInfoSizeA(path.c_str(), &unused));
    void* root = nullptr;
    UINT size = 0;
    if (resource.empty() ||
        GetFileVersionInfoA(path.c_str(), 0, static_cast<DWORD>(resource.size()), resource.data()) == 0 ||
        VerQueryValueA(resource.data(), "\\", &root, &size) == 0 || size < sizeof(VS_FIXEDFILEINFO)) {
        return std::nullopt;
    }
    const auto& fixed = *static_cast<const VS_FIXEDFILEINFO*>(root);
    return formatText("%u.%u.%u.%u", static_cast<unsigned>(HIWORD(fixed.dwFileVersionMS)),
                      static_cast<unsigned>(LOWORD(fixed.dwFileVersionMS)),
                      static_cast<unsigned>(HIWORD(fixed.dwFileVersionLS)),
                      static_cast<unsigned>(LOWORD(fixed.dwFileVersionLS)));
}

}  // namespace tarno2
