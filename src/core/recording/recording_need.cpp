#include "core/recording/recording_need.h"

#include <algorithm>
#include <cmath>

namespace tarno2 {

namespace {

constexpr double kBytesPerMebibyte = 1024.0 * 1024.0;

/// Bytes of the pieces that the recording is cut into; 0: it is not cut.
double pieceBytes(const RecordingWish& settings, const DiskFacts& disk, double frameBytes) {
    auto bytes = static_cast<double>(disk.maximumFileSize);
    if (settings.cut && !settings.automaticCut) {
        const double asked = settings.cutMegabytes * kBytesPerMebibyte;
        if (asked > 0.0) {
            bytes = bytes > 0.0 ? std::min(bytes, asked) : asked;
        }
    }
    // A frame is never parted.
    return frameBytes > 0.0 && bytes > frameBytes ? std::floor(bytes / frameBytes) * frameBytes : bytes;
}

}  // namespace

double sampleRate(const RecordingWish& settings, const BoardFacts& board) {
    const auto channels = static_cast<double>(settings.channels.size());
    if ((settings.boardMode & kBoardExternalClock) != 0 || settings.channels.empty()) {
        return 0.0;
    }
    if ((settings.boardMode & kBoardPacketMode) != 0) {
        return std::max(settings.packetFrequency, 0.0) * channels;
    }
    const double frequency = std::max(settings.frequency, 0.0);
    return frequency * (board.perChannelFrequency ? channels : 1.0);
}

RecordingNeed recordingNeed(const RecordingWish& settings, const BoardFacts& board, const DiskFacts& disk) {
    RecordingNeed need;
    const double width = board.sampleWidth();
    need.bytesPerSecond = sampleRate(settings, board) * width / std::max(settings.decimation, 1);
    if (settings.stopRule == StopRule::Size) {
        need.totalBytes = static_cast<double>(settings.stopBytes);
    } else if (settings.stopRule == StopRule::Time && settings.stopSeconds > 0.0) {
        // The stop timer counts whole seconds.
        need.totalBytes = need.bytesPerSecond * std::ceil(settings.stopSeconds);
    }
    const double piece = pieceBytes(settings, disk, width * static_cast<double>(settings.channels.size()));
    if (piece > 0.0) {
        need.pieces = static_cast<uint64_t>(std::min(std::ceil(need.totalBytes / piece), 1e18));
    }
    if (need.totalBytes <= 0.0) {
        need.pieces = settings.cut ? 0 : 1;
    }
    return need;
}

double diskLastsSeconds(const RecordingNeed& need, uint64_t freeBytes) {
    return need.known() ? static_cast<double>(freeBytes) / need.bytesPerSecond : -1.0;
}

bool diskTooSlow(const RecordingNeed& need, double diskSpeed) {
    return diskSpeed > 0.0 && need.megabytesPerSecond() > diskSpeed;
}

bool diskTooSmall(const RecordingNeed& need, uint64_t freeBytes) {
    return need.totalBytes > static_cast<double>(freeBytes);
}

}  // namespace tarno2
