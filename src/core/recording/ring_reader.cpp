#include "core/recording/ring_reader.h"

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

// Where events are not counted, two that come as one are told by the count; a half that was counted before the last
// pass has had its event.
void RingReader::halvesFilled(uint64_t halves) {
    signalled_ = std::max(signalled_ + halves * (ringSize_ / 2), countedHalves());
    if (halves > 0) {
        countIsNews_ = false;
    }
}

void RingReader::samplesWritten(uint64_t count) {
    counted_ = std::max(counted_, count);
    signalled_ = std::min(signalled_, countedHalves());
    countIsNews_ = true;
}

uint64_t RingReader::countedHalves() const {
    const uint64_t half = ringSize_ / 2;
    return half == 0 ? 0 : counted_ / half * half;
}

// A frame that was cut short is none.
void RingReader::streamEnds(uint64_t position) {
    end_ = position / channelCount_ * channelCount_;
}

// A board that goes on writing behind the end of its stream may reach what is unread.
bool RingReader::overwritten() const {
    return std::max(written(), end_ ? counted_ : 0) - readPosition_ > ringSize_;
}

uint64_t RingReader::written() const {
    const uint64_t told = countIsNews_ ? counted_ : signalled_;
    return std::max(end_.value_or(told), readPosition_);
}

uint32_t RingReader::wholeFrames(uint64_t samples) const {
    const uint64_t limited = std::min<uint64_t>(samples, ringSize_);
    return static_cast<uint32_t>(limited / channelCount_ * channelCount_);
}

RingReader::Part RingReader::nextHalves() const {
    const uint64_t end = std::max(halvesPosition(), readPosition_);
    Part part = unread(end);
    // Of a half that was begun the rest is read as the whole would be.
    const uint64_t half = std::max(ringSize_ / 2, 1U);
    const bool wrapped = end % ringSize_ < part.offset;
    if (!wrapped && end - readPosition_ / half * half <= threshold_) {
        part.belowThreshold = true;
        part.count = 0;
    }
    return part;
}

RingReader::Part RingReader::unread(uint64_t end) const {
    Part part;
    part.offset = static_cast<uint32_t>(readPosition_ % ringSize_);
    part.count = wholeFrames(end > readPosition_ ? end - readPosition_ : 0);
    return part;
}

RingReader::Part RingReader::nextStretch(uint64_t end) const {
    return unread(std::min(end, readPosition_ + ringSize_ - readPosition_ % ringSize_));
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
