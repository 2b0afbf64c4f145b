#include "core/storage/disk_margin.h"

#include <algorithm>

#include "config/logs/debug_log.h"
#include "platform/clock.h"
#include "platform/volume.h"

namespace tarno2 {

namespace {

constexpr uint64_t kLargestUsualMargin = uint64_t{64} << 20U;
constexpr uint64_t kPeriodMs = 1000;

uint64_t marginOf(uint64_t volumeBytes, double bytesPerSecond) {
    const uint64_t usual = std::min(kLargestUsualMargin, volumeBytes / 16);
    const double second = std::min(bytesPerSecond, static_cast<double>(volumeBytes) / 2.0);
    return std::max(usual, static_cast<uint64_t>(second));
}

}  // namespace

void DiskMargin::watch(const std::string& folder, double bytesPerSecond) {
    folder_ = folder.empty() ? "." : folder;
    bytesPerSecond_ = bytesPerSecond;
    asked_ = false;
}

bool DiskMargin::reached(uint64_t written, uint64_t waiting) {
    if (folder_.empty()) {
        return false;
    }
    const uint64_t now = tickCount();
    if (asked_ && now - askedAt_ < kPeriodMs && written - askedWritten_ + waiting < usable_) {
        return false;
    }
    VolumeInfo volume;
    if (queryVolume(folder_, volume) != VolumeStatus::Ok) {
        DEBUG_LOG("The free space in \"%s\" is not known, so none is kept", folder_.c_str());
        folder_.clear();
        return false;
    }
    asked_ = true;
    askedAt_ = now;
    askedWritten_ = written;
    const uint64_t margin = marginOf(volume.totalBytes, bytesPerSecond_);
    usable_ = volume.freeBytes > margin ? volume.freeBytes - margin : 0;
    if (waiting < usable_) {
        return false;
    }
    DEBUG_LOG("!!!!! Free space = %llu, margin = %llu, still to be written = %llu",
              static_cast<unsigned long long>(volume.freeBytes), static_cast<unsigned long long>(margin),
              static_cast<unsigned long long>(waiting));
    return true;
}

}  // namespace tarno2
