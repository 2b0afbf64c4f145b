#include "core/ring_reader.h"

#include <algorithm>

namespace tarno2 {

namespace {

constexpr double kBytesPerMegabyte = 1024.0 * 1024.0;
constexpr double kMegabytesPerByte = 9.536743e-07;
constexpr uint32_t kSmallestThreshold = 100;
constexpr int64_t kUsualCheckSeconds = 20;

uint32_t toUint32(double value) {
    return value >= 4294967295.0 ? 0xFFFFFFFFU : static_cast<uint32_t>(std::max(value, 0.0));
}

int64_t secondsForCheck(double frequency) {
    const double seconds = frequency > 0.0 ? 10240.0 / frequency : 0.0;
    const auto whole = static_cast<int64_t>(std::min(seconds, 1e15));
    return whole <= 1 ? kUsualCheckSeconds : whole;
}

}  // namespace

StreamTiming streamTiming(double frequency, uint32_t frequencyFactor, uint32_t sampleWidth, uint32_t ringSize,
                          bool hotPlug) {
    StreamTiming timing;
    timing.megabytesPerSecond = frequencyFactor * static_cast<double>(sampleWidth) * frequency * kMegabytesPerByte;
    const bool fast = timing.megabytesPerSecond > 1.0;
    if (fast) {
        timing.threshold = ringSize / 2;
    } else {
        const double fifth = timing.megabytesPerSecond * kBytesPerMegabyte / (5.0 * sampleWidth);
        timing.threshold = std::min(toUint32(fifth), ringSize / 2);
    }
    timing.threshold = std::max(timing.threshold, kSmallestThreshold);
    timing.maximumSleep =
        fast ? toUint32(timing.threshold * 1000.0 / (timing.megabytesPerSecond * kBytesPerMegabyte) / 2.0) : 1;
    if (hotPlug) {
        timing.maximumSleep = 1;
        timing.threshold = kSmallestThreshold;
    }
    // A freshly filled half always counts as available, else a ring that is read by halves would never be read.
    timing.threshold = std::min(timing.threshold, std::max(ringSize / 2, 1U) - 1);
    timing.checkSeconds = secondsForCheck(frequency);
    return timing;
}

void RingReader::halvesFilled(uint64_t halves) {
    halvesPosition_ += halves * (ringSize_ / 2);
}

void RingReader::samplesWritten(uint64_t count) {
    counted_ = std::max(counted_, count);
    const uint64_t half = ringSize_ / 2;
    halvesPosition_ = std::max(halvesPosition_, half == 0 ? 0 : counted_ / half * half);
}

uint32_t RingReader::wholeFrames(uint64_t samples) const {
    const uint64_t limited = std::min<uint64_t>(samples, ringSize_);
    return static_cast<uint32_t>(limited / channelCount_ * channelCount_);
}

RingReader::Part RingReader::nextHalves() const {
    Part part;
    part.offset = static_cast<uint32_t>(readPosition_ % ringSize_);
    const uint64_t available = halvesPosition_ - readPosition_;
    const bool wrapped = halvesPosition_ % ringSize_ < part.offset;
    if (!wrapped && available <= threshold_) {
        part.belowThreshold = true;
        return part;
    }
    part.count = wholeFrames(available);
    return part;
}

RingReader::Part RingReader::nextRest(uint64_t end) const {
    Part part;
    part.offset = static_cast<uint32_t>(readPosition_ % ringSize_);
    if (end > readPosition_) {
        part.count = wholeFrames(std::min<uint64_t>(end - readPosition_, ringSize_ - part.offset));
    }
    return part;
}

bool RingReader::overflows(const Part& part) const {
    // In a ring of a few samples ten elevenths would be less than the half that is always read.
    const uint64_t limit = std::max<uint64_t>(uint64_t{ringSize_} * 10 / 11, ringSize_ / 2 + 1);
    return overwritten() || written() - readPosition_ >= ringSize_ || part.count >= limit;
}

double RingReader::load() const {
    return ringSize_ == 0 ? 0.0 : static_cast<double>(written() - readPosition_) / ringSize_;
}

}  // namespace tarno2
