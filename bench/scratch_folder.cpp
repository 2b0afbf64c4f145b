#include "bench/scratch_folder.h"

#include <stdexcept>

#include "platform/clock.h"
#include "platform/file.h"
#include "platform/paths.h"

namespace tarno2::bench {

namespace {

std::string parent() {
    if (const auto chosen = environmentVariable("TARNO2_BENCH_FOLDER"); chosen && !chosen->empty()) {
        return *chosen;
    }
    const std::string memory = "/dev/shm";
    return isDirectory(memory) && isWritableFolder(memory) ? memory : currentFolder();
}

}  // namespace

ScratchFolder::ScratchFolder() : path_(joinPath(parent(), "tarno2-bench-" + std::to_string(monotonicNanoseconds()))) {
    if (const OsError error = createDirectory(path_); !error.ok()) {
        throw std::runtime_error(path_ + ": " + error.text());
    }
}

ScratchFolder::~ScratchFolder() {
    clear();
    removeDirectory(path_);
}

std::string ScratchFolder::file(std::string_view name) const {
    return joinPath(path_, name);
}

void ScratchFolder::clear() const {
    for (const std::string& name : listDirectory(path_)) {
        removeFile(file(name));
    }
}

}  // namespace tarno2::bench
