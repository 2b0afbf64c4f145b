#pragma once

#include <cstdint>
#include <string>

namespace tarno2 {

enum class VolumeStatus {
    Ok,
    NoPath,    ///< the path names no place (empty, or its folder can't be told)
    NotLocal,  ///< a network mount
    Unknown    ///< the volume can't be examined
};

/// What a disk says of itself.
struct VolumeInfo {
    std::string fileSystem;  ///< "NTFS", "FAT32", "ext4", ...: Windows names where the system has one
    std::string root;        ///< root of the volume, with its separator
    uint64_t freeBytes = 0;  ///< what this user may still write
    uint64_t totalBytes = 0;
};

/// Examines the volume that holds `path`, which may name a file or folder that does not exist yet: the nearest folder
/// that does decides. `vfat` is reported as "FAT32", `msdos` as "FAT16", `ntfs`, `ntfs3` and `fuseblk` as "NTFS".
[[nodiscard]] VolumeStatus queryVolume(const std::string& path, VolumeInfo& info);

}  // namespace tarno2
