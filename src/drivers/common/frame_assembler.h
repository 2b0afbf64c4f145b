#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "drivers/common/sample_codec.h"

namespace tarno2::drivers {

/// Takes the channels that are recorded out of frames that have all channels of a source.
class ChannelChoice {
public:
    /// `chosen`: numbers below `all`, in the order of the recorded samples.
    ChannelChoice(uint32_t all, const std::vector<int32_t>& chosen, uint32_t wordBytes);
    [[nodiscard]] bool isAll() const { return isAll_; }
    [[nodiscard]] size_t channels() const { return chosen_.size(); }
    /// Of a frame of the chosen channels.
    [[nodiscard]] size_t bytes() const { return chosen_.size() * wordBytes_; }
    void take(const std::byte* allWords, std::byte* chosenWords, size_t frames) const;

private:
    uint32_t all_;
    uint32_t wordBytes_;
    std::vector<uint32_t> chosen_;
    bool isAll_;
};

/// Turns frames of a source, byte after byte as they came, into frames of sample words of the chosen channels.
class FrameDecoder {
public:
    FrameDecoder(const SampleDecoder& decoder, uint32_t channels, const std::vector<int32_t>& chosen);
    [[nodiscard]] size_t frameBytes() const { return frameBytes_; }
    void decode(const std::byte* in, std::byte* out, size_t frames);

private:
    SampleDecoder decoder_;
    uint32_t channels_;
    size_t frameBytes_;
    ChannelChoice choice_;
    std::vector<std::byte> words_;  ///< some frames of all channels
};

/// Makes whole frames of a stream that is cut anywhere. What is left at the end is no frame and never becomes one.
class FrameAssembler {
public:
    FrameAssembler(FrameDecoder decoder, size_t mostFrames);

    /// Where the next bytes of the stream go: at most so many as complete `frames` of them, and at least one.
    [[nodiscard]] std::span<std::byte> space(size_t frames);
    /// So many bytes were put there: writes the frames that are whole now, and returns how many.
    size_t take(size_t bytes, std::byte* destination);
    /// Bytes of a frame that has only begun.
    [[nodiscard]] size_t begun() const { return held_; }

private:
    FrameDecoder decoder_;
    std::vector<std::byte> bytes_;
    size_t held_ = 0;
};

}  // namespace tarno2::drivers
