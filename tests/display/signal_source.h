#pragma once

#include <cstring>
#include <span>
#include <vector>

#include "display/frame_source.h"
#include "display/screen.h"
#include "display/signal_format.h"

namespace tarno2::test {

/// Frames of 16-bit samples with signed codes; `lines` digital lines below the code.
inline SignalFormat format16(size_t channels, uint32_t lines = 0) {
    SignalFormat format;
    format.word = {2, 0, lines, 0, true};
    for (uint32_t i = 0; i < channels; ++i) {
        format.channels.push_back({i, 5.0, -5.0});
    }
    format.framesPerSecond = 1000.0;
    format.minimumCode = -2048;
    format.maximumCode = 2047;
    return format;
}

inline std::span<const std::byte> bytesOf(const std::vector<int16_t>& samples) {
    return std::as_bytes(std::span(samples));
}

inline std::vector<int16_t> wordsOf(const Screen& screen) {
    std::vector<int16_t> words(screen.words.size() / sizeof(int16_t));
    std::memcpy(words.data(), screen.words.data(), screen.words.size());
    return words;
}

/// A recording in memory.
class MemoryFrames final : public FrameSource {
public:
    MemoryFrames(std::vector<int16_t> samples, size_t channels) : samples_(std::move(samples)), channels_(channels) {}

    [[nodiscard]] size_t frameBytes() const override { return channels_ * sizeof(int16_t); }
    [[nodiscard]] uint64_t frameCount() const override { return samples_.size() / channels_; }
    [[nodiscard]] uint64_t read(uint64_t firstFrame, uint64_t count, std::byte* out) override {
        const uint64_t taken = std::min(count, frameCount() - std::min(firstFrame, frameCount()));
        std::memcpy(out, samples_.data() + firstFrame * channels_, taken * frameBytes());
        return taken;
    }

private:
    std::vector<int16_t> samples_;
    size_t channels_;
};

}  // namespace tarno2::test
