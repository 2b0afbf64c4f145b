#include "config/files/disk_speed.h"

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

#include "platform/file.h"
#include "platform/paths.h"

namespace tarno2 {

namespace {

constexpr size_t kBlockSize = 0x500000;
constexpr uint32_t kBlocksPerRound = 5;
constexpr uint32_t kRoundLimit = 1000;
// Bytes of the first round. It stands for the later, larger ones too, which understates disks that are too fast for the
// clock: a speed is a promise to the operator.
constexpr double kSpeedNumerator = 26214400.0;
constexpr double kTimeFactor = 1000.0;
constexpr const char* kTemporaryPrefix = "HDD_TEST_TEMP";

/// The folder that `filePath` lies in; a root keeps its separator. False when the path names none.
bool folderOf(const char* filePath, std::string& folder) {
    if (filePath == nullptr || findLastSeparator(filePath) == std::string_view::npos) {
        return false;
    }
    folder = parentFolder(filePath);
    return true;
}

/// Makes the folders that a path lacks, and removes them again.
class MissingFolders {
public:
    explicit MissingFolders(const std::string& folder) {
        std::vector<std::string> missing;
        for (std::string path = folder; !path.empty() && !isDirectory(path); path = parentFolder(path)) {
            missing.push_back(path);
        }
        for (; !missing.empty() && createDirectory(missing.back()).ok(); missing.pop_back()) {
            created_.push_back(missing.back());
        }
    }
    ~MissingFolders() {
        for (; !created_.empty(); created_.pop_back()) {
            removeDirectory(created_.back());
        }
    }
    MissingFolders(const MissingFolders&) = delete;
    MissingFolders& operator=(const MissingFolders&) = delete;

private:
    std::vector<std::string> created_;
};

/// A file for writing that is gone with the object.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& folder) {
        if (createTemporaryFile(folder, kTemporaryPrefix, path_).ok()) {
            usable_ = file_.openPlain(path_, FileMode::CreateAlways, FileAccess::Write, FileShare::None).ok();
        }
    }
    ~TemporaryFile() {
        file_.close();
        if (!path_.empty()) {
            removeFile(path_);
        }
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    [[nodiscard]] bool usable() const { return usable_; }
    File& file() { return file_; }

private:
    std::string path_;
    File file_;
    bool usable_ = false;
};

/// What a round writes counts once it is on the disk: else it is memory that is measured.
bool writeBlocks(File& file, const std::byte* block, uint32_t blocks) {
    for (uint32_t i = 0; i < blocks; ++i) {
        size_t done = 0;
        if (!file.write(block, kBlockSize, done).ok()) {
            return false;
        }
    }
    return file.flush().ok();
}

}  // namespace

DiskSpeedTester::DiskSpeedTester(std::function<uint64_t()> clock) : clock_(std::move(clock)) {}

const DiskSpeedTester::MeasuredFolder* DiskSpeedTester::remembered(const std::string& folder) const {
    const auto found = std::find_if(measured_.begin(), measured_.end(),
                                    [&folder](const MeasuredFolder& known) { return known.folder == folder; });
    return found == measured_.end() ? nullptr : &*found;
}

bool DiskSpeedTester::wouldWrite(const char* filePath) const {
    std::string folder;
    return enabled_ && folderOf(filePath, folder) && remembered(folder) == nullptr;
}

int32_t DiskSpeedTester::Measure(const char* filePath, double& speed) {
    if (!enabled_) {
        return kDiskSpeedOff;
    }
    if (filePath == nullptr) {
        return kDiskSpeedNoPath;
    }
    std::string folder;
    if (!folderOf(filePath, folder)) {
        return kDiskSpeedNoFolder;
    }
    if (const MeasuredFolder* known = remembered(folder)) {
        speed = known->speed;
        return kDiskSpeedOk;
    }
    // What the block holds does not matter, and zeros would flatter a disk that compresses.
    const std::unique_ptr<std::byte[]> block(new (std::nothrow) std::byte[kBlockSize]);
    if (block == nullptr) {
        return kDiskSpeedNoMemory;
    }
    const int32_t code = measureFolder(folder, block.get(), speed);
    if (code == kDiskSpeedOk) {
        measured_.push_back({folder, speed});
    }
    return code;
}

int32_t DiskSpeedTester::measureFolder(const std::string& folder, const std::byte* block, double& speed) {
    const MissingFolders folders(folder);
    TemporaryFile temporary(folder);
    if (!temporary.usable()) {
        return kDiskSpeedNoFile;
    }
    for (uint32_t round = 1;; ++round) {
        const uint64_t begin = clock_();
        if (!writeBlocks(temporary.file(), block, kBlocksPerRound * round)) {
            return kDiskSpeedWriteFailed;
        }
        const uint64_t elapsed = clock_() - begin;
        if (elapsed != 0) {
            speed = kSpeedNumerator / (static_cast<double>(elapsed) * kTimeFactor);
            return kDiskSpeedOk;
        }
        if (round > kRoundLimit) {
            return kDiskSpeedWriteFailed;
        }
    }
}

}  // namespace tarno2
