#pragma once

#include <cstdint>

#include "config/files/disk_info.h"
#include "core/devices/board_facts.h"
#include "core/recording/recording_shell.h"

namespace tarno2 {

/// What a recording will write, as far as its settings tell before it runs.
struct RecordingNeed {
    double bytesPerSecond = 0.0;  ///< 0: not known (external clock, no channel, no frequency)
    double totalBytes = 0.0;      ///< 0: no end is known
    uint64_t pieces = 1;          ///< files that hold it; 0: not known
    [[nodiscard]] bool known() const { return bytesPerSecond > 0.0; }
    [[nodiscard]] double bytesPerHour() const { return bytesPerSecond * 3600.0; }
    [[nodiscard]] double megabytesPerSecond() const { return bytesPerSecond / 1e6; }
};

/// `disk`: where it is to go; decides the pieces of an automatic cut.
[[nodiscard]] RecordingNeed recordingNeed(const RecordingWish& settings, const BoardFacts& board,
                                          const DiskFacts& disk);

/// How long the free space lasts, seconds; negative when the need is not known.
[[nodiscard]] double diskLastsSeconds(const RecordingNeed& need, uint64_t freeBytes);
/// The disk takes less than the recording needs. `diskSpeed`: MB/s, 0 when it was not measured.
[[nodiscard]] bool diskTooSlow(const RecordingNeed& need, double diskSpeed);
/// The recording has an end, and more bytes by then than the disk has free.
[[nodiscard]] bool diskTooSmall(const RecordingNeed& need, uint64_t freeBytes);
/// Samples a second over all active channels, before decimation; 0 when not known.
[[nodiscard]] double sampleRate(const RecordingWish& settings, const BoardFacts& board);

}  // namespace tarno2
