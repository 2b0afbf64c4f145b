#include "config/log_file.h"

namespace tarno2 {

bool openLogFile(File& log, const std::string& path) {
    if (!log.open(path, FileMode::OpenAlways, FileAccess::Write, FileShare::None).ok()) {
        return false;
    }
    uint64_t end = 0;
    if (log.size(end).ok() && log.seek(end).ok()) {
        return true;
    }
    log.close();
    return false;
}

void writeLogLine(File& log, std::string_view line) {
    size_t done = 0;
    log.write(line.data(), line.size(), done);
    log.flush();
}

}  // namespace tarno2
