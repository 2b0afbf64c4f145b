#include "tests/support/bait.h"

#include <filesystem>

#include "platform/file.h"
#include "platform/paths.h"
#include "tests/support/temporary_folder.h"

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

namespace tarno2::test {

namespace {

Found lookAt(const std::string& path) {
    Found found;
#if defined(_WIN32)
    std::error_code error;
    found.modified = std::filesystem::last_write_time(path, error).time_since_epoch().count();
#else
    constexpr int64_t kBillion = 1000000000;
    struct stat facts {};
    if (lstat(path.c_str(), &facts) != 0) {
        return found;
    }
    found.number = facts.st_ino;
    found.mode = facts.st_mode;
    found.modified = facts.st_mtim.tv_sec * kBillion + facts.st_mtim.tv_nsec;
    found.changed = facts.st_ctim.tv_sec * kBillion + facts.st_ctim.tv_nsec;
#endif
    if (std::filesystem::is_symlink(path)) {
        found.contents = std::filesystem::read_symlink(path).string();
    } else if (std::filesystem::is_regular_file(path)) {
        found.contents = readFile(path);
    }
    return found;
}

}  // namespace

Contents lookInto(const std::string& folder) {
    Contents contents;
    for (const std::string& name : listDirectory(folder)) {
        contents[name] = lookAt(joinPath(folder, name));
    }
    return contents;
}

std::string Bait::touched() const {
    for (const auto& [name, found] : contents_) {
        if (!(lookAt(joinPath(folder_, name)) == found)) {
            return name;
        }
    }
    return {};
}

}  // namespace tarno2::test
