#include "platform/disk_reserve.h"

#include <windows.h>

#include "platform/c_locale.h"
#include "platform/clock.h"
#include "platform/paths.h"

namespace tarno2 {

OsError DiskReserve::openNameless(const std::string& folder) {
    file_.close();
    const auto number = static_cast<unsigned long long>(monotonicNanoseconds());
    const std::string path = joinPath(folder, formatText("tarno2_reserve%llx.tmp", number));
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_HIDDEN | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return OsError::last();
    }
    file_.handle_ = reinterpret_cast<intptr_t>(file);
    return {};
}

}  // namespace tarno2
