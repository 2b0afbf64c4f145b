#include "core/recording_progress.h"

#include <algorithm>
#include <cmath>

namespace tarno2 {

namespace {

constexpr uint64_t kMarkPeriodMs = 250;  // the boards' halves come twice a second: a rate needs a few of them

}  // namespace

void RecordingProgress::begin(StopRule rule, double stopSeconds, uint64_t stopBytes, uint64_t now) {
    rule_ = rule;
    stopSeconds_ = stopSeconds;
    stopBytes_ = stopBytes;
    start_ = now;
    oldest_ = 0;
    count_ = 0;
    remember({now, 0});
}

void RecordingProgress::remember(const Mark& mark) {
    if (count_ < marks_.size()) {
        marks_[count_++] = mark;
    } else {
        marks_[oldest_] = mark;
        oldest_ = (oldest_ + 1) % marks_.size();
    }
}

double RecordingProgress::rateUntil(const Mark& now) const {
    const Mark& then = marks_[oldest_];
    if (now.time <= then.time || now.bytes < then.bytes) {
        return 0.0;
    }
    return static_cast<double>(now.bytes - then.bytes) * 1000.0 / static_cast<double>(now.time - then.time);
}

RecordingFigures RecordingProgress::update(uint64_t bytes, uint64_t now) {
    RecordingFigures figures;
    const uint64_t elapsedMs = now > start_ ? now - start_ : 0;
    figures.elapsedSeconds = elapsedMs / 1000;
    figures.bytesPerSecond = rateUntil({now, bytes});
    const Mark& newest = marks_[(oldest_ + count_ - 1) % marks_.size()];
    if (now >= newest.time + kMarkPeriodMs) {
        remember({now, bytes});
    }
    double done = 0.0;
    if (rule_ == StopRule::Time && stopSeconds_ > 0.0) {
        const double left = std::max(stopSeconds_ - static_cast<double>(elapsedMs) / 1000.0, 0.0);
        figures.remainingSeconds = static_cast<uint64_t>(std::ceil(left));
        done = 1.0 - left / stopSeconds_;
    } else if (rule_ == StopRule::Size && stopBytes_ > 0) {
        const uint64_t left = bytes < stopBytes_ ? stopBytes_ - bytes : 0;
        if (figures.bytesPerSecond > 0.0) {
            const double seconds = std::ceil(static_cast<double>(left) / figures.bytesPerSecond);
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
