#include "platform/volume.h"

#include <array>
#include <windows.h>

#include "platform/file.h"
#include "platform/paths.h"

namespace tarno2 {

namespace {

/// The path from its root on; empty when the system can't tell.
std::string fullPath(const std::string& path) {
    std::array<char, 4096> buffer{};
    const DWORD length = GetFullPathNameA(path.c_str(), buffer.size(), buffer.data(), nullptr);
    return length == 0 || length >= buffer.size() ? std::string() : std::string(buffer.data(), length);
}

/// The nearest folder on the way up that exists; the root when none does.
std::string nearestFolder(std::string path) {
    while (!isDirectory(path)) {
        std::string parent = parentFolder(path);
        if (parent.empty() || parent == path) {
            break;
        }
        path = std::move(parent);
    }
    return path;
}

}  // namespace

VolumeStatus queryVolume(const std::string& path, VolumeInfo& info) {
    const std::string full = path.empty() ? path : fullPath(path);
    if (full.empty()) {
        return VolumeStatus::NoPath;
    }
    // A share that can't be reached has no folder to look at, and is none of this computer's all the same.
    if (full.starts_with("\\\\")) {
        return VolumeStatus::NotLocal;
    }
    const std::string folder = nearestFolder(full);
    std::array<char, MAX_PATH + 1> root{};
    if (GetVolumePathNameA(folder.c_str(), root.data(), root.size()) == 0) {
        return VolumeStatus::Unknown;
    }
    const UINT type = GetDriveTypeA(root.data());
    if (type == DRIVE_REMOTE) {
        return VolumeStatus::NotLocal;
    }
    std::array<char, MAX_PATH + 1> fileSystem{};
    ULARGE_INTEGER available{};
    ULARGE_INTEGER total{};
    if (type == DRIVE_NO_ROOT_DIR ||
        GetVolumeInformationA(root.data(), nullptr, 0, nullptr, nullptr, nullptr, fileSystem.data(),
                              fileSystem.size()) == 0 ||
        GetDiskFreeSpaceExA(joinPath(folder, "").c_str(), &available, &total, nullptr) == 0) {
        return VolumeStatus::Unknown;
    }
    info.fileSystem = fileSystem.data();
    info.root = joinPath(root.data(), "");
    info.freeBytes = available.QuadPart;
    info.totalBytes = total.QuadPart;
    return VolumeStatus::Ok;
}

}  // namespace tarno2
