#pragma once

#include <cstdint>
#include <string>

namespace tarno2 {

/// What the disk of a recording can hold.
struct DiskFacts {
    int32_t type = -4;             ///< code of the file system; see `DiskInfo`
    std::string fileSystem;        ///< its name
    uint64_t maximumFileSize = 0;  ///< bytes
    uint64_t freeBytes = 0;
};

/// Examines the volume that will receive a file. Returns the type of its file system: 1 "FAT16", 2 "FAT32", 3 "NTFS",
/// 4 "FAT", from 5 on the other ones we know, 100 for one that we don't know on a system that takes files of any size;
/// -4 for an unknown one elsewhere (largest file 0); or -1 when the path is invalid, -2 when the volume is not local,
/// -3 when it can't be examined.
[[nodiscard]] int32_t DiskInfo(const std::string& filePath, DiskFacts& facts);

/// A byte count for people: divided by 1024 while it is greater than 1024, at most three times, with its unit.
[[nodiscard]] std::string formatFreeSpace(uint64_t bytes);

}  // namespace tarno2
