#include "platform/volume.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <optional>
#include <sstream>
#include <string_view>
#include <sys/statfs.h>
#include <sys/statvfs.h>

#include "platform/c_locale.h"
#include "platform/file.h"
#include "platform/paths.h"

namespace tarno2 {

namespace {

struct Mount {
    std::string point;
    std::string type;
};

/// The mount table writes blanks and backslashes in names as three octal digits ("\040").
std::string unescaped(const std::string& text) {
    const auto octal = [](char c) { return c >= '0' && c <= '7'; };
    std::string plain;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 3 < text.size() && octal(text[i + 1]) && octal(text[i + 2]) && octal(text[i + 3])) {
            plain += static_cast<char>((text[i + 1] - '0') * 64 + (text[i + 2] - '0') * 8 + (text[i + 3] - '0'));
            i += 3;
        } else {
            plain += text[i];
        }
    }
    return plain;
}

/// "36 35 98:0 /root /mount/point options [tags...] - type source options"
std::optional<Mount> parseMount(const std::string& line) {
    std::istringstream words(line);
    std::string skipped;
    Mount mount;
    words >> skipped >> skipped >> skipped >> skipped >> mount.point;
    while (words >> skipped && skipped != "-") {
    }
    if (!(words >> mount.type)) {
        return std::nullopt;
    }
    mount.point = unescaped(mount.point);
    return mount;
}

bool lies(const std::string& folder, const std::string& mountPoint) {
    return mountPoint == "/" || folder == mountPoint ||
           (folder.starts_with(mountPoint) && folder[mountPoint.size()] == '/');
}

/// The mount that a folder lies in: the deepest one, of several on one point the last.
std::optional<Mount> mountOf(const std::string& folder) {
    std::optional<Mount> best;
    std::ifstream table("/proc/self/mountinfo");
    for (std::string line; std::getline(table, line);) {
        auto mount = parseMount(line);
        if (mount && lies(folder, mount->point) && (!best || mount->point.size() >= best->point.size())) {
            best = std::move(mount);
        }
    }
    return best;
}

/// What the kernel says of the file system itself, for folders that no line of the mount table holds: a program in a
/// changed root sees its own root, but not the mount that it lies in. The numbers are those of statfs(2).
std::optional<Mount> mountByMagic(const std::string& folder) {
    struct Magic {
        uint32_t number;
        const char* type;
    };
    constexpr std::array<Magic, 16> kMagics = {{{0xEF53, "ext4"},
                                                {0x58465342, "xfs"},
                                                {0x9123683E, "btrfs"},
                                                {0x01021994, "tmpfs"},
                                                {0x794C7630, "overlay"},
                                                {0xF2F52010, "f2fs"},
                                                {0x2FC12FC1, "zfs"},
                                                {0x4D44, "vfat"},
                                                {0x2011BAB0, "exfat"},
                                                {0x7366746E, "ntfs3"},
                                                {0x5346544E, "ntfs"},
                                                {0x6969, "nfs"},
                                                {0xFF534D42, "cifs"},
                                                {0xFE534D42, "smb3"},
                                                {0x01021997, "9p"},
                                                {0x00C36400, "ceph"}}};
    struct statfs facts {};
    if (statfs(folder.c_str(), &facts) != 0) {
        return std::nullopt;
    }
    const auto number = static_cast<uint32_t>(facts.f_type);
    const auto* const found =
        std::find_if(kMagics.begin(), kMagics.end(), [&](const Magic& magic) { return magic.number == number; });
    return Mount{"/", found == kMagics.end() ? formatText("0x%x", number) : found->type};
}

bool isNetworkType(std::string_view type) {
    constexpr std::array<std::string_view, 21> kTypes = {
        "nfs",       "nfs4",       "cifs",           "smb3",       "smbfs",         "9p",          "afs",
        "ceph",      "coda",       "davfs",          "ncpfs",      "lustre",        "beegfs",      "glusterfs",
        "fuse.ceph", "fuse.sshfs", "fuse.glusterfs", "fuse.davfs", "fuse.smbnetfs", "fuse.rclone", "fuse.curlftpfs"};
    return std::find(kTypes.begin(), kTypes.end(), type) != kTypes.end();
}

std::string familiarName(const std::string& type) {
    if (type == "vfat") {
        return "FAT32";
    }
    if (type == "msdos") {
        return "FAT16";
    }
    return type == "ntfs" || type == "ntfs3" || type == "fuseblk" ? "NTFS" : type;
}

/// The nearest folder on the way up that exists, without symbolic links; empty when there is none.
std::string nearestFolder(std::string path) {
    while (!path.empty() && !isDirectory(path)) {
        std::string parent = parentFolder(path);
        if (parent == path) {
            return {};
        }
        path = std::move(parent);
    }
    char* real = realpath(path.c_str(), nullptr);
    if (real == nullptr) {
        return {};
    }
    std::string folder = real;
    std::free(real);  // NOLINT(cppcoreguidelines-no-malloc): realpath allocates so
    return folder;
}

}  // namespace

VolumeStatus queryVolume(const std::string& path, VolumeInfo& info) {
    if (path.empty()) {
        return VolumeStatus::NoPath;
    }
    const std::string folder = nearestFolder(isAbsolutePath(path) ? path : joinPath(currentFolder(), path));
    if (folder.empty()) {
        return VolumeStatus::NoPath;
    }
    auto mount = mountOf(folder);
    if (!mount) {
        mount = mountByMagic(folder);
    }
    if (!mount) {
        return VolumeStatus::Unknown;
    }
    if (isNetworkType(mount->type)) {
        return VolumeStatus::NotLocal;
    }
    struct statvfs facts {};
    if (statvfs(folder.c_str(), &facts) != 0) {
        return VolumeStatus::Unknown;
    }
    info.fileSystem = familiarName(mount->type);
    info.root = joinPath(mount->point, "");
    info.freeBytes = uint64_t{facts.f_bavail} * facts.f_frsize;
    info.totalBytes = uint64_t{facts.f_blocks} * facts.f_frsize;
    info.largestPosition = std::numeric_limits<int64_t>::max();
    return VolumeStatus::Ok;
}

}  // namespace tarno2
