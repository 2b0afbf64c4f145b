#include "tests/core/faulty_disk.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace tarno2::test {

class FaultyFile final : public DataFile {
public:
    explicit FaultyFile(FaultyDisk& disk) : disk_(disk), file_(makeSystemDataFile()) {}

    OsError create(const std::string& name) override {
        return disk_.allowCreate() ? file_->create(name) : FaultyDisk::error();
    }
    OsError write(const std::byte* data, size_t size, size_t& done) override {
        disk_.passGate();
        if (disk_.beforeWrite) {
            disk_.beforeWrite(disk_.writes_);
        }
        const size_t part = disk_.fitting(size);
        const OsError result = file_->write(data, part, done);
        written_ += done;
        return result.ok() && part < size && !disk_.shortWrites ? FaultyDisk::error() : result;
    }
    OsError truncate(uint64_t size) override { return file_->truncate(size); }
    OsError flush() override {
        const std::scoped_lock lock(disk_.mutex_);
        disk_.flushed_ += std::exchange(written_, 0);
        return disk_.failingFlush ? FaultyDisk::error() : file_->flush();
    }
    OsError close() override {
        disk_.passGate();
        if (disk_.beforeClose) {
            disk_.beforeClose();
        }
        const OsError result = file_->close();
        return disk_.failingClose ? FaultyDisk::error() : result;
    }
    [[nodiscard]] Named named(const std::string& name) const override { return file_->named(name); }

private:
    FaultyDisk& disk_;
    std::unique_ptr<DataFile> file_;
    uint64_t written_ = 0;  ///< since the last flush
};

DataFileMaker FaultyDisk::maker() {
    return [this] { return std::make_unique<FaultyFile>(*this); };
}

OsError FaultyDisk::error() {
    constexpr int kNoSpace = 28;  // on Windows some error, too
    return OsError(kNoSpace);
}

void FaultyDisk::hold() {
    const std::scoped_lock lock(mutex_);
    held_ = true;
}

void FaultyDisk::release() {
    const std::scoped_lock lock(mutex_);
    held_ = false;
    changed_.notify_all();
}

bool FaultyDisk::waitForHeld() {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(30), [this] { return waiting_ > 0; });
}

uint64_t FaultyDisk::flushedBytes() {
    const std::scoped_lock lock(mutex_);
    return flushed_;
}

void FaultyDisk::passGate() {
    std::unique_lock lock(mutex_);
    ++waiting_;
    changed_.notify_all();
    changed_.wait(lock, [this] { return !held_; });
    --waiting_;
}

bool FaultyDisk::allowCreate() {
    const std::scoped_lock lock(mutex_);
    return created_++ < failingCreate;
}

size_t FaultyDisk::fitting(size_t size) {
    const std::scoped_lock lock(mutex_);
    uint64_t part = std::min<uint64_t>(size, capacity - taken_);
    if (writes_++ % 2 == 1 && shortWrites) {
        part /= 2;
    }
    taken_ += part;
    return static_cast<size_t>(part);
}

}  // namespace tarno2::test
