#include "drivers/replay/wav_samples.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace tarno2::drivers {

namespace {

static_assert(std::endian::native == std::endian::little, "samples of .wav files are little-endian");

template <class Word>
void put(std::byte* to, size_t index, Word word) {
    std::memcpy(to + index * sizeof word, &word, sizeof word);
}

int32_t codeOf(double value) {
    constexpr double kFull = 2147483648.0;
    const double code = std::nearbyint(value * kFull);
    if (std::isnan(code)) {
        return 0;
    }
    return code >= kFull    ? std::numeric_limits<int32_t>::max()
           : code <= -kFull ? std::numeric_limits<int32_t>::min()
                            : static_cast<int32_t>(code);
}

template <class Float>
void takeFloats(const std::byte* from, size_t count, std::byte* to) {
    for (size_t i = 0; i < count; ++i) {
        Float value = 0;
        std::memcpy(&value, from + i * sizeof value, sizeof value);
        put(to, i, codeOf(static_cast<double>(value)));
    }
}

/// The sign goes on to the top of the word.
void take24(const std::byte* from, size_t count, std::byte* to) {
    for (size_t i = 0; i < count; ++i, from += 3) {
        const uint32_t top = std::to_integer<uint32_t>(from[0]) << 8 | std::to_integer<uint32_t>(from[1]) << 16 |
                             std::to_integer<uint32_t>(from[2]) << 24;
        put(to, i, static_cast<int32_t>(top) >> 8);
    }
}

}  // namespace

void takeFormat(WavSample sample, sdk::Board& board) {
    const bool isSigned = sample != WavSample::Unsigned8;
    const uint32_t bits = sample == WavSample::Float64 ? 32 : bytesOf(sample) * 8;
    board.format = sdk::plainWords(bits <= 16 ? 2 : 4, bits, isSigned);
    board.codes = sdk::allCodes(bits, isSigned);
}

void takeSamples(WavSample sample, const std::byte* from, size_t count, std::byte* to) {
    switch (sample) {
        case WavSample::Unsigned8:
            for (size_t i = 0; i < count; ++i) {
                put(to, i, std::to_integer<uint16_t>(from[i]));
            }
            break;
        case WavSample::Signed24:
            take24(from, count, to);
            break;
        case WavSample::Float32:
            takeFloats<float>(from, count, to);
            break;
        case WavSample::Float64:
            takeFloats<double>(from, count, to);
            break;
        case WavSample::Signed16:
        case WavSample::Signed32:
            std::memcpy(to, from, count * bytesOf(sample));
            break;
    }
}

}  // namespace tarno2::drivers
