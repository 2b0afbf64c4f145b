#pragma once

#include <cmath>
#include <cstddef>
#include <cstring>
#include <functional>
#include <numbers>
#include <vector>

#include "display/signal_format.h"
#include "measure/frame_blocks.h"

namespace tarno2::test {

inline constexpr double kTurn = 2.0 * std::numbers::pi;

/// `channels` of +-10 V, codes -32768 to 32767 at 48 kHz; or other words.
inline SignalFormat madeFormat(size_t channels, SampleWordFormat word = {2, 1, 0, 16, true}) {
    SignalFormat format;
    format.word = word;
    for (uint32_t i = 0; i < channels; ++i) {
        format.channels.push_back({i, 10.0, -10.0, {}});
    }
    format.framesPerSecond = 48000.0;
    format.minimumCode = -32768;
    format.maximumCode = 32767;
    return format;
}

/// Frames whose words `word` tells by channel and frame.
template <typename Word>
std::vector<std::byte> madeFrames(size_t channels, size_t frames, const std::function<double(size_t, size_t)>& word) {
    std::vector<Word> words;
    words.reserve(channels * frames);
    for (size_t i = 0; i < frames; ++i) {
        for (size_t channel = 0; channel < channels; ++channel) {
            words.push_back(static_cast<Word>(std::llround(word(channel, i))));
        }
    }
    std::vector<std::byte> bytes(words.size() * sizeof(Word));
    std::memcpy(bytes.data(), words.data(), bytes.size());
    return bytes;
}

/// Numbers that look random, the same each time.
class Noise {
public:
    uint32_t next() {
        state_ = state_ * 6364136223846793005U + 1442695040888963407U;
        return static_cast<uint32_t>(state_ >> 32);
    }

private:
    uint64_t state_ = 18;
};

}  // namespace tarno2::test
