#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "config/files/disk_info.h"
#include "config/files/disk_speed.h"
#include "language/text_ids.h"

namespace tarno2 {

/// Why a name can't be given to a recording. `EqualsDescription`: a file that stands beside the data needs it.
/// `Impossible`: the system can't have such a name, or control characters are in it.
enum class NameProblem { None, Empty, EqualsDescription, IsFolder, Impossible };
/// Checks a name as it was typed, before it gets an extension.
[[nodiscard]] NameProblem checkDataFileName(const std::string& name);

/// Result code of the check of a recording's name, as logs tell it: 0, or -5 for an empty name, -6 for the name of its
/// own description, -7 for a folder's, -8 for one that the system can't have.
[[nodiscard]] int32_t nameCheckCode(NameProblem problem);
/// What the user is told of it; nothing without a problem.
[[nodiscard]] std::optional<TextId> nameText(NameProblem problem);

/// What is known of the file that is to be recorded and of its disk.
struct FileNameFindings {
    int32_t nameCode = 0;           ///< of `nameCheckCode`
    std::optional<TextId> problem;  ///< what to tell the operator; then nothing below counts
    DiskFacts disk;
    int32_t speedCode = kDiskSpeedOff;  ///< DiskSpeedCode
    double speed = 0.0;                 ///< MB/s, with kDiskSpeedOk

    [[nodiscard]] bool diskKnown() const { return !problem && (disk.type > 0 || disk.type == -4); }
    /// With `speedKnown`; a disk's speed counts by 10^6.
    [[nodiscard]] double bytesPerSecond() const { return speed * 1e6; }
    [[nodiscard]] bool speedKnown() const { return diskKnown() && speedCode == kDiskSpeedOk; }
};

/// The file name was changed: checks it, examines its disk and measures the disk's speed, with a line in the debug log
/// for each. `beforeMeasuring` is called when the speed test is going to write. Window thread.
[[nodiscard]] FileNameFindings FileNameEditChange(const std::string& name, DiskSpeedTester& tester,
                                                  const std::function<void()>& beforeMeasuring = {});

}  // namespace tarno2
