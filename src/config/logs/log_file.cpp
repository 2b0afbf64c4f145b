#include "config/logs/log_file.h"

namespace tarno2 {

OsError openLogFile(File& log, const std::string& path) {
    OsError error = log.openPlain(path, FileMode::OpenAlways, FileAccess::Write, FileShare::None);
    if (!error.ok()) {
        return error;
    }
    uint64_t end = 0;
    error = log.size(end);
    if (error.ok()) {
        error = log.seek(end);
    }
    if (!error.ok()) {
        log.close();
    }
    return error;
}

bool writeLogLine(File& log, std::string_view line) {
    size_t done = 0;
    const bool written = log.write(line.data(), line.size(), done).ok();
    log.flush();
    return written;
}

}  // namespace tarno2
