#include "platform/disk_reserve.h"

#include <fcntl.h>

namespace tarno2 {

OsError DiskReserve::openNameless(const std::string& folder) {
    file_.close();
    const int descriptor = ::open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600);
    if (descriptor >= 0) {
        file_.handle_ = descriptor;
        return {};
    }
    // A file system without nameless files.
    std::string path;
    OsError error = createTemporaryFile(folder, ".tarno2_reserve", path);
    if (error.ok()) {
        error = file_.open(path, FileMode::OpenExisting, FileAccess::Write, FileShare::ReadWrite);
        removeFile(path);
    }
    return error;
}

}  // namespace tarno2
