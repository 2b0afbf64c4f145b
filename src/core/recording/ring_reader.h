#pragma once

#include <cstdint>
#include <optional>

namespace tarno2 {

/// The stream's constants that follow from its rate.
struct StreamTiming {
    double megabytesPerSecond = 0.0;  ///< 1,048,576 bytes
    uint32_t threshold = 0;           ///< samples that must be exceeded before a read that does not wrap
    uint32_t maximumSleep = 0;        ///< ms to sleep while they are not
    int64_t checkSeconds = 0;         ///< passes without data for longer than this end the recording
};

/// `ringSize` samples, `sampleWidth` bytes, `frequency` Hz as the driver counts it (`frequencyFactor` times a sample
/// stream's rate: the channel count when it counts per channel, else 1).
[[nodiscard]] StreamTiming streamTiming(double frequency, uint32_t frequencyFactor, uint32_t sampleWidth,
                                        uint32_t ringSize, bool hotPlug);

/// Keeps the place in a driver's ring. Positions are 64-bit counts of samples since the start, so that two unread
/// halves are told from none and an overwritten sample has an address. Plain arithmetic: no device, no thread.
class RingReader {
public:
    RingReader(uint32_t ringSize, uint32_t channelCount, uint32_t threshold)
        : ringSize_(ringSize), channelCount_(channelCount), threshold_(threshold) {}

    /// The driver's event said that so many further halves were filled. Once in a pass, before the count is asked.
    void halvesFilled(uint64_t halves);
    /// The driver said how many samples it has put into the ring since the start. As long as it does so, that counts,
    /// and events only say when to ask.
    void samplesWritten(uint64_t count);
    /// The driver said where its stream ends: all before `position` is in the ring, whatever was counted or signalled,
    /// and nothing behind it is read. Once.
    void streamEnds(uint64_t position);

    /// A part of the ring to read, in whole frames; `count` 0 for nothing.
    struct Part {
        uint32_t offset = 0;
        uint32_t count = 0;
        bool belowThreshold = false;  ///< there is something, but too little to bother
    };
    /// What the filled halves hold.
    [[nodiscard]] Part nextHalves() const;
    /// All that is unread up to the position `end`, the unfinished half included as far as the driver told of it. It
    /// may wrap.
    [[nodiscard]] Part unread(uint64_t end) const;
    /// The first stretch of it that does not wrap.
    [[nodiscard]] Part nextStretch(uint64_t end) const;
    /// So many samples were read.
    void advance(uint32_t count) { readPosition_ += count; }

    /// The unread part fills the ring, or `part` does so nearly: the driver is about to write, or writes, over it.
    [[nodiscard]] bool overflows(const Part& part) const;
    /// An unread sample was overwritten for certain.
    [[nodiscard]] bool overwritten() const;

    /// End of all that the driver is known to have put into the ring.
    [[nodiscard]] uint64_t written() const;
    [[nodiscard]] uint64_t readPosition() const { return readPosition_; }
    /// End of the last half that is filled.
    [[nodiscard]] uint64_t halvesPosition() const { return countIsNews_ ? countedHalves() : signalled_; }
    /// How full the ring is, 0 to 1.
    [[nodiscard]] double load() const;

private:
    [[nodiscard]] uint32_t wholeFrames(uint64_t samples) const;
    [[nodiscard]] uint64_t countedHalves() const;

    uint32_t ringSize_;
    uint32_t channelCount_;
    uint32_t threshold_;
    uint64_t readPosition_ = 0;
    uint64_t signalled_ = 0;       ///< end of the last half that an event told of
    uint64_t counted_ = 0;         ///< what the driver said last
    bool countIsNews_ = false;     ///< it said so after the last event
    std::optional<uint64_t> end_;  ///< of the stream, in whole frames
};

}  // namespace tarno2
