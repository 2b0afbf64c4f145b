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
    /// Largest file that the system can address, whatever the file system: counts where that one is not known. 0 where
    /// file systems have limits of their own that have to be known.
    uint64_t largestPosition = 0;
};

/// Examines the volume that holds `path`, which may name a file or folder that does not exist yet: the nearest folder
/// that does decides. Elsewhere than on Windows a file system has the name that the table of mounts gives it, or, where
/// that has no line for the folder, the kernel's number for it ("0x65735546" when we know no name); `vfat` is reported
/// as "FAT32", `msdos` as "FAT16", `ntfs`, `ntfs3` and `fuseblk` as "NTFS".
[[nodiscard]] VolumeStatus queryVolume(const std::string& path, VolumeInfo& info);

}  // namespace tarno2
