#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/clock.h"

namespace tarno2 {

/// Result codes of `DiskSpeedTester::Measure`.
enum DiskSpeedCode : int32_t {
    kDiskSpeedOk = 0,
    kDiskSpeedNoFolder = -1,     ///< the path holds no separator
    kDiskSpeedNoFile = -2,       ///< the temporary file could not be made
    kDiskSpeedNoPath = -3,       ///< no path was given
    kDiskSpeedNoMemory = -4,     ///< no room for the block to write
    kDiskSpeedWriteFailed = -5,  ///< a write failed, or no time could be measured
    kDiskSpeedOff = -6           ///< the test is switched off
};

/// Measures how fast the disk under a folder takes large blocks, once a folder; the results are kept for the rest of
/// the run. Writes 25 MiB or more to a temporary file and leaves neither it nor any folder behind. Window thread.
class DiskSpeedTester {
public:
    /// `clock`: milliseconds of a clock that never goes back.
    explicit DiskSpeedTester(std::function<uint64_t()> clock = tickCount);

    void SetEnabled(bool enabled) { enabled_ = enabled; }
    [[nodiscard]] bool enabled() const { return enabled_; }

    /// Measures the disk under the folder of a file that need not be there yet; `filePath` may be null. Returns a
    /// DiskSpeedCode; `speed`, MB/s, is set with kDiskSpeedOk only.
    [[nodiscard]] int32_t Measure(const char* filePath, double& speed);

    /// `Measure` would write to the disk now, which takes a while.
    [[nodiscard]] bool wouldWrite(const char* filePath) const;

private:
    struct MeasuredFolder {
        std::string folder;
        double speed = 0.0;  ///< MB/s (10^6 bytes)
    };

    [[nodiscard]] const MeasuredFolder* remembered(const std::string& folder) const;
    [[nodiscard]] int32_t measureFolder(const std::string& folder, const std::byte* block, double& speed);

    std::function<uint64_t()> clock_;
    bool enabled_ = true;
    std::vector<MeasuredFolder> measured_;
};

}  // namespace tarno2
