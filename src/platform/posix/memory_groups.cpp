#include "platform/posix/memory_groups.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <optional>
#include <sstream>
#include <string_view>

namespace tarno2 {

namespace {

/// What the two versions of the system's control groups call the same things. An empty name: they have no such thing.
struct GroupFiles {
    std::array<const char*, 2> mounts;
    std::array<const char*, 2> limits;
    const char* used;
    std::array<const char*, 2> caches;  ///< lines of memory.stat that the system frees at once
};
constexpr GroupFiles kVersion1{{"/sys/fs/cgroup/memory", ""},
                               {"memory.limit_in_bytes", ""},
                               "memory.usage_in_bytes",
                               {"total_inactive_file", "total_active_file"}};
constexpr GroupFiles kVersion2{{"/sys/fs/cgroup", "/sys/fs/cgroup/unified"},
                               {"memory.max", "memory.high"},
                               "memory.current",
                               {"inactive_file", "active_file"}};

/// The number that a file begins with; nothing when there is none ("max").
std::optional<uint64_t> numberIn(const std::string& name) {
    std::ifstream file(name);
    uint64_t number = 0;
    return file >> number ? std::optional(number) : std::nullopt;
}

/// The number after a word that a line begins with.
uint64_t numberAfter(const std::string& name, std::string_view word) {
    std::ifstream file(name);
    std::string line;
    while (std::getline(file, line)) {
        std::istringstream text(line);
        std::string first;
        uint64_t number = 0;
        if (text >> first >> number && first == word) {
            return number;
        }
    }
    return 0;
}

uint64_t groupRoom(const std::string& folder, const GroupFiles& files) {
    uint64_t limit = kNoMemoryLimit;
    for (const char* name : files.limits) {
        limit = std::min(limit, numberIn(folder + '/' + name).value_or(kNoMemoryLimit));
    }
    const auto used = numberIn(folder + '/' + files.used);
    if (limit == kNoMemoryLimit || !used) {
        return kNoMemoryLimit;
    }
    uint64_t cached = 0;
    for (const char* line : files.caches) {
        cached += numberAfter(folder + "/memory.stat", line);
    }
    const uint64_t kept = *used - std::min(cached, *used);
    return limit - std::min(kept, limit);
}

/// The least that a group and those around it leave. In a container the outer part of the path may not be visible.
uint64_t pathRoom(const std::string& root, std::string path, const GroupFiles& files) {
    uint64_t room = kNoMemoryLimit;
    for (;;) {
        for (const char* mount : files.mounts) {
            if (*mount != '\0') {
                room = std::min(room, groupRoom(std::string(root).append(mount).append(path), files));
            }
        }
        if (path.empty()) {
            return room;
        }
        path.resize(path.rfind('/'));
    }
}

bool lists(std::string_view controllers, std::string_view wanted) {
    while (!controllers.empty()) {
        const std::string_view one = controllers.substr(0, controllers.find(','));
        if (one == wanted) {
            return true;
        }
        controllers.remove_prefix(std::min(one.size() + 1, controllers.size()));
    }
    return false;
}

/// Of a line "number:controllers:/path".
uint64_t lineRoom(const std::string& root, const std::string& line) {
    const size_t first = line.find(':');
    const size_t second = line.find(':', first + 1);
    if (first == std::string::npos || second == std::string::npos || line.find('/', second) != second + 1) {
        return kNoMemoryLimit;
    }
    const std::string_view controllers = std::string_view(line).substr(first + 1, second - first - 1);
    std::string path = line.substr(second + 1);
    path.resize(path.find_last_not_of('/') + 1);
    if (controllers.empty()) {
        return pathRoom(root, path, kVersion2);
    }
    return lists(controllers, "memory") ? pathRoom(root, path, kVersion1) : kNoMemoryLimit;
}

}  // namespace

uint64_t systemMemoryRoom(const std::string& root) {
    const uint64_t available = numberAfter(root + "/proc/meminfo", "MemAvailable:") * 1024;
    uint64_t room = available > 0 ? available : kNoMemoryLimit;
    std::ifstream groups(root + "/proc/self/cgroup");
    std::string line;
    while (std::getline(groups, line)) {
        room = std::min(room, lineRoom(root, line));
    }
    return room;
}

}  // namespace tarno2
