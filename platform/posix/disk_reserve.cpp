#include "platform/disk_reserve.h"

namespace tarno2 {

OsError DiskReserve::openNameless(const std::string& folder) {
    std::string path;
    OsError error = createTemporaryFile(folder, ".tarno2_reserve", path);
    if (error.ok()) {
        error = file_.open(path, FileMode::OpenExisting, FileAccess::Write, FileShare::ReadWrite);
        removeFile(path);
    }
    return error;
}

}  // namespace tarno2
