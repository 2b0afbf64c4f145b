#pragma once

#include <cstdint>
#include <string>

#include "platform/file.h"

namespace tarno2::drivers {

/// Channels that a file may have to be played.
inline constexpr uint32_t kMostChannels = 160;

/// How a sample of a .wav file lies there, little-endian. An enumerator is its bytes, of floats 16 more.
enum class WavSample : uint32_t { Unsigned8 = 1, Signed16 = 2, Signed24 = 3, Signed32 = 4, Float32 = 20, Float64 = 24 };

/// Its bytes.
[[nodiscard]] constexpr uint32_t bytesOf(WavSample sample) {
    return static_cast<uint32_t>(sample) % 16;
}

/// Where the samples of a .wav file are, and what they are.
struct WavInfo {
    WavSample sample = WavSample::Signed16;
    uint32_t channels = 0;
    uint32_t rate = 0;        ///< frames per second
    uint64_t dataOffset = 0;  ///< bytes
    uint64_t frames = 0;      ///< whole ones that are really in the file
};

/// Reads the chunks of an open .wav, of RF64 or BW64, too, with PCM samples of 8, 16, 24 or 32 bits or floats of 32 or
/// 64 in 1 to 160 channels. A data chunk that claims more than the file holds, or whose size was never filled in (0,
/// 0xFFFFFFFF), goes to the file's end. False with a reason.
[[nodiscard]] bool readWav(File& file, WavInfo& info, std::string& reason);

}  // namespace tarno2::drivers
