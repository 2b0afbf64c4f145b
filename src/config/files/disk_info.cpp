#include "config/files/disk_info.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "language/language_table.h"
#include "platform/ascii_case.h"
#include "platform/c_locale.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "platform/volume.h"

namespace tarno2 {

namespace {

constexpr int32_t kUnknownFileSystem = -4;
constexpr int32_t kOtherFileSystem = 100;

struct FileSystem {
    const char* name;
    int32_t type;
    uint64_t maximumFileSize;
};

// What a signed 64-bit file position can address: file systems that hold more are bounded by it.
constexpr uint64_t kLargestOffset = 0x7FFFFFFFFFFFFFFF;
constexpr uint64_t kFourGib = 0xFFFFFFFF;

// Sizes of the Linux file systems are those of 4096-byte blocks. The numbers of the types are kept: new ones go last.
constexpr FileSystem kFileSystems[] = {
    {"FAT16", 1, kFourGib},           {"FAT32", 2, kFourGib},
    {"NTFS", 3, 0x00000FFFFFFF0000},  {"FAT", 4, kFourGib},
    {"ext2", 5, 2194719883264},                                           // 2^32 sectors less the blocks of pointers
    {"ext3", 6, 2194719883264},       {"ext4", 7, 0xFFFFFFFFULL * 4096},  // 32-bit numbers of blocks
    {"xfs", 8, kLargestOffset},       {"btrfs", 9, kLargestOffset},
    {"tmpfs", 10, kLargestOffset},    {"overlay", 11, kLargestOffset},
    {"exFAT", 12, kLargestOffset},    {"f2fs", 13, 4329687105536},  // 1018 block numbers a node, three levels deep
    {"zfs", 14, kLargestOffset},      {"ReFS", 15, 35'000'000'000'000'000},
    {"jfs", 16, 1ULL << 52},          {"ramfs", 17, kLargestOffset},
    {"bcachefs", 18, kLargestOffset},
};

const FileSystem* findFileSystem(const std::string& name) {
    const auto* found = std::find_if(std::begin(kFileSystems), std::end(kFileSystems),
                                     [&](const FileSystem& known) { return sameIgnoringCase(name, known.name); });
    return found == std::end(kFileSystems) ? nullptr : found;
}

}  // namespace

int32_t DiskInfo(const std::string& filePath, DiskFacts& facts) {
    facts = {};
    VolumeInfo volume;
    switch (queryVolume(filePath, volume)) {
        case VolumeStatus::NoPath:
            return facts.type = -1;
        case VolumeStatus::NotLocal:
            return facts.type = -2;
        case VolumeStatus::Unknown:
            return facts.type = -3;
        case VolumeStatus::Ok:
            break;
    }
    facts.fileSystem = volume.fileSystem;
    facts.freeBytes = volume.freeBytes;
    if (const FileSystem* known = findFileSystem(volume.fileSystem)) {
        facts.type = known->type;
        facts.maximumFileSize = known->maximumFileSize;
    } else if (volume.largestPosition > 0) {
        facts.type = kOtherFileSystem;
        facts.maximumFileSize = volume.largestPosition;
    } else {
        facts.type = kUnknownFileSystem;
    }
    return facts.type;
}

std::string formatFreeSpace(uint64_t bytes) {
    constexpr std::array kUnits = {TextId::UnitBytes, TextId::UnitKilobytes, TextId::UnitMegabytes,
                                   TextId::UnitGigabytes};
    auto value = static_cast<double>(bytes);
    size_t divisions = 0;
    while (value > 1024.0 && divisions + 1 < kUnits.size()) {
        value /= 1024.0;
        ++divisions;
    }
    return formatText(divisions == 0 ? "%.0f" : "%.1f", value) + text(kUnits[divisions]);
}

}  // namespace tarno2
