#include "core/recording/recording_progress.h"

#include <algorithm>
#include <cmath>

namespace tarno2 {

namespace {

constexpr uint64_t kMarkPeriodMs = 250;
constexpr uint64_t kLeastSpanMs = 500;  // milliseconds count too much in less
constexpr uint64_t kStallMs = 500;

}  // namespace

void NewestBlock::put(const BlockMark& mark) noexcept {
    ++changes_;
    session_ = mark.session;
    bytes_ = mark.bytes;
    time_ = mark.time;
    ++changes_;
}

std::optional<BlockMark> NewestBlock::get() const noexcept {
    const uint32_t before = changes_;
    const BlockMark mark{session_, bytes_, time_};
    return before % 2 == 0 && changes_ == before ? std::optional(mark) : std::nullopt;
}

void RecordingProgress::begin(StopRule rule, double stopSeconds, uint64_t stopBytes, uint64_t now) {
    *this = {};
    rule_ = rule;
    stopSeconds_ = stopSeconds;
    stopBytes_ = stopBytes;
    start_ = now;
}

void RecordingProgress::block(uint64_t bytes, uint64_t time) {
    const Mark mark{time, bytes};
    if (count_ == 0) {
        remember(mark);
    } else if (time <= newest_.time || bytes < newest_.bytes) {
        return;
    } else {
        longestGap_ = std::max(longestGap_, time - newest_.time);
    }
    newest_ = mark;
    if (time >= marks_[(oldest_ + count_ - 1) % marks_.size()].time + kMarkPeriodMs) {
        remember(mark);
    }
}

void RecordingProgress::remember(const Mark& mark) {
    if (count_ < marks_.size()) {
        marks_[count_++] = mark;
    } else {
        marks_[oldest_] = mark;
        oldest_ = (oldest_ + 1) % marks_.size();
    }
}

// From block to block: between them nothing comes, and a steady stream would seem to sway. A stream that stands still
// is told from one whose next block is not due yet by the blocks that came before.
std::optional<double> RecordingProgress::rate(uint64_t now) const {
    const Mark& then = marks_[oldest_];
    if (count_ == 0 || newest_.time < then.time + kLeastSpanMs) {
        return std::nullopt;
    }
    const bool stands = now > newest_.time + 2 * longestGap_ + kStallMs;
    const uint64_t until = stands ? now : newest_.time;
    return static_cast<double>(newest_.bytes - then.bytes) * 1000.0 / static_cast<double>(until - then.time);
}

bool DiskWatch::fallsBehind(uint64_t waitingBytes, uint64_t bufferBytes) {
    const bool before = behind_;
    behind_ = waitingBytes > bufferBytes / 2 || (behind_ && waitingBytes >= bufferBytes / 4);
    return behind_ && !before;
}

RecordingFigures RecordingProgress::update(uint64_t bytes, uint64_t now) {
    RecordingFigures figures;
    const uint64_t elapsedMs = now > start_ ? now - start_ : 0;
    figures.elapsedSeconds = elapsedMs / 1000;
    figures.bytesPerSecond = rate(now);
    double done = 0.0;
    if (rule_ == StopRule::Time && stopSeconds_ > 0.0) {
        const double left = std::max(stopSeconds_ - static_cast<double>(elapsedMs) / 1000.0, 0.0);
        figures.remainingSeconds = static_cast<uint64_t>(std::ceil(left));
        done = 1.0 - left / stopSeconds_;
    } else if (rule_ == StopRule::Size && stopBytes_ > 0) {
        const uint64_t left = bytes < stopBytes_ ? stopBytes_ - bytes : 0;
        if (figures.bytesPerSecond.value_or(0.0) > 0.0) {
            const double seconds = std::ceil(static_cast<double>(left) / *figures.bytesPerSecond);
            figures.remainingSeconds = static_cast<uint64_t>(std::min(seconds, 1e15));
        }
        done = 1.0 - static_cast<double>(left) / static_cast<double>(stopBytes_);
    } else {
        return figures;
    }
    figures.percent = static_cast<int>(std::clamp(done, 0.0, 1.0) * 100.0);
    return figures;
}

}  // namespace tarno2
