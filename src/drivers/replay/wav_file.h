#pragma once

#include <cstdint>
#include <string>

#include "platform/file.h"

namespace tarno2::drivers {

/// Channels that a file may have to be played.
inline constexpr uint32_t kMostChannels = 160;

/// Where the samples of a .wav file are, and what they are.
struct WavInfo {
    uint32_t channels = 0;
    uint32_t rate = 0;        ///< frames per second
    uint64_t dataOffset = 0;  ///< bytes
    uint64_t frames = 0;      ///< whole ones that are really in the file
};

/// Reads the chunks of an open .wav with 16-bit PCM samples in 1 to 160 channels. A data chunk that claims more than
/// the file holds, or whose size was never filled in (0, 0xFFFFFFFF), goes to the file's end. False with a reason.
[[nodiscard]] bool readWav(File& file, WavInfo& info, std::string& reason);

}  // namespace tarno2::drivers
